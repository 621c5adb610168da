#include "platform/new_file.h"

#include <limits>

#include "platform/win32/wide.h"

NewFile make_new_file(const std::string& path, std::string_view content) {
    if (content.size() > std::numeric_limits<DWORD>::max()) return NewFile::Failed;
    const std::wstring wide = wide_from_utf8(path);
    const HANDLE file = CreateFileW(wide.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_FILE_EXISTS ? NewFile::StoodThere : NewFile::Failed;
    const auto size = static_cast<DWORD>(content.size());
    DWORD written = 0;
    const bool whole = WriteFile(file, content.data(), size, &written, nullptr) && written == size;
    const bool closed = CloseHandle(file) != 0;
    if (whole && closed) return NewFile::Made;
    DeleteFileW(wide.c_str());
    return NewFile::Failed;
}
