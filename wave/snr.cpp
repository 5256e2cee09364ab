#include "wave/snr.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "wave/driver.h"
#include "wave/filter3d.h"
#include "wave/image_buffers.h"
#include "wave/kernels.h"
#include "wave/mem.h"
#include "wave/messages.h"

namespace {

constexpr float kEightBitScale = 40.58449935913086f;

wave_output_namer g_namer = nullptr;

// One stored SNR map with its report line: a plane for each of the pair's two planes, so the
// map lines up with the harmonic it was made from.
void store_map(const float* map, wave_params* p, wave_output output, const char* line) {
    if (!map || !output) return;
    float* temp = nullptr;
    for (int plane = 0; plane < 2; ++plane) store_image(map, p, 0, &temp, output, plane, 2);
    mem_free(&temp, 0);
    std::string t = wave_fmt(line, g_namer ? g_namer(output) : "unnamed");
    wave_say(WF_SNR, nullptr, t.c_str());
}

// Median of the values at background voxels; 0 when there are none.
float background_median(const float* v, const uint8_t* bg, size_t n) {
    std::vector<float> picked;
    for (size_t i = 0; i < n; ++i)
        if (bg[i]) picked.push_back(v[i]);
    return picked.empty() ? 0.0f : median_select(picked.data(), int(picked.size()));
}

// Erodes a 0/1 volume along one axis: a voxel stays 1 when every voxel within `e` steps along
// the axis is 1 (outside the volume counts as 1: the background goes on beyond it).
void erode_axis(std::vector<uint8_t>& m, int nx, int ny, int nz, int axis, int e) {
    if (e <= 0) return;
    std::vector<uint8_t> src = m;
    int n[3] = {nx, ny, nz};
    size_t stride[3] = {1, size_t(nx), size_t(nx) * ny};
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x) {
                int pos[3] = {x, y, z};
                size_t i = z * stride[2] + y * stride[1] + x;
                if (!src[i]) continue;
                int lo = std::max(pos[axis] - e, 0), hi = std::min(pos[axis] + e, n[axis] - 1);
                size_t base = i - size_t(pos[axis]) * stride[axis];
                for (int k = lo; k <= hi; ++k)
                    if (!src[base + k * stride[axis]]) {
                        m[i] = 0;
                        break;
                    }
            }
}

}  // namespace

wave_output_namer set_snr_output_namer(wave_output_namer namer) {
    wave_output_namer previous = g_namer;
    g_namer = namer;
    return previous;
}

void window_stats(const float* data, const uint8_t* mask, int nx, int ny, int nz, int wx, int wy,
                  int wz, float* sum, float* sumsq, float* count) {
    size_t n = size_t(nx) * ny * nz;
    int w[3] = {std::max(wx | 1, 1), std::max(wy | 1, 1), std::max(wz | 1, 1)};
    std::vector<float> ones(std::max({w[0], w[1], w[2]}), 1.0f);
    std::vector<float> v(n);
    auto box = [&](float* out) {
        filter3d_zeropad(v.data(), out, nx, ny, nz, ones.data(), w[0], 1.0f, ones.data(), w[1],
                         1.0f, nz > 1 ? ones.data() : nullptr, w[2], 1.0f, 0);
    };
    auto inside = [&](size_t i) { return !mask || mask[i]; };
    if (sum) {
        for (size_t i = 0; i < n; ++i) v[i] = inside(i) ? data[i] : 0.0f;
        box(sum);
    }
    if (sumsq) {
        for (size_t i = 0; i < n; ++i) v[i] = inside(i) ? data[i] * data[i] : 0.0f;
        box(sumsq);
    }
    if (count) {
        for (size_t i = 0; i < n; ++i) v[i] = inside(i) ? 1.0f : 0.0f;
        box(count);
    }
}

uint8_t* snr_background_mask(const uint8_t* mask, int nx, int ny, int nz, int ex, int ey, int ez,
                             int flag) {
    size_t n = size_t(nx) * ny * nz;
    std::vector<uint8_t> m(n);
    for (size_t i = 0; i < n; ++i) m[i] = mask[i] == 0;
    erode_axis(m, nx, ny, nz, 0, ex);
    erode_axis(m, nx, ny, nz, 1, ey);
    if (nz > 1 && !flag) erode_axis(m, nx, ny, nz, 2, ez);
    uint8_t* bg = nullptr;
    mem_allocate(&bg, 1, uint32_t(n), 0);
    std::memcpy(bg, m.data(), n);
    return bg;
}

