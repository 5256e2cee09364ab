// CPlotView: the logic of a 1d or xy plot without its toolkit. It reads the rows shown (each
// row of the current plane through its line's channel, shifted by the line's overlay), finds
// the ranges and the scale of the axes, lays out the border from the labels' text metrics and
// turns axes and lines into pixel positions; the toolkit's view only paints what it is given
// and passes the mouse on.
//
// A 1d plot draws row y of data[0] against the sample index, or against data[1]'s first row
// when there is one (a histogram's bin positions). An xy plot draws data[1] (through iqmpy)
// against data[0] (through iqmp), row by row. A row holding more samples than the plot has
// pixel columns becomes each column's min and max.
//
//   CPlotView& v = ...;
//   v.Layout(800, 600, metrics);          // rows read, ranges found, border sized
//   for (const CSeriesPath& p : v.Paths()) ...   // pixel points to draw
//   v.Press(CPlotView::CURSOR_ZOOM, 100, 50); v.Release(300, 50);   // zoomed
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/zrk_data.h"
#include "display/plot_scale.h"
#include "display/roi_edit.h"
#include "display/view_state.h"

struct C1d;
class CNewPlot;

// Width of a text in pixels and the height of a line, from the toolkit's font metrics.
struct CTextMetrics {
    std::function<int(const std::string&)> width;
    int height = 12;
};

// One axis as drawn: pixel positions along it of its ticks, and the labels of the major
// ticks (empty where a label is left out).
struct CAxisMarks {
    const GAxis* axis = nullptr;
    double at = 0;  // the pixel column (y axes) or row (x axes) of the axis line
    std::vector<double> major, minor;
    std::vector<std::string> labels;
};

// One line as drawn, in pixels. NaN in x ends a run of the polyline (a missing sample).
struct CSeriesPath {
    const CLine* line = nullptr;
    std::vector<double> x, y;
    bool decimated = false;  // each column's min and max: no symbols, no error bars
    // Error bar ends, one pair per point (empty without bars); `err_x` when horizontal.
    std::vector<double> err0, err1;
    bool err_x = false;
};

class CPlotView : public CMdiView {
  public:
    enum {
        CURSOR_POINTER = 0,
        CURSOR_XROI = 1,
        CURSOR_ZOOM = 2,
        CURSOR_ZOOM_OUT = 3,
        CURSOR_REZOOM = 4,
        CURSOR_REFRESH = 5,
        CURSOR_PAN = 6
    };
    static constexpr int kCursorModes = 6;
    static const char* const kCursorNames[kCursorModes];

    // `defaults` gives the lines a new row gets (colours, thickness, symbol); may be null.
    CPlotView(CDisplayEntry& doc, const C1d& options, const CNewPlot* defaults);

    bool IsXy() const { return (Look().flags & LOOK_XY) != 0; }
    // x from positions (xy, or a 1d plot against an array): zooms are boxes, not windows of
    // whole samples, and there is no pan.
    bool FreeX() const { return IsXy() || !xs_.empty(); }

    // Reads the rows when the picture is stale, finds the scale and sizes the border for a
    // w x h picture; false when there is nothing to draw (no data).
    bool Layout(int w, int h, const CTextMetrics& metrics);
    // The ranges from the samples: y over the whole rows (x too in xy), the zoom stack cleared.
    void FindMaxmin();
    // Origin and factor of the values shown, from the first enabled x and y axes.
    void FindScale();
    // y found again from the samples inside the x window.
    void ResizeYDraw();
    // Left, top, right and bottom border for the labels measured by `metrics`.
    void SizeBorder(int w, int h, const CTextMetrics& metrics);

    std::vector<CAxisMarks> AxisMarks(const CTextMetrics& metrics) const;
    std::vector<CSeriesPath> Paths() const;
    // roi_x's two bounds in pixel columns; false without a valid x range (or in xy).
    bool RoiColumns(double* x0, double* x1) const;
    // A data point in pixels (for text records and the cursor).
    double XPixel(double x) const { return scale.XToPixel(x); }
    double YPixel(double y) const { return scale.YToPixel(y); }
    // The plot rectangle.
    int PlotLeft() const { return left_; }
    int PlotTop() const { return top_; }
    int PlotWidth() const { return width_; }
    int PlotHeight() const { return height_; }
    // The cursor's sample in pixels; false when none is set.
    bool CursorPixel(double* px, double* py) const;

