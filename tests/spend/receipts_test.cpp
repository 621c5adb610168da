#include "spend/receipts.h"

#include <gtest/gtest.h>

#include "base/hex.h"
#include "sandbox/keys.h"
#include "spend/send.h"
#include "tests/spend/play_network.h"
#include "wallet/address.h"
#include "wallet/ecdsa.h"
#include "wallet/wallet_document.h"

namespace {

const std::string TXID(64, 'c');

Bytes bytes_of_base64(const std::string& text) {
    static const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    Bytes bytes;
    std::uint32_t bits = 0;
    int count = 0;
    for (const char c : text) {
        if (c == '=') break;
        bits = (bits << 6U) | static_cast<std::uint32_t>(alphabet.find(c));
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes.push_back(static_cast<std::uint8_t>(bits >> static_cast<unsigned>(count)));
    }
    return bytes;
}

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
        const Bytes signature = bytes_of_base64(json_text(row, "signature"));
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

    const Json conformance = test_data("bsm_conformance.json");
    int conforming = 0;
    for (const Json& row : conformance["vectors"]) {
        const Json& input = row["input"];
        const Bytes signature = qv_clasp_hex_decode(json_text(input, "compact_sig_hex"));
        const std::int64_t id = json_int(row["expected"], "recovery_factor", -1);
        if (signature.size() != 65 || id < 0) continue;
        const Hash256 digest = bitcoin_message_digest(json_text(input, "message_utf8"));
        EXPECT_EQ(recover_public_key(digest, rs_of(signature), static_cast<int>(id)),
                  json_text(input, "pubkey_hex"));
        ++conforming;
    }
    EXPECT_GE(conforming, 1);
}

TEST(RecoverableSignature, RefusesNumbersThatAreNoSignature) {
    const Hash256 digest = bitcoin_message_digest("text");
    std::array<std::uint8_t, 64> good{};
    const sandbox::KeyPair key = sandbox::key_from_priv(Bytes(32, 0x31));
    ASSERT_TRUE(qv_clasp_ecdsa_sign_compact(qv_clasp_hex_encode(key.priv), digest, good));
    std::array<std::uint8_t, 64> no_r = good;
    std::fill_n(no_r.begin(), 32, 0);
    std::array<std::uint8_t, 64> no_s = good;
    std::fill_n(no_s.begin() + 32, 32, 0);
    std::array<std::uint8_t, 64> huge{};
    huge.fill(0xff);
    for (int id = -1; id < 5; ++id) {
        for (const auto& bad : {no_r, no_s, huge}) EXPECT_EQ(recover_public_key(digest, bad, id), "");
    }
    EXPECT_EQ(recover_public_key(digest, good, -1), "");
    EXPECT_EQ(recover_public_key(digest, good, 4), "");
    // With an r as large as this the point of r plus the order does not exist.
    EXPECT_EQ(recover_public_key(digest, good, 2), "");
}

TEST(RecoverableSignature, TellsItsSignerToAnIndependentReader) {
    bool saw_id[2] = {false, false};
    for (int i = 0; i < 40; ++i) {
        const sandbox::KeyPair key = sandbox::key_from_priv(Bytes(32, static_cast<std::uint8_t>(i + 1)));
        const std::string text = "message " + std::string(static_cast<std::size_t>(i * 10), 'x');
        const std::string signature =
            sign_recoverable_message(qv_clasp_hex_encode(key.priv), qv_clasp_hex_encode(key.pub), text);
        ASSERT_EQ(signature.size(), 88U);
        const Bytes bytes = bytes_of_base64(signature);
        ASSERT_EQ(bytes.size(), 65U);
        ASSERT_TRUE(bytes[0] == 31 || bytes[0] == 32);
        saw_id[bytes[0] - 31] = true;
        EXPECT_LT(bytes[33], 0x80) << "s is the lower one";
        EXPECT_EQ(sandbox::recover_pub(sandbox::message_digest(text), bytes), key.pub);
    }
    EXPECT_TRUE(saw_id[0] && saw_id[1]);
    const sandbox::KeyPair key = sandbox::key_from_priv(Bytes(32, 1));
    const std::string priv = qv_clasp_hex_encode(key.priv);
    EXPECT_EQ(sign_recoverable_message(priv, "", "text"), "");
    EXPECT_EQ(sign_recoverable_message(priv, "02" + std::string(64, '1'), "text"), "") << "another's key";
    EXPECT_EQ(sign_recoverable_message("", qv_clasp_hex_encode(key.pub), "text"), "");
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
                                   bytes_of_base64(json_text(metadata, "signature"))),
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

TEST(Receipts, AHostThatIsDownIsNobodysTrouble) {
    ReceiptHost receipts;
    receipts.host.on("POST", "/receive", "no", 500);
    receipts.expect(receive_address(1), 1000);
    qv_clasp_expect_receipt({receive_address(2), "http://127.0.0.1:1/none", "r", "s", 1000});
    qv_clasp_queue_receipt("00", TXID,
                           {output_to(receive_address(1), 1000), output_to(receive_address(2), 1000)});
    wait_for_receipts();
    EXPECT_EQ(receipts.host.count("POST"), 1U);
    EXPECT_EQ(expected_receipts(), 0U);
}

TEST(Receipts, WithoutAnyExpectedNoWalletIsTouched) {
    PlayNetwork net;
    qv_clasp_queue_receipt("00", TXID, {output_to(receive_address(1), 1000)});
    const WalletLock lock = qv_clasp_lock_wallet();
    EXPECT_TRUE(qv_clasp_session().address.empty()) << "the session was not even loaded";
}
