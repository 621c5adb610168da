#include "platform/file_lock.h"

#include "platform/win32/wide.h"

FileLock::FileLock(const std::string& path) {
    const HANDLE file =
        CreateFileW(wide_from_utf8(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    OVERLAPPED first_byte{};
    if (!LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &first_byte)) {
        CloseHandle(file);
        return;
    }
    handle_ = reinterpret_cast<long long>(file);
    held_ = true;
}

FileLock::~FileLock() {
    if (!held_) return;
    const HANDLE file = reinterpret_cast<HANDLE>(handle_);
    OVERLAPPED first_byte{};
    UnlockFileEx(file, 0, 1, 0, &first_byte);
    CloseHandle(file);
}
