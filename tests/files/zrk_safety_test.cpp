// Saves that can't lose the last good workspace, and the crash workspace written from a
// signal handler over a broken heap.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include "files/zrk_file.h"
#include "shell/crash_hooks.h"
#include "shell/shell_host.h"
#include "shell/trace.h"
#include "tests/files/workspace_fixture.h"

using ws::Slurp;

namespace {

bool AnyTemporary(const std::filesystem::path& dir) {
    for (const auto& e : std::filesystem::directory_iterator(dir))
        if (e.path().extension() == ".tmp") return true;
    return false;
}

// Reads `path` into spaces of its own; the names and byte counts of its arrays, or the
// failure's status.
std::string Contents(const std::string& path) {
    // The test factory lists into the global window list: no displays from private spaces.
    const DisplayWindowHook hook = SetDisplayWindow(KIND_1D, nullptr);
    ws::InstallFactory(nullptr);
    struct Restore {
        DisplayWindowHook hook;
        ~Restore() { ws::InstallFactory(hook); }
    } restore{hook};
    CDataSpace space;
    CWindowSpace windows;
    CZrkFile f(path);
    f.space = &space;
    f.windows = &windows;
    if (f.Read() != 0) return f.status;
    std::string out;
    for (int k = 0; k < space.Count(); ++k)
        out += std::string(space.GetData(k)->name) + ":" +
               std::to_string(space.GetData(k)->Bytes()) + " ";
    return out;
}

int WaitStatus(pid_t pid) {
    int status = 0;
    waitpid(pid, &status, 0);
    return status;
}

// Breaks the allocator's own records, past what the sanitizer checks, and nothing that the
// program's objects live in: the size word of a fresh block and the free-list link of a freed
// one. Any later malloc or free of that size then crashes.
__attribute__((no_sanitize("address"))) void CorruptHeap() {
    // Through volatile pointers, so the compiler neither sees nor warns about what follows.
    unsigned char* volatile fresh = static_cast<unsigned char*>(std::malloc(64));
    unsigned char* volatile freed = static_cast<unsigned char*>(std::malloc(64));
    std::free(freed);
    for (int k = -8; k < 0; ++k) fresh[k] = 0xa5;
    for (int k = 0; k < 16; ++k) freed[k] = 0xa5;
}

void ReturningHandler(int) {}

class ZrkSafety : public ws::WorkspaceTest {};

}  // namespace

TEST_F(ZrkSafety, AKilledSaveLeavesTheOldOrTheNewFile) {
    const std::string target = Path("work.zrk");
    ws::RandomArray("old", TYPE_I2, {100}, 1);
    ASSERT_EQ(CZrkFile(target).Write(), 1);
    const std::string old_bytes = Slurp(target);
    ws::ClearSpaces();
    CZrkData* big = GlobalDataSpace().NewData(TYPE_R4, 1024, 1024, 50, 1, 1, 1, "new");
    ASSERT_TRUE(big);
    std::memset(big->Data(), 0x3c, big->Bytes());
    const std::string new_contents = "new:" + std::to_string(big->Bytes()) + " ";

    int olds = 0, news = 0;
    // Kill points through the save; the last lets it finish.
    for (int delay_ms : {0, 5, 20, 50, 90, 140, 200, 300, 450, -1}) {
        const pid_t pid = fork();
        if (pid == 0) _exit(CZrkFile(target).Write() == 1 ? 0 : 1);
        if (delay_ms >= 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(delay_ms));
            kill(pid, SIGKILL);
        }
        const int status = WaitStatus(pid);
        if (delay_ms < 0) {
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        }
        for (const auto& e : std::filesystem::directory_iterator(dir_))
            if (e.path().extension() == ".tmp") std::filesystem::remove(e.path());
        if (Slurp(target) == old_bytes) {
            ++olds;
            continue;
        }
        ASSERT_EQ(Contents(target), new_contents) << "killed after " << delay_ms << " ms";
        ++news;
        if (delay_ms >= 0) ws::Spit(target, old_bytes);  // over an old workspace again
    }
    EXPECT_GE(olds, 1);
    EXPECT_GE(news, 1);
}

TEST_F(ZrkSafety, AFullDiskKeepsTheOldFile) {
    const std::string target = Path("work.zrk");
    ws::RandomArray("old", TYPE_I2, {100}, 1);
    ASSERT_EQ(CZrkFile(target).Write(), 1);
    const std::string old_bytes = Slurp(target);
    ws::RandomArray("more", TYPE_R8, {1024, 1024}, 2);
    const pid_t pid = fork();
    if (pid == 0) {
        const rlimit limit = {1 << 20, 1 << 20};
        setrlimit(RLIMIT_FSIZE, &limit);
        signal(SIGXFSZ, SIG_IGN);  // EFBIG instead of the signal
        CZrkFile f(target);
        const bool told =
            f.Write() == 0 && f.status == "write failed" && host_.messages.back() == "write failed";
        _exit(told ? 0 : 1);
    }
    const int status = WaitStatus(pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_TRUE(Slurp(target) == old_bytes);
    EXPECT_FALSE(AnyTemporary(dir_));
    // A save that succeeds keeps the permissions of the file it replaces.
    std::filesystem::permissions(
        target, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    ASSERT_EQ(CZrkFile(target).Write(), 1);
    EXPECT_EQ(std::filesystem::status(target).permissions() & std::filesystem::perms::all,
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(ZrkSafety, ACrashOverABrokenHeapWritesTheWorkspace) {
    BuildState();
    const std::string crash = Path("quelmor_crash.zrk"), expected = Path("expected.zrk");
    host_.history_text.clear();  // the child's shell host keeps no history
    ASSERT_EQ(CZrkFile(expected).Write(), 1);
    const pid_t pid = fork();
    if (pid == 0) {
        CTrace trace("Quelmor");
        trace.SetCrashFile(crash.c_str());
        CShellHost host(trace);
        SetHost(&host);
        CrashHooks().write = &WriteCrashWorkspace;
        CorruptHeap();
        raise(SIGSEGV);
        _exit(0);
    }
    // The signal ends the child, or the sanitizer's handler behind ours does.
    const int status = WaitStatus(pid);
    EXPECT_FALSE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    const std::string got = Slurp(crash);
    ASSERT_FALSE(got.empty());
    EXPECT_TRUE(got == Slurp(expected));
    EXPECT_EQ(Contents(crash), Contents(expected));
    EXPECT_FALSE(AnyTemporary(dir_));

    // A second crash of the same run writes nothing.
    const pid_t again = fork();
    if (again == 0) {
        signal(SIGSEGV, &ReturningHandler);
        CTrace trace("Quelmor");
        trace.SetCrashFile(crash.c_str());
        CrashHooks().write = &WriteCrashWorkspace;
        raise(SIGSEGV);
        unlink(crash.c_str());
        raise(SIGSEGV);
        _exit(0);
    }
    EXPECT_EQ(WaitStatus(again), 0);
    EXPECT_FALSE(std::filesystem::exists(crash));
}
