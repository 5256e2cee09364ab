#include "wave/fft.h"

#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <numbers>
#include <utility>

#include "wave/messages.h"

// Blocks of half a 32 KB L1 data cache measured fastest for 256-point lines.
int cache_kb = 16;
int flip_flag = 1;
float fwd_scale = 0.0f;
float inv_scale = 1.0f;
int skip_zero_lines = 0;

namespace {

// Plans by signed length: positive forward, negative inverse. A 3-D transform visits up to
// six of them in turn, so each is kept rather than made again at every change of axis.
// Never destroyed: plans outlive static destruction until fft_cleanup.
std::map<int, fftwf_plan>& g_plans = *new std::map<int, fftwf_plan>;
float* g_work = nullptr;
int g_work_len = 0;  // complex points
float* g_ybuf = nullptr;
size_t g_ybuf_len = 0;  // floats
float* g_zbuf = nullptr;
size_t g_zbuf_len = 0;
float* g_rtable = nullptr;  // rvfft twiddles; length word at g_rtable[-1]

int block_kb() {
    if (cache_kb < 1) cache_kb = 64;
    return cache_kb;
}

float line_scale(int n, int dir) {
    float mode = dir > 0 ? fwd_scale : inv_scale;
    if (!(mode > 0.0f)) return 1.0f;
    if (mode == 1.0f) return 1.0f / float(n);
    if (mode == 2.0f) return 1.0f / std::sqrt(float(n));
    return 1.0f / mode;
}

bool all_zero(const float* buf, int stride, int n) {
    for (int i = 0; i < n; ++i) {
        const float* c = buf + 2 * size_t(i) * stride;
        if (c[0] != 0.0f || c[1] != 0.0f) return false;
    }
    return true;
}

// Grows a block buffer of the flip paths; buffers never shrink.
bool grow(float** buf, size_t* len, size_t floats) {
    if (*len >= floats) return true;
    fftwf_free(*buf);
    *buf = static_cast<float*>(fftwf_malloc(sizeof(float) * floats));
    *len = *buf ? floats : 0;
    return *buf != nullptr;
}

int32_t stored_length(const float* table) {
    int32_t n;
    std::memcpy(&n, table - 1, sizeof n);
    return n;
}

void store_length(float* table, int32_t n) { std::memcpy(table - 1, &n, sizeof n); }

// Copies the octant boxes of src to their shifted places in dst (complex elements).
void shift_copy(const float* src, float* dst, int nx, int ny, int nz) {
    struct Seg {
        int from, to, len;
    };
    auto segs = [](int n, Seg* s) {
        s[0] = {0, n / 2, n - n / 2};
        s[1] = {n - n / 2, 0, n / 2};
    };
    Seg sx[2], sy[2], sz[2];
    segs(nx, sx);
    segs(ny, sy);
    segs(nz, sz);
    for (const Seg& a : sz)
        for (const Seg& b : sy)
            for (int z = 0; z < a.len; ++z)
                for (int y = 0; y < b.len; ++y) {
                    size_t srow = (size_t(a.from + z) * ny + (b.from + y)) * nx;
                    size_t drow = (size_t(a.to + z) * ny + (b.to + y)) * nx;
                    for (const Seg& c : sx)
                        std::memcpy(dst + 2 * (drow + c.to), src + 2 * (srow + c.from),
                                    sizeof(float) * 2 * c.len);
                }
}

// Even sizes: each element swaps with its partner half a size away along every active axis.
// The outermost active axis is walked over its first half only, so each pair swaps once.
void shift_swap(float* buf, int nx, int ny, int nz) {
    int hx = nx / 2, hy = ny / 2, hz = nz / 2;
    int zend = nz > 1 ? hz : 1;
    int yend = nz > 1 ? ny : (ny > 1 ? hy : 1);
    bool rows_only = nz == 1 && ny == 1;
    for (int z = 0; z < zend; ++z)
        for (int y = 0; y < yend; ++y) {
            float* a = buf + 2 * (size_t(z) * ny + y) * nx;
            float* b = buf + 2 * (size_t((z + hz) % nz) * ny + (y + hy) % ny) * nx;
            if (nx == 1) {
                std::swap_ranges(a, a + 2, b);
            } else if (rows_only) {
                std::swap_ranges(a, a + 2 * hx, a + 2 * hx);
            } else {
                std::swap_ranges(a, a + 2 * hx, b + 2 * hx);
                std::swap_ranges(a + 2 * hx, a + 2 * nx, b);
            }
        }
}

// One complex point, moved as a single 8-byte word.
inline void move_point(float* dst, const float* src) { std::memcpy(dst, src, 2 * sizeof(float)); }

}  // namespace

void* fft_malloc(size_t size) {
    void* p = std::malloc(size ? size : 1);
    if (!p) wave_fatal("fft_malloc: Unable to allocate requested memory.");
    return p;
}

