// Wave direction analysis: how much of the harmonic wave travels along each angle of a range.
//
// The harmonic is extracted again from the offsets, each slice is transformed once, and for
// each angle its spectrum is weighted with the direction filter's Butterworth band-pass
// (dirf_cut, dirf_order) times the squared-cosine sector about the angle (dirf_ncos; below 1
// the band-pass alone), transformed back, and |u|^2 summed over the mask and the slices. An
// angle means what dirf_angle means to the direction filter, so the angle of the largest
// energy can be handed to the chain as it stands.
//
//   wave_range angles{0.0f, 359.0f, 15.0f, 0};
//   std::vector<double> energy;
//   if (wave_direction_analysis(stack, mask, &p, &angles, &energy) == 0)
//       history_text(wave_direction_table(angles, energy));
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "wave/wave_params.h"

// Values start, start + step, ... : `count` of them.
struct wave_range {
    float start = 0.0f, stop = 0.0f, step = 0.0f;
    int count = 0;
};

// Angles run from 0 to 359 degrees: 360 is 0 again.
constexpr float kWaveAngleFirst = 0.0f;
constexpr float kWaveAngleLast = 359.0f;

// Cleans `r` against the limits first..last: a start below first or beyond the stop becomes
// first; the stop is raised to the start and clamped; a step not above 0 becomes
// (stop - start) / (count - 1), or 1.0; a count below 1 is counted from start to stop; a count
// above last - first takes the whole span with step 1.0.
void clean_range(wave_range* r, float first, float last);

// `stack` holds the nt offsets of p's image or volume (nx * ny * nz floats each), or with
// complex_in the planar harmonic pair. `mask` null counts every pixel. Cleans `angles` and
// fills `energy` with one sum per angle. Returns 0, or 1 after reporting on the run log.
int wave_direction_analysis(const float* stack, const uint8_t* mask, const wave_params* p,
                            wave_range* angles, std::vector<double>* energy);

// The table of a finished analysis: headings, then per angle the angle, its energy and its
// share of the largest energy in percent, each "%7.2f ". Lines end in "\r\n".
std::string wave_direction_table(const wave_range& angles, const std::vector<double>& energy);
