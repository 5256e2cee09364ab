#include "display/plot_scale.h"

#include <algorithm>
#include <cmath>

#include "core/number_format.h"

void CPlotScale::Widen(double* lo, double* hi) {
    if (*hi == *lo) {
        *hi += 1;
        *lo -= 1;
    } else if (*hi != 0 && (*hi - *lo) / *hi < 1e-6) {
        // Too thin for a float axis; a negative high lands here too and is widened the same.
        *hi = std::trunc(std::round(*hi + 1));
        *lo = std::trunc(std::round(*lo - 1));
    }
}

bool CPlotScale::FindMaxmin(const float* samples, size_t n, size_t nx) {
    double lo = HUGE_VAL, hi = -HUGE_VAL;
    for (size_t k = 0; k < n; ++k)
        if (std::isfinite(samples[k])) {
            lo = std::min<double>(lo, samples[k]);
            hi = std::max<double>(hi, samples[k]);
        }
    const bool any = lo <= hi;
    if (!any) lo = hi = 0;
    Widen(&lo, &hi);
    ymin = lo, ymax = hi;
    xmin = 0, xmax = nx > 0 ? static_cast<double>(nx - 1) : 0;
    Widen(&xmin, &xmax);
    full_hi_ = xmax;
    stack_.clear();
    popped_.clear();
    return any;
}

void CPlotScale::SetPlot(int left, int top, int width, int height) {
    left_ = left, top_ = top, width_ = std::max(1, width), height_ = std::max(1, height);
}

double CPlotScale::XToPixel(double x) const {
    return left_ + (x - xmin) / (xmax - xmin) * (width_ - 1);
}

double CPlotScale::YToPixel(double y) const {
    return top_ + (ymax - y) / (ymax - ymin) * (height_ - 1);
}

double CPlotScale::PixelToX(double px) const {
    return xmin + (px - left_) / std::max(1, width_ - 1) * (xmax - xmin);
}

double CPlotScale::PixelToY(double py) const {
    return ymax - (py - top_) / std::max(1, height_ - 1) * (ymax - ymin);
}

long CPlotScale::NearestSample(double px) const {
    const double x = std::clamp(PixelToX(px), std::max(0.0, xmin), std::max(0.0, xmax));
    return std::lround(x);
}

bool CPlotScale::DefineZoom(double x0, double x1, std::string* why) {
    const double lo = std::max(0.0, std::round(std::min(x0, x1)));
    const double hi = std::min(full_hi_, std::round(std::max(x0, x1)));
    if (!(hi - lo >= 1)) {
        if (why) *why = "zoomed to less than 1 x point";
        return false;
    }
    stack_.push_back({xmin, xmax});
    popped_.clear();
    xmin = lo, xmax = hi;
    return true;
}

bool CPlotScale::ZoomOut() {
    if (stack_.empty()) return false;
    popped_.push_back({xmin, xmax});
    xmin = stack_.back().lo, xmax = stack_.back().hi;
    stack_.pop_back();
    return true;
}

bool CPlotScale::Rezoom() {
    if (popped_.empty()) return false;
    stack_.push_back({xmin, xmax});
    xmin = popped_.back().lo, xmax = popped_.back().hi;
    popped_.pop_back();
    return true;
}

void CPlotScale::Full() {
    if (!stack_.empty()) xmin = stack_.front().lo, xmax = stack_.front().hi;
    stack_.clear();
    popped_.clear();
}

bool CPlotScale::Pan(long samples, std::string* why) {
    if (stack_.empty()) {
        if (why) *why = " zoom in 1st";
        return false;
    }
    const double span = xmax - xmin;
    const double lo = std::clamp(xmin + static_cast<double>(samples), 0.0, full_hi_ - span);
    xmin = lo, xmax = lo + span;
    return true;
}

std::vector<double> TickPositions(double lo, double hi, double tick) {
    std::vector<double> out;
    if (!(tick > 0) || !std::isfinite(tick) || !std::isfinite(lo) || !std::isfinite(hi)) return out;
    if (lo > hi) std::swap(lo, hi);
    const double first = std::ceil(lo / tick);
    for (double k = first; out.size() < 1000; ++k) {
        const double v = k * tick;
        if (v > hi) break;
        out.push_back(v);
    }
    return out;
}

std::string TickLabel(double value, const char* format) {
    return FormatFloat(value, format ? format : "default");
}
