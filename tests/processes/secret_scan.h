// Looking for secrets in memory and in texts: every form in which a wallet's secrets could lie there.
#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"

class SecretScan {
 public:
    // The words as text, the seed, the master key, and the keys of all paths that the wallet uses: as bytes
    // in either order, as hexadecimal in either case, and in the import format for wallets.
    explicit SecretScan(const std::string& mnemonic);

    // The names of what was found, each with how often.
    using Findings = std::map<std::string, int>;
    Findings in_text(std::string_view text) const;
    // In all memory of the process that can be written. Leave it standing still.
    Findings in_process(pid_t pid) const;

 private:
    struct Needle {
        std::string name;
        std::string bytes;
    };
    void add(const std::string& name, std::string bytes);
    void add_bytes(const std::string& name, const Bytes& secret);
    void search(std::string_view text, Findings& findings) const;

    std::vector<Needle> needles_;
    std::vector<std::vector<std::size_t>> by_start_;  // of the first two bytes
};
