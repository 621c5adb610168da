#include "shell/palette.h"

#include <gtest/gtest.h>

TEST(Palette, BlendingTruncatesEachChannelAndEndsInEitherColour) {
    struct Row {
        Colour a, b;
        int t;
        Colour mixed;
    };
    constexpr Row ROWS[] = {
        {0x102030, 0xF0E0D0, 0, 0x102030},   {0x102030, 0xF0E0D0, 255, 0xF0E0D0},
        {0x000000, 0xFFFFFF, 90, 0x5A5A5A},  {0x604884, 0xD4A840, 90, 0x88696C},
        {0x0000FF, 0xFF0000, 128, 0x80007F}, {0x000000, 0x010101, 254, 0x000000},
    };
    for (const Row& row : ROWS) EXPECT_EQ(blend_colours(row.a, row.b, row.t), row.mixed) << std::hex << row.a;
}

TEST(Palette, AThemeIsFoundByItsExactNameAndAnythingElseIsTheFirst) {
    for (const std::size_t theme : {0U, 1U, 2U, 3U}) EXPECT_EQ(theme_from_name(theme_name(theme)), theme);
    for (const char* name : {"purple", "Forest", "gold ", "", "gold-purple2"})
        EXPECT_EQ(theme_from_name(name), 0U) << name;
    EXPECT_EQ(theme_name(4), "gold-purple");
    EXPECT_EQ(palette_of(99).accent, palette_of(0).accent);
}
