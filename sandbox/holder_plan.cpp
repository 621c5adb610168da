#include "sandbox/holder_plan.h"

#include <array>

#include "base/hex.h"

namespace sandbox {

namespace {

enum class Kind { Address, Paymail, TwoAddresses, TokenAddress, Dust };

// The first five are one of each, so that a small world has them all.
constexpr std::array KINDS{Kind::Address, Kind::Paymail, Kind::TwoAddresses, Kind::TokenAddress,
                           Kind::Dust,    Kind::Address, Kind::Paymail,      Kind::Address,
                           Kind::Paymail, Kind::Address, Kind::Paymail,      Kind::Address,
                           Kind::Paymail};
constexpr std::array NAMES{"alder",  "birch", "cedar", "elder", "fern",  "hazel", "ivy",    "juniper",
                           "linden", "maple", "moss",  "olive", "poppy", "rowan", "sorrel", "willow"};

std::uint64_t between(Random& random, std::uint64_t least, std::uint64_t most) {
    return least + random() % (most - least + 1);
}

std::uint64_t usual_lots(Random& random) {
    return between(random, 1'000, 500'000);
}

// Gives the holder an output of the token on the key's address.
void hold(HolderPlan& plan, const KeyPair& key, std::uint64_t lots) {
    if (plan.holder.owners.empty() || plan.holder.owners.back() != key.address) {
        plan.holder.owners.push_back(key.address);
        plan.holder.keys.push_back(key);
    }
    plan.outputs.push_back({key.hash160, lots});
}

HolderPlan plan_address(int number, const WorldOptions& options, Random& random) {
    HolderPlan plan;
    const KeyPair key = random_key(random);
    plan.holder.kind = "address";
    plan.holder.who = key.address;
    plan.holder.dest = key.address;
    hold(plan, key, usual_lots(random));
    if (options.holders <= SMALL_WORLD && number % 2 == 0) hold(plan, key, usual_lots(random));
    return plan;
}

HolderPlan plan_dust(Random& random) {
    HolderPlan plan;
    const KeyPair key = random_key(random);
    plan.holder.kind = "dust";
    plan.holder.who = key.address;
    plan.holder.dest = key.address;
    hold(plan, key, between(random, 1, 3));
    return plan;
}

HolderPlan plan_token_address(Random& random, Directory& directory) {
    HolderPlan plan;
    const KeyPair key = random_key(random);
    Paymail row;
    row.ord_address = key.address;
    directory.put(row);
    plan.holder.kind = "token address";
    plan.holder.who = key.address;
    hold(plan, key, usual_lots(random));
    return plan;
}

// A person with a name: an identity, a payment address and an address for tokens.
struct Person {
    Paymail row;
    KeyPair payment;
    KeyPair token;
};

Person make_person(int number, Random& random) {
    Person person;
    person.payment = random_key(random);
    person.token = random_key(random);
    person.row.alias = NAMES[static_cast<std::size_t>(number) % NAMES.size()] + std::to_string(number);
    person.row.pubkey = qv_clasp_hex_encode(random_key(random).pub);
    person.row.address = person.payment.address;
    person.row.ord_address = person.token.address;
    return person;
}

void fill_holder(Holder& holder, const char* kind, const Person& person, const WorldOptions& options) {
    holder.kind = kind;
    holder.who = person.row.alias + "@" + options.home_domain;
    holder.dest = person.row.address;
    holder.pubkey = person.row.pubkey;
}

// The token may lie on any of the addresses that a name has, and the payment address may be told by name
// only.
HolderPlan plan_paymail(int number, const WorldOptions& options, Random& random, Directory& directory) {
    HolderPlan plan;
    Person person = make_person(number, random);
    const std::uint64_t form = between(random, 0, 3);
    if (form == 1) person.row.pays_by_name_only = true;
    if (form == 2) {
        const KeyPair bn = random_key(random);
        person.row.bn_address = bn.address;
        hold(plan, bn, usual_lots(random));
    } else {
        hold(plan, form == 3 ? person.payment : person.token, usual_lots(random));
    }
    fill_holder(plan.holder, "paymail", person, options);
    directory.put(person.row);
    return plan;
}

HolderPlan plan_two_addresses(int number, const WorldOptions& options, Random& random, Directory& directory) {
    HolderPlan plan;
    const Person person = make_person(number, random);
    hold(plan, person.token, usual_lots(random));
    hold(plan, person.payment, usual_lots(random));
    fill_holder(plan.holder, "two addresses", person, options);
    directory.put(person.row);
    return plan;
}

void sum_lots(HolderPlan& plan) {
    std::uint64_t lots = 0;
    for (const PlannedOutput& output : plan.outputs) lots += output.lots;
    plan.holder.lots = std::to_string(lots);
}

HolderPlan plan_kind(Kind kind, int number, const WorldOptions& options, Random& random,
                     Directory& directory) {
    switch (kind) {
        case Kind::Paymail:
            return plan_paymail(number, options, random, directory);
        case Kind::TwoAddresses:
            return plan_two_addresses(number, options, random, directory);
        case Kind::TokenAddress:
            return plan_token_address(random, directory);
        case Kind::Dust:
            return plan_dust(random);
        case Kind::Address:
            break;
    }
    return plan_address(number, options, random);
}

}  // namespace

KeyPair random_key(Random& random) {
    Bytes priv;
    while (priv.size() < 32) {
        const std::uint64_t value = random();
        for (int shift = 0; shift < 64; shift += 8) priv.push_back(static_cast<std::uint8_t>(value >> shift));
    }
    return key_from_priv(priv);
}

HolderPlan plan_holder(int number, const WorldOptions& options, Random& random, Directory& directory) {
    const Kind kind = KINDS[static_cast<std::size_t>(number) % KINDS.size()];
    HolderPlan plan = plan_kind(kind, number, options, random, directory);
    sum_lots(plan);
    return plan;
}

std::vector<HolderPlan> plan_reserve(const Wallet& wallet, std::uint64_t lots, std::uint64_t among_coins,
                                     const WorldOptions& options) {
    HolderPlan plan;
    plan.holder.kind = "reserve";
    plan.holder.who = wallet.paymail + "@" + options.home_domain;
    plan.holder.pubkey = qv_clasp_hex_encode(wallet.identity().pub);
    const KeyPair key = wallet.ordinal(wallet.ordinal_index);
    const std::uint64_t first = options.holders <= SMALL_WORLD ? lots / 3 : 0;
    if (first > 0) hold(plan, key, first);
    hold(plan, key, lots - first);
    sum_lots(plan);
    std::vector<HolderPlan> plans{plan};
    if (among_coins == 0) return plans;

    HolderPlan stray;
    const KeyPair coin_key = wallet.receive(0);
    stray.holder.kind = "reserve";
    stray.holder.who = coin_key.address;
    hold(stray, coin_key, among_coins);
    sum_lots(stray);
    plans.push_back(stray);
    return plans;
}

}  // namespace sandbox