float snr_background_sd(const float* data, const uint8_t* bg, int nx, int ny, int nz, int nimages,
                        int wx, int wy, int wz, int mode) {
    size_t n = size_t(nx) * ny * nz;
    if (mode == 0) {
        double s = 0.0, s2 = 0.0, count = 0.0;
        for (int k = 0; k < nimages; ++k)
            for (size_t i = 0; i < n; ++i)
                if (bg[i]) {
                    double x = data[k * n + i];
                    s += x, s2 += x * x, count += 1.0;
                }
        return count > 1.0 ? float(std::sqrt((s2 - s * s / count) / (count - 1.0))) : 0.0f;
    }
    std::vector<float> dev(n, 0.0f), smooth(n), cnt(n);
    if (mode == 1 && nimages > 1) {
        for (size_t i = 0; i < n; ++i) {
            double s = 0.0, s2 = 0.0;
            for (int k = 0; k < nimages; ++k) {
                double x = data[k * n + i];
                s += x, s2 += x * x;
            }
            double N = nimages;
            dev[i] = float(std::sqrt(std::max(0.0, (s2 - s * s / N) / (N - 1.0))));
        }
        window_stats(dev.data(), bg, nx, ny, nz, wx, wy, wz, smooth.data(), nullptr, cnt.data());
        for (size_t i = 0; i < n; ++i) dev[i] = cnt[i] > 0.5f ? smooth[i] / cnt[i] : 0.0f;
        return background_median(dev.data(), bg, n);
    }
    std::vector<float> sum2(n);
    window_stats(data, bg, nx, ny, nz, wx, wy, wz, smooth.data(), sum2.data(), cnt.data());
    for (size_t i = 0; i < n; ++i) {
        double N = cnt[i];
        dev[i] = N > 1.5 ? float(std::sqrt(std::max(
                               0.0, (sum2[i] - double(smooth[i]) * smooth[i] / N) / (N - 1.0))))
                         : 0.0f;
    }
    return background_median(dev.data(), bg, n);
}

float* snr_magnitude(const float* mag, const uint8_t* mask, const uint8_t* bg, int nx, int ny,
                     int nz, int nimages, wave_params* p) {
    size_t n = size_t(nx) * ny * nz;
    std::vector<float> sum(n), cnt(n);
    float* map = nullptr;
    mem_allocate(&map, sizeof(float), uint32_t(n), 0);
    std::fill(map, map + n, 0.0f);
    for (int k = 0; k < nimages; ++k) {
        window_stats(mag + k * n, mask, nx, ny, nz, p->snr_win[0], p->snr_win[1],
                     nz > 1 ? p->snr_win[2] : 1, sum.data(), nullptr, cnt.data());
        for (size_t i = 0; i < n; ++i)
            if (mask[i] && cnt[i] > 0.5f) map[i] += sum[i] / cnt[i] / float(nimages);
    }
    float sd = p->snr_bg_sd;
    if (sd > 0.0f) {
        std::string t = wave_fmt("(bg std.dev. %.3f) ", sd);
        wave_say(WF_SNR, nullptr, t.c_str());
    } else {
        sd = snr_background_sd(mag, bg, nx, ny, nz, nimages, p->snr_win[0], p->snr_win[1],
                               p->snr_win[2], 0);
        std::string t = wave_fmt("(bg std.dev. = %.3f) ", sd);
        wave_say(WF_SNR, nullptr, t.c_str());
    }
    float noise = sd * 1.662f;
    if (!(noise > 0.0f)) {
        mem_free(&map, 1);
        return nullptr;
    }
    for (size_t i = 0; i < n; ++i)
        if (map[i] > 0.0f) map[i] /= noise;
    return map;
}

float* snr_phase_difference(const float* amp, const float* snr_mag, const uint8_t* mask, int nx,
                            int ny, int nz, float scale, wave_params* p) {
    size_t n = size_t(nx) * ny * nz;
    std::vector<float> sum(n), cnt(n);
    window_stats(amp, mask, nx, ny, nz, p->snr_win[0], p->snr_win[1], nz > 1 ? p->snr_win[2] : 1,
                 sum.data(), nullptr, cnt.data());
    float* map = nullptr;
    mem_allocate(&map, sizeof(float), uint32_t(n), 0);
    bool any = false;
    for (size_t i = 0; i < n; ++i) {
        float s = snr_mag[i];
        float noise = s >= 1.0f ? float(std::asin(1.0 / s) / std::sqrt(2.0)) : 0.0f;
        float mean = cnt[i] > 0.5f ? sum[i] / cnt[i] : 0.0f;
        bool measured = mask[i] && noise > 0.0f;
        map[i] = measured ? mean / scale / noise : 0.0f;
        any = any || measured;
    }
    // Without one pixel of known phase noise the map says nothing.
    if (!any) mem_free(&map, 1);
    return map;
}

