#include "shell/paths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <climits>

namespace {

std::string Below(const std::string& root, const char* tail) {
    if (root.empty()) return {};
    std::string path = root + tail;
    return path.size() <= CPaths::kMaxPath ? path : std::string();
}

}  // namespace

CPaths CPaths::FromExecutable(const std::string& exe_path) {
    CPaths p;
    const size_t slash = exe_path.rfind('/');
    if (slash == std::string::npos) return p;
    // "/quelmor" lives in the root folder, whose own name is empty: keep "/" as the folder.
    p.folder = slash == 0 ? std::string("/") : exe_path.substr(0, slash);
    if (p.folder.size() > kMaxPath) p.folder.clear();
    const std::string root = p.folder == "/" ? std::string() : p.folder;
    if (p.folder.empty()) return p;
    p.help = Below(root, "/help");
    p.preferences = Below(root, "/quelmor_preferences.txt");
    p.crash_workspace = Below(root, "/quelmor_crash.zrk");
    p.crash_text = Below(root, "/quelmor_crash.txt");
    p.script = Below(root, "/script");
    p.help_page = p.help.empty() ? std::string() : Below(p.help, "/quelmor_help/quelmor.htm");
    p.dcmtk = Below(root, "/files/dcmtk");
    p.nifti_reader = Below(root, "/files/nifti/nifti_reader");
    return p;
}

void CPaths::UseConfigFolderIfReadOnly(const char* home) {
    if (folder.empty() || access(folder.c_str(), W_OK) == 0) return;
    if (!home || !*home) return;
    const std::string config = std::string(home) + "/.config";
    const std::string own = config + "/quelmor";
    mkdir(config.c_str(), 0755);
    mkdir(own.c_str(), 0755);
    preferences = Below(own, "/quelmor_preferences.txt");
    crash_workspace = Below(own, "/quelmor_crash.zrk");
    crash_text = Below(own, "/quelmor_crash.txt");
}

std::string ExecutablePath() {
    char buf[PATH_MAX];
    const ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
    if (n <= 0) return {};
    return std::string(buf, static_cast<size_t>(n));
}
