// Fuzz inputs as files: the bytes in an anonymous memory file, opened by path like any file.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

class CMemFile {
  public:
    CMemFile(const uint8_t* data, size_t size) : fd_(memfd_create("fuzz", 0)) {
        if (fd_ >= 0 && size > 0 && write(fd_, data, size) != static_cast<ssize_t>(size)) {
            close(fd_);
            fd_ = -1;
        }
        if (fd_ >= 0) path_ = "/proc/self/fd/" + std::to_string(fd_);
    }
    ~CMemFile() {
        if (fd_ >= 0) close(fd_);
    }
    CMemFile(const CMemFile&) = delete;
    CMemFile& operator=(const CMemFile&) = delete;

    bool Ok() const { return fd_ >= 0; }
    const std::string& Path() const { return path_; }

  private:
    int fd_;
    std::string path_;
};
