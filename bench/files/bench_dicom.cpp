// Loading a series of 200 DICOM files of 256 x 256 i2, written by pydicom in the same run,
// into one array as the load model stacks them (every header step, one array, every load
// step at its place), against numpy.stack of pydicom's pixel arrays (pydicom_stack.py).
// Target: at least as fast.
//
//   QUELMOR_BENCH_TMP=/some/disk/folder bench_dicom    (default: the system temp folder)
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/bench_report.h"
#include "core/zrk_data.h"
#include "files/dicom_reader.h"

namespace {

std::filesystem::path Folder() {
    const char* env = std::getenv("QUELMOR_BENCH_TMP");
    static const std::filesystem::path dir =
        std::filesystem::path(env ? env : std::filesystem::temp_directory_path().string()) /
        ("quelmor_bench_dicom_" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    return dir;
}

void Series(benchmark::State& state) {
    std::vector<std::string> paths;
    for (const auto& e : std::filesystem::directory_iterator(Folder()))
        paths.push_back(e.path().string());
    std::sort(paths.begin(), paths.end());
    if (paths.empty()) return state.SkipWithError("no series written");
    for (auto _ : state) {
        std::vector<FileEntry> entries(paths.size());
        for (size_t k = 0; k < paths.size(); ++k) {
            entries[k].path = paths[k];
            if (!DicomHeader(COpenOptions{}, entries[k])) return state.SkipWithError("header");
        }
        CZrkData a;
        a.SetHeader(entries[0].header.type, 256, 256, paths.size(), 1, 1, 1);
        CZrkData* targets[3] = {&a, nullptr, nullptr};
        if (!a.Allocate()) return state.SkipWithError("alloc failed");
        for (size_t k = 0; k < paths.size() && state.error_occurred() == false; ++k) {
            entries[k].dest[0] = k;
            if (!DicomLoad(COpenOptions{}, entries[k], targets)) state.SkipWithError("load");
        }
        benchmark::DoNotOptimize(a.Data());
        a.FreeData();
    }
}

BENCHMARK(Series)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    // The peer writes the series first, then times itself on it.
    const std::vector<double> peer = PeerFigures("pydicom_stack.py", Folder().string(), 1);
    CRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const double t = reporter.Time("Series");
    if (!peer.empty() && t > 0)
        std::printf(
            "dicom series 200 x 256x256 i2: %.1f ms, pydicom + numpy.stack %.1f ms, "
            "ratio %.2f (target <= 1.00)\n",
            t, peer[0], t / peer[0]);
    if (peer.empty()) std::printf("pydicom peer did not run\n");
    std::filesystem::remove_all(Folder());
    benchmark::Shutdown();
    return 0;
}
