// Saving and loading a workspace of one 1 GB r4 array against cp on the same disk: the save
// and the crash write against cp of the same bytes and a sync of the copy, the load against a
// plain cp of the workspace. Targets: each within 1.3 x of its cp.
//
//   QUELMOR_BENCH_TMP=/some/disk/folder bench_workspace    (default: the system temp folder)
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "bench/bench_report.h"
#include "core/data_space.h"
#include "core/window_space.h"
#include "files/zrk_file.h"

namespace {

constexpr uint64_t kElements = uint64_t{1} << 28;  // 1 GB of r4

std::filesystem::path Folder() {
    const char* env = std::getenv("QUELMOR_BENCH_TMP");
    static const std::filesystem::path dir =
        std::filesystem::path(env ? env : std::filesystem::temp_directory_path().string()) /
        ("quelmor_bench_ws_" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    return dir;
}

std::string File(const char* name) { return (Folder() / name).string(); }

void MakeArray() {
    CDataSpace& s = GlobalDataSpace();
    if (s.FindData("wave")) return;
    CZrkData* a = s.NewData(TYPE_R4, 1024, 1024, 256, 1, 1, 1, "wave");
    auto* v = static_cast<float*>(a->Data());
    for (uint64_t k = 0; k < kElements; ++k) v[k] = static_cast<float>(k % 4099) * 0.25f;
}

void Shell(const std::string& command) {
    if (std::system(command.c_str()) != 0) std::fprintf(stderr, "failed: %s\n", command.c_str());
}

// Each measure runs once untimed first, and files no longer needed go when it ends: on a
// virtual machine the first touch of fresh memory for the page cache costs several times the
// copy itself, and would land on whichever measure needed the most of it.
void Save(benchmark::State& state) {
    MakeArray();
    CZrkFile(File("ws.zrk")).Write();
    for (auto _ : state)
        if (CZrkFile(File("ws.zrk")).Write() != 1) state.SkipWithError("save failed");
}

void CrashWrite(benchmark::State& state) {
    MakeArray();
    WriteCrashWorkspace(File("crash.zrk").c_str());
    for (auto _ : state)
        if (WriteCrashWorkspace(File("crash.zrk").c_str()) != 0) state.SkipWithError("failed");
    std::filesystem::remove(File("crash.zrk"));
}

void CopyAndSync(benchmark::State& state) {
    const std::string copy =
        "cp " + File("ws.zrk") + " " + File("copy.zrk") + " && sync " + File("copy.zrk");
    Shell(copy);
    for (auto _ : state) Shell(copy);
    std::filesystem::remove(File("copy.zrk"));
}

void Load(benchmark::State& state) {
    GlobalDataSpace().DelData("wave");
    CZrkFile(File("ws.zrk")).Read();
    for (auto _ : state) {
        state.PauseTiming();
        GlobalDataSpace().DelData("wave");
        state.ResumeTiming();
        if (CZrkFile(File("ws.zrk")).Read() != 0) state.SkipWithError("load failed");
    }
}

void Copy(benchmark::State& state) {
    Shell("cp " + File("ws.zrk") + " " + File("other.zrk"));
    for (auto _ : state) Shell("cp " + File("ws.zrk") + " " + File("other.zrk"));
}

BENCHMARK(Save)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(CopyAndSync)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(CrashWrite)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(Load)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(Copy)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

void Ratio(const CRatioReporter& r, const char* what, const char* ours, const char* peer) {
    const double a = r.Time(ours), b = r.Time(peer);
    if (a > 0 && b > 0)
        std::printf("%s: %.0f ms, cp %.0f ms, ratio %.2f (target <= 1.30)\n", what, a, b, a / b);
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    CRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    Ratio(reporter, "save 1 GB r4 / cp + sync", "Save", "CopyAndSync");
    Ratio(reporter, "crash write / cp + sync", "CrashWrite", "CopyAndSync");
    Ratio(reporter, "load 1 GB r4 / cp", "Load", "Copy");
    std::filesystem::remove_all(Folder());
    benchmark::Shutdown();
    return 0;
}
