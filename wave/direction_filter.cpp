#include "wave/direction_filter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

#include "wave/band_filter.h"
#include "wave/fft.h"
#include "wave/image_buffers.h"
#include "wave/mem.h"
#include "wave/messages.h"
#include "wave/progress.h"
#include "wave/stages.h"

namespace {

constexpr double kPi = std::numbers::pi;

// Vertices of a dodecahedron: x of all twenty, then y, then z.
// clang-format off
constexpr float kDirections[60] = {
    0.3568f, 0.5774f, 0.0f, 0.0f, -0.5774f, -0.3568f, -0.5774f, 0.0f, 0.0f, 0.5774f,
    -0.3568f, 0.9342f, -0.5774f, 0.5774f, -0.9342f, 0.3568f, -0.9342f, 0.5774f, -0.5774f, 0.9342f,
    0.9342f, 0.5774f, 0.3568f, -0.3568f, -0.5774f, -0.9342f, -0.5774f, -0.3568f, 0.3568f, 0.5774f,
    0.9342f, 0.0f, 0.5774f, -0.5774f, 0.0f, -0.9342f, 0.0f, -0.5774f, 0.5774f, 0.0f,
    0.0f, 0.5774f, 0.9342f, 0.9342f, 0.5774f, 0.0f, -0.5774f, -0.9342f, -0.9342f, -0.5774f,
    0.0f, 0.3568f, 0.5774f, 0.5774f, 0.3568f, 0.0f, -0.3568f, -0.5774f, -0.5774f, -0.3568f};
// clang-format on

// Moves the origin from n/2 to index 0 along each axis (odd sizes included) of a real volume.
void origin_to_front(float* f, int nx, int ny, int nz) {
    std::vector<float> src(f, f + size_t(nx) * ny * nz);
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y) {
            const float* s = &src[(size_t((z + nz / 2) % nz) * ny + (y + ny / 2) % ny) * nx];
            float* d = f + (size_t(z) * ny + y) * nx;
            for (int x = 0; x < nx; ++x) d[x] = s[(x + nx / 2) % nx];
        }
}

struct Sizes {
    int s[3];  // signed: negative axes are not transformed
    int n[3];  // full sizes
    int c[3];  // sizes of the built filter: 1 along the unused axes
    size_t npix() const { return size_t(n[0]) * n[1] * n[2]; }
    size_t compact() const { return size_t(c[0]) * c[1] * c[2]; }
};

Sizes sizes(const wave_params* p, bool volume) {
    Sizes z;
    int n[3] = {p->nx, p->ny, volume ? std::max(p->nz, 1) : 1};
    for (int a = 0; a < 3; ++a) {
        bool used = (a < 2 || volume) && p->dirf_use[a] == 1;
        z.n[a] = n[a];
        z.s[a] = used ? n[a] : -n[a];
        z.c[a] = used ? n[a] : 1;
    }
    if (!volume) {
        z.s[2] = -z.n[2];
        z.c[2] = 1;
    }
    return z;
}

// The band-pass of the direction filters over the built filter's shape, multiplied into f.
bool times_band(float* f, const Sizes& z, const wave_params* p) {
    filter_spec band;
    band.type = 7;
    band.cut[0] = p->dirf_cut[0];
    band.cut[1] = p->dirf_cut[1];
    band.order = p->dirf_order;
    std::vector<float> b(z.compact());
    if (fill_band_filter(b.data(), "complex", z.c[0], z.c[1], z.c[2], double(p->fov[0]) / p->fov[1],
                         double(p->fov[0]) / p->fov[2], &band))
        return false;
    for (size_t i = 0; i < b.size(); ++i) f[i] *= b[i];
    return true;
}

// One planar pair through the signed-size transform and filter F.
void filter_pair(float* pair, const Sizes& z, const float* F) {
    int npix = int(z.npix());
    float* buf = nullptr;
    uint8_t* marks = nullptr;
    mem_allocate(&buf, sizeof(float), uint32_t(2 * npix), 0);
    mem_allocate(&marks, 1, uint32_t(2 * npix), 0);
    int held = hold_nonfinite(pair, marks, 2 * npix);
    interleave_planes(pair, buf, npix);
    GENERAL_cvfft_3d(buf, z.s[0], z.s[1], z.s[2], 1);
    complex_times_real(buf, F, npix);
    GENERAL_cvfft_3d(buf, z.s[0], z.s[1], z.s[2], -1);
    split_planes(buf, pair, npix);
    if (held) restore_nan(pair, marks, 2 * npix);
    mem_free(&marks, 0);
    mem_free(&buf, 0);
}

