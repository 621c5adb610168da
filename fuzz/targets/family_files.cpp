// What other programs of the family leave in the data folder: registry, bind, reply, seal, names.
#include "base/json_file.h"
#include "clasp/connect.h"
#include "fuzz/fuzz.h"
#include "spend/art_tags.h"
#include "wallet/binds.h"
#include "wallet/name_registry.h"
#include "wallet/seal.h"
#include "wallet/wallet_registry.h"
#include "wallet/wallet_session.h"

namespace {

void registry(const std::string& text) {
    put_file("/wallets.json", text);
    remove_file(qv_clasp_bind_path());
    qv_clasp_init("/program", "The Bursaria");
    for (const auto& [id, name] : qv_clasp_list_wallets()) {
        promise(!id.empty() && !name.empty(), "a listed wallet has an id and a name");
        promise(!qv_clasp_wallet_name(id).empty(), "it is found by its id");
    }
    const WalletLock lock = qv_clasp_lock_wallet();
    qv_clasp_session().paymail = "mira";
    qv_clasp_set_wallet_name("w1");
}

void old_layout(const std::string& text) {
    put_file("/wallets.json", text);
    put_file("/quorvelle_clasp.json", "{}");
    qv_clasp_migrate();
    promise(!qv_clasp_list_wallets().empty() || file_exists(fuzz_root() + "/quorvelle_clasp.json"),
            "the old document is registered, or stays");
}

void bind(const std::string& text) {
    write_text_file(qv_clasp_bind_path(), text);
    qv_clasp_read_bind();
    qv_clasp_init("/program", "The Bursaria");
}

void reply(const std::string& text) {
    put_file("/connect/w5.rep.json", text);
    const std::string state = qv_clasp_read_reply("w5");
    promise(state == "ok" || state == "denied", "a reply approves or denies");
}

void seal(const std::string& text) {
    Json root;
    if (!parse_json(text, root)) return;
    std::int64_t iter = 0;
    Bytes salt;
    Bytes iv;
    Bytes tag;
    Bytes ct;
    const WalletLock lock = qv_clasp_lock_wallet();
    if (!qv_clasp_seal_parse(root, iter, salt, iv, tag, ct)) return;
    promise(iter >= 10'000 && iter <= 5'000'000, "rounds stay in their bounds");
    SecretText plain;
    if (!qv_clasp_seal_decrypt(iv, tag, ct, plain)) promise(plain.empty(), "nothing is handed over");
}

void sealed_tag(const std::string& text) {
    qv_clasp_open_art_tag(text);
}

void names(const std::string& text) {
    put_file("/quorvelle_paymail.json", text);
    const std::string pub(66, 'a');
    NameRegistryMatch match;
    qv_clasp_registry_lookup("1BvBMSEYstWetqTFn5Au4m4GFg7xJaNVN2", match);
    qv_clasp_registry_name_for(pub);
    qv_clasp_registry_address("mira");
    qv_clasp_registry_snapshot();
    qv_clasp_registry_claim("mira", pub, "1BvBMSEYstWetqTFn5Au4m4GFg7xJaNVN2");
    qv_clasp_registry_set_role("dev");
    qv_clasp_registry_set_avatar(pub, std::string(64, 'b') + "_0");
    qv_clasp_registry_set_avatar(pub, "");
    const WalletLock lock = qv_clasp_lock_wallet();
    qv_clasp_registry_set_ordinal_address("1BvBMSEYstWetqTFn5Au4m4GFg7xJaNVN2");
}

using Reader = void (*)(const std::string&);
constexpr Reader READERS[] = {registry, old_layout, bind, reply, seal, sealed_tag, names};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    clean_root();
    const Choice choice = choose(data, size, std::size(READERS));
    READERS[choice.parser](choice.text);
    return 0;
}
