// ft("xy", d0, 1, 0, 1) on a 256 x 256 x 64 complex r4 array and mrft("xy", e0, 0, 0, 0) on
// 250 x 250 x 64, called through their function-table rows as an equation does, against
// scipy.fft.fft2 on complex64 arrays of the same shapes run in the same program.
// Target: at least as fast as SciPy.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "bench/bench_report.h"
#include "bench/ops/plain_copy.h"
#include "core/elementwise.h"
#include "ops/function_rows.h"

namespace {

CZrkData* RandomComplex(CDataSpace& s, res_t n) {
    CZrkData* a = s.NewData(TYPE_CR4, n, n, 64, 1, 1, 1, "");
    std::mt19937 g(7);
    std::normal_distribution<float> u;
    float* p = static_cast<float*>(a->data);
    for (uint64_t k = 0; k < 2 * a->Count(); ++k) p[k] = u(g);
    return a;
}

CZrkData* Number(CDataSpace& s, int32_t v) {
    CZrkData* a = s.NewData(TYPE_I4, 1, 1, 1, 1, 1, 1, "");
    *static_cast<int32_t*>(a->data) = v;
    return a;
}

struct Arrays {
    Arrays() {
        d0 = RandomComplex(space, 256);
        e0 = RandomComplex(space, 250);
        xy = space.NewData(TYPE_N1, 2, 1, 1, 1, 1, 1, "");
        std::memcpy(xy->data, "xy", 2);
        zero = Number(space, 0);
        one = Number(space, 1);
    }
    CDataSpace space;
    CZrkData *d0, *e0, *xy, *zero, *one;
};

Arrays& Data() {
    static Arrays arrays;
    return arrays;
}

// Runs a general function's row and drops its result, as an evaluation's temporary list does.
void RunRow(benchmark::State& state, const char* name, CZrkData* const (&args)[5]) {
    InstallFunctions();
    const CFuncRow* row = FunctionRow(FunctionIndex(name));
    const int nargs = args[4] ? 5 : 4;
    for (auto _ : state) {
        CDataSpace temp;
        CZrkData* in[5];
        std::memcpy(in, args, sizeof in);
        CZrkData* out = nullptr;
        if (row->handler(&out, temp, in, nargs)) state.SkipWithError(err_msg.c_str());
        benchmark::DoNotOptimize(out);
    }
}

void FtXY(benchmark::State& s) {
    Arrays& d = Data();
    RunRow(s, "ft", {d.xy, d.d0, d.one, d.zero, d.one});
}
void MrftXY(benchmark::State& s) {
    Arrays& d = Data();
    RunRow(s, "mrft", {d.xy, d.e0, d.zero, d.zero, d.zero});
}

// The parts: one direction each, and the least any result of that size costs (a fresh
// temporary and a copy into it).
void FtX(benchmark::State& s) {
    Arrays& d = Data();
    RunRow(s, "ftx", {d.d0, d.one, d.zero, d.one, nullptr});
}
void FtY(benchmark::State& s) {
    Arrays& d = Data();
    RunRow(s, "fty", {d.d0, d.one, d.zero, d.one, nullptr});
}
void PlainCopy(benchmark::State& state) { PlainCopyOf(state, Data().d0); }

BENCHMARK(PlainCopy)->Unit(benchmark::kMillisecond)->MinTime(0.5);
BENCHMARK(FtX)->Unit(benchmark::kMillisecond)->MinTime(0.5);
BENCHMARK(FtY)->Unit(benchmark::kMillisecond)->MinTime(0.5);
BENCHMARK(FtXY)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(MrftXY)->Unit(benchmark::kMillisecond)->MinTime(1.0);

// Milliseconds per call of scipy.fft.fft2 on both shapes; 0 when SciPy did not run.
void ScipyTimes(double* t256, double* t250) {
    const std::vector<double> ms = PeerFigures("scipy_transform.py", "", 2);
    *t256 = ms.empty() ? 0 : ms[0];
    *t250 = ms.empty() ? 0 : ms[1];
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    Data();
    CRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    double sp256, sp250;
    ScipyTimes(&sp256, &sp250);
    const struct {
        const char* name;
        const char* label;
        double scipy;
    } rows[] = {{"FtXY", "ft(\"xy\",d0,1,0,1) 256x256x64", sp256},
                {"MrftXY", "mrft(\"xy\",e0,0,0,0) 250x250x64", sp250}};
    for (const auto& row : rows) {
        const double t = reporter.Time(row.name);
        if (t <= 0) continue;
        std::printf("%-34s %7.1f ms", row.label, t);
        if (row.scipy > 0)
            std::printf("  / scipy.fft.fft2 %.1f ms = %.2f (target <= 1.00)", row.scipy,
                        t / row.scipy);
        else
            std::printf("  (scipy did not run)");
        std::printf("\n");
    }
    benchmark::Shutdown();
    return 0;
}
