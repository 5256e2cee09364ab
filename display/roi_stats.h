// Statistics of the region of a display: mean, population sd of the finite values under the
// mask, snr = mean / sd (0 when sd is 0) and n, the pixels under the mask. The lines go to the
// history and the last plane's figures to the status, numbers in the default number format.
// A 1d display's x range (roi_x) gives its min and max the same way.
//
//   CalcRoi(image, plane, ROI_RECT, 0);   // "[][]a 7.500, 2.062, 3.638, 4\r\n"
//                                         // " mean=7.500; sd=2.062; snr=3.638; n=4"
#pragma once

#include <cstdint>

#include "core/zrk_data.h"

// Statistics of one region plane: false when there is no region.
struct CRoiStats {
    float mean = 0, sd = 0, snr = 0;
    uint64_t n = 0;
};
bool RoiStats(const CZrkData* a, uint64_t plane, int kind, int iqmp, CRoiStats* out);

// `plane` counts xy planes over the array; `iqmp` is the view's channel. 0 without a region.
int CalcRoi(const CZrkData* a, uint64_t plane, int kind, int iqmp);
// Every plane of the sequence, one line each.
int CalcRoiAll(const CZrkData* a, int kind, int iqmp);
// Each z of the volume that holds `plane`.
int CalcRoiZAll(const CZrkData* a, uint64_t plane, int kind, int iqmp);

// Min and max of line `line` between roi_x's bounds; the All forms every line of the array
// and each line of the plane that holds `line`.
int CalcRoiX(const CZrkData* a, uint64_t line, int iqmp);
int CalcRoiXAll(const CZrkData* a, int iqmp);
int CalcRoiXZAll(const CZrkData* a, uint64_t line, int iqmp);
