// Masks from magnitude images: threshold, 9 x 9 smoothing and region cleaning by labelling.
#pragma once

#include <cstdint>

// 1 where mag >= background; with `smooth`, each slice gets mask_smooth_9x9 twice.
void mask_from_magnitude(const float* mag, uint8_t* mask, int nx, int ny, int nz, float background,
                         int smooth);
// 9 x 9 box count by running sums; 1 where it exceeds 40. The 4 outer rows and columns become 0.
void mask_smooth_9x9(uint8_t* mask, int nx, int ny);
// Keeps the `nregions` largest regions (if above 0) and fills all voids but the `nvoids`
// largest (if at least 0); per slice with mask_2d or nz 1, else in 3-D. Returns 0, or 1 when
// labelling ran out of labels (the mask is then left as it was).
int mask_regions(uint8_t* mask, int nx, int ny, int nz, int nregions, int nvoids, int mask_2d);
