#include "wave/progress.h"

#include <algorithm>
#include <chrono>

#include "wave/driver.h"

namespace {

constexpr int kMethods = 5;  // component start, LFE, PG, MF, DI
const char* const kFormats[kMethods] = {nullptr, "LFE: %2d%%    ", "PG: %2d%%    ", "MF: %2d%%    ",
                                        "DI: %2d%%    "};

struct Progress {
    double run_start = 0;
    double method_start[kMethods] = {};
    bool started[kMethods] = {};
    double offset[kMethods] = {};
    double pass_time[kMethods] = {};
    double rate[kMethods] = {};
    int percent[kMethods] = {};
    bool registered[kMethods] = {};
    int order[kMethods] = {};  // registered methods in order of first use
    int nactive = 0;
    bool component_fastest = false;
    bool order_known = false;
    bool show_time = true;
    double estimate = 0;
    double last_display = -1;
    int counters[4] = {};  // component, ncomponents, angle, nangles as last given
    int kept[4] = {};      // as kept by run_query(0)
};

Progress g;
double g_watch_start = 0, g_watch_stop = 0;

double now_ms() {
    using namespace std::chrono;
    return double(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

double now_s() { return now_ms() / 1000.0; }

void display(double now, double remaining) {
    if (g.last_display >= 0 && now - g.last_display < 0.1) return;
    g.last_display = now;
    status_clear();
    for (int i = 0; i < g.nactive; ++i) status_printf(kFormats[g.order[i]], g.percent[g.order[i]]);
    if (!g.show_time || g.estimate <= 10.0 || remaining < 5.0) return;
    status_text("\n Estimated time remaining:  ");
    int left = int(remaining);
    if (remaining > 60.0) {
        status_printf("%d min  ", left / 60);
        left %= 60;
    }
    if (left >= 1) status_printf("%d sec  ", left);
}

}  // namespace

double stopwatch(int which) {
    if (which == 0) {
        g_watch_start = now_ms();
        return 0.0;
    }
    g_watch_stop = now_ms();
    return (g_watch_stop - g_watch_start) / 1000.0;
}

void run_progress(int method, int step, int nsteps, int component, int ncomponents, int angle,
                  int nangles) {
    if (method < -1 || method > 4) return;
    double now = now_s();
    if (method == -1) {
        if (step == 0 && nsteps == 0 && component == 0 && ncomponents == 0 && angle == 0 &&
            nangles == 0) {
            g = Progress();  // end of a run
            return;
        }
        int kept[4];
        std::copy(g.kept, g.kept + 4, kept);
        g = Progress();
        std::copy(kept, kept + 4, g.kept);
        g.run_start = now;
        g.counters[0] = component;
        g.counters[1] = ncomponents;
        g.counters[2] = angle;
        g.counters[3] = nangles;
        return;
    }
    g.counters[0] = component;
    g.counters[1] = ncomponents;
    g.counters[2] = angle;
    g.counters[3] = nangles;
    if (step == 0) {
        if (g.started[method]) g.pass_time[method] = now - g.method_start[method];
        g.started[method] = true;
        g.method_start[method] = now;
        g.offset[method] = now - g.run_start;
    }
    if (nsteps > 1 && step == nsteps)
        g.rate[method] = (now - g.method_start[method]) * nsteps / (nsteps - 1.0);
    // The second pass shows which counter varies fastest.
    if (!g.order_known && component + angle == 1) {
        g.component_fastest = angle != 1;
        g.order_known = true;
    }
    int done = g.component_fastest ? angle * ncomponents + component : nangles * component + angle;
    int passes = ncomponents * nangles;
    if (passes < 1) passes = 1;
    double fraction = nsteps > 0 ? double(step) / nsteps : 0.0;
    g.percent[method] = int(100.0 * (fraction + done) / passes);
    double remaining = 0.0;
    if (passes >= 2 && done >= 1) {
        double step_part = nsteps > 0 ? step * g.rate[method] / nsteps : 0.0;
        remaining = (passes - done) * g.pass_time[method] - step_part;
        if (done == 1 && step == 0) {
            g.estimate = remaining + 1.0 - g.offset[method] + (now - g.run_start);
            if (g.estimate < 10.0) g.show_time = false;
        }
    }
    if (method == 0) return;
    if (!g.registered[method]) {
        g.registered[method] = true;
        g.order[g.nactive++] = method;
    }
    display(now, remaining);
}

int run_query(int key) {
    switch (key) {
        case 0:
            std::copy(g.counters, g.counters + 4, g.kept);
            return 0;
        case 1:
        case 2:
        case 3:
        case 4:
            return g.kept[key - 1];
        case 5:
            return g.kept[3] * g.kept[1];
        default:
            return 0;
    }
}
