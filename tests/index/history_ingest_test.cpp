#include "index/history_ingest.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "index/content_cache.h"
#include "tests/index/token_world.h"

namespace {

const std::string KEY(66, 'a');

Json identity_record(const std::string& kind) {
    return {{"protocol", "QV-Ident"}, {"type", "id_issue"}, {"kind", kind}};
}

Json identity_output(const Hash160& owner, const std::string& body) {
    return output_json(
        sandbox::inscription_script(owner, "application/json", Bytes(body.begin(), body.end())));
}

std::string feed_path() {
    return "/woc/address/" + settings().oracle_address + "/unconfirmed/history?limit=12";
}

Json txid_rows(unsigned first, unsigned last) {
    Json rows = Json::array();
    for (unsigned i = first; i <= last; ++i) rows.push_back({{"tx_hash", tx_number(i)}});
    return rows;
}

std::vector<QvClaspOrdRow> identity_rows(const std::vector<std::string>& watch) {
    std::vector<QvClaspOrdRow> rows;
    qv_clasp_ingest_identity(watch, rows);
    return rows;
}

}  // namespace

TEST(HistoryIngest, FindsTokensOfWatchAddressesInTheirHistories) {
    TokenWorld world;
    std::vector<std::string> watch;
    for (unsigned i = 0; i < 20; ++i) {
        watch.push_back(person(i));
        const unsigned number = 100 + i;
        const std::string path = "/woc/address/" + person(i);
        // The three histories overlap; one of them does not answer.
        world.server.on("GET", path + "/unconfirmed/history",
                        dump_json({{"result", txid_rows(number, number)}}, -1));
        world.server.on("GET", path + "/confirmed/history", "Not Found", 404);
        world.server.on("GET", path + "/history", dump_json(txid_rows(number, number), -1));
        world.add_tx(number, {token_output(person_hash(i), transfer(i % 2 == 0 ? out(1) : "", "07")),
                              token_output(person_hash(500), transfer(out(1), "1"))});
    }
    std::vector<LocalOrd> found;
    ingest_woc_recent_ords(watch, found, 0);
    ASSERT_EQ(found.size(), 20U);
    std::sort(found.begin(), found.end(),
              [](const LocalOrd& a, const LocalOrd& b) { return a.origin < b.origin; });
    for (unsigned i = 0; i < 20; ++i) {
        EXPECT_EQ(found[i].origin, out(100 + i));
        EXPECT_EQ(found[i].address, person(i));
        EXPECT_EQ(found[i].amt, "7");
        EXPECT_EQ(found[i].token_id, i % 2 == 0 ? out(1) : out(100 + i));
        EXPECT_EQ(world.server.count("GET", "/woc/tx/" + tx_number(100 + i)), 1U);
    }
}

TEST(HistoryIngest, TheIdentityFeedGivesRowsForThisWalletOnly) {
    TokenWorld world;
    world.server.on("GET", feed_path(), dump_json({{"result", txid_rows(1, 2)}}, -1));
    world.home_host.on("GET", "/oi/oracle/ident/txids?limit=12",
                       dump_json({{"txids", {tx_number(2), tx_number(3), 5, "junk"}}}, -1));
    const std::string body = dump_json(identity_record("id_bank"), -1);
    world.add_tx(1, {identity_output(person_hash(9), body)});
    world.add_tx(2,
                 {output_json(sandbox::p2pkh_script(person_hash(1))), identity_output(person_hash(1), body)});
    world.add_tx(3, {identity_output(person_hash(1), R"({"protocol":"other","type":"id_issue"})")});
    const std::vector<QvClaspOrdRow> rows = identity_rows({person(1)});
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].origin, out(2, 1));
    EXPECT_EQ(rows[0].address, person(1));
    EXPECT_EQ(rows[0].name, "ID-bank");
    EXPECT_TRUE(rows[0].certificate);
    EXPECT_EQ(world.home.read("/ord_cache/" + out(2, 1) + ".bin"), body);
    EXPECT_EQ(world.server.count("GET", "/woc/tx/"), 3U);
}
