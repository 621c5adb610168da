// A wallet that answers by script and remembers what was asked of it. Its functions may be called from any
// thread.
#pragma once

#include <deque>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "core/round_wallet.h"

inline std::string hex_id(char digit) {
    return std::string(64, digit);
}
inline std::string token_id_of(char digit) {
    return hex_id(digit) + "_0";
}

struct FakeSend {
    std::string dest;
    std::int64_t sats = 0;
    std::string memo;
    bool operator==(const FakeSend&) const = default;
};

struct FakeWallet {
    bool connected = true;
    std::string connect_result = "success";
    std::string tokens_result;
    std::vector<TokenRow> tokens;
    std::string snapshot_result;
    HolderBoard board;
    QvClaspStatus status;
    std::int64_t fee_estimate = 0;
    // One for each send; when they run out, each send succeeds with a txid of its own.
    std::deque<std::string> send_results;
    std::string address = "1WalletAddress";
    std::string paymail;
    std::int64_t balance = -1;

    std::vector<FakeSend> sends;
    std::vector<FakeSend> estimates;
    std::vector<std::string> snapshots;
    bool refreshed = false;
    int status_calls = 0;

    // A txid for the nth send, counted from 0.
    static std::string txid(std::size_t n) {
        std::string id = std::to_string(n);
        return std::string(64 - id.size(), 'a') + id;
    }

    template <typename Function>
    auto locked(Function function) {
        return [this, function](auto&&... arguments) {
            const std::lock_guard<std::mutex> lock(mutex_);
            return function(arguments...);
        };
    }

    // Valid as long as the fake lives.
    RoundWallet functions() {
        RoundWallet wallet;
        wallet.is_connected = locked([this] { return connected; });
        wallet.connect = locked([this] {
            connected = connected || connect_result.starts_with("success");
            return connect_result;
        });
        wallet.unbind = locked([this] {
            connected = false;
            return std::string("success");
        });
        wallet.list_tokens = locked([this](std::vector<TokenRow>& rows, bool refresh) {
            rows = tokens;
            refreshed = refresh;
            return tokens_result;
        });
        wallet.snapshot_holders = locked([this](const std::string& token_id, HolderBoard& out) {
            snapshots.push_back(token_id);
            out = board;
            out.token_id = token_id;
            return snapshot_result;
        });
        wallet.status = locked([this](QvClaspStatus& out) {
            ++status_calls;
            out = status;
        });
        wallet.estimate_send_fee = locked([this](const std::string& dest, std::int64_t sats) {
            estimates.push_back({dest, sats, ""});
            return fee_estimate;
        });
        wallet.send = locked([this](const std::string& dest, std::int64_t sats, const std::string& memo) {
            return do_send({dest, sats, memo});
        });
        wallet.summary = locked([this](std::string& address_out, std::string& paymail_out) {
            address_out = address;
            paymail_out = paymail;
        });
        wallet.shown_balance = locked([this] { return balance; });
        return wallet;
    }

 private:
    std::string do_send(FakeSend send) {
        sends.push_back(std::move(send));
        if (send_results.empty()) return "success: " + txid(sends.size() - 1);
        std::string result = send_results.front();
        send_results.pop_front();
        return result;
    }

    std::mutex mutex_;
};
