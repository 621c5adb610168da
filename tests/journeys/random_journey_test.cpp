// A long random walk of payments, reports, sweeps and restarts among services that lag and fail. After each
// step the chain is looked at: no token spent, nothing lost, nobody paid but who was to be paid, and once.
#include <chrono>
#include <cstdlib>
#include <random>

#include "index/ordinal_listing.h"
#include "tests/journeys/journey.h"

using namespace sandbox;

namespace {

struct Bounds {
    int steps = 0;
    std::chrono::seconds time{0};
};
Bounds bounds() {
    const char* wish = std::getenv("BURSARIA_LONG_TESTS");
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    const bool quick = true;
#else
    const bool quick = wish && *wish == '0';
#endif
    if (quick) return {250, std::chrono::seconds(6)};
    if (wish && *wish == '1') return {6'000, std::chrono::seconds(60)};
    return {1'500, std::chrono::seconds(20)};
}

struct Walk {
    const char* name;
    std::uint64_t seed;
    bool refusals;  // services also refuse good transactions, after which coins stay written off
};

class RandomWalk : public Journey, public testing::WithParamInterface<Walk> {
 protected:
    std::size_t below(std::size_t limit) { return static_cast<std::size_t>(random() % limit); }

    void begin() {
        open(6, GetParam().seed, true);
        connect();
        const Wallet& wallet = world().main_wallet;
        own.insert(wallet.identity().address);
        for (std::uint32_t i = 0; i <= wallet.receive_index; ++i) own.insert(wallet.receive(i).address);
        for (const Holder& holder : world().holders) payees.push_back(holder.keys[0].address);
        payees.push_back(wallet.receive(0).address);
        expected_sats = chain_sats();
        mark = chain().txids().size();
    }

    std::int64_t chain_sats() {
        std::int64_t sum = 0;
        for (const std::string& address : own) {
            for (const Coin& coin : chain().unspent(address))
                if (!carries_token(coin.txid, coin.vout)) sum += coin.sats;
        }
        return sum;
    }

    std::string owner_of(const TxOutput& output) {
        const std::optional<Hash160> owner = script_owner(output.script);
        return owner ? address_of(*owner) : "";
    }

    // Looks at what the step has put on the chain. The wallet spends only plain coins of its own, each once.
    void look_at(const std::vector<Transaction>& fresh) {
        for (const Transaction& tx : fresh) {
            for (const TxInput& input : tx.inputs) {
                const Transaction source = *chain().find(input.txid);
                EXPECT_FALSE(carries_token(input.txid, input.vout)) << "a token was spent as a coin";
                EXPECT_TRUE(own.contains(owner_of(source.outputs[input.vout])));
                EXPECT_EQ(chain().spender(input.txid, input.vout), tx.txid);
            }
            const std::int64_t fee = miner_fee(tx);
            const auto size = static_cast<std::int64_t>(tx.raw.size());
            EXPECT_LE(fee, (size * 100 + 999) / 1000 + static_cast<std::int64_t>(tx.inputs.size()));
            expected_sats -= fee;
            for (const TxOutput& output : tx.outputs)
                if (!own.contains(owner_of(output))) expected_sats -= output.sats;
        }
        EXPECT_EQ(chain_sats(), expected_sats);
    }

    void pay() {
        const std::string dest = payees[below(payees.size())];
        const auto sats = static_cast<std::int64_t>(1 + random() % 200'000);
        const std::string result = qv_clasp_send(dest, sats, below(20) == 0 ? "a memo" : "");
        const std::vector<Transaction> fresh = transactions_since(mark);
        EXPECT_LE(fresh.size(), 1U) << "paid twice: " << result;
        if (!result.starts_with("success: ")) return;
        ++payments;
        ASSERT_EQ(fresh.size(), 1U) << result;
        EXPECT_EQ(result, "success: " + fresh[0].txid);
        EXPECT_EQ(fresh[0].outputs[0].sats, sats);
        EXPECT_EQ(owner_of(fresh[0].outputs[0]), dest);
    }

    void order_failure() {
        static const std::vector<const char*> services{"home", "woc", "ordinals", "arc"};
        static const std::vector<const char*> failures{"down",
                                                       "429",
                                                       "html500",
                                                       "404",
                                                       "empty",
                                                       "badjson",
                                                       "wrongtypes",
                                                       "accept_silently",
                                                       "drop_after_accept"};
        static const std::vector<const char*> parts{"", "POST", "GET", "/unspent", "/tx/"};
        const bool refuse = GetParam().refusals && below(5) == 0;
        const char* failure =
            refuse ? (below(2) == 0 ? "conflict" : "missing_inputs") : failures[below(failures.size())];
        fail(services[below(services.size())], failure, parts[below(parts.size())],
             static_cast<int>(1 + below(12)));
    }

    void take_step() {
        const std::size_t dice = below(100);
        if (dice < 55) return pay();
        if (dice < 63) {
            QvClaspStatus status;
            return qv_clasp_status(status);
        }
        if (dice < 66) {
            std::vector<QvClaspOrdRow> rows;
            qv_clasp_list_ordinals(rows);
        } else if (dice < 70) {
            restart();
        } else if (dice < 74) {
            chain().mine();
        } else if (dice < 79) {
            box->set_index_lag(below(4));
        } else if (dice < 87) {
            order_failure();
        } else if (dice < 92) {
            box->faults().clear();
        } else {
            FakeClock::advance_milliseconds(static_cast<std::int64_t>(random() % 30'000));
        }
    }

    std::mt19937_64 random{GetParam().seed};
    std::set<std::string> own;
    std::vector<std::string> payees;
    std::int64_t expected_sats = 0;
    std::size_t mark = 0;
    int payments = 0;
};

TEST_P(RandomWalk, LosesNothingBurnsNothingAndPaysNobodyTwice) {
    begin();
    const Bounds limit = bounds();
    const auto end = std::chrono::steady_clock::now() + limit.time;
    int step = 0;
    while (step < limit.steps && std::chrono::steady_clock::now() < end && !HasFailure()) {
        take_step();
        look_at(transactions_since(mark));
        mark = chain().txids().size();
        ++step;
    }
    EXPECT_FALSE(HasFailure()) << "at step " << step << " of seed " << GetParam().seed;
    EXPECT_GT(payments, step / 4);
    RecordProperty("steps", step);
    RecordProperty("payments", payments);
    box->faults().clear();
    box->set_index_lag(0);
    chain().mine();
    FakeClock::advance_seconds(120);
    QvClaspStatus status;
    qv_clasp_status(status);
    EXPECT_TRUE(status.balance_known);
    EXPECT_LE(status.balance_sats, chain_sats());
    if (!GetParam().refusals) {
        EXPECT_EQ(status.balance_sats, chain_sats());
    }
}

std::string walk_name(const testing::TestParamInfo<Walk>& walk) {
    return walk.param.name;
}
INSTANTIATE_TEST_SUITE_P(Walks, RandomWalk,
                         testing::Values(Walk{"Failures", 20261, false}, Walk{"Refusals", 20262, true}),
                         walk_name);

}  // namespace
