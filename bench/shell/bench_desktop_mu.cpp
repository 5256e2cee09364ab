// The desktop and the inversion sheet on Qt's offscreen platform: one command's refresh of the
// frame (desktop, displays, byte line) with 10 000 arrays, bound 50 ms; opening the inversion
// sheet from its action and walking it to the lfe page, bound 200 ms.
#include <benchmark/benchmark.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/data_space.h"
#include "core/zrk_data.h"
#include "mu/qt/form_mu.h"
#include "shell/qt/main_frame.h"
#include "shell/qt/zarnik_app.h"

namespace {

struct App {
    App() : app(space) {
        CStartOptions start;
        start.show_about = false;
        start.preferences = "/dev/null";
        app.InitInstance(start);
    }
    ~App() {
        app.Frame()->SetClosingForScript(true);
        app.Frame()->close();
    }
    CDataSpace space;
    CZarnikApp app;
};

void BM_DesktopRefresh(benchmark::State& state) {
    App a;
    char name[32];
    const int count = static_cast<int>(state.range(0));
    const auto begin_fill = std::chrono::steady_clock::now();
    for (int i = 0; i < count; ++i) {
        std::snprintf(name, sizeof name, "a%05d", i);
        a.space.NewData(TYPE_R4, 4, 4, 1, 1, 1, 1, name);
    }
    const std::chrono::duration<double> fill = std::chrono::steady_clock::now() - begin_fill;
    const auto begin_first = std::chrono::steady_clock::now();
    a.app.Frame()->RefreshAll();
    const std::chrono::duration<double> first = std::chrono::steady_clock::now() - begin_first;
    // A command: one new array sorts into the middle of the list, then the refresh.
    double seconds = 0;
    int made = 0;
    for (auto _ : state) {
        std::snprintf(name, sizeof name, "a%05d_%d", count / 2, made++);
        const auto begin = std::chrono::steady_clock::now();
        a.space.NewData(TYPE_R4, 4, 4, 1, 1, 1, 1, name);
        a.app.Frame()->RefreshAll();
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
        seconds += took.count();
    }
    state.counters["fill_s"] = fill.count();
    state.counters["first_refresh_ms"] = first.count() * 1e3;
    state.counters["ms_per_refresh"] = seconds / state.iterations() * 1e3;
    state.counters["ratio_to_50ms"] = seconds / state.iterations() / 0.05;
}
BENCHMARK(BM_DesktopRefresh)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_SheetToLfePage(benchmark::State& state) {
    App a;
    for (const char* n : {"magn", "ph"}) {
        CZrkData* d = a.space.NewData(TYPE_R4, 64, 64, 1, 8, 1, 1, n);
        auto* f = static_cast<float*>(d->Data());
        for (size_t i = 0; i < d->Count(); ++i) f[i] = float(i % 97);
    }
    CMainFrame* frame = a.app.Frame();
    QAction* open = frame->findChild<QAction*>("action_wave_inversion");
    double seconds = 0;
    for (auto _ : state) {
        const auto begin = std::chrono::steady_clock::now();
        open->trigger();
        auto* form = frame->findChild<CFormMu*>("form_mu");
        form->findChild<QComboBox*>("magnitude")->setCurrentText("magn");
        form->findChild<QComboBox*>("phase_name0")->setCurrentText("ph");
        auto* next = form->findChild<QPushButton*>("mu_continue");
        for (int page = 1; page < CMuForm::PAGE_COUNT; ++page) next->click();
        QApplication::processEvents();
        if (form->Model().ActivePage() != CMuForm::PAGE_LFE) state.SkipWithError("stopped early");
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
        seconds += took.count();
        state.PauseTiming();
        delete form->parentWidget();
        state.ResumeTiming();
    }
    state.counters["ms_to_lfe"] = seconds / state.iterations() * 1e3;
    state.counters["ratio_to_200ms"] = seconds / state.iterations() / 0.2;
}
BENCHMARK(BM_SheetToLfePage)->Unit(benchmark::kMillisecond)->Iterations(20);

}  // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication qt(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
