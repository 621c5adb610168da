#include "index/ordinal_inbox.h"

#include <gtest/gtest.h>

#include "index/content_cache.h"
#include "tests/index/sweep_world.h"

namespace {

std::string inbox_path(const Hash160& hash) {
    return "/ord_inbox/" + qv_clasp_hex_encode(hash) + ".json";
}

void absorb() {
    const WalletLock lock = qv_clasp_lock_wallet();
    ASSERT_TRUE(qv_clasp_load());
    qv_clasp_absorb_ord_inbox();
}

}  // namespace

TEST(OrdinalInbox, RecordsForTheWalletAreTaken) {
    SweepWorld world(
        Json::array({owned_row(out(2), {{"name", "Mine"}}), owned_row(out(3), {{"hidden", true}})}));
    world.home.write(
        inbox_path(world.address_hash),
        Json::array({{{"origin", out(1)}, {"amt", "0050"}, {"id", out(8)}, {"name", "Gift Coin"}},
                     {{"origin", out(2)}, {"name", "Theirs"}, {"icon", "i"}},
                     {{"origin", out(3)}, {"name", "Hidden one"}},
                     {{"origin", "nowhere"}, {"amt", "1"}},
                     {{"name", "no origin"}},
                     17,
                     {{"origin", out(4)}, {"amt", 5}}}));
    absorb();
    EXPECT_EQ(world.owned(),
              Json::array({owned_row(out(2), {{"name", "Mine"}, {"icon", "i"}}),
                           owned_row(out(3), {{"hidden", true}}),
                           owned_row(out(1), {{"amt", "50"}, {"token_id", out(8)}, {"name", "Gift Coin"}}),
                           owned_row(out(4))}));
    EXPECT_EQ(world.home.read("/ord_cache/" + out(1) + ".bin"),
              R"({"amt":"50","id":")" + out(8) + R"(","name":"Gift Coin","op":"transfer","p":"bsv-20"})");
    EXPECT_EQ(world.home.read("/ord_cache/" + out(1) + ".typ"), "application/bsv-20");
    EXPECT_EQ(qv_clasp_name_get(out(1)), "Gift Coin");
    EXPECT_FALSE(world.home.exists("/ord_cache/" + out(4) + ".bin"))
        << "without an amount nothing is made up";
}

TEST(OrdinalInbox, PostingKeepsOneRecordAnOrigin) {
    const TestHome home;
    LocalOrd ord;
    ord.origin = out(1);
    ord.address = person(1);
    ord.amt = "5";
    ord.name = "First name";
    qv_clasp_post_ord_inbox(ord);
    ord.name.clear();
    ord.amt = "6";
    qv_clasp_post_ord_inbox(ord);
    ord.origin = out(2);
    qv_clasp_post_ord_inbox(ord);
    const Json records = home.read_json(inbox_path(person_hash(1)));
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(json_text(records[0], "name") + json_text(records[0], "amt"), "First name6");
    ord.address = "../escape";
    qv_clasp_post_ord_inbox(ord);
    EXPECT_FALSE(home.exists("/escape.json")) << "only an address names a file";
}
