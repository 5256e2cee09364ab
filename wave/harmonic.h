// The temporal harmonic of a phase-offset stack and the images rebuilt from it over one cycle.
//
// phase_offset_filtering_3d leaves R in offset plane 1 and I in plane 2 of the stack (plane 0
// as it was): R + iI is the Fourier coefficient at the harmonic times 2/nt, so a sinusoid of
// amplitude a gives R^2 + I^2 = a^2. The chain takes planes 1 and 2 as the pair.
#pragma once

#include <cstdint>

// phase_offset_filtering and its volume form are declared with the chain's stages (stages.h);
// they copy blocks of pixels (cache_kb) so that time runs fastest, and do nothing when
// `harmonic` is above (nt - 1) / 2. interp_images and dirf_images store the images below.

// R cos(x) - I sin(x) + offset with x = harmonic * step * 2 pi / nsteps, from the planar pair.
// *out_holder (npix floats) is allocated through the table when null.
void phase_interpolation(const float* pair, float** out_holder, int npix, int harmonic, int step,
                         int nsteps, float offset);
