// What a test needs of the process that it runs in, for each operating system.
#pragma once

#include <string>

// Names and values are UTF-8.
void set_environment(const std::string& name, const std::string& value);
void clear_environment(const std::string& name);
// False, with `value` untouched, if there is no such variable.
bool get_environment(const std::string& name, std::string& value);
int process_number();
