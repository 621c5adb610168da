#include "tests/journeys/journey.h"

#include <algorithm>
#include <chrono>

#include "base/text.h"

using namespace sandbox;

namespace {

// Nobody has to wait this long for a request that comes at all.
constexpr int MOST_LOOKS = 6000;
constexpr std::chrono::milliseconds LOOK{5};

bool is_plain(const Bytes& script) {
    const std::optional<Hash160> owner = script_owner(script);
    return owner && script == p2pkh_script(*owner);
}

}  // namespace

Journey::~Journey() {
    wait_for_receipts();
    qv_clasp_set_log_sink(nullptr);
    forget_memory();
    clock.reset();
    if (box) box->stop();
}

void Journey::open(WorldOptions options) {
    options.folder = home.folder();
    box = std::make_unique<Sandbox>(Options{.world = options, .ports = {}});
    std::string error;
    ASSERT_TRUE(box->start(error)) << error;
    home.use_settings(box->settings_for());
    restart();
}

void Journey::open(int holders, std::uint64_t seed, bool token_among_coins) {
    WorldOptions options;
    options.holders = holders;
    options.seed = seed;
    options.token_among_coins = token_among_coins;
    open(options);
}

void Journey::connect() {
    ASSERT_EQ(qv_clasp_connect(), "success");
    clock = std::make_unique<FakeClock>();
}

void Journey::forget_memory() {
    {
        const WalletLock lock = qv_clasp_lock_wallet();
        qv_clasp_wipe_session();
    }
    qv_clasp_set_active_wallet_id("");
}

void Journey::restart() {
    forget_memory();
    qv_clasp_init(home.folder() + "/program", "The Bursaria");
}

void Journey::switch_wallet() {
    const WalletLock lock = qv_clasp_lock_wallet();
    qv_clasp_write_bind(world().other_wallet.id);
    qv_clasp_wipe_session();
}

void Journey::fail(const std::string& service, const std::string& failure, const std::string& path_part,
                   int times, int slow_ms) {
    box->faults().set(service,
                      {.failure = failure, .path_part = path_part, .times = times, .slow_ms = slow_ms});
}

std::jthread Journey::when_asked(const std::string& path_part, std::function<void()> act) {
    const std::size_t before = box->count("", path_part);
    return std::jthread([this, path_part, before, act = std::move(act)] {
        for (int look = 0; look < MOST_LOOKS && box->count("", path_part) == before; ++look)
            std::this_thread::sleep_for(LOOK);
        act();
    });
}

RoundState Journey::frozen_round(const std::string& amount) {
    RoundState state;
    EXPECT_EQ(qv_clasp_snapshot_holders(world().token_id, state.board), "");
    state.excluded.assign(state.board.rows.size(), 0);
    std::string text;
    EXPECT_TRUE(compute_preview(state, amount, library_wallet(), text)) << text;
    return state;
}

PayJob Journey::job_of(const RoundState& state) {
    return {state.preview, state.frozen_token_id, state.board.token_name};
}

std::vector<PreviewRow> Journey::due_rows(const RoundState& state) {
    std::vector<PreviewRow> rows = state.preview;
    std::erase_if(rows, [](const PreviewRow& row) { return !is_due(row); });
    return rows;
}

std::int64_t Journey::wallet_sats() {
    const Wallet& wallet = world().main_wallet;
    std::vector<std::string> addresses{wallet.identity().address};
    for (std::uint32_t i = 0; i <= wallet.receive_index; ++i) addresses.push_back(wallet.receive(i).address);
    std::int64_t sum = 0;
    for (const std::string& address : addresses) {
        for (const Coin& coin : chain().unspent(address))
            if (is_plain(coin.script)) sum += coin.sats;
    }
    return sum;
}

std::int64_t Journey::received(const std::string& address) {
    std::int64_t sum = 0;
    for (const std::string& txid : chain().history(address)) {
        const Transaction tx = *chain().find(txid);
        for (const TxOutput& output : tx.outputs) {
            const std::optional<Hash160> owner = script_owner(output.script);
            if (owner && address_of(*owner) == address && is_plain(output.script)) sum += output.sats;
        }
    }
    return sum;
}

std::int64_t Journey::miner_fee(const Transaction& tx) {
    std::int64_t fee = 0;
    for (const TxInput& input : tx.inputs) fee += chain().find(input.txid)->outputs[input.vout].sats;
    for (const TxOutput& output : tx.outputs) fee -= output.sats;
    return fee;
}

std::vector<Transaction> Journey::transactions_since(std::size_t mark) {
    std::vector<Transaction> transactions;
    const std::vector<std::string> txids = chain().txids();
    for (std::size_t i = mark; i < txids.size(); ++i) transactions.push_back(*chain().find(txids[i]));
    return transactions;
}

bool Journey::carries_token(const std::string& txid, std::uint32_t vout) {
    return read_script(chain().find(txid)->outputs[vout].script).inscribed;
}

std::size_t count_requests(const std::vector<SeenRequest>& requests, const std::string& method,
                           const std::string& path_part) {
    return static_cast<std::size_t>(std::count_if(requests.begin(), requests.end(), [&](const auto& request) {
        return request.method == method && contains(request.path, path_part);
    }));
}
