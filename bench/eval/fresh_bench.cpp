// Equations as a user types them: once, in a fresh quelmor-calc process, against NumPy in a
// fresh /usr/bin/python3. Each figure is the median time of the whole process with the line
// less the median of the same process without it; the two programs run alternately. The
// ratio NumPy / Quelmor is the speed-up (goal: at least 1.5 for each line), and the peak
// memory of b = a * 2 + 1 is held to the two arrays and one temporary of the result's size.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

extern char** environ;

namespace {

constexpr int kRuns = 7;
constexpr double kElements = 4096.0 * 4096.0 * 4;

struct CRun {
    double seconds = 0;
    double peak_mb = 0;
};

// Runs argv to its end; wall time and the child's peak resident size.
CRun Spawn(const std::vector<std::string>& args) {
    std::vector<char*> argv;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
    const auto t0 = std::chrono::steady_clock::now();
    pid_t pid = 0;
    CRun run;
    if (posix_spawn(&pid, argv[0], &quiet, nullptr, argv.data(), environ) != 0) return run;
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    run.peak_mb = usage.ru_maxrss / 1024.0;
    posix_spawn_file_actions_destroy(&quiet);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "failed: %s ...\n", args.back().c_str());
        run.seconds = -1;
    }
    return run;
}

double Median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

std::vector<std::string> Calc(const std::vector<std::string>& lines) {
    std::vector<std::string> args = {QUELMOR_CALC};
    for (const std::string& l : lines) {
        args.push_back("-e");
        args.push_back(l);
    }
    return args;
}

std::vector<std::string> Python(const std::string& code) {
    return {QUELMOR_PYTHON, "-c", "import numpy as np\n" + code};
}

struct CCase {
    const char* title;
    std::vector<std::string> calc_base, calc_line;
    std::string numpy_base, numpy_line;
};

// The line's own time in each program, median of kRuns alternating runs; the peak of the
// Quelmor run with the line.
struct CFigures {
    double ours = 0, numpy = 0, peak_mb = 0;
};

CFigures Measure(const CCase& c) {
    std::vector<double> ours_base, ours_line, numpy_base, numpy_line, peaks;
    for (int k = 0; k < kRuns; ++k) {
        ours_base.push_back(Spawn(Calc(c.calc_base)).seconds);
        numpy_base.push_back(Spawn(Python(c.numpy_base)).seconds);
        const CRun line = Spawn(Calc(c.calc_line));
        ours_line.push_back(line.seconds);
        peaks.push_back(line.peak_mb);
        numpy_line.push_back(Spawn(Python(c.numpy_line)).seconds);
    }
    return {Median(ours_line) - Median(ours_base), Median(numpy_line) - Median(numpy_base),
            *std::max_element(peaks.begin(), peaks.end())};
}

}  // namespace

int main() {
    std::printf("fresh processes, [4096][4096][4] arrays, median of %d runs each\n", kRuns);
    for (const bool complex : {false, true}) {
        const std::string cast = complex ? "(cr4)" : "";
        const std::string dtype = complex ? "np.complex64" : "np.float32";
        const std::string make_a = "a = ([4096][4096][4])" + cast + "1.5";
        const std::string make_b = "b = ([4096][4096][4])" + cast + "0.5";
        const std::string np_a = "a = np.full((4, 4096, 4096), 1.5, " + dtype + ")\n";
        const std::string np_b = "b = np.full((4, 4096, 4096), 0.5, " + dtype + ")\n";
        const double bytes = kElements * (complex ? 8 : 4) / (1 << 20);
        const CCase cases[] = {
            {"fill", {"x = 1"}, {make_a}, "", np_a},
            {"b = a * 2 + 1", {make_a}, {make_a, "b = a * 2 + 1"}, np_a, np_a + "b = a * 2 + 1"},
            {"b = ((a*2+1)*3+4)*5",
             {make_a},
             {make_a, "b = ((a*2+1)*3+4)*5"},
             np_a,
             np_a + "b = ((a*2+1)*3+4)*5"},
            {"c = sqrt(a*a + b*b)",
             {make_a, make_b},
             {make_a, make_b, "c = sqrt(a*a + b*b)"},
             np_a + np_b,
             np_a + np_b + "c = np.sqrt(a*a + b*b)"},
        };
        for (const CCase& c : cases) {
            const CFigures f = Measure(c);
            std::printf("%-22s %-6s quelmor %7.1f ms  numpy %7.1f ms  ratio %.2f (goal 1.5)\n",
                        c.title, complex ? "cr4" : "r4", f.ours * 1e3, f.numpy * 1e3,
                        f.ours > 0 ? f.numpy / f.ours : 0.0);
            if (std::string(c.title) == "b = a * 2 + 1")
                std::printf("%-29s peak %.0f MB, bound %.0f MB (a, b and one temporary)\n", "",
                            f.peak_mb, 3 * bytes);
        }
    }
    return 0;
}
