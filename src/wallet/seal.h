// The seal: a wallet document wrapped in an AES-256-GCM envelope under the magic "QV-LOCK1". This program
// recognises a sealed wallet and holds the routines that read and write the envelope; it never has a pass
// phrase, so a session is unlocked only by whoever sets `unlocked` and the seal key. Callers hold the wallet
// mutex.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/bytes.h"
#include "base/json_file.h"
#include "wallet/secret.h"

// The active wallet is sealed: a ".seal" file stands beside its document, or the document is an envelope.
bool qv_clasp_is_locked();
// The root is an object whose `lock` is the magic.
bool is_seal_envelope(const Json& root);

bool qv_clasp_seal_parse(const Json& json, std::int64_t& iter_out, Bytes& salt_out, Bytes& iv_out,
                         Bytes& tag_out, Bytes& ct_out);
bool qv_clasp_seal_decrypt(const Bytes& iv, const Bytes& tag, const Bytes& ct, SecretText& plain_out);
bool qv_clasp_seal_encrypt(std::string_view plain, Bytes& iv_out, Bytes& tag_out, Bytes& ct_out);
std::string qv_clasp_seal_format(const Bytes& iv, const Bytes& tag, const Bytes& ct);
// Writes the sealed text beside the document; false unless the session is unlocked.
bool qv_clasp_seal_write(std::string_view plain);
