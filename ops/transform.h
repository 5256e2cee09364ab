// Fourier transforms along one direction: ft (padded symmetrically to a power of two),
// mrft (any length, no padding) and pnft (partial k-space with homodyne weights).
//
// The result is always complex r4 whatever the input, with the padded size along the
// direction and the input's steps. A line is padded with zeros, weighted and chopped as
// asked (element i times (-1)^i), transformed, chopped again and stored. Forward has the
// negative exponent; neither direction is scaled, so an inverse after a forward gives n times
// the data. The lines of one call are transformed in cache-sized batches by FFTW plans that
// are kept for the run.
//
//   CZrkData* f = Ft(temp, 2, d0, 1, 1, 0);   // ftz(d0,1,1,0): chop before, inverse
#pragma once

#include <cstdint>

#include "core/data_space.h"
#include "core/zrk_data.h"
#include "ops/ft_options.h"

// One direction by the options; the caller sets err_func. Raises "out of memory" for a line
// FFTW cannot take.
CZrkData* TransformDir(CDataSpace& temp, int dir, const CZrkData* a, CFtOptions o);

// ft and mrft: chop before, inverse and chop after count when not zero.
CZrkData* Ft(CDataSpace& temp, int dir, const CZrkData* a, int64_t chop_before, int64_t inverse,
             int64_t chop_after);
CZrkData* Mrft(CDataSpace& temp, int dir, const CZrkData* a, int64_t chop_before, int64_t inverse,
               int64_t chop_after);
// pnft: `filter` is the homodyne ramp's window; options bits 1 chop before, 2 inverse, 4 pad
// to a power of two. Raises "center must be between 0 and n" for a center past the data.
CZrkData* Pnft(CDataSpace& temp, int dir, const CZrkData* a, int64_t center, int64_t filter,
               int64_t options);