// The raw stack: space then time transforms, F+ on the positive time frequencies, F- on the
// others, slices 0 and nt/2 cleared, and back; the real part is kept.
void filter_stack(float* stack, int nt, const Sizes& z, const float* Fp, const float* Fm) {
    size_t npix = z.npix();
    float* buf = nullptr;
    uint8_t* marks = nullptr;
    mem_allocate(&buf, sizeof(float), uint32_t(2 * npix * nt), 0);
    mem_allocate(&marks, 1, uint32_t(npix * nt), 0);
    int held = hold_nonfinite(stack, marks, int(npix * nt));
    for (size_t i = 0; i < npix * nt; ++i) {
        buf[2 * i] = stack[i];
        buf[2 * i + 1] = 0.0f;
    }
    int plane = z.n[0] * z.n[1];
    for (int t = 0; t < nt; ++t) GENERAL_cvfft_3d(buf + 2 * t * npix, z.s[0], z.s[1], z.s[2], 1);
    GENERAL_cvfft_3d(buf, -plane, -z.n[2], nt, 1);
    for (int t = 0; t < nt; ++t) {
        float* slice = buf + 2 * t * npix;
        if (t == 0 || t == nt / 2)
            std::memset(slice, 0, sizeof(float) * 2 * npix);
        else
            complex_times_real(slice, t < nt / 2 ? Fp : Fm, int(npix));
    }
    GENERAL_cvfft_3d(buf, -plane, -z.n[2], nt, -1);
    for (int t = 0; t < nt; ++t) GENERAL_cvfft_3d(buf + 2 * t * npix, z.s[0], z.s[1], z.s[2], -1);
    for (size_t i = 0; i < npix * nt; ++i) stack[i] = buf[2 * i];
    if (held) restore_nan(stack, marks, int(npix * nt));
    mem_free(&marks, 0);
    mem_free(&buf, 0);
}

std::string axes_text(const Sizes& z, int naxes) {
    bool all = true;
    for (int a = 0; a < naxes; ++a) all = all && z.s[a] > 0;
    if (all) return "";
    std::string t = "(";
    const char* names[3] = {"x ", "y ", "z "};
    for (int a = 0; a < naxes; ++a)
        if (z.s[a] > 0) t += names[a];
    return t + ") ";
}

std::string band_text(const wave_params* p) {
    return wave_fmt("(bandpass %.2f %.2f %d) ", p->dirf_cut[0], p->dirf_cut[1], p->dirf_order);
}

void say_time() {
    std::string t = wave_fmt("(%.2f s) ", stopwatch(1));
    wave_say(WF_FILTER, nullptr, t.c_str());
}

// The 2-D form over planes (a volume's slices when called from the 3-D form).
int direction_2d(float* data, wave_params* p, int mode, bool volume, const char* prefix) {
    stopwatch(0);
    Sizes z = sizes(p, false);
    if (volume) {
        z.n[2] = std::max(p->nz, 1);
        z.s[2] = -z.n[2];
    }
    std::string verbose =
        prefix + wave_fmt("Direction filter %.2f ", p->dirf_angle) + axes_text(z, 2) + band_text(p);
    std::string quiet = prefix + wave_fmt("DirFilt %.2f ", p->dirf_angle);
    wave_say(WF_FILTER, quiet.c_str(), verbose.c_str());

    int level = mem_next_level();
    size_t npix = z.npix(), nc = z.compact();
    float *Fp = nullptr, *Fm = nullptr;
    mem_allocate(&Fp, sizeof(float), uint32_t(npix), 0);
    mem_allocate(&Fm, sizeof(float), uint32_t(npix), 0);
    bool cos2 = p->dirf_ncos >= 1;
    if (cos2) {
        cos2_sector_2d(Fp, z.c[0], z.c[1], p->fov[0], p->fov[1], -p->dirf_angle, p->dirf_ncos);
        cos2_sector_2d(Fm, z.c[0], z.c[1], p->fov[0], p->fov[1], 180.0f - p->dirf_angle,
                       p->dirf_ncos);
    } else {
        std::fill(Fp, Fp + nc, 1.0f);
        std::fill(Fm, Fm + nc, 1.0f);
    }
    if (!times_band(Fp, z, p) || !times_band(Fm, z, p)) return mem_free_level(level, 0), 1;
    spread_filter_3d(Fp, z.s[0], z.s[1], z.s[2]);
    spread_filter_3d(Fm, z.s[0], z.s[1], z.s[2]);
    if (mode == 1)
        filter_pair(data, z, Fp);
    else
        filter_stack(data, p->nt, z, Fp, Fm);
    mem_free_level(level, 0);
    say_time();
    return 0;
}

}  // namespace

