#include "shell/button_look.h"

#include <gtest/gtest.h>

#include "core/round_state.h"
#include "shell/shell_controls.h"

namespace {

ButtonState button(int control, std::size_t theme) {
    ButtonState state;
    state.control = control;
    state.theme = theme;
    return state;
}

}  // namespace

TEST(ButtonLook, TheFirstThemeHasFixedColoursForBigButtonsAndTheBanner) {
    EXPECT_EQ(button_look(button(CONTROL_PAY, 0)).top, 0x60635AU);
    EXPECT_EQ(button_look(button(CONTROL_PAY, 0)).outline, 0x40384AU);
    EXPECT_EQ(button_look(button(CONTROL_PAY, 1)).top, palette_of(1).button_top);
    EXPECT_EQ(button_look(button(CONTROL_PAY, 1)).outline, palette_of(1).border);
    EXPECT_EQ(button_look(button(CONTROL_CLOSE, 0)).top, palette_of(0).button_top);
    ButtonState connect = button(CONTROL_CONNECT, 0);
    connect.on_banner = true;
    EXPECT_EQ(button_look(connect).bottom, 0x2C223AU);
    EXPECT_EQ(button_look(connect).background, palette_of(0).band);
}

TEST(ButtonLook, HotMixesPressedSwapsAndDisabledFades) {
    ButtonState state = button(CONTROL_VAULT, 0);
    state.hot = true;
    ButtonLook look = button_look(state);
    EXPECT_EQ(look.top, blend_colours(0x6C665A, WHITE, 40));
    EXPECT_EQ(look.bottom, blend_colours(0x342A1E, WHITE, 24));
    EXPECT_EQ(look.outline, palette_of(0).accent);
    state.pressed = true;
    EXPECT_EQ(button_look(state).top, look.bottom);

    state = button(CONTROL_CLOSE, 2);
    state.hot = true;
    look = button_look(state);
    EXPECT_EQ(look.top, blend_colours(palette_of(2).button_top, palette_of(2).accent, 90));
    EXPECT_EQ(look.bottom, blend_colours(palette_of(2).button_bottom, palette_of(2).accent, 70));
    state.hot = false;
    state.disabled = true;
    look = button_look(state);
    EXPECT_EQ(look.top, blend_colours(palette_of(2).button_top, palette_of(2).window_bg, 120));
    EXPECT_EQ(look.text, palette_of(2).muted);
    EXPECT_EQ(look.second_text, blend_colours(palette_of(2).button_text, palette_of(2).muted, 80));
}

TEST(ButtonLook, FiveButtonsAreBig) {
    EXPECT_EQ(second_line(CONTROL_SNAPSHOT), "Freeze the holder board");
    EXPECT_EQ(second_line(CONTROL_VAULT), "Watch-only addresses");
    EXPECT_EQ(second_line(CONTROL_CLOSE), "");
    EXPECT_TRUE(is_big_button(CONTROL_HISTORY));
    EXPECT_FALSE(is_big_button(CONTROL_CONNECT));
    EXPECT_EQ(button_look(button(CONTROL_PREVIEW, 3)).radius, 18);
    EXPECT_EQ(button_look(button(CONTROL_CLOSE, 3)).radius, 14);
}
