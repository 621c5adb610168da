// The connect handshake: a request file, the wallet program brought forward, a reply file, the wallet loaded. The
// wallet mutex is not held while waiting.
#pragma once

#include <string>

// Blocks up to a minute. "success", or a text that begins with "error: ".
std::string qv_clasp_connect();
// Drops the bind and the session; always "success".
std::string qv_clasp_unbind();
// A wallet is bound, loads, and is a mnemonic wallet.
bool qv_clasp_is_connected();

// The request id, or empty.
std::string qv_clasp_write_request();
// "pending", "ok" or "denied"; an approval writes the bind.
std::string qv_clasp_read_reply(const std::string& id);
// Brings the wallet program forward or starts it.
bool qv_clasp_open_clasp();
