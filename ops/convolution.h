// Sliding products of two arrays: convolution and correlation over all six directions,
// along one direction, and the sliding sum of squared differences.
//
// Index conventions (a = d0, k = d1, m = k's size, all sums over every kernel index j):
//   corr:  out[i] = sum a[i + j] * k[j]             out size n - m + 1 per direction
//   conv:  corr with k reversed in every direction
//   ccorr, cconv: the same with a's index taken modulo n; out size n
//   corr1d, ssd: along one direction only; out there n - m + 1
//   ccorr1d, cssd: circular along one direction over L = max(n, m) points, both zero padded
//                  to L; out there L
//   ssd:   out[i] = sum |a[i + j] - k[j]|^2
// In the one-direction forms k's other resolutions either equal a's (each line of a meets its
// own line of k) or are 1 (one line for all). Complex values are multiplied without
// conjugation. The result type is the common type of the two, complex when either is; the
// inputs are never changed. Sums run in single precision for r4 results, double otherwise.
//
//   CZrkData* c = Conv(temp, image, kernel);   // "resolution must be positive" when k > a
#pragma once

#include "core/data_space.h"
#include "core/zrk_data.h"

CZrkData* Conv(CDataSpace& temp, const CZrkData* a, const CZrkData* k);
CZrkData* Corr(CDataSpace& temp, const CZrkData* a, const CZrkData* k);
CZrkData* CConv(CDataSpace& temp, const CZrkData* a, const CZrkData* k);
CZrkData* CCorr(CDataSpace& temp, const CZrkData* a, const CZrkData* k);

// dir 0 ... 5.
CZrkData* Corr1d(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* k);
CZrkData* CCorr1d(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* k);
CZrkData* Ssd(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* k);
CZrkData* CSsd(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* k);
