// CPaths: the folders and files of the program, all derived from the folder of the
// executable. Each is a path of at most 260 characters; one that would be longer, and every
// path when the executable has no folder part, stays empty.
//
//   CPaths p = CPaths::FromExecutable(ExecutablePath());
//   p.UseConfigFolderIfReadOnly(getenv("HOME"));   // preferences and crash file
#pragma once

#include <string>

struct CPaths {
    static constexpr size_t kMaxPath = 260;

    static CPaths FromExecutable(const std::string& exe_path);
    // The preferences and the crash workspace move to `home`/.config/quelmor when the program
    // folder can't be written; the folder is created on demand.
    void UseConfigFolderIfReadOnly(const char* home);

    std::string folder;
    std::string help;
    std::string preferences;
    std::string crash_workspace;
    // Reserved, never written.
    std::string crash_text;
    std::string script;
    std::string help_page;
    std::string dcmtk;
    std::string nifti_reader;
};

// The path of the running executable, empty when it can't be told.
std::string ExecutablePath();
