#include "wallet/wallet_document.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "base/settings.h"
#include "base/text.h"
#include "wallet/address.h"
#include "wallet/binds.h"
#include "wallet/coin_records.h"
#include "wallet/data_root.h"
#include "wallet/document_file.h"
#include "wallet/ecdsa.h"
#include "wallet/seal.h"
#include "wallet/session_keys.h"
#include "wallet/wallet_registry.h"

namespace {

constexpr int FORM_VERSION = 2;
constexpr std::string_view DETACHED_PREFIX = "quorvelle_clasp.detached";

// Replaces the envelope by the document inside it; false unless the session is unlocked.
bool open_envelope(WalletDocument& document) {
    if (!qv_clasp_session().unlocked) return false;
    std::int64_t iter = 0;
    Bytes salt;
    Bytes iv;
    Bytes tag;
    Bytes ct;
    SecretText plain;
    return qv_clasp_seal_parse(document.root, iter, salt, iv, tag, ct) &&
           qv_clasp_seal_decrypt(iv, tag, ct, plain) && parse_wallet_document(plain.view(), document);
}

void clear_keys(QvClaspSession& session) {
    session.priv.wipe();
    session.pub.clear();
    session.address.clear();
    session.identity_pub.clear();
    session.identity_address.clear();
}

// What a load replaces. The seal and the balances are not part of the document.
void clear_document_fields(QvClaspSession& session) {
    clear_keys(session);
    qv_clasp_forget_master(session);
    session.mnemonic.wipe();
    session.hd = false;
    session.backup = false;
    session.paymail.clear();
    session.ord_avatar.clear();
    session.ord_owned.clear();
    session.contacts.clear();
    session.recv.fill(0);
    session.show = 0;
}

std::size_t counters_in(const Json& recv, const QvClaspSession& session) {
    return recv.is_array() ? std::min(recv.size(), session.recv.size()) : 0;
}

void read_counters(const Json& root, QvClaspSession& session) {
    const Json& recv = json_member(root, "recv");
    for (std::size_t account = 0; account < counters_in(recv, session); ++account) {
        read_counter(recv[account], session.recv[account]);
    }
    const std::uint32_t last = session.recv[RECEIVE_ACCOUNT];
    session.show = last;
    if (read_counter(json_member(root, "show"), session.show)) session.show = std::min(session.show, last);
}

void read_common_fields(const Json& root, QvClaspSession& session) {
    session.paymail = json_text(root, "paymail");
    session.ord_avatar = json_text(root, "ord_avatar");
    session.ord_owned = read_ord_owned(root);
    session.contacts = read_contacts(root);
}

bool read_mnemonic_wallet(const WalletDocument& document, QvClaspSession& session) {
    const Json& root = document.root;
    session.mnemonic = document.mnemonic;
    if (!qv_clasp_mnemonic_valid()) return false;
    session.hd = true;
    session.backup = json_bool(root, "backup");
    read_counters(root, session);
    read_common_fields(root, session);
    if (qv_clasp_derive_addresses()) return true;
    // Half a set of keys would pass for a loaded session.
    clear_keys(session);
    return false;
}

bool read_legacy_wallet(const WalletDocument& document, QvClaspSession& session) {
    const Json& root = document.root;
    read_common_fields(root, session);
    const std::string_view priv_hex = document.priv.view();
    if (!is_hex64(priv_hex)) return false;
    std::string pub = json_text(root, "pub");
    if (pub.empty() && !qv_clasp_pub_from_priv(priv_hex, pub)) return false;
    std::string address = json_text(root, "address");
    if (address.empty()) address = qv_clasp_address_from_pub(pub);
    if (address.empty()) return false;
    session.priv.assign(priv_hex);
    session.pub = pub;
    session.address = address;
    return true;
}

void mnemonic_form(const QvClaspSession& session, WalletDocument& document) {
    document.mnemonic = session.mnemonic;
    document.root = {{"version", FORM_VERSION},
                     {"backup", session.backup},
                     {"recv", session.recv},
                     {"show", session.show},
                     {"identity", session.identity_address},
                     {"address", session.address}};
    if (!session.paymail.empty()) document.root["paymail"] = session.paymail;
}

// The paymail of a legacy wallet is read but not kept; its wallet program has the last word on it.
void legacy_form(const QvClaspSession& session, WalletDocument& document) {
    document.priv = session.priv;
    document.root = {{"pub", session.pub}, {"address", session.address}};
}

void whole_form(const QvClaspSession& session, WalletDocument& document) {
    session.hd ? mnemonic_form(session, document) : legacy_form(session, document);
    Json& root = document.root;
    if (!session.ord_avatar.empty()) root["ord_avatar"] = session.ord_avatar;
    if (!session.ord_owned.empty()) root["ord_owned"] = ord_owned_rows(session.ord_owned);
    if (!session.contacts.empty()) root["contacts"] = contact_rows(session.contacts);
}

bool has_keys(const QvClaspSession& session) {
    return session.hd ? !session.mnemonic.empty() : !session.priv.empty();
}

bool is_loaded(const QvClaspSession& session) {
    return !session.priv.empty() && !session.address.empty();
}

std::string with_domain(const std::string& paymail) {
    return paymail.empty() ? "" : paymail + "@" + settings().home_domain;
}

// The wallet program may have sealed the wallet since it was loaded: the words in the clear would undo that.
bool is_sealed_on_disk(const std::string& path) {
    WalletDocument document;
    if (read_wallet_document(path, document)) return is_seal_envelope(document.root);
    return file_exists(path + ".seal");
}

// The paths of the files in a folder whose name passes, in the order of the names.
template <typename Test>
void append_files(const std::string& folder, Test passes, std::vector<std::string>& paths) {
    std::vector<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(utf8_path(folder), error);
    for (const std::filesystem::directory_iterator end; !error && entry != end; entry.increment(error)) {
        std::error_code unknown;
        if (!entry->is_regular_file(unknown)) continue;
        try {
            const std::u8string name = entry->path().filename().u8string();
            names.emplace_back(name.begin(), name.end());
        } catch (const std::system_error&) {
            // A name that is no text at all is none of the family's.
        }
    }
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) {
        if (passes(name)) paths.push_back(folder + "/" + name);
    }
}

}  // namespace

