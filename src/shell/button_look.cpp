#include "shell/button_look.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>

#include "core/round_state.h"

namespace {

struct BigButton {
    int control;
    Colour top;  // of the first theme
    Colour bottom;
    std::string_view second_line;
};

constexpr std::array<BigButton, 5> BIG_BUTTONS = {{
    {CONTROL_SNAPSHOT, 0x6B617C, 0x262034, "Freeze the holder board"},
    {CONTROL_PREVIEW, 0x706756, 0x2A2218, "See the split"},
    {CONTROL_PAY, 0x60635A, 0x24202A, "Send the dividend"},
    {CONTROL_HISTORY, 0x625E6F, 0x2C2838, "Local payout log"},
    {CONTROL_VAULT, 0x6C665A, 0x342A1E, "Watch-only addresses"},
}};
constexpr Colour BANNER_TOP = 0x584670;
constexpr Colour BANNER_BOTTOM = 0x2C223A;
constexpr Colour FIRST_THEME_OUTLINE = 0x40384A;
constexpr int BIG_RADIUS = 18;
constexpr int PLAIN_RADIUS = 14;

const BigButton* big_button(int control) {
    const auto found = std::find_if(BIG_BUTTONS.begin(), BIG_BUTTONS.end(),
                                    [control](const BigButton& button) { return button.control == control; });
    return found == BIG_BUTTONS.end() ? nullptr : &*found;
}

std::pair<Colour, Colour> resting_or_hot(const ButtonState& state, const BigButton* big) {
    const Palette& palette = palette_of(state.theme);
    const bool fixed = state.theme == 0 && (big != nullptr || state.on_banner);
    if (!fixed) {
        if (!state.hot) return {palette.button_top, palette.button_bottom};
        return {blend_colours(palette.button_top, palette.accent, 90),
                blend_colours(palette.button_bottom, palette.accent, 70)};
    }
    const Colour top = big != nullptr ? big->top : BANNER_TOP;
    const Colour bottom = big != nullptr ? big->bottom : BANNER_BOTTOM;
    if (!state.hot) return {top, bottom};
    return {blend_colours(top, WHITE, 40), blend_colours(bottom, WHITE, 24)};
}

}  // namespace

ButtonLook button_look(const ButtonState& state) {
    const Palette& palette = palette_of(state.theme);
    const BigButton* big = big_button(state.control);
    ButtonLook look;
    look.background = state.on_banner ? palette.band : palette.window_bg;
    std::tie(look.top, look.bottom) = resting_or_hot(state, big);
    if (state.pressed) std::swap(look.top, look.bottom);
    if (state.disabled) {
        look.top = blend_colours(look.top, look.background, 120);
        look.bottom = blend_colours(look.bottom, look.background, 120);
    }
    look.outline = big != nullptr && state.theme == 0 ? FIRST_THEME_OUTLINE : palette.border;
    if (state.hot || state.pressed) look.outline = palette.accent;
    look.text = state.disabled ? palette.muted : palette.button_text;
    look.second_text = state.disabled ? blend_colours(palette.button_text, palette.muted, 80) : palette.muted;
    look.radius = big != nullptr ? BIG_RADIUS : PLAIN_RADIUS;
    return look;
}

bool is_big_button(int control) {
    return big_button(control) != nullptr;
}

std::string_view second_line(int control) {
    const BigButton* big = big_button(control);
    return big == nullptr ? std::string_view() : big->second_line;
}
