#include "wave/phgrad.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <string>
#include <vector>

#include "wave/band_filter.h"
#include "wave/image_buffers.h"
#include "wave/mem.h"
#include "wave/messages.h"
#include "wave/progress.h"
#include "wave/wsum.h"

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kTwoPi = 6.2831855;  // the unwrapping step
constexpr float kInvTwoPi = 0.15915494f;

// A window image: the row table then the elements, one table block.
template <class T>
T** make_window_image(void** block, int hx, int hy, int hz) {
    int nrows = (2 * hy + 1) * (2 * hz + 1), width = 2 * hx + 1;
    size_t table = sizeof(T*) * size_t(nrows);
    mem_allocate(block, 1, uint32_t(table + sizeof(T) * size_t(nrows) * width), 0);
    T** rows = static_cast<T**>(*block);
    T* data = reinterpret_cast<T*>(static_cast<char*>(*block) + table);
    for (int r = 0; r < nrows; ++r) rows[r] = data + size_t(r) * width + hx;
    return rows + (nrows / 2);
}

// Slope of the phase along `axis` (0 x, 1 y, 2 z) over the window, per masked pixel.
void slope_axis(const float* phase, const uint8_t* mask, float* out, int nx, int ny, int nz,
                int axis, double step, float** W, int32_t** offs, int hx, int hy, int hz, int seq,
                int nseq) {
    const int n[3] = {nx, ny, nz}, h[3] = {hx, hy, hz};
    // First and last window offsets inside the image along each axis, per coordinate.
    std::vector<int> first[3], last[3];
    for (int a = 0; a < 3; ++a) {
        first[a].resize(n[a]);
        last[a].resize(n[a]);
        for (int i = 0; i < n[a]; ++i) {
            first[a][i] = -std::min(i, h[a]);
            last[a][i] = std::min(h[a], n[a] - 1 - i);
        }
    }
    int row_len = 2 * hy + 1;
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y) {
            if (nseq > 0) run_progress(2, (seq * nz + z) * ny + y, nseq * nz * ny, 0, 0, 0, 0);
            for (int x = 0; x < nx; ++x) {
                size_t p = (size_t(z) * ny + y) * nx + x;
                if (mask && !mask[p]) {
                    out[p] = 0.0f;
                    continue;
                }
                const int c[3] = {x, y, z};
                double S = 0.0, Wt = 0.0;
                long count = 0;
                // Lines along `axis`, one per position on the two other axes.
                int o1 = axis == 0 ? 1 : 0, o2 = axis == 2 ? 1 : 2;
                for (int b = first[o2][c[o2]]; b <= last[o2][c[o2]]; ++b)
                    for (int a = first[o1][c[o1]]; a <= last[o1][c[o1]]; ++a) {
                        double sw = 0.0, sx = 0.0, sp = 0.0, sxx = 0.0, sxp = 0.0, prev = 0.0;
                        long m = 0;
                        for (int t = first[axis][c[axis]]; t <= last[axis][c[axis]]; ++t) {
                            int e[3];
                            e[axis] = t, e[o1] = a, e[o2] = b;
                            int r = e[2] * row_len + e[1];
                            size_t q = p + offs[r][e[0]];
                            double ph = phase[q];
                            if (!std::isfinite(ph)) continue;  // a hole, not a point
                            if (m > 0) {
                                while (ph - prev < -kPi) ph += kTwoPi;
                                while (ph - prev > kPi) ph -= kTwoPi;
                            }
                            prev = ph;
                            double w = W[r][e[0]];
                            if ((mask && !mask[q]) || w == 0.0) continue;
                            double pos = (c[axis] + t) * step;
                            sw += w;
                            sx += pos;
                            sp += ph;
                            sxx += pos * pos;
                            sxp += pos * ph;
                            ++m;
                        }
                        if (m > 1) {
                            double slope = (m * sxp - sx * sp) / (m * sxx - sx * sx);
                            S += slope * sw;
                            Wt += sw;
                            count += m;
                        }
                    }
                if (count > 2) out[p] = float(S / Wt);
            }
        }
}

}  // namespace