void cos2_filter_3d(float* filter, int nx, int ny, int nz, float fov_x, float fov_y, float fov_z,
                    float vx, float vy, float vz) {
    double len = std::sqrt(double(vx) * vx + double(vy) * vy + double(vz) * vz);
    if (len == 0.0) {
        std::fputs("\n\ncos2_filter_3d: Invalid (zero) direction vector.\n\n", stderr);
        std::fflush(stderr);
        std::exit(-1);
    }
    double ux = vx / len, uy = vy / len, uz = vz / len;
    for (int z = 0; z < nz; ++z) {
        double kz = (z - nz / 2) / double(fov_z);
        for (int y = 0; y < ny; ++y) {
            double ky = (y - ny / 2) / double(fov_y);
            float* row = filter + (size_t(z) * ny + y) * nx;
            for (int x = 0; x < nx; ++x) {
                double kx = (x - nx / 2) / double(fov_x);
                double k2 = kx * kx + ky * ky + kz * kz;
                double d = kx * ux + ky * uy + kz * uz;
                row[x] = k2 == 0.0 ? 1.0f : d < 0.0 ? 0.0f : float(d * d / k2);
            }
        }
    }
    origin_to_front(filter, nx, ny, nz);
}

void cos2_sector_2d(float* filter, int nx, int ny, float fov_x, float fov_y, float angle,
                    double ncos) {
    double theta = angle * kPi / 180.0;
    double n = std::max(ncos, 1.0);
    double half = kPi / (2.0 * n);
    double a1 = theta - half, a2 = theta + half;
    double s1 = std::sin(a1), c1 = std::cos(a1), s2 = std::sin(a2), c2 = std::cos(a2);
    bool wrap = n > 1.0 && n < 2.0;
    for (int y = 0; y < ny; ++y) {
        double ky = (y - ny / 2) / double(fov_y);
        float* row = filter + size_t(y) * nx;
        for (int x = 0; x < nx; ++x) {
            double kx = (x - nx / 2) / double(fov_x);
            if (kx == 0.0 && ky == 0.0) {
                row[x] = 1.0f;
            } else if (kx * s1 > ky * c1 || ky * c2 > kx * s2) {
                row[x] = 0.0f;
            } else {
                double phi = std::atan2(ky, kx) - theta;
                if (wrap) phi = std::remainder(phi, 2.0 * kPi);
                double c = std::cos(n * phi);
                row[x] = float(c * c);
            }
        }
    }
    origin_to_front(filter, nx, ny, 1);
}

void spread_filter_2d(float* filter, int nx, int ny) { spread_filter_3d(filter, nx, ny, 1); }

void spread_filter_3d(float* filter, int nx, int ny, int nz) {
    int n[3] = {std::abs(nx), std::abs(ny), std::abs(nz)};
    int c[3] = {nx > 0 ? nx : 1, ny > 0 ? ny : 1, nz > 0 ? nz : 1};
    if (n[0] == c[0] && n[1] == c[1] && n[2] == c[2]) return;
    std::vector<float> src(filter, filter + size_t(c[0]) * c[1] * c[2]);
    for (int z = 0; z < n[2]; ++z)
        for (int y = 0; y < n[1]; ++y) {
            const float* s = &src[(size_t(c[2] > 1 ? z : 0) * c[1] + (c[1] > 1 ? y : 0)) * c[0]];
            float* d = filter + (size_t(z) * n[1] + y) * n[0];
            for (int x = 0; x < n[0]; ++x) d[x] = s[c[0] > 1 ? x : 0];
        }
}

int dirf_table_vector(int count, int index, float* v) {
    if (count == 20) {
        if (index < 0 || index >= 20) {
            v[0] = v[1] = v[2] = 0.0f;
            return 1;
        }
        for (int a = 0; a < 3; ++a) v[a] = kDirections[20 * a + index];
        return 0;
    }
    static constexpr int kCounts[] = {6, 12, 16, 24, 28, 32};
    if (std::find(std::begin(kCounts), std::end(kCounts), count) == std::end(kCounts)) return 1;
    // Offsets from the starts of the x, y and z runs; reads past the 60 values give 0.
    static constexpr int kOffset[3] = {1, 20, 42};
    bool any = false;
    for (int a = 0; a < 3; ++a) {
        long at = 20L * a + kOffset[a] + 3L * index;
        v[a] = (index >= 0 && index < count && at < 60) ? kDirections[at] : 0.0f;
        any = any || v[a] != 0.0f;
    }
    return any ? 0 : 1;
}

int direction_filter_2d(float* stack, wave_params* p, int mode) {
    return direction_2d(stack, p, mode, false, "");
}

