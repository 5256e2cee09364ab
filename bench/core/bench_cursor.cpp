// Converting a large r4 array to i2 through the cursor's block API, against a plain loop
// doing the same truncating conversion. Target: at least half the plain loop's speed.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <vector>

#include "bench/bench_report.h"
#include "core/data_cursor.h"

namespace {

constexpr uint64_t kCount = uint64_t{64} << 20;  // 64M elements

struct Arrays {
    Arrays() {
        src.SetHeader(TYPE_R4, 4096, 4096, 4, 1, 1, 1);
        dst.SetHeader(TYPE_I2, 4096, 4096, 4, 1, 1, 1);
        src.AllocateOrThrow();
        dst.AllocateOrThrow();
        float* s = static_cast<float*>(src.data);
        for (uint64_t k = 0; k < kCount; ++k) s[k] = static_cast<float>(k % 70001) - 35000.5f;
    }
    ~Arrays() {
        src.FreeData();
        dst.FreeData();
    }
    CZrkData src, dst;
};

Arrays& Data() {
    static Arrays arrays;
    return arrays;
}

void PlainLoop(benchmark::State& state) {
    const float* s = static_cast<const float*>(Data().src.data);
    int16_t* d = static_cast<int16_t*>(Data().dst.data);
    for (auto _ : state) {
        for (uint64_t k = 0; k < kCount; ++k)
            d[k] = static_cast<int16_t>(static_cast<int64_t>(s[k]));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * kCount * 6);
}

void CursorBlocks(benchmark::State& state) {
    CDataCursor<float> in(&Data().src), out(&Data().dst);
    std::vector<float> buf(4096);
    for (auto _ : state) {
        for (uint64_t k = 0; k < kCount; k += buf.size()) {
            in.GetIBlock(buf.data(), k, buf.size());
            out.SetIBlock(buf.data(), k, buf.size());
        }
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * kCount * 6);
}

BENCHMARK(PlainLoop)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(CursorBlocks)->Unit(benchmark::kMillisecond)->MinTime(1.0);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    Data();
    CRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const double plain = reporter.Time("PlainLoop"), cursor = reporter.Time("CursorBlocks");
    if (plain > 0 && cursor > 0)
        std::printf(
            "r4 -> i2, 64M elements: cursor speed / plain loop speed = %.2f (target >= 0.50)\n",
            plain / cursor);
    benchmark::Shutdown();
    return 0;
}