float** weight_image(void** block, int hx, int hy, int hz) {
    float** rows = make_window_image<float>(block, hx, hy, hz);
    std::vector<float> gx(2 * hx + 1), gy(2 * hy + 1), gz(2 * hz + 1);
    gaussian_vector(gx.data(), 2 * hx + 1, hx, 0.25 * (2 * hx + 1), 0);
    gaussian_vector(gy.data(), 2 * hy + 1, hy, 0.25 * (2 * hy + 1), 0);
    gaussian_vector(gz.data(), 2 * hz + 1, hz, 0.25 * (2 * hz + 1), 0);
    for (int k = -hz; k <= hz; ++k)
        for (int j = -hy; j <= hy; ++j)
            for (int i = -hx; i <= hx; ++i)
                rows[k * (2 * hy + 1) + j][i] = 1.0f * gx[i + hx] * gy[j + hy] * gz[k + hz];
    return rows;
}

int32_t** offset_image(void** block, int hx, int hy, int hz, int nx, int ny) {
    int32_t** rows = make_window_image<int32_t>(block, hx, hy, hz);
    for (int k = -hz; k <= hz; ++k)
        for (int j = -hy; j <= hy; ++j)
            for (int i = -hx; i <= hx; ++i)
                rows[k * (2 * hy + 1) + j][i] = int32_t((k * ny + j) * nx + i);
    return rows;
}

void free_window_image(void** block) {
    if (*block) mem_free(block, 0);
}

void slope_x_2d(const float* phase, const uint8_t* mask, float* out, int nx, int ny, float fov_x,
                float** W, int32_t** offs, int hx, int hy, int seq, int nseq) {
    slope_axis(phase, mask, out, nx, ny, 1, 0, double(fov_x) / nx, W, offs, hx, hy, 0, seq, nseq);
}

void slope_y_2d(const float* phase, const uint8_t* mask, float* out, int nx, int ny, float fov_y,
                float** W, int32_t** offs, int hx, int hy, int seq, int nseq) {
    slope_axis(phase, mask, out, nx, ny, 1, 1, double(fov_y) / ny, W, offs, hx, hy, 0, seq, nseq);
}

void slope_x_3d(const float* phase, const uint8_t* mask, float* out, int nx, int ny, int nz,
                float fov_x, float** W, int32_t** offs, int hx, int hy, int hz, int seq, int nseq) {
    slope_axis(phase, mask, out, nx, ny, nz, 0, double(fov_x) / nx, W, offs, hx, hy, hz, seq, nseq);
}

void slope_y_3d(const float* phase, const uint8_t* mask, float* out, int nx, int ny, int nz,
                float fov_y, float** W, int32_t** offs, int hx, int hy, int hz, int seq, int nseq) {
    slope_axis(phase, mask, out, nx, ny, nz, 1, double(fov_y) / ny, W, offs, hx, hy, hz, seq, nseq);
}

void slope_z_3d(const float* phase, const uint8_t* mask, float* out, int nx, int ny, int nz,
                float fov_z, float** W, int32_t** offs, int hx, int hy, int hz, int seq, int nseq) {
    slope_axis(phase, mask, out, nx, ny, nz, 2, double(fov_z) / nz, W, offs, hx, hy, hz, seq, nseq);
}

