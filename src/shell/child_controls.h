// The controls inside the windows of the program: how each kind is made, and the messages that every window
// with such controls answers alike.
#pragma once

#include <optional>
#include <span>

#include "shell/main_layout.h"
#include "shell/shell.h"

enum class ChildKind {
    Button,      // painted
    Label,       // in the body font
    SmallLabel,  // in the small font
    Drop,        // drop-down list
    Edit,        // one line
    Text,        // many lines, with margins
};

struct ChildPlan {
    int id;
    ChildKind kind;
    const char* text = "";
    DWORD style = 0;  // beside what the kind has
    Box box = {};
};

HWND create_child(const Shell& shell, HWND parent, const ChildPlan& plan);
inline void create_children(const Shell& shell, HWND parent, std::span<const ChildPlan> plans) {
    for (const ChildPlan& plan : plans) create_child(shell, parent, plan);
}

// Moves the controls, leaving nothing of the picture from before. A control that is not there is passed over.
void place_children(HWND window, std::span<const PlacedControl> places);

// The look of a window with controls: its erased background, its painted buttons, and the colours of edits,
// boxes and labels. Labels are muted, but for the `bright` ones. Nothing for a message of any other kind.
std::optional<LRESULT> answer_look_message(const Shell& shell, HWND window, UINT number, WPARAM first,
                                           LPARAM second, std::span<const int> bright = {});

// Moves the focus to the next control, as the Tab key does, or to the one before. False with nowhere to go.
bool focus_next_control(HWND window, bool backwards);

// What the Enter key means in a window whose keys go through the dialog manager: a press of the painted
// button that has the focus. False if none has it.
bool press_focused_button(HWND window);
