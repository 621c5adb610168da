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

std::string folder;

void remove_folder() {
    std::error_code error;
    std::filesystem::remove_all(folder, error);
}

void write_wallet() {
    const Json wallet = {
        {"version", 2}, {"mnemonic", FUZZ_WORDS}, {"backup", true}, {"recv", {0, 1, 0, 0, 0, 1}}};
    put_file("/wallets/w1/wallet.json", dump_json(wallet, 2));
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
    // Each scan would look at the next 400 addresses otherwise.
    QvClaspSession& session = qv_clasp_session();
    session.scan_position = 0;
    session.recv = {0, 1, 0, 0, 0, 1};
}

void let_time_pass() {
    passed_ms += 100'000;
}
