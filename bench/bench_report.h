// Runs the registered benchmarks and keeps each one's time per iteration, so that a
// benchmark program can print its ratio to a peer or a bound in the same run.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>

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
