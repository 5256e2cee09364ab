// Region statistics on a 2048 x 2048 r4 plane under an ellipse, and the mask of a 1000-point
// polygon at that size, against NumPy's masked mean and std and skimage.draw.polygon.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

#include "bench/bench_report.h"
#include "core/data_space.h"
#include "display/roi_mask.h"
#include "display/roi_stats.h"

namespace {

constexpr res_t kSide = 2048;

void SetRecord(const char* name, const std::vector<float>& v) {
    GlobalDataSpace().DelData(name);
    CZrkData* r = GlobalDataSpace().NewData(TYPE_R4, v.size(), 1, 1, 1, 1, 1, name);
    std::memcpy(r->data, v.data(), v.size() * sizeof(float));
}

CZrkData* Plane() {
    static CZrkData* a = [] {
        CZrkData* r = GlobalDataSpace().NewData(TYPE_R4, kSide, kSide, 1, 1, 1, 1, "plane");
        std::mt19937 gen(5);
        std::normal_distribution<float> g(100, 15);
        auto* f = static_cast<float*>(r->data);
        for (res_t i = 0; i < kSide * kSide; ++i) f[i] = g(gen);
        SetRecord("roi_ellip", {200, 300, 1800, 1700});
        // A star-like outline of 1000 points round the centre.
        std::vector<float> pts;
        for (int k = 0; k < 1000; ++k) {
            const double t = 2 * M_PI * k / 1000, rad = 700 + 250 * std::sin(7 * t);
            pts.push_back(static_cast<float>(1024 + rad * std::cos(t)));
            pts.push_back(static_cast<float>(1024 + rad * std::sin(t)));
        }
        SetRecord("roi_draw", pts);
        return r;
    }();
    return a;
}

void RoiEllipse(benchmark::State& state) {
    CRoiStats s;
    for (auto _ : state) {
        RoiStats(Plane(), 0, ROI_ELLIPSE, 0, &s);
        benchmark::DoNotOptimize(s.mean);
    }
}

// The mask build alone, the first half of every region statistic.
void MaskEllipse(benchmark::State& state) {
    Plane();
    for (auto _ : state) benchmark::DoNotOptimize(GetRoiMask(ROI_ELLIPSE, kSide, kSide)->data);
}

void MaskPolygon(benchmark::State& state) {
    Plane();
    for (auto _ : state) benchmark::DoNotOptimize(GetRoiMask(ROI_DRAW, kSide, kSide)->data);
}

BENCHMARK(RoiEllipse)->Unit(benchmark::kMillisecond)->MinTime(0.5);
BENCHMARK(MaskEllipse)->Unit(benchmark::kMillisecond)->MinTime(0.5);
BENCHMARK(MaskPolygon)->Unit(benchmark::kMillisecond)->MinTime(0.5);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    Plane();
    CRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const std::vector<double> peer = PeerFigures("numpy_roi.py", "", 2);
    const double stats = reporter.Time("RoiEllipse"), mask = reporter.Time("MaskPolygon");
    std::printf("CalcRoi 2048x2048 r4 under an ellipse %.3f ms", stats);
    if (!peer.empty())
        std::printf("  / numpy a[m].mean(), a[m].std() %.3f ms = %.2f", peer[0], stats / peer[0]);
    std::printf("\n  of which the ellipse's mask %.3f ms", reporter.Time("MaskEllipse"));
    std::printf("\nGetRoiMask 1000-point polygon at 2048x2048 %.3f ms", mask);
    if (!peer.empty())
        std::printf("  / skimage.draw.polygon %.3f ms = %.2f", peer[1], mask / peer[1]);
    std::printf("\n");
    return 0;
}
