#include "spend/receipts.h"

#include <gtest/gtest.h>

#include "base/hex.h"
#include "sandbox/keys.h"
#include "sandbox/service_reply.h"
#include "spend/send.h"
#include "tests/spend/play_network.h"
#include "wallet/address.h"
#include "wallet/ecdsa.h"
#include "wallet/wallet_document.h"

namespace {

const std::string TXID(64, 'c');

std::array<std::uint8_t, 64> rs_of(const Bytes& signature65) {
    std::array<std::uint8_t, 64> rs{};
    std::copy(signature65.begin() + 1, signature65.end(), rs.begin());
    return rs;
}

QvClaspTxOutput output_to(const std::string& address, std::int64_t sats) {
    Hash160 hash160{};
    EXPECT_TRUE(qv_clasp_address_to_hash160(address, hash160));
    return {sats, qv_clasp_p2pkh_script(hash160)};
}

// The one wallet, and a host that takes receipts.
struct ReceiptHost {
    PlayNetwork net;
    ScriptedServer host;
    std::vector<QvClaspTxOutput> expected;

    ReceiptHost() { host.on("POST", "/receive", "thanks"); }
    ~ReceiptHost() {
        // What is still expected is paid, so that the table is empty for the next test.
        qv_clasp_queue_receipt("00", TXID, expected);
        wait_for_receipts();
    }

    void expect(const std::string& address, std::int64_t sats) {
        expected.push_back(output_to(address, sats));
        qv_clasp_expect_receipt(
            {address, host.base() + "/receive", "ref-" + address.substr(0, 4), "me@localhost", sats});
    }
};

}  // namespace

TEST(RecoverableSignature, RecoversTheKeysOfPublishedMessages) {
    const Json document = test_data("bsm_signed_messages.json");
    int recovered = 0;
    for (const Json& row : document["rows"]) {
        const Bytes signature = sandbox::from_base64(json_text(row, "signature"));
        const std::string pub = json_text(row, "recoveredPublicKey");
        const std::string message = json_text(row, "message");
        // A signed message has no length of more than two bytes here.
        if (pub.empty() || signature.size() != 65 || message.size() > 0xffff) continue;
        const Hash256 digest = bitcoin_message_digest(message);
        EXPECT_EQ(recover_public_key(digest, rs_of(signature), static_cast<int>(json_int(row, "recovery"))),
                  pub)
            << json_text(row, "signature");
        ++recovered;
    }
    EXPECT_GE(recovered, 20);
}

TEST(RecoverableSignature, TellsItsSignerToAnIndependentReader) {
    bool saw_id[2] = {false, false};
    for (int i = 0; i < 40; ++i) {
        const sandbox::KeyPair key = sandbox::key_from_priv(Bytes(32, static_cast<std::uint8_t>(i + 1)));
        const std::string text = "message " + std::string(static_cast<std::size_t>(i * 10), 'x');
        const std::string signature =
            sign_recoverable_message(qv_clasp_hex_encode(key.priv), qv_clasp_hex_encode(key.pub), text);
        ASSERT_EQ(signature.size(), 88U);
        const Bytes bytes = sandbox::from_base64(signature);
        ASSERT_EQ(bytes.size(), 65U);
        ASSERT_TRUE(bytes[0] == 31 || bytes[0] == 32);
        saw_id[bytes[0] - 31] = true;
        EXPECT_LT(bytes[33], 0x80) << "s is the lower one";
        EXPECT_EQ(sandbox::recover_pub(sandbox::message_digest(text), bytes), key.pub);
    }
    EXPECT_TRUE(saw_id[0] && saw_id[1]);
    const sandbox::KeyPair key = sandbox::key_from_priv(Bytes(32, 1));
    const std::string priv = qv_clasp_hex_encode(key.priv);
    EXPECT_EQ(sign_recoverable_message(priv, "02" + std::string(64, '1'), "text"), "") << "another's key";
    Hash256 digest{};
    for (const int id : {-1, 0, 2, 4}) EXPECT_EQ(recover_public_key(digest, {}, id), "") << "no signature";
}

TEST(Receipts, ASendDeliversToTheReceiversHost) {
    ReceiptHost receipts;
    PlayNetwork& net = receipts.net;
    net.fund(receive_address(0), {500'000});
    const std::string payee = receive_address(7);
    receipts.expect(payee, 12'345);
    receipts.expect(receive_address(8), 12'345);
    const std::string result = qv_clasp_send(payee, 12'345, "");
    wait_for_receipts();

    ASSERT_EQ(receipts.host.count("POST", "/receive"), 1U) << result;
    Json body;
    ASSERT_TRUE(parse_json(receipts.host.requests()[0].body, body));
    const sandbox::Transaction paid = net.payments().at(0);
    EXPECT_EQ(body["hex"], qv_clasp_hex_encode(paid.raw));
    EXPECT_EQ(body["reference"], "ref-" + payee.substr(0, 4));
    EXPECT_EQ(body.size(), 3U);
    const Json& metadata = body["metadata"];
    EXPECT_EQ(metadata["sender"], "me@localhost");
    EXPECT_EQ(metadata["note"], "payment");
    const sandbox::KeyPair identity = one_wallet_key("100'/0/0");
    EXPECT_EQ(metadata["pubkey"], qv_clasp_hex_encode(identity.pub));
    EXPECT_EQ(sandbox::recover_pub(sandbox::message_digest(paid.txid),
                                   sandbox::from_base64(json_text(metadata, "signature"))),
              identity.pub);
    EXPECT_EQ(expected_receipts(), 1U);
}

TEST(Receipts, OnlyAFullPaymentToAnExpectedAddressIsDelivered) {
    ReceiptHost receipts;
    const std::string address = receive_address(3);
    receipts.expect(address, 1000);
    const auto queue = [](const std::string& raw, const std::string& txid,
                          const std::vector<QvClaspTxOutput>& outputs) {
        qv_clasp_queue_receipt(raw, txid, outputs);
        wait_for_receipts();
    };
    QvClaspTxOutput wrapped = output_to(address, 1000);
    wrapped.script.push_back(0x61);
    queue("00", TXID,
          {output_to(address, 999), output_to(address, 1001), output_to(receive_address(4), 1000), wrapped});
    queue("", TXID, {output_to(address, 1000)});
    queue("00", "no txid", {output_to(address, 1000)});
    EXPECT_EQ(receipts.host.count("POST"), 0U);
    EXPECT_EQ(expected_receipts(), 1U) << "the row stays";
    // Two outputs of the sum are one receipt.
    queue("00", TXID, {output_to(address, 1000), output_to(address, 1000)});
    EXPECT_EQ(receipts.host.count("POST"), 1U);
    EXPECT_EQ(expected_receipts(), 0U);
}