int cvfft(float* buf, int stride, int n, int dir) {
    if (n < 1) return 0;
    if (skip_zero_lines && all_zero(buf, stride, n)) return 0;
    if (g_work_len < n) {
        fftwf_free(g_work);
        g_work = static_cast<float*>(fftwf_malloc(sizeof(float) * 2 * size_t(n)));
        g_work_len = g_work ? n : 0;
        if (!g_work) wave_fatal("cvfft(FFTW): Unable to allocate working array temp_buf.");
    }
    const int signed_len = dir > 0 ? n : -n;
    fftwf_plan& plan = g_plans[signed_len];
    if (!plan) {
        auto* w = reinterpret_cast<fftwf_complex*>(g_work);
        // Measured once per length; plans run on any buffer of the work line's alignment.
        plan = fftwf_plan_dft_1d(n, w, w, dir > 0 ? FFTW_FORWARD : FFTW_BACKWARD, FFTW_MEASURE);
        if (!plan) {
            g_plans.erase(signed_len);
            wave_warn(WF_FFT, "\nfftw_create_plan error in cvfft\n",
                      "\nfftw_create_plan error in cvfft\n");
            return 1;
        }
    }
    float s = line_scale(n, dir);
    if (stride == 1 && fftwf_alignment_of(buf) == fftwf_alignment_of(g_work)) {
        auto* c = reinterpret_cast<fftwf_complex*>(buf);
        fftwf_execute_dft(plan, c, c);
        if (s != 1.0f)
            for (int i = 0; i < 2 * n; ++i) buf[i] *= s;
        return 0;
    }
    for (int i = 0; i < n; ++i) {
        const float* c = buf + 2 * size_t(i) * stride;
        g_work[2 * i] = c[0];
        g_work[2 * i + 1] = c[1];
    }
    auto* w = reinterpret_cast<fftwf_complex*>(g_work);
    fftwf_execute_dft(plan, w, w);
    for (int i = 0; i < n; ++i) {
        float* c = buf + 2 * size_t(i) * stride;
        c[0] = g_work[2 * i] * s;
        c[1] = g_work[2 * i + 1] * s;
    }
    return 0;
}

int cvfft_3d_yonly_flip(float* buf, int nx, int ny, int nz, int dir) {
    size_t line = 2 * size_t(ny);
    int width = std::clamp(int(size_t(block_kb()) * 1024 / (sizeof(float) * line)), 1, nx);
    if (!grow(&g_ybuf, &g_ybuf_len, line * width))
        wave_fatal("cvfft_3d_yonly_flip: Unable to allocate ybuffer.");
    for (int z = 0; z < nz; ++z) {
        float* plane = buf + 2 * size_t(z) * ny * nx;
        for (int x0 = 0; x0 < nx; x0 += width) {
            int w = std::min(width, nx - x0);
            for (int y = 0; y < ny; ++y) {
                const float* row = plane + 2 * (size_t(y) * nx + x0);
                for (int j = 0; j < w; ++j) move_point(g_ybuf + j * line + 2 * y, row + 2 * j);
            }
            for (int j = 0; j < w; ++j)
                if (cvfft(g_ybuf + j * line, 1, ny, dir))
                    wave_fatal("cvfft_3d_yonly_flip: cvfft error.");
            for (int y = 0; y < ny; ++y) {
                float* row = plane + 2 * (size_t(y) * nx + x0);
                for (int j = 0; j < w; ++j) move_point(row + 2 * j, g_ybuf + j * line + 2 * y);
            }
        }
    }
    return 0;
}

int cvfft_3d_zonly_flip(float* buf, int nx, int ny, int nz, int dir) {
    size_t line = 2 * size_t(nz);
    int plane_len = nx * ny;
    int width =
        std::clamp(int(size_t(block_kb()) * 1024 / (sizeof(float) * line)), 1, plane_len);
    if (!grow(&g_zbuf, &g_zbuf_len, line * width))
        wave_fatal("cvfft_3d_zonly_flip: Unable to allocate zbuffer.");
    for (int i0 = 0; i0 < plane_len; i0 += width) {
        int w = std::min(width, plane_len - i0);
        for (int z = 0; z < nz; ++z) {
            const float* src = buf + 2 * (size_t(z) * plane_len + i0);
            for (int j = 0; j < w; ++j) move_point(g_zbuf + j * line + 2 * z, src + 2 * j);
        }
        for (int j = 0; j < w; ++j)
            if (cvfft(g_zbuf + j * line, 1, nz, dir)) wave_fatal("cvfft_3d_zonly_flip: cvfft error.");
        for (int z = 0; z < nz; ++z) {
            float* dst = buf + 2 * (size_t(z) * plane_len + i0);
            for (int j = 0; j < w; ++j) move_point(dst + 2 * j, g_zbuf + j * line + 2 * z);
        }
    }
    return 0;
}

