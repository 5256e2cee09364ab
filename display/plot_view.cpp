#include "display/plot_view.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdio>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/host.h"
#include "core/number_format.h"
#include "core/report.h"
#include "display/display_update.h"
#include "display/new_display.h"
#include "display/plot_options.h"
#include "display/roi_mask.h"
#include "ops/permute.h"
#include "ops/stats.h"
#include "ops/structural_join.h"
#include "ops/structural_shape.h"

namespace {

constexpr int kMargin = 8;

// Colours of the lines after the first two (0x00BBGGRR words).
constexpr int kLineColors[8] = {0x00a000, 0xc00000, 0x00a0c0, 0xc000c0,
                                0x0080ff, 0x808000, 0x404040, 0xff8080};

bool Usable(const CZrkData* a) { return a && a->data && a->type >= 0 && a->CountXY() > 0; }

// Row `row` of `a` through channel iqmp (real arrays always by value); a phase in degrees
// unless `radians`.
std::vector<float> Row(const CZrkData* a, uint64_t row, int iqmp, bool radians = true) {
    std::vector<float> out(a->nx);
    const int channel = a->IsComplex() ? iqmp & 3 : 0;
    CDataCursor<float> c(a, channel);
    c.GetBlock(out.data(), row * a->nx, a->nx);
    if (channel == 3 && !radians)
        for (float& v : out) v = static_cast<float>(v * (180.0 / M_PI));
    return out;
}

std::string F(double v) { return FormatFloat(v, "default"); }

bool IsX(int kind) { return kind == 1 || kind == 3; }

}  // namespace

const char* const CPlotView::kCursorNames[kCursorModes] = {"pointer",  "x roi",  "zoom",
                                                           "zoom out", "rezoom", "refresh"};

double TickSpacing(double tick, double span, double pixels, double spacing) {
    span = std::fabs(span);
    if (!(span > 0) || !std::isfinite(span) || !(pixels > 0)) return 0;
    if (tick > 0 && std::isfinite(tick) && span / tick * 4 <= pixels) return tick;
    const double raw = span * std::max(spacing, 4.0) / pixels;
    const double decade = std::pow(10.0, std::floor(std::log10(raw)));
    for (double m : {1.0, 2.0, 5.0, 10.0})
        if (m * decade >= raw) return m * decade;
    return 10 * decade;
}

CPlotView::CPlotView(CDisplayEntry& doc, const C1d& options, const CNewPlot* defaults)
    : CMdiView(doc), defaults_(defaults) {
    axis_lock = options.axis_lock;
    if (defaults) lines_overlayed = defaults->lines_overlayed;
}

uint64_t CPlotView::CurrentPlane() const {
    const CZrkData* a = Data(0);
    if (!a || a->nz == 0) return 0;
    uint64_t p[4];
    const res_t n[4] = {a->nz, a->nt, a->nu, a->nv};
    for (int k = 0; k < 4; ++k) p[k] = std::min<uint64_t>(page[k], n[k] ? n[k] - 1 : 0);
    return ((p[3] * a->nu + p[2]) * a->nt + p[1]) * a->nz + p[0];
}

void CPlotView::EnsureLines(size_t rows) {
    CLook& look = Look();
    while (look.lines.size() < rows) {
        const size_t k = look.lines.size();
        CLine& line = look.AddLine();
        if (defaults_) {
            line.color = k == 0   ? static_cast<int>(defaults_->linecolor)
                         : k == 1 ? static_cast<int>(defaults_->linecolor2)
                                  : kLineColors[(k - 2) % 8];
            line.thick = defaults_->thick;
            line.symbol = defaults_->symbol;
            line.symsize = defaults_->symsize;
            line.iqmp = line.iqmpy = defaults_->iqmp;
        } else {
            line.color = k == 0 ? 0 : k == 1 ? 0xff : kLineColors[(k - 2) % 8];
            line.iqmp = line.iqmpy = 2;
        }
    }
}

