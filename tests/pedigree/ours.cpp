#include <algorithm>
#include <iostream>
#include <random>

#include "base/hex.h"
#include "paymail/paymail_claim.h"
#include "spend/recoverable_signature.h"
#include "spend/transaction.h"
#include "tests/pedigree/pedigree.h"
#include "tests/support/one_wallet.h"
#include "wallet/address.h"
#include "wallet/ecdsa.h"
#include "wallet/hashes.h"
#include "wallet/session_keys.h"
#include "wallet/wallet_document.h"

namespace pedigree {

namespace {

constexpr int WALLETS = 8;
constexpr std::uint32_t MOST_INDEX = 6;
constexpr std::int64_t MOST_SATS_A_COIN = 100'000'000'000;

struct Dice {
    std::mt19937_64 engine;

    // From 0 to `below` - 1.
    std::uint64_t roll(std::uint64_t below) { return engine() % below; }
    bool one_in(std::uint64_t n) { return roll(n) == 0; }
    // Small numbers as often as large ones.
    std::int64_t sats(std::int64_t most) {
        const auto limit =
            std::min<std::uint64_t>(std::uint64_t{1} << roll(40), static_cast<std::uint64_t>(most));
        return 1 + static_cast<std::int64_t>(roll(limit));
    }
    template <std::size_t N>
    std::array<std::uint8_t, N> bytes() {
        std::array<std::uint8_t, N> made{};
        for (std::uint8_t& byte : made) byte = static_cast<std::uint8_t>(engine());
        return made;
    }
    std::string text(std::size_t size) {
        std::string made;
        while (made.size() < size) made += static_cast<char>(' ' + roll(95));
        return made;
    }
};

struct Key {
    SecretText priv;
    std::string pub;
    std::string address;
};

void print(std::ostream& out, const Json& line) {
    out << dump_json(line, -1) << '\n';
}

Hash160 hash160_of(const std::string& address) {
    Hash160 hash{};
    qv_clasp_address_to_hash160(address, hash);
    return hash;
}

// A wallet of its own on disk, loaded the way the program loads it.
void load_fresh_wallet(const TestHome& home, Dice& dice) {
    Json document = one_wallet_document(sandbox::mnemonic_from_entropy(dice.bytes<16>()));
    for (Json& counter : document["recv"]) counter = dice.roll(MOST_INDEX + 1);
    document["show"] = dice.roll(MOST_INDEX + 1);
    home.write(ONE_WALLET_PATH, document);
    const WalletLock lock = qv_clasp_lock_wallet();
    qv_clasp_wipe_session();
    qv_clasp_load();
}

Json key_row(const std::string& path, const Key& key) {
    return {
        {"path", path}, {"priv", std::string(key.priv.view())}, {"pub", key.pub}, {"address", key.address}};
}

// Every key that the wallet has a use for, by role and path. `spend_keys` receives those that a coin may lie
// on.
bool wallet_case(std::vector<Key>& spend_keys, Json& line) {
    const WalletLock lock = qv_clasp_lock_wallet();
    const QvClaspSession& session = qv_clasp_session();
    line = {{"kind", "wallet"}, {"mnemonic", std::string(session.mnemonic.view())}, {"keys", Json::array()}};
    bool made = qv_clasp_mnemonic_valid();
    const auto add = [&](const std::string& path, bool derived, Key& key) {
        made = made && derived;
        line["keys"].push_back(key_row("m/44'/236'/" + path, key));
    };
    Key key;
    for (std::uint32_t account = 0; account < 6; ++account) {
        for (std::uint32_t index = 0; index <= session.recv[account];
             index += 1 + session.recv[account] / 2) {
            // By the look-up that a spend makes, from the address alone.
            key.address = qv_clasp_account_address(account, index);
            add(std::to_string(account) + "'/0/" + std::to_string(index),
                qv_clasp_find_key(key.address, key.priv, key.pub), key);
            spend_keys.push_back(key);
        }
    }
    add("5'/1/3", qv_clasp_derive_ordinal_change(3, key.priv, key.pub, key.address), key);
    std::string error;
    add("102'/0/0", qv_clasp_bn_key(key.pub, key.priv, key.address, error), key);
    add("100'/0/0", qv_clasp_derive_identity(key.priv, key.pub, key.address), key);
    spend_keys.push_back(key);
    line["show"] = {{"path", "m/44'/236'/1'/0/" + std::to_string(session.show)},
                    {"address", session.address}};
    return made;
}

bool print_messages(std::ostream& out, Dice& dice, const Key& key) {
    bool made = true;
    for (const std::size_t size : {std::size_t{0}, std::size_t{64}, std::size_t{252}, std::size_t{253},
                                   std::size_t{300 + dice.roll(65236)}}) {
        const std::string text = dice.text(size);
        const std::string signature = sign_recoverable_message(key.priv.view(), key.pub, text);
        made = made && !signature.empty();
        print(out, {{"kind", "message"},
                    {"form", "recoverable"},
                    {"text", text},
                    {"pub", key.pub},
                    {"signature", signature}});
    }
    const std::string claim = paymail_claim_message({.alias = dice.text(8),
                                                     .pubkey = key.pub,
                                                     .address = key.address,
                                                     .avatar = {},
                                                     .ord_address = key.address,
                                                     .bn_pub = {},
                                                     .bn_address = {},
                                                     .ts = 1'700'000'000});
    std::string pub;
    std::string signature;
    std::string error;
    made = qv_clasp_sign_identity(claim, pub, signature, error) && made;
    print(
        out,
        {{"kind", "message"}, {"form", "identity"}, {"text", claim}, {"pub", pub}, {"signature", signature}});
    return made;
}

QvClaspCoin coin_on(const Key& key, Dice& dice, std::int64_t sats) {
    return {.txid = qv_clasp_hex_encode(dice.bytes<32>()),
            .vout = static_cast<std::uint32_t>(dice.one_in(9) ? dice.roll(0xffffffff) : dice.roll(4)),
            .sats = sats,
            .script_sig = {},
            .prev_script = {},
            .priv = key.priv,
            .pub = key.pub,
            .hash160 = hash160_of(key.address)};
}

// Every two hundred and fiftieth transaction has 253 or 252 inputs: a count in its longer form, or the last
// of the shorter. 0 for all others.
std::size_t crowd(int number) {
    return number % 250 == 7 ? 253 - static_cast<std::size_t>(number / 250 % 2) : 0;
}

std::vector<QvClaspCoin> random_coins(Dice& dice, std::size_t crowded, const std::vector<Key>& keys,
                                      const Key& session_key) {
    std::vector<QvClaspCoin> coins;
    for (std::size_t left = crowded > 0 ? crowded : 1 + dice.roll(dice.one_in(10) ? 12 : 4); left > 0;
         --left) {
        const bool session_coin = dice.one_in(5);
        const Key& key = session_coin ? session_key : keys[dice.roll(keys.size())];
        coins.push_back(coin_on(key, dice, dice.sats(MOST_SATS_A_COIN) + (crowded > 0 ? 1000 : 0)));
        // Without keys of its own a coin is signed with the session's.
        if (session_coin) coins.back().priv.wipe();
    }
    return coins;
}

std::string memo_text(Dice& dice) {
    static constexpr std::size_t EDGES[] = {1, 75, 76, 255, 256, 65'535, 65'536};
    if (!dice.one_in(4)) return "";
    return dice.text(dice.one_in(2) ? EDGES[dice.roll(dice.one_in(8) ? 7 : 5)] : 1 + dice.roll(200));
}

// How much is paid, seen from what the coins hold: all of it with nothing, one satoshi or too little for
// change left over, a satoshi, or anything between. Not positive where the coins do not carry it.
std::int64_t payment(Dice& dice, std::uint64_t shape, const std::vector<QvClaspCoin>& coins,
                     const std::string& memo) {
    std::int64_t total = 0;
    for (const QvClaspCoin& coin : coins) total += coin.sats;
    std::int64_t size = tx_output_size(25);
    if (!memo.empty()) {
        Bytes script{0x00, 0x6a};
        qv_clasp_write_push(script, reinterpret_cast<const std::uint8_t*>(memo.data()), memo.size());
        size += tx_output_size(script.size());
    }
    const std::size_t outputs = memo.empty() ? 1 : 2;
    const std::int64_t plain = plan_tx(coins.size(), 0, 0, outputs, size).fee;
    const std::int64_t with_change = selection_fee(coins.size(), outputs, size);
    switch (shape) {
        case 0:
            return total - plain;
        case 1:
            return total - with_change;
        case 2:
            return total - with_change - 1;
        case 3:
            return 1;
        default:
            return 1 + static_cast<std::int64_t>(dice.roll(static_cast<std::uint64_t>(total)));
    }
}

void add_signed(Json& line, const std::vector<QvClaspCoin>& coins,
                const std::vector<QvClaspTxOutput>& outputs) {
    const Bytes raw = qv_clasp_serialize_tx(coins, outputs, false);
    line["raw"] = qv_clasp_hex_encode(raw);
    line["txid"] = qv_clasp_txid(raw);
    const SighashMidstate midstate = sighash_midstate(coins, outputs);
    for (const QvClaspCoin& coin : coins) {
        const Hash256 digest = double_sha256(sighash_preimage(coin, midstate, coin.hash160));
        line["coins"].push_back({{"txid", coin.txid},
                                 {"vout", coin.vout},
                                 {"sats", coin.sats},
                                 {"address", qv_clasp_address_from_hash160(coin.hash160)},
                                 {"digest", qv_clasp_hex_encode(digest)}});
    }
}

// One signed transaction, through the same calls that a send makes; null if these coins do not pay for it.
bool transaction_case(Dice& dice, const std::vector<Key>& keys, const Key& session_key, int number,
                      Json& line) {
    const std::size_t crowded = crowd(number);
    std::vector<QvClaspCoin> coins = random_coins(dice, crowded, keys, session_key);
    const std::string memo = memo_text(dice);
    const Key& own = keys[dice.roll(keys.size())];
    const std::string dest = dice.one_in(6) ? own.address : qv_clasp_address_from_hash160(dice.bytes<20>());
    const std::string change = keys[dice.roll(keys.size())].address;
    const std::int64_t sats = payment(dice, crowded > 0 ? dice.roll(3) : dice.roll(6), coins, memo);
    std::vector<QvClaspTxOutput> outputs;
    std::int64_t fee = 0;
    std::string error;
    if (sats < 1 ||
        !qv_clasp_build_tx(coins, outputs, hash160_of(dest), hash160_of(change), sats, memo, fee, error))
        return true;
    if (!sign_all_inputs(coins, outputs, session_key.priv.view(), session_key.pub)) return false;

    line = {{"kind", "transaction"},    {"dest", dest}, {"sats", sats}, {"memo", memo},
            {"change_address", change}, {"fee", fee}};
    add_signed(line, coins, outputs);
    return true;
}

}  // namespace

bool print_ours(std::ostream& out, std::uint64_t seed, int transactions) {
    const TestHome home;
    bind_one_wallet(home);
    Dice dice{std::mt19937_64(seed)};
    int made = 0;
    for (int wallet = 0; wallet < WALLETS; ++wallet) {
        load_fresh_wallet(home, dice);
        std::vector<Key> keys;
        Json line;
        if (!wallet_case(keys, line)) return false;
        print(out, line);
        if (!print_messages(out, dice, keys.back())) return false;

        Key session_key;
        {
            const WalletLock lock = qv_clasp_lock_wallet();
            const QvClaspSession& session = qv_clasp_session();
            session_key = {session.priv, session.pub, session.address};
        }
        for (const int until = transactions * (wallet + 1) / WALLETS; made < until;) {
            Json transaction;
            if (!transaction_case(dice, keys, session_key, made, transaction)) return false;
            if (transaction.is_null()) continue;
            print(out, transaction);
            ++made;
        }
    }
    return true;
}

}  // namespace pedigree
