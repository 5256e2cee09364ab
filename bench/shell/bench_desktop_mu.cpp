// The desktop and the inversion sheet on Qt's offscreen platform: one command's refresh of the
// frame (desktop, displays, byte line) with 10 000 arrays, bound 50 ms; opening the inversion
// sheet from its action and walking it to the lfe page, bound 200 ms; the sheet's run of the
// demo phantom against the headless CMuForm run on the same arrays, the overhead of the
// displays, repaints and progress in per cent, bound 10 %.
#include <benchmark/benchmark.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <set>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "core/host.h"
#include "core/window_space.h"
#include "core/zrk_data.h"
#include "mu/demo_phantom.h"
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

// The demo phantom as it is made: 25 slices, 8 offsets, the three encodings.
const CDemoPhantom& Phantom() {
    static const CDemoPhantom ph = MakeDemoPhantom();
    return ph;
}

// The overhead the last BM_MuRunOverhead measured, in per cent.
double g_overhead = 0;

constexpr const char* kPhases[3] = {"demo_phase_x", "demo_phase_y", "demo_phase_z"};

// The magnitude and one phase array per encoding, on the desktop.
void PutPhantom(CDataSpace& space) {
    const CDemoPhantom& ph = Phantom();
    const CDemoPhantomSpec& s = ph.spec;
    CZrkData* mag = space.NewData(TYPE_R4, s.nx, s.ny, s.nz, 1, 1, 1, "demo_mag");
    std::copy(ph.magnitude.begin(), ph.magnitude.end(), static_cast<float*>(mag->Data()));
    const size_t n = size_t(s.nx) * s.ny * s.nz * s.noff;
    for (int c = 0; c < s.ncomp; ++c) {
        CZrkData* phase = space.NewData(TYPE_R4, s.nx, s.ny, s.nz, s.noff, 1, 1, kPhases[c]);
        const auto first = ph.phase.begin() + std::ptrdiff_t(c * n);
        std::copy(first, first + std::ptrdiff_t(n), static_cast<float*>(phase->Data()));
    }
}

// What a user types on a page for the phantom before going on from it.
void FillPage(CMuForm& model, int page) {
    const CDemoPhantomSpec& s = Phantom().spec;
    if (page == CMuForm::PAGE_DATA) {
        model.Data()->c.magnitude = "demo_mag";
        model.Data()->c.xyz = 1;
        for (int c = 0; c < 3; ++c) model.Data()->c.phase[c] = kPhases[c];
        model.base_name = "demo";
    } else if (page == CMuForm::PAGE_PARAMS) {
        CPageMuParams* params = model.Params();
        params->c.param_default = 0;
        params->c.mech_freq = float(s.freq);
        params->c.fov[0] = float(s.voxel * s.nx);
        params->c.fov[1] = float(s.voxel * s.ny);
        params->c.fov[2] = float(s.voxel * s.nz);
        params->SetPhasePreset(3);  // radians
    }
}

std::set<std::string> Names(const CDataSpace& space) {
    std::set<std::string> names;
    for (int i = 0; i < space.Count(); ++i) names.insert(space.GetData(i)->name);
    return names;
}

// Frees what a run made, so that every run makes its arrays (and displays) anew; false when
// it made none.
bool FreeOutputs(CDataSpace& space, const std::set<std::string>& inputs) {
    bool made = false;
    for (int i = space.Count() - 1; i >= 0; --i)
        if (CZrkData* d = space.GetData(i); d && !inputs.count(d->name)) {
            space.DelData(d);
            made = true;
        }
    return made;
}

// The two runs of the phantom side by side, turn about, so that a load on the machine meets
// both alike: the headless CMuForm over a space of its own (no displays, a silent host), and
// the sheet in the main frame (the Qt host and its Esc poll, the progress in the status line,
// the 2-D displays the run opens, the refresh of desktop and displays after it). Each run
// makes its arrays anew. The medians give the GUI's overhead.
void BM_MuRunOverhead(benchmark::State& state) {
    CDataSpace space;
    space.SetUnique();
    space.InitReservedData();
    PutPhantom(space);
    CHeadlessHost silent;
    CMuOptions options;
    CMuForm headless(space, options);

    App a;
    PutPhantom(a.space);
    CMainFrame* frame = a.app.Frame();
    frame->show();
    frame->RefreshAll();
    CFormMu* form = frame->OnWaveInversion();
    for (int page = 0; page < CMuForm::PAGE_LFE; ++page) {
        FillPage(form->Model(), page);
        form->Sync();
        form->OnContinue();
        CScopedHost scope(silent);
        FillPage(headless, page);
        if (headless.Continue()) state.SkipWithError(headless.status.c_str());
    }
    QApplication::processEvents();
    if (form->Model().ActivePage() != CMuForm::PAGE_LFE) state.SkipWithError("stopped early");
    auto* run = form->findChild<QPushButton*>("mu_continue");
    const std::set<std::string> inputs = Names(space);

    // Wall time and the process's processor time: on a shared machine other programs stretch
    // the first, not the second, and the overhead is counted on the second.
    struct Took {
        double wall, cpu;
    };
    const auto took = [](auto body) {
        timespec c0, c1;
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &c0);
        const auto begin = std::chrono::steady_clock::now();
        body();
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - begin;
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &c1);
        return Took{wall.count(),
                    double(c1.tv_sec - c0.tv_sec) + double(c1.tv_nsec - c0.tv_nsec) * 1e-9};
    };
    std::vector<Took> quiet, sheet;
    // The first run of each plans the transforms for these sizes: not timed.
    for (int k = -1; k < 0 || state.KeepRunning(); ++k) {
        const Took q = took([&] {
            CScopedHost scope(silent);
            if (headless.Continue()) state.SkipWithError(headless.status.c_str());
        });
        const Took s = took([&] {
            run->click();
            QApplication::processEvents();
        });
        if (GlobalWindowSpace().Count() == 0) state.SkipWithError("the run opened no display");
        if (!FreeOutputs(space, inputs) || !FreeOutputs(a.space, inputs))
            state.SkipWithError("a run made nothing");
        frame->RefreshAll();  // which closes the displays of the freed arrays
        QApplication::processEvents();
        silent.history.clear();
        silent.history_text.clear();
        silent.status.clear();
        if (k < 0) continue;
        quiet.push_back(q);
        sheet.push_back(s);
    }
    const auto median = [](const std::vector<Took>& runs, double Took::*field) {
        std::vector<double> v;
        for (const Took& t : runs) v.push_back(t.*field);
        std::sort(v.begin(), v.end());
        return v.empty() ? 0.0 : v[v.size() / 2];
    };
    const double q = median(quiet, &Took::cpu), s = median(sheet, &Took::cpu);
    g_overhead = q > 0 ? 100.0 * (s - q) / q : 0;
    state.counters["headless_ms"] = median(quiet, &Took::wall) * 1e3;
    state.counters["sheet_ms"] = median(sheet, &Took::wall) * 1e3;
    state.counters["headless_cpu_ms"] = q * 1e3;
    state.counters["sheet_cpu_ms"] = s * 1e3;
    state.counters["overhead_pct"] = g_overhead;
    state.counters["ratio_to_10pct"] = g_overhead / 10.0;
}
BENCHMARK(BM_MuRunOverhead)->Unit(benchmark::kMillisecond)->Iterations(15);

}  // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication qt(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (g_overhead != 0)
        std::printf(
            "the sheet's run of the demo phantom over the headless run: %+.1f %% overhead, "
            "%.2f of the 10 %% bound\n",
            g_overhead, g_overhead / 10.0);
    return 0;
}
