// Loading a 256 x 256 x 64 x 8 r4 NIfTI file, plain and gzipped, written by nibabel in the
// same run, against nibabel's own load of it (nibabel_load.py). Header step, array and load
// step are all timed, as the open dialog runs them. Targets: at least as fast plain, within
// 1.2 x gzipped.
//
//   QUELMOR_BENCH_TMP=/some/disk/folder bench_nifti    (default: the system temp folder)
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench/bench_report.h"
#include "core/zrk_data.h"
#include "files/nifti_reader.h"

namespace {

std::filesystem::path Folder() {
    const char* env = std::getenv("QUELMOR_BENCH_TMP");
    static const std::filesystem::path dir =
        std::filesystem::path(env ? env : std::filesystem::temp_directory_path().string()) /
        ("quelmor_bench_nifti_" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    return dir;
}

void Load(benchmark::State& state, const char* name) {
    const std::string path = (Folder() / name).string();
    for (auto _ : state) {
        FileEntry e;
        e.path = path;
        CZrkData a;
        if (!NiftiHeader(COpenOptions{}, e)) return state.SkipWithError(e.status.c_str());
        a.CopyHeaderFrom(e.header);
        CZrkData* targets[3] = {&a, nullptr, nullptr};
        if (!a.Allocate() || !NiftiLoad(COpenOptions{}, e, targets)) {
            a.FreeData();
            return state.SkipWithError(e.status.c_str());
        }
        benchmark::DoNotOptimize(a.Data());
        a.FreeData();
    }
}

void Plain(benchmark::State& state) { Load(state, "wave.nii"); }
void Gzipped(benchmark::State& state) { Load(state, "wave.nii.gz"); }

BENCHMARK(Plain)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(Gzipped)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    // The peer writes the files first, then times itself on them.
    const std::vector<double> peer = PeerFigures("nibabel_load.py", Folder().string(), 2);
    CRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const char* what[2] = {"plain", "gzipped"};
    const char* ours[2] = {"Plain", "Gzipped"};
    const double target[2] = {1.0, 1.2};
    for (int k = 0; k < 2 && !peer.empty(); ++k) {
        const double t = reporter.Time(ours[k]);
        if (t > 0)
            std::printf(
                "nifti load 256x256x64x8 r4 %s: %.1f ms, nibabel %.1f ms, ratio %.2f "
                "(target <= %.2f)\n",
                what[k], t, peer[k], t / peer[k], target[k]);
    }
    if (peer.empty()) std::printf("nibabel peer did not run\n");
    std::filesystem::remove_all(Folder());
    benchmark::Shutdown();
    return 0;
}
