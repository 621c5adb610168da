// A lock between processes: an exclusive advisory lock on the first byte of a file, held while the object
// lives.
#pragma once

#include <string>

class FileLock {
 public:
    // Opens `path` (UTF-8) for reading and writing, creating an empty file where there is none, and waits
    // without a limit for the lock. A file that does not open, or a lock that is refused, leaves the object
    // without a lock.
    explicit FileLock(const std::string& path);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    bool held() const { return held_; }

 private:
    // The system's handle; -1 when nothing is open.
    long long handle_ = -1;
    bool held_ = false;
};
