#include "sandbox/chain.h"

#include <algorithm>

#include "base/clock.h"
#include "sandbox/byte_io.h"
#include "sandbox/keys.h"
#include "sandbox/scripts.h"
#include "sandbox/sighash.h"
#include "sandbox/spend_check.h"

namespace sandbox {

namespace {

constexpr std::uint32_t FINAL_SEQUENCE = 0xffffffffU;
constexpr std::uint32_t FIRST_LOCK_TIME_IN_SECONDS = 500'000'000;

}  // namespace

Verdict Chain::submit(const Bytes& raw) {
    Verdict verdict;
    Transaction tx;
    if (!parse_transaction(raw, tx)) {
        verdict.reason = "TX decode failed";
        return verdict;
    }
    const std::lock_guard lock(mutex_);
    verdict.txid = tx.txid;
    verdict.reason = check(tx);
    verdict.code = reject_code(verdict.reason);
    verdict.accepted = verdict.reason.empty();
    if (verdict.accepted) insert(std::move(tx));
    return verdict;
}

std::string Chain::fund(const std::vector<TxOutput>& outputs) {
    const std::lock_guard lock(mutex_);
    Transaction tx;
    tx.height = ++height_;
    put_u64(tx.coinbase, static_cast<std::uint64_t>(tx.height));
    tx.outputs = outputs;
    tx.raw = serialize_transaction(tx);
    tx.txid = txid_text(sha256d(tx.raw));
    std::string txid = tx.txid;
    insert(std::move(tx));
    return txid;
}

bool Chain::drop(const std::string& txid) {
    const std::lock_guard lock(mutex_);
    const auto found = transactions_.find(txid);
    if (found == transactions_.end() || found->second.height != 0) return false;
    remove_with_spenders(txid);
    return true;
}

int Chain::mine() {
    const std::lock_guard lock(mutex_);
    ++height_;
    for (const std::string& txid : unmined_) transactions_.at(txid).height = height_;
    unmined_.clear();
    return height_;
}

int Chain::height() const {
    const std::lock_guard lock(mutex_);
    return height_;
}

std::optional<Transaction> Chain::find(const std::string& txid) const {
    const std::lock_guard lock(mutex_);
    const auto found = transactions_.find(txid);
    if (found == transactions_.end()) return std::nullopt;
    return found->second;
}

std::optional<std::string> Chain::spender(const std::string& txid, std::uint32_t vout) const {
    const std::lock_guard lock(mutex_);
    const auto found = spenders_.find({txid, vout});
    if (found == spenders_.end()) return std::nullopt;
    return found->second;
}

std::vector<Coin> Chain::unspent(const std::string& address) const {
    Hash160 owner{};
    if (!hash160_of_address(address, owner)) return {};
    const std::lock_guard lock(mutex_);
    const auto outpoints = unspent_.find(owner);
    if (outpoints == unspent_.end()) return {};
    std::vector<Coin> coins;
    for (const Outpoint& outpoint : outpoints->second) {
        const Transaction& tx = transactions_.at(outpoint.first);
        const TxOutput& output = tx.outputs[outpoint.second];
        coins.push_back({tx.txid, outpoint.second, output.sats, output.script, tx.height});
    }
    return coins;
}

std::vector<std::string> Chain::history(const std::string& address) const {
    Hash160 owner{};
    if (!hash160_of_address(address, owner)) return {};
    const std::lock_guard lock(mutex_);
    const auto found = histories_.find(owner);
    return found == histories_.end() ? std::vector<std::string>{} : found->second;
}

std::vector<Transaction> Chain::all() const {
    const std::lock_guard lock(mutex_);
    std::vector<Transaction> transactions;
    transactions.reserve(order_.size());
    for (const std::string& txid : order_) transactions.push_back(transactions_.at(txid));
    return transactions;
}

std::vector<std::string> Chain::txids() const {
    const std::lock_guard lock(mutex_);
    return order_;
}

std::string Chain::check(const Transaction& tx) const {
    if (transactions_.contains(tx.txid)) return "txn-already-known";
    std::string fault = check_form(tx);
    if (fault.empty() && !is_final(tx)) fault = "non-final";
    if (fault.empty()) fault = check_inputs_unspent(tx);
    if (fault.empty()) fault = check_value(tx);
    if (!fault.empty()) return fault;
    const SighashParts parts = sighash_parts(tx);
    for (std::size_t i = 0; i < tx.inputs.size() && fault.empty(); ++i) {
        fault = check_input(tx, parts, i, spent_output(tx.inputs[i]));
    }
    return fault;
}

bool Chain::is_final(const Transaction& tx) const {
    const auto sleeps = [](const TxInput& input) { return input.sequence != FINAL_SEQUENCE; };
    if (tx.lock_time == 0 || std::none_of(tx.inputs.begin(), tx.inputs.end(), sleeps)) return true;
    const std::int64_t now = tx.lock_time < FIRST_LOCK_TIME_IN_SECONDS ? height_ + 1 : unix_seconds();
    return tx.lock_time < now;
}

std::string Chain::check_inputs_unspent(const Transaction& tx) const {
    for (const TxInput& input : tx.inputs) {
        const auto spender = spenders_.find({input.txid, input.vout});
        if (spender != spenders_.end() && transactions_.at(spender->second).height == 0) {
            return "txn-mempool-conflict";
        }
        const auto source = transactions_.find(input.txid);
        const bool exists = source != transactions_.end() && input.vout < source->second.outputs.size();
        if (!exists || spender != spenders_.end()) return "Missing inputs";
    }
    return "";
}

std::string Chain::check_value(const Transaction& tx) const {
    std::int64_t in = 0;
    std::int64_t out = 0;
    for (const TxInput& input : tx.inputs) {
        in += spent_output(input).sats;
        if (in > MAX_SATS) return "bad-txns-inputvalues-outofrange";
    }
    for (const TxOutput& output : tx.outputs) out += output.sats;
    if (in < out) return "bad-txns-in-belowout";
    const std::int64_t least = static_cast<std::int64_t>(tx.raw.size()) * fee_rate / 1000;
    return in - out < least ? "mempool min fee not met" : "";
}

const TxOutput& Chain::spent_output(const TxInput& input) const {
    return transactions_.at(input.txid).outputs[input.vout];
}

std::set<Hash160> Chain::owners_touched(const Transaction& tx) const {
    std::set<Hash160> owners;
    for (const TxInput& input : tx.inputs) {
        if (const auto owner = script_owner(spent_output(input).script)) owners.insert(*owner);
    }
    for (const TxOutput& output : tx.outputs) {
        if (const auto owner = script_owner(output.script)) owners.insert(*owner);
    }
    return owners;
}

void Chain::insert(Transaction tx) {
    tx.time = unix_seconds();
    for (const Hash160& owner : owners_touched(tx)) histories_[owner].push_back(tx.txid);
    for (const TxInput& input : tx.inputs) {
        spenders_[{input.txid, input.vout}] = tx.txid;
        if (const auto owner = script_owner(spent_output(input).script)) {
            unspent_[*owner].erase({input.txid, input.vout});
        }
    }
    for (std::uint32_t vout = 0; vout < tx.outputs.size(); ++vout) {
        if (const auto owner = script_owner(tx.outputs[vout].script)) unspent_[*owner].emplace(tx.txid, vout);
    }
    if (tx.height == 0) unmined_.push_back(tx.txid);
    order_.push_back(tx.txid);
    transactions_.emplace(tx.txid, std::move(tx));
}

void Chain::remove_with_spenders(const std::string& txid) {
    const Transaction tx = transactions_.at(txid);
    for (std::uint32_t vout = 0; vout < tx.outputs.size(); ++vout) {
        const auto spender = spenders_.find({txid, vout});
        if (spender != spenders_.end()) remove_with_spenders(std::string(spender->second));
        if (const auto owner = script_owner(tx.outputs[vout].script)) unspent_[*owner].erase({txid, vout});
    }
    for (const Hash160& owner : owners_touched(tx)) std::erase(histories_[owner], txid);
    for (const TxInput& input : tx.inputs) {
        spenders_.erase({input.txid, input.vout});
        if (const auto owner = script_owner(spent_output(input).script)) {
            unspent_[*owner].emplace(input.txid, input.vout);
        }
    }
    std::erase(unmined_, txid);
    std::erase(order_, txid);
    transactions_.erase(txid);
}

}  // namespace sandbox