int BASE_cvfft_3d(float* buf, int nx, int ny, int nz, int dir) {
    int ax = std::abs(nx), ay = std::abs(ny), az = std::abs(nz);
    if (nx > 1) {
        for (size_t r = 0; r < size_t(ay) * az; ++r)
            if (cvfft(buf + 2 * r * ax, 1, ax, dir)) wave_fatal("BASE_cvfft_3d: cvfft(x) error.");
    }
    if (ny > 1) {
        if (ax == 1) {
            // A single column: its points are contiguous, so transform them as rows.
            if (BASE_cvfft_3d(buf, ny, -az, ax, dir)) wave_fatal("BASE_cvfft_3d: cvfft(Y) error.");
        } else if (flip_flag) {
            if (cvfft_3d_yonly_flip(buf, ax, ay, az, dir))
                wave_fatal("BASE_cvfft_3d: cvfft_3d_yonly_flip error.");
        } else {
            for (int z = 0; z < az; ++z)
                for (int x = 0; x < ax; ++x)
                    if (cvfft(buf + 2 * (size_t(z) * ay * ax + x), ax, ay, dir))
                        wave_fatal("BASE_cvfft_3d: cvfft(y) error.");
        }
    }
    if (nz > 1) {
        if (ax == 1 && ay == 1) {
            if (BASE_cvfft_3d(buf, nz, -1, 1, dir)) wave_fatal("BASE_cvfft_3d: cvfft(Z) error.");
        } else if (flip_flag) {
            if (cvfft_3d_zonly_flip(buf, ax, ay, az, dir))
                wave_fatal("BASE_cvfft_3d: cvfft_3d_zonly_flip error.");
        } else {
            int plane_len = ax * ay;
            for (int i = 0; i < plane_len; ++i)
                if (cvfft(buf + 2 * size_t(i), plane_len, az, dir))
                    wave_fatal("BASE_cvfft_3d: cvfft(z) error.");
        }
    }
    return 0;
}

int GENERAL_cvfft_3d(float* buf, int nx, int ny, int nz, int dir) {
    int ax = std::abs(nx), ay = std::abs(ny), az = std::abs(nz);
    if (dir > 0) {
        if (BASE_cvfft_3d(buf, nx, ny, nz, dir))
            wave_fatal("GENERAL_cvfft_3d: BASE_cvfft_3d error (1).");
        return 0;
    }
    // The inverse runs the axes in reverse order: z, then y, then x.
    if (BASE_cvfft_3d(buf, -ax, -ay, nz, dir))
        wave_fatal("GENERAL_cvfft_3d: BASE_cvfft_3d error (2).");
    if (BASE_cvfft_3d(buf, -ax, ny, -az, dir))
        wave_fatal("GENERAL_cvfft_3d: BASE_cvfft_3d error (3).");
    if (BASE_cvfft_3d(buf, nx, -ay, -az, dir))
        wave_fatal("GENERAL_cvfft_3d: BASE_cvfft_3d error (4).");
    return 0;
}

int calc_table(float** table_holder, int n, int dir) {
    int sign = dir >= 1 ? -1 : 1;
    int32_t want = n * sign;
    if (float* t = *table_holder) {
        int32_t have = stored_length(t);
        if (have == want) return 0;
        if (have == -want) {
            // The other direction is the conjugate: flip the sines.
            for (int k = 0; k < n / 2; ++k) t[2 * k + 1] = -t[2 * k + 1];
            store_length(t, want);
            return 0;
        }
        std::free(t - 1);
        *table_holder = nullptr;
    }
    auto* block = static_cast<float*>(std::malloc(sizeof(float) * (size_t(n) + 1)));
    if (!block) {
        wave_warn(WF_FFT, "calc_table: Unable to allocate w_array.",
                  "calc_table: Unable to allocate w_array.");
        return 1;
    }
    float* t = block + 1;
    double step = sign * 2.0 * std::numbers::pi / n;
    for (int k = 0; k < n / 2; ++k) {
        t[2 * k] = float(std::cos(k * step));
        t[2 * k + 1] = float(std::sin(k * step));
    }
    store_length(t, want);
    *table_holder = t;
    return 0;
}