bool qv_clasp_load() {
    QvClaspSession& session = qv_clasp_session();
    if (is_loaded(session)) return true;
    if (qv_clasp_active_wallet_id().empty()) return false;
    if (session.seal_gate && !session.unlocked && qv_clasp_is_locked()) return false;
    WalletDocument document;
    if (!read_wallet_document(qv_clasp_document_path(), document)) return false;
    if (is_seal_envelope(document.root) && !open_envelope(document)) return false;

    clear_document_fields(session);
    const bool hd = json_member(document.root, "mnemonic").is_string();
    const bool read = hd ? read_mnemonic_wallet(document, session) : read_legacy_wallet(document, session);
    if (read) qv_clasp_load_spent();
    return read;
}

bool qv_clasp_save() {
    const QvClaspSession& session = qv_clasp_session();
    if (qv_clasp_active_wallet_id().empty()) return false;
    // A session without keys is no wallet: writing it would destroy the one on the disk.
    if (!has_keys(session)) return false;
    const std::string path = qv_clasp_document_path();
    if (!session.unlocked && is_sealed_on_disk(path)) return false;
    make_folder(path.substr(0, path.rfind('/')));

    WalletDocument document;
    whole_form(session, document);
    const SecretText text = wallet_document_text(document);
    return write_wallet_document(path, text.view()) &&
           (!session.unlocked || qv_clasp_seal_write(text.view()));
}

void qv_clasp_reconcile() {
    QvClaspSession& session = qv_clasp_session();
    if (!is_loaded(session)) return;
    WalletDocument document;
    if (!read_wallet_document(qv_clasp_document_path(), document)) return;
    const Json& root = document.root;
    if (!root.is_object() || root.contains("lock")) return;

    const std::uint32_t old_receive = session.recv[RECEIVE_ACCOUNT];
    const Json& recv = json_member(root, "recv");
    for (std::size_t account = 0; account < counters_in(recv, session); ++account) {
        std::uint32_t counter = 0;
        if (read_counter(recv[account], counter)) {
            session.recv[account] = std::max(session.recv[account], counter);
        }
    }
    // A missing avatar was taken off, a missing paymail was never known to the one who wrote the file.
    session.ord_avatar = json_text(root, "ord_avatar");
    session.paymail = json_text(root, "paymail", session.paymail);
    if (session.hd && session.recv[RECEIVE_ACCOUNT] != old_receive) qv_clasp_derive_addresses();
}

bool qv_clasp_summary(std::string& address_out, std::string& paymail_out, bool& hd_out) {
    address_out.clear();
    paymail_out.clear();
    hd_out = false;
    const WalletLock lock = qv_clasp_lock_wallet();
    const QvClaspSession& session = qv_clasp_session();
    if (!session.address.empty()) {
        address_out = session.address;
        paymail_out = with_domain(session.paymail);
        hd_out = session.hd;
        return true;
    }
    if (!session.unlocked && qv_clasp_is_locked()) return false;
    if (qv_clasp_active_wallet_id().empty()) return false;
    WalletDocument document;
    if (!read_wallet_document(qv_clasp_document_path(), document)) return false;
    const bool hd = json_member(document.root, "mnemonic").is_string();
    if (!hd && !json_member(document.root, "priv").is_string()) return false;
    hd_out = hd;
    address_out = json_text(document.root, "address");
    paymail_out = with_domain(json_text(document.root, "paymail"));
    return true;
}

std::vector<std::string> qv_clasp_other_document_paths() {
    std::vector<std::string> paths;
    const std::string active_id = qv_clasp_active_wallet_id();
    for (const auto& [wallet_id, name] : qv_clasp_list_wallets()) {
        if (wallet_id != active_id) paths.push_back(wallet_document_path(wallet_id));
    }
    const std::string root = qv_data_root();
    append_files(
        root, [](const std::string& name) { return name.starts_with(DETACHED_PREFIX); }, paths);
    make_folder(root + "/parked");
    append_files(
        root + "/parked", [](const std::string& name) { return name.ends_with(".json"); }, paths);
    return paths;
}
