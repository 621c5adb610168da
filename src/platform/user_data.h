// The per-user folder for application data of the operating system: LOCALAPPDATA where it is set, otherwise
// the system's own place for it. Nothing is created here. Thread-safe as far as the environment is left
// alone.
#pragma once

#include <string>

// The folder of the family ("Quorvelle") inside the per-user data folder, as UTF-8, in the system's own
// spelling of a path. Never empty: without any hint from the environment it lies under the working folder.
std::string family_data_folder();

// Creates the folder and its parents; errors are ignored. Where the system knows permissions, a folder made
// here is its owner's alone, since wallets lie in it in the clear; one that exists is left as it is.
void create_private_folder(const std::string& path);
