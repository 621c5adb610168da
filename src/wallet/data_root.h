// The family's data folder and the names made for things in it.
#pragma once

#include <string>

// The folder of the family's data, as UTF-8. Created, with errors ignored, each time it is asked for; nothing
// caches it. Paths under it are formed by appending pieces that begin with "/".
std::string qv_data_root();

// "w" and the present Unix time in milliseconds: a wallet id, and a connect request id. Two calls never give
// the same id within a process.
std::string qv_clasp_new_id();
