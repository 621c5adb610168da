#include "tests/support/environment.h"

#include <unistd.h>

#include <cstdlib>

void set_environment(const std::string& name, const std::string& value) {
    ::setenv(name.c_str(), value.c_str(), 1);
}

void clear_environment(const std::string& name) {
    ::unsetenv(name.c_str());
}

bool get_environment(const std::string& name, std::string& value) {
    const char* found = std::getenv(name.c_str());
    if (found != nullptr) value = found;
    return found != nullptr;
}

int process_number() {
    return ::getpid();
}
