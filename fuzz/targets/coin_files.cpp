// Files with what the wallet knows of its coins and ordinals, its own and those of sibling programs.
#include "base/hex.h"
#include "fuzz/fuzz.h"
#include "index/content_cache.h"
#include "index/ordinal_inbox.h"
#include "index/ordinal_snapshot.h"
#include "spend/art_tags.h"
#include "spend/balance.h"
#include "spend/sibling_reserves.h"
#include "wallet/address.h"
#include "wallet/coin_records.h"
#include "wallet/session_keys.h"
#include "wallet/wallet_session.h"

namespace {

const std::string TXID(64, 'a');

void spent(const std::string& text) {
    put_file("/ord_snap/w1_spent.json", text);
    qv_clasp_load_spent();
    qv_clasp_is_spent(TXID, 0);
    qv_clasp_mark_spent(TXID, 1);
    promise(qv_clasp_is_spent(TXID, 1), "a spent coin stays spent");
    qv_clasp_unmark_spent({{TXID, 1, 1}});
}

void change(const std::string& text) {
    put_file("/ord_snap/w1_change.json", text);
    qv_clasp_load_change();
    for (const QvClaspPendingCoin& coin : qv_clasp_coin_records().pending_coins)
        promise(coin.sats > 0 && coin.sats <= MOST_SATS && coin.txid.size() == 64,
                "pending change is worth something");
    qv_clasp_save_change();
    promise(qv_clasp_balance_estimate() >= -1, "a balance does not overflow");
}

void face(const std::string& text) {
    put_file("/tx_hist/w1_face.json", text);
    qv_clasp_session().cached_balance = -1;
    promise(qv_clasp_cached_balance() >= -1, "a balance is known or not");
}

void reserves_of(const std::string& folder, const std::string& text) {
    put_file(folder + "/reserves_w1.json", text);
    is_reserved_by_sibling(read_sibling_reserves(), TXID, 0);
}
void bazaar(const std::string& text) {
    reserves_of("/bazaar", text);
}
void atelier(const std::string& text) {
    reserves_of("/atelier", text);
}
void swapfloor(const std::string& text) {
    reserves_of("/swapfloor", text);
}
void offer_locks(const std::string& text) {
    put_file("/atelier/offer_locks_w1.json", text);
    is_reserved_by_sibling(read_sibling_reserves(), TXID, 0);
    qv_clasp_coin_records().spent_set.insert(TXID + ":0");
    prune_offer_locks();
}

void sweep(const std::string& text) {
    put_file("/ord_snap/w1.json", text);
    OrdSnapshot snapshot;
    if (!qv_clasp_ord_snap_load("w1", snapshot)) return;
    promise(!snapshot.lots.empty() || !snapshot.txids.empty(), "a usable snapshot holds something");
    qv_clasp_ord_snap_save("w1", snapshot);
    OrdSnapshot again;
    promise(qv_clasp_ord_snap_load("w1", again) && again.lots.size() == snapshot.lots.size(),
            "a snapshot survives its file");
}

void inbox(const std::string& text) {
    Hash160 hash{};
    qv_clasp_address_to_hash160(qv_clasp_session().address, hash);
    put_file("/ord_inbox/" + qv_clasp_hex_encode(hash) + ".json", text);
    qv_clasp_absorb_ord_inbox();
    LocalOrd ord;
    ord.origin = TXID + "_0";
    ord.address = qv_clasp_session().address;
    qv_clasp_post_ord_inbox(ord);
}

void tags(const std::string& text) {
    put_file("/art/tags.json", text);
    qv_clasp_art_tags();
    qv_clasp_art_tag_get(TXID);
    qv_clasp_art_tag_set(TXID, "Artwork");
    promise(qv_clasp_art_tag_get(TXID) == "Artwork", "a tag that was set is there");
}

using Reader = void (*)(const std::string&);
constexpr Reader READERS[] = {spent,     change,      face,  bazaar, atelier,
                              swapfloor, offer_locks, sweep, inbox,  tags};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    load_fuzz_wallet();
    const Choice choice = choose(data, size, std::size(READERS));
    const WalletLock lock = qv_clasp_lock_wallet();
    qv_clasp_session().ord_owned.clear();
    READERS[choice.parser](choice.text);
    return 0;
}