void CPlotView::ReadRows() {
    ys_.clear();
    xs_.clear();
    errs_.clear();
    const CZrkData* a = Data(0);
    if (!Usable(a)) return;
    const uint64_t plane = CurrentPlane();
    const CZrkData* b = Data(1);
    size_t rows = a->ny;
    if (IsXy()) {
        if (!Usable(b) || b->nx != a->nx) return;
        rows = std::min<size_t>(a->ny, b->ny);
    }
    EnsureLines(rows);
    const std::vector<CLine>& lines = Look().lines;
    const bool radians = Look().radians != 0;
    for (size_t r = 0; r < rows; ++r) {
        const CLine& line = lines[r];
        if (IsXy()) {
            xs_.push_back(Row(a,
                              std::min<uint64_t>(plane, a->Count() / a->CountXY() - 1) * a->ny + r,
                              line.iqmp));
            const uint64_t pb = std::min<uint64_t>(plane, b->Count() / b->CountXY() - 1);
            ys_.push_back(Row(b, pb * b->ny + r, line.iqmpy, radians));
            errs_.push_back(line.err_y > 0 && static_cast<res_t>(line.err_y) < b->ny
                                ? Row(b, pb * b->ny + line.err_y, 0)
                                : std::vector<float>());
        } else {
            std::vector<float> y = Row(a, plane * a->ny + r, line.iqmp, radians);
            if (!lines_overlayed && line.overlay != 0)
                for (float& v : y) v += line.overlay;
            ys_.push_back(std::move(y));
            errs_.push_back(line.err_y > 0 && static_cast<res_t>(line.err_y) < a->ny
                                ? Row(a, plane * a->ny + line.err_y, 0)
                                : std::vector<float>());
        }
    }
    // A 1d plot against positions: the first row of the second array, as long as the rows.
    if (!IsXy() && Usable(b) && b->nx == a->nx) xs_.push_back(Row(b, 0, 0));
}

void CPlotView::FindMaxmin() {
    // The finite ends of every row stand in for the rows: the range (and its widening) is
    // that of the ends.
    auto ends = [](const std::vector<std::vector<float>>& rows, float out[2]) {
        float lo = HUGE_VALF, hi = -HUGE_VALF;
        for (const std::vector<float>& r : rows) {
            float a, b;
            FiniteSpanRange(r.data(), r.size(), &a, &b);
            lo = std::min(lo, a), hi = std::max(hi, b);
        }
        out[0] = lo, out[1] = hi;
        return lo <= hi ? 2 : 0;
    };
    float y[2], x[2];
    const int ny = ends(ys_, y);
    scale.FindMaxmin(y, ny, ys_.empty() ? 0 : ys_[0].size());
    if (!xs_.empty()) {
        // The x range is the positions' range: the y range of a helper scale over them.
        CPlotScale sx;
        sx.FindMaxmin(x, ends(xs_, x), 1);
        scale.xmin = sx.ymin, scale.xmax = sx.ymax;
    }
    xy_stack_.clear();
    xy_popped_.clear();
}

double CPlotView::SampleAt(double px) const {
    const double x = scale.PixelToX(px);
    if (xs_.empty()) return x;
    // Against positions: the index of the nearest one.
    const std::vector<float>& at = xs_[0];
    size_t best = 0;
    for (size_t i = 1; i < at.size(); ++i)
        if (std::fabs(at[i] - x) < std::fabs(at[best] - x)) best = i;
    return static_cast<double>(best);
}

double CPlotView::SamplePixel(double index) const {
    if (xs_.empty()) return scale.XToPixel(index);
    const std::vector<float>& at = xs_[0];
    if (at.empty()) return scale.XToPixel(0);
    const double i = std::clamp(std::round(index), 0.0, static_cast<double>(at.size() - 1));
    return scale.XToPixel(at[static_cast<size_t>(i)]);
}

bool CPlotView::Window(size_t n, size_t* i0, size_t* i1) const {
    if (n == 0) return false;
    if (!xs_.empty() && !IsXy()) {
        // Positions: the samples whose position is inside the x range shown.
        const std::vector<float>& at = xs_[0];
        size_t first = n, last = 0;
        for (size_t i = 0; i < n && i < at.size(); ++i)
            if (at[i] >= scale.xmin && at[i] <= scale.xmax) first = std::min(first, i), last = i;
        if (first > last) return false;
        *i0 = first, *i1 = last;
        return true;
    }
    const double lo = std::max(0.0, std::ceil(scale.xmin - 1e-9));
    const double hi = std::min(static_cast<double>(n - 1), std::floor(scale.xmax + 1e-9));
    if (lo > hi) return false;
    *i0 = static_cast<size_t>(lo), *i1 = static_cast<size_t>(hi);
    return true;
}

