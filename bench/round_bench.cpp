// The round without a network: the split with its text, the redraw of the board, the ledger.
#include <benchmark/benchmark.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/text.h"
#include "core/dividend_split.h"
#include "core/round_display.h"
#include "records/holder_notes.h"
#include "records/payout_history.h"
#include "records/payout_ledger.h"
#include "records/record_files.h"
#include "tests/core/fake_round.h"
#include "wallet/address.h"

namespace {

const std::string TOKEN_ID = std::string(64, 'c') + "_0";

std::string address_of(std::size_t number) {
    Hash160 hash{};
    for (std::size_t i = 0; i < 8; ++i) hash[i] = static_cast<std::uint8_t>(number >> (8 * i));
    return qv_clasp_address_from_hash160(hash);
}

HolderBoard board_of(std::size_t holders) {
    BoardBuilder builder;
    for (std::size_t i = 0; i < holders; ++i)
        builder.market_at("holder" + std::to_string(i) + "@quorvelle.com", std::to_string(1000 + i * 7),
                          address_of(i));
    builder.reserve("me", "5000");
    return builder;
}

void split(benchmark::State& state) {
    RoundState round;
    round.board = board_of(static_cast<std::size_t>(state.range(0)));
    round.excluded.assign(round.board.rows.size(), 0);
    RoundWallet calls = FakeWallet().functions();
    calls.estimate_send_fee = [](const std::string&, std::int64_t) { return std::int64_t{23}; };
    calls.status = [](QvClaspStatus&) {};
    const std::string pot = std::to_string(state.range(0) / 100);
    std::string text;
    for (auto _ : state) {
        if (!compute_preview(round, pot, calls, text)) state.SkipWithError(text.c_str());
    }
    state.counters["bytes"] = static_cast<double>(text.size());
}
BENCHMARK(split)->Arg(1000)->Arg(10000)->Arg(100000);

// A ledger as the program writes it, `rows` payments to as many addresses over two years.
void write_ledger(const std::string& path, std::size_t rows) {
    Json ledger = {{"entries", Json::array()}};
    const std::int64_t now = unix_seconds();
    for (std::size_t i = 0; i < rows; ++i) {
        ledger["entries"].push_back({{"token_id", TOKEN_ID},
                                     {"token_name", "Meadow"},
                                     {"txid", std::string(52, 'd') + std::to_string(100'000'000'000 + i)},
                                     {"sats", 1000 + i},
                                     {"dest", address_of(i)},
                                     {"name", "holder" + std::to_string(i) + "@quorvelle.com"},
                                     {"kind", "payout"},
                                     {"unix", now - 63'000'000 + static_cast<std::int64_t>(i * 600)}});
    }
    write_text_file(path, dump_json(ledger, 2));
}

// Another program has written: size and bytes are the same, the time is not.
void touch(const std::string& path) {
    std::string content;
    read_text_file(path, content);
    write_text_file(path, content);
}

void write_notes(std::size_t count) {
    Json document = {{"entries", Json::array()}};
    for (std::size_t i = 0; i < count; ++i) {
        document["entries"].push_back({{"token_id", TOKEN_ID},
                                       {"key", "n:holder" + std::to_string(i) + "@quorvelle.com"},
                                       {"name", "holder" + std::to_string(i)},
                                       {"lots", "1000"},
                                       {"note", "asked for a monthly dividend"}});
    }
    write_text_file(notes_file_path(), dump_json(document, 2));
}

// How often a redraw opens the ledger and the notes.
std::size_t opens_of_a_redraw(FakeRound& round) {
    const int watch = ::inotify_init1(IN_NONBLOCK);
    // Two openings in a row would be told as one, were it not for the closing between them.
    for (const std::string& path : {ledger_file_path(), notes_file_path()})
        ::inotify_add_watch(watch, path.c_str(), IN_OPEN | IN_CLOSE);
    refresh_board(round.round);
    std::size_t opens = 0;
    alignas(inotify_event) char events[65536];
    const ssize_t size = ::read(watch, events, sizeof events);
    for (ssize_t at = 0; at < size;) {
        const auto* event = reinterpret_cast<const inotify_event*>(events + at);
        opens += (event->mask & IN_OPEN) != 0 ? 1 : 0;
        at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
    }
    ::close(watch);
    return opens;
}

// As many ledger rows as holders, and a note on every tenth; the first redraw after each change of the
// ledger.
void board_redraw(benchmark::State& state) {
    FakeRound round;
    const auto holders = static_cast<std::size_t>(state.range(0));
    write_ledger(ledger_file_path(), holders);
    write_notes(holders / 10);
    round.take_snapshot(board_of(holders));
    for (auto _ : state) {
        state.PauseTiming();
        touch(ledger_file_path());
        state.ResumeTiming();
        refresh_board(round.round);
    }
    touch(ledger_file_path());
    state.counters["opens"] = static_cast<double>(opens_of_a_redraw(round));
    if (round.lines.size() != holders + 1 || round.lines[0].received == "-") state.SkipWithError("no board");
}
BENCHMARK(board_redraw)->Arg(1000)->Arg(10000);

// The same two files read and parsed, and nothing done with them.
void files_read_and_parsed(benchmark::State& state) {
    FakeRound round;
    const auto holders = static_cast<std::size_t>(state.range(0));
    write_ledger(ledger_file_path(), holders);
    write_notes(holders / 10);
    for (auto _ : state) {
        for (const std::string& path : {ledger_file_path(), notes_file_path()}) {
            std::string text;
            read_text_file(path, text);
            benchmark::DoNotOptimize(Json::parse(text, nullptr, false));
        }
    }
}
BENCHMARK(files_read_and_parsed)->Arg(1000)->Arg(10000);

void ledger_parsed(benchmark::State& state) {
    const TestHome home;
    write_ledger(ledger_file_path(), static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        std::string text;
        read_text_file(ledger_file_path(), text);
        benchmark::DoNotOptimize(Json::parse(text, nullptr, false));
    }
}
BENCHMARK(ledger_parsed)->Arg(10000)->Arg(100000);

void ledger_read(benchmark::State& state) {
    const TestHome home;
    write_ledger(ledger_file_path(), static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        std::string text;
        read_text_file(ledger_file_path(), text);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(ledger_read)->Arg(10000)->Arg(100000);

void payouts_loaded(benchmark::State& state) {
    const TestHome home;
    write_ledger(ledger_file_path(), static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        if (load_payouts({}).size() != static_cast<std::size_t>(state.range(0))) state.SkipWithError("rows");
    }
}
BENCHMARK(payouts_loaded)->Arg(10000)->Arg(100000);

// Every range, over all tokens and for one.
void history_views(benchmark::State& state) {
    const TestHome home;
    write_ledger(ledger_file_path(), static_cast<std::size_t>(state.range(0)));
    const std::vector<PayoutRow> rows = load_payouts({});
    for (auto _ : state) {
        for (const HistoryRange& range : HISTORY_RANGES) {
            benchmark::DoNotOptimize(history_view(rows, "", range, unix_seconds()));
            benchmark::DoNotOptimize(history_view(rows, TOKEN_ID, range, unix_seconds()));
        }
    }
}
BENCHMARK(history_views)->Arg(10000)->Arg(100000);

void append_one() {
    append_payout(TOKEN_ID, std::string(64, 'e'), 12345, address_of(1), "holder1@quorvelle.com", "Meadow",
                  "");
}

void next_append(benchmark::State& state) {
    const TestHome home;
    write_ledger(ledger_file_path(), static_cast<std::size_t>(state.range(0)));
    append_one();
    for (auto _ : state) append_one();
}
BENCHMARK(next_append)->Arg(10000)->Arg(100000);

// As a process meets the ledger that another one has left.
void first_append(benchmark::State& state) {
    const TestHome home;
    write_ledger(ledger_file_path(), static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        ::usleep(2000);
        touch(ledger_file_path());
        state.ResumeTiming();
        append_one();
    }
}
BENCHMARK(first_append)->Arg(10000)->Arg(100000);

}  // namespace

BENCHMARK_MAIN();
