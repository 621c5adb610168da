// The program ended at any moment: at each of its requests and at each of its file operations. After it the
// chain is at most one payment ahead of the ledger, no record lies, and the next start pays with every coin.
#include <signal.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "base/text.h"
#include "tests/faults/driven_program.h"
#include "tests/journeys/journey.h"
#include "wallet/coin_records.h"

using namespace sandbox;

namespace {

constexpr const char* POT = "0.01";
constexpr int ALL_MOMENTS = 1'000'000;
// Hundreds of runs pay more than the wallet begins with.
constexpr std::int64_t LOW_SATS = 50'000'000;
constexpr std::int64_t ENOUGH_SATS = 500'000'000;

int moments_wanted() {
    const char* wish = std::getenv("BURSARIA_LONG_TESTS");
    if (wish && *wish == '1') return ALL_MOMENTS;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return 3;
#else
    return 12;
#endif
}

enum class Way { BeforeRequest, AfterRequest, BeforeFileWork, HalfWay };

struct Killing {
    const char* name;
    const char* command;  // "connect", "tokens" or "pay"
    Way way;
};

const std::vector<Killing> KILLINGS{
    {"PayBeforeARequest", "pay", Way::BeforeRequest},
    {"PayAfterARequest", "pay", Way::AfterRequest},
    {"PayBeforeFileWork", "pay", Way::BeforeFileWork},
    {"PayHalfWayThroughAWrite", "pay", Way::HalfWay},
    {"TokensBeforeFileWork", "tokens", Way::BeforeFileWork},
    {"TokensHalfWayThroughAWrite", "tokens", Way::HalfWay},
    {"ConnectBeforeFileWork", "connect", Way::BeforeFileWork},
};

class Killed : public Journey, public testing::WithParamInterface<Killing> {
 protected:
    bool is_at_request() const {
        return GetParam().way == Way::BeforeRequest || GetParam().way == Way::AfterRequest;
    }

    void begin() {
        open(4, 77, true);
        settings_path = home.folder() + "/program.json";
        report_path = home.folder() + "/operations";
        write_program_settings(settings_path, box->settings_for());
        // The same installation, so that this process looks at the same wallet's ledger.
        qv_clasp_init("/console_driver", "The Bursaria");
        document = home.read("/wallets/" + world().main_wallet.id + "/wallet.json");
        const ProgramEnd end = run_program(settings_path, {"connect"}, {});
        ASSERT_EQ(end.exit_status, 0) << end.err;
        qv_clasp_set_active_wallet_id(world().main_wallet.id);
    }

    std::vector<std::string> arguments_of(const std::string& command) {
        if (command == "pay") return {"pay", world().token_id, POT, "--yes"};
        return {command};
    }

    // A first start of everything but the wallet, or one with all that earlier runs have left.
    void prepare(bool first_start) {
        if (GetParam().command == std::string("connect")) remove_folder("/binds");
        if (!first_start) return;
        // As the wallet program made it, so that the run saves it.
        home.write("/wallets/" + world().main_wallet.id + "/wallet.json", document);
        for (const char* folder : {"/ord_snap", "/ord_cache", "/ord_inbox", "/tx_hist", "/bursaria", "/art"})
            remove_folder(folder);
    }
    void note_files() {
        had.clear();
        for (const std::string& path : record_paths())
            if (home.exists(path)) had.insert(path);
    }
    void remove_folder(const std::string& path) {
        std::error_code error;
        std::filesystem::remove_all(utf8_path(home.root() + path), error);
    }

    // Runs the command and ends it at that moment; false if it came to its own end before it.
    bool run_until(int moment) {
        std::atomic<pid_t> program{0};
        std::atomic<int> requests{0};
        std::map<std::string, std::string> environment{{"KILL_REPORT", report_path}};
        remove_file(report_path);
        if (is_at_request()) {
            const bool wanted_after = GetParam().way == Way::AfterRequest;
            box->watch_requests([&, wanted_after](const SeenRequest&, bool acted) {
                if (acted != wanted_after || ++requests != moment) return false;
                while (program == 0) std::this_thread::yield();
                ::kill(program, SIGKILL);
                siginfo_t info;
                ::waitid(P_PID, static_cast<id_t>(program), &info, WEXITED | WNOWAIT);
                return true;
            });
        } else {
            environment["KILL_AT"] = std::to_string(moment);
            environment["KILL_HALF"] = GetParam().way == Way::HalfWay ? "1" : "0";
        }
        const ProgramEnd end = run_program(settings_path, arguments_of(GetParam().command), environment,
                                           [&](pid_t id) { program = id; });
        box->watch_requests({});
        if (!end.killed) {
            EXPECT_EQ(end.exit_status, 0) << end.err;
        }
        EXPECT_NE(end.exit_status, -2) << "hung";
        return end.killed;
    }

