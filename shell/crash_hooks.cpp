#include "shell/crash_hooks.h"

CCrashHooks& CrashHooks() {
    static CCrashHooks hooks;
    return hooks;
}
