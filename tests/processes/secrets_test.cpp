// What becomes of a wallet's secrets: they lie in the memory of the process while the wallet is bound,
// nowhere after it, and in no file but its document, no report and no request.
#include <gtest/gtest.h>

#include <filesystem>
#include <mutex>

#include "base/text.h"
#include "sandbox/sandbox.h"
#include "tests/processes/child_process.h"
#include "tests/processes/secret_scan.h"

using namespace sandbox;

namespace {

std::string list(const SecretScan::Findings& findings) {
    std::string text;
    for (const auto& [name, count] : findings) text += "\n  " + name + " x" + std::to_string(count);
    return text;
}

// A sanitizer maps terabytes for its own books, and keeps freed memory as it was.
constexpr bool memory_is_its_own() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return false;
#else
    return true;
#endif
}

class Secrets : public testing::Test {
 protected:
    void SetUp() override {
        WorldOptions options;
        options.folder = home.folder();
        options.holders = 3;
        box = std::make_unique<Sandbox>(Options{.world = options, .ports = {}});
        std::string error;
        ASSERT_TRUE(box->start(error)) << error;
        box->watch_requests([this](const SeenRequest& request, bool acted) {
            const std::lock_guard hold(mutex);
            if (!acted) requests += request.path + "\n" + request.body + "\n";
            return false;
        });
        scan = std::make_unique<SecretScan>(box->world().main_wallet.mnemonic);
        child = std::make_unique<ChildProcess>(home, box->settings_for(), "program");
        ASSERT_EQ(child->ask("connect"), "success");
        ASSERT_EQ(child->ask("skip-waits"), "skipping");
    }

    void fail_everywhere(const std::string& failure, const std::string& part) {
        for (const char* service : {"home", "woc", "arc"})
            box->faults().set(service, {.failure = failure, .path_part = part});
    }

    // Every use of a key that there is, and sends that end badly in different places.
    void use_every_key() {
        const std::string dest = box->world().holders[0].keys[0].address;
        note(child->ask("status"));
        note(child->ask("sweep"));
        note(child->ask("fee"));
        const std::string paid = child->ask("send " + dest + " 20000");
        EXPECT_TRUE(paid.starts_with("success: ")) << paid;
        note(paid);
        note(child->ask("send " + dest + " 900000000000"));
        fail_everywhere("conflict", "POST");
        note(child->ask("send " + dest + " 30000"));
        fail_everywhere("html500", "");
        note(child->ask("send " + dest + " 30000"));
        note(child->ask("claim"));
        box->faults().clear();
        note(child->ask("claim"));
        note(child->ask("status"));
    }
    void note(const std::string& result) { results += result + "\n"; }

    TestHome home;
    std::mutex mutex;
    std::string requests;  // all that was sent to the services
    std::unique_ptr<Sandbox> box;
    std::unique_ptr<SecretScan> scan;
    std::unique_ptr<ChildProcess> child;
    std::string results;
};

}  // namespace

TEST_F(Secrets, LieInMemoryWhileAWalletIsBoundAndNotAfterIt) {
    if (!memory_is_its_own()) GTEST_SKIP() << "the memory is a sanitizer's";
    use_every_key();
    const SecretScan::Findings bound = scan->in_process(child->pid());
    for (const char* name : {"mnemonic", "seed bytes", "master key bytes", "master chain code bytes"})
        EXPECT_EQ(bound.count(name), 1U) << "the scan does not see what is there: " << name;
    EXPECT_TRUE(std::any_of(bound.begin(), bound.end(), [](const auto& found) {
        return found.first.starts_with("key 1'/0/") && found.first.ends_with(" hex");
    })) << "the scan does not see the current receive key";
    RecordProperty("bound", list(bound));

    // A sweep looks into the documents of all other wallets; it has no business with their keys.
    const SecretScan other(box->world().other_wallet.mnemonic);
    EXPECT_EQ(list(other.in_process(child->pid())), "");

    EXPECT_EQ(child->ask("unbind"), "success");
    EXPECT_EQ(list(scan->in_process(child->pid())), "");
}

TEST_F(Secrets, GoWithAWalletThatIsExchangedForAnother) {
    if (!memory_is_its_own()) GTEST_SKIP() << "the memory is a sanitizer's";
    use_every_key();
    box->approve_wallet(box->world().other_wallet.id);
    ASSERT_EQ(child->ask("unbind"), "success");
    ASSERT_EQ(child->ask("bind " + box->world().other_wallet.id), box->world().other_wallet.id);
    ASSERT_EQ(child->ask("connect"), "success");
    EXPECT_EQ(list(scan->in_process(child->pid())), "");
    const SecretScan other(box->world().other_wallet.mnemonic);
    EXPECT_EQ(other.in_process(child->pid()).count("mnemonic"), 1U);
}

TEST_F(Secrets, AreInNoReportNoResultAndNoFileButTheDocument) {
    use_every_key();
    note(child->ask("unbind"));
    EXPECT_EQ(list(scan->in_text(results)), "") << results;
    std::string log;
    ASSERT_TRUE(read_text_file(child->log_path(), log));
    EXPECT_TRUE(contains(log, "[QV-CLASP]")) << "no event was written down: " << log;
    EXPECT_EQ(list(scan->in_text(log)), "") << log;
    box->watch_requests({});
    EXPECT_TRUE(contains(requests, "txhex") && contains(requests, "rawTx")) << "no payment was listened to";
    EXPECT_EQ(list(scan->in_text(requests)), "");

    int documents = 0;
    int files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(utf8_path(home.root()))) {
        if (!entry.is_regular_file()) continue;
        std::string content;
        ASSERT_TRUE(read_text_file(entry.path().string(), content));
        const SecretScan::Findings found = scan->in_text(content);
        const bool document = entry.path().string() == box->world().main_wallet.document;
        documents += document && found.contains("mnemonic") ? 1 : 0;
        files += document ? 0 : 1;
        EXPECT_EQ(document ? "" : list(found), "") << entry.path();
    }
    EXPECT_EQ(documents, 1) << "the scan does not see the words where they are";
    EXPECT_GT(files, 5);
}
