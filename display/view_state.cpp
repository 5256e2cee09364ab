#include "display/view_state.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/host.h"
#include "display/plot_result.h"

uint64_t CMdiView::PageSize(int k) const {
    const CZrkData* a = Data(0);
    return a && k >= 0 && k < 4 ? std::max<res_t>(1, a->Res(k + 2)) : 1;
}

void CMdiView::Step(int delta) {
    auto move = [&](int k) {
        const uint64_t n = PageSize(k);
        if (page[k] >= n) page[k] = 0;
        if (delta > 0) {
            page[k] = page[k] + 1 >= n ? 0 : page[k] + 1;
            return page[k] == 0;  // wrapped: carry on
        }
        page[k] = page[k] == 0 ? n - 1 : page[k] - 1;
        return page[k] == n - 1;
    };
    if (scroll_mode >= 2 && scroll_mode <= 5) {
        move(scroll_mode - 2);
    } else if (scroll_mode == 6) {
        for (int k = 0; k < 4 && move(k); ++k) {
        }
    }
    // The document keeps z and t for the workspace.
    doc_.page_z = static_cast<int>(page[0]);
    doc_.page_t = static_cast<int>(page[1]);
    Draw();
    status = Readout();
    ShowStatus(status);
}

void CMdiView::OnScrollNext() { Step(1); }
void CMdiView::OnScrollPrior() { Step(-1); }

void CMdiView::OnScrollPlus() {
    const int now = Look().scroll_time;
    int next = kPeriods[0];
    for (int p : kPeriods)
        if (p < now) next = p;
    StartScroll(next);
}

void CMdiView::OnScrollMinus() {
    const int now = Look().scroll_time;
    for (int p : kPeriods)
        if (p > now) return StartScroll(p);
    StartScroll(kPeriods[7]);
}

void CMdiView::StartScroll(int period) {
    Host().Trace("CMdiView::StartScroll");
    Look().scroll_time = period;
    if (scroll_running && !StopTimer()) {
        Host().Message("scroll failed");
        scroll_running = false;
    }
    scroll_running = StartTimer(period);
    if (!scroll_running) Host().Message("scroll failed");
}

void CMdiView::OnStopScroll() {
    if (scroll_running) StopTimer();
    scroll_running = false;
}

std::string CMdiView::PositionText() const {
    const CZrkData* a = Data(0);
    std::string text;
    char piece[64];
    for (int k = 0; k < 4; ++k) {
        if (PageSize(k) <= 1) continue;
        if (Look().units && a)
            std::snprintf(piece, sizeof piece, "[%s]",
                          std::to_string(page[k] * double(a->mm[k + 2])).c_str());
        else
            std::snprintf(piece, sizeof piece, "[%d]", static_cast<int>(page[k]));
        text += piece;
    }
    return text;
}

std::string CMdiView::ReadoutPrefix() const {
    const CZrkData* a = Data(0);
    if (!a) return {};
    const int iqmp = doc_.kind == LOOK_RGB ? Look().rplane.iqmp : Look().palplane.iqmp;
    std::string text = a->name;
    // A real array shows its samples whatever the channel.
    if (!a->IsComplex()) return text + " i/q:";
    static const char* kChannel[4] = {" i/q:", " i/q:", " mag:", " phase:"};
    return text + kChannel[std::clamp(iqmp, 0, 3)];
}

void HistogramCounts(const std::vector<float>& values, int nbins, double lo, double hi,
                     std::vector<float>& edges, std::vector<float>& counts) {
    nbins = std::max(1, nbins);
    if (lo == hi) {
        lo -= 0.5;
        hi += 0.5;
    }
    // Float32 edges from a float64 linspace, the last one exact, as NumPy makes them for
    // float32 data; a value's bin is then decided against these edges alone.
    edges.resize(nbins + 1);
    const double step = (hi - lo) / nbins;
    for (int i = 0; i <= nbins; ++i) edges[i] = static_cast<float>(lo + i * step);
    edges[nbins] = static_cast<float>(hi);
    counts.assign(nbins, 0.0f);
    const double norm = nbins / (hi - lo);
    for (float x : values) {
        if (!(x >= lo && x <= hi)) continue;
        int i = std::clamp(static_cast<int>((x - lo) * norm), 0, nbins - 1);
        if (x < edges[i])
            --i;
        else if (i < nbins - 1 && x >= edges[i + 1])
            ++i;
        counts[std::clamp(i, 0, nbins - 1)] += 1.0f;
    }
}

