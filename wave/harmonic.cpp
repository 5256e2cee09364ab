#include "wave/harmonic.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <vector>

#include "wave/driver.h"
#include "wave/fft.h"
#include "wave/image_buffers.h"
#include "wave/mem.h"
#include "wave/messages.h"
#include "wave/progress.h"
#include "wave/stages.h"

namespace {

constexpr double kPi = std::numbers::pi;

// Images of the pair over one cycle, masked on request, as planes of `output`.
int cycle_images(float* pair, uint8_t* mask, wave_params* p, int nsteps, float offset, int masked,
                 wave_output output, int pass, int npasses) {
    int npix = p->nx * p->ny * std::max(p->nz, 1);
    int level = mem_next_level();
    float *out = nullptr, *temp = nullptr;
    for (int s = 0; s < nsteps; ++s) {
        phase_interpolation(pair, &out, npix, p->harmonic_number, s, nsteps, offset);
        if (masked) apply_mask(out, mask, npix);
        store_image(out, p, 0, &temp, output, pass * nsteps + s, npasses * nsteps);
    }
    mem_free_level(level, 0);
    return 0;
}

}  // namespace

int phase_offset_filtering(float* stack, int nx, int ny, int nt, int harmonic) {
    return phase_offset_filtering_3d(stack, nx, ny, 1, nt, harmonic);
}

int phase_offset_filtering_3d(float* stack, int nx, int ny, int nz, int nt, int harmonic) {
    if (harmonic > (nt - 1) / 2) return 0;
    stopwatch(0);
    wave_say(WF_FILTER, nullptr, "Phase offset filtering ");
    size_t npix = size_t(nx) * ny * nz;
    std::vector<double> S(nt), C(nt);
    for (int t = 0; t < nt; ++t) {
        double a = 2.0 * kPi * harmonic * t / nt;
        S[t] = -std::sin(a) * 2.0 / nt;
        C[t] = std::cos(a) * 2.0 / nt;
    }
    int kb = cache_kb < 1 ? 64 : cache_kb;
    size_t width = std::clamp<size_t>(size_t(kb) * 1024 / (4 * size_t(nt)), 1, npix);
    std::vector<float> block(width * nt);
    float* R = stack + npix;
    float* I = stack + 2 * npix;
    for (size_t p0 = 0; p0 < npix; p0 += width) {
        size_t w = std::min(width, npix - p0);
        for (int t = 0; t < nt; ++t) {
            const float* src = stack + t * npix + p0;
            for (size_t b = 0; b < w; ++b) block[b * nt + t] = src[b];
        }
        for (size_t b = 0; b < w; ++b) {
            const float* s = &block[b * nt];
            double r = 0.0, i = 0.0;
            for (int t = 0; t < nt; ++t) {
                r += s[t] * C[t];
                i += s[t] * S[t];
            }
            R[p0 + b] = float(r);
            I[p0 + b] = float(i);
        }
    }
    std::string t = wave_fmt("(%.2f s) ", stopwatch(1));
    wave_say(WF_FILTER, nullptr, t.c_str());
    return 0;
}

void phase_interpolation(const float* pair, float** out_holder, int npix, int harmonic, int step,
                         int nsteps, float offset) {
    if (!*out_holder) mem_allocate(out_holder, sizeof(float), uint32_t(npix), 0);
    float* out = *out_holder;
    const float* R = pair;
    const float* I = pair + npix;
    if (step == 0) {
        for (int i = 0; i < npix; ++i) out[i] = R[i] + offset;
        return;
    }
    double x = harmonic * step * 2.0 * kPi / nsteps;
    float c = float(std::cos(x)), s = float(std::sin(x));
    for (int i = 0; i < npix; ++i) out[i] = R[i] * c - I[i] * s + offset;
}

int interp_images(float* pair, uint8_t* mask, wave_params* p, int pass, int npasses) {
    wave_say(WF_FILTER, "interpolating images", "interpolating images");
    float offset = p->type_code == 8 ? 128.0f : 0.0f;
    return cycle_images(pair, mask, p, p->ninterp, offset, p->interp_mask, p->interp_out, pass,
                        npasses);
}

int dirf_images(float* pair, uint8_t* mask, wave_params* p, int pass, int npasses) {
    // With interpolation off the direction output still shows one cycle, at the default count.
    int nsteps = p->ninterp > 0 ? p->ninterp : 8;
    return cycle_images(pair, mask, p, nsteps, 0.0f, p->dirf_mask, p->dirf_out, pass, npasses);
}
