// Making a file where there is none, in the fewest calls of the system. The path is UTF-8. Reports by result
// and never throws.
#pragma once

#include <string>
#include <string_view>

enum class NewFile { Made, StoodThere, Failed };

// Makes the file with this content. What stands there already is never touched; a file that could not be
// written whole is removed again. Fails where the folder is missing.
NewFile make_new_file(const std::string& path, std::string_view content);
