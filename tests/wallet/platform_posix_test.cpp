#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/user_data.h"
#include "tests/support/test_home.h"

namespace {

void set_or_unset(const char* name, const char* value) {
    if (value)
        ::setenv(name, value, 1);
    else
        ::unsetenv(name);
}

}  // namespace

TEST(FamilyDataFolder, FollowsTheFirstHintThatTheEnvironmentGives) {
    const TestHome home;
    const std::string old_home = std::getenv("HOME") ? std::getenv("HOME") : "";
    struct Row {
        const char *local_app_data, *xdg_data_home, *home, *expected;
    };
    for (const Row& row :
         {Row{"/a b/é", "/x", "/h", "/a b/é/Quorvelle"}, Row{"", "/x", "/h", "/x/Quorvelle"},
          Row{nullptr, "relative", "/h", "/h/.local/share/Quorvelle"},
          Row{nullptr, nullptr, "/h", "/h/.local/share/Quorvelle"}, Row{nullptr, "", "", "./Quorvelle"},
          Row{nullptr, nullptr, nullptr, "./Quorvelle"}}) {
        set_or_unset("LOCALAPPDATA", row.local_app_data);
        set_or_unset("XDG_DATA_HOME", row.xdg_data_home);
        set_or_unset("HOME", row.home);
        EXPECT_EQ(family_data_folder(), row.expected);
    }
    ::setenv("HOME", old_home.c_str(), 1);
    ::unsetenv("XDG_DATA_HOME");
}

TEST(PrivateFolder, IsItsOwnersAlone) {
    const TestHome home;
    const std::string folder = home.folder() + "/déep/er/Quorvelle";
    create_private_folder(folder);
    struct stat status {};
    ASSERT_EQ(::stat(folder.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
    ASSERT_EQ(::chmod(folder.c_str(), 0750), 0);
    create_private_folder(folder);
    ASSERT_EQ(::stat(folder.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0750U) << "what the user has set stays";
}
