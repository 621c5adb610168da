#include "tests/faults/fault_cell.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "base/decimal_text.h"
#include "base/text.h"
#include "program/update_check.h"
#include "wallet/data_root.h"

using namespace sandbox;

namespace {

constexpr int HOLDERS = 8;
constexpr int CLOSED_PORT = 1;
constexpr int FOR_EVER_MS = 600'000;
// What a busy machine may add to a transfer.
constexpr std::int64_t SLACK_MS = 20'000;
constexpr std::size_t LONGEST_TEXT = 300;

bool is_long_form() {
    const char* wish = std::getenv("BURSARIA_LONG_TESTS");
    return wish && *wish == '1';
}

std::size_t huge_bytes() {
    return std::size_t{is_long_form() ? 200U : 8U} << 20U;
}

int port_of(const Ports& ports, const std::string& service) {
    if (service == "woc") return ports.woc;
    if (service == "ordinals") return ports.ordinals;
    if (service == "arc") return ports.arc;
    if (service == "home") return ports.home;
    if (service == "resolver") return ports.resolver;
    return ports.control;
}

std::string address_paid(const TxOutput& output) {
    const std::optional<Hash160> owner = script_owner(output.script);
    return owner && output.script == p2pkh_script(*owner) ? address_of(*owner) : "";
}

}  // namespace

bool is_own_send_text(const std::string& text) {
    static const std::vector<std::string> whole{
        "error: broadcast failed after retry.", "error: wallet changed.",
        "error: the network did not take that transaction. Nothing was sent."};
    if (std::find(whole.begin(), whole.end(), text) != whole.end()) return true;
    if (text.size() > LONGEST_TEXT || contains(text, "<") || contains(text, "\n")) return false;
    return text.starts_with("error: broadcast failed: ") || text.starts_with("error: insufficient funds") ||
           text.starts_with("error: you have 0 in your Clasp wallet.");
}

void FaultCell::begin(std::uint64_t seed) {
    WorldOptions options;
    options.holders = HOLDERS;
    options.seed = seed;
    options.token_among_coins = true;
    options.folder = home.folder();
    box = std::make_unique<Sandbox>(
        Options{.world = options, .ports = {.foreign = 0}, .answer_connects = false});
    std::string error;
    ASSERT_TRUE(box->start(error)) << error;
    // Every named holder is paid at an address that only his name leads to.
    for (const Holder& holder : world().holders) {
        Paymail row;
        if (holder.kind != "paymail" ||
            !box->directory().by_alias(holder.who.substr(0, holder.who.find('@')), row))
            continue;
        row.pays_by_name_only = true;
        box->directory().put(row);
    }
    home.use_settings(box->settings_for());
    restart();
    qv_clasp_write_bind(world().main_wallet.id);
    clock = std::make_unique<FakeClock>();
    const Wallet& wallet = world().main_wallet;
    own_ = {wallet.identity().address, wallet.ordinal(wallet.ordinal_index).address};
    for (std::uint32_t i = 0; i <= wallet.receive_index; ++i) own_.insert(wallet.receive(i).address);
    transfer_watch::reset();
}

void FaultCell::start_failing_before(const char* what) {
    const std::string before = what;
    if (before == "submit" || before == "broadcast") fail("home", "down", "POST /oi/submit");
    if (before == "broadcast") fail("woc", "html500", "POST /v1/bsv/main/tx/raw");
    if (before == "transactions") fail("woc", "404", "GET /v1/bsv/main/tx/");
    if (before == "alias") fail("home", "404", "/api/bsvalias/");
}

void FaultCell::start_failing() {
    start_failing_before(target_.only_after);
    const std::string place = ":" + std::to_string(port_of(box->ports(), target_.service)) + target_.path;
    if (failure_.kind == Kind::Port || failure_.kind == Kind::Certificate) {
        const bool refused = failure_.kind == Kind::Port;
        const int port = refused ? CLOSED_PORT : box->ports().foreign;
        Settings moved = box->settings_for();
        move_service(moved, target_, refused ? "http" : "https", port);
        home.use_settings(moved);
        transfer_watch::mark({":" + std::to_string(port) + "/"});
        return;
    }
    transfer_watch::mark({place});
    const std::string failure = failure_.failure;
    const bool in_full = target_.times_out_soon && is_long_form();
    if ((failure == "slow" || failure == "stall") && !in_full) transfer_watch::shorten(target_.method, place);
    const std::string method = target_.method;
    box->faults().set(target_.service, {.failure = failure,
                                        .path_part = (method.empty() ? "" : method + " ") + target_.path,
                                        .times = failure_.times,
                                        .slow_ms = FOR_EVER_MS,
                                        .huge_bytes = huge_bytes()});
}

