#include "tests/spend/play_network.h"

#include <algorithm>
#include <stdexcept>

#include "base/hex.h"
#include "base/json_file.h"
#include "base/text.h"
#include "sandbox/sighash.h"
#include "wallet/wallet_session.h"

namespace {

std::string with_txid(std::string body, const std::string& txid) {
    const std::size_t at = body.find("TXID");
    return at == std::string::npos ? body : body.replace(at, 4, txid);
}

std::string part_after(const std::string& path, const std::string& start) {
    return path.starts_with(start) ? path.substr(start.size()) : "";
}

}  // namespace

Turn takes(const std::string& body, int status) {
    return {true, {.status = status, .body = body}};
}

Turn refuses(const std::string& body, int status) {
    return {false, {.status = status, .body = body}};
}

Turn hangs_up(bool take) {
    return {take, {.hang_up = true}};
}

PlayNetwork::PlayNetwork(const Json& wallet_document) {
    home_folder.use_settings(settings_on(plain_.base(), "localhost:" + std::to_string(tls_.port())));
    const auto handler = [this](const ScriptedRequest& request, ScriptedAnswer& given) {
        std::function<void(const std::string&)> action;
        {
            const std::lock_guard lock(mutex_);
            action = on_request_;
        }
        if (action) action(request.path);
        given = answer(request);
        return true;
    };
    plain_.on_any(handler);
    tls_.on_any(handler);
    bind_one_wallet(home_folder, wallet_document);
}

PlayNetwork::~PlayNetwork() {
    const WalletLock lock = qv_clasp_lock_wallet();
    qv_clasp_wipe_session();
}

std::string PlayNetwork::fund(const std::string& address, const std::vector<std::int64_t>& values) {
    Hash160 hash160{};
    sandbox::hash160_of_address(address, hash160);
    std::vector<sandbox::TxOutput> outputs;
    for (const std::int64_t sats : values) outputs.push_back({sats, sandbox::p2pkh_script(hash160)});
    ++funded_;
    return chain.fund(outputs);
}

void PlayNetwork::freeze_lists(const std::string& address) {
    const std::lock_guard lock(mutex_);
    frozen_[address] = chain.unspent(address);
}

void PlayNetwork::spend_elsewhere(const std::string& txid, std::uint32_t vout) {
    const sandbox::TxOutput output = chain.find(txid)->outputs.at(vout);
    const sandbox::Coin coin{txid, vout, output.sats, output.script, 0};
    sandbox::Transaction tx;
    sandbox::add_input(tx, coin);
    tx.outputs.push_back({coin.sats - 100, sandbox::p2pkh_script(Hash160{0xe1, 0x5e})});
    sandbox::sign_transaction(tx, {{coin, one_wallet_key("1'/0/0")}});
    const sandbox::Verdict verdict = chain.submit(tx.raw);
    if (!verdict.accepted) throw std::runtime_error("the other spend: " + verdict.reason);
    ++funded_;
}

std::size_t PlayNetwork::posts(const std::string& part) const {
    return plain_.count("POST", part) + tls_.count("POST", part);
}

std::size_t PlayNetwork::gets(const std::string& part) const {
    return plain_.count("GET", part) + tls_.count("GET", part);
}

void PlayNetwork::clear_requests() {
    plain_.clear_requests();
    tls_.clear_requests();
}

std::int64_t PlayNetwork::owned(const std::string& address) const {
    std::int64_t sats = 0;
    for (const sandbox::Coin& coin : chain.unspent(address)) sats += coin.sats;
    return sats;
}

std::vector<sandbox::Transaction> PlayNetwork::payments() const {
    std::vector<sandbox::Transaction> all = chain.all();
    all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(funded_));
    return all;
}

Json PlayNetwork::record(const std::string& suffix) const {
    return home_folder.read_json("/ord_snap/" + ONE_WALLET_ID + suffix);
}

