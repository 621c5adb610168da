// Where the active wallet's document lies. Thread-safe.
#pragma once

#include <string>

// The document of the active wallet, or that of the old layout when none is active.
std::string qv_clasp_document_path();
// The document of a wallet id, and that of the old single-wallet layout.
std::string wallet_document_path(const std::string& wallet_id);
std::string root_document_path();
