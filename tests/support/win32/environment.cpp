#include "tests/support/environment.h"

#include "platform/win32/wide.h"

void set_environment(const std::string& name, const std::string& value) {
    SetEnvironmentVariableW(wide_from_utf8(name).c_str(), wide_from_utf8(value).c_str());
}

void clear_environment(const std::string& name) {
    SetEnvironmentVariableW(wide_from_utf8(name).c_str(), nullptr);
}

bool get_environment(const std::string& name, std::string& value) {
    const std::wstring wide_name = wide_from_utf8(name);
    const DWORD room = GetEnvironmentVariableW(wide_name.c_str(), nullptr, 0);
    if (room == 0) return false;
    std::wstring found(room, L'\0');
    found.resize(GetEnvironmentVariableW(wide_name.c_str(), found.data(), room));
    value = utf8_from_wide(found);
    return true;
}

int process_number() {
    return static_cast<int>(GetCurrentProcessId());
}
