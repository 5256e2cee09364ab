// Runs the registered benchmarks and keeps each one's time per iteration, so that a
// benchmark program can print its ratio to a peer or a bound in the same run.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

class CRatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) seconds[run.run_name.function_name] = run.GetAdjustedRealTime();
        ConsoleReporter::ReportRuns(runs);
    }
    // Time per iteration in the benchmark's own unit, 0 when it did not run.
    double Time(const std::string& name) const {
        auto it = seconds.find(name);
        return it == seconds.end() ? 0 : it->second;
    }

  private:
    std::map<std::string, double> seconds;
};

// Runs a peer script of bench/ (Debian's python3) with `args` and reads the `count` numbers it
// prints; empty when the peer did not run or printed fewer.
inline std::vector<double> PeerFigures(const std::string& script, const std::string& args,
                                       size_t count) {
    const std::string command =
        std::string(QUELMOR_PYTHON) + " " + QUELMOR_BENCH_DIR + "/" + script + " " + args;
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::vector<double> figures(count);
    for (double& f : figures)
        if (!pipe || std::fscanf(pipe.get(), "%lf", &f) != 1) return {};
    return figures;
}

// The shortest of `reps` timed calls of f, in seconds: the figure least stretched by a
// shared machine.
template <class F>
double BestSeconds(F&& f, int reps = 3) {
    double best = 1e30;
    for (int r = 0; r < reps; ++r) {
        const auto t0 = std::chrono::steady_clock::now();
        f();
        const std::chrono::duration<double> d = std::chrono::steady_clock::now() - t0;
        best = std::min(best, d.count());
    }
    return best;
}
