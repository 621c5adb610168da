// What the fuzz targets share. A target is one function, LLVMFuzzerTestOneInput, that hands its input to a
// parser the way the program meets it: as a text, as a file under a data folder of the target's own, or as
// the answers of services. A broken promise ends the process; so does an exception.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/bytes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// Ends the process where a parser breaks its promise.
void promise(bool kept, const char* what);

// The first byte of an input, as a digit, tells which of `count` parsers the rest is for.
struct Choice {
    std::size_t parser = 0;
    std::string text;
};
Choice choose(const std::uint8_t* data, std::size_t size, std::size_t count);

// A data folder in memory where the system has such, made at the first call and removed at the end of the
// process: LOCALAPPDATA points into it, and a clock that only sleeps move stands in for the system's. The
// wallet "w1" lies in it, and this program is bound to it. Returns the family's folder.
const std::string& fuzz_root();
// Writes "<root><path>", with the folders above it.
void put_file(const std::string& path, std::string_view content);
// Removes everything under the root but the wallet and its bind, which are written anew; ends the session.
void clean_root();
// The session is loaded from "w1", and what it knows of coins is forgotten.
void load_fuzz_wallet();
// For a target whose inputs leave files behind: files, session and coins are as on the first input, and the
// clock moves on, so that nothing that was read counts as fresh. The keys that are known stay known.
void start_afresh();

inline constexpr const char* FUZZ_WALLET = "w1";
inline constexpr const char* FUZZ_WORDS =
    "abandon abandon abandon abandon abandon abandon abandon abandon abandon abandon abandon about";

// For the targets over services. The input is a script of answers: a line "=== PART STATUS", then the body up
// to the next such line. A request gets the first answer whose PART its address holds (a PART of "*" fits
// all); without one it gets no answer. "$a" to "$z" in a body or a PART stand for transaction ids that no
// earlier input has used, since the program keeps what it once knows of a transaction.
void script_services(std::string_view input);
// The same for one answer, whose body is taken as it stands.
void script_one_answer(const std::string& part, const std::string& body);
std::string fuzz_txid(char letter);