void FaultCell::stop_failing() {
    box->faults().clear();
    home.use_settings(box->settings_for());
    transfer_watch::reset();
}

// Each transfer had a time-out and kept to it, and all that was done took no longer than these together.
// Waits between two requests are the test's clock's.
void FaultCell::expect_bounded(Clock::time_point start) {
    const TransferCounts counts = transfer_watch::counts();
    EXPECT_GT(counts.marked, 0) << "the service was not asked";
    EXPECT_EQ(counts.without_limit, 0) << "a request that may wait for ever";
    EXPECT_LT(counts.longest_overrun_ms, SLACK_MS);
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
    EXPECT_LT(took, counts.allowed_s * 1000 + SLACK_MS);
}

template <typename Work>
void FaultCell::act(Action action, Work work) {
    if ((target_.asked_by & action) == 0) return;
    SCOPED_TRACE(testing::Message() << "action " << action);
    transfer_watch::reset();
    start_failing();
    const Clock::time_point start = Clock::now();
    outcomes_[action] = work();
    expect_bounded(start);
    if (failure_.kind == Kind::Certificate) {
        // Names on this machine are looked up without a look at the certificate, on purpose.
        for (const SeenRequest& request : box->requests())
            EXPECT_TRUE(request.service != "foreign" || request.path.starts_with("/api/bsvalias/") ||
                        request.path.starts_with("/api/paymail/quota/"))
                << "trusted: " << request.path;
    }
    stop_failing();
}

HolderBoard FaultCell::board_of_the_world() {
    HolderBoard board;
    board.token_id = world().token_id;
    board.token_name = world().token_name;
    board.total_lots = world().total_lots;
    board.reserve_lots = world().reserve_lots;
    board.in_market_lots = world().in_market_lots;
    board.loaded = true;
    for (const Holder& holder : world().holders)
        board.rows.push_back({holder.who, holder.dest, holder.pubkey, holder.lots, holder.kind == "reserve"});
    return board;
}

std::string FaultCell::look_at_tokens() {
    std::vector<TokenRow> rows;
    const std::string text = qv_clasp_list_tokens(rows, true);
    EXPECT_EQ(text, "");
    EXPECT_LE(rows.size(), 1U);
    if (rows.empty()) return "none";
    EXPECT_EQ(rows[0].token_id, world().token_id);
    // Content that the content host makes up is all that tells of a minting.
    if (!rows[0].minted) {
        EXPECT_STREQ(target_.name, "Content host");
        return "listed, not as minted";
    }
    EXPECT_FALSE(rows[0].name.empty());
    if (!rows[0].lots.empty()) {
        EXPECT_LE(dec_cmp(rows[0].lots, world().reserve_lots), 0) << rows[0].lots;
    }
    if (rows[0].lots == world().reserve_lots && rows[0].name == world().token_name) return "listed";
    return rows[0].lots == world().reserve_lots ? "listed without its name" : "listed without all lots";
}

// Whoever stands on the board is a holder, with no more lots than he has, and would be paid at an address of
// his own.
void FaultCell::expect_true_rows(const HolderBoard& board) {
    for (const HolderRow& row : board.rows) {
        const auto holder =
            std::find_if(world().holders.begin(), world().holders.end(), [&](const Holder& h) {
                return h.who == row.who ||
                       std::find(h.owners.begin(), h.owners.end(), row.who) != h.owners.end();
            });
        ASSERT_NE(holder, world().holders.end()) << row.who << " holds nothing";
        EXPECT_LE(dec_cmp(row.lots, holder->lots), 0) << row.who;
        EXPECT_EQ(row.reserve, holder->kind == "reserve") << row.who;
        EXPECT_FALSE(own_.contains(row.dest)) << "the wallet would pay itself";
        const bool own_address =
            std::find(holder->owners.begin(), holder->owners.end(), row.dest) != holder->owners.end();
        EXPECT_TRUE(row.dest.empty() || row.dest == holder->dest || own_address)
            << row.who << " at " << row.dest;
    }
}

