#include <gtest/gtest.h>

#include <string>

#include "shell/paths.h"

namespace {

TEST(PathsTest, AllPathsHangBelowTheProgramFolder) {
    const CPaths p = CPaths::FromExecutable("/opt/quelmor/bin/quelmor");
    EXPECT_EQ(p.folder, "/opt/quelmor/bin");
    EXPECT_EQ(p.help, "/opt/quelmor/bin/help");
    EXPECT_EQ(p.preferences, "/opt/quelmor/bin/quelmor_preferences.txt");
    EXPECT_EQ(p.crash_workspace, "/opt/quelmor/bin/quelmor_crash.zrk");
    EXPECT_EQ(p.crash_text, "/opt/quelmor/bin/quelmor_crash.txt");
    EXPECT_EQ(p.script, "/opt/quelmor/bin/script");
    EXPECT_EQ(p.help_page, "/opt/quelmor/bin/help/quelmor_help/quelmor.htm");
    EXPECT_EQ(p.dcmtk, "/opt/quelmor/bin/files/dcmtk");
    EXPECT_EQ(p.nifti_reader, "/opt/quelmor/bin/files/nifti/nifti_reader");
}

TEST(PathsTest, NoFolderPartOrTooLongLeavesThemEmpty) {
    for (const std::string& exe :
         {std::string("quelmor"), std::string(), "/" + std::string(300, 'x') + "/quelmor"}) {
        const CPaths p = CPaths::FromExecutable(exe);
        EXPECT_EQ(p.folder, "") << exe;
        EXPECT_EQ(p.preferences, "") << exe;
        EXPECT_EQ(p.help_page, "") << exe;
    }
    // A folder that fits while a file below it would not: only that file stays empty.
    const CPaths p = CPaths::FromExecutable("/" + std::string(240, 'y') + "/quelmor");
    EXPECT_FALSE(p.folder.empty());
    EXPECT_FALSE(p.help.empty());
    EXPECT_TRUE(p.preferences.empty());
    EXPECT_TRUE(p.help_page.empty());
}

TEST(PathsTest, ReadOnlyFolderMovesPreferencesToTheConfigFolder) {
    const std::string home = ::testing::TempDir() + "quelmor_home";
    CPaths p = CPaths::FromExecutable("/proc/self/quelmor");  // never writable
    p.UseConfigFolderIfReadOnly(home.c_str());
    EXPECT_EQ(p.preferences, home + "/.config/quelmor/quelmor_preferences.txt");
    EXPECT_EQ(p.crash_workspace, home + "/.config/quelmor/quelmor_crash.zrk");
    EXPECT_EQ(p.script, "/proc/self/script");

    CPaths w = CPaths::FromExecutable(::testing::TempDir() + "quelmor");
    const std::string before = w.preferences;
    w.UseConfigFolderIfReadOnly(home.c_str());
    EXPECT_EQ(w.preferences, before);
}

TEST(PathsTest, ExecutablePathNamesThisTest) {
    EXPECT_NE(ExecutablePath().find("shell_tests"), std::string::npos);
}

}  // namespace
