// Making and reading the scripts of the play-money chain: 1-sat inscriptions in both layouts, and the BSV-20
// bodies that they carry. The sandbox's own reading, apart from the product's. Pure.
#pragma once

#include <optional>
#include <string>

#include "base/bytes.h"
#include "base/json_file.h"

namespace sandbox {

enum class Layout { OwnerFirst, EnvelopeFirst };

Bytes inscription_script(const Hash160& owner, const std::string& content_type, const Bytes& body,
                         Layout layout = Layout::OwnerFirst);

struct ReadScript {
    // Whoever can spend with a signature alone: of plain P2PKH, or of a 1-sat output in either layout. Behind
    // the last part only an OP_RETURN may follow.
    std::optional<Hash160> owner;
    bool inscribed = false;
    std::string content_type;
    Bytes body;
    Json token;  // the body as an object if it is a BSV-20 record, else null
};
ReadScript read_script(const Bytes& script);
// The owner alone, without a look at the body.
std::optional<Hash160> script_owner(const Bytes& script);

// BSV-20 bodies as text.
std::string deploy_mint_body(const std::string& sym, const std::string& amt, int dec, const std::string& icon,
                             const std::string& name);
std::string transfer_body(const std::string& id, const std::string& amt);
// A body as an inscription of type "application/bsv-20".
Bytes token_script(const Hash160& owner, const std::string& body, Layout layout = Layout::OwnerFirst);

}  // namespace sandbox
