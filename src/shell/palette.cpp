#include "shell/palette.h"

#include <algorithm>

namespace {

struct Theme {
    std::string_view name;
    std::string_view label;
    Palette palette;
};

// window, panel, border, text, muted, accent, card, card_alt, button top and bottom, button text, band
constexpr std::array<Theme, THEME_COUNT> THEMES = {{
    {"gold-purple",
     "Gold-Purple",
     {0x120C1C, 0x1C142A, 0x765C96, 0xF4ECD6, 0xB0A4BA, 0xD4A840, 0x34264E, 0x443262, 0x604884, 0x241A3A,
      0xFFF8E6, 0x0A0810}},
    {"forest",
     "Forest",
     {0x080808, 0x0A0C0A, 0x204E30, 0xE2E8E2, 0x6E8C76, 0x2E8C3E, 0x1C201C, 0x283028, 0x485848, 0x0C0E0C,
      0xFFFFFF, 0x0E1610}},
    {"rose",
     "Rose",
     {0x12080C, 0x1C0C12, 0x8C3452, 0xF6E4EA, 0xA86C80, 0xC44876, 0x2A121C, 0x3A1A26, 0x6E3048, 0x10080C,
      0xFFF5F8, 0x240C16}},
    {"gold",
     "Gold",
     {0x0C0A04, 0x161208, 0xA88424, 0xF6ECC8, 0xA89048, 0xC9A227, 0x241C0A, 0x342A0E, 0x78601C, 0x0E0C04,
      0xFFF8DC, 0x1C1608}},
}};

// The first theme's cards are not of its palette.
constexpr Colour FIRST_THEME_CARD = 0x2A2436;

const Theme& theme_at(std::size_t theme) {
    return THEMES[theme < THEME_COUNT ? theme : 0];
}

Colour blend_channel(Colour a, Colour b, int t, int shift) {
    const int from = static_cast<int>(a >> shift & 0xFFU);
    const int to = static_cast<int>(b >> shift & 0xFFU);
    return static_cast<Colour>(std::clamp((from * (255 - t) + to * t) / 255, 0, 255)) << shift;
}

}  // namespace

const Palette& palette_of(std::size_t theme) {
    return theme_at(theme).palette;
}

std::string_view theme_name(std::size_t theme) {
    return theme_at(theme).name;
}

std::string_view theme_label(std::size_t theme) {
    return theme_at(theme).label;
}

std::size_t theme_from_name(std::string_view name) {
    const auto found =
        std::find_if(THEMES.begin(), THEMES.end(), [name](const Theme& theme) { return theme.name == name; });
    return found == THEMES.end() ? 0 : static_cast<std::size_t>(found - THEMES.begin());
}

Colour wallet_card_fill(std::size_t theme) {
    return &theme_at(theme) == &THEMES[0] ? FIRST_THEME_CARD : palette_of(theme).card;
}

Colour soft_card_fill(std::size_t theme) {
    return &theme_at(theme) == &THEMES[0] ? FIRST_THEME_CARD : palette_of(theme).panel_bg;
}

Colour blend_colours(Colour a, Colour b, int t) {
    return blend_channel(a, b, t, 16) | blend_channel(a, b, t, 8) | blend_channel(a, b, t, 0);
}
