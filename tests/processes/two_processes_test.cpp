// Two installations on one data folder, each a process of its own: the registry is shared under its lock,
// binds and documents are not.
#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

#include "tests/processes/child_process.h"
#include "tests/support/one_wallet.h"

namespace {

constexpr int STEPS = 100;
constexpr int NO_ANSWER_MS = 400;

class TwoProcesses : public testing::Test {
 protected:
    void SetUp() override {
        add_wallet(home, "w1", one_wallet_document());
        add_wallet(home, "w2", one_wallet_document());
        first = std::make_unique<ChildProcess>(home, settings(), "first");
        second = std::make_unique<ChildProcess>(home, settings(), "second");
    }

    std::string bound(const std::string& instance) {
        const std::string key = qv_clasp_bind_key(home.folder() + "/" + instance);
        return json_text(home.read_json("/binds/" + key + ".json"), "wallet_id");
    }
    std::string name_of(const std::string& id) {
        const Json registry = home.read_json("/wallets.json");
        for (const Json& row : json_member(registry, "wallets"))
            if (json_text(row, "id") == id) return json_text(row, "name");
        return "no row";
    }

    TestHome home;
    std::unique_ptr<ChildProcess> first;
    std::unique_ptr<ChildProcess> second;
};

// What one process is asked, and what must be so afterwards.
struct Load {
    ChildProcess* process;
    std::string id;
    bool is_bound = false;
    int remembered = 0;
    std::string name;
    std::string expected{};

    std::string next(std::mt19937& random) {
        const unsigned dice = random() % 4;
        if (!is_bound || dice == 0) {
            is_bound = !is_bound;
            expected = is_bound ? id : "success";
            return is_bound ? "bind " + id : "unbind";
        }
        if (dice == 1) {
            name = id + "n" + std::to_string(random() % 1000);
            expected = "named";
            return "name " + name;
        }
        ++remembered;
        expected = "saved";
        return "remember " + id + "_" + std::to_string(remembered);
    }
};

}  // namespace

TEST_F(TwoProcesses, LoseAndTearNothingWhileBothBindAndWrite) {
    std::atomic<bool> done{false};
    std::atomic<int> looks{0};
    std::atomic<int> torn{0};
    std::thread reader([&] {
        while (!done) {
            std::string text;
            Json registry;
            // Between two replacements there is always a whole file.
            if (!read_text_file(home.root() + "/wallets.json", text) || !parse_json(text, registry) ||
                json_member(registry, "wallets").size() != 2)
                ++torn;
            ++looks;
        }
    });
    std::mt19937 random(20263);
    Load loads[] = {{first.get(), "w1", false, 0, "Wallet w1"}, {second.get(), "w2", false, 0, "Wallet w2"}};
    for (int step = 0; step < STEPS && !HasFailure(); ++step) {
        for (Load& load : loads) load.process->tell(load.next(random));
        for (Load& load : loads) {
            std::string answer;
            ASSERT_TRUE(load.process->hear(answer));
            EXPECT_EQ(answer, load.expected) << "at step " << step;
        }
        EXPECT_EQ(bound("first"), loads[0].is_bound ? "w1" : "");
        EXPECT_EQ(bound("second"), loads[1].is_bound ? "w2" : "");
        for (const Load& load : loads) {
            EXPECT_EQ(name_of(load.id), load.name) << "a name was lost at step " << step;
            const Json document = home.read_json("/wallets/" + load.id + "/wallet.json");
            EXPECT_EQ(json_member(document, "ord_owned").size(), static_cast<std::size_t>(load.remembered));
        }
    }
    done = true;
    reader.join();
    EXPECT_EQ(torn, 0);
    EXPECT_GT(looks, STEPS);
}

TEST_F(TwoProcesses, WaitForTheRegistryUntilItsHolderIsKilled) {
    ASSERT_EQ(second->ask("bind w2"), "w2");
    ASSERT_EQ(first->ask("hold"), "held");
    second->tell("name later");
    std::string answer;
    EXPECT_FALSE(second->hear(answer, NO_ANSWER_MS)) << "the lock of another process was passed by";
    first->kill();
    ASSERT_TRUE(second->hear(answer));
    EXPECT_EQ(answer, "named");
    EXPECT_EQ(name_of("w2"), "later");
}
