// What the windows of the program share: the look, the pictures, the round, and the handle of each window
// that is open. Belongs to the window's thread; workers read `main` alone, to post to it.
#pragma once

#include <atomic>

#include "core/round.h"
#include "program/vault_reader.h"
#include "records/ui_settings.h"
#include "records/vault_lookup.h"
#include "shell/drawing.h"
#include "shell/theme.h"

struct Shell {
    HINSTANCE instance = nullptr;
    Theme theme;
    UiSettings ui;
    PictureOwner banner;
    PictureOwner seal;  // loaded and kept; nothing draws it
    HICON kept_icon = nullptr;
    HICON big_icon = nullptr;
    HICON small_icon = nullptr;

    std::atomic<HWND> main{nullptr};
    HWND message = nullptr;
    HWND preview = nullptr;
    HWND settings = nullptr;
    HWND history = nullptr;
    HWND vault = nullptr;
    HWND note = nullptr;

    Round round;
    std::vector<BoardLine> board_lines;  // what the board list shows
    AddressReader read_address = read_address_coins;
    int latest_version = -1;  // until an answer has come
    bool update_available = false;
};

// Gives the look to every open window but the preview and the note, and saves it.
void apply_theme(Shell& shell, std::size_t index);

// Offers a message to the dialog keys of the open windows: the history, the settings, the message and the
// vault window, in this order; the first that takes it ends its turn. In the main window Tab and Shift+Tab
// walk through the controls. True if the message is done with.
bool offer_dialog_keys(const Shell& shell, MSG& message);

// Workers on threads of their own, detached, and results posted to the main window.
RoundWorkers shell_workers(Shell& shell);
