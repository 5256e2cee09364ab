// Evaluation speed: a whole-array equation against NumPy doing the same on float32, and a
// short scalar equation, parse and all.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "core/data_space.h"
#include "eval/eval.h"

namespace {

constexpr res_t kNx = 4096, kNy = 4096, kNz = 4;

void MakeArray() {
    CDataSpace& ds = GlobalDataSpace();
    if (ds.FindData("a")) return;
    ds.SetUnique();
    CZrkData* a = ds.NewData(TYPE_R4, kNx, kNy, kNz, 1, 1, 1, "a");
    auto* p = static_cast<float*>(a->Data());
    for (uint64_t k = 0; k < a->Count(); ++k) p[k] = static_cast<float>(k % 1000) * 0.001f;
}

double RunOnce(const char* text) {
    const auto t0 = std::chrono::steady_clock::now();
    CEvalLines ev(GlobalDataSpace());
    if (ev.Eval(nullptr, nullptr, text, nullptr)) std::fprintf(stderr, "evaluation failed\n");
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

void BM_ScaleOffset(benchmark::State& state) {
    MakeArray();
    for (auto _ : state) RunOnce("b = a * 2 + 1");
    state.SetBytesProcessed(state.iterations() * kNx * kNy * kNz * 4);
}
BENCHMARK(BM_ScaleOffset)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_ShortEquation(benchmark::State& state) {
    GlobalDataSpace().SetUnique();
    RunOnce("sa = 1.5; sb = 2;");
    for (auto _ : state) RunOnce("sc = sa + sb * 2");
}
BENCHMARK(BM_ShortEquation)->Unit(benchmark::kMicrosecond);

double BestOf(int runs, const char* text) {
    double best = 1e30;
    for (int k = 0; k < runs; ++k) best = std::min(best, RunOnce(text));
    return best;
}

// The same equation in NumPy, best of five, in seconds; negative when it can't run.
double NumpySeconds() {
    const std::string cmd = std::string(QUELMOR_PYTHON) +
                            " -c \"import numpy as np, time\n"
                            "a = (np.arange(4*4096*4096) % 1000).astype(np.float32) * 0.001\n"
                            "a = a.reshape(4, 4096, 4096)\n"
                            "best = 1e30\n"
                            "for _ in range(5):\n"
                            "    t = time.perf_counter(); b = a * 2 + 1; del b\n"
                            "    best = min(best, time.perf_counter() - t)\n"
                            "print(best)\"";
    FILE* p = popen(cmd.c_str(), "r");
    if (!p) return -1;
    double seconds = -1;
    if (std::fscanf(p, "%lf", &seconds) != 1) seconds = -1;
    pclose(p);
    return seconds;
}

// The memory bound: one plain pass that reads a and writes b, into a block already touched,
// as the evaluator's block is after its first run; best of five, in seconds.
double PlainLoopSeconds() {
    const CZrkData* a = GlobalDataSpace().FindData("a");
    const float* x = static_cast<const float*>(a->Data());
    const uint64_t n = a->Count();
    std::unique_ptr<float[]> b(new float[n]);
    double best = 1e30;
    for (int k = 0; k < 6; ++k) {
        const auto t0 = std::chrono::steady_clock::now();
        for (uint64_t i = 0; i < n; ++i) b[i] = x[i] * 2 + 1;
        benchmark::DoNotOptimize(b.get());
        const double s =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        if (k > 0) best = std::min(best, s);
    }
    return best;
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    MakeArray();
    const double ours = BestOf(5, "b = a * 2 + 1");
    const double numpy = NumpySeconds();
    const double plain = PlainLoopSeconds();
    std::printf(
        "b = a * 2 + 1 on r4 [4096][4096][4]: %.1f ms, numpy float32 %.1f ms, ratio %.2f "
        "(below 1 is faster than numpy)\n",
        ours * 1e3, numpy * 1e3, numpy > 0 ? ours / numpy : 0.0);
    std::printf("plain loop reading a and writing b once: %.1f ms, ratio %.2f (bound 1.2)\n",
                plain * 1e3, ours / plain);
    GlobalDataSpace().SetUnique();
    RunOnce("sa = 1.5; sb = 2;");
    const double scalar = BestOf(1000, "sc = sa + sb * 2");
    std::printf("sc = sa + sb * 2: %.2f us best of 1000 (bound 20 us)\n", scalar * 1e6);
    benchmark::Shutdown();
    return 0;
}
