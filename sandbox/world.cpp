#include "sandbox/world.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "base/decimal_text.h"
#include "base/hex.h"
#include "sandbox/holder_plan.h"
#include "sandbox/scripts.h"
#include "sandbox/sighash.h"
#include "sandbox/wallet_files.h"

namespace sandbox {

namespace {

constexpr std::int64_t OTHER_WALLET_SATS = 50'000'000;
constexpr std::int64_t MINTER_SATS = 1'000'000'000;
constexpr std::uint64_t AMONG_COINS_LOTS = 777;
constexpr std::size_t OUTPUTS_A_TRANSACTION = 250;
constexpr const char* TOKEN_NAME = "Barley Shares";
constexpr const char* TOKEN_SYMBOL = "BARLEY";
constexpr const char* MAIN_PAYMAIL = "issuer";

std::string path_of(int account, std::uint32_t index) {
    return "m/44'/236'/" + std::to_string(account) + "'/0/" + std::to_string(index);
}

Wallet make_wallet(const WorldOptions& options, int number, Random& random) {
    std::array<std::uint8_t, 16> entropy{};
    for (std::uint8_t& byte : entropy) byte = static_cast<std::uint8_t>(random());
    Wallet wallet;
    const std::uint64_t made_at = 1'700'000'000'000 + options.seed % 1'000'000'000 * 10;
    wallet.id = "w" + std::to_string(made_at + static_cast<std::uint64_t>(number));
    wallet.name = "Wallet " + std::to_string(number);
    wallet.mnemonic = mnemonic_from_entropy(entropy);
    wallet.document = options.folder + "/Quorvelle/wallets/" + wallet.id + "/wallet.json";
    return wallet;
}

void make_wallets(World& world, Random& random) {
    world.main_wallet = make_wallet(world.options, 1, random);
    world.main_wallet.receive_index = 3;
    world.main_wallet.ordinal_index = 2;
    world.main_wallet.paymail = MAIN_PAYMAIL;
    world.other_wallet = make_wallet(world.options, 2, random);
    world.other_wallet.receive_index = 1;
}

Paymail directory_row(const Wallet& wallet) {
    Paymail row;
    row.alias = wallet.paymail;
    row.pubkey = qv_clasp_hex_encode(wallet.identity().pub);
    row.address = wallet.receive(wallet.receive_index).address;
    row.ord_address = wallet.ordinal(wallet.ordinal_index).address;
    row.bn_address = wallet.bn().address;
    return row;
}

// Coins of uneven size over the receive addresses, two of them on the current one.
std::vector<TxOutput> main_coins(const Wallet& wallet, std::int64_t sats) {
    std::vector<TxOutput> coins;
    const auto put = [&](std::uint32_t index, std::int64_t part) {
        if (part > 0) coins.push_back({part, p2pkh_script(wallet.receive(index).hash160)});
        sats -= part;
    };
    const std::int64_t tenth = sats / 10;
    put(3, tenth * 4);
    put(0, tenth * 2);
    put(1, tenth);
    put(3, tenth);
    put(2, sats);
    return coins;
}

void make_money(World& world, Chain& chain) {
    const std::vector<TxOutput> coins = main_coins(world.main_wallet, world.options.wallet_sats);
    if (!coins.empty()) chain.fund(coins);
    world.other_sats = OTHER_WALLET_SATS;
    chain.fund({{OTHER_WALLET_SATS / 2, p2pkh_script(world.other_wallet.receive(0).hash160)},
                {OTHER_WALLET_SATS / 2, p2pkh_script(world.other_wallet.receive(1).hash160)}});
}

// Who pays for the token's transactions, and where the part that is not yet handed out lies.
struct Minter {
    KeyPair payer;
    KeyPair holder;
    Coin money;
    Coin token;
};

Coin coin_of(const Transaction& tx, std::size_t vout) {
    return {tx.txid, static_cast<std::uint32_t>(vout), tx.outputs[vout].sats, tx.outputs[vout].script, 0};
}

// Signs and submits a transaction whose last output is the payer's change.
void send(Chain& chain, Transaction& tx, Minter& minter, const std::vector<SpentCoin>& spent) {
    std::int64_t left = 0;
    for (const SpentCoin& input : spent) {
        add_input(tx, input.coin);
        left += input.coin.sats;
    }
    tx.outputs.push_back({0, p2pkh_script(minter.payer.hash160)});
    for (const TxOutput& output : tx.outputs) left -= output.sats;
    sign_transaction(tx, spent);
    // A signature of another length makes the signed size vary by a few bytes.
    const auto size = static_cast<std::int64_t>(tx.raw.size() + 4 * spent.size());
    tx.outputs.back().sats = left - (size * chain.fee_rate / 1000 + 1);
    sign_transaction(tx, spent);
    const Verdict verdict = chain.submit(tx.raw);
    if (!verdict.accepted)
        throw std::runtime_error("the world's own transaction was refused: " + verdict.reason);
    minter.money = coin_of(tx, tx.outputs.size() - 1);
}

void deploy(World& world, Chain& chain, Minter& minter) {
    Transaction tx;
    const std::string body = deploy_mint_body(TOKEN_SYMBOL, world.total_lots, 0, "", TOKEN_NAME);
    tx.outputs.push_back({1, token_script(minter.holder.hash160, body)});
    send(chain, tx, minter, {{minter.money, minter.payer}});
    minter.token = coin_of(tx, 0);
    world.token_id = tx.txid + "_0";
    world.token_name = TOKEN_NAME;
}

TxOutput transfer_output(const World& world, const Hash160& owner, std::uint64_t lots, std::size_t number) {
    const Layout layout = number % 3 == 2 ? Layout::EnvelopeFirst : Layout::OwnerFirst;
    return {1, token_script(owner, transfer_body(world.token_id, std::to_string(lots)), layout)};
}

// Hands the token out, some hundred outputs a transaction; what is left over goes on to the next one.
void hand_out(const World& world, const std::vector<PlannedOutput>& planned, std::uint64_t left, Chain& chain,
              Minter& minter) {
    std::size_t next = 0;
    while (next < planned.size()) {
        Transaction tx;
        for (; next < planned.size() && tx.outputs.size() < OUTPUTS_A_TRANSACTION; ++next) {
            tx.outputs.push_back(transfer_output(world, planned[next].owner, planned[next].lots, next));
            left -= planned[next].lots;
        }
        const std::size_t rest_vout = tx.outputs.size();
        if (next < planned.size()) {
            tx.outputs.push_back(transfer_output(world, minter.holder.hash160, left, 0));
        }
        send(chain, tx, minter, {{minter.token, minter.holder}, {minter.money, minter.payer}});
        if (next < planned.size()) minter.token = coin_of(tx, rest_vout);
    }
}

void count_lots(World& world) {
    world.total_lots = world.reserve_lots = "0";
    for (const Holder& holder : world.holders) {
        world.total_lots = dec_add(world.total_lots, holder.lots);
        if (holder.kind == "reserve") world.reserve_lots = dec_add(world.reserve_lots, holder.lots);
    }
    world.in_market_lots = dec_sub(world.total_lots, world.reserve_lots);
}

void sort_as_board(std::vector<Holder>& holders) {
    std::sort(holders.begin(), holders.end(), [](const Holder& a, const Holder& b) {
        const bool a_own = a.kind == "reserve";
        const bool b_own = b.kind == "reserve";
        if (a_own != b_own) return b_own;
        const int lots = dec_cmp(a.lots, b.lots);
        return lots != 0 ? lots > 0 : a.who < b.who;
    });
}

std::vector<HolderPlan> plan_all(const World& world, Random& random, Directory& directory) {
    std::vector<HolderPlan> plans;
    for (int number = 0; number < world.options.holders; ++number) {
        plans.push_back(plan_holder(number, world.options, random, directory));
    }
    const std::uint64_t reserve = 100'000 + random() % 5'000'000;
    const std::uint64_t among_coins = world.options.token_among_coins ? AMONG_COINS_LOTS : 0;
    for (HolderPlan& plan : plan_reserve(world.main_wallet, reserve, among_coins, world.options)) {
        plans.push_back(std::move(plan));
    }
    return plans;
}

void make_token(World& world, Random& random, Chain& chain, Directory& directory) {
    std::vector<PlannedOutput> planned;
    std::uint64_t supply = 0;
    for (const HolderPlan& plan : plan_all(world, random, directory)) {
        world.holders.push_back(plan.holder);
        for (const PlannedOutput& output : plan.outputs) {
            planned.push_back(output);
            supply += output.lots;
        }
    }
    count_lots(world);
    Minter minter;
    minter.payer = random_key(random);
    minter.holder = world.main_wallet.ordinal(0);
    const TxOutput purse{MINTER_SATS, p2pkh_script(minter.payer.hash160)};
    minter.money = {chain.fund({purse}), 0, purse.sats, purse.script, 0};
    deploy(world, chain, minter);
    hand_out(world, planned, supply, chain, minter);
    sort_as_board(world.holders);
}

// The deploy, as the wallet remembers what it has minted.
Json remembered_deploy(const World& world) {
    const Json row{{"origin", world.token_id},
                   {"txid", world.token_id.substr(0, 64)},
                   {"vout", 0},
                   {"type", "application/bsv-20"},
                   {"address", world.main_wallet.ordinal(0).address},
                   {"name", world.token_name},
                   {"amt", world.total_lots},
                   {"dec", "0"},
                   {"token_id", world.token_id},
                   {"created", true}};
    return Json::array({row});
}

void write_files(const World& world) {
    const Wallet& main = world.main_wallet;
    const Wallet& other = world.other_wallet;
    const bool written =
        write_wallet_document(main.document, mnemonic_document(main, remembered_deploy(world))) &&
        write_wallet_document(other.document, mnemonic_document(other, Json::array())) &&
        write_wallet_registry(world.options.folder + "/Quorvelle", {main, other});
    if (!written) throw std::runtime_error("the wallets could not be written under " + world.options.folder);
}

}  // namespace

KeyPair Wallet::receive(std::uint32_t index) const {
    return derive(mnemonic, path_of(1, index));
}
KeyPair Wallet::ordinal(std::uint32_t index) const {
    return derive(mnemonic, path_of(5, index));
}
KeyPair Wallet::identity() const {
    return derive(mnemonic, path_of(100, 0));
}
KeyPair Wallet::bn() const {
    return derive(mnemonic, path_of(102, 0));
}

World make_world(const WorldOptions& options, Chain& chain, Directory& directory) {
    World world;
    world.options = options;
    Random random(options.seed);
    make_wallets(world, random);
    directory.put(directory_row(world.main_wallet));
    make_money(world, chain);
    make_token(world, random, chain, directory);
    if (options.write_files) write_files(world);
    chain.mine();
    return world;
}

}  // namespace sandbox