void CPlotView::ResizeYDraw() {
    double lo = HUGE_VAL, hi = -HUGE_VAL;
    for (size_t r = 0; r < ys_.size(); ++r) {
        const std::vector<float>& y = ys_[r];
        for (size_t i = 0; i < y.size(); ++i) {
            const double x = xs_.empty() ? static_cast<double>(i) : xs_[IsXy() ? r : 0][i];
            if (!(x >= scale.xmin && x <= scale.xmax) || !std::isfinite(y[i])) continue;
            lo = std::min<double>(lo, y[i]);
            hi = std::max<double>(hi, y[i]);
        }
    }
    if (!(lo <= hi)) return;  // nothing finite inside: y stays
    CPlotScale::Widen(&lo, &hi);
    scale.ymin = lo, scale.ymax = hi;
}

void CPlotView::FindScale() {
    origin[0] = origin[1] = 0;
    factor[0] = factor[1] = 1;
    bool x_done = false, y_done = false;
    for (const GAxis& a : Look().axes) {
        if (!a.enable) continue;
        const bool x = IsX(a.kind);
        if (!x && a.kind != 2 && a.kind != 4) continue;
        if (x ? x_done : y_done) continue;
        const int k = x ? 0 : 1;
        origin[k] = std::isfinite(a.tickoff) ? a.tickoff : 0;
        // A factor of 0 would fold the axis onto one value.
        factor[k] = std::isfinite(a.tickscale) && a.tickscale != 0 ? a.tickscale : 1;
        (x ? x_done : y_done) = true;
        if (x_done && y_done) break;
    }
}

void CPlotView::SizeBorder(int w, int h, const CTextMetrics& m) {
    int side[4] = {kMargin, kMargin, kMargin, kMargin};  // left, top, right, bottom
    // The widest y label sets the side borders; x labels stand below or above the plot.
    left_ = 0, top_ = 0, width_ = std::max(1, w), height_ = std::max(1, h);
    scale.SetPlot(left_, top_, width_, height_);
    int widest_x = 0;
    for (const CAxisMarks& marks : AxisMarks(m)) {
        const GAxis& a = *marks.axis;
        if (!a.show) continue;
        const int tick = std::max(0, a.ticklen[0]) * (a.showtick != 0);
        int text = 0;
        for (const std::string& s : marks.labels)
            if (!s.empty()) text = std::max(text, m.width ? m.width(s) : 0);
        switch (a.kind) {
            case 1:
                side[3] += tick + (text ? m.height + 2 : 0);
                widest_x = std::max(widest_x, text);
                break;
            case 3:
                side[1] += tick + (text ? m.height + 2 : 0);
                widest_x = std::max(widest_x, text);
                break;
            case 2:
                side[0] += tick + (text ? text + 4 : 0);
                break;
            case 4:
                side[2] += tick + (text ? text + 4 : 0);
                break;
            default:
                break;
        }
    }
    // Room for the half of an x label that stands beyond the plot's ends, and for the half
    // line of a y label at the top and bottom.
    side[0] = std::max(side[0], kMargin + widest_x / 2);
    side[2] = std::max(side[2], kMargin + widest_x / 2);
    side[1] = std::max(side[1], kMargin + m.height / 2);
    side[3] = std::max(side[3], kMargin + m.height / 2);
    left_ = side[0], top_ = side[1];
    width_ = std::max(1, w - side[0] - side[2]);
    height_ = std::max(1, h - side[1] - side[3]);
    scale.SetPlot(left_, top_, width_, height_);
}

bool CPlotView::Layout(int w, int h, const CTextMetrics& m) {
    if (dirty) {
        dirty = false;
        const CZrkData* a = Data(0);
        const res_t shape[3] = {a ? a->nx : 0, a ? a->ny : 0, a ? a->nz : 0};
        const bool same = std::equal(shape, shape + 3, shape_);
        std::copy(shape, shape + 3, shape_);
        ReadRows();
        const bool zoomed = FreeX() ? !xy_stack_.empty() : scale.ZoomDepth() > 0;
        if (same && zoomed) {
            // Same size: the zoom stays, y follows the samples unless locked.
            if (!axis_lock && !FreeX()) ResizeYDraw();
        } else {
            FindMaxmin();
        }
        FindScale();
    }
    if (ys_.empty()) return false;
    SizeBorder(w, h, m);
    return true;
}

