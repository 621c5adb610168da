// Where the application's own JSON files lie, and whose they are. They are plain local logs without keys.
// Nothing is cached: a path follows whichever wallet is bound at the moment it is asked for. Any thread; no
// locks.
#pragma once

#include <string>

// "/bursaria" under the family's data folder; created with its parents, errors ignored, on each call.
std::string record_folder();

// The prefix of per-wallet files: the active wallet id ("none" without one) with every byte but ASCII
// letters, digits, "-" and "_" replaced by "_", at most 64 bytes.
std::string record_wallet_key();

std::string settings_file_path();
// The files of the wallet that is bound now. Each creates the folder.
std::string ledger_file_path();
std::string notes_file_path();
std::string vaults_file_path();
