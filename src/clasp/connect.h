// The connect handshake: a request file, the wallet program brought forward, a reply file, the wallet loaded.
//
// The user approves in the wallet program and picks a wallet there; nothing is signed, so whatever can write
// into the user's data folder can approve. Neither file is removed here. Functions take the wallet mutex
// themselves and hold it for short stretches only, never while waiting. No exception leaves this module for a
// bad file.
#pragma once

#include <string>

// A bound wallet that loads connects at once. Otherwise asks for approval and looks for the reply 120 times
// at half a second; call it on a worker thread. "success", or a text that begins with "error: ".
std::string qv_clasp_connect();
// Drops the bind and the session; always "success". The registry and the wallet's document stay.
std::string qv_clasp_unbind();
// A wallet is bound, loads, and is a mnemonic wallet.
bool qv_clasp_is_connected();

// Writes "/connect/<id>.req.json" under the data root. The request id, or empty.
std::string qv_clasp_write_request();
// "pending" while there is no reply file, "ok" for an approval, whose wallet is bound then, and "denied" for
// anything else: a half-written file is a denial.
std::string qv_clasp_read_reply(const std::string& id);
// Brings the wallet program forward if it runs, otherwise starts it. False if it did neither.
bool qv_clasp_open_clasp();
// The wallet program's file in a folder, or else in the folder above; empty where there is none. It is called
// "Clasp.exe", or "Clasp" on a system where programs carry no ending.
std::string find_clasp_program(const std::string& folder);
