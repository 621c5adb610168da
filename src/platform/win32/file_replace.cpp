#include "platform/file_replace.h"

#include "platform/win32/wide.h"

bool replace_file(const std::string& from, const std::string& to) {
    return MoveFileExW(wide_from_utf8(from).c_str(), wide_from_utf8(to).c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

bool move_file(const std::string& from, const std::string& to) {
    const std::wstring wide_from = wide_from_utf8(from);
    const std::wstring wide_to = wide_from_utf8(to);
    if (MoveFileExW(wide_from.c_str(), wide_to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED))
        return true;
    if (!CopyFileW(wide_from.c_str(), wide_to.c_str(), FALSE)) return false;
    return DeleteFileW(wide_from.c_str()) != 0;
}
