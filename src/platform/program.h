// Where this program lies, and what it asks the desktop to do with other programs. Text is UTF-8.
#pragma once

#include <string>

// The folder that holds this program's executable file, without a separator at its end; "." if the system
// does not tell.
std::string program_folder();

// Brings the top-level window of a class forward, restoring it if it is minimised. False where there is none,
// and always on a system without such windows.
bool bring_window_forward(const std::string& window_class);

// Starts the program at `path` without arguments, in `working_folder`, and does not wait for it. False if
// there is no such program, or the system would not run it.
bool start_program(const std::string& path, const std::string& working_folder);

// Shows a web page in the user's browser; false if the system has no means to.
bool open_page(const std::string& url);

// True if the process's standard output goes to a terminal.
bool stdout_is_terminal();
