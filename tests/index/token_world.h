// A chain, an indexer and a paymail directory by script, as the token index meets them. Scripts and keys come
// from the sandbox, which was written apart from the product.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "base/hex.h"
#include "sandbox/keys.h"
#include "sandbox/scripts.h"
#include "tests/support/one_wallet.h"
#include "tests/support/scripted_server.h"
#include "tests/support/test_home.h"

// A transaction id for each number.
inline std::string tx_number(unsigned number) {
    char text[65];
    std::snprintf(text, sizeof text, "%064x", number);
    return text;
}
inline std::string out(unsigned number, unsigned vout = 0) {
    return tx_number(number) + "_" + std::to_string(vout);
}

// A person for each number, none of them the wallet.
inline Hash160 person_hash(unsigned number) {
    Hash160 hash{};
    hash[0] = 0x77;
    hash[18] = static_cast<std::uint8_t>(number >> 8);
    hash[19] = static_cast<std::uint8_t>(number);
    return hash;
}
inline std::string person(unsigned number) {
    return sandbox::address_of(person_hash(number));
}

inline std::string ascii_upper(std::string text) {
    for (char& c : text) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return text;
}

inline Json output_json(const Bytes& script) {
    return {{"value", 0.00000001}, {"scriptPubKey", {{"hex", qv_clasp_hex_encode(script)}}}};
}
inline Json token_output(const Hash160& owner, const std::string& body) {
    return output_json(sandbox::token_script(owner, body));
}
inline std::string transfer(const std::string& id, const std::string& amt) {
    return id.empty() ? R"({"p":"bsv-20","op":"transfer","amt":")" + amt + "\"}"
                      : sandbox::transfer_body(id, amt);
}

struct TokenWorld {
    ScriptedServer server;
    ScriptedServer home_host{ScriptedServer::Transport::Tls};
    TestHome home;

    TokenWorld() {
        Settings changed = settings_on(server.base(), "localhost:" + std::to_string(home_host.port()));
        changed.fixed_token_id = out(0xF1);
        home.use_settings(changed);
    }
    void add_tx(unsigned number, const std::vector<Json>& outputs) {
        server.on("GET", "/woc/tx/" + tx_number(number),
                  dump_json({{"txid", tx_number(number)}, {"vout", outputs}}, -1));
    }
    void add_deploy(unsigned number, const Hash160& owner, const std::string& amt,
                    const std::string& name = "") {
        add_tx(number, {token_output(owner, sandbox::deploy_mint_body("TEST", amt, 0, "", name))});
    }
    void add_spend(unsigned number, unsigned vout, unsigned spender) {
        server.on("GET", spent_path(number, vout), R"({"txid":")" + tx_number(spender) + R"(","vin":0})");
    }
    void add_holders(unsigned deploy, const Json& body) {
        server.on("GET", "/api/bsv20/id/" + out(deploy) + "/holders", dump_json(body, -1));
    }
    void add_directory(const std::string& address, const Json& body) {
        home_host.on("GET", "/api/paymail/address/" + address, dump_json(body, -1));
    }
    static std::string spent_path(unsigned number, unsigned vout) {
        return "/woc/tx/" + tx_number(number) + "/" + std::to_string(vout) + "/spent";
    }
};