std::vector<CAxisMarks> CPlotView::AxisMarks(const CTextMetrics& m) const {
    std::vector<CAxisMarks> out;
    for (const GAxis& a : Look().axes) {
        if (!a.show || a.kind < 1 || a.kind > 4) continue;
        const bool x = IsX(a.kind);
        const int k = x ? 0 : 1;
        CAxisMarks marks;
        marks.axis = &a;
        marks.at = a.kind == 1   ? top_ + height_ - 1
                   : a.kind == 3 ? top_
                   : a.kind == 2 ? left_
                                 : left_ + width_ - 1;
        const double lo = x ? scale.xmin : scale.ymin, hi = x ? scale.xmax : scale.ymax;
        const double shown_lo = lo * factor[k] + origin[k], shown_hi = hi * factor[k] + origin[k];
        const double pixels = x ? width_ : height_;
        const int text = x ? (m.width ? m.width("-0.000") : 40) + 16 : m.height * 2 + 8;
        auto to_pixel = [&](double v) {
            const double d = (v - origin[k]) / factor[k];
            return x ? scale.XToPixel(d) : scale.YToPixel(d);
        };
        if (a.showtick) {
            const double step = TickSpacing(a.tick, shown_hi - shown_lo, pixels, text);
            // A float tick of 0.1 lands a hair past the end of 0 ... 0.5: the ends count.
            const double lo_t = std::min(shown_lo, shown_hi), hi_t = std::max(shown_lo, shown_hi);
            const std::vector<double> ticks =
                TickPositions(lo_t - step * 1e-6, hi_t + step * 1e-6, step);
            size_t n = 0;
            for (double v : ticks) {
                // A tick within rounding of zero is zero, not 1e-17.
                if (std::fabs(v) < step * 1e-9) v = 0;
                marks.major.push_back(to_pixel(v));
                marks.labels.push_back(a.label && TickLabelled(n, a.skipinter)
                                           ? TickLabel(v, a.tickformat)
                                           : std::string());
                ++n;
            }
        }
        if (a.showmtick && a.minortick > 0) {
            const double step = TickSpacing(a.minortick, shown_hi - shown_lo, pixels, 4);
            if (step == a.minortick)
                for (double v : TickPositions(shown_lo, shown_hi, step))
                    marks.minor.push_back(to_pixel(v));
        }
        out.push_back(std::move(marks));
    }
    return out;
}

std::vector<CSeriesPath> CPlotView::Paths() const {
    std::vector<CSeriesPath> out;
    const std::vector<CLine>& lines = Look().lines;
    for (size_t r = 0; r < ys_.size() && r < lines.size(); ++r) {
        const std::vector<float>& y = ys_[r];
        CSeriesPath path;
        path.line = &lines[r];
        const std::vector<float>* xs = xs_.empty() ? nullptr : &xs_[IsXy() ? r : 0];
        const std::vector<float>& err = errs_[r];
        path.err_x = IsXy() && lines[r].err_xy;
        const double nan = std::nan("");
        size_t i0 = 0, i1 = 0;
        if (!xs) {
            if (!Window(y.size(), &i0, &i1)) continue;
            const size_t count = i1 - i0 + 1;
            if (count > static_cast<size_t>(width_)) {
                // More samples than columns: each column's min and max, a vertical stroke.
                path.decimated = true;
                for (int c = 0; c < width_; ++c) {
                    const size_t s0 = i0 + count * c / width_, s1 = i0 + count * (c + 1) / width_;
                    float lo, hi;
                    FiniteSpanRange(y.data() + s0, s1 - s0, &lo, &hi);
                    if (!(lo <= hi)) {
                        path.x.push_back(nan), path.y.push_back(nan);
                        continue;
                    }
                    path.x.push_back(left_ + c), path.y.push_back(scale.YToPixel(hi));
                    path.x.push_back(left_ + c), path.y.push_back(scale.YToPixel(lo));
                }
                out.push_back(std::move(path));
                continue;
            }
        } else {
            i0 = 0, i1 = y.size() - 1;
        }
        for (size_t i = i0; i <= i1 && i < y.size(); ++i) {
            const double xv = xs ? (*xs)[i] : static_cast<double>(i);
            if (!std::isfinite(y[i]) || !std::isfinite(xv)) {
                path.x.push_back(nan), path.y.push_back(nan);
                continue;
            }
            const double px = scale.XToPixel(xv), py = scale.YToPixel(y[i]);
            path.x.push_back(px), path.y.push_back(py);
            if (err.empty()) continue;
            const double e = std::isfinite(err[i]) ? std::fabs(err[i]) : 0;
            if (path.err_x) {
                path.err0.push_back(scale.XToPixel(xv - e));
                path.err1.push_back(scale.XToPixel(xv + e));
            } else {
                path.err0.push_back(scale.YToPixel(y[i] - e));
                path.err1.push_back(scale.YToPixel(y[i] + e));
            }
        }
        if (path.err0.size() != path.x.size()) path.err0.clear(), path.err1.clear();
        out.push_back(std::move(path));
    }
    return out;
}

