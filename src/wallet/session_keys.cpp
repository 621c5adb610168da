#include "wallet/session_keys.h"

#include "base/hex.h"
#include "wallet/address.h"
#include "wallet/ecdsa.h"
#include "wallet/name_registry.h"
#include "wallet/wallet_session.h"

namespace {

using ChainKey = QvClaspChainKeys::Key;

constexpr std::uint32_t PURPOSE = HARDENED | 44U;
constexpr std::uint32_t COIN_TYPE = HARDENED | 236U;
constexpr std::uint32_t EXTERNAL_CHAIN = 0;
constexpr std::uint32_t CHANGE_CHAIN = 1;
constexpr QvClaspKeyPath IDENTITY_PATH{{PURPOSE, COIN_TYPE, HARDENED | 100U, EXTERNAL_CHAIN, 0}};
// A document may claim any counter; the addresses beyond this index are derived anew for each question.
constexpr std::uint32_t REMEMBERED_KEYS = 65536;

bool make_master(QvClaspSession& session) {
    if (session.master_known) return true;
    if (session.mnemonic.empty()) return false;
    session.key_cache = QvClaspKeyCache{};
    session.seed_known = session.seed_known || seed_from_mnemonic(session.mnemonic.view(), session.seed);
    session.master_known = session.seed_known && master_from_seed(session.seed, session.master);
    if (!session.master_known) qv_clasp_forget_master(session);
    return session.master_known;
}

void clear_key(SecretText& priv_hex, std::string& pub_hex, std::string& address) {
    priv_hex.wipe();
    pub_hex.clear();
    address.clear();
}

// Public key and address of a private key; both empty after a failure.
bool publish(const QvClaspExtKey& key, ChainKey& published) {
    PublicKey pub{};
    published = {};
    if (!public_key_of(key, pub)) return false;
    published.pub = qv_clasp_hex_encode(pub);
    published.address = qv_clasp_address_from_pub(published.pub);
    return !published.address.empty();
}

// The external chain of an account, with its node; null without a mnemonic, for an account that does not
// exist, and if the derivation fails.
QvClaspChainKeys* external_chain(std::uint32_t account) {
    QvClaspSession& session = qv_clasp_session();
    if (account >= session.key_cache.chains.size() || session.mnemonic.empty()) return nullptr;
    if (!make_master(session)) return nullptr;
    QvClaspChainKeys& chain = session.key_cache.chains[account];
    const std::array<std::uint32_t, 4> path{PURPOSE, COIN_TYPE, HARDENED | account, EXTERNAL_CHAIN};
    if (!chain.node_known) {
        chain.node_known =
            ckd_priv_path(session.master, path, chain.node) && public_key_of(chain.node, chain.node_pub);
    }
    return chain.node_known ? &chain : nullptr;
}

// Public key and address at an index. The next unknown one is remembered, so a walk from 0 upwards remembers
// all.
ChainKey chain_key(QvClaspChainKeys& chain, std::uint32_t account, std::uint32_t index) {
    if (index < chain.keys.size()) return chain.keys[index];
    QvClaspExtKey child;
    ChainKey key;
    if (ckd_priv_below(chain.node, chain.node_pub, index, child)) publish(child, key);
    if (index == chain.keys.size() && index < REMEMBERED_KEYS) {
        chain.keys.push_back(key);
        if (!key.address.empty()) {
            qv_clasp_session().key_cache.places.try_emplace(key.address,
                                                            QvClaspKeyCache::Place{account, index});
        }
    }
    return key;
}

// The first index of the account, up to its counter, that has the address. Those that are remembered were
// searched by the caller.
bool walk_account(std::uint32_t account, const std::string& address, std::uint32_t& index_out) {
    QvClaspChainKeys* chain = external_chain(account);
    if (!chain) return false;
    const std::uint64_t end = std::uint64_t{qv_clasp_session().recv[account]} + 1;
    for (std::uint64_t index = chain->keys.size(); index < end; ++index) {
        index_out = static_cast<std::uint32_t>(index);
        if (chain_key(*chain, account, index_out).address == address) return true;
    }
    return false;
}

// Where in the external chains the address lies.
bool find_place(const std::string& address, QvClaspKeyCache::Place& place) {
    const QvClaspSession& session = qv_clasp_session();
    if (!external_chain(0)) return false;
    const auto known = session.key_cache.places.find(address);
    if (known != session.key_cache.places.end()) {
        place = known->second;
        // A scan looks further than the counters; what lies beyond is not the wallet's yet.
        if (place.index <= session.recv[place.account]) return true;
    }
    for (place.account = 0; place.account < session.recv.size(); ++place.account) {
        if (walk_account(place.account, address, place.index)) return true;
    }
    return false;
}

const ChainKey& identity_key() {
    ChainKey& identity = qv_clasp_session().key_cache.identity;
    if (!identity.address.empty()) return identity;
    SecretText priv_hex;
    ChainKey fresh;
    if (qv_clasp_derive_identity(priv_hex, fresh.pub, fresh.address)) identity = fresh;
    return identity;
}

bool is_session_address(const std::string& address) {
    Hash160 hash{};
    return qv_clasp_address_to_hash160(address, hash) && address == qv_clasp_session().address;
}

void forget_identity(QvClaspSession& session) {
    session.identity_pub.clear();
    session.identity_address.clear();
}

bool take_identity(QvClaspSession& session) {
    SecretText priv_hex;
    if (qv_clasp_derive_identity(priv_hex, session.identity_pub, session.identity_address)) return true;
    forget_identity(session);
    return false;
}

}  // namespace

