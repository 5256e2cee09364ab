// The region mask: a byte plane of the image size in the reserved record "roi_mask", built
// from the region records of the global data space (roi_x, roi_y, roi_rect, roi_ellip,
// roi_draw, roi_binary). No toolkit: the views, the region tool and the operators share it.
//
// Region records hold numbers read in storage order: roi_x and roi_y a low and a high bound,
// roi_rect and roi_ellip two corners (x0, y0, x1, y1), roi_draw points (x, y) in turn.
//
//   CZrkData* m = GetRoiMask(ROI_RECT, 256, 256);   // 1 inside the rectangle, else 0
#pragma once

#include "core/zrk_data.h"

// Kinds of a mask build; the display kinds 2d and rgb take the mask as it stands.
enum RoiKind : int {
    ROI_X = 2,
    ROI_Y = 3,
    ROI_RECT = 4,
    ROI_ELLIPSE = 5,
    ROI_DRAW = 6,
    ROI_BINARY = 8,
    ROI_2D = 0x20000,
    ROI_RGB = 0x80000,
};

// Builds roi_mask (n1, nx x ny) for `kind` and stores it under the undo text "roi"; returns
// the record. Raises "out of memory".
CZrkData* GetRoiMask(int kind, res_t nx, res_t ny);

// The reserved record that holds a region of `kind` ("roi_mask" for the display kinds).
const char* RoiRecordName(int kind);
// Whether the region of `kind` exists: its record has samples and at least 2 elements along x.
bool HasRoi(int kind);
