// Conditioning of wave images before the estimators: local and global DC removal, the mean*2
// filter, filling outside the mask, and the outputs of the harmonic (amplitude, phase,
// displacement, amplitude division and clipping).
#pragma once

#include <cstdint>

#include "wave/wave_params.h"

// Mean of masked pixels (all when mask is null) in a window of min(winx, nx) by
// min(winy, ny), cut at the image edges; 0 where the window holds none.
void local_mean_2d(const float* in, const uint8_t* mask, float* out, int nx, int ny, int winx,
                   int winy);
// Per offset and slice: subtracts the masked local mean over ldc_win.
int local_dc_removal(wave_params* p, float* stack, uint8_t* mask, int pass, int npasses);
// Per offset and slice: 5 x 5 then 3 x 3 local means, masked; stored to meanx2_out.
int mean_x2_filter(wave_params* p, float* stack, uint8_t* mask, int pass, int npasses);
// Per image: the masked mean is subtracted inside the mask; outside becomes 0.
void global_dc_removal(float* stack, const uint8_t* mask, int npix, int nimages);
// A table-owned copy of `image` in *holder (which must outlive the block) whose unmasked
// pixels hold the masked mean; null when the mask is empty.
float* fill_outside_with_mean(const float* image, const uint8_t* mask, int nx, int ny,
                              float** holder);
// Displacement in microns per unit of phase amplitude, from the encoding parameters.
double displacement_scale(const wave_params* p);
// Amplitude and phase of the planar pair, amplitude thresholding of the mask, displacement
// output, amplitude division or clipping of the pair. `phase_out` and `amp2_out` (npix
// floats, may be null) receive the phase and the amplitude before division.
int harmonic_outputs(wave_params* p, float* pair, float* phase_out, float* amp2_out, uint8_t* mask,
                     int pass, int npasses);

// store_image kind of the amplitude and phase planes (amp_phase_out), sent to r1i1_out.
constexpr int WAVE_KIND_AMP_PHASE = 1;