void direction_smooth(float* ux, float* uy, const float* mag, const uint8_t* mask, int nx, int ny,
                      int32_t** offs, float** W, int hx, int hy) {
    size_t n = size_t(nx) * ny;
    std::vector<float> sx(n, 0.0f), sy(n, 0.0f);
    for (int y = 0; y < ny; ++y)
        for (int x = 0; x < nx; ++x) {
            size_t p = size_t(y) * nx + x;
            if (mask && !mask[p]) continue;
            double ws = 0.0, ax = 0.0, ay = 0.0;
            for (int j = -std::min(y, hy); j <= std::min(hy, ny - 1 - y); ++j)
                for (int i = -std::min(x, hx); i <= std::min(hx, nx - 1 - x); ++i) {
                    size_t q = p + offs[j][i];
                    if (mask && !mask[q]) continue;
                    double w = double(W[j][i]) * mag[q];
                    if (!std::isfinite(w)) continue;
                    ws += w;
                    ax += w * ux[q];
                    ay += w * uy[q];
                }
            if (ws < 1e-7) continue;
            ax /= ws;
            ay /= ws;
            double len = std::sqrt(ax * ax + ay * ay);
            if (len > 1e-7) ax /= len, ay /= len;
            sx[p] = float(ax);
            sy[p] = float(ay);
        }
    std::memcpy(ux, sx.data(), sizeof(float) * n);
    std::memcpy(uy, sy.data(), sizeof(float) * n);
}

void pg_core_2d(const float* phase, const uint8_t* mask, float* est, float* dir, int nx, int ny,
                float fov_x, float fov_y, int winx, int winy, int seq, int nseq, int dir_on,
                float dir_angle) {
    int hx = winx / 2, hy = winy / 2;
    size_t n = size_t(nx) * ny;
    int level = mem_next_level();
    void *wblock = nullptr, *oblock = nullptr;
    float *mag = nullptr, *ux = nullptr, *uy = nullptr;  // held by the table to the end
    float** W = weight_image(&wblock, hx, hy, 0);
    int32_t** offs = offset_image(&oblock, hx, hy, 0, nx, ny);
    float *sx = nullptr, *sy = nullptr;
    mem_allocate(&sx, sizeof(float), uint32_t(2 * n), 0);
    sy = sx + n;
    std::fill(sx, sx + 2 * n, 0.0f);  // pixels without enough points read 0
    slope_x_2d(phase, mask, sx, nx, ny, fov_x, W, offs, hx, hy, 2 * seq, 2 * nseq);
    slope_y_2d(phase, mask, sy, nx, ny, fov_y, W, offs, hx, hy, 2 * seq + 1, 2 * nseq);
    auto inside = [&](size_t i) { return !mask || mask[i]; };
    if (!dir_on) {
        for (size_t i = 0; i < n; ++i)
            est[i] = inside(i) ? std::sqrt(sx[i] * sx[i] + sy[i] * sy[i]) * kInvTwoPi : 0.0f;
    } else {
        mem_allocate(&mag, sizeof(float), uint32_t(3 * n), 0);
        ux = mag + n;
        uy = mag + 2 * n;
        for (size_t i = 0; i < n; ++i) {
            mag[i] = inside(i) ? std::sqrt(sx[i] * sx[i] + sy[i] * sy[i]) : 0.0f;
            bool small = !(mag[i] >= 1e-7f);
            ux[i] = small ? 0.0f : sx[i] / mag[i];
            uy[i] = small ? 0.0f : sy[i] / mag[i];
        }
        direction_smooth(ux, uy, mag, mask, nx, ny, offs, W, hx, hy);
        double a = -double(dir_angle) * kPi / 180.0;
        for (size_t i = 0; i < n; ++i)
            est[i] = inside(i) ? float(std::fabs(std::sin(a) * kInvTwoPi * sy[i] +
                                                 std::cos(a) * kInvTwoPi * sx[i]))
                               : 0.0f;
        std::memcpy(sx, ux, sizeof(float) * n);
        std::memcpy(sy, uy, sizeof(float) * n);
    }
    if (dir)
        for (size_t i = 0; i < n; ++i) {
            dir[i] = 0.0f;
            if (!inside(i) || (std::fabs(sx[i]) < 1e-30f && std::fabs(sy[i]) < 1e-30f)) continue;
            float d = std::atan2(sy[i], sx[i]) * -57.29578f;
            dir[i] = d < 0.0f ? d + 360.0f : d;
        }
    free_window_image(&wblock);
    free_window_image(&oblock);
    mem_free_level(level, 0);
}

