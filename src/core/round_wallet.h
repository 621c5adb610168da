// The wallet calls that a round makes. The program fills it with the wallet library's functions, a test with
// its own. Every function is set; apart from is_connected, summary and shown_balance each may block on the
// network for long. All may be called from any thread, and a copy of the record works as the record does.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "clasp/status_record.h"
#include "index/holder_board.h"
#include "index/token_row.h"

struct RoundWallet {
    std::function<bool()> is_connected;
    // "success", or the failure to show.
    std::function<std::string()> connect;
    std::function<std::string()> unbind;
    // Failed if the text begins with "error:".
    std::function<std::string(std::vector<TokenRow>& rows, bool refresh)> list_tokens;
    std::function<std::string(const std::string& token_id, HolderBoard& board)> snapshot_holders;
    std::function<void(QvClaspStatus& status)> status;
    // The miner fee of one such send; zero or less means that there is no estimate.
    std::function<std::int64_t(const std::string& dest, std::int64_t sats)> estimate_send_fee;
    // "success: " and the transaction id, or the failure to show.
    std::function<std::string(const std::string& dest, std::int64_t sats, const std::string& memo)> send;
    // The address and the paymail of the bound wallet for the first paint; empty where unknown.
    std::function<void(std::string& address, std::string& paymail)> summary;
    // The balance to show before a status report has run; negative if there is no figure.
    std::function<std::int64_t()> shown_balance;
};
