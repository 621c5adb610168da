// The four palettes of the look, as plain numbers. A colour is 0xRRGGBB. Pure.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

using Colour = std::uint32_t;

struct Palette {
    Colour window_bg;
    Colour panel_bg;
    Colour border;
    Colour text;
    Colour muted;
    Colour accent;
    Colour card;
    Colour card_alt;
    Colour button_top;
    Colour button_bottom;
    Colour button_text;
    Colour band;
};

inline constexpr std::size_t THEME_COUNT = 4;

// Colours that no palette changes.
inline constexpr Colour WHITE = 0xFFFFFF;
inline constexpr Colour RUNNING_GREEN = 0x56D670;
inline constexpr Colour UPDATE_RED = 0xFF5C48;
inline constexpr Colour EXCLUDED_TEXT = 0x301608;
inline constexpr Colour EXCLUDED_ROW = 0xE88428;

// An index beyond the last means the first, here and below.
const Palette& palette_of(std::size_t theme);
// As it stands in the settings file, and as a user reads it.
std::string_view theme_name(std::size_t theme);
std::string_view theme_label(std::size_t theme);
// By exact comparison; an unknown name is the first theme.
std::size_t theme_from_name(std::string_view name);

// What the wallet card and the cards of the preview are filled with.
Colour wallet_card_fill(std::size_t theme);
Colour soft_card_fill(std::size_t theme);

// Mixes each channel, from `a` at t = 0 to `b` at t = 255.
Colour blend_colours(Colour a, Colour b, int t);
