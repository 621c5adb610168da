// Short labels for artworks by outpoint, in "/art/tags.json" under the data root, and tags that a sender has
// sealed inside an inscription. One mutex guards the file. Failures are silent.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

// The normalised key of an outpoint text: lower case; a bare txid gets "_0"; empty for anything else.
std::string qv_clasp_art_tag_key(std::string_view outpoint);
// Does nothing with a text that is no outpoint, or an empty tag.
void qv_clasp_art_tag_set(const std::string& outpoint, const std::string& tag);
// The tag, or empty.
std::string qv_clasp_art_tag_get(const std::string& outpoint);
// All tags under their normalised keys, as one reading of the file found them: for many look-ups in a row.
std::unordered_map<std::string, std::string> qv_clasp_art_tags();
// Opens a sealed tag given as hexadecimal text: a 12-byte nonce, a 16-byte tag and the AES-256-GCM ciphertext
// under the family's fixed key. Empty if it does not open.
std::string qv_clasp_open_art_tag(std::string_view hex_blob);
