// CTrace: the last known location and the crash path.
//
// Guarded methods copy their name ("CView1d::OnDraw") into the trace on entry, so a crash
// tells where it happened. The constructor installs handlers for SIGSEGV, SIGBUS, SIGFPE,
// SIGILL and SIGABRT and a std::terminate handler, keeping the previous ones; the destructor
// puts them back. On the first crash the handler writes the crash workspace through
// CrashHooks().write without a question and says "%s is crashing..." on stderr; every run
// raises the counter, so a second crash writes nothing. Then it passes the signal on to the
// previous handler, or lets the default action end the process.
//
// One trace is active at a time; it must outlive everything that may crash.
#pragma once

#include <csignal>
#include <cstddef>
#include <exception>

class CTrace {
  public:
    static constexpr size_t kSize = 520;

    explicit CTrace(const char* program = "Quelmor");
    ~CTrace();
    CTrace(const CTrace&) = delete;
    CTrace& operator=(const CTrace&) = delete;

    void Set(const char* location);
    const char* Text() const { return text_; }
    const char* Program() const { return program_; }
    int Counter() const { return counter_; }
    // Where the crash path writes the workspace; cut to 260 characters.
    void SetCrashFile(const char* path);
    const char* CrashFile() const { return crash_file_; }

  private:
    static void OnSignal(int sig, siginfo_t* info, void* context);
    static void OnTerminate();
    // Counts the run; on the first, writes the crash workspace.
    void Crash();

    char text_[kSize] = {};
    char program_[64] = {};
    char crash_file_[261] = {};
    volatile sig_atomic_t counter_ = 0;
    struct sigaction previous_[5] = {};
    std::terminate_handler previous_terminate_ = nullptr;
};
