#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "base/clock.h"
#include "base/json_file.h"
#include "fuzz/fuzz.h"
#include "wallet/binds.h"
#include "wallet/coin_records.h"
#include "wallet/session_keys.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

namespace {

constexpr std::int64_t START_MS = 1'790'000'000'000;
std::atomic<std::int64_t> passed_ms{0};

const ClockFunctions STILL_CLOCK = {
    [] { return START_MS + passed_ms.load(); },
    [] { return (START_MS + passed_ms.load()) * 1'000'000; },
    [](std::int64_t milliseconds) { passed_ms += milliseconds > 0 ? milliseconds : 0; },
};

// A scan looks as far as 400 addresses behind the last that is in use.
constexpr std::uint32_t LAST_SCANNED = 401;

std::string folder;

void remove_folder() {
    std::error_code error;
    std::filesystem::remove_all(folder, error);
}

void write_wallet() {
    static const std::string wallet = dump_json(
        {{"version", 2}, {"mnemonic", FUZZ_WORDS}, {"backup", true}, {"recv", {0, 1, 0, 0, 0, 1}}}, 2);
    put_file("/wallets/w1/wallet.json", wallet);
    put_file("/wallets.json", R"({"wallets":[{"id":"w1","name":"Wallet 1"}]})");
    qv_clasp_init("/program", "The Bursaria");
    qv_clasp_write_bind(FUZZ_WALLET);
}

std::string make_root() {
    std::error_code error;
    const bool in_memory = std::filesystem::is_directory("/dev/shm", error);
    folder = (in_memory ? std::string("/dev/shm") : std::filesystem::temp_directory_path().string()) +
             "/bursaria-fuzz-" + std::to_string(::getpid());
    std::filesystem::create_directories(folder, error);
    ::setenv("LOCALAPPDATA", folder.c_str(), 1);
    std::atexit(remove_folder);
    set_clock(&STILL_CLOCK);
    return folder + "/Quorvelle";
}

void end_session() {
    const WalletLock lock = qv_clasp_lock_wallet();
    qv_clasp_wipe_session();
    qv_clasp_session().unlocked = false;
}

// The wallet as it is after a load, without the keys: those are kept as they are found. The scan of a status
// report has been through its addresses, but for two requests.
QvClaspSession loaded_session() {
    for (std::uint32_t index = 0; index <= LAST_SCANNED; ++index)
        promise(!qv_clasp_account_address(RECEIVE_ACCOUNT, index).empty(), "the fuzz wallet has addresses");
    QvClaspSession session = qv_clasp_session();
    session.key_cache = QvClaspKeyCache{};
    session.scan_position = LAST_SCANNED - 39;
    return session;
}

}  // namespace

void promise(bool kept, const char* what) {
    if (kept) return;
    std::fprintf(stderr, "a promise was broken: %s\n", what);
    std::abort();
}

Choice choose(const std::uint8_t* data, std::size_t size, std::size_t count) {
    if (size == 0) return {};
    const auto number = static_cast<std::size_t>(data[0] >= '0' ? data[0] - '0' : data[0]);
    return {number % count, std::string(reinterpret_cast<const char*>(data) + 1, size - 1)};
}

const std::string& fuzz_root() {
    static const std::string root = make_root();
    static const bool written = (write_wallet(), true);
    (void)written;
    return root;
}

void put_file(const std::string& path, std::string_view content) {
    const std::string whole = folder + "/Quorvelle" + path;
    make_folder(whole.substr(0, whole.rfind('/')));
    write_text_file(whole, content);
}

void clean_root() {
    fuzz_root();
    end_session();
    remove_folder();
    write_wallet();
}

void load_fuzz_wallet() {
    fuzz_root();
    const WalletLock lock = qv_clasp_lock_wallet();
    promise(qv_clasp_load(), "the fuzz wallet loads");
    qv_clasp_clear_coin_records();
    QvClaspSession& session = qv_clasp_session();
    session.scan_position = 0;
    session.recv = {0, 1, 0, 0, 0, 1};
}

void start_afresh() {
    load_fuzz_wallet();
    const WalletLock lock = qv_clasp_lock_wallet();
    static const QvClaspSession loaded = loaded_session();
    QvClaspSession& session = qv_clasp_session();
    QvClaspKeyCache known = std::move(session.key_cache);
    session = loaded;
    session.key_cache = std::move(known);
    remove_folder();
    write_wallet();
    passed_ms += 100'000;
}
