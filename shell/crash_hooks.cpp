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
    // A hook set before start-up (a test's) stays.
    if (!CrashHooks().write) CrashHooks().write = &WriteCrashWorkspace;
    if (!CrashHooks().offer) CrashHooks().offer = &OfferCrashFile;
}
