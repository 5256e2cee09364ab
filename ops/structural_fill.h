// Filling, keeping and picking parts of arrays: the fill and strip families, fillinf, the
// region operators, select, gather and scatter.
//
// The region forms read the global data space: roi_x for the 1d forms, roi_mask (any type,
// non-zero inside, of the data's xy size) for the 2d forms.
#pragma once

#include <cstdint>
#include <vector>

#include "core/data_space.h"
#include "core/zrk_data.h"

// fill: indices i to j along dir set to `value`; strip: everything else. i > j fills
// nothing (fill) or everything (strip).
CZrkData* Fill(CDataSpace& temp, int dir, const CZrkData* a, int64_t i, int64_t j,
               const CZrkData* value);
CZrkData* Strip(CDataSpace& temp, int dir, const CZrkData* a, int64_t i, int64_t j,
                const CZrkData* value);
// fillr / stripr: radius i to j (both included) from the plane's centre; fills / strips:
// from the volume's centre.
CZrkData* FillR(CDataSpace& temp, const CZrkData* a, double i, double j, const CZrkData* value);
CZrkData* FillS(CDataSpace& temp, const CZrkData* a, double i, double j, const CZrkData* value);
CZrkData* StripR(CDataSpace& temp, const CZrkData* a, double i, double j, const CZrkData* value);
CZrkData* StripS(CDataSpace& temp, const CZrkData* a, double i, double j, const CZrkData* value);
// The region forms.
CZrkData* Fill1d(CDataSpace& temp, const CZrkData* a, const CZrkData* value);
CZrkData* Fill2d(CDataSpace& temp, const CZrkData* a, const CZrkData* value);
CZrkData* Strip1d(CDataSpace& temp, const CZrkData* a, const CZrkData* value);
CZrkData* Strip2d(CDataSpace& temp, const CZrkData* a, const CZrkData* value);
CZrkData* Crop1d(CDataSpace& temp, const CZrkData* a);
CZrkData* Crop2d(CDataSpace& temp, const CZrkData* a);
CZrkData* Points2d(CDataSpace& temp, const CZrkData* a);
// fillinf: infinite or NaN components replaced by the value's, i and q tested apart.
CZrkData* FillInf(CDataSpace& temp, const CZrkData* a, const CZrkData* value);
// select: the points of each plane where mask is not zero, along x; y becomes 1.
CZrkData* Select(CDataSpace& temp, const CZrkData* mask, const CZrkData* a);
// gather: a copy of init whose element p takes a's element at p, with the coordinate of
// each named direction read from its index array at p. scatter: a's element p is written
// to that place of a copy of init. Places outside the arrays are skipped.
CZrkData* Gather(CDataSpace& temp, const CZrkData* dirs, const CZrkData* a, const CZrkData* init,
                 const std::vector<const CZrkData*>& indices);
CZrkData* Scatter(CDataSpace& temp, const CZrkData* dirs, const CZrkData* a, const CZrkData* init,
                  const std::vector<const CZrkData*>& indices);
// set1droi: roi_x from the first two numbers of a. set2droi: the region record of `type`
// ("x", "y", "rect", "ellip", "draw") from a's points (x, y along x, one point per y); the
// mask is rebuilt when one exists. Both return a copy of the region record.
CZrkData* Set1dRoi(CDataSpace& temp, const CZrkData* a);
CZrkData* Set2dRoi(CDataSpace& temp, const CZrkData* type, const CZrkData* a);
