// Atomic saves: every writer puts its bytes into a temporary beside the target, flushes and
// syncs it, and renames it over the target, then syncs the folder so the rename itself is
// durable. A save that fails or is killed at any point leaves the old file whole; the
// temporary of a failed save is removed.
//
//   CAtomicFile out(path);
//   if (!out.Create()) return "file create failed";
//   std::fwrite(bytes, 1, n, out.Stream());
//   if (!out.Commit()) return "write failed";
//
// A writer that can only write by name (a library that opens the file itself) writes to
// TempPath() after Create() and commits the same way. The two plain functions below are
// heap-free, for the crash path.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

// Creates the temporary of `path` ("PATH.PID.tmp"), written into `temp`, with the permissions
// of an existing `path`; its descriptor, or -1.
int AtomicCreate(const char* path, char* temp, size_t temp_size);
// Syncs and closes `fd`, renames `temp` over `path`, syncs the folder; 0 when all went well.
// On failure the temporary is removed and `path` is untouched.
int AtomicCommit(int fd, const char* temp, const char* path);

class CAtomicFile {
  public:
    explicit CAtomicFile(std::string path);
    ~CAtomicFile();
    CAtomicFile(const CAtomicFile&) = delete;
    CAtomicFile& operator=(const CAtomicFile&) = delete;

    // False when the temporary can't be made.
    bool Create();
    // A buffered stream over the temporary, made on first use; null before Create.
    FILE* Stream();
    const std::string& TempPath() const { return temp_; }
    // False when any write, the flush, the sync or the rename failed.
    bool Commit();

  private:
    std::string path_;
    std::string temp_;
    int fd_ = -1;
    FILE* stream_ = nullptr;
    bool done_ = false;
};
