// Loading a rev 28 raw file of 256 x 256 complex i2, 32 slices, 4 echoes against reading the
// same file into one buffer with one read, with and without baseline subtraction (target:
// each within 1.3 x), and the header step alone (target: under 2 ms a file).
//
//   bench_scanner [RECEIVERS]    default 2 (about 67 MB); 8 gives the full 270 MB file
//   QUELMOR_BENCH_TMP=/some/disk/folder bench_scanner 8
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "bench/bench_report.h"
#include "files/scanner/raw_header.h"
#include "files/scanner/raw_load.h"

namespace {

int g_receivers = 2;
constexpr int kX = 256, kY = 256, kSlices = 32, kEchoes = 4, kPool = 228020;

std::string FilePath() {
    const char* env = std::getenv("QUELMOR_BENCH_TMP");
    static const std::string path =
        (std::filesystem::path(env ? env : std::filesystem::temp_directory_path().string()) /
         ("quelmor_bench_raw_" + std::to_string(getpid()) + ".28"))
            .string();
    return path;
}

template <class T>
void Put(std::vector<char>& b, size_t at, T v) {
    std::memcpy(b.data() + at, &v, sizeof v);
}

// A rev 28 pool (little-endian) and the blocks behind it: one baseline line and 256 lines
// per receiver, slice and echo.
void WriteFile() {
    std::vector<char> pool(kPool, 0);
    Put(pool, 0, 28.0f);
    Put<int16_t>(pool, 144, kSlices);
    Put<int16_t>(pool, 146, kEchoes);
    Put<int16_t>(pool, 152, 1);
    Put<int16_t>(pool, 158, 2);
    Put<uint16_t>(pool, 178, kX);
    Put<uint16_t>(pool, 180, kY + 1);
    Put<int16_t>(pool, 264, 0);
    Put<int16_t>(pool, 266, static_cast<int16_t>(g_receivers - 1));
    for (int k = 0; k < kSlices; ++k)
        Put<int16_t>(pool, 36864 + 76 * k + 2, static_cast<int16_t>(k + 1));
    FILE* f = std::fopen(FilePath().c_str(), "wb");
    std::fwrite(pool.data(), 1, pool.size(), f);
    std::vector<int16_t> block(size_t{2} * kX * (kY + 1));
    for (size_t k = 0; k < block.size(); ++k)
        block[k] = static_cast<int16_t>(k * 2654435761u >> 16);
    for (int b = 0; b < g_receivers * kSlices * kEchoes; ++b) {
        block[0] = static_cast<int16_t>(b);
        std::fwrite(block.data(), 2, block.size(), f);
    }
    std::fclose(f);
}

struct CLoad {
    FileEntry entry;
    CZrkData target;
    CLoad() {
        entry.path = FilePath();
        ReadRawHeader(entry, nullptr);
        const CZrkData& h = entry.header;
        target.SetHeader(h.Type(), h.nx, h.ny, h.nz, h.nt, h.nu, h.nv);
        target.Allocate();
        std::memset(target.Data(), 0, target.Bytes());
    }
    ~CLoad() { target.FreeData(); }
};

void LoadRawFile(benchmark::State& state, int subtract) {
    CLoad load;
    load.entry.subtractBaseline = subtract;
    CZrkData* targets[3] = {&load.target, nullptr, nullptr};
    const COpenOptions options;
    for (auto _ : state)
        if (LoadRaw(options, load.entry, targets) != 1) state.SkipWithError("load failed");
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(std::filesystem::file_size(FilePath())));
}

void LoadPlain(benchmark::State& state) { LoadRawFile(state, 0); }
void LoadSubtract(benchmark::State& state) { LoadRawFile(state, 1); }

// The peer: the whole file into one buffer that was touched before, with one read.
void ReadWhole(benchmark::State& state) {
    const size_t bytes = std::filesystem::file_size(FilePath());
    std::unique_ptr<char[]> buffer(new char[bytes]);
    std::memset(buffer.get(), 0, bytes);
    for (auto _ : state) {
        const int fd = open(FilePath().c_str(), O_RDONLY);
        if (read(fd, buffer.get(), bytes) != static_cast<ssize_t>(bytes))
            state.SkipWithError("short");
        close(fd);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void Header(benchmark::State& state) {
    FileEntry e;
    e.path = FilePath();
    for (auto _ : state)
        if (ReadRawHeader(e, nullptr) != 1) state.SkipWithError("header failed");
}

BENCHMARK(ReadWhole)->Unit(benchmark::kMillisecond)->MinTime(2)->UseRealTime();
BENCHMARK(LoadPlain)->Unit(benchmark::kMillisecond)->MinTime(2)->UseRealTime();
BENCHMARK(LoadSubtract)->Unit(benchmark::kMillisecond)->MinTime(2)->UseRealTime();
BENCHMARK(Header)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (argc > 1) g_receivers = std::max(1, std::atoi(argv[1]));
    WriteFile();
    std::printf("rev 28 raw file: %d receivers, %.0f MB\n", g_receivers,
                static_cast<double>(std::filesystem::file_size(FilePath())) / 1e6);
    CRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const double whole = reporter.Time("ReadWhole");
    for (const char* name : {"LoadPlain", "LoadSubtract"})
        if (whole > 0 && reporter.Time(name) > 0)
            std::printf("%s / one read: %.0f ms / %.0f ms, ratio %.2f (target <= 1.30)\n", name,
                        reporter.Time(name), whole, reporter.Time(name) / whole);
    std::printf("header step: %.3f ms a file (target < 2 ms)\n", reporter.Time("Header") / 1000);
    std::filesystem::remove(FilePath());
    benchmark::Shutdown();
    return 0;
}
