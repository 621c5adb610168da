#include "sandbox/byte_io.h"

#include <algorithm>

#include "base/hex.h"

namespace sandbox {

namespace {

void put_number(Bytes& out, std::uint64_t value, std::size_t width) {
    for (std::size_t i = 0; i < width; ++i) out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

constexpr std::uint8_t OP_PUSHDATA1 = 76;
constexpr std::uint8_t OP_PUSHDATA2 = 77;
constexpr std::uint8_t OP_PUSHDATA4 = 78;

// Small numbers have opcodes of their own, which a shortest push must use.
bool has_number_opcode(const Bytes& data) {
    return data.size() == 1 && ((data[0] >= 1 && data[0] <= 16) || data[0] == 0x81);
}

bool is_shortest(std::uint8_t opcode, const Bytes& data) {
    const std::size_t size = data.size();
    if (opcode == 0) return true;
    if (opcode < OP_PUSHDATA1) return !has_number_opcode(data);
    if (opcode == OP_PUSHDATA1) return size >= OP_PUSHDATA1;
    if (opcode == OP_PUSHDATA2) return size > 0xff;
    return size > 0xffff;
}

}  // namespace

void put_u32(Bytes& out, std::uint32_t value) {
    put_number(out, value, 4);
}
void put_u64(Bytes& out, std::uint64_t value) {
    put_number(out, value, 8);
}

void put_compact(Bytes& out, std::uint64_t value) {
    if (value < 253) return put_number(out, value, 1);
    const std::size_t width = value <= 0xffff ? 2 : value <= 0xffffffffU ? 4 : 8;
    out.push_back(width == 2 ? 253 : width == 4 ? 254 : 255);
    put_number(out, value, width);
}

void put_bytes(Bytes& out, const Bytes& bytes) {
    out.insert(out.end(), bytes.begin(), bytes.end());
}

void put_push(Bytes& out, const Bytes& data) {
    const std::size_t size = data.size();
    if (size < OP_PUSHDATA1) {
        put_number(out, size, 1);
    } else {
        const std::size_t width = size <= 0xff ? 1 : size <= 0xffff ? 2 : 4;
        out.push_back(width == 1 ? OP_PUSHDATA1 : width == 2 ? OP_PUSHDATA2 : OP_PUSHDATA4);
        put_number(out, size, width);
    }
    put_bytes(out, data);
}

void put_txid(Bytes& out, const std::string& txid) {
    const Bytes shown = qv_clasp_hex_decode(txid);
    out.insert(out.end(), shown.rbegin(), shown.rend());
}

std::string txid_text(const Hash256& hash) {
    Hash256 reversed = hash;
    std::reverse(reversed.begin(), reversed.end());
    return qv_clasp_hex_encode(reversed);
}

std::uint64_t ByteReader::number(std::size_t width) {
    if (!ok || bytes.size() - at < width) {
        ok = false;
        return 0;
    }
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i) value |= static_cast<std::uint64_t>(bytes[at + i]) << (8 * i);
    at += width;
    return value;
}

std::uint64_t ByteReader::compact() {
    const std::uint64_t first = number(1);
    if (first < 253) return first;
    const std::uint64_t value = number(first == 253 ? 2 : first == 254 ? 4 : 8);
    const std::uint64_t smallest = first == 253 ? 253 : first == 254 ? 0x10000 : 0x100000000ULL;
    if (value < smallest) ok = false;
    return ok ? value : 0;
}

Bytes ByteReader::take(std::uint64_t count) {
    if (!ok || bytes.size() - at < count) {
        ok = false;
        return {};
    }
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    at += count;
    return Bytes(begin, begin + static_cast<std::ptrdiff_t>(count));
}

bool read_op(const Bytes& script, std::size_t& at, ScriptOp& op) {
    ByteReader reader{script, at};
    op = {};
    op.opcode = static_cast<std::uint8_t>(reader.number(1));
    op.is_push = reader.ok && op.opcode <= OP_PUSHDATA4;
    if (op.is_push) {
        std::uint64_t size = op.opcode;
        if (op.opcode >= OP_PUSHDATA1) size = reader.number(std::size_t{1} << (op.opcode - OP_PUSHDATA1));
        op.data = reader.take(size);
        op.shortest = is_shortest(op.opcode, op.data);
    }
    if (!reader.ok) return false;
    at = reader.at;
    return true;
}

}  // namespace sandbox
