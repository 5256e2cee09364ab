// CAtomicFile: a save that either replaces the target whole or leaves it untouched. The
// writer (ours or a library's) writes to TempPath(), a fresh file in the target's folder;
// Commit() flushes it to disk, renames it over the target and makes the rename durable by
// syncing the folder. A file never committed is removed by the destructor, so a failed or
// killed save leaves the old file as it was (at worst with a stray temporary beside it).
//
//   CAtomicFile file(path);
//   if (!WriteSomething(file.TempPath())) return 0;   // the temporary goes with `file`
//   if (!file.Commit()) return 0;
#pragma once

#include <string>

class CAtomicFile {
  public:
    explicit CAtomicFile(const std::string& target);
    ~CAtomicFile();
    CAtomicFile(const CAtomicFile&) = delete;
    CAtomicFile& operator=(const CAtomicFile&) = delete;

    const std::string& TempPath() const { return temp_; }
    const std::string& Target() const { return target_; }
    // 1 when the temporary is now the target; 0 leaves the target as it was.
    int Commit();

  private:
    std::string target_;
    std::string temp_;
    bool committed_ = false;
};
