#include "records/ui_settings.h"

#include <gtest/gtest.h>

#include "tests/support/test_home.h"

TEST(UiSettings, WhatIsSavedIsLoadedAndAnEmptyVaultIsNotWritten) {
    const TestHome home;
    save_settings({"forest", ""});
    EXPECT_EQ(home.read("/bursaria/ui.json"), "{\n  \"theme\": \"forest\"\n}");
    save_settings({"rose", "Långa kontot"});
    UiSettings loaded;
    load_settings(loaded);
    EXPECT_EQ(loaded.theme, "rose");
    EXPECT_EQ(loaded.last_vault, "Långa kontot");
}

TEST(UiSettings, AFileThatDoesNotReadChangesNothing) {
    const TestHome home;
    UiSettings settings{"gold", "kept"};
    load_settings(settings);
    home.write("/bursaria/ui.json", std::string("{\"theme\": "));
    load_settings(settings);
    EXPECT_EQ(settings.theme, "gold");
    EXPECT_EQ(settings.last_vault, "kept");
    home.write("/bursaria/ui.json", std::string(R"({"theme": 7, "last_vault": ["x"]})"));
    load_settings(settings);
    EXPECT_EQ(settings.theme, "");
    EXPECT_EQ(settings.last_vault, "");
}