int direction_filter(float* stack, wave_params* p, int mode) {
    if (p->dirf_mode != 0) return direction_2d(stack, p, mode, true, "2-D ");
    stopwatch(0);
    Sizes z = sizes(p, true);
    const float* v = p->dirf_vector;
    std::string verbose = wave_fmt("Direction filter, vector %.3f %.3f %.3f ", v[0], v[1], v[2]) +
                          axes_text(z, 3) + band_text(p);
    std::string quiet = "DirFilt " + axes_text(z, 3) +
                        (p->nangles <= 1 ? wave_fmt("(%.3f ", v[0]) + wave_fmt("%.3f ", v[1]) +
                                               wave_fmt("%.3f)  ", v[2])
                                         : wave_fmt("(%d) ", p->angle + 1));
    wave_say(WF_FILTER, quiet.c_str(), verbose.c_str());

    int level = mem_next_level();
    size_t npix = z.npix(), nc = z.compact();
    float *Fp = nullptr, *Fm = nullptr;
    mem_allocate(&Fp, sizeof(float), uint32_t(npix), 0);
    mem_allocate(&Fm, sizeof(float), uint32_t(npix), 0);
    float fx = p->fov[0], fy = p->fov[1], fz = p->fov[2];
    if (p->dirf_ncos >= 1) {
        // Image rows run opposite to the y axis of the direction.
        cos2_filter_3d(Fp, z.c[0], z.c[1], z.c[2], fx, fy, fz, v[0], -v[1], v[2]);
        cos2_filter_3d(Fm, z.c[0], z.c[1], z.c[2], fx, fy, fz, -v[0], v[1], -v[2]);
    } else {
        std::fill(Fp, Fp + nc, 1.0f);
        std::fill(Fm, Fm + nc, 1.0f);
    }
    if (!times_band(Fp, z, p) || !times_band(Fm, z, p)) return mem_free_level(level, 0), 1;
    spread_filter_3d(Fp, z.s[0], z.s[1], z.s[2]);
    spread_filter_3d(Fm, z.s[0], z.s[1], z.s[2]);
    if (mode == 1)
        filter_pair(stack, z, Fp);
    else
        filter_stack(stack, p->nt, z, Fp, Fm);
    mem_free_level(level, 0);
    say_time();
    return 0;
}

int zonly_filter(float* stack, wave_params* p) {
    stopwatch(0);
    int arg = int(p->zonly_arg);
    std::string verbose = p->zonly_arg != 0.0f
                              ? wave_fmt("Z-only direction filter %d (%.2f %.2f %d) ", arg,
                                         p->zonly_cut[0], p->zonly_cut[1], p->zonly_order)
                              : wave_fmt("Z-only direction filter (%.2f %.2f %d) ", p->zonly_cut[0],
                                         p->zonly_cut[1], p->zonly_order);
    std::string quiet = p->zonly_arg != 0.0f ? wave_fmt("Z-only direction filtering (%d)", arg)
                                             : std::string("Z-only direction filtering ");
    wave_say(WF_FILTER, quiet.c_str(), verbose.c_str());

    int nz = std::max(p->nz, 1), nt = p->nt;
    filter_spec band;
    band.type = 7;
    band.cut[0] = p->zonly_cut[0];
    band.cut[1] = p->zonly_cut[1];
    band.order = p->zonly_order;
    std::vector<float> A(nz), B(nz);
    if (fill_band_filter(A.data(), "complex", nz, 1, 1, 1.0, 1.0, &band)) return 1;
    for (int i = nz / 2 + 1; i < nz; ++i) A[i] = 0.0f;
    B[0] = 0.0f;
    for (int i = 1; i < nz; ++i) B[i] = A[nz - i];
    if (p->zonly_arg != 0.0f) std::swap(A, B);

    int level = mem_next_level();
    size_t plane = size_t(p->nx) * p->ny;
    float* line = nullptr;
    uint8_t* marks = nullptr;
    int nline = nz * nt;
    mem_allocate(&line, sizeof(float), uint32_t(2 * nline), 0);
    mem_allocate(&marks, 1, uint32_t(nline), 0);
    for (size_t xy = 0; xy < plane; ++xy) {
        // A value that is not finite stays where it is instead of filling its column.
        bool held = false;
        for (int k = 0; k < nline; ++k) {
            float v = stack[k * plane + xy];
            marks[k] = !std::isfinite(v);
            held = held || marks[k];
            line[2 * k] = marks[k] ? 0.0f : v;
            line[2 * k + 1] = 0.0f;
        }
        GENERAL_cvfft_3d(line, nz, nt, 1, 1);
        for (int t = 1; t < nt; ++t) {
            float* row = line + 2 * size_t(t) * nz;
            if (t == nt / 2)
                std::memset(row, 0, sizeof(float) * 2 * nz);
            else
                complex_times_real(row, t < nt / 2 ? A.data() : B.data(), nz);
        }
        GENERAL_cvfft_3d(line, nz, nt, 1, -1);
        for (int k = 0; k < nline; ++k)
            stack[k * plane + xy] =
                (held && marks[k]) ? std::numeric_limits<float>::quiet_NaN() : line[2 * k];
    }
    mem_free_level(level, 0);
    say_time();
    return 0;
}