int rvfft(float* buf, int n, int dir) {
    int h = n / 2;
    if (calc_table(&g_rtable, n, dir)) wave_fatal("rvfft: Unable to create w_array.");
    if (dir > 0) {
        if (cvfft(buf, 1, h, 1)) wave_fatal("rvfft: cvfft error (1).");
        float a = buf[0], b = buf[1];
        buf[0] = a + b;
        buf[1] = a - b;
    }
    // Even and odd halves from a point and its mirror, and back:
    // forward X(k) = Fe + w Fo, X(h-k) = conj(Fe - w Fo) with Fe = (Z(k) + Z*(h-k))/2 and
    // Fo = (Z(k) - Z*(h-k))/2i; inverse Fe = (X(k) + X*(h-k))/2, Fo = w (X(k) - X*(h-k))/2,
    // Z(k) = Fe + i Fo, Z(h-k) = Fe* + i Fo*.
    for (int k = 1; 2 * k <= h; ++k) {
        int m = h - k;
        float* pk = buf + 2 * k;
        float* pm = buf + 2 * m;
        float wr = g_rtable[2 * k], wi = g_rtable[2 * k + 1];
        float er = 0.5f * (pk[0] + pm[0]), ei = 0.5f * (pk[1] - pm[1]);
        float dr = 0.5f * (pk[0] - pm[0]), di = 0.5f * (pk[1] + pm[1]);
        if (dir > 0) {
            float fr = di, fi = -dr;  // (dr + i di) / i
            float tr = wr * fr - wi * fi, ti = wr * fi + wi * fr;
            pk[0] = er + tr;
            pk[1] = ei + ti;
            if (m != k) {
                pm[0] = er - tr;
                pm[1] = -(ei - ti);
            }
        } else {
            float fr = wr * dr - wi * di, fi = wr * di + wi * dr;
            pk[0] = er - fi;
            pk[1] = ei + fr;
            if (m != k) {
                pm[0] = er + fi;
                pm[1] = -ei + fr;
            }
        }
    }
    if (dir <= 0) {
        float a = buf[0], b = buf[1];
        buf[0] = 0.5f * (a + b);
        buf[1] = 0.5f * (a - b);
        if (cvfft(buf, 1, h, -1)) wave_fatal("rvfft: cvfft error (2).");
    }
    return 0;
}

int rvfft_3d(float* buf, int nx, int ny, int nz, int dir) {
    size_t rows = size_t(ny) * nz;
    int half = nx / 2 + 1;
    if (dir > 0) {
        for (size_t r = 0; r < rows; ++r)
            if (rvfft(buf + r * nx, nx, 1)) wave_fatal("rvfft_3d: rvfft error (1).");
        // Rows widen to nx + 2 floats; the last row moves first so nothing is overwritten.
        for (size_t r = rows; r-- > 0;) {
            float* dst = buf + r * (nx + 2);
            std::memmove(dst, buf + r * nx, sizeof(float) * nx);
            dst[nx] = dst[1];
            dst[nx + 1] = 0.0f;
            dst[1] = 0.0f;
        }
        if (GENERAL_cvfft_3d(buf, -half, ny, nz, 1))
            wave_fatal("rvfft_3d: GENERAL_cvfft_3d error (1).");
        return 0;
    }
    if (GENERAL_cvfft_3d(buf, -half, ny, nz, -1)) wave_fatal("rvfft_3d: GENERAL_cvfft_3d error (2).");
    for (size_t r = 0; r < rows; ++r) {
        float* src = buf + r * (nx + 2);
        float nyquist = src[nx];
        std::memmove(buf + r * nx, src, sizeof(float) * nx);
        buf[r * nx + 1] = nyquist;
    }
    for (size_t r = 0; r < rows; ++r)
        if (rvfft(buf + r * nx, nx, -1)) wave_fatal("rvfft_3d: rvfft error (2).");
    return 0;
}

float* fft_shift_3d(float* buf, int nx, int ny, int nz) {
    if (nx < 1 || ny < 1 || nz < 1) return nullptr;
    if (nx == 1 && ny == 1 && nz == 1) return buf;
    auto odd = [](int n) { return n > 1 && n % 2 == 1; };
    if (!odd(nx) && !odd(ny) && !odd(nz)) {
        shift_swap(buf, nx, ny, nz);
        return buf;
    }
    auto* out = static_cast<float*>(std::malloc(sizeof(float) * 2 * size_t(nx) * ny * nz));
    if (!out) {
        std::free(buf);
        return nullptr;
    }
    shift_copy(buf, out, nx, ny, nz);
    std::free(buf);
    return out;
}

float* fft_shift_2d(float* buf, int nx, int ny) { return fft_shift_3d(buf, nx, ny, 1); }

void fft_cleanup() {
    fftwf_free(g_ybuf);
    fftwf_free(g_zbuf);
    fftwf_free(g_work);
    g_ybuf = g_zbuf = g_work = nullptr;
    g_ybuf_len = g_zbuf_len = 0;
    g_work_len = 0;
    for (auto& [len, plan] : g_plans) fftwf_destroy_plan(plan);
    g_plans.clear();
}

void rvfft_cleanup() {
    if (g_rtable) std::free(g_rtable - 1);
    g_rtable = nullptr;
}
