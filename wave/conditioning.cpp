#include "wave/conditioning.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <vector>

#include "wave/driver.h"
#include "wave/image_buffers.h"
#include "wave/mask.h"
#include "wave/mem.h"
#include "wave/messages.h"

namespace {

constexpr double kPi = std::numbers::pi;

// Runs `f(image, mask)` on every slice of every image of the stack.
template <class F>
void each_slice(wave_params* p, float* stack, uint8_t* mask, F&& f) {
    size_t plane = size_t(p->nx) * p->ny;
    int nimages = p->complex_in ? 2 : p->nt;
    int nz = std::max(p->nz, 1);
    for (int i = 0; i < nimages; ++i)
        for (int z = 0; z < nz; ++z)
            f(stack + (size_t(i) * nz + z) * plane, mask ? mask + z * plane : nullptr, i * nz + z,
              nimages * nz);
}

}  // namespace

void local_mean_2d(const float* in, const uint8_t* mask, float* out, int nx, int ny, int winx,
                   int winy) {
    int wx = std::clamp(winx, 1, nx), wy = std::clamp(winy, 1, ny);
    // Summed areas of masked values and counts, one row and column of zeros in front.
    size_t sx = size_t(nx) + 1;
    std::vector<double> sum(sx * (ny + 1), 0.0), cnt(sx * (ny + 1), 0.0);
    for (int y = 0; y < ny; ++y)
        for (int x = 0; x < nx; ++x) {
            size_t i = size_t(y) * nx + x;
            bool in_mask = !mask || mask[i];
            size_t k = (y + 1) * sx + x + 1;
            sum[k] = sum[k - 1] + sum[k - sx] - sum[k - sx - 1] + (in_mask ? in[i] : 0.0);
            cnt[k] = cnt[k - 1] + cnt[k - sx] - cnt[k - sx - 1] + (in_mask ? 1.0 : 0.0);
        }
    for (int y = 0; y < ny; ++y) {
        int y0 = std::max(y - wy / 2, 0), y1 = std::min(y + (wy - 1) / 2, ny - 1) + 1;
        for (int x = 0; x < nx; ++x) {
            int x0 = std::max(x - wx / 2, 0), x1 = std::min(x + (wx - 1) / 2, nx - 1) + 1;
            auto box = [&](const std::vector<double>& s) {
                return s[y1 * sx + x1] - s[y0 * sx + x1] - s[y1 * sx + x0] + s[y0 * sx + x0];
            };
            double c = box(cnt);
            out[size_t(y) * nx + x] = c > 0.5 ? float(box(sum) / c) : 0.0f;
        }
    }
}

int local_dc_removal(wave_params* p, float* stack, uint8_t* mask, int pass, int npasses) {
    wave_say(WF_FILTER, "local DC removal", "local DC removal\n");
    int level = mem_next_level();
    int plane = p->nx * p->ny;
    float *mean = nullptr, *temp = nullptr;
    mem_allocate(&mean, sizeof(float), plane, 0);
    each_slice(p, stack, mask, [&](float* image, const uint8_t* m, int index, int total) {
        local_mean_2d(image, m, mean, p->nx, p->ny, p->ldc_win[0], p->ldc_win[1]);
        apply_mask(mean, m, plane);
        for (int i = 0; i < plane; ++i) image[i] -= mean[i];
        store_image(mean, p, 0, &temp, p->ldc_out, pass * total + index, npasses * total);
        store_image(image, p, 0, &temp, p->ldcr_out, pass * total + index, npasses * total);
    });
    mem_free_level(level, 0);
    return 0;
}

int mean_x2_filter(wave_params* p, float* stack, uint8_t* mask, int pass, int npasses) {
    wave_say(WF_FILTER, "mean*2 filter", "mean*2 filter\n");
    int level = mem_next_level();
    int plane = p->nx * p->ny;
    float *mean = nullptr, *temp = nullptr;
    mem_allocate(&mean, sizeof(float), plane, 0);
    each_slice(p, stack, mask, [&](float* image, const uint8_t* m, int index, int total) {
        local_mean_2d(image, m, mean, p->nx, p->ny, 5, 5);
        local_mean_2d(mean, m, image, p->nx, p->ny, 3, 3);
        apply_mask(image, m, plane);
        store_image(image, p, 0, &temp, p->meanx2_out, pass * total + index, npasses * total);
    });
    mem_free_level(level, 0);
    return 0;
}

void global_dc_removal(float* stack, const uint8_t* mask, int npix, int nimages) {
    wave_say(WF_FILTER, "Global DC removal ", "Global DC removal \n");
    for (int k = 0; k < nimages; ++k) {
        float* image = stack + size_t(k) * npix;
        double sum = 0.0;
        int count = 0;
        for (int i = 0; i < npix; ++i)
            if (mask[i]) sum += image[i], ++count;
        float mean = count ? float(sum / count) : 0.0f;
        for (int i = 0; i < npix; ++i) image[i] = mask[i] ? image[i] - mean : 0.0f;
    }
}

