// conv of a 512 x 512 r4 image with a 7 x 7 kernel against scipy.signal.convolve2d (a direct
// sum, mode 'valid') on the same numbers, run from this program. Target: at least as fast.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>

#include "bench/bench_report.h"
#include "ops/convolution.h"

namespace {

struct Arrays {
    Arrays() {
        image = space.NewData(TYPE_R4, 512, 512, 1, 1, 1, 1, "image");
        kernel = space.NewData(TYPE_R4, 7, 7, 1, 1, 1, 1, "kernel");
        std::mt19937 g(99);
        std::uniform_real_distribution<float> u(-1, 1);
        for (CZrkData* a : {image, kernel}) {
            float* p = static_cast<float*>(a->data);
            for (uint64_t k = 0; k < a->Count(); ++k) p[k] = u(g);
        }
    }
    CDataSpace space;
    CZrkData *image, *kernel;
};

Arrays& Data() {
    static Arrays arrays;
    return arrays;
}

void Conv512(benchmark::State& state) {
    for (auto _ : state) {
        CDataSpace temp;
        benchmark::DoNotOptimize(Conv(temp, Data().image, Data().kernel));
    }
}
BENCHMARK(Conv512)->Unit(benchmark::kMillisecond)->MinTime(1.0);

void Save(const std::filesystem::path& file, const CZrkData* a) {
    std::ofstream(file, std::ios::binary)
        .write(static_cast<const char*>(a->data), static_cast<std::streamsize>(a->Bytes()));
}

// Milliseconds per call of SciPy on the same image and kernel; 0 when it did not run.
double ScipyTime() {
    char pattern[] = "/tmp/quelmor_bench_conv_XXXXXX";
    if (!mkdtemp(pattern)) return 0;
    const std::filesystem::path dir = pattern;
    Save(dir / "image.bin", Data().image);
    Save(dir / "kernel.bin", Data().kernel);
    const std::vector<double> ms = PeerFigures("scipy_convolution.py", dir.string(), 1);
    std::filesystem::remove_all(dir);
    return ms.empty() ? 0 : ms[0];
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    Data();
    CRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const double ours = reporter.Time("Conv512"), scipy = ScipyTime();
    std::printf("conv 512x512 r4 with 7x7: %.3f ms\n", ours);
    if (scipy > 0 && ours > 0)
        std::printf(
            "scipy.signal.convolve2d valid: %.3f ms  ours / scipy = %.3f (target <= 1.00)\n", scipy,
            ours / scipy);
    else
        std::printf("scipy.signal.convolve2d did not run\n");
    benchmark::Shutdown();
    return 0;
}
