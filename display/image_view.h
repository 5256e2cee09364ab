// CImageView: the logic of a 2d (or rgb) image view without its toolkit: zoom and pan of the
// shown plane, the cursor read-out, profiles, the angle and line measures, and the edits that
// replace the array (crop, cat, transposes, rotations, each with its undo).
//
// Screen pixels map to data pixels through the plane's zoom (percent) and pan (screen
// pixels): x = (sx + pan x) * 100 / zoom x. Overlays live in the data space as r4 point lists
// shared by every view: zrk_profile (x0, y0, x1, y1), zrk_angle (three points), zrk_line.
//
//   CImageView& v = ...;
//   v.OnZoom200();
//   v.SetProfile(space, 0, 5, 63, 5);
//   v.PlotProfile(space);     // "a_p00" with the samples along the line
#pragma once

#include <string>
#include <vector>

#include "display/image_options.h"
#include "display/view_state.h"

class CDataSpace;

class CImageView : public CMdiView {
  public:
    static constexpr int kCursorModes = 18;
    static const char* const kCursorNames[kCursorModes];
    static const char* const kBitmapKinds[4];
    enum {
        CURSOR_POINTER = 0,
        CURSOR_WINLEV = 1,
        CURSOR_PROFILE = 2,
        CURSOR_ANGLE = 3,
        CURSOR_END_LINE = 16,
        CURSOR_LINE = 17
    };

    // `space` holds the arrays and the overlays the view reads.
    CImageView(CDisplayEntry& doc, const C2d& options, const CDataSpace& space)
        : CMdiView(doc), options_(options), space_(space) {}

    // The plane that carries zoom and pan: palplane, or rplane of an rgb image.
    CPlane& ZoomPlane() const;
    // Columns and rows of the shown plane (0 without data).
    int Columns() const;
    int Rows() const;

    // Zoom for a client area of w by h pixels by the zoom mode (0 leaves it as set).
    void SizeFrame(int w, int h);
    void SetZoom(float percent);
    void OnZoom25() { SetFixedZoom(25); }
    void OnZoom50() { SetFixedZoom(50); }
    void OnZoom100() { SetFixedZoom(100); }
    void OnZoom200() { SetFixedZoom(200); }
    void OnZoom400() { SetFixedZoom(400); }
    void OnZoomIn();
    void OnZoomOut();
    void Pan(int dx, int dy);

    // Data pixel under screen point (sx, sy); false outside the image.
    bool ToData(int sx, int sy, int& x, int& y) const;
    // " name[x][y][z] = value" for data pixel (x, y), with mag and phase for complex data and
    // the length of the profile or line in the line modes.
    std::string OverlayInfo(int x, int y) const;
    // Length of (dx, dy) pixels in the units of the array's spacing.
    double LengthMm(double dx, double dy) const;

    // The profile line; LoadProfile samples it (n = rounded length + 1, averaged over
    // profile_width lines, clamped to the image). Complex arrays give i, q pairs.
    void SetProfile(CDataSpace& space, float x0, float y0, float x1, float y1);
    int LoadProfile(const CDataSpace& space, uint64_t z, std::vector<float>& out) const;
    int PlotProfile(CDataSpace& space);
    int PlotProfileThruZ(CDataSpace& space);
    // The pixel (x, y) through the scroll direction.
    int PlotThruZ(CDataSpace& space, int x, int y);
    // The current profile (or pixel) as one more line of the array `plot`, or of the last
    // array this view made.
    int AppendProfile(CDataSpace& space, const char* plot);
    int AppendLastProfile(CDataSpace& space) { return AppendProfile(space, last_plot_.c_str()); }
    int AppendThruZ(CDataSpace& space, const char* plot, int x, int y);
    int AppendLastThruZ(CDataSpace& space, int x, int y) {
        return AppendThruZ(space, last_plot_.c_str(), x, y);
    }

    // One click of the angle measure; the third gives the angle at the second point in the
    // status (radians or degrees by the look).
    void OnAngle(CDataSpace& space, float x, float y);
    // Angle at p1 between p0 and p2, in radians (0 when a side has no length).
    static double Angle(const float p[6]);
    // One point of the line measure; `end` ends the line.
    void OnLinePoint(CDataSpace& space, float x, float y, bool end);

    // Edits of the array; each takes the undo of the array and redraws.
    int OnCrop(CDataSpace& space);
    int OnCatRight(CDataSpace& space, const CZrkData* b) {
        return CatWith(space, b, 0, false, "cat right");
    }
    int OnCatLeft(CDataSpace& space, const CZrkData* b) {
        return CatWith(space, b, 0, true, "cat left");
    }
    int OnCatTop(CDataSpace& space, const CZrkData* b) {
        return CatWith(space, b, 1, true, "cat top");
    }
    int OnCatBottom(CDataSpace& space, const CZrkData* b) {
        return CatWith(space, b, 1, false, "cat bottom");
    }
    int OnCatFront(CDataSpace& space, const CZrkData* b) {
        return CatWith(space, b, 2, true, "cat front");
    }
    int OnCatBack(CDataSpace& space, const CZrkData* b) {
        return CatWith(space, b, 2, false, "cat back");
    }
    int OnTransposeXy() { return Transpose("xy"); }
    int OnTransposeXz() { return Transpose("xz"); }
    int OnTransposeYz() { return Transpose("yz"); }
    int OnRotate90();
    int OnRotateM90();

    int zoom_mode = 0;
    int bitmap_kind = 0;  // normal, anti-alias x2, anti-alias x4, 24 bit bitmap
    int cursor_mode = CURSOR_POINTER;
    int angle_clicks = 0;
    int client_w = 0, client_h = 0;

  protected:
    std::string Readout() const override;

    int mouse_x = 0, mouse_y = 0;

  private:
    void SetFixedZoom(float percent);
    int CatWith(CDataSpace& space, const CZrkData* b, int dir, bool before, const char* what);
    int Transpose(const char* pair);
    // Replaces the samples of the shown array with `result` under `what`, then redraws.
    void Replace(CZrkData* result, const char* what);
    int MakeLine(CDataSpace& space, const std::vector<float>& line, uint64_t lines, const char* tag,
                 std::string& name);

    const C2d& options_;
    const CDataSpace& space_;
    std::string last_plot_;
    int last_plot_thru_z_ = 0;
    uint64_t last_length_ = 0;
};

// Sets the r4 point list `name` of `space` to `values`; null when it can't be made.
CZrkData* SetOverlay(CDataSpace& space, const char* name, const std::vector<float>& values);