bool CPlotView::RoiColumns(double* x0, double* x1) const {
    if (IsXy()) return false;
    const CZrkData* r = GlobalDataSpace().FindData("roi_x");
    if (!r || !r->data || r->type < 0 || r->Count() < 2) return false;
    float v[2];
    CDataCursor<float> c(r);
    c.GetI(v[0], 0);
    c.GetI(v[1], 1);
    if (!(v[0] <= v[1])) return false;
    *x0 = SamplePixel(v[0]), *x1 = SamplePixel(v[1]);
    return true;
}

bool CPlotView::CursorPixel(double* px, double* py) const {
    if (cursor_x_ < 0 || cursor_row_ >= ys_.size()) return false;
    const std::vector<float>& y = ys_[cursor_row_];
    if (static_cast<size_t>(cursor_x_) >= y.size() || !std::isfinite(y[cursor_x_])) return false;
    const std::vector<float>* xs = xs_.empty() ? nullptr : &xs_[IsXy() ? cursor_row_ : 0];
    *px = scale.XToPixel(xs ? (*xs)[cursor_x_] : cursor_x_);
    *py = scale.YToPixel(y[cursor_x_]);
    return true;
}

std::string CPlotView::ReadoutAt(double px, double py) {
    const CZrkData* a = Data(0);
    if (!a || ys_.empty()) return readout_ = "";
    // The nearest point on screen over every row.
    double best = HUGE_VAL;
    long best_i = -1;
    size_t best_r = 0;
    for (size_t r = 0; r < ys_.size(); ++r) {
        const std::vector<float>& y = ys_[r];
        const std::vector<float>* xs = xs_.empty() ? nullptr : &xs_[IsXy() ? r : 0];
        if (!xs) {
            const long i = scale.NearestSample(px);
            if (i < 0 || static_cast<size_t>(i) >= y.size() || !std::isfinite(y[i])) continue;
            const double d = std::fabs(scale.YToPixel(y[i]) - py);
            if (d < best) best = d, best_i = i, best_r = r;
            continue;
        }
        for (size_t i = 0; i < y.size(); ++i) {
            const double dx = scale.XToPixel((*xs)[i]) - px, dy = scale.YToPixel(y[i]) - py;
            const double d = IsXy() ? dx * dx + dy * dy : std::fabs(dx);
            if (d < best) best = d, best_i = static_cast<long>(i), best_r = r;
        }
    }
    cursor_x_ = best_i, cursor_row_ = best_r;
    if (best_i < 0) return readout_ = "";
    const double v = ys_[best_r][best_i] * factor[1] + origin[1];
    char text[512];
    if (IsXy()) {
        const double x = xs_[best_r][best_i] * factor[0] + origin[0];
        std::snprintf(text, sizeof text, "%s(%s, %s)", a->name, F(x).c_str(), F(v).c_str());
        return readout_ = text;
    }
    const std::string at = PositionText();
    if (ys_.size() > 1)
        std::snprintf(text, sizeof text, " %s [%d][%d]%s = ", a->name, static_cast<int>(best_i),
                      static_cast<int>(best_r), at.c_str());
    else
        std::snprintf(text, sizeof text, " %s [%d]%s = ", a->name, static_cast<int>(best_i),
                      at.c_str());
    return readout_ = text + F(v);
}

