#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "core/report.h"
#include "shell/crash_hooks.h"
#include "shell/shell_host.h"
#include "shell/trace.h"

namespace {

std::string Slurp(const std::string& path) {
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// The crash writer of the tests: one "w" per write, so a double write shows.
int AppendW(const char* path) {
    FILE* f = std::fopen(path, "a");
    if (!f) return 1;
    std::fputs("w", f);
    return std::fclose(f) == 0 ? 0 : 1;
}

int FailingWrite(const char*) { return 1; }

volatile sig_atomic_t g_previous_runs = 0;
void PreviousHandler(int) { g_previous_runs = g_previous_runs + 1; }

class TraceTest : public ::testing::Test {
  protected:
    void SetUp() override {
        file_ = ::testing::TempDir() + "quelmor_crash_" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".zrk";
        std::remove(file_.c_str());
        saved_ = CrashHooks();
    }
    void TearDown() override {
        CrashHooks() = saved_;
        std::remove(file_.c_str());
    }

    // Runs `body` in a child with the crash trace installed; returns the wait status.
    template <class F>
    int InChild(F body) {
        const pid_t pid = fork();
        if (pid == 0) {
            CrashHooks().write = &AppendW;
            body();
            _exit(0);
        }
        int status = 0;
        waitpid(pid, &status, 0);
        return status;
    }

    std::string file_;
    CCrashHooks saved_;
};

TEST_F(TraceTest, SegvWritesTheCrashFileOnceAndChainsToThePreviousHandler) {
    const int status = InChild([&] {
        std::signal(SIGSEGV, &PreviousHandler);
        CTrace trace;
        trace.SetCrashFile(file_.c_str());
        raise(SIGSEGV);
        raise(SIGSEGV);
        _exit(g_previous_runs == 2 && trace.Counter() == 2 ? 40 : 41);
    });
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 40);
    EXPECT_EQ(Slurp(file_), "w");
}

TEST_F(TraceTest, DefaultActionStillEndsTheProcess) {
    for (int sig : {SIGSEGV, SIGFPE, SIGBUS}) {
        std::remove(file_.c_str());
        const int status = InChild([&] {
            std::signal(sig, SIG_DFL);
            CTrace trace;
            trace.SetCrashFile(file_.c_str());
            raise(sig);
            _exit(3);  // never reached
        });
        ASSERT_TRUE(WIFSIGNALED(status)) << sig;
        EXPECT_EQ(WTERMSIG(status), sig);
        EXPECT_EQ(Slurp(file_), "w") << sig;
    }
}

TEST_F(TraceTest, TerminateWritesOnceThenAborts) {
    const int status = InChild([&] {
        std::signal(SIGABRT, SIG_DFL);
        CTrace trace;
        trace.SetCrashFile(file_.c_str());
        std::terminate();
    });
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGABRT);
    EXPECT_EQ(Slurp(file_), "w");
}

TEST_F(TraceTest, WithoutAHookNothingIsWritten) {
    const int status = InChild([&] {
        CrashHooks().write = nullptr;
        std::signal(SIGSEGV, &PreviousHandler);
        CTrace trace;
        trace.SetCrashFile(file_.c_str());
        raise(SIGSEGV);
        _exit(g_previous_runs == 1 ? 40 : 41);
    });
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 40);
    EXPECT_FALSE(std::ifstream(file_).good());
}

TEST_F(TraceTest, DestructorRestoresThePreviousHandlers) {
    struct sigaction before = {}, after = {};
    sigaction(SIGFPE, nullptr, &before);
    const std::terminate_handler terminate_before = std::get_terminate();
    {
        CTrace trace;
        struct sigaction during = {};
        sigaction(SIGFPE, nullptr, &during);
        EXPECT_TRUE(during.sa_flags & SA_SIGINFO);
        EXPECT_NE(std::get_terminate(), terminate_before);
    }
    sigaction(SIGFPE, nullptr, &after);
    EXPECT_EQ(after.sa_handler, before.sa_handler);
    EXPECT_EQ(std::get_terminate(), terminate_before);
}

TEST_F(TraceTest, LocationIsCutTo520Characters) {
    CTrace trace;
    trace.Set("CView1d::OnDraw");
    EXPECT_STREQ(trace.Text(), "CView1d::OnDraw");
    const std::string long_name(600, 'k');
    trace.Set(long_name.c_str());
    EXPECT_EQ(std::string(trace.Text()), long_name.substr(0, 519));
    trace.Set(nullptr);
    EXPECT_STREQ(trace.Text(), "");
}

// A shell host that answers the flaky question with a preset answer.
class CAnsweringHost : public CShellHost {
  public:
    using CShellHost::CShellHost;
    bool AskYesNo(const std::string& question) override {
        questions.push_back(question);
        return answer;
    }
    void Message(const std::string& text) override { messages.push_back(text); }
    void History(const std::string& line) override { history.push_back(line); }

    bool answer = false;
    std::vector<std::string> questions, messages, history;
};

TEST_F(TraceTest, FlakyPathAsksAndWritesOnYes) {
    CTrace trace;
    trace.SetCrashFile(file_.c_str());
    CAnsweringHost host(trace);
    CScopedHost scope(host);

    Host().Trace("CDataSpace::NewData");
    EXPECT_STREQ(trace.Text(), "CDataSpace::NewData");

    CrashHooks().write = &AppendW;
    host.answer = false;
    Host().Flaky("bad things");
    ASSERT_EQ(host.questions.size(), 1u);
    EXPECT_EQ(host.questions[0],
              "Quelmor is FLAKY; last action incomplete.\nlast known location:\n\t"
              "CDataSpace::NewData\nsave workspace in backup crash file?\n\ng_InitBitmap 0");
    EXPECT_TRUE(host.messages.empty());
    EXPECT_FALSE(std::ifstream(file_).good());
    EXPECT_EQ(host.history.at(0), "error caught: bad things\r\n");

    host.answer = true;
    Host().Flaky("again");
    EXPECT_EQ(Slurp(file_), "w");
    EXPECT_EQ(host.messages.at(0), "save complete");

    CrashHooks().write = &FailingWrite;
    Host().Flaky("and again");
    EXPECT_EQ(host.messages.at(1), "save failed");
}

TEST_F(TraceTest, GuardedMethodsReachTheFlakyPath) {
    CTrace trace;
    CAnsweringHost host(trace);
    CScopedHost scope(host);
    const int result = Guarded("CFormDesktop::OnFree", 7, []() -> int { throw 1; });
    EXPECT_EQ(result, 7);
    EXPECT_STREQ(trace.Text(), "CFormDesktop::OnFree");
    ASSERT_EQ(host.questions.size(), 1u);
    EXPECT_NE(host.questions[0].find("\tCFormDesktop::OnFree\n"), std::string::npos);
}

}  // namespace
