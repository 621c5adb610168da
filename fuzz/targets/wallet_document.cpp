// The wallet document: loaded, reconciled with, summed up, and read for the names in it.
#include "wallet/wallet_document.h"

#include "fuzz/fuzz.h"
#include "index/ordinal_inbox.h"
#include "wallet/seal.h"

namespace {

constexpr const char* DOCUMENT = "/wallets/w1/wallet.json";

void end_session() {
    const WalletLock lock = qv_clasp_lock_wallet();
    qv_clasp_wipe_session();
}

void load(const std::string& text, bool unlocked) {
    put_file(DOCUMENT, text);
    const WalletLock lock = qv_clasp_lock_wallet();
    QvClaspSession& session = qv_clasp_session();
    session.unlocked = unlocked;
    if (qv_clasp_load()) {
        promise(!session.priv.empty() && !session.address.empty(), "a loaded wallet has its key");
        const std::string address = session.address;
        const std::size_t owned = session.ord_owned.size();
        session.unlocked = false;
        promise(qv_clasp_save(), "a loaded wallet can be saved");
        qv_clasp_wipe_session();
        promise(qv_clasp_load(), "a saved wallet loads");
        promise(session.address == address && session.ord_owned.size() == owned, "it is the same wallet");
    } else {
        promise(session.priv.empty(), "half a wallet has no key");
    }
    session.unlocked = false;
}

void load_plain(const std::string& text) {
    load(text, false);
}
void load_unlocked(const std::string& text) {
    load(text, true);
}

void reconcile(const std::string& text) {
    put_file(DOCUMENT, R"({"priv":"0000000000000000000000000000000000000000000000000000000000000001"})");
    const WalletLock lock = qv_clasp_lock_wallet();
    promise(qv_clasp_load(), "the wallet loads");
    put_file(DOCUMENT, text);
    qv_clasp_reconcile();
}

void sum_up(const std::string& text) {
    put_file(DOCUMENT, text);
    std::string address;
    std::string paymail;
    bool hd = false;
    if (!qv_clasp_summary(address, paymail, hd)) promise(address.empty(), "no summary, no address");
    const WalletLock lock = qv_clasp_lock_wallet();
    qv_clasp_is_locked();
}

void names_of_others(const std::string& text) {
    put_file("/parked/other.json", text);
    const WalletLock lock = qv_clasp_lock_wallet();
    qv_clasp_harvest_ord_names();
}

using Reader = void (*)(const std::string&);
constexpr Reader READERS[] = {load_plain, load_unlocked, reconcile, sum_up, names_of_others};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_root();
    const Choice choice = choose(data, size, std::size(READERS));
    end_session();
    READERS[choice.parser](choice.text);
    return 0;
}
