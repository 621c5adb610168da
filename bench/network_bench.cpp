// What meets the services: snapshot, preview, send, pay run and sweep against a sandbox in another process.
// "besides_ms" is the processor time that the program takes outside its requests.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <fstream>

#include "base/clock.h"
#include "bench/bench_wallet.h"
#include "bench/curl_time.h"
#include "bench/sandbox_process.h"
#include "clasp/qv_clasp_wallet.h"
#include "core/dividend_split.h"
#include "core/pay_run.h"
#include "index/ordinal_listing.h"
#include "net/http_client.h"
#include "program/wallet_calls.h"
#include "records/record_files.h"
#include "sandbox/scripts.h"
#include "sandbox/wallet_files.h"
#include "wallet/address.h"

namespace {

using Clock = std::chrono::steady_clock;

// One stretch of work: its real time goes to the benchmark, the rest to the counters.
class Stretch {
 public:
    explicit Stretch(benchmark::State& state) : state_(state) { reset_curl_time(); }
    ~Stretch() {
        const std::chrono::duration<double> took = Clock::now() - begin_;
        const std::int64_t cpu_ns = process_cpu_ns() - cpu_begin_;
        const CurlTime curl = curl_time();
        state_.SetIterationTime(took.count());
        state_.counters["besides_ms"] = static_cast<double>(cpu_ns - curl.cpu_ns) / 1e6;
        state_.counters["requests"] = static_cast<double>(curl.requests);
        state_.counters["slowest_ms"] = static_cast<double>(curl.slowest_ns) / 1e6;
    }

