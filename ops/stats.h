// Statistics of a line, a plane or a volume of one array, for the displays, the regions and
// the inversion sheet's reports. Values are read as floats through the channel `iqmp`
// (0 i, 1 q, 2 magnitude, 3 phase).
//
// Every form counts the points it visits, NaN and infinity included, and returns that count.
// Values that are not finite take no further part; when there were any, one history line
// says so ("NAN/INF found in data... min/max of valid data is reported" and its mean/sd and
// median twins). With no finite value, min stays the largest float and max its negative;
// mean and sd are 0.
//
// The plane forms take the mask of the current region: `roi_kind` is the view's region kind
// (display/roi_mask.h). Without that region (its reserved record missing or narrower than 2
// in its first direction) nothing is computed, the outputs are left alone and the return is 0.
//
// A failure writes "error caught: MinMaxXy:" (and so on) to the history and its text to the
// status, and returns 0.
//
//   float lo, hi;
//   uint64_t n = MinMaxXy(image, plane, ROI_RECT, &lo, &hi);   // 0: no rectangle drawn
#pragma once

#include <cstdint>

#include "core/zrk_data.h"

// Line `line` (counted over all lines of the array), x from x0 to x1 inclusive, clamped.
uint64_t MinMaxX(const CZrkData* a, uint64_t line, res_t x0, res_t x1, float* min, float* max,
                 int iqmp = 0);
uint64_t MeanSdX(const CZrkData* a, uint64_t line, res_t x0, res_t x1, float* mean, float* sd,
                 int iqmp = 0);

// Plane `plane` (counted over all xy planes), under the region's mask.
uint64_t MinMaxXy(const CZrkData* a, uint64_t plane, int roi_kind, float* min, float* max,
                  int iqmp = 0);
uint64_t MeanSdXy(const CZrkData* a, uint64_t plane, int roi_kind, float* mean, float* sd,
                  int iqmp = 0);

// Volume `volume` (counted over all xyz volumes), every point.
uint64_t MinMaxXyz(const CZrkData* a, uint64_t volume, float* min, float* max, int iqmp = 0);
uint64_t MeanSdXyz(const CZrkData* a, uint64_t volume, float* mean, float* sd, int iqmp = 0);
// The median of the finite values: the middle one, or the mean of the middle two.
uint64_t MedianXyz(const CZrkData* a, uint64_t volume, float* median, int iqmp = 0);