float* fill_outside_with_mean(const float* image, const uint8_t* mask, int nx, int ny,
                              float** holder) {
    size_t n = size_t(nx) * ny;
    double sum = 0.0;
    size_t count = 0;
    for (size_t i = 0; i < n; ++i)
        if (mask[i]) sum += image[i], ++count;
    if (!count) return nullptr;
    float mean = float(sum / double(count));
    float* out = mem_allocate(holder, sizeof(float), uint32_t(n), 0);
    for (size_t i = 0; i < n; ++i) out[i] = mask[i] ? image[i] : mean;
    return out;
}

double displacement_scale(const wave_params* p) {
    double r = 2.0 * kPi / (double(p->phase_max) - double(p->phase_min));
    if (p->menc > 0.0f) return r * p->menc;
    double period = 1000000.0 / p->mech_freq;  // microseconds
    double pairs = p->gradient_pairs;
    if (p->amp_type != 0) {  // sinusoidal gradient
        int h = int(period / 2);
        int t = 2 * (((4 - h % 4) % 4) + h);
        return (r * 4.0 * kPi * 1e10) / (t * 336119.2474834992 * pairs * p->gradient_amp);
    }
    // Trapezoids on a 4 microsecond raster.
    int whole = int(period);
    whole -= whole % 4;
    int p8 = whole - whole % 8;
    int q = int(p->gradient_amp * 184.0 / 2.2);
    int ramp = std::max(((4 - q % 4) % 4) + q, 4);
    int plateau = p8 / 2 - 2 * ramp;
    double amp = p->gradient_amp;
    if (plateau < 4) {
        ramp = (p8 - 8) / 4;
        ramp -= ramp % 4;
        amp = ramp / 184.0;
        plateau = 4;
    }
    return (r * kPi * 1e10) / (2.0 * (plateau + ramp) * 106990.079410654 * pairs * amp);
}

int harmonic_outputs(wave_params* p, float* pair, float* phase_out, float* amp2_out, uint8_t* mask,
                     int pass, int npasses) {
    int nz = std::max(p->nz, 1);
    int plane = p->nx * p->ny;
    int n = plane * nz;
    int level = mem_next_level();
    // Every table block's holder lives to the mem_free_level below.
    float *amp = nullptr, *phase = phase_out, *temp = nullptr, *disp = nullptr;
    mem_allocate(&amp, sizeof(float), n, 0);
    if (!phase) mem_allocate(&phase, sizeof(float), n, 0);
    magnitude_phase(pair, amp, phase, n);
    for (int i = 0; i < n; ++i)
        if (amp[i] < p->amp_threshold) mask[i] = 0;
    if (p->smooth_mask)
        for (int z = 0; z < nz; ++z) mask_smooth_9x9(mask + size_t(z) * plane, p->nx, p->ny);
    if (p->amplitude_out) {
        mem_allocate(&disp, sizeof(float), n, 0);
        float a = float(displacement_scale(p));
        for (int i = 0; i < n; ++i) disp[i] = amp[i] * a;
        apply_mask(disp, mask, n);
        store_image(disp, p, 0, &temp, p->amplitude_out, pass, npasses);
    }
    if (amp2_out) std::memcpy(amp2_out, amp, sizeof(float) * n);
    float* re = pair;
    float* im = pair + n;
    if (p->amp_divide) {
        wave_say(WF_CHAIN, "Amplitude Division \n", "Amplitude Division \n");
        for (int i = 0; i < n; ++i) {
            bool ok = amp[i] >= 1e-6f;
            re[i] = ok ? re[i] / amp[i] : 0.0f;
            im[i] = ok ? im[i] / amp[i] : 0.0f;
        }
    } else if (p->amp_clip != 0) {
        float limit = float(p->amp_clip);
        wave_say(WF_CHAIN, wave_fmt("Suppressing amplitudes larger than %.0f", limit).c_str(),
                 wave_fmt("Suppressing amplitudes larger than %f\n", limit).c_str());
        for (int i = 0; i < n; ++i)
            if (amp[i] > limit) {
                re[i] *= limit / amp[i];
                im[i] *= limit / amp[i];
            }
    }
    apply_mask(amp, mask, n);
    apply_mask(phase, mask, n);
    if (p->amp_phase_out) {
        store_image(amp, p, WAVE_KIND_AMP_PHASE, &temp, p->r1i1_out, 2 * pass, 2 * npasses);
        scale_in_place(phase, 57.29578f, n);
        store_image(phase, p, WAVE_KIND_AMP_PHASE, &temp, p->r1i1_out, 2 * pass + 1, 2 * npasses);
        if (phase_out) scale_in_place(phase, 1.0f / 57.29578f, n);
    }
    mem_free_level(level, 0);
    return 0;
}
