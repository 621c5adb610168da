// The payout ledger of the bound wallet: a file that only grows, one entry for each payment that left.
//
// Every call reads the file anew; only a text that is the same as the last, byte for byte, is not taken apart
// again. Nothing reports failure: a file that cannot be read is empty, a write that fails is dropped. The pay
// worker appends while the window's thread reads, without a lock: a reader that meets the file during a write
// may find it empty until the next time.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

// What stands in `token_id` and in `kind` of an app fee's entry.
inline constexpr const char* APP_FEE_KIND = "app_fee";
inline constexpr const char* PAYOUT_KIND = "payout";

// One entry as it stands in the file; a key that is missing or of another type reads as empty or 0.
struct PayoutEntry {
    std::string token_id;
    std::string token_name;
    std::string name;
    std::string dest;
    std::string txid;
    std::string kind;
    std::int64_t sats = 0;
    std::int64_t unix = 0;
};

// Appends one entry, with the time of now; an empty `kind` is written as "payout". A file that does not hold
// a ledger is replaced by a new one.
void append_payout(const std::string& token_id, const std::string& txid, std::int64_t sats,
                   const std::string& dest, const std::string& name, const std::string& token_name,
                   const std::string& kind);

// All entries that are objects, oldest first.
std::vector<PayoutEntry> read_payout_entries();

// Satoshis paid on a token, app fees left out. Sums stay at the largest amount instead of overflowing.
std::int64_t paid_total(const std::string& token_id);
// Satoshis of app fees, over all tokens.
std::int64_t fees_total();
// Satoshis that an address got on a token, app fees left out; 0 without a token or an address.
std::int64_t received_by(const std::string& token_id, const std::string& dest);

// The figures of paid_total and received_by for one token, from one read of the file.
struct TokenPayouts {
    std::int64_t paid_total = 0;
    std::unordered_map<std::string, std::int64_t> received_by_dest;

    std::int64_t received(const std::string& dest) const;
};
TokenPayouts read_token_payouts(const std::string& token_id);