void CPlotView::SetCursorMode(int mode) {
    switch (mode) {
        case CURSOR_ZOOM_OUT:
            OnZoomOut();
            return;
        case CURSOR_REZOOM:
            OnRezoom();
            return;
        case CURSOR_REFRESH:
            OnRefresh();
            return;
        case CURSOR_XROI:
            if (IsXy()) return;
            cursor_mode = mode;
            ShowStatus(" drag left button to define roi");
            return;
        case CURSOR_ZOOM:
            cursor_mode = mode;
            ShowStatus(" drag left button to draw zoom range");
            return;
        default:
            cursor_mode = CURSOR_POINTER;
            return;
    }
}

void CPlotView::OnPan() {
    // The whole range counts as the first level; only a window of samples pans.
    if (FreeX() || scale.ZoomDepth() + 1 < 2) {
        cursor_mode = CURSOR_POINTER;
        ShowStatus(" zoom in 1st");
        return;
    }
    cursor_mode = CURSOR_PAN;
    ShowStatus(" drag left button to draw xrange");
}

bool CPlotView::Press(int mode, double px, double py) {
    press_[0] = at_[0] = px, press_[1] = at_[1] = py;
    drag_ = 0;
    switch (mode) {
        case CURSOR_ZOOM:
        case CURSOR_PAN:
            drag_ = mode;
            return mode == CURSOR_ZOOM;
        case CURSOR_XROI:
            if (IsXy() || !roi_edit_.Press(CRoiEdit::MODE_X, SampleAt(px), 0)) return false;
            drag_ = mode;
            return true;
        default:
            return false;
    }
}

bool CPlotView::Move(double px, double py) {
    if (!drag_) {
        ShowStatus(ReadoutAt(px, py));
        return true;  // the cursor moved
    }
    if (drag_ == CURSOR_PAN) {
        // Whole samples: the window moves by what the mouse has crossed so far.
        const double per = (scale.xmax - scale.xmin) / std::max(1, width_ - 1);
        const long samples = std::lround((at_[0] - px) * per);
        if (samples == 0) return false;
        at_[0] -= samples / per;
        std::string why;
        if (!scale.Pan(samples, &why)) {
            ShowStatus(why);
            return false;
        }
        if (!axis_lock) ResizeYDraw();
        return true;
    }
    at_[0] = px, at_[1] = py;
    if (drag_ == CURSOR_XROI) roi_edit_.Move(SampleAt(px), 0);
    return true;
}

void CPlotView::ZoomXy(double x0, double y0, double x1, double y1) {
    const double lo[2] = {std::min(x0, x1), std::min(y0, y1)};
    const double hi[2] = {std::max(x0, x1), std::max(y0, y1)};
    if (!(hi[0] > lo[0]) || !(hi[1] > lo[1])) {
        ShowStatus("zoomed to less than 1 x point");
        return;
    }
    xy_stack_.push_back({scale.xmin, scale.xmax, scale.ymin, scale.ymax});
    xy_popped_.clear();
    scale.xmin = lo[0], scale.xmax = hi[0], scale.ymin = lo[1], scale.ymax = hi[1];
}

bool CPlotView::Release(double px, double py) {
    const int mode = drag_;
    drag_ = 0;
    if (mode == CURSOR_ZOOM) {
        if (FreeX()) {
            ZoomXy(scale.PixelToX(press_[0]), scale.PixelToY(press_[1]), scale.PixelToX(px),
                   scale.PixelToY(py));
            return true;
        }
        std::string why;
        if (!scale.DefineZoom(scale.PixelToX(press_[0]), scale.PixelToX(px), &why)) {
            ShowStatus(why);
            return true;
        }
        if (!axis_lock) ResizeYDraw();
        return true;
    }
    if (mode == CURSOR_XROI) {
        const CZrkData* a = Data(0);
        roi_edit_.Release(SampleAt(px), 0, a ? a->nx : 1, 1);
        return true;
    }
    return mode == CURSOR_PAN;
}

bool CPlotView::DragBand(double band[4]) const {
    if (drag_ != CURSOR_ZOOM) return false;
    band[0] = press_[0], band[1] = press_[1], band[2] = at_[0], band[3] = at_[1];
    return true;
}

