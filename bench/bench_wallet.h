// A wallet on disk and in the session for one measurement, and put away at its end.
#pragma once

#include <stdexcept>
#include <string>

#include "tests/support/one_wallet.h"
#include "tests/support/test_home.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

struct BenchWallet {
    TestHome home;
    WalletLock lock = qv_clasp_lock_wallet();

    // Every account's counter of external addresses is `counter`.
    explicit BenchWallet(unsigned counter) {
        Json document = one_wallet_document();
        document["recv"] = Json::array({counter, counter, counter, counter, counter, counter});
        bind_one_wallet(home, document);
        load();
    }
    ~BenchWallet() {
        qv_clasp_wipe_session();
        qv_clasp_set_active_wallet_id("");
    }
    BenchWallet(const BenchWallet&) = delete;
    BenchWallet& operator=(const BenchWallet&) = delete;

    // The session as at the start of the program, without the keys that it has derived since.
    void restart() {
        qv_clasp_wipe_session();
        load();
    }

 private:
    static void load() {
        if (!qv_clasp_load()) throw std::runtime_error("the wallet of the measurement does not load");
    }
};

inline std::string bench_txid(std::size_t number) {
    const std::string text = std::to_string(number);
    return "a1b2" + std::string(60 - text.size(), '0') + text;
}
