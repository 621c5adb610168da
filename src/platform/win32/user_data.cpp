#include "platform/user_data.h"

#include <filesystem>
#include <system_error>

#include "platform/win32/wide.h"

std::string family_data_folder() {
    std::string folder = ".";
    const DWORD length = GetEnvironmentVariableW(L"LOCALAPPDATA", nullptr, 0);
    if (length > 1) {
        std::wstring value(length, L'\0');
        value.resize(GetEnvironmentVariableW(L"LOCALAPPDATA", value.data(), length));
        const std::string text = utf8_from_wide(value);
        if (!text.empty()) folder = text;
    }
    return folder + "\\Quorvelle";
}

// The per-user folder is its owner's alone already, and what is made in it inherits that.
void create_private_folder(const std::string& path) {
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(wide_from_utf8(path)), error);
}