void snr_mask(const float* snr, const uint8_t* mask, uint8_t* out, int nx, int ny, int nz,
              float threshold, int pattern) {
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x) {
                size_t i = (size_t(z) * ny + y) * nx + x;
                if (!mask[i])
                    out[i] = 0;
                else if (snr[i] >= threshold)
                    out[i] = 1;
                else
                    out[i] = pattern > 0 ? ((x / pattern + y / pattern + z / pattern) & 1) : 0;
            }
}

uint8_t* snr_maps(const float* pair, const uint8_t* mask, wave_params* p) {
    int nx = p->nx, ny = p->ny, nz = std::max(p->nz, 1);
    size_t n = size_t(nx) * ny * nz;
    float scale = p->snr_amp_scale;
    if (scale == 0.0f) {
        if (p->type_code != 8) {
            wave_warn(WF_SNR, "SNR processing error:\n", "SNR processing error:\n");
            wave_warn(WF_SNR, "User must supply snr_amp_scale factor for this data.\n",
                      "User must supply snr_amp_scale factor for this data.\n");
            return nullptr;
        }
        scale = kEightBitScale;
    }
    const int* w = p->snr_win;
    const int* e = p->snr_bg_erode;
    if (!(w[0] == 1 && w[1] == 1 && (nz <= 1 || w[2] == 1))) {
        std::string t = nz <= 1 ? wave_fmt("SNR Smoothing: %d x %d \n", w[0], w[1])
                                : wave_fmt("SNR Smoothing: %d x %d x %d \n", w[0], w[1], w[2]);
        wave_say(WF_SNR, nullptr, t.c_str());
    }
    if (!(e[0] == 10 && e[1] == 10 && e[2] == 10)) {
        std::string t =
            nz <= 1 ? wave_fmt("SNR Background Erosion: %d, %d pixels \n", e[0], e[1])
                    : wave_fmt("SNR Background Erosion: %d, %d, %d pixels \n", e[0], e[1], e[2]);
        wave_say(WF_SNR, nullptr, t.c_str());
    }
    wave_say(WF_SNR, "SNR ", nullptr);

    // The new mask sits at the caller's level so that it outlives this stage.
    uint8_t* result = nullptr;
    if (p->snr_mask) mem_allocate(&result, 1, uint32_t(n), 0);
    int level = mem_next_level();
    int nimages = std::max(p->nt, 1) * (p->xyz ? 3 : 1);
    float *mag = nullptr, *amp = nullptr;
    mem_allocate(&mag, sizeof(float), uint32_t(n * nimages), 0);
    uint8_t* bg = nullptr;
    float* smag = nullptr;
    if (read_magnitude_float(p, mag) == 0) {
        if (!(p->snr_bg_sd > 0.0f)) bg = snr_background_mask(mask, nx, ny, nz, e[0], e[1], e[2], 0);
        smag = snr_magnitude(mag, mask, bg, nx, ny, nz, nimages, p);
    }
    if (!smag) {
        wave_warn(WF_SNR, ": Unable to create Magnitude SNR image. ",
                  ": Unable to create Magnitude SNR image. ");
        mem_free_level(level, 0);
        mem_free(&result, 1);
        return nullptr;
    }
    wave_say(WF_SNR, nullptr, "\nSNR Phase Difference ");
    mem_allocate(&amp, sizeof(float), uint32_t(n), 0);
    magnitude_phase(pair, amp, nullptr, int(n));
    float* spd = snr_phase_difference(amp, smag, mask, nx, ny, nz, scale, p);
    if (!spd)
        wave_warn(WF_SNR, ": Unable to create Phase Difference SNR image. ",
                  ": Unable to create Phase Difference SNR image. ");
    if (result) {
        snr_mask(spd ? spd : smag, mask, result, nx, ny, nz, p->snr_threshold, p->snr_mask_pattern);
        std::string t = p->snr_mask_pattern > 0
                            ? wave_fmt("\nSNR Masking enabled (threshold %.3f, pattern %d) ",
                                       p->snr_threshold, p->snr_mask_pattern)
                            : wave_fmt("\nSNR Masking enabled (threshold %.3f) ", p->snr_threshold);
        wave_say(WF_SNR, nullptr, t.c_str());
        if (p->snr_mask_out) {
            store_byte_image(result, p, p->snr_mask_out);
            std::string t =
                wave_fmt("\nSNR Output file: %s ", g_namer ? g_namer(p->snr_mask_out) : "unnamed");
            wave_say(WF_SNR, nullptr, t.c_str());
        }
    }
    store_map(smag, p, p->snr_mag_out, "\nSNR Output magnitude file: %s ");
    store_map(spd, p, p->snr_pd_out, "\nSNR Output pd file: %s ");
    mem_free_level(level, 0);
    return result;
}
