#include "shell/trace.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "shell/crash_hooks.h"

namespace {

constexpr int kSignals[5] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
CTrace* g_active = nullptr;

void CopyCut(char* out, size_t size, const char* text) {
    std::strncpy(out, text ? text : "", size - 1);
    out[size - 1] = 0;
}

int SignalIndex(int sig) {
    for (int i = 0; i < 5; ++i)
        if (kSignals[i] == sig) return i;
    return -1;
}

}  // namespace

CTrace::CTrace(const char* program) {
    CopyCut(program_, sizeof program_, program);
    struct sigaction action = {};
    action.sa_sigaction = &CTrace::OnSignal;
    action.sa_flags = SA_SIGINFO;
    sigemptyset(&action.sa_mask);
    for (int i = 0; i < 5; ++i) sigaction(kSignals[i], &action, &previous_[i]);
    previous_terminate_ = std::set_terminate(&CTrace::OnTerminate);
    g_active = this;
}

CTrace::~CTrace() {
    for (int i = 0; i < 5; ++i) sigaction(kSignals[i], &previous_[i], nullptr);
    std::set_terminate(previous_terminate_);
    if (g_active == this) g_active = nullptr;
}

void CTrace::Set(const char* location) {
    // Runs on entry of every guarded method: copy only what is there.
    const size_t n = location ? strnlen(location, kSize - 1) : 0;
    std::memcpy(text_, location ? location : "", n);
    text_[n] = 0;
}

void CTrace::SetCrashFile(const char* path) { CopyCut(crash_file_, sizeof crash_file_, path); }

void CTrace::Crash() {
    const int runs = counter_;
    counter_ = runs + 1;
    if (runs != 0) return;
    const CCrashHooks& hooks = CrashHooks();
    if (!hooks.write || !crash_file_[0] || hooks.write(crash_file_) != 0) return;
    char message[160];
    const int n =
        std::snprintf(message, sizeof message,
                      "%s is crashing.\nworkspace saved in backup crash file\n", program_);
    if (n > 0) (void)!write(STDERR_FILENO, message, static_cast<size_t>(n));
}

void CTrace::OnSignal(int sig, siginfo_t* info, void* context) {
    CTrace* trace = g_active;
    const int index = SignalIndex(sig);
    if (!trace || index < 0) return;
    trace->Crash();
    const struct sigaction& previous = trace->previous_[index];
    if (previous.sa_flags & SA_SIGINFO) {
        if (previous.sa_sigaction) previous.sa_sigaction(sig, info, context);
        return;
    }
    if (previous.sa_handler == SIG_IGN) return;
    if (previous.sa_handler == SIG_DFL) {
        // The default action ends the process once this handler returns (or the fault
        // repeats).
        sigaction(sig, &previous, nullptr);
        raise(sig);
        return;
    }
    previous.sa_handler(sig);
}

void CTrace::OnTerminate() {
    CTrace* trace = g_active;
    std::terminate_handler previous = trace ? trace->previous_terminate_ : nullptr;
    if (trace) trace->Crash();
    if (previous) previous();
    std::abort();
}