void pg_core_3d(const float* phase, const uint8_t* mask, float* est, int nx, int ny, int nz,
                float fov_x, float fov_y, float fov_z, const int* win, int seq, int nseq) {
    int hx = win[0] / 2, hy = win[1] / 2, hz = win[2] / 2;
    size_t n = size_t(nx) * ny * nz;
    int level = mem_next_level();
    void *wblock = nullptr, *oblock = nullptr;
    float** W = weight_image(&wblock, hx, hy, hz);
    int32_t** offs = offset_image(&oblock, hx, hy, hz, nx, ny);
    float* s = nullptr;
    mem_allocate(&s, sizeof(float), uint32_t(3 * n), 0);
    std::fill(s, s + 3 * n, 0.0f);
    slope_x_3d(phase, mask, s, nx, ny, nz, fov_x, W, offs, hx, hy, hz, 3 * seq, 3 * nseq);
    slope_y_3d(phase, mask, s + n, nx, ny, nz, fov_y, W, offs, hx, hy, hz, 3 * seq + 1, 3 * nseq);
    slope_z_3d(phase, mask, s + 2 * n, nx, ny, nz, fov_z, W, offs, hx, hy, hz, 3 * seq + 2,
               3 * nseq);
    for (size_t i = 0; i < n; ++i) {
        float a = s[i], b = s[n + i], c = s[2 * n + i];
        est[i] = (!mask || mask[i]) ? std::sqrt(a * a + b * b + c * c) * kInvTwoPi : 0.0f;
    }
    free_window_image(&wblock);
    free_window_image(&oblock);
    mem_free_level(level, 0);
}

