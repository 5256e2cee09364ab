// The two crash-file hooks, filled by the workspace files: the writer of the crash workspace
// and, at start, the offer to read a crash file that a previous run left. Empty hooks make
// the crash path write nothing and the start offer nothing.
#pragma once

struct CCrashHooks {
    // Writes the whole data space to `path`; 0 on success. Runs inside a signal handler on
    // the crash path, so it must not rely on the state the crash broke.
    int (*write)(const char* path) = nullptr;
    // Checks the header at `path`; when there is one, asks "read crash file\n" with it and
    // reads or deletes the file.
    void (*offer)(const char* path) = nullptr;
};

CCrashHooks& CrashHooks();

// Fills the empty hooks with the workspace file's crash writer and start-up offer; the crash
// workspace is `crash_path`.
void InstallWorkspaceHooks(const char* crash_path);
