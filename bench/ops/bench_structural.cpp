// Structural operators on a 256 x 256 x 64 x 8 r4 array against a plain copy of the same
// bytes (a fresh temporary, allocated as results are, and memcpy: the least any operator that
// makes a result must do), and the two transpositions against NumPy run in the same program.
// Targets: permute("tzyx") and trans("xy") within 2 x the copy and at least as fast as
// numpy.ascontiguousarray(numpy.transpose(...)); shiftx, flipy, padx and catt within 1.5 x.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "bench/bench_report.h"
#include "bench/ops/plain_copy.h"
#include "core/elementwise.h"
#include "ops/permute.h"
#include "ops/structural_join.h"
#include "ops/structural_shape.h"

namespace {

struct Arrays {
    Arrays() {
        a = space.NewData(TYPE_R4, 256, 256, 64, 8, 1, 1, "a");
        float* p = static_cast<float*>(a->data);
        for (uint64_t k = 0; k < a->Count(); ++k) p[k] = static_cast<float>(k % 9973);
        // The two halves in t, for a cat that makes a result of the same size.
        lo = space.NewData(TYPE_R4, 256, 256, 64, 4, 1, 1, "lo");
        hi = space.NewData(TYPE_R4, 256, 256, 64, 4, 1, 1, "hi");
        std::memcpy(lo->data, a->data, lo->Bytes());
        std::memcpy(hi->data, static_cast<char*>(a->data) + lo->Bytes(), hi->Bytes());
        const char* texts[] = {"tzyx", "xy"};
        for (int k = 0; k < 2; ++k) {
            CZrkData* t = space.NewData(TYPE_N1, std::strlen(texts[k]), 1, 1, 1, 1, 1, "");
            std::memcpy(t->data, texts[k], std::strlen(texts[k]));
            (k ? xy : tzyx) = t;
        }
        one = space.NewData(TYPE_I4, 1, 1, 1, 1, 1, 1, "");
        *static_cast<int32_t*>(one->data) = 3;
    }
    CDataSpace space;
    CZrkData *a, *lo, *hi, *tzyx, *xy, *one;
};

Arrays& Data() {
    static Arrays arrays;
    return arrays;
}

// Runs an operator and drops its result, as an evaluation's temporary list does.
template <class F>
void RunOp(benchmark::State& state, F&& op) {
    for (auto _ : state) {
        CDataSpace temp;
        benchmark::DoNotOptimize(op(temp));
    }
}

void PlainCopy(benchmark::State& state) { PlainCopyOf(state, Data().a); }

void PermuteTzyx(benchmark::State& s) {
    RunOp(s, [](CDataSpace& t) { return Permute(t, Data().tzyx, Data().a); });
}
void TransXy(benchmark::State& s) {
    RunOp(s, [](CDataSpace& t) { return Trans(t, Data().xy, Data().a); });
}
void ShiftX(benchmark::State& s) {
    RunOp(s, [](CDataSpace& t) { return Shift(t, 0, Data().a, Data().one); });
}
void FlipY(benchmark::State& s) {
    RunOp(s, [](CDataSpace& t) { return Flip(t, 1, Data().a); });
}
void PadX(benchmark::State& s) {
    RunOp(s, [](CDataSpace& t) { return Pad(t, 0, Data().a, 256); });
}
void CatT(benchmark::State& s) {
    RunOp(s, [](CDataSpace& t) { return Cat(t, 3, Data().lo, Data().hi); });
}

BENCHMARK(PlainCopy)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(PermuteTzyx)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(TransXy)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(ShiftX)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(FlipY)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(PadX)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(CatT)->Unit(benchmark::kMillisecond)->MinTime(1.0);

// Milliseconds per call of the two NumPy transpositions; 0 when NumPy did not run.
void NumpyTimes(double* tzyx, double* xy) {
    const std::vector<double> ms = PeerFigures("numpy_transpose.py", "", 2);
    *tzyx = ms.empty() ? 0 : ms[0];
    *xy = ms.empty() ? 0 : ms[1];
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    Data();
    CRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    double np_tzyx, np_xy;
    NumpyTimes(&np_tzyx, &np_xy);
    const double copy = reporter.Time("PlainCopy");
    std::printf("256x256x64x8 r4, plain copy %.1f ms\n", copy);
    const struct {
        const char* name;
        const char* label;
        double bound;
        double numpy;
    } rows[] = {{"PermuteTzyx", "permute(\"tzyx\")", 2.0, np_tzyx},
                {"TransXy", "trans(\"xy\")", 2.0, np_xy},
                {"ShiftX", "shiftx", 1.5, 0},
                {"FlipY", "flipy", 1.5, 0},
                {"PadX", "padx", 1.5, 0},
                {"CatT", "catt", 1.5, 0}};
    for (const auto& row : rows) {
        const double t = reporter.Time(row.name);
        if (t <= 0 || copy <= 0) continue;
        std::printf("%-16s %7.1f ms  / plain copy = %.2f (target <= %.1f)", row.label, t, t / copy,
                    row.bound);
        if (row.numpy > 0)
            std::printf("  / numpy %.1f ms = %.2f (target <= 1.00)", row.numpy, t / row.numpy);
        std::printf("\n");
    }
    benchmark::Shutdown();
    return 0;
}
