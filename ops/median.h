// Order-statistic operators: the median and the sort along one direction, the circular
// median filter, and the minimum and maximum filters.
//
// Ordering is by one number per element (the i channel unless told otherwise); NaN goes
// after every number, and equal keys keep their storage order, so a complex element is
// always picked or moved whole. Results keep the input's type and steps; inputs are never
// changed.
//
//   Median(temp, 0, a);                  // a's x collapses to 1: the middle of each x line
//   Dilate(temp, list{3,3}, a, false);   // minimum over 3 x 3, each direction shrinks by 2
#pragma once

#include "core/data_space.h"
#include "core/zrk_data.h"

// Element n / 2 of each line sorted along `dir`; the direction becomes 1.
CZrkData* Median(CDataSpace& temp, int dir, const CZrkData* a);
// Each line along `dir` in ascending order.
CZrkData* Sort(CDataSpace& temp, int dir, const CZrkData* a);
// Each element replaced by element count / 2 of its window sorted by `key` (0 i, 1 q,
// 2 magnitude, 3 phase); the window has the sizes of `list`, spans offsets -w/2 ... w-1-w/2
// and wraps around at the edges.
CZrkData* CMedian(CDataSpace& temp, const CZrkData* a, int64_t key, const CZrkData* list);
// Minimum (Dilate) and maximum (Erode) over a window of the sizes of `list`, i and q apart.
// Without `circular` the window starts at the output index and each direction shrinks by
// its size - 1; with it the window is centred as in CMedian and wraps around.
CZrkData* Dilate(CDataSpace& temp, const CZrkData* list, const CZrkData* a, bool circular);
CZrkData* Erode(CDataSpace& temp, const CZrkData* list, const CZrkData* a, bool circular);
