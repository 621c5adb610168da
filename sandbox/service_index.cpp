#include "sandbox/service_index.h"

#include <algorithm>
#include <map>
#include <unordered_set>

#include "base/decimal_text.h"
#include "base/text.h"
#include "sandbox/keys.h"
#include "sandbox/scripts.h"

namespace sandbox {

namespace {

using Txids = std::unordered_set<std::string>;

// The transactions that a lagging index has not reached.
Txids unseen_transactions(const ServiceContext& context) {
    const std::size_t lag = context.index_lag;
    Txids unseen;
    if (lag == 0) return unseen;
    const std::vector<std::string> txids = context.chain.txids();
    unseen.insert(txids.end() - static_cast<std::ptrdiff_t>(std::min(lag, txids.size())), txids.end());
    return unseen;
}

bool spent_for_index(const ServiceContext& context, const Coin& coin, const Txids& unseen) {
    const std::optional<std::string> spender = context.chain.spender(coin.txid, coin.vout);
    return spender && !unseen.contains(*spender);
}

std::vector<Coin> lagging_coins(const ServiceContext& context, const std::string& address,
                                const Txids& unseen) {
    std::vector<Coin> coins;
    for (const std::string& txid : context.chain.history(address)) {
        const std::optional<Transaction> tx = context.chain.find(txid);
        if (!tx || unseen.contains(txid)) continue;
        for (std::size_t vout = 0; vout < tx->outputs.size(); ++vout) {
            Coin coin = coin_of(*tx, vout);
            if (script_address(coin.script) != address || spent_for_index(context, coin, unseen)) continue;
            coins.push_back(std::move(coin));
        }
    }
    return coins;
}

TokenRecords read_records(const Transaction& tx) {
    TokenRecords records;
    for (std::size_t vout = 0; vout < tx.outputs.size(); ++vout) {
        // Tokens stand in outputs of one satoshi.
        if (tx.outputs[vout].sats != 1) continue;
        const Coin coin = coin_of(tx, vout);
        TokenOutput output;
        if (read_token_output(coin, output) && !output.owner.empty())
            records.push_back({coin.vout, output.token_id, output.owner, output.amt()});
    }
    return records;
}

// Null for a transaction that the chain has dropped meanwhile.
std::shared_ptr<const TokenRecords> records_of(const ServiceContext& context, const std::string& txid) {
    std::shared_ptr<const TokenRecords> records = context.tokens.find(txid);
    const std::optional<Transaction> tx = records ? std::nullopt : context.chain.find(txid);
    if (!tx) return records;
    records = std::make_shared<const TokenRecords>(read_records(*tx));
    context.tokens.put(txid, records);
    return records;
}

// Adds what the unspent outputs of one transaction hold of a token, by owner.
void add_lots(const ServiceContext& context, const std::string& txid, const std::string& token_id,
              const Txids& unseen, std::map<std::string, std::string>& lots) {
    const std::shared_ptr<const TokenRecords> records = records_of(context, txid);
    if (!records) return;
    for (const TokenRecord& record : *records) {
        if (record.token_id != token_id) continue;
        const std::optional<std::string> spender = context.chain.spender(txid, record.vout);
        if (spender && !unseen.contains(*spender)) continue;
        std::string& sum = lots[record.owner];
        sum = dec_add(sum, record.amt);
    }
}

}  // namespace

std::string outpoint_text(const Coin& coin) {
    return coin.txid + "_" + std::to_string(coin.vout);
}

Coin coin_of(const Transaction& tx, std::size_t vout) {
    const TxOutput& output = tx.outputs[vout];
    return {tx.txid, static_cast<std::uint32_t>(vout), output.sats, output.script, tx.height};
}

std::string script_address(const Bytes& script) {
    const std::optional<Hash160> owner = script_owner(script);
    return owner ? address_of(*owner) : "";
}

std::optional<Coin> find_output(const ServiceContext& context, const std::string& outpoint) {
    unsigned long long vout = 0;
    if (outpoint.size() > 64 && (outpoint[64] != '_' || !parse_u64(outpoint.substr(65), vout)))
        return std::nullopt;
    const std::optional<Transaction> tx = context.chain.find(ascii_lower(outpoint.substr(0, 64)));
    if (!tx || vout >= tx->outputs.size()) return std::nullopt;
    return coin_of(*tx, static_cast<std::size_t>(vout));
}

std::vector<Coin> indexed_coins(const ServiceContext& context, const std::string& address) {
    const Txids unseen = unseen_transactions(context);
    return unseen.empty() ? context.chain.unspent(address) : lagging_coins(context, address, unseen);
}

std::vector<Coin> spent_in_mempool(const ServiceContext& context, const std::string& address,
                                   std::size_t most) {
    std::vector<Coin> coins;
    const std::vector<std::string> history = context.chain.history(address);
    for (auto txid = history.rbegin(); txid != history.rend() && most > 0; ++txid) {
        --most;
        const std::optional<Transaction> tx = context.chain.find(*txid);
        if (!tx || tx->height > 0) continue;
        for (const TxInput& input : tx->inputs) {
            const std::optional<Transaction> funding = context.chain.find(input.txid);
            if (!funding || input.vout >= funding->outputs.size()) continue;
            Coin coin = coin_of(*funding, input.vout);
            if (script_address(coin.script) == address) coins.push_back(std::move(coin));
        }
    }
    return coins;
}

std::string TokenOutput::amt() const {
    const Json& value = json_member(record, "amt");
    return value.is_number_unsigned() ? dec_norm(value.dump()) : dec_norm(json_text(record, "amt"));
}

std::string TokenOutput::op() const {
    return json_text(record, "op");
}

bool read_token_output(const Coin& coin, TokenOutput& output) {
    const ReadScript script = read_script(coin.script);
    if (!script.token.is_object()) return false;
    output.coin = coin;
    output.owner = script.owner ? address_of(*script.owner) : "";
    output.content_type = script.content_type;
    output.record = script.token;
    output.token_id = json_text(script.token, "id");
    const std::string op = output.op();
    if (output.token_id.empty() && (op == "deploy+mint" || op == "deploy"))
        output.token_id = outpoint_text(coin);
    return !output.token_id.empty() && !output.amt().empty();
}

std::optional<TokenOutput> find_deploy(const ServiceContext& context, const std::string& token_id) {
    const std::optional<Coin> coin = find_output(context, token_id);
    TokenOutput output;
    if (!coin || !read_token_output(*coin, output) || output.token_id != outpoint_text(*coin))
        return std::nullopt;
    return output;
}

std::vector<std::pair<std::string, std::string>> token_owners(const ServiceContext& context,
                                                              const std::string& token_id) {
    const Txids unseen = unseen_transactions(context);
    std::map<std::string, std::string> lots;
    for (const std::string& txid : context.chain.txids()) {
        if (!unseen.contains(txid)) add_lots(context, txid, token_id, unseen, lots);
    }
    std::vector<std::pair<std::string, std::string>> owners(lots.begin(), lots.end());
    std::stable_sort(owners.begin(), owners.end(),
                     [](const auto& a, const auto& b) { return dec_cmp(a.second, b.second) > 0; });
    return owners;
}

}  // namespace sandbox
