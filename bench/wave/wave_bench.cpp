// Fourier layer against one measured FFTW 3-D plan and SciPy; median and separable filter
// throughput.
#include <benchmark/benchmark.h>
#include <fftw3.h>
#include <omp.h>

#include <chrono>
#include <cstdio>
#include <vector>

#include "bench/bench_report.h"
#include "wave/fft.h"
#include "wave/filter3d.h"
#include "wave/kernels.h"

namespace {

constexpr int kNx = 256, kNy = 256, kNz = 64;

void compare_fft() {
    size_t n = size_t(kNx) * kNy * kNz;
    auto* buf = static_cast<float*>(fftwf_malloc(sizeof(float) * 2 * n));
    for (size_t i = 0; i < 2 * n; ++i) buf[i] = float(i % 17) * 0.1f;
    auto* c = reinterpret_cast<fftwf_complex*>(buf);
    fftwf_plan fwd = fftwf_plan_dft_3d(kNz, kNy, kNx, c, c, FFTW_FORWARD, FFTW_MEASURE);
    fftwf_plan inv = fftwf_plan_dft_3d(kNz, kNy, kNx, c, c, FFTW_BACKWARD, FFTW_MEASURE);
    auto round_trip = [&] {
        GENERAL_cvfft_3d(buf, kNx, kNy, kNz, 1);
        GENERAL_cvfft_3d(buf, kNx, kNy, kNz, -1);
    };
    double ours = BestSeconds(round_trip, 5);
    const int threads = omp_get_max_threads();
    omp_set_num_threads(1);
    double one = BestSeconds(round_trip, 5);
    omp_set_num_threads(threads);
    double peer = BestSeconds(
        [&] {
            fftwf_execute(fwd);
            fftwf_execute(inv);
        },
        5);
    const std::vector<double> py = PeerFigures("scipy_fftn.py", "", 1);
    std::printf(
        "GENERAL_cvfft_3d 256x256x64 forward+inverse: %.1f ms on %d threads, %.1f ms on one\n",
        ours * 1e3, threads, one * 1e3);
    std::printf(
        "FFTW_MEASURE 3-D plan forward+inverse:       %.1f ms  ratio %.2f (bound 1.30), "
        "one thread %.2f\n",
        peer * 1e3, ours / peer, one / peer);
    if (!py.empty())
        std::printf(
            "scipy.fft.fftn+ifftn complex64, 2 workers:   %.1f ms  ratio %.2f (bound 1.00)\n",
            py[0], ours * 1e3 / py[0]);
    fftwf_destroy_plan(fwd);
    fftwf_destroy_plan(inv);
    fftwf_free(buf);
}

void BM_median_3x3(benchmark::State& state) {
    int dims[2] = {kNy, kNx}, win[2] = {3, 3};
    std::vector<float> in(size_t(kNx) * kNy * kNz), out(in.size());
    for (size_t i = 0; i < in.size(); ++i) in[i] = float((i * 7919) % 1000);
    for (auto _ : state)
        for (int z = 0; z < kNz; ++z)
            median_filter_2d(out.data() + size_t(z) * kNx * kNy, in.data() + size_t(z) * kNx * kNy,
                             win, dims);
    state.counters["Mpix/s"] = benchmark::Counter(double(in.size()) * state.iterations() / 1e6,
                                                  benchmark::Counter::kIsRate);
}

void BM_filter3d_11tap(benchmark::State& state) {
    std::vector<float> in(size_t(kNx) * kNy * kNz), out(in.size());
    for (size_t i = 0; i < in.size(); ++i) in[i] = float(i % 101);
    float k[11];
    for (int i = 0; i < 11; ++i) k[i] = 1.0f / (1 + (i - 5) * (i - 5));
    for (auto _ : state)
        filter3d_zeropad(in.data(), out.data(), kNx, kNy, kNz, k, 11, 1, k, 11, 1, k, 11, 1, 0);
    state.counters["Mpix/s"] = benchmark::Counter(double(in.size()) * state.iterations() / 1e6,
                                                  benchmark::Counter::kIsRate);
}

BENCHMARK(BM_median_3x3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_filter3d_11tap)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    compare_fft();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    fft_cleanup();
    return 0;
}