bool CPlotView::OnZoomOut() {
    if (FreeX()) {
        if (xy_stack_.empty()) return false;
        xy_popped_.push_back({scale.xmin, scale.xmax, scale.ymin, scale.ymax});
        const Box b = xy_stack_.back();
        xy_stack_.pop_back();
        scale.xmin = b.x0, scale.xmax = b.x1, scale.ymin = b.y0, scale.ymax = b.y1;
        return true;
    }
    if (!scale.ZoomOut()) return false;
    if (!axis_lock) ResizeYDraw();
    return true;
}

bool CPlotView::OnRezoom() {
    if (FreeX()) {
        if (xy_popped_.empty()) return false;
        xy_stack_.push_back({scale.xmin, scale.xmax, scale.ymin, scale.ymax});
        const Box b = xy_popped_.back();
        xy_popped_.pop_back();
        scale.xmin = b.x0, scale.xmax = b.x1, scale.ymin = b.y0, scale.ymax = b.y1;
        return true;
    }
    if (!scale.Rezoom()) return false;
    if (!axis_lock) ResizeYDraw();
    return true;
}

void CPlotView::OnRefresh() {
    ReadRows();
    FindMaxmin();
    FindScale();
    char text[128];
    std::snprintf(text, sizeof text, " min,max= %s, %s", F(scale.ymin).c_str(),
                  F(scale.ymax).c_str());
    ShowStatus(text);
}

std::string CPlotView::XrangeText() const {
    char text[64];
    std::snprintf(text, sizeof text, "%d x %d", static_cast<int>(std::lround(scale.xmin)),
                  static_cast<int>(std::lround(scale.xmax)));
    return text;
}

bool CPlotView::OnEditXrange(const std::string& text) {
    int lo = 0, hi = 0;
    char tail = 0;
    if (std::sscanf(text.c_str(), "%d x %d %c", &lo, &hi, &tail) != 2) {
        ShowStatus("zoomed to less than 1 x point");
        return false;
    }
    std::string why;
    if (FreeX()) {
        ZoomXy(lo, scale.ymin, hi, scale.ymax);
        return true;
    }
    if (!scale.DefineZoom(lo, hi, &why)) {
        ShowStatus(why);
        return false;
    }
    if (!axis_lock) ResizeYDraw();
    return true;
}

void CPlotView::SetChannel(int iqmp) {
    for (CLine& line : Look().lines) (IsXy() ? line.iqmpy : line.iqmp) = iqmp;
    for (int k = 0; k < 2; ++k)
        if (CZrkData* d = Data(k)) d->changed = 1;
    Draw();
}

int CPlotView::Stats(bool sd, int scope) {
    const CZrkData* a = Data(0);
    if (!Usable(a) || IsXy()) return 0;
    const CZrkData* roi = GlobalDataSpace().FindData("roi_x");
    if (!roi || !roi->data || roi->Count() < 2) {
        ShowStatus("1d roi does not exist");
        return 0;
    }
    float b[2];
    CDataCursor<float> c(roi);
    c.GetI(b[0], 0);
    c.GetI(b[1], 1);
    if (!(b[0] <= b[1]) || b[1] < 0 || b[0] > static_cast<float>(a->nx - 1)) {
        ShowStatus("1d roi is invalid");
        return 0;
    }
    const res_t x0 = b[0] < 0 ? 0 : static_cast<res_t>(b[0]);
    const res_t x1 = std::min<res_t>(a->nx - 1, static_cast<res_t>(b[1]));
    const uint64_t planes = a->Count() / a->CountXY(), plane = CurrentPlane();
    const uint64_t row = std::min<uint64_t>(cursor_row_, a->ny - 1);
    std::vector<uint64_t> lines;
    if (scope == 0) lines = {plane * a->ny + row};
    if (scope == 1)
        for (uint64_t p = 0; p < planes; ++p) lines.push_back(p * a->ny + row);
    if (scope == 2)
        for (uint64_t y = 0; y < a->ny; ++y) lines.push_back(plane * a->ny + y);
    if (scope == 3)
        for (uint64_t l = 0; l < planes * a->ny; ++l) lines.push_back(l);
    const int iqmp = a->IsComplex() ? Look().lines.empty() ? 2 : Look().lines[0].iqmp : 0;
    float u = 0, v = 0;
    uint64_t n = 0;
    for (uint64_t l : lines) {
        n = sd ? MeanSdX(a, l, x0, x1, &u, &v, iqmp) : MinMaxX(a, l, x0, x1, &u, &v, iqmp);
        if (n == 0) u = v = 0;
        char text[512];
        if (lines.size() > 1)
            std::snprintf(text, sizeof text, "[][%d]%s %s, %s, %" PRIu64 "\r\n",
                          static_cast<int>(l % a->ny), a->name, F(u).c_str(), F(v).c_str(), n);
        else
            std::snprintf(text, sizeof text, "[][]%s %s, %s, %" PRIu64 "\r\n", a->name,
                          F(u).c_str(), F(v).c_str(), n);
        Host().History(text);
    }
    char text[256];
    std::snprintf(text, sizeof text,
                  sd ? " mean=%s; sd=%s; n=%" PRIu64 : " min=%s; max=%s; n=%" PRIu64, F(u).c_str(),
                  F(v).c_str(), n);
    ShowStatus(text);
    return 1;
}

