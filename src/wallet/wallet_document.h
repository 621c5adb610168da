// The wallet document: the JSON file in which a wallet lives, written by the wallet program and by this
// library.
//
// Callers hold the wallet mutex unless stated. Nothing guards the file between processes: the last writer
// wins, and a half-written file is a failed load. The document's own `version`, `identity` and `address` are
// never trusted.
#pragma once

#include <string>
#include <vector>

#include "base/json_file.h"
#include "wallet/document_path.h"
#include "wallet/document_rows.h"
#include "wallet/wallet_session.h"

// Makes sure that the session is loaded; a loaded session is not read again. False leaves no usable session.
bool qv_clasp_load();
// Writes the session over the document.
bool qv_clasp_save();
// Raises the session to what the file now says: counters only grow, the avatar follows, a paymail is taken
// over.
void qv_clasp_reconcile();
// For the first paint: address, paymail with its domain, and form, without loading keys. Takes the wallet
// mutex.
bool qv_clasp_summary(std::string& address_out, std::string& paymail_out, bool& hd_out);

// The documents of all other wallets: those of the registry, those detached under the data root, those
// parked.
std::vector<std::string> qv_clasp_other_document_paths();
