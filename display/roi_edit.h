// CRoiEdit: the mouse side of the regions, without a toolkit. A press stores the first point,
// moves update the second (or add points to a drawn outline), the release finishes; each
// change rewrites the mode's region record (roi_x, roi_y, roi_rect, roi_ellip, roi_draw) of
// the global data space in data coordinates under the undo text "roi" and asks every display
// to redraw. The "+" modes OR the finished shape into roi_mask and the composite; "undo add"
// takes the last add back.
//
//   CRoiEdit edit;
//   host status: edit.Status(CRoiEdit::MODE_RECT)     // " drag left button to define roi"
//   edit.Press(CRoiEdit::MODE_RECT, 3.5f, 4.0f);
//   edit.Move(10.0f, 12.0f);                           // roi_rect = {3.5, 4, 10, 12}
//   edit.Release(10.0f, 12.0f, 256, 256);
#pragma once

#include <cstdint>
#include <vector>

#include "core/zrk_data.h"

class CRoiEdit {
  public:
    // The view's cursor modes that concern regions (the others are no region mode).
    enum Mode {
        MODE_X = 4,
        MODE_Y = 5,
        MODE_RECT = 6,
        MODE_ELLIPSE = 7,
        MODE_DRAW = 8,
        MODE_ADD_X = 9,
        MODE_ADD_Y = 10,
        MODE_ADD_RECT = 11,
        MODE_ADD_ELLIPSE = 12,
        MODE_ADD_DRAW = 13,
        MODE_UNDO_ADD = 14,
    };

    // The mask kind a mode draws (display/roi_mask.h); 0 for no region mode.
    static int KindOf(int mode);
    static bool IsAdd(int mode) { return mode >= MODE_ADD_X && mode <= MODE_ADD_DRAW; }
    // The status text of a mode chosen from the menu; empty for modes without one.
    static const char* Status(int mode);

    // A press in `mode` at data point (x, y); false when the mode defines no region.
    bool Press(int mode, float x, float y);
    // A move while the button is held; false when no drag is on.
    bool Move(float x, float y);
    // The release: the region of an nx x ny image is finished; the add modes OR it into
    // roi_mask and the composite. Returns the kind drawn, 0 when no drag was on.
    int Release(float x, float y, res_t nx, res_t ny);
    bool Dragging() const { return mode_ != 0; }

    // "undo add": roi_mask and the composite as they were before the last add.
    int UndoAdd();
    // " select all": a region of the view's kind over the whole nx x ny image.
    static int SelectAll(int kind, res_t nx, res_t ny);

  private:
    void Write();

    int mode_ = 0;
    std::vector<float> points_;
};

// Sets region record `name` of the global data space to the r4 numbers `values` under the
// undo text "roi" and marks it changed; null when it can't be made.
CZrkData* SetRoiRecord(const char* name, const std::vector<float>& values);
