// What the drivers of phase gradient, matched filter and direct inversion share: the pass of
// a run, the stores of one plane of a multi-plane output, the post-filter and the masks.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wave/wave_params.h"

int estimator_pass(const wave_params* p);
int estimator_passes(const wave_params* p);
// Plane `plane` of `nplanes` of an output, after those of earlier passes.
void estimator_store(const float* buf, wave_params* p, float** temp, wave_output out, int plane,
                     int nplanes);
// The post-filter on `nimages` images of p's image (volume with `volume`); nothing when off.
void estimator_post(float* images, int nimages, const uint8_t* mask, wave_params* p, int volume);
// The auxiliary mask on the stiffness when the SNR mask is on (with use_mask, only when the
// run has a single pass).
void estimator_aux_mask(float* stiff, const uint8_t* aux_mask, const wave_params* p, size_t n);
