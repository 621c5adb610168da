// Raw transactions of the chain service, as bytes and as hexadecimal text, read for the script of an output.
#include "base/hex.h"
#include "fuzz/fuzz.h"
#include "index/inscription_fetch.h"

namespace {

void read(const std::string& raw_hex, char output) {
    script_one_answer("/hex", raw_hex);
    std::string type;
    Bytes body;
    if (qv_clasp_inscription_bytes(fuzz_txid('a') + "_" + output, type, body, true))
        promise(!type.empty() && body.size() <= raw_hex.size(), "an inscription lies in its transaction");
}

}  // namespace

// The first byte: the output that is asked for, and by its highest bit whether hexadecimal text follows.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_root();
    if (size == 0) return 0;
    const char output = static_cast<char>('0' + data[0] % 4);
    if (data[0] & 0x80)
        read(std::string(reinterpret_cast<const char*>(data) + 1, size - 1), output);
    else
        read(qv_clasp_hex_encode(data + 1, size - 1), output);
    static int inputs = 0;
    if (++inputs % 1000 == 0) clean_root();
    return 0;
}