    std::string last_operation() const {
        std::ifstream file(report_path);
        std::string last;
        for (std::string line; std::getline(file, line);) last = line;
        return last;
    }
    // Its last write is in two, which no file system promises to spare it.
    bool is_torn(const std::string& path_end) const {
        const std::string last = last_operation();
        return GetParam().way == Way::HalfWay && last.starts_with("write ") && last.ends_with(path_end);
    }

    struct Book {
        bool readable = true;
        std::vector<PayoutEntry> entries;
    };
    Book book() {
        Json ledger;
        const std::string path = "/bursaria/" + world().main_wallet.id + "_paid.json";
        Book found;
        found.readable = !home.exists(path) || parse_json(home.read(path), ledger);
        found.entries = read_payout_entries();
        return found;
    }

    // The payments since the mark, in order, against the new entries of the ledger, of which one may be
    // missing.
    bool is_ahead(std::size_t mark, const Book& before) {
        const Book after = book();
        if (!after.readable && is_torn("_paid.json")) return true;
        EXPECT_TRUE(after.readable || before.entries.empty()) << "earlier entries are lost";
        const std::vector<Transaction> fresh = transactions_since(mark);
        EXPECT_GE(after.entries.size(), before.entries.size()) << "earlier entries are lost";
        if (after.entries.size() < before.entries.size()) return true;
        const std::size_t written = after.entries.size() - before.entries.size();
        EXPECT_LE(written, fresh.size()) << "an entry without a payment";
        EXPECT_LE(fresh.size(), written + 1) << "more than one payment ahead of the ledger";
        for (std::size_t i = 0; i < std::min(written, fresh.size()); ++i) {
            const PayoutEntry& entry = after.entries[before.entries.size() + i];
            EXPECT_EQ(entry.txid, fresh[i].txid);
            EXPECT_EQ(entry.sats, fresh[i].outputs[0].sats);
        }
        return fresh.size() != written;
    }

    // Every coin that these payments spent is in the record, and so is the change of the last one.
    void expect_recorded(const std::vector<Transaction>& payments) {
        const std::string scope = "/ord_snap/" + world().main_wallet.id;
        const std::string spent = home.read(scope + "_spent.json");
        for (const Transaction& tx : payments) {
            for (const TxInput& input : tx.inputs)
                EXPECT_TRUE(contains(spent, input.txid + ":" + std::to_string(input.vout)))
                    << "a spent coin is forgotten";
        }
        EXPECT_TRUE(payments.empty() || contains(home.read(scope + "_change.json"), payments.back().txid))
            << "change is forgotten";
    }

    // A coin in the record of spent ones is spent, and change that waits is on the chain: a lie in either
    // would lose money or promise some that is not there.
    void expect_true_records() {
        const std::string scope = "/ord_snap/" + world().main_wallet.id;
        const Json spent = home.read_json(scope + "_spent.json");
        const Json change = home.read_json(scope + "_change.json");
        for (const Json& key : json_member(spent, "outpoints")) {
            const std::string text = key.get<std::string>();
            const std::string txid = text.substr(0, 64);
            if (!chain().find(txid)) continue;  // the other byte order
            EXPECT_TRUE(chain().spender(txid, static_cast<std::uint32_t>(std::stoul(text.substr(65)))))
                << text << " is not spent";
        }
        for (const Json& coin : json_member(change, "coins"))
            EXPECT_TRUE(chain().find(json_text(coin, "txid"))) << coin << " is nowhere";
    }

    std::vector<std::string> record_paths() {
        const std::string id = world().main_wallet.id;
        return {"/wallets/" + id + "/wallet.json", "/ord_snap/" + id + "_spent.json",
                "/ord_snap/" + id + "_change.json", "/bursaria/" + id + "_paid.json", "/wallets.json"};
    }

    // What no end of the program between two operations may leave behind.
    void expect_whole_files() {
        for (const std::string& path : record_paths()) {
            Json json;
            // A file that did not exist has nothing to lose while it is made.
            if (!had.contains(path) || is_torn(path.substr(path.rfind('/')))) continue;
            EXPECT_TRUE(parse_json(home.read(path), json))
                << path << ": \"" << home.read(path).substr(0, 80) << "\"";
        }
    }

    // The wallet program gives a torn document back, as after its own backup.
    void mend_torn_document() {
        if (is_torn("/wallet.json"))
            home.write("/wallets/" + world().main_wallet.id + "/wallet.json", document);
    }

