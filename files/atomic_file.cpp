#include "files/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

namespace {

void SyncFolder(const char* path) {
    char folder[4160];
    const int n = std::snprintf(folder, sizeof folder, "%s", path);
    if (n < 0 || static_cast<size_t>(n) >= sizeof folder) return;
    char* slash = std::strrchr(folder, '/');
    if (slash == folder)
        slash[1] = 0;
    else if (slash)
        *slash = 0;
    else
        std::snprintf(folder, sizeof folder, ".");
    const int dir = open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir < 0) return;
    fsync(dir);
    close(dir);
}

// Renames a written temporary over its target, or removes it when the writing failed.
int Finish(bool ok, const char* temp, const char* path) {
    if (!ok || rename(temp, path) != 0) {
        unlink(temp);
        return 1;
    }
    // The rename is durable only once the folder is.
    SyncFolder(path);
    return 0;
}

}  // namespace

int AtomicCreate(const char* path, char* temp, size_t temp_size) {
    const int n = std::snprintf(temp, temp_size, "%s.%ld.tmp", path, static_cast<long>(getpid()));
    if (n < 0 || static_cast<size_t>(n) >= temp_size) return -1;
    const int fd = open(temp, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) return -1;
    // The file that replaces another keeps its permissions.
    struct stat old = {};
    if (stat(path, &old) == 0) fchmod(fd, old.st_mode & 07777);
    return fd;
}

int AtomicCommit(int fd, const char* temp, const char* path) {
    bool ok = fsync(fd) == 0;
    ok = close(fd) == 0 && ok;
    return Finish(ok, temp, path);
}

CAtomicFile::CAtomicFile(std::string path) : path_(std::move(path)) {}

CAtomicFile::~CAtomicFile() {
    if (done_ || fd_ < 0) return;
    if (stream_)
        std::fclose(stream_);
    else
        close(fd_);
    unlink(temp_.c_str());
}

bool CAtomicFile::Create() {
    if (fd_ >= 0) return true;
    std::string temp(path_.size() + 64, '\0');
    fd_ = AtomicCreate(path_.c_str(), temp.data(), temp.size());
    if (fd_ < 0) return false;
    temp_ = temp.c_str();
    return true;
}

FILE* CAtomicFile::Stream() {
    if (!stream_ && fd_ >= 0) stream_ = fdopen(fd_, "wb");
    return stream_;
}

bool CAtomicFile::Commit() {
    if (fd_ < 0 || done_) return false;
    done_ = true;
    if (!stream_) return AtomicCommit(fd_, temp_.c_str(), path_.c_str()) == 0;
    // The stream's buffer and its error flag count as much as the sync.
    bool ok = std::fflush(stream_) == 0 && !std::ferror(stream_) && fsync(fd_) == 0;
    ok = std::fclose(stream_) == 0 && ok;
    stream_ = nullptr;
    return Finish(ok, temp_.c_str(), path_.c_str()) == 0;
}
