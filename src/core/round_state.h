// The vocabulary of a dividend round: the frozen list, the job of the pay worker, and the one record that
// holds a round in memory. `RoundState` belongs to the window's thread; everything else is plain data and
// pure functions. All text is UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "index/holder_board.h"
#include "index/token_row.h"

// The main window's controls that the controller addresses.
enum RoundControl : int {
    CONTROL_CONNECT = 1001,
    CONTROL_UNBIND = 1002,
    CONTROL_WALLET_LABEL = 1003,
    CONTROL_WALLET_BALANCE = 1004,
    CONTROL_LOAD_TOKENS = 1006,
    CONTROL_ORIGIN = 1007,
    CONTROL_SNAPSHOT = 1008,
    CONTROL_SUMMARY = 1010,
    CONTROL_AMOUNT = 1011,
    CONTROL_PREVIEW = 1012,
    CONTROL_PAY = 1013,
    CONTROL_STATUS = 1014,
    CONTROL_HISTORY = 1021,
    CONTROL_SETTINGS = 1022,
    CONTROL_VAULT = 1024,
};

// One holder of the frozen list.
struct PreviewRow {
    std::string name;
    std::string dest;
    std::string lots;
    std::int64_t sats = 0;  // the share; kept on a skipped row too, where it is never paid
    bool skip = false;      // dust, or nobody to pay to
};

// What the pay worker owns while it runs.
struct PayJob {
    std::vector<PreviewRow> rows;
    std::string token_id;
    std::string token_name;
};

// What the main window shows of the wallet.
struct WalletSummary {
    std::string label;
    std::string balance;
};

struct RoundState {
    std::string status_text = "Connect Clasp, pick a token, Snapshot, Preview, then Pay.";
    bool status_animated = false;
    int status_dots = 0;
    bool busy = false;
    int busy_control = 0;   // the button that shows "Wait..."
    int selected_row = -1;  // board row of the last right-click
    std::vector<TokenRow> tokens;
    HolderBoard board;
    std::vector<std::uint8_t> excluded;  // one flag for each board row, by position
    std::vector<PreviewRow> preview;     // the frozen list: in-market rows only, in board order
    std::string frozen_token_id;
    std::int64_t frozen_pot = 0;
    std::int64_t frozen_fee_estimate = 0;
    std::int64_t frozen_remainder = 0;
    int frozen_skips = 0;
};

// A reserve row never is, whatever its flag; a position beyond the flags is not.
bool is_excluded(const RoundState& state, std::size_t row);
bool is_in_market(const RoundState& state, std::size_t row);

// The lots of excluded rows as decimal text; a row whose lots do not read strictly is left out.
std::string excluded_lots(const RoundState& state);
// The denominator of the split: the float without the excluded lots; "0" if nothing is left. Reads leniently.
std::string payable_lots(const RoundState& state);

// The row is to be paid: not skipped, with an address, and above dust.
bool is_due(const PreviewRow& row);

// The two conventions of result texts: a connect and a send succeed with "success" in front, a token list and
// a snapshot fail with "error:" in front.
bool says_success(std::string_view result);
bool says_error(std::string_view result);
