#include "wave/image_buffers.h"

#include <cmath>
#include <limits>

void interleave_planes(const float* planar, float* interleaved, int n) {
    for (int i = 0; i < n; ++i) {
        interleaved[2 * i] = planar[i];
        interleaved[2 * i + 1] = planar[n + i];
    }
}

void split_planes(const float* interleaved, float* planar, int n) {
    for (int i = 0; i < n; ++i) {
        planar[i] = interleaved[2 * i];
        planar[n + i] = interleaved[2 * i + 1];
    }
}

void magnitude_phase(const float* pair, float* mag, float* phase, int n) {
    const float* re = pair;
    const float* im = pair + n;
    for (int i = 0; i < n; ++i) {
        if (mag) mag[i] = std::sqrt(re[i] * re[i] + im[i] * im[i]);
        if (phase) {
            bool tiny = std::fabs(re[i]) < 1e-30f && std::fabs(im[i]) < 1e-30f;
            phase[i] = tiny ? 0.0f : std::atan2(im[i], re[i]);
        }
    }
}

void real_to_complex_inplace(float* buf, int n) {
    // From the end, so no real is overwritten before it moves.
    for (int i = n - 1; i >= 0; --i) {
        buf[2 * i] = buf[i];
        buf[2 * i + 1] = 0.0f;
    }
}

void apply_mask(float* buf, const uint8_t* mask, int n) {
    if (!buf || !mask || n < 1) return;
    for (int i = 0; i < n; ++i)
        if (!mask[i]) buf[i] = 0.0f;
}

void complex_times_real(float* cbuf, const float* rbuf, int n) {
    for (int i = 0; i < n; ++i) {
        cbuf[2 * i] *= rbuf[i];
        cbuf[2 * i + 1] *= rbuf[i];
    }
}

void add_in_place(float* dst, const float* src, int n) {
    for (int i = 0; i < n; ++i) dst[i] += src[i];
}

void scale_in_place(float* dst, float k, int n) {
    for (int i = 0; i < n; ++i) dst[i] *= k;
}

int hold_nonfinite(float* buf, uint8_t* marks, int n) {
    int held = 0;
    for (int i = 0; i < n; ++i) {
        bool bad = !std::isfinite(buf[i]);
        marks[i] = bad;
        if (bad) {
            buf[i] = 0.0f;
            ++held;
        }
    }
    return held;
}

void restore_nan(float* buf, const uint8_t* marks, int n) {
    for (int i = 0; i < n; ++i)
        if (marks[i]) buf[i] = std::numeric_limits<float>::quiet_NaN();
}
