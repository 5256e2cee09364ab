// minv("xy", d0, 1e-6) on a stack of 10 000 complex r4 8 x 8 matrices against
// numpy.linalg.pinv on the same stack, run from this program (numpy_matrix_pinv.py).
// Target: at least as fast as NumPy. The product over the same stack is shown for scale.
#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <string>

#include "bench/bench_report.h"
#include "ops/matrix.h"

namespace {

constexpr int kCount = 10000;

struct Arrays {
    Arrays() {
        a = space.NewData(TYPE_CR4, 8, 8, kCount, 1, 1, 1, "d0");
        std::mt19937 g(7);
        std::uniform_real_distribution<float> u(-1, 1);
        float* p = static_cast<float*>(a->data);
        for (uint64_t k = 0; k < 2 * a->Count(); ++k) p[k] = u(g);
        xy = space.NewData(TYPE_N1, 2, 1, 1, 1, 1, 1, "");
        std::memcpy(xy->data, "xy", 2);
    }
    CDataSpace space;
    CZrkData *a, *xy;
};

Arrays& Data() {
    static Arrays arrays;
    return arrays;
}

void Minv(benchmark::State& state) {
    for (auto _ : state) {
        CDataSpace temp;
        benchmark::DoNotOptimize(MatrixInverse(temp, Data().xy, Data().a, 1e-6));
    }
}
void MulXy(benchmark::State& state) {
    for (auto _ : state) {
        CDataSpace temp;
        benchmark::DoNotOptimize(MatrixMul(temp, Data().a, Data().a, 0, 1));
    }
}

BENCHMARK(Minv)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(MulXy)->Unit(benchmark::kMillisecond)->MinTime(1.0);

// The ratio reporter, also keeping processor time: on a shared machine the wall clock of
// either side carries the other users' load.
class CpuReporter : public CRatioReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) cpu[run.run_name.function_name] = run.GetAdjustedCPUTime();
        CRatioReporter::ReportRuns(runs);
    }
    std::map<std::string, double> cpu;
};

// Wall and processor milliseconds of NumPy's pinv of the same stack; false when NumPy did
// not run.
bool NumpyPinv(double* wall, double* cpu) {
    *wall = *cpu = 0;
    char path[] = "/tmp/quelmor_bench_matrix_XXXXXX";
    const int fd = mkstemp(path);
    if (fd < 0) return false;
    close(fd);
    std::ofstream(path, std::ios::binary)
        .write(static_cast<const char*>(Data().a->data),
               static_cast<std::streamsize>(Data().a->Bytes()));
    const std::vector<double> times =
        PeerFigures("numpy_matrix_pinv.py", std::string(path) + " " + std::to_string(kCount), 2);
    std::remove(path);
    if (times.empty()) return false;
    *wall = times[0];
    *cpu = times[1];
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    Data();
    CpuReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    double np_wall, np_cpu;
    const bool numpy = NumpyPinv(&np_wall, &np_cpu);
    const double ours = reporter.Time("Minv"), ours_cpu = reporter.cpu["Minv"];
    std::printf(
        "10000 x complex r4 [8][8]: minv(\"xy\", d0, 1e-6) %.1f ms (cpu %.1f ms), "
        "*xy %.1f ms\n",
        ours, ours_cpu, reporter.Time("MulXy"));
    if (numpy && ours > 0 && np_wall > 0 && np_cpu > 0)
        std::printf(
            "numpy.linalg.pinv %.1f ms (cpu %.1f ms); minv / numpy = %.2f wall, %.2f cpu "
            "(target <= 1.00)\n",
            np_wall, np_cpu, ours / np_wall, ours_cpu / np_cpu);
    else
        std::printf("numpy.linalg.pinv did not run\n");
    benchmark::Shutdown();
    return 0;
}
