// The colours and the captions of a painted button, from what it is and what happens to it. Pure.
#pragma once

#include <cstddef>
#include <string_view>

#include "shell/palette.h"

struct ButtonState {
    int control = 0;
    std::size_t theme = 0;
    bool on_banner = false;  // stands on the main window's band
    bool hot = false;
    bool pressed = false;
    bool disabled = false;
};

struct ButtonLook {
    Colour background = 0;
    Colour top = 0;
    Colour bottom = 0;
    Colour outline = 0;
    Colour text = 0;
    Colour second_text = 0;
    int radius = 0;
};

ButtonLook button_look(const ButtonState& state);

// The five that carry a glyph and a second line.
bool is_big_button(int control);
// Empty for a plain button.
std::string_view second_line(int control);
