// Reductions along one direction: mean, sd, max, min and their indices, mip, integrate, proj
// and sumsqr. Every result but integrate's has resolution 1 along the direction; the rest of
// the shape and the axis steps come from the input, which is never changed.
//
// Types. mean and sd give the input's float form (r4, or r8 for 8-byte floats; complex stays
// complex, i and q reduced separately). max, min, mip and sumsqr give the real float form:
// max and min read the i channel, mip the magnitude, sumsqr adds i*i + q*q. The index forms
// give i4 positions, 0-based, the first of equal extremes. integrate and proj keep the input
// type, and so does their running sum: integers wrap.
//
//   CZrkData* m = Mean(temp, 2, a);   // a [64][64][8] -> [64][64][1]
#pragma once

#include "core/data_space.h"
#include "core/zrk_data.h"

CZrkData* Mean(CDataSpace& temp, int dir, const CZrkData* a);
// Population deviation (divided by n), one pass with a running mean.
CZrkData* Sd(CDataSpace& temp, int dir, const CZrkData* a);
CZrkData* Max(CDataSpace& temp, int dir, const CZrkData* a);
CZrkData* Min(CDataSpace& temp, int dir, const CZrkData* a);
CZrkData* MaxIndex(CDataSpace& temp, int dir, const CZrkData* a);
CZrkData* MinIndex(CDataSpace& temp, int dir, const CZrkData* a);
// Maximum of the magnitude.
CZrkData* Mip(CDataSpace& temp, int dir, const CZrkData* a);
// Running sum; the shape stays.
CZrkData* Integrate(CDataSpace& temp, int dir, const CZrkData* a);
CZrkData* Project(CDataSpace& temp, int dir, const CZrkData* a);
CZrkData* SumSqr(CDataSpace& temp, int dir, const CZrkData* a);

// The help record titled "histogram". Histograms are made by the displays, so no row of the
// function table carries it; the help pages show it beside the reductions.
const char* const* HistogramHelp();
