// The file of the payout ledger: one JSON object whose `entries` only grow.
//
// A file in the form in which this program writes it is not parsed and written again: the new row goes in
// front of its closing brackets, and the bytes are those of the whole document dumped anew. One that another
// process has written is looked through once for that. Anything else is read, and written whole. Programs
// that append at once wait for each other by a lock on "PATH.lock". Any thread; no failure is reported.
#pragma once

#include <string>

#include "base/json_file.h"

// Appends a row. A file that does not hold a ledger is replaced by a new one; a write that fails is dropped.
void append_ledger_row(const std::string& path, const Json& row);
