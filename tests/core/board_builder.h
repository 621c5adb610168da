// Boards for tests: board().market("alice", "3").reserve("me", "5"), with totals that agree.
#pragma once

#include <string>

#include "base/decimal_text.h"
#include "index/holder_board.h"

class BoardBuilder {
 public:
    BoardBuilder() {
        board_.token_id = std::string(64, 'c') + "_0";
        board_.token_name = "Meadow";
        board_.total_lots = board_.reserve_lots = board_.in_market_lots = "0";
        board_.loaded = true;
    }
    // A holder with the address "1" and its name.
    BoardBuilder& market(const std::string& who, const std::string& lots) {
        return market_at(who, lots, "1" + who);
    }
    BoardBuilder& market_at(const std::string& who, const std::string& lots, const std::string& dest) {
        add(board_.in_market_lots, lots);
        board_.rows.push_back({who, dest, "", lots, false});
        return *this;
    }
    BoardBuilder& nowhere(const std::string& who, const std::string& lots) {
        return market_at(who, lots, "");
    }
    BoardBuilder& reserve(const std::string& who, const std::string& lots) {
        add(board_.reserve_lots, lots);
        board_.rows.push_back({who, "", "", lots, true});
        return *this;
    }
    BoardBuilder& float_of(const std::string& in_market_lots) {
        board_.in_market_lots = in_market_lots;
        return *this;
    }
    BoardBuilder& not_loaded() {
        board_.loaded = false;
        return *this;
    }
    operator HolderBoard() const { return board_; }

 private:
    void add(std::string& sum, const std::string& lots) {
        sum = dec_add(sum, lots);
        board_.total_lots = dec_add(board_.total_lots, lots);
    }
    HolderBoard board_;
};

inline BoardBuilder board() {
    return {};
}
