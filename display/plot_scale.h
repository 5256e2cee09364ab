// CPlotScale: the numbers behind a plot, without a toolkit: the y range found from the
// samples with its widenings, the x window of samples with its zoom stack and pan, data to
// pixel and back, and the tick positions of an axis.
//
//   CPlotScale s;
//   s.FindMaxmin(samples, n);           // all 3: 2 ... 4
//   s.SetPlot(60, 20, 700, 500);        // left, top, width, height in pixels
//   double px = s.XToPixel(10), py = s.YToPixel(2.5);
#pragma once

#include <cstddef>
#include <string>
#include <vector>

class CPlotScale {
  public:
    // Low and high of the finite samples, widened: equal ends by 1 each way, a range too thin
    // for a float axis to whole numbers. The x window becomes 0 ... n - 1 (one sample widens
    // like y) and the zoom stack is cleared. False when no sample is finite (range -1 ... 1).
    bool FindMaxmin(const float* samples, size_t n, size_t nx);
    // The widening rules alone.
    static void Widen(double* lo, double* hi);

    // The plot rectangle in pixels.
    void SetPlot(int left, int top, int width, int height);
    double XToPixel(double x) const;
    double YToPixel(double y) const;
    double PixelToX(double px) const;
    double PixelToY(double py) const;
    // The sample index nearest pixel column px, inside the x window.
    long NearestSample(double px) const;

    // Zoom to samples x0 ... x1 (either order); false with the status text in `why` when the
    // window would hold less than one step. Out pops a level, Rezoom goes back in, Full
    // restores the whole range; each false when there is nothing to do.
    bool DefineZoom(double x0, double x1, std::string* why);
    bool ZoomOut();
    bool Rezoom();
    void Full();
    size_t ZoomDepth() const { return stack_.size(); }
    // Moves a zoomed window by whole samples, kept inside the data; false (status " zoom in
    // 1st") when not zoomed.
    bool Pan(long samples, std::string* why);

    double xmin = 0, xmax = 1, ymin = 0, ymax = 1;

  private:
    struct Window {
        double lo, hi;
    };
    double full_hi_ = 1;
    std::vector<Window> stack_;  // the zoomed windows, innermost last
    std::vector<Window> popped_;
    int left_ = 0, top_ = 0, width_ = 1, height_ = 1;
};

// Tick positions of an axis over lo ... hi: multiples of `tick` inside the range, at most
// 1000; none for a tick that is not positive and finite.
std::vector<double> TickPositions(double lo, double hi, double tick);
// The label of a tick: `format` when it is one float conversion, else the default format.
std::string TickLabel(double value, const char* format);
// Whether tick k (counted from the first) carries a label with `skipinter` left out between.
inline bool TickLabelled(size_t k, int skipinter) {
    return skipinter <= 0 || k % static_cast<size_t>(skipinter + 1) == 0;
}
