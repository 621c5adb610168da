// The inscription of an origin: from the content cache, else from the chain, else from the indexer.
#pragma once

#include <string>

#include "base/bytes.h"

// With `network` unset only the cache is asked. Takes the wallet mutex for the cache, never for a request.
bool qv_clasp_inscription_bytes(const std::string& origin, std::string& type_out, Bytes& bytes_out,
                                bool network);
// The content type that the first bytes tell.
std::string sniff_content_type(const Bytes& bytes);
