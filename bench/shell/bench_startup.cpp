// Start-up to an idle main window on Qt's offscreen platform: preferences read, frame
// built and shown, about dialog left out. Bound: 0.5 s.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "shell/qt/main_frame.h"
#include "shell/qt/zarnik_app.h"

namespace {

void BM_StartToIdle(benchmark::State& state) {
    const std::string prefs = "/tmp/quelmor_bench_preferences.txt";
    std::vector<double> seconds;
    CDataSpace& space = GlobalDataSpace();
    for (auto _ : state) {
        const auto begin = std::chrono::steady_clock::now();
        CZarnikApp app(space);
        CStartOptions start;
        start.show_about = false;
        start.preferences = prefs;
        app.InitInstance(start);
        QApplication::processEvents();
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
        seconds.push_back(took.count());
        state.SetIterationTime(took.count());
        app.WriteOptions();  // the next run reads a full file
        app.Frame()->SetClosingForScript(true);
        app.Frame()->close();
        while (space.Count() > 0) space.DelData(0);
    }
    std::nth_element(seconds.begin(), seconds.begin() + seconds.size() / 2, seconds.end());
    const double median = seconds[seconds.size() / 2];
    state.counters["median_ms"] = median * 1e3;
    state.counters["ratio_to_0.5s"] = median / 0.5;
}
BENCHMARK(BM_StartToIdle)->Unit(benchmark::kMillisecond)->Iterations(9)->UseManualTime();

}  // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication qt(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