namespace {

struct PgJob {
    const char* name;
    int nx, ny, nz;
    const uint8_t* mask;
    float fov[3];
    int win[3];
    int dir_on;
    float dir_angle;
    size_t npix() const { return size_t(nx) * ny * nz; }
};

bool pg_input_ok(const char* name, const float* amp2, int n, int pairs, int average) {
    std::string quiet, verbose;
    std::string flags = wave_fmt("  pairs_flag = %d, average_flag = %d \n\n", pairs, average);
    if (n < 1) {
        quiet = wave_fmt("\nInvalid number of input images in %s\n", name);
        verbose = wave_fmt("\nInvalid number of input images/pairs in %s: \n", name) +
                  wave_fmt("  pairs_flag = %d, average_flag = %d, n = %d \n\n", pairs, average, n);
    } else if (pairs < 0 || pairs > 1 || average < 0 || average > 2) {
        quiet = wave_fmt("\npairs_flag or average_flag invalid in %s\n", name);
        verbose = wave_fmt("\nInvalid flag value(s) in %s: \n", name) + flags;
    } else if (n > 1 && pairs == 0 && average == 2 && !amp2) {
        quiet = wave_fmt("\nrequired amp2_buf is null in %s\n", name);
        verbose = wave_fmt("\nNULL amp2_buf in %s; amp2_buf is REQUIRED \n", name) +
                  "for squared-amplitude-weighted averaging when input \n" +
                  "array is multiple phase images. \n" + flags;
    } else {
        return true;
    }
    wave_warn(WF_PG, quiet.c_str(), verbose.c_str());
    return false;
}

int pg_run(const PgJob& j, const float* in, const float* amp2, int n, int pairs, int average,
           lfe_callback callback, float** est_holder, float** dir_holder) {
    if (!pg_input_ok(j.name, amp2, n, pairs, average)) return 0;
    if (n == 1) average = 0;
    size_t npix = j.npix();
    int nout = average ? 1 : n;
    if (!*est_holder) mem_allocate(est_holder, sizeof(float), uint32_t(npix * nout), 0);
    if (dir_holder && !*dir_holder)
        mem_allocate(dir_holder, sizeof(float), uint32_t(npix * nout), 0);
    float* est = *est_holder;
    float* dir = dir_holder ? *dir_holder : nullptr;
    int level = mem_next_level();
    float *phase = nullptr, *e = nullptr, *d = nullptr, *w = nullptr, *best = nullptr;
    mem_allocate(&phase, sizeof(float), uint32_t(npix), 0);
    if (average) {
        mem_allocate(&e, sizeof(float), uint32_t(npix), 0);
        mem_allocate(&w, sizeof(float), uint32_t(npix), 0);
        mem_allocate(&best, sizeof(float), uint32_t(npix), 0);
        if (dir) mem_allocate(&d, sizeof(float), uint32_t(npix), 0);
        std::fill(est, est + npix, 0.0f);
        std::fill(best, best + npix, -1.0f);
    }
    uint32_t s_est = 0, s_w = 0;
    size_t step = pairs ? 2 * npix : npix;
    for (int k = 0; k < n; ++k) {
        const float* image = in + k * step;
        if (pairs) {
            for (size_t i = 0; i < npix; ++i) phase[i] = std::atan2(image[npix + i], image[i]);
        } else {
            std::memcpy(phase, image, sizeof(float) * npix);
        }
        float* ek = average ? e : est + k * npix;
        float* dk = dir ? (average ? d : dir + k * npix) : nullptr;
        if (callback) callback(k, ek, dk);
        if (j.nz > 1)
            pg_core_3d(phase, j.mask, ek, j.nx, j.ny, j.nz, j.fov[0], j.fov[1], j.fov[2], j.win, k,
                       n);
        else
            pg_core_2d(phase, j.mask, ek, dk, j.nx, j.ny, j.fov[0], j.fov[1], j.win[0], j.win[1], k,
                       n, j.dir_on, j.dir_angle);
        if (!average) continue;
        for (size_t i = 0; i < npix; ++i) {
            if (average == 1)
                w[i] = 1.0f;
            else if (amp2)
                w[i] = amp2[k * npix + i];
            else
                w[i] = image[i] * image[i] + image[npix + i] * image[npix + i];
            if (d && w[i] > best[i]) best[i] = w[i], dir[i] = d[i];
            e[i] *= e[i];
        }
        if (average == 2) apply_mask(w, j.mask, int(npix));
        ADD_weighted_sum(&s_est, e, w, int(npix), 0, 0);
        ADD_weighted_sum(&s_w, w, nullptr, int(npix), 0, 0);
    }
    if (average) {
        CALC_weighted_avg(&s_est, s_w, &est, int(npix), 0, 1);
        free_sequence(&s_w);
        for (size_t i = 0; i < npix; ++i) est[i] = std::sqrt(est[i]);
    }
    mem_free_level(level, 0);
    return nout;
}

}  // namespace

int phgrad_2d(const float* in, const float* amp2_buf, const uint8_t* mask, int nx, int ny, int n,
              int pairs_flag, int average_flag, float fov_x, float fov_y, const int* win,
              lfe_callback callback, float** est_holder, float** dir_holder, int dir_on,
              float dir_angle) {
    PgJob j{"phgrad_2d",         nx,     ny,       1, mask, {fov_x, fov_y, 1.0f},
            {win[0], win[1], 1}, dir_on, dir_angle};
    return pg_run(j, in, amp2_buf, n, pairs_flag, average_flag, callback, est_holder, dir_holder);
}

int phgrad_3d(const float* in, const float* amp2_buf, const uint8_t* mask, int nx, int ny, int nz,
              int n, int pairs_flag, int average_flag, float fov_x, float fov_y, float fov_z,
              const int* win, lfe_callback callback, float** est_holder) {
    PgJob j{"phgrad_3d",
            nx,
            ny,
            std::max(nz, 1),
            mask,
            {fov_x, fov_y, fov_z},
            {win[0], win[1], win[2]},
            0,
            0.0f};
    return pg_run(j, in, amp2_buf, n, pairs_flag, average_flag, callback, est_holder, nullptr);
}
