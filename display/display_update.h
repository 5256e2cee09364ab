// Bringing the displays up to date after an evaluation or a tool step. The walk over the
// window list closes the displays of arrays that left the data space or were freed, gives
// displays of arrays marked update_range a fresh finite range, and redraws the displays of
// arrays marked changed or shape_changed; then those three flags clear on every array.
#pragma once

#include <cstddef>

class CDataSpace;
class CPlane;
class CWindowSpace;
class CZrkData;

void UpdateDisplays(CDataSpace& space, CWindowSpace& windows);

// Low and high of the finite samples of v[0 .. n); low above high when none is.
void FiniteSpanRange(const float* v, size_t n, float* lo, float* hi);
// Smallest and largest finite sample of `a` through channel `iqmp` (complex arrays only);
// false when there is none.
bool FiniteRange(const CZrkData* a, int iqmp, float& lo, float& hi);
// datamin and datamax from the finite range of `a`, and a window over all of it.
void SetRangeWinLev(CPlane& plane, const CZrkData* a);