    // Menu choice of a cursor mode: the three actions (zoom out, rezoom, refresh) act at once
    // and leave the mode as it was; the others set it with their status.
    void SetCursorMode(int mode);
    void OnPan();
    // Mouse in pixels: press, move with the button held, release. True when the picture
    // changed. A move without a press sets the cursor read-out.
    bool Press(int mode, double px, double py);
    bool Move(double px, double py);
    bool Release(double px, double py);
    bool Dragging() const { return drag_ != 0; }
    // The band of a zoom drag in pixels (x0, y0, x1, y1); false when none is being drawn.
    bool DragBand(double band[4]) const;
    // " name [x]... = value" of the sample nearest (px, py); xy "name(x, y)".
    std::string ReadoutAt(double px, double py);

    bool OnZoomOut();
    bool OnRezoom();
    void OnRefresh();
    // The x window as "lo x hi" (sample indices) and back; false with the status when the
    // text is not two numbers or the window holds under one step.
    std::string XrangeText() const;
    bool OnEditXrange(const std::string& text);
    void OnAxisLock() { axis_lock = !axis_lock; }
    // The channel of every line: 0 i, 1 q, 2 magnitude, 3 phase; the arrays redraw.
    void SetChannel(int iqmp);
    void OnPhase() { SetChannel(3); }
    void OnMag() { SetChannel(2); }
    void OnI() { SetChannel(0); }
    void OnQ() { SetChannel(1); }

    // Statistics over roi_x: min and max, or mean and sd; of the line under the cursor, of
    // that row in every plane (All), of each row of the plane (Y), of every row (YAll).
    int OnMinMax() { return Stats(false, 0); }
    int OnMinMaxAll() { return Stats(false, 1); }
    int OnMinMaxY() { return Stats(false, 2); }
    int OnMinMaxYAll() { return Stats(false, 3); }
    int OnRoiStd() { return Stats(true, 0); }
    int OnRoiStdAll() { return Stats(true, 1); }
    int OnRoiStdY() { return Stats(true, 2); }
    int OnRoiStdYAll() { return Stats(true, 3); }
    // roi_x over the whole row; " x range selected" again for the roi drawn last.
    int OnRoiSelectAll();
    int OnReselectRoi();

    // The array cut to the x window shown (every row and plane), with its undo.
    int OnCrop();
    int OnCat(const CZrkData* b, int dir, bool before, const char* what);
    int OnTranspose(const char* pair);

    // The xy plane index of the page shown.
    uint64_t CurrentPlane() const;
    // The rows read at the last layout (values with the overlay added).
    size_t RowCount() const { return ys_.size(); }

    CPlotScale scale;
    double origin[2] = {0, 0}, factor[2] = {1, 1};  // x, y
    int cursor_mode = CURSOR_POINTER;
    int axis_lock = 0;
    int lines_overlayed = 0;

  protected:
    std::string Readout() const override { return readout_; }

  private:
    // The rows of the page through the lines' channels; lines added for new rows.
    void ReadRows();
    void EnsureLines(size_t rows);
    // The sample index under pixel column px (the nearest position's index against
    // positions), and the pixel column of a sample index; roi_x holds indices.
    double SampleAt(double px) const;
    double SamplePixel(double index) const;
    // The first and last sample index inside the x window (1d), clamped.
    bool Window(size_t n, size_t* i0, size_t* i1) const;
    int Stats(bool sd, int scope);
    void ZoomXy(double x0, double y0, double x1, double y1);
    // After an edit of the array: undo taken, stale, redrawn.
    void Replace(CZrkData* result, const char* what);

    const CNewPlot* defaults_;
    std::vector<std::vector<float>> ys_, xs_;  // xs_ empty in a 1d plot without x positions
    std::vector<std::vector<float>> errs_;     // the err_y row of each line, or empty
    res_t shape_[3] = {0, 0, 0};               // nx, ny, nz at the last read
    int left_ = 0, top_ = 0, width_ = 1, height_ = 1;
    // xy zoom: the windows zoomed out of, innermost last.
    struct Box {
        double x0, x1, y0, y1;
    };
    std::vector<Box> xy_stack_, xy_popped_;
    int drag_ = 0;  // the mode of the drag under way
    double press_[2] = {0, 0}, at_[2] = {0, 0};
    CRoiEdit roi_edit_;
    long cursor_x_ = -1;
    size_t cursor_row_ = 0;
    std::string readout_;
};

// The spacing of ticks for a span drawn over `pixels`: `tick` when it is positive and leaves
// at least 4 pixels between ticks, else a step of 1, 2 or 5 times a power of ten that leaves
// about `spacing` pixels.
double TickSpacing(double tick, double span, double pixels, double spacing);
