// What a file or an answer may hold where an object is expected: nothing of it may be taken for one.
#pragma once

#include <string>
#include <vector>

inline const std::vector<std::string> NO_OBJECTS = {
    "", "{", "[]", "[1]", "null", "7", "\"text\"", "<html>", "\xff\xfe", R"({"a":)", std::string(3000, '[')};
