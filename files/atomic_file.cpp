#include "files/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>

namespace {

std::string FolderOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    if (slash == 0) return "/";
    return path.substr(0, slash);
}

// The data of a written file reaches the disk before the rename that publishes it.
bool SyncPath(const std::string& path, int flags) {
    const int fd = open(path.c_str(), flags | O_CLOEXEC);
    if (fd < 0) return false;
    const bool ok = fsync(fd) == 0;
    return close(fd) == 0 && ok;
}

}  // namespace

CAtomicFile::CAtomicFile(const std::string& target) : target_(target) {
    static std::atomic<unsigned> serial{0};
    const size_t slash = target.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : target.substr(0, slash + 1);
    const std::string base = slash == std::string::npos ? target : target.substr(slash + 1);
    // A hidden name in the same folder: the rename stays on one file system.
    temp_ = folder + "." + base + "." + std::to_string(getpid()) + "." + std::to_string(serial++) +
            ".tmp";
}

CAtomicFile::~CAtomicFile() {
    if (!committed_) unlink(temp_.c_str());
}

int CAtomicFile::Commit() {
    if (committed_) return 1;
    struct stat written = {};
    if (stat(temp_.c_str(), &written) != 0) return 0;
    // A replaced file keeps its permissions.
    struct stat old = {};
    if (stat(target_.c_str(), &old) == 0) chmod(temp_.c_str(), old.st_mode & 07777);
    if (!SyncPath(temp_, O_RDONLY)) return 0;
    if (rename(temp_.c_str(), target_.c_str()) != 0) return 0;
    committed_ = true;
    // The rename itself is durable only once the folder is.
    SyncPath(FolderOf(target_), O_RDONLY | O_DIRECTORY);
    return 1;
}