std::string FaultCell::look_at_snapshot() {
    HolderBoard board;
    const std::string text = qv_clasp_snapshot_holders(world().token_id, board);
    if (!text.empty()) {
        EXPECT_EQ(text, "error: this wallet does not hold that token and did not mint it.");
        return "refused";
    }
    expect_true_rows(board);
    const HolderBoard whole = board_of_the_world();
    if (board.total_lots != whole.total_lots) return "a part of the holders";
    const bool same = std::equal(board.rows.begin(), board.rows.end(), whole.rows.begin(), whole.rows.end(),
                                 [](const HolderRow& a, const HolderRow& b) {
                                     return a.who == b.who && a.dest == b.dest && a.lots == b.lots;
                                 });
    return same ? "whole" : "without some names";
}

std::string FaultCell::look_at_preview() {
    RoundState state;
    state.board = board_of_the_world();
    state.excluded.assign(state.board.rows.size(), 0);
    std::string text;
    const bool accepted = compute_preview(state, "0.05", library_wallet(), text);
    if (!accepted) {
        EXPECT_TRUE(text.starts_with("Not enough BSV on the connected Clasp")) << text;
        EXPECT_TRUE(state.preview.empty());
        return "refused";
    }
    std::int64_t shares = 0;
    for (const PreviewRow& row : due_rows(state)) shares += row.sats;
    EXPECT_EQ(shares + state.frozen_remainder, 5'000'000);
    QvClaspStatus status;
    qv_clasp_status(status);
    if (state.frozen_fee_estimate == 0)
        return status.balance_known ? "without fees" : "without fees and funds";
    return status.balance_known ? "whole" : "funds not checked";
}

void FaultCell::look_around(std::uint64_t seed) {
    begin(seed);
    // A bound wallet connects from its files alone.
    start_failing();
    EXPECT_EQ(qv_clasp_connect(), "success");
    outcomes_[CONNECT] = "connected";
    stop_failing();
    act(PREVIEW, [this] { return look_at_preview(); });
    act(SNAPSHOT, [this] { return look_at_snapshot(); });
    act(TOKENS, [this] { return look_at_tokens(); });
    EXPECT_TRUE(file_exists(world().main_wallet.document));
    expect_recovery();
}

void FaultCell::judge_inputs(const Transaction& tx) {
    for (const TxInput& input : tx.inputs) {
        EXPECT_FALSE(carries_token(input.txid, input.vout)) << "a token was spent as a coin";
        const TxOutput spent = chain().find(input.txid)->outputs[input.vout];
        EXPECT_TRUE(own_.contains(address_paid(spent)));
        EXPECT_EQ(chain().spender(input.txid, input.vout), tx.txid);
    }
}

// A success is one transaction on the chain, and a failure is none; where the look-ups fail, nobody can know.
void FaultCell::judge_send(const Sent& sent) {
    for (const Transaction& tx : sent.fresh) judge_inputs(tx);
    ASSERT_LE(sent.fresh.size(), 1U) << "paid more than once: " << sent.result;
    if (says_success(sent.result)) {
        ASSERT_EQ(sent.fresh.size(), 1U) << sent.result;
        EXPECT_EQ(sent.result, "success: " + sent.fresh[0].txid);
    } else {
        EXPECT_TRUE(is_own_send_text(sent.result)) << sent.result;
        EXPECT_TRUE(sent.fresh.empty() || target_.looks_up) << "paid, and told as: " << sent.result;
        unknown_ += sent.fresh.size();
    }
    for (const Transaction& tx : sent.fresh) {
        EXPECT_EQ(tx.outputs[0].sats, sent.sats);
        EXPECT_EQ(address_paid(tx.outputs[0]), sent.dest);
    }
}

