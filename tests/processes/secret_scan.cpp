#include "tests/processes/secret_scan.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>

#include "base/hex.h"
#include "base/text.h"
#include "sandbox/keys.h"
#include "wallet/key_derivation.h"

namespace {

std::string text_of(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

// Base58 of version, key, the mark of a compressed key, and a checksum.
std::string import_format(const Bytes& key) {
    constexpr std::string_view ALPHABET = "123456789ABCDEFGHJKLMNPQRSTUVWXYZabcdefghijkmnopqrstuvwxyz";
    Bytes number{0x80};
    number.insert(number.end(), key.begin(), key.end());
    number.push_back(1);
    const Hash256 sum = sandbox::sha256d(number);
    number.insert(number.end(), sum.begin(), sum.begin() + 4);
    std::string digits;
    while (std::any_of(number.begin(), number.end(), [](std::uint8_t byte) { return byte != 0; })) {
        unsigned rest = 0;
        for (std::uint8_t& byte : number) {
            const unsigned value = rest * 256 + byte;
            byte = static_cast<std::uint8_t>(value / 58);
            rest = value % 58;
        }
        digits.push_back(ALPHABET[rest]);
    }
    std::reverse(digits.begin(), digits.end());
    return digits;
}

std::size_t start_of(std::string_view bytes) {
    return static_cast<std::size_t>(static_cast<unsigned char>(bytes[0])) * 256 +
           static_cast<unsigned char>(bytes[1]);
}

}  // namespace

SecretScan::SecretScan(const std::string& mnemonic) : by_start_(65536) {
    add("mnemonic", mnemonic);
    SecretBytes<64> seed;
    QvClaspExtKey master;
    seed_from_mnemonic(mnemonic, seed);
    master_from_seed(seed, master);
    add_bytes("seed", Bytes(seed.data(), seed.data() + 64));
    add_bytes("master key", Bytes(master.key.data(), master.key.data() + 32));
    add_bytes("master chain code", Bytes(master.chain_code.data(), master.chain_code.data() + 32));
    std::vector<std::string> paths{"100'/0/0", "102'/0/0"};
    for (unsigned i = 0; i < 40; ++i) {
        paths.push_back("1'/0/" + std::to_string(i));
        paths.push_back("5'/0/" + std::to_string(i));
        if (i < 5) paths.push_back("5'/1/" + std::to_string(i));
    }
    for (const std::string& path : paths)
        add_bytes("key " + path, sandbox::derive(mnemonic, "m/44'/236'/" + path).priv);
    // The nodes above the keys.
    for (const char* account : {"0'", "1'", "5'", "100'"}) {
        add_bytes("node " + std::string(account),
                  sandbox::derive(mnemonic, std::string("m/44'/236'/") + account).priv);
        add_bytes("node " + std::string(account) + "/0",
                  sandbox::derive(mnemonic, std::string("m/44'/236'/") + account + "/0").priv);
    }
}

void SecretScan::add(const std::string& name, std::string bytes) {
    by_start_[start_of(bytes)].push_back(needles_.size());
    needles_.push_back({name, std::move(bytes)});
}

void SecretScan::add_bytes(const std::string& name, const Bytes& secret) {
    add(name + " bytes", text_of(secret));
    add(name + " number", text_of(Bytes(secret.rbegin(), secret.rend())));
    std::string hex = qv_clasp_hex_encode(secret);
    add(name + " hex", hex);
    std::transform(hex.begin(), hex.end(), hex.begin(),
                   [](char c) { return c >= 'a' ? static_cast<char>(c - 32) : c; });
    add(name + " HEX", hex);
    if (secret.size() == 32) add(name + " import format", import_format(secret));
}

void SecretScan::search(std::string_view text, Findings& findings) const {
    for (std::size_t at = 0; at + 1 < text.size(); ++at) {
        for (const std::size_t which : by_start_[start_of(text.substr(at, 2))]) {
            const Needle& needle = needles_[which];
            if (text.compare(at, needle.bytes.size(), needle.bytes) == 0) ++findings[needle.name];
        }
    }
}

SecretScan::Findings SecretScan::in_text(std::string_view text) const {
    Findings findings;
    search(text, findings);
    return findings;
}

SecretScan::Findings SecretScan::in_process(pid_t pid) const {
    Findings findings;
    const std::string folder = "/proc/" + std::to_string(pid);
    const int memory = ::open((folder + "/mem").c_str(), O_RDONLY | O_CLOEXEC);
    if (memory < 0) return {{"no memory to look at", 1}};
    std::ifstream maps(folder + "/maps");
    for (std::string line; std::getline(maps, line);) {
        unsigned long start = 0;
        unsigned long end = 0;
        char rights[5] = {};
        if (std::sscanf(line.c_str(), "%lx-%lx %4s", &start, &end, rights) != 3 || rights[1] != 'w') continue;
        std::string content(end - start, '\0');
        const ssize_t count = ::pread(memory, content.data(), content.size(), static_cast<off_t>(start));
        if (count > 0) search(std::string_view(content).substr(0, static_cast<std::size_t>(count)), findings);
    }
    ::close(memory);
    return findings;
}
