#include "sandbox/scripts.h"

#include <gtest/gtest.h>

#include "base/hex.h"
#include "sandbox/keys.h"
#include "tests/support/test_home.h"

namespace {

using namespace sandbox;

Bytes unhex(const std::string& text) {
    return qv_clasp_hex_decode(text);
}

struct Awkward {
    const char* name;
    std::string script;
    bool inscribed, owned;
};

TEST(SandboxScripts, ASignatureAloneSpendsOnlyWhatItShould) {
    const std::string p2pkh = "76a914" + std::string(40, 'a') + "88ac";
    const std::string envelope = "0063036f72645103612f6200017868";
    const std::vector<Awkward> cases{
        {"plain", p2pkh, false, true},
        {"owner first", p2pkh + envelope, true, true},
        {"envelope first", envelope + p2pkh, true, true},
        {"a field that nobody knows", p2pkh + "0063036f726452017a5103612f6200017868", true, true},
        {"data behind a return", p2pkh + envelope + "6a0101", true, true},
        {"another operation behind", p2pkh + envelope + "75", true, false},
        {"a second lock behind", envelope + p2pkh + "51", true, false},
        {"separator between", envelope + "ab" + p2pkh, true, false},
        {"no end of the envelope", p2pkh + "0063036f72645103612f62000178", false, false},
        {"a push past the end", p2pkh + "0063036f72645103612f62004c50", false, false},
        {"no content type", p2pkh + "0063036f726400017868", false, false},
        {"not the word", p2pkh + "0063036f72655103612f6200017868", false, false},
        {"envelope alone", envelope, true, false},
        {"a script of another kind", "a914" + std::string(40, 'a') + "87", false, false},
        {"nothing", "", false, false},
    };
    for (const Awkward& row : cases) {
        const Bytes script = unhex(row.script);
        const ReadScript read = read_script(script);
        EXPECT_EQ(read.inscribed, row.inscribed) << row.name;
        EXPECT_EQ(read.owner.has_value(), row.owned) << row.name;
        EXPECT_EQ(script_owner(script), read.owner) << row.name;
    }
}

}  // namespace
