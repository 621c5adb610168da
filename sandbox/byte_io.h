// Little-endian numbers, compact sizes and data pushes of the network's formats, written and read. Pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "base/bytes.h"

namespace sandbox {

void put_u32(Bytes& out, std::uint32_t value);
void put_u64(Bytes& out, std::uint64_t value);
void put_compact(Bytes& out, std::uint64_t value);
void put_bytes(Bytes& out, const Bytes& bytes);
// The shortest push of the data.
void put_push(Bytes& out, const Bytes& data);
// The 32 bytes of a txid as they stand in a transaction.
void put_txid(Bytes& out, const std::string& txid);
std::string txid_text(const Hash256& hash);

// Reads forward through bytes; after the first read past the end, or of a compact size that is not the
// shortest, `ok` is false and every further read gives nothing.
struct ByteReader {
    const Bytes& bytes;
    std::size_t at = 0;
    bool ok = true;

    std::uint64_t number(std::size_t width);
    std::uint64_t compact();
    Bytes take(std::uint64_t count);
    bool at_end() const { return at == bytes.size(); }
};

// One operation of a script: an opcode, and what it pushes if it is a push.
struct ScriptOp {
    std::uint8_t opcode = 0;
    Bytes data;
    bool is_push = false;   // OP_0 and the data pushes
    bool shortest = false;  // the push has the shortest form
};
// False at the end and for a push that runs past it; `at` moves on only on success.
bool read_op(const Bytes& script, std::size_t& at, ScriptOp& op);

}  // namespace sandbox
