// The pixel pipeline on a 512 x 512 r4 plane to 8 and to 32 bits, against a memcpy of the
// plane and NumPy's take-and-clip form of the same picture.
#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

#include "bench/bench_report.h"
#include "core/data_space.h"
#include "display/image_bits.h"

namespace {

CDataSpace& Space() {
    static CDataSpace space;
    return space;
}

CZrkData* Plane() {
    static CZrkData* a = [] {
        CZrkData* r = Space().NewData(TYPE_R4, 512, 512, 1, 1, 1, 1, "plane");
        std::mt19937 gen(3);
        std::uniform_real_distribution<float> u(-20, 280);
        auto* f = static_cast<float*>(r->Data());
        for (int i = 0; i < 512 * 512; ++i) f[i] = u(gen);
        return r;
    }();
    return a;
}

CPlane& Look() {
    static CPlane p = [] {
        CPlane q;
        q.window = 256, q.level = 128;
        q.SetPalette(7, "grey", nullptr);
        return q;
    }();
    return p;
}

void PlaneCopy(benchmark::State& state) {
    std::vector<char> out(Plane()->Bytes());
    for (auto _ : state) {
        std::memcpy(out.data(), Plane()->Data(), out.size());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
}

void Bits(benchmark::State& state, int bits) {
    const uint64_t page[4] = {0, 0, 0, 0};
    CFrame frame;
    for (auto _ : state) {
        ImageBits(&Space(), Plane(), Look(), page, bits, frame);
        benchmark::DoNotOptimize(frame.pixels.data());
    }
}
void Bits8(benchmark::State& state) { Bits(state, 8); }
void Bits32(benchmark::State& state) { Bits(state, 32); }

BENCHMARK(PlaneCopy)->Unit(benchmark::kMillisecond)->MinTime(0.5);
BENCHMARK(Bits8)->Unit(benchmark::kMillisecond)->MinTime(0.5);
BENCHMARK(Bits32)->Unit(benchmark::kMillisecond)->MinTime(0.5);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    Plane();
    CRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const std::vector<double> numpy = PeerFigures("numpy_image_bits.py", "", 2);
    const double copy = reporter.Time("PlaneCopy");
    std::printf("512x512 r4 plane, memcpy %.3f ms\n", copy);
    const char* names[2] = {"Bits8", "Bits32"};
    for (int k = 0; k < 2; ++k) {
        const double t = reporter.Time(names[k]);
        std::printf("ImageBits to %2d bits %7.3f ms  / memcpy = %.1f", k ? 32 : 8, t, t / copy);
        if (!numpy.empty())
            std::printf("  / numpy %.3f ms = %.2f (target < 1.00)", numpy[k], t / numpy[k]);
        std::printf("\n");
    }
    benchmark::Shutdown();
    return 0;
}
