// A bound wallet, an indexer that answers per address, and the scripted chain of token_world.h.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <utility>

#include "index/ordinal_listing.h"
#include "tests/index/token_world.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

inline Json document_owning(const Json& ord_owned) {
    Json document = one_wallet_document();
    document["ord_owned"] = ord_owned;
    return document;
}

// A remembered ordinal at the wallet's current ordinal address.
inline Json owned_row(const std::string& origin, Json more = Json::object()) {
    Json row = {{"origin", origin},
                {"txid", origin.substr(0, 64)},
                {"vout", std::stoi(origin.substr(65))},
                {"address", one_wallet_key("5'/0/0").address},
                {"created", false}};
    row.update(more);
    return row;
}

struct SweepWorld : TokenWorld {
    std::map<std::string, Json> outputs;  // "/txos/address/", by address
    std::map<std::string, Json> tokens;   // "/bsv20/", by address
    std::set<std::string> silent;         // addresses whose listings fail
    bool indexer_up = true;
    bool token_listings_up = true;
    std::function<void()> during;  // once, when the indexer is first asked
    std::mutex mutex;
    const std::string address = one_wallet_key("5'/0/0").address;
    const Hash160 address_hash = one_wallet_key("5'/0/0").hash160;

    explicit SweepWorld(const Json& ord_owned = Json::array()) {
        bind_one_wallet(home, document_owning(ord_owned));
        server.on_any([this](const ScriptedRequest& request, ScriptedAnswer& answer) {
            return answer_listing(request.path, answer);
        });
    }
    ~SweepWorld() {
        const WalletLock lock = qv_clasp_lock_wallet();
        qv_clasp_wipe_session();
    }
    bool answer_listing(const std::string& path, ScriptedAnswer& answer) {
        const std::string ending = "/unspent";
        const bool all = path.starts_with("/api/txos/address/");
        if ((!all && !path.starts_with("/api/bsv20/")) || !path.ends_with(ending)) return false;
        const std::lock_guard<std::mutex> hold(mutex);
        if (during) std::exchange(during, nullptr)();
        const std::size_t start = all ? 18 : 11;
        const std::string asked = path.substr(start, path.size() - ending.size() - start);
        const std::map<std::string, Json>& listings = all ? outputs : tokens;
        const auto known = listings.find(asked);
        const bool up = indexer_up && (all || token_listings_up) && silent.count(asked) == 0;
        if (up) answer.body = known == listings.end() ? "[]" : dump_json(known->second, -1);
        if (!up) answer = {.status = 503, .body = "busy"};
        return true;
    }
    // A row of the token listing, with the script that carries the body.
    void list_token(const std::string& at, unsigned tx, unsigned vout, const std::string& id,
                    const std::string& amt) {
        tokens[at].push_back({{"txid", tx_number(tx)},
                              {"vout", vout},
                              {"outpoint", out(tx, vout)},
                              {"owner", at},
                              {"spend", ""},
                              {"id", id},
                              {"amt", amt}});
    }
    void cache_body(const std::string& origin, const std::string& type, const std::string& body) const {
        home.write("/ord_cache/" + origin + ".bin", body);
        home.write("/ord_cache/" + origin + ".typ", type);
    }
    Json owned() const { return home.read_json(ONE_WALLET_PATH)["ord_owned"]; }
    Json snapshot() const { return home.read_json("/ord_snap/" + ONE_WALLET_ID + ".json"); }
    // What the chain was asked about one output.
    std::size_t spend_checks(unsigned tx, unsigned vout) const {
        return server.count("GET", spent_path(tx, vout));
    }
};

struct Swept {
    std::string error;
    std::vector<QvClaspOrdRow> rows;

    std::vector<std::string> origins() const {
        std::vector<std::string> list;
        for (const QvClaspOrdRow& row : rows) list.push_back(row.origin);
        return list;
    }
};
inline Swept sweep() {
    Swept swept;
    swept.rows.emplace_back();
    swept.error = qv_clasp_list_ordinals(swept.rows);
    return swept;
}
