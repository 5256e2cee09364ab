// Clipping and thresholding of values: each component of an element (i and q on their own)
// is compared with a closed range [low, high]. The result keeps the type and resolutions of
// the input, and a NaN component stays NaN, since it lies neither inside nor outside.
//
// Integer data take the limits rounded inwards and held to the type's range, so clip never
// wraps a limit around: clip of i1 data to [-1000, 2.5] is a clip to [-128, 2].
//
//   CZrkData* c = Clip(temp, a, 0.0, 1.0);            // raises "low must not be above high"
//   CZrkData* t = Thresh(temp, a, -3.0, 3.0, zero);   // components outside become 0
#pragma once

#include "core/data_space.h"
#include "core/zrk_data.h"

// Components below low become low, above high become high.
CZrkData* Clip(CDataSpace& temp, const CZrkData* a, double low, double high);

// Components below low or above high become the first element of `value`, cast to the
// data's component type as the cast operator would.
CZrkData* Thresh(CDataSpace& temp, const CZrkData* a, double low, double high,
                 const CZrkData* value);
