// Inscriptions kept in "/ord_cache" under the data root, one set of files per origin: body, content type,
// name. They never expire, since an origin's inscription cannot change. Files only; an origin that is not an
// outpoint text is refused, so nothing from the network can name a file. Thread-safe.
#pragma once

#include <string>

#include "base/bytes.h"

void qv_clasp_cache_put(const std::string& origin, const std::string& type, const Bytes& bytes);
bool qv_clasp_cache_get(const std::string& origin, std::string& type_out, Bytes& bytes_out);
void qv_clasp_name_put(const std::string& origin, const std::string& name);
std::string qv_clasp_name_get(const std::string& origin);
