// Reports, sweeps, snapshots and sends on threads of their own, while the wallet is switched and unbound at
// random. The chain and the addresses tell whose money is whose: nothing of one wallet may be taken for the
// other's, and nothing is paid from a wallet that is not bound.
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <map>
#include <random>

#include "clasp/connect.h"
#include "index/ordinal_listing.h"
#include "tests/journeys/journey.h"

using namespace sandbox;

namespace {

constexpr std::uint64_t SEED = 20264;

std::chrono::milliseconds walk_time() {
    const char* wish = std::getenv("BURSARIA_LONG_TESTS");
    return wish && *wish == '1' ? std::chrono::seconds(60) : std::chrono::seconds(6);
}

class ThreadWalk : public Journey {
 protected:
    void begin() {
        open(4, SEED);
        connect();
        const Wallet* wallets[] = {&world().main_wallet, &world().other_wallet};
        for (const Wallet* wallet : wallets) {
            owners[wallet->identity().address] = wallet->id;
            for (std::uint32_t i = 0; i <= wallet->receive_index; ++i)
                owners[wallet->receive(i).address] = wallet->id;
            for (std::uint32_t i = 0; i <= wallet->ordinal_index + 5; ++i)
                owners[wallet->ordinal(i).address] = wallet->id;
            start_sats[wallet->id] = sats_of(wallet->id);
        }
        bound = world().main_wallet.id;
        first_mark = mark = chain().txids().size();
    }

    std::int64_t sats_of(const std::string& id) {
        std::int64_t sum = 0;
        for (const auto& [address, owner] : owners) {
            if (owner != id) continue;
            for (const Coin& coin : chain().unspent(address))
                if (!carries_token(coin.txid, coin.vout)) sum += coin.sats;
        }
        return sum;
    }

    std::string owner_of(const TxOutput& output) {
        const std::optional<Hash160> hash = script_owner(output.script);
        const auto found = owners.find(hash ? address_of(*hash) : "");
        return found == owners.end() ? "" : found->second;
    }

    // What has come onto the chain since the last change of wallets was paid by the one that was bound. A
    // send holds the mutex until its transaction is there, so nothing is on its way now. Callers hold the
    // wallet mutex.
    void look_at_chain() {
        const std::vector<Transaction> fresh = transactions_since(mark);
        for (const Transaction& tx : fresh) {
            for (const TxInput& input : tx.inputs) {
                EXPECT_EQ(owner_of(chain().find(input.txid)->outputs[input.vout]), bound)
                    << "a payment from a wallet that was not bound";
                EXPECT_FALSE(carries_token(input.txid, input.vout)) << "a token was spent as a coin";
            }
        }
        mark += fresh.size();
    }

    void change_wallet(std::mt19937_64& random) {
        const WalletLock lock = qv_clasp_lock_wallet();
        look_at_chain();
        const std::string ids[] = {world().main_wallet.id, world().other_wallet.id, ""};
        bound = ids[random() % 3];
        if (bound.empty()) {
            qv_clasp_unbind();
        } else {
            qv_clasp_write_bind(bound);
            qv_clasp_wipe_session();
        }
        ++changes;
    }

    void report() {
        QvClaspStatus status;
        qv_clasp_status(status);
        if (status.address.empty()) return;
        ASSERT_TRUE(owners.contains(status.address)) << status.address;
        if (!status.balance_known || status.balance_sats <= 0) return;
        ++reports;
        const std::string& owner = owners[status.address];
        // Neither wallet ever receives, so that its money only falls; and the larger one, while it has any to
        // speak of, never shows as little as the smaller one began with.
        EXPECT_LE(status.balance_sats, start_sats[owner])
            << "money of another wallet, reported for " << owner;
        const std::int64_t smaller = start_sats[world().other_wallet.id];
        if (owner == world().main_wallet.id) {
            EXPECT_GT(status.balance_sats, std::min(smaller, sats_of(owner) / 2))
                << "money of another wallet, reported for " << owner;
        }
    }

    void sweep() {
        std::vector<QvClaspOrdRow> rows;
        const std::string result = qv_clasp_list_ordinals(rows);
        EXPECT_TRUE(result.empty() || rows.empty()) << result;
        std::set<std::string> seen;
        for (const QvClaspOrdRow& row : rows)
            if (owners.contains(row.address)) seen.insert(owners[row.address]);
        EXPECT_LE(seen.size(), 1U) << "one sweep shows the ordinals of two wallets";
    }

    void snapshot() {
        HolderBoard board;
        const std::string result = qv_clasp_snapshot_holders(world().token_id, board);
        if (!result.empty()) {
            EXPECT_TRUE(result.starts_with("error: ")) << result;
        }
    }

    // Each amount is sent once, so that the chain tells which send it was.
    void send(std::int64_t sats) {
        const std::string dest = world().holders[0].keys[0].address;
        const std::string result = qv_clasp_send(dest, sats, "");
        if (!result.starts_with("success: ")) {
            EXPECT_TRUE(result.starts_with("error: ")) << result;
            return;
        }
        ++payments;
        const std::optional<Transaction> tx = chain().find(result.substr(9));
        ASSERT_TRUE(tx.has_value()) << "a success that is not on the chain";
        EXPECT_EQ(tx->outputs[0].sats, sats);
    }

    std::map<std::string, std::string> owners;  // address to wallet id; read-only while threads run
    std::map<std::string, std::int64_t> start_sats;
    std::string bound;     // under the wallet mutex
    std::size_t mark = 0;  // as well
    std::size_t first_mark = 0;
    std::atomic<int> changes{0};
    std::atomic<int> reports{0};
    std::atomic<int> payments{0};
};

TEST_F(ThreadWalk, KeepsTwoWalletsApartWhileTheyAreSwitched) {
    begin();
    const auto end = std::chrono::steady_clock::now() + walk_time();
    const auto goes_on = [&] { return std::chrono::steady_clock::now() < end && !HasFailure(); };
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 2; ++i)
            threads.emplace_back([&] {
                while (goes_on()) report();
            });
        threads.emplace_back([&] {
            while (goes_on()) sweep();
        });
        threads.emplace_back([&] {
            while (goes_on()) snapshot();
        });
        for (int i = 0; i < 2; ++i)
            threads.emplace_back([&, i] {
                for (std::int64_t sats = 1'000 + i; goes_on(); sats += 2) send(sats);
            });
        threads.emplace_back([&] {
            std::mt19937_64 random(SEED);
            while (goes_on()) {
                // Now and then long enough for a report to come to its end, which is what a switch must
                // spoil.
                const std::uint64_t longest_ms = random() % 3 == 0 ? 900 : 60;
                std::this_thread::sleep_for(std::chrono::milliseconds(random() % longest_ms));
                FakeClock::advance_milliseconds(static_cast<std::int64_t>(random() % 9'000));
                change_wallet(random);
            }
        });
    }
    const WalletLock lock = qv_clasp_lock_wallet();
    look_at_chain();
    EXPECT_GT(changes, 1);
    EXPECT_GT(reports + payments, 0) << "the walk did nothing that could have gone wrong";
    RecordProperty("changes", changes);
    RecordProperty("reports", reports);
    RecordProperty("payments", payments);

    std::set<std::int64_t> paid;
    for (const Transaction& tx : transactions_since(first_mark))
        EXPECT_TRUE(paid.insert(tx.outputs[0].sats).second) << "paid twice: " << tx.txid;
    EXPECT_GE(paid.size(), static_cast<std::size_t>(payments));
    for (const auto& [id, sats] : start_sats) EXPECT_LE(sats_of(id), sats);
}

}  // namespace
