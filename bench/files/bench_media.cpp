// MAT and AVI figures: loading a 100 MB r4 array from a compressed version 7 MAT file that
// scipy.io.savemat wrote, against scipy.io.loadmat of the same file; and Motion JPEG movie
// frames a second at 512 x 512.
//
//   QUELMOR_BENCH_TMP=/some/disk/folder bench_media    (default: the system temp folder)
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "bench/bench_report.h"
#include "core/data_space.h"
#include "core/window_space.h"
#include "display/display_entry.h"
#include "files/avi_file.h"
#include "files/mat_file.h"

namespace {

constexpr int kSide = 512;
constexpr int kFrames = 60;

std::filesystem::path Folder() {
    const char* env = std::getenv("QUELMOR_BENCH_TMP");
    static const std::filesystem::path dir =
        std::filesystem::path(env ? env : std::filesystem::temp_directory_path().string()) /
        ("quelmor_bench_media_" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    return dir;
}

std::string File(const char* name) { return (Folder() / name).string(); }

void LoadMat(benchmark::State& state) {
    for (auto _ : state) {
        CDataSpace space;
        FileEntry e;
        e.path = File("wave.mat");
        if (!ReadMatHeader(COpenOptions{}, e) || !LoadMatFile(COpenOptions{}, e, space) ||
            space.Count() != 1)
            state.SkipWithError(e.status.c_str());
    }
}

// A 512 x 512 8-bit view whose picture moves with the page, as a wave does.
class CWaveView : public CDisplayEntry {
  public:
    CWaveView() : CDisplayEntry(CLook(KIND_2D)) {}
    int RenderFrame(const uint64_t page[4], CFrame& f) override {
        f.width = f.height = kSide;
        f.bits = 8;
        f.stride = kSide;
        f.pixels.resize(static_cast<size_t>(kSide) * kSide);
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x)
                f.pixels[static_cast<size_t>(y) * kSide + x] =
                    static_cast<uint8_t>((x + 2 * y + 9 * page[0]) / 3);
        for (int k = 0; k < 256; ++k)
            f.palette[k][0] = static_cast<uint8_t>(k),
            f.palette[k][1] = static_cast<uint8_t>(k / 2),
            f.palette[k][2] = static_cast<uint8_t>(255 - k);
        return 1;
    }
};

void Movie(benchmark::State& state, int encoder) {
    CZrkData data;
    data.SetHeader(TYPE_R4, kSide, kSide, kFrames, 1, 1, 1);
    auto view = std::make_unique<CWaveView>();
    std::snprintf(view->name, sizeof view->name, "wave");
    view->data[0] = &data;
    CDisplayEntry* listed =
        static_cast<CDisplayEntry*>(GlobalWindowSpace().NewData(std::move(view)));
    CSaveOptions options;
    options.fps = 25;
    options.ppt = 1;
    CAviOptions avi;
    avi.encoder = encoder;
    std::string status;
    for (auto _ : state)
        if (!SaveAvi({File("wave.avi"), {}, listed, &options, &status}, avi))
            state.SkipWithError(status.c_str());
    state.counters["frames/s"] = benchmark::Counter(
        static_cast<double>(kFrames) * state.iterations(), benchmark::Counter::kIsRate);
    GlobalWindowSpace().DelData(listed);
}

BENCHMARK(LoadMat)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
void MovieMjpeg(benchmark::State& state) { Movie(state, AVI_MJPEG); }
void MovieFfv1(benchmark::State& state) { Movie(state, AVI_FFV1); }

BENCHMARK(MovieMjpeg)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK(MovieFfv1)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    const std::vector<double> peer = PeerFigures("scipy_loadmat.py", File("wave.mat"), 1);
    if (peer.empty()) std::fprintf(stderr, "scipy.io did not run\n");
    CRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const double ours = reporter.Time("LoadMat");
    if (ours > 0 && !peer.empty())
        std::printf("MAT v7 load of 100 MB r4: %.0f ms, scipy.io.loadmat %.0f ms, ratio %.2f\n",
                    ours, peer[0], ours / peer[0]);
    const double mjpeg = reporter.Time("MovieMjpeg");
    if (mjpeg > 0)
        std::printf("AVI Motion JPEG at %d x %d: %.0f frames/s\n", kSide, kSide,
                    kFrames / (mjpeg / 1e3));
    std::filesystem::remove_all(Folder());
    benchmark::Shutdown();
    return 0;
}