std::string FaultCell::judge_run(const RoundState& frozen, const RoundMessage& message,
                                 const std::vector<Sent>& sends, std::int64_t before) {
    const std::vector<PreviewRow> due = due_rows(frozen);
    std::vector<Sent> paid;
    std::int64_t left = before;
    for (const Sent& sent : sends) {
        judge_send(sent);
        if (says_success(sent.result)) paid.push_back(sent);
        for (const Transaction& tx : sent.fresh) left -= tx.outputs[0].sats + miner_fee(tx);
        EXPECT_TRUE(says_success(sent.result) || &sent == &sends.back())
            << "a run that goes on after a failure";
    }
    EXPECT_EQ(wallet_sats(), left) << "change is lost";
    for (const PreviewRow& row : due) EXPECT_LE(received(row.dest), row.sats) << "paid twice";
    const std::vector<PayoutEntry> ledger = read_payout_entries();
    EXPECT_EQ(ledger.size(), paid.size());
    for (std::size_t i = 0; i < std::min(paid.size(), ledger.size()); ++i) {
        EXPECT_EQ("success: " + ledger[i].txid, paid[i].result);
        EXPECT_EQ(ledger[i].dest, paid[i].dest);
        EXPECT_EQ(ledger[i].sats, paid[i].sats);
    }
    const bool all = paid.size() == due.size() + 1;
    EXPECT_EQ(message.stopped, !all) << *message.text;
    if (all) return "all paid";
    std::string outcome = paid.empty() ? "nothing paid" : "stopped after " + std::to_string(paid.size());
    return unknown_ > 0 ? outcome + ", one more unknown" : outcome;
}

void FaultCell::pay(std::uint64_t seed, Action from) {
    if ((target_.asked_by & from) == 0) return;
    begin(seed);
    ASSERT_EQ(qv_clasp_connect(), "success");
    RoundState frozen;
    frozen.board = board_of_the_world();
    frozen.excluded.assign(frozen.board.rows.size(), 0);
    std::string text;
    ASSERT_TRUE(compute_preview(frozen, "0.05", library_wallet(), text)) << text;
    if (from == PAY) FakeClock::advance_seconds(60);
    const std::int64_t before = wallet_sats();
    std::vector<Sent> sends;
    RoundWallet wallet = library_wallet();
    wallet.send = [&](const std::string& dest, std::int64_t sats, const std::string& memo) {
        if (from == PAY_HOLDERS && sends.size() == 1) start_failing();
        const std::size_t mark = chain().txids().size();
        const std::string result = qv_clasp_send(dest, sats, memo);
        sends.push_back({dest, sats, result, transactions_since(mark)});
        return result;
    };
    SCOPED_TRACE(testing::Message() << "action " << from);
    if (from == PAY) start_failing();
    const Clock::time_point start = Clock::now();
    const std::unique_ptr<RoundMessage> message = run_pay(job_of(frozen), wallet);
    expect_bounded(start);
    stop_failing();
    outcomes_[from] = judge_run(frozen, *message, sends, before);
    expect_recovery();
}

// A new start after false refusals: it pays with the coins that are left, or says that there are none. Coins
// that were called spent come back when the file of spent coins is put aside, as the user's guide tells.
void FaultCell::expect_false_refusals_undone() {
    const std::string dest = settings().fee_address;
    const std::int64_t before = received(dest);
    restart();
    FakeClock::advance_seconds(120);
    const std::string result = qv_clasp_send(dest, 1'234, "");
    if (says_success(result)) {
        EXPECT_EQ(received(dest), before + 1'234);
    } else {
        EXPECT_EQ(result, "error: you have 0 in your Clasp wallet.");
        EXPECT_EQ(received(dest), before);
    }
    EXPECT_TRUE(std::filesystem::remove(home.root() + "/ord_snap/" + world().main_wallet.id + "_spent.json"));
}

// As a new start with services that are well: a payment goes out, and every satoshi is there.
void FaultCell::expect_recovery() {
    if (failure_.writes_off) expect_false_refusals_undone();
    restart();
    FakeClock::advance_seconds(120);
    const std::string dest = settings().fee_address;
    const std::int64_t before = received(dest);
    const std::string result = qv_clasp_send(dest, 4'321, "");
    EXPECT_TRUE(says_success(result)) << result;
    EXPECT_EQ(received(dest), before + 4'321);
    FakeClock::advance_seconds(120);
    QvClaspStatus status;
    qv_clasp_status(status);
    EXPECT_TRUE(status.balance_known);
    EXPECT_EQ(status.balance_sats, wallet_sats());
}

void FaultCell::check_for_update(std::uint64_t seed) {
    if ((target_.asked_by & UPDATE) == 0) return;
    begin(seed);
    box->set_page_version(7);
    EXPECT_EQ(fetch_latest_version(), 7);
    act(UPDATE, [] {
        const int version = fetch_latest_version();
        EXPECT_TRUE(version == 7 || version == -1) << version;
        return std::string(version == 7 ? "announced" : "silent");
    });
    EXPECT_EQ(fetch_latest_version(), 7);
}
