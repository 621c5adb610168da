#include <iostream>
#include <map>

#include "base/hex.h"
#include "base/json_file.h"
#include "sandbox/keys.h"
#include "sandbox/spend_check.h"
#include "spend/recoverable_signature.h"
#include "spend/transaction.h"
#include "tests/pedigree/pedigree.h"
#include "wallet/address.h"
#include "wallet/ecdsa.h"
#include "wallet/hashes.h"
#include "wallet/key_derivation.h"

namespace pedigree {

namespace {

// Empty, or what is wrong with it as a spend of these coins: its form, and the script of each input.
std::string refusal(const sandbox::Transaction& tx, const Json& coins) {
    std::string fault = sandbox::check_form(tx);
    if (fault.empty() && tx.inputs.size() != coins.size()) fault = "another number of inputs";
    const sandbox::SighashParts parts = sandbox::sighash_parts(tx);
    for (std::size_t i = 0; fault.empty() && i < tx.inputs.size(); ++i) {
        fault = sandbox::check_input(
            tx, parts, i, {json_int(coins[i], "sats"), qv_clasp_hex_decode(json_text(coins[i], "script"))});
    }
    return fault;
}

// The product's own writing of the same transaction: its bytes, its id, and what each input signs.
std::string rewriting_fault(const sandbox::Transaction& tx, const Json& line) {
    const Json& rows = line["coins"];
    std::vector<QvClaspCoin> coins;
    for (std::size_t i = 0; i < tx.inputs.size(); ++i) {
        const sandbox::TxInput& input = tx.inputs[i];
        QvClaspCoin coin{.txid = input.txid,
                         .vout = input.vout,
                         .sats = json_int(rows[i], "sats"),
                         .script_sig = input.script_sig,
                         .prev_script = {},
                         .priv = {},
                         .pub = {}};
        if (!qv_clasp_address_to_hash160(json_text(rows[i], "address"), coin.hash160))
            return "an address is refused";
        if (qv_clasp_hex_encode(qv_clasp_p2pkh_script(coin.hash160)) != json_text(rows[i], "script"))
            return "another script for an address";
        if (qv_clasp_address_from_pub(json_text(rows[i], "pub")) != json_text(rows[i], "address"))
            return "another address for a public key";
        coins.push_back(std::move(coin));
    }
    std::vector<QvClaspTxOutput> outputs;
    for (const sandbox::TxOutput& output : tx.outputs) outputs.push_back({output.sats, output.script});

    const Bytes raw = qv_clasp_serialize_tx(coins, outputs, false);
    if (raw != tx.raw) return "written with other bytes";
    if (qv_clasp_txid(raw) != json_text(line, "txid")) return "another transaction id";
    const SighashMidstate midstate = sighash_midstate(coins, outputs);
    for (std::size_t i = 0; i < coins.size(); ++i) {
        if (qv_clasp_hex_encode(sighash_preimage(coins[i], midstate, coins[i].hash160)) !=
            json_text(rows[i], "preimage")) {
            return "another preimage of a signature";
        }
    }
    return "";
}

std::string transaction_fault(const Json& line) {
    sandbox::Transaction tx;
    if (!sandbox::parse_transaction(qv_clasp_hex_decode(json_text(line, "raw")), tx))
        return "not a transaction";
    const std::string fault = refusal(tx, line["coins"]);
    return fault.empty() && json_bool(line, "good") ? rewriting_fault(tx, line) : fault;
}

std::string message_fault(const Json& line) {
    const Bytes signature = qv_clasp_hex_decode(json_text(line, "signature"));
    if (signature.size() != 65) return "not a signature";
    std::array<std::uint8_t, 64> rs{};
    std::copy(signature.begin() + 1, signature.end(), rs.begin());
    const std::string signer =
        recover_public_key(bitcoin_message_digest(json_text(line, "text")), rs, signature[0] - 31);
    return signer == json_text(line, "pub") ? "" : "another signer";
}

std::string words_fault(const Json& line) {
    return mnemonic_words_valid(json_text(line, "mnemonic")) ? "" : "words refused";
}

}  // namespace

bool check_theirs(std::istream& in, std::ostream& out) {
    const std::map<std::string, std::string (*)(const Json&)> checks = {
        {"transaction", transaction_fault}, {"message", message_fault}, {"words", words_fault}};
    struct Count {
        int accepted = 0;
        int refused = 0;
    };
    std::map<std::string, Count> counts;
    bool agreed = true;
    for (std::string text; std::getline(in, text);) {
        Json line;
        if (!parse_json(text, line) || !checks.contains(json_text(line, "kind"))) {
            out << "not a case: " << text.substr(0, 100) << '\n';
            return false;
        }
        const std::string kind = json_text(line, "kind");
        const bool good = json_bool(line, "good");
        const std::string fault = checks.at(kind)(line);
        ++(fault.empty() ? counts[kind].accepted : counts[kind].refused);
        if (fault.empty() == good) continue;
        agreed = false;
        out << "DISAGREE: " << (good ? "a good " : "a damaged ") << kind << ": "
            << (good ? fault : "accepted") << "\n  " << text.substr(0, 2000) << '\n';
    }
    for (const auto& [kind, check] : checks) {
        const Count count = counts[kind];
        out << "theirs: " << count.accepted << " of kind " << kind << " accepted, " << count.refused
            << " damaged ones refused\n";
        // Nothing of a kind would pass for agreement.
        agreed = agreed && count.accepted > 0 && count.refused > 0;
    }
    return agreed;
}

}  // namespace pedigree
