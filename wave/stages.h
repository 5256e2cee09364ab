// Stages of the chain that live in their own files: band, direction and Z-only filters,
// harmonic extraction, interpolated images, and the estimators (local frequency, phase
// gradient, matched filter, direct inversion). All return 0 on success and non-zero after
// reporting on the run log. Buffers are planar pairs (R plane, I plane) or real stacks.
#pragma once

#include <cstdint>

#include "wave/wave_params.h"

// Harmonic extraction over the offsets; leaves R in offset plane 1 and I in plane 2.
int phase_offset_filtering(float* stack, int nx, int ny, int nt, int harmonic);
int phase_offset_filtering_3d(float* stack, int nx, int ny, int nz, int nt, int harmonic);
// mode 0 filters the raw stack, 1 the R, I pair.
int direction_filter_2d(float* stack, wave_params* p, int mode);
int direction_filter(float* stack, wave_params* p, int mode);
int zonly_filter(float* stack, wave_params* p);
int pre_filter(float* stack, uint8_t* mask, wave_params* p, filter_spec* spec);
int pre_filter_3d(float* stack, uint8_t* mask, wave_params* p, filter_spec* spec);
int mid_filter(float* pair, uint8_t* mask, wave_params* p, filter_spec* spec);
int mid_filter_3d(float* pair, uint8_t* mask, wave_params* p, filter_spec* spec);
int interp_images(float* pair, uint8_t* mask, wave_params* p, int pass, int npasses);
int dirf_images(float* pair, uint8_t* mask, wave_params* p, int pass, int npasses);

// The images lfe_2d_1axis and lfe_3d_1axis take from the chain: the offsets (lfe_noft), one
// pair woven as a complex image (lfe_complex, not for a full 3-D estimate), or R and I.
int lfe_ncomp(const wave_params* p, int volume);
int lfe_2d_1axis(wave_params* p, float* data, uint8_t* mask, uint8_t* aux_mask, int ncomp,
                 float** temp_holder);
int lfe_2d_XYZ(wave_params* p, float* data, uint8_t* mask, float* amp2, uint8_t* aux_mask,
               float** temp_holder);
int lfe_3d_1axis(wave_params* p, float* data, uint8_t* mask, uint8_t* aux_mask, int ncomp,
                 float** temp_holder);
int lfe_3d_XYZ(wave_params* p, float* data, uint8_t* mask, float* amp2, uint8_t* aux_mask,
               float** temp_holder);

int pg_2d_1axis(wave_params* p, float* pair, uint8_t* mask, uint8_t* aux_mask, float** temp);
int pg_2d_XYZ(wave_params* p, float* pairs, uint8_t* mask);
int pg_3d_1axis(wave_params* p, float* pair, uint8_t* mask, uint8_t* aux_mask, float** temp);
int pg_3d_XYZ(wave_params* p, float* pairs, uint8_t* mask);

int mf_2d(wave_params* p, float* pair, uint8_t* mask, uint8_t* aux_mask);
int mf_2d_XYZ(wave_params* p, float* pairs, uint8_t* mask);
int mf_3d(wave_params* p, float* pair, uint8_t* mask, uint8_t* aux_mask);
int mf_3d_XYZ(wave_params* p, float* pairs, uint8_t* mask);

int direct_2d_1axis(wave_params* p, float* pair, uint8_t* mask, uint8_t* aux_mask, float** temp);
int direct_2d_XYZ(wave_params* p, float* pairs, uint8_t* mask);
int direct_3d_1axis(wave_params* p, float* pair, uint8_t* mask, uint8_t* aux_mask, float** temp);
int direct_3d_XYZ(wave_params* p, float* pairs, uint8_t* mask);