int CPlotView::OnRoiSelectAll() {
    const CZrkData* a = Data(0);
    if (!Usable(a) || IsXy()) return 0;
    if (!CRoiEdit::SelectAll(ROI_X, a->nx, 1)) {
        ShowStatus("alloc failed");
        return 0;
    }
    ShowStatus(" select all");
    return 1;
}

int CPlotView::OnReselectRoi() {
    double x0, x1;
    if (!RoiColumns(&x0, &x1)) {
        ShowStatus("1d roi does not exist");
        return 0;
    }
    cursor_mode = CURSOR_XROI;
    ShowStatus(" x range selected");
    return 1;
}

void CPlotView::Replace(CZrkData* result, const char* what) {
    CZrkData* a = Data(0);
    a->NewUndo(what, result);
    a->changed = a->shape_changed = 1;
    Draw();
}

int CPlotView::OnCrop() {
    CZrkData* a = Data(0);
    size_t i0 = 0, i1 = 0;
    if (!Usable(a) || IsXy() || !Window(a->nx, &i0, &i1)) {
        ShowStatus("alloc failed");
        return 0;
    }
    return Reported({.to = REPORT_STATUS}, 0, [&] {
        CDataSpace temp;
        const std::string name = a->name;
        CZrkData* cut = Cut(temp, 0, a, static_cast<int64_t>(i0), static_cast<int64_t>(i1));
        // The positions go with the samples they place.
        if (CZrkData* b = Data(1); Usable(b) && b->nx == a->nx) {
            b->NewUndo("crop", Cut(temp, 0, b, static_cast<int64_t>(i0), static_cast<int64_t>(i1)));
            b->changed = b->shape_changed = 1;
        }
        Replace(cut, "crop");
        char text[512];
        std::snprintf(text, sizeof text, " %s[][]%s crop %d  to %d\r\n", name.c_str(), "",
                      static_cast<int>(i0), static_cast<int>(i1));
        Host().History(text);
        ShowStatus("crop complete");
        return 1;
    });
}

int CPlotView::OnCat(const CZrkData* b, int dir, bool before, const char* what) {
    CZrkData* a = Data(0);
    if (!Usable(a) || !b) return 0;
    return Reported({.to = REPORT_STATUS}, 0, [&] {
        CDataSpace temp;
        CZrkData* r = nullptr;
        try {
            r = before ? Cat(temp, dir, b, a) : Cat(temp, dir, a, b);
        } catch (const std::bad_alloc&) {
            ShowStatus("alloc failed");
            return 0;
        }
        Replace(r, what);
        ShowStatus(std::string(what) + " complete");
        return 1;
    });
}

int CPlotView::OnTranspose(const char* pair) {
    CZrkData* a = Data(0);
    if (!Usable(a)) return 0;
    return Reported({.to = REPORT_STATUS}, 0, [&] {
        char letters[4] = {pair[0], pair[1], 0, 0};
        CZrkData text;
        text.SetHeaderData(TYPE_I1, 2, 1, 1, 1, 1, 1, letters);
        CDataSpace temp;
        Replace(Trans(temp, &text, a), "transpose");
        ShowStatus("transpose complete");
        return 1;
    });
}