bool qv_clasp_mnemonic_valid() {
    return mnemonic_words_valid(qv_clasp_session().mnemonic.view());
}

bool qv_clasp_derive(const QvClaspKeyPath& path, SecretText& priv_hex_out, std::string& pub_hex_out,
                     std::string& address_out) {
    clear_key(priv_hex_out, pub_hex_out, address_out);
    QvClaspSession& session = qv_clasp_session();
    QvClaspExtKey key;
    ChainKey published;
    if (!make_master(session) || !ckd_priv_path(session.master, path.elements, key) ||
        !publish(key, published)) {
        return false;
    }
    private_key_hex(key.key, priv_hex_out);
    pub_hex_out = published.pub;
    address_out = published.address;
    return true;
}

bool qv_clasp_derive_account(std::uint32_t account, std::uint32_t index, SecretText& priv_hex_out,
                             std::string& pub_hex_out, std::string& address_out) {
    clear_key(priv_hex_out, pub_hex_out, address_out);
    QvClaspChainKeys* chain = external_chain(account);
    QvClaspExtKey child;
    if (!chain || !ckd_priv_below(chain->node, chain->node_pub, index, child)) return false;
    const ChainKey key = chain_key(*chain, account, index);
    if (key.address.empty()) return false;
    private_key_hex(child.key, priv_hex_out);
    pub_hex_out = key.pub;
    address_out = key.address;
    return true;
}

bool qv_clasp_derive_ordinal_change(std::uint32_t index, SecretText& priv_hex_out, std::string& pub_hex_out,
                                    std::string& address_out) {
    clear_key(priv_hex_out, pub_hex_out, address_out);
    if (qv_clasp_session().mnemonic.empty()) return false;
    const QvClaspKeyPath path{{PURPOSE, COIN_TYPE, HARDENED | ORDINAL_ACCOUNT, CHANGE_CHAIN, index}};
    return qv_clasp_derive(path, priv_hex_out, pub_hex_out, address_out);
}

bool qv_clasp_derive_identity(SecretText& priv_hex_out, std::string& pub_hex_out, std::string& address_out) {
    clear_key(priv_hex_out, pub_hex_out, address_out);
    if (qv_clasp_session().mnemonic.empty()) return false;
    return qv_clasp_derive(IDENTITY_PATH, priv_hex_out, pub_hex_out, address_out);
}

std::string qv_clasp_account_address(std::uint32_t account, std::uint32_t index) {
    QvClaspChainKeys* chain = external_chain(account);
    return chain ? chain_key(*chain, account, index).address : "";
}

bool qv_clasp_derive_addresses() {
    QvClaspSession& session = qv_clasp_session();
    if (!session.hd) return !session.address.empty();
    if (session.show > session.recv[RECEIVE_ACCOUNT]) session.show = session.recv[RECEIVE_ACCOUNT];
    if (!qv_clasp_derive_account(RECEIVE_ACCOUNT, session.show, session.priv, session.pub, session.address)) {
        return false;
    }
    if (!take_identity(session)) return false;
    const std::string ordinal_address =
        qv_clasp_account_address(ORDINAL_ACCOUNT, session.recv[ORDINAL_ACCOUNT]);
    if (!ordinal_address.empty()) qv_clasp_registry_set_ordinal_address(ordinal_address);
    return true;
}

bool qv_clasp_find_key(const std::string& address, SecretText& priv_hex_out, std::string& pub_hex_out) {
    priv_hex_out.wipe();
    pub_hex_out.clear();
    const QvClaspSession& session = qv_clasp_session();
    if (!session.hd) {
        if (!is_session_address(address)) return false;
        priv_hex_out = session.priv;
        pub_hex_out = session.pub;
        return true;
    }
    Hash160 hash{};
    if (!qv_clasp_address_to_hash160(address, hash)) return false;
    QvClaspKeyCache::Place place;
    std::string same_address;
    if (find_place(address, place)) {
        return qv_clasp_derive_account(place.account, place.index, priv_hex_out, pub_hex_out, same_address);
    }
    return address == identity_key().address &&
           qv_clasp_derive_identity(priv_hex_out, pub_hex_out, same_address);
}

bool qv_clasp_owns_address(const std::string& address) {
    if (!qv_clasp_session().hd) return is_session_address(address);
    Hash160 hash{};
    if (!qv_clasp_address_to_hash160(address, hash)) return false;
    QvClaspKeyCache::Place place;
    return find_place(address, place) || address == identity_key().address;
}
