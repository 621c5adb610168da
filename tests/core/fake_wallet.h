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

    // Valid as long as the fake lives.
    RoundWallet functions() {
        RoundWallet wallet;
        wallet.is_connected = [this] {
            const std::lock_guard<std::mutex> lock(mutex_);
            return connected;
        };
        wallet.connect = [this] {
            const std::lock_guard<std::mutex> lock(mutex_);
            if (connect_result.starts_with("success")) connected = true;
            return connect_result;
        };
        wallet.unbind = [this] {
            const std::lock_guard<std::mutex> lock(mutex_);
            connected = false;
            return std::string("success");
        };
        wallet.list_tokens = [this](std::vector<TokenRow>& rows, bool refresh) {
            const std::lock_guard<std::mutex> lock(mutex_);
            rows = tokens;
            refreshed = refresh;
            return tokens_result;
        };
        wallet.snapshot_holders = [this](const std::string& token_id, HolderBoard& out) {
            const std::lock_guard<std::mutex> lock(mutex_);
            snapshots.push_back(token_id);
            out = board;
            out.token_id = token_id;
            return snapshot_result;
        };
        wallet.status = [this](QvClaspStatus& out) {
            const std::lock_guard<std::mutex> lock(mutex_);
            ++status_calls;
            out = status;
        };
        wallet.estimate_send_fee = [this](const std::string& dest, std::int64_t sats) {
            const std::lock_guard<std::mutex> lock(mutex_);
            estimates.push_back({dest, sats, ""});
            return fee_estimate;
        };
        wallet.send = [this](const std::string& dest, std::int64_t sats, const std::string& memo) {
            const std::lock_guard<std::mutex> lock(mutex_);
            return do_send({dest, sats, memo});
        };
        wallet.summary = [this](std::string& address_out, std::string& paymail_out) {
            const std::lock_guard<std::mutex> lock(mutex_);
            address_out = address;
            paymail_out = paymail;
        };
        wallet.shown_balance = [this] {
            const std::lock_guard<std::mutex> lock(mutex_);
            return balance;
        };
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
