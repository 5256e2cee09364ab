#include "shell/crash_hooks.h"

#include "files/zrk_file.h"

CCrashHooks& CrashHooks() {
    static CCrashHooks hooks;
    return hooks;
}

namespace {

void OfferCrashFile(const char* path) {
    SetCrashPath(path);
    ReadCrashFile();
}

}  // namespace

void InstallWorkspaceHooks(const char* crash_path) {
    SetCrashPath(crash_path);
    CrashHooks().write = &WriteCrashWorkspace;
    CrashHooks().offer = &OfferCrashFile;
}
