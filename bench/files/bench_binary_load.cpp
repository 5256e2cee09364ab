// Loading a binary r4 file through the open and load models against `cp` of the same file
// on the same disk, both from the page cache. Target: within 1.3 x of cp. The default size
// keeps a run short; pass the size in megabytes for the full figure:
//
//   bench_binary_load [--mb=1024]      (QUELMOR_BENCH_TMP=/some/disk/folder, default /tmp)
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench/bench_report.h"
#include "core/data_space.h"
#include "core/host.h"
#include "files/file_kinds.h"
#include "files/open_model.h"

namespace {

uint64_t g_megabytes = 256;

std::filesystem::path Folder() {
    const char* env = std::getenv("QUELMOR_BENCH_TMP");
    static const std::filesystem::path dir =
        std::filesystem::path(env ? env : std::filesystem::temp_directory_path().string()) /
        ("quelmor_bench_binary_" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    return dir;
}

std::string File(const char* name) { return (Folder() / name).string(); }

// Planes of 1024 x 1024 r4, 4 MB each, written a megabyte at a time.
void MakeFile() {
    if (std::filesystem::exists(File("wave.raw"))) return;
    std::vector<float> plane(256 * 1024);
    for (size_t k = 0; k < plane.size(); ++k) plane[k] = static_cast<float>(k % 4099) * 0.25f;
    std::ofstream out(File("wave.raw"), std::ios::binary);
    for (uint64_t m = 0; m < g_megabytes; ++m)
        out.write(reinterpret_cast<const char*>(plane.data()), plane.size() * sizeof(float));
}

void Load(benchmark::State& state) {
    MakeFile();
    CDataSpace space;
    space.SetUnique();
    COpenOptions options;
    options.filetype = 3;
    options.res4d[0] = "1024";
    options.res4d[1] = "1024";
    options.res4d[2] = std::to_string(g_megabytes / 4);
    std::string folder;
    auto once = [&] {
        COpenModel open(options, space, folder);
        open.Ok({File("wave.raw")});
        return open.status == "read success";
    };
    if (!once()) state.SkipWithError("load failed");
    for (auto _ : state) {
        state.PauseTiming();
        while (space.Count() > 0) space.DelData(0);
        state.ResumeTiming();
        if (!once()) state.SkipWithError("load failed");
    }
}

void Copy(benchmark::State& state) {
    MakeFile();
    const std::string copy = "cp " + File("wave.raw") + " " + File("copy.raw");
    for (int k = 0; k < 2; ++k)
        if (std::system(copy.c_str()) != 0) state.SkipWithError("cp failed");
    for (auto _ : state)
        if (std::system(copy.c_str()) != 0) state.SkipWithError("cp failed");
    std::filesystem::remove(File("copy.raw"));
}

BENCHMARK(Load)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(Copy)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    for (int k = 1; k < argc; ++k)
        if (std::strncmp(argv[k], "--mb=", 5) == 0)
            g_megabytes = std::strtoull(argv[k] + 5, nullptr, 10);
    if (g_megabytes < 4) g_megabytes = 4;
    g_megabytes -= g_megabytes % 4;
    InstallFileKinds();
    CHeadlessHost host;
    CScopedHost scope(host);
    CRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const double ours = reporter.Time("Load"), cp = reporter.Time("Copy");
    if (ours > 0 && cp > 0)
        std::printf("binary load of %llu MB r4: %.0f ms, cp %.0f ms, ratio %.2f (target <= 1.30)\n",
                    static_cast<unsigned long long>(g_megabytes), ours, cp, ours / cp);
    std::filesystem::remove_all(Folder());
    benchmark::Shutdown();
    return 0;
}