    // `lagging`: the chain service's lists are two transactions old and nothing else tells of spends, so that
    // only the program's own records do.
    void expect_the_next_start_to_pay(bool lagging, bool ahead) {
        if (lagging) box->set_index_lag(2);
        if (lagging) fail("woc", "html500", "/unconfirmed/history");
        ProgramEnd end = run_program(settings_path, {"connect"}, {});
        EXPECT_TRUE(end.exit_status == 0 || contains(end.err, "Already connected.")) << end.err;
        const std::size_t mark = chain().txids().size();
        const std::int64_t before = wallet_sats();
        const Book old = book();
        box->clear_requests();
        end = run_program(settings_path, arguments_of("pay"), {});
        EXPECT_EQ(end.exit_status, 0) << end.out << end.err;
        const std::vector<Transaction> fresh = transactions_since(mark);
        std::int64_t left = before;
        for (const Transaction& tx : fresh) {
            left -= tx.outputs[0].sats + miner_fee(tx);
            for (const TxInput& input : tx.inputs)
                EXPECT_FALSE(carries_token(input.txid, input.vout)) << "a token was spent as a coin";
        }
        EXPECT_EQ(wallet_sats(), left);
        const Book now = book();
        EXPECT_TRUE(now.readable);
        EXPECT_EQ(now.entries.size(), (old.readable ? old.entries.size() : 0) + fresh.size());
        EXPECT_GE(fresh.size(), 3U);
        expect_recorded(fresh);
        // The change that a payment spent which the program did not live to write down is offered once more.
        if (!ahead && !torn_records()) {
            EXPECT_EQ(box->count("POST", "/tx/raw"), 0U) << "a coin was spent twice";
        }
        box->set_index_lag(0);
        box->faults().clear();
    }
    bool torn_records() const { return is_torn("_spent.json") || is_torn("_change.json"); }

    void expect_the_whole_balance() {
        chain().mine();
        const ProgramEnd end = run_program(settings_path, {"status", "--json"}, {});
        Json status;
        ASSERT_TRUE(parse_json(end.out, status)) << end.out << end.err;
        EXPECT_EQ(status["balance_known"], true);
        EXPECT_EQ(status["balance_sats"], wallet_sats());
    }

    int count_moments(bool first_start) {
        box->clear_requests();
        prepare(first_start);
        EXPECT_FALSE(run_until(0));
        if (is_at_request()) return static_cast<int>(box->requests().size());
        std::ifstream file(report_path);
        int count = 0;
        document_moments.clear();
        for (std::string line; std::getline(file, line);) {
            ++count;
            if (line.ends_with("/wallet.json")) document_moments.insert(count);
        }
        return count;
    }

    struct Moment {
        int number = 0;
        bool first_start = false;
    };
    // All of them, or some: a few of the way to the payments, more of the end, where money moves, and each at
    // which the document with the words is written.
    std::vector<Moment> choose_moments(int& all) {
        std::vector<Moment> moments;
        all = 0;
        for (const bool first_start : {true, false}) {
            const int count = count_moments(first_start);
            const int wanted = moments_wanted();
            const int last_step = is_at_request() ? 1 : 4;
            all += count;
            for (int number = 1; number <= count; ++number) {
                const int to_end = count - number;
                const bool at_end = to_end < wanted * last_step && to_end % last_step == 0;
                if (at_end || document_moments.contains(number) ||
                    number % std::max(1, count * 3 / wanted) == 0)
                    moments.push_back({number, first_start});
            }
        }
        return moments;
    }

    std::set<int> document_moments;
    std::set<std::string> had;  // records that existed before the program was killed
    std::string settings_path;
    std::string report_path;
    std::string document;
};

TEST_P(Killed, LosesNothingAndPaysAgain) {
    begin();
    int all = 0;
    const std::vector<Moment> moments = choose_moments(all);
    ASSERT_GT(moments.size(), 3U);
    int killed = 0;
    for (const Moment& moment : moments) {
        if (HasFailure()) break;
        SCOPED_TRACE(testing::Message()
                     << "moment " << moment.number << (moment.first_start ? ", first start" : ""));
        if (wallet_sats() < LOW_SATS)
            chain().fund({{ENOUGH_SATS, p2pkh_script(world().main_wallet.receive(0).hash160)}});
        prepare(moment.first_start);
        note_files();
        const std::size_t mark = chain().txids().size();
        const Book before = book();
        if (!run_until(moment.number)) continue;
        SCOPED_TRACE(last_operation());
        ++killed;
        const bool ahead = is_ahead(mark, before);
        expect_true_records();
        expect_whole_files();
        mend_torn_document();
        // A first start has lost the records of the runs before it, and needs lists that are up to date.
        expect_the_next_start_to_pay(!moment.first_start && killed % 2 == 0, ahead);
        expect_true_records();
        if (killed % 8 == 0) expect_the_whole_balance();
    }
    expect_the_whole_balance();
    EXPECT_GT(killed, 0);
    std::printf("kills: %d of %d moments (%s)\n", killed, all, GetParam().name);
}

std::string killing_name(const testing::TestParamInfo<Killing>& info) {
    return info.param.name;
}
INSTANTIATE_TEST_SUITE_P(While, Killed, testing::ValuesIn(KILLINGS), killing_name);

}  // namespace