 private:
    benchmark::State& state_;
    Clock::time_point begin_ = Clock::now();
    std::int64_t cpu_begin_ = process_cpu_ns();
};

sandbox::WorldOptions world_of(std::int64_t holders) {
    sandbox::WorldOptions world;
    world.holders = static_cast<int>(holders);
    return world;
}

void bare_get(benchmark::State& state) {
    const TestHome home;
    const SandboxProcess box(home, world_of(1));
    const std::string url = settings().woc_base + "/tx/" + box.token_id().substr(0, 64) + "/hex";
    std::string body;
    std::string error;
    for (auto _ : state)
        if (!qv_clasp_http_get(url, body, error, 5)) state.SkipWithError(error.c_str());
}
BENCHMARK(bare_get)->UseRealTime();

void bare_tls_get(benchmark::State& state) {
    const TestHome home;
    const SandboxProcess box(home, world_of(1));
    const std::string url = "https://" + settings().home_host + "/oi/oracle/ident/txids";
    std::string body;
    std::string error;
    for (auto _ : state)
        if (!qv_clasp_http_get(url, body, error, 5)) state.SkipWithError(error.c_str());
}
BENCHMARK(bare_tls_get)->UseRealTime();

void snapshot(benchmark::State& state, bool names) {
    const TestHome home;
    const SandboxProcess box(home, world_of(state.range(0)));
    if (!names) {
        Settings changed = settings();
        changed.home_host = "127.0.0.1:1";
        override_settings(changed);
    }
    for (auto _ : state) {
        const Stretch stretch(state);
        HolderBoard board;
        const std::string error = qv_clasp_snapshot_holders(box.token_id(), board);
        if (!error.empty()) state.SkipWithError(error.c_str());
        state.counters["rows"] = static_cast<double>(board.rows.size());
    }
}
BENCHMARK_CAPTURE(snapshot, without_names, false)->Arg(1000)->Arg(10000)->Iterations(1)->UseManualTime();
BENCHMARK_CAPTURE(snapshot, with_names, true)->Arg(1000)->Arg(10000)->Iterations(1)->UseManualTime();

constexpr std::uint32_t COIN_ADDRESSES = 400;

void rewrite_document(const sandbox::World& world, const char* account_key, Json counters) {
    Json document;
    read_json_file(world.main_wallet.document, document);
    document[account_key] = std::move(counters);
    write_text_file(world.main_wallet.document, dump_json(document, 2));
}

// Coins on the first 400 receive addresses.
void spread_coins(sandbox::Sandbox& box, std::size_t coins) {
    std::vector<sandbox::TxOutput> outputs;
    std::vector<Bytes> scripts;
    for (std::uint32_t i = 0; i < COIN_ADDRESSES; ++i)
        scripts.push_back(sandbox::p2pkh_script(box.world().main_wallet.receive(i).hash160));
    for (std::size_t i = 0; i < coins; ++i) outputs.push_back({5'000'000, scripts[i % scripts.size()]});
    box.chain().fund(outputs);
    rewrite_document(box.world(), "recv", {0, COIN_ADDRESSES - 1, 0, 0, 0, 2});
}

std::string address_of(std::size_t number) {
    Hash160 hash{};
    for (std::size_t i = 0; i < 8; ++i) hash[i] = static_cast<std::uint8_t>((number + 1) >> (8 * i));
    return qv_clasp_address_from_hash160(hash);
}

RoundState round_of(std::size_t holders) {
    RoundState state;
    state.board.loaded = true;
    state.board.token_id = std::string(64, 'c') + "_0";
    state.board.token_name = "Meadow";
    for (std::size_t i = 0; i < holders; ++i)
        state.board.rows.push_back({"holder" + std::to_string(i), address_of(i), "", "1000", false});
    state.board.total_lots = state.board.in_market_lots = std::to_string(holders * 1000);
    state.board.reserve_lots = "0";
    state.excluded.assign(holders, 0);
    return state;
}

void whole_preview(benchmark::State& state) {
    const TestHome home;
    const SandboxProcess box(home, world_of(1),
                             [](sandbox::Sandbox& sandbox) { spread_coins(sandbox, 1000); });
    RoundState round = round_of(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        const Stretch stretch(state);
        std::string text;
        if (!compute_preview(round, "10", library_wallet(), text)) state.SkipWithError(text.c_str());
    }
}
BENCHMARK(whole_preview)->Arg(1000)->Arg(10000)->Iterations(1)->UseManualTime();

// A line of what the system says of this process, in megabytes; 0 if there is none.
double status_mb(const std::string& key) {
    std::ifstream status("/proc/self/status");
    std::string word;
    double kilobytes = 0;
    while (status >> word)
        if (word == key && status >> kilobytes) return kilobytes * 1024 / 1e6;
    return 0;
}
double resident_mb() {
    return status_mb("VmRSS:");
}
// The peak counts from here on.
void reset_peak() {
    std::ofstream("/proc/self/clear_refs") << 5;
}

// What twenty thousand earlier payments have left behind.
void write_past(const SandboxProcess& box, const TestHome& home) {
    std::string spent = R"({"outpoints":[)";
    for (int i = 0; i < 20'000; ++i)
        spent += (i ? ",\"" : "\"") + bench_txid(static_cast<std::size_t>(i)) + ":1\"";
    home.write("/ord_snap/" + box.wallet_id() + "_spent.json", spent + "]}");
    Json entries = Json::array();
    for (std::size_t i = 0; i < 10'000; ++i) {
        entries.push_back({{"token_id", std::string(64, 'c') + "_0"},
                           {"token_name", "Meadow"},
                           {"txid", bench_txid(i)},
                           {"sats", 1000},
                           {"dest", address_of(i)},
                           {"name", "holder" + std::to_string(i)},
                           {"kind", "payout"},
                           {"unix", 1'790'000'000}});
    }
    write_text_file(ledger_file_path(), dump_json({{"entries", std::move(entries)}}, 2));
}

struct Marks {
    std::vector<std::int64_t> cpu_ns;
    std::vector<std::int64_t> curl_ns;
    std::vector<double> seconds;
    Clock::time_point begin = Clock::now();

    void note() {
        cpu_ns.push_back(process_cpu_ns());
        curl_ns.push_back(curl_time().cpu_ns);
        seconds.push_back(std::chrono::duration<double>(Clock::now() - begin).count());
    }
    // Milliseconds a payment, besides the requests, over the payments from one mark to the other.
    double besides(std::size_t from, std::size_t to) const {
        const std::int64_t ns = cpu_ns[to] - cpu_ns[from] - (curl_ns[to] - curl_ns[from]);
        return static_cast<double>(ns) / 1e6 / static_cast<double>(to - from);
    }
};

// A pay run of so many holders, behind 20,000 spent outpoints and 10,000 ledger rows.
void pay_run(benchmark::State& state) {
    const TestHome home;
    sandbox::WorldOptions world = world_of(1);
    world.wallet_sats = 5'000'000'000;
    const SandboxProcess box(home, world);
    write_past(box, home);
    PayJob job{{}, std::string(64, 'c') + "_0", "Meadow"};
    const auto holders = static_cast<std::size_t>(state.range(0));
    for (std::size_t i = 0; i < holders; ++i)
        job.rows.push_back({"holder" + std::to_string(i), address_of(i), "1000", 20'000, false});
    Marks marks;
    RoundWallet wallet = library_wallet();
    double early_mb = 0;
    wallet.send = [&](const std::string& dest, std::int64_t sats, const std::string& memo) {
        marks.note();
        if (marks.seconds.size() == 100) early_mb = resident_mb();
        return qv_clasp_send(dest, sats, memo);
    };
    for (auto _ : state) {
        const Stretch stretch(state);
        marks = {};
        reset_peak();
        const auto message = run_pay(job, wallet);
        marks.note();
        if (message->stopped) state.SkipWithError(message->text.value_or("stopped").c_str());
    }
    const std::size_t last = marks.seconds.size() - 1;
    const std::size_t part = std::min<std::size_t>(200, holders / 2);
    state.counters["first_ms"] = marks.besides(1, 1 + part);
    state.counters["last_ms"] = marks.besides(last - part, last);
    state.counters["peak_mb"] = status_mb("VmHWM:");
    state.counters["grown_mb"] = resident_mb() - early_mb;
    state.counters["resident_mb"] = resident_mb();
}
BENCHMARK(pay_run)->Arg(1000)->Arg(10000)->Iterations(1)->UseManualTime();

// Ordinals of one satoshi on the first 40 ordinal addresses.
void spread_ordinals(sandbox::Sandbox& box, std::size_t count) {
    std::vector<sandbox::TxOutput> outputs;
    const std::string picture = "picture ";
    for (std::size_t i = 0; i < count; ++i) {
        const auto key = box.world().main_wallet.ordinal(static_cast<std::uint32_t>(i % 40));
        const std::string body = picture + std::to_string(i);
        outputs.push_back(
            {1, sandbox::inscription_script(key.hash160, "text/plain", Bytes(body.begin(), body.end()))});
    }
    for (std::size_t begin = 0; begin < outputs.size(); begin += 250) {
        const auto from = outputs.begin() + static_cast<std::ptrdiff_t>(begin);
        box.chain().fund(
            {from, from + static_cast<std::ptrdiff_t>(std::min<std::size_t>(250, outputs.size() - begin))});
    }
    rewrite_document(box.world(), "recv", {0, 3, 0, 0, 0, 39});
}

void sweep(benchmark::State& state) {
    const TestHome home;
    const auto ordinals = static_cast<std::size_t>(state.range(0));
    const SandboxProcess box(home, world_of(1),
                             [&](sandbox::Sandbox& sandbox) { spread_ordinals(sandbox, ordinals); });
    std::vector<QvClaspOrdRow> rows;
    qv_clasp_list_ordinals(rows);
    for (auto _ : state) {
        const Stretch stretch(state);
        const std::string error = qv_clasp_list_ordinals(rows);
        if (!error.empty() || rows.size() < ordinals) state.SkipWithError("not all ordinals were found");
    }
}
BENCHMARK(sweep)->Arg(200)->Arg(2000)->Iterations(1)->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