int CMdiView::Histogram(CDataSpace& space, const std::vector<uint64_t>& planes) {
    const CZrkData* a = Data(0);
    if (!a || !a->Data() || a->CountXY() == 0) return 0;
    const CPlane& plane = doc_.kind == LOOK_RGB ? Look().rplane : Look().palplane;
    CDataCursor<float> in(a, a->IsComplex() ? plane.iqmp : 0);
    std::vector<float> values;
    const uint64_t n = a->CountXY();
    try {
        values.resize(n * planes.size());
    } catch (const std::bad_alloc&) {
        Host().Status("memory failed");
        return 0;
    }
    for (size_t k = 0; k < planes.size(); ++k) in.GetBlock(values.data() + k * n, planes[k] * n, n);
    int nbins = 256;
    double lo = std::numeric_limits<float>::max(), hi = -lo;
    for (float x : values)
        if (std::isfinite(x)) lo = std::min<double>(lo, x), hi = std::max<double>(hi, x);
    if (lo > hi) lo = hi = 0;
    if (const CZrkData* b = space.FindData("hist_nbins"); b && b->Data() && b->Count())
        nbins = std::clamp(static_cast<int>(CDataCursor<double>(b, 0).Get(0)), 1, 1 << 24);
    if (const CZrkData* r = space.FindData("hist_range"); r && r->Data() && r->Count() >= 2) {
        CDataCursor<double> rc(r, 0);
        lo = rc.Get(0);
        hi = rc.Get(1);
    }
    std::vector<float> edges, counts;
    HistogramCounts(values, nbins, lo, hi, edges, counts);
    CZrkData* xs = nullptr;
    CZrkData* ys = nullptr;
    const std::string base = NextResultName(space, a->name, "_h");
    xs = space.NewData(TYPE_R4, nbins, 1, 1, 1, 1, 1, (base + ".x").c_str());
    ys = xs ? space.NewData(TYPE_R4, nbins, 1, 1, 1, 1, 1, (base + ".y").c_str()) : nullptr;
    if (!xs || !ys) {
        if (xs) space.DelData(xs);
        Host().Status("memory failed");
        return 0;
    }
    auto* x = static_cast<float*>(xs->Data());
    auto* y = static_cast<float*>(ys->Data());
    for (int i = 0; i < nbins; ++i) {
        x[i] = static_cast<float>((double(edges[i]) + edges[i + 1]) * 0.5);
        y[i] = counts[i];
    }
    xs->changed = ys->changed = 1;
    OpenPlot(ys, xs, base);
    return 1;
}

int CMdiView::CalcHist(CDataSpace& space) {
    Host().Trace("CMdiView::CalcHist");
    const CZrkData* a = Data(0);
    if (!a) return 0;
    const uint64_t plane = ((page[3] * a->nu + page[2]) * a->nt + page[1]) * a->nz + page[0];
    return Histogram(space, {plane});
}

int CMdiView::CalcHistAll(CDataSpace& space) {
    Host().Trace("CMdiView::CalcHistAll");
    const CZrkData* a = Data(0);
    if (!a) return 0;
    std::vector<uint64_t> planes;
    uint64_t p[4];
    const uint64_t n[4] = {PageSize(0), PageSize(1), PageSize(2), PageSize(3)};
    for (p[3] = 0; p[3] < n[3]; ++p[3])
        for (p[2] = 0; p[2] < n[2]; ++p[2])
            for (p[1] = 0; p[1] < n[1]; ++p[1])
                for (p[0] = 0; p[0] < n[0]; ++p[0]) {
                    // The sequence is the scroll direction through the current page, or all.
                    bool in = true;
                    for (int k = 0; k < 4; ++k)
                        if (scroll_mode != 6 && k != scroll_mode - 2 && p[k] != page[k]) in = false;
                    if (in) planes.push_back(((p[3] * n[2] + p[2]) * n[1] + p[1]) * n[0] + p[0]);
                }
    return Histogram(space, planes);
}

int CMdiView::CalcHistZAll(CDataSpace& space) {
    Host().Trace("CMdiView::CalcHistZAll");
    const CZrkData* a = Data(0);
    if (!a) return 0;
    int made = 0;
    for (uint64_t z = 0; z < PageSize(0); ++z) {
        const uint64_t plane = ((page[3] * a->nu + page[2]) * a->nt + page[1]) * a->nz + z;
        made += Histogram(space, {plane});
    }
    return made;
}