void PlayNetwork::replace(Target& target, std::vector<Turn> turns) {
    const std::lock_guard lock(mutex_);
    target = {std::move(turns)};
}

ScriptedAnswer PlayNetwork::broadcast(Target& target, const std::string& raw_hex) {
    const Turn& now = target.turns[std::min(target.next++, target.turns.size() - 1)];
    const Bytes raw = qv_clasp_hex_decode(raw_hex);
    sandbox::Transaction tx;
    if (!sandbox::parse_transaction(raw, tx)) return {.status = 400, .body = "no transaction"};
    if (now.take) {
        const sandbox::Verdict verdict = chain.submit(raw);
        // A transaction that the chain does not take is refused whatever the script says.
        if (!verdict.accepted && !chain.find(tx.txid)) return {.status = 400, .body = verdict.reason};
    }
    ScriptedAnswer given = now.answer;
    given.body = with_txid(given.body, tx.txid);
    return given;
}

ScriptedAnswer PlayNetwork::answer(const ScriptedRequest& request) {
    const std::lock_guard lock(mutex_);
    Json body;
    parse_json(request.body, body);
    if (request.path == "/oi/submit") return broadcast(home_, json_text(body, "txhex"));
    if (request.path == "/woc/tx/raw") return broadcast(woc_, json_text(body, "txhex"));
    if (request.path == "/arc/tx") return broadcast(arc_, json_text(body, "rawTx"));
    if (const std::string tx = part_after(request.path, "/woc/tx/"); !tx.empty()) return look_up(tx);
    for (const std::string start : {"/woc/address/", "/api/txos/address/"}) {
        const std::string rest = part_after(request.path, start);
        const std::size_t slash = rest.find('/');
        if (slash != std::string::npos)
            return address_list(rest.substr(0, slash), start + rest.substr(slash + 1));
    }
    return {.status = 404};
}

ScriptedAnswer PlayNetwork::look_up(const std::string& path) {
    const std::string txid = path.substr(0, 64);
    const auto tx = chain.find(txid);
    if (!looks_answer) return {.status = 500, .body = "down"};
    if (!tx) return {.status = 404};
    if (misses != 0) {
        if (misses > 0 && path.size() == 64) --misses;
        return {.status = 404};
    }
    if (path.ends_with("/hex")) return {.body = qv_clasp_hex_encode(tx->raw)};
    Json outputs = Json::array();
    for (std::size_t i = 0; i < tx->outputs.size(); ++i) {
        Json script = Json::object();
        if (tx->outputs[i].script.size() == 25) {
            Hash160 hash160{};
            std::copy_n(tx->outputs[i].script.begin() + 3, 20, hash160.begin());
            script["addresses"] = {sandbox::address_of(hash160)};
        }
        outputs.push_back({{"n", i}, {"satoshis", tx->outputs[i].sats}, {"scriptPubKey", script}});
    }
    return {.body = dump_json({{"txid", txid}, {"vout", outputs}}, -1)};
}

ScriptedAnswer PlayNetwork::address_list(const std::string& address, const std::string& rest) {
    Json rows = Json::array();
    if (!lists_answer && rest.starts_with("/woc")) return {.status = 500, .body = "down"};
    const bool index = rest == "/api/txos/address/unspent";
    if (index && !index_answers) return {.status = 500, .body = "down"};
    if (index || rest == "/woc/address/unspent/all") {
        const auto fixed = frozen_.find(address);
        const std::vector<sandbox::Coin> coins =
            fixed == frozen_.end() ? chain.unspent(address) : fixed->second;
        for (const sandbox::Coin& coin : coins) {
            rows.push_back(index ? Json{{"txid", coin.txid}, {"vout", coin.vout}, {"satoshis", coin.sats}}
                                 : Json{{"tx_hash", coin.txid}, {"tx_pos", coin.vout}, {"value", coin.sats}});
        }
    }
    return {.body = dump_json(rows, -1)};
}
