// Moving one file over another. Paths are UTF-8. Both report by result and never throw.
#pragma once

#include <string>

// Puts `from` in the place of `to` in one atomic step, written through to the disk; `to` may exist.
bool replace_file(const std::string& from, const std::string& to);

// Moves `from` to `to`, over an existing file, also across volumes.
bool move_file(const std::string& from, const std::string& to);
