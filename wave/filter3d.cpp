#include "wave/filter3d.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "wave/fft.h"
#include "wave/mem.h"

namespace {

bool all_ones(const float* k, int nk) {
    return std::all_of(k, k + nk, [](float v) { return v == 1.0f; });
}

bool invalid_box(const char* name, const float* k, int nk) {
    for (int i = 0; i < nk; ++i)
        if (k[i] != 1.0f) {
            std::fprintf(stderr, "%s: Invalid filter value (%.2f) \n", name, k[i]);
            return true;
        }
    return false;
}

// One line of n points, in place through `line` (n floats of scratch): box sums, the second
// difference 1, -2, 1, or a general correlation with zero taps at both ends trimmed.
void filter_line(float* data, float* line, int n, const float* k, int nk) {
    std::memcpy(line, data, sizeof(float) * n);
    if (all_ones(k, nk)) {
        int h = nk / 2;
        double s = 0.0;
        for (int i = 0; i < std::min(h, n); ++i) s += line[i];
        for (int x = 0; x < n; ++x) {
            if (x + h < n) s += line[x + h];
            if (x - h - 1 >= 0) s -= line[x - h - 1];
            data[x] = float(s);
        }
        return;
    }
    if (nk == 3 && k[0] == 1.0f && k[1] == -2.0f && k[2] == 1.0f) {
        if (n == 1) {
            data[0] = -2.0f * line[0];
            return;
        }
        data[0] = line[1] - 2.0f * line[0];
        for (int x = 1; x < n - 1; ++x) data[x] = line[x - 1] - 2.0f * line[x] + line[x + 1];
        data[n - 1] = line[n - 2] - 2.0f * line[n - 1];
        return;
    }
    while (nk > 2 && k[0] == 0.0f && k[nk - 1] == 0.0f) ++k, nk -= 2;
    int h = nk / 2;
    for (int x = 0; x < n; ++x) {
        int j0 = std::max(0, h - x), j1 = std::min(nk, n - x + h);
        float s = 0.0f;
        for (int j = j0; j < j1; ++j) s += k[j] * line[x + j - h];
        data[x] = s;
    }
}

void scale(float* v, size_t n, float s) {
    if (s == 0.0f || s == 1.0f) return;
    for (size_t i = 0; i < n; ++i) v[i] *= s;
}

}  // namespace

float* filter3d_zeropad(const float* in, float* out, int nx, int ny, int nz, const float* kx,
                        int nkx, float sx, const float* ky, int nky, float sy, const float* kz,
                        int nkz, float sz, int add) {
    if (!in) {
        std::fputs("filter3d_zeropad: input_buf must be a valid pointer.\n", stderr);
        return nullptr;
    }
    if (nx < 1 || ny < 1 || nz < 1) return nullptr;
    size_t plane = size_t(nx) * ny, n = plane * nz;
    bool owned = !out;
    if (owned) {
        out = static_cast<float*>(engine_malloc(sizeof(float) * n));
        if (!out) {
            std::fputs("filter3d_zeropad: Unable to allocate out_buf.\n", stderr);
            return nullptr;
        }
        add = 0;
    }
    // Work in a copy when adding, so `in` may equal `out`.
    float* res = add ? static_cast<float*>(engine_malloc(sizeof(float) * n)) : out;
    int longest = std::max({nx, ny, nz});
    int width = 1;
    if (kz && nz > 1) {
        if (cache_kb < 1) cache_kb = 64;
        width = std::clamp(int(size_t(cache_kb) * 1024 / (sizeof(float) * nz)), 1, int(plane));
    }
    auto* scratch = static_cast<float*>(
        engine_malloc(sizeof(float) * (size_t(longest) + plane + size_t(width) * nz)));
    if (!res || !scratch) {
        std::fputs("filter3d_zeropad: Unable to allocate temp_buf.\n", stderr);
        if (res != out) std::free(res);
        std::free(scratch);
        if (owned) std::free(out);
        return nullptr;
    }
    if (res != in) std::memcpy(res, in, sizeof(float) * n);
    float* line = scratch;
    float* block = scratch + longest;
    if (kx) {
        for (size_t r = 0; r < n / nx; ++r) filter_line(res + r * nx, line, nx, kx, nkx);
        scale(res, n, sx);
    }
    if (ky) {
        if (all_ones(ky, nky)) {
            fast_3d_y_mean(res, res, nx, ny, nz, ky, nky);
        } else {
            // Whole rows at a time: rows of a plane combine with contiguous, vectorisable loops.
            float* copy = block;
            for (int z = 0; z < nz; ++z) {
                float* pl = res + z * plane;
                std::memcpy(copy, pl, sizeof(float) * plane);
                const float* k = ky;
                int nk = nky;
                while (nk > 2 && k[0] == 0.0f && k[nk - 1] == 0.0f) ++k, nk -= 2;
                int h = nk / 2;
                for (int y = 0; y < ny; ++y) {
                    float* row = pl + size_t(y) * nx;
                    std::fill(row, row + nx, 0.0f);
                    for (int j = std::max(0, h - y); j < std::min(nk, ny - y + h); ++j) {
                        const float* src = copy + size_t(y + j - h) * nx;
                        for (int x = 0; x < nx; ++x) row[x] += k[j] * src[x];
                    }
                }
            }
        }
        scale(res, n, sy);
    }
    if (kz && nz > 1) {
        // Blocks of columns gathered so that z runs fastest, then filtered as rows.
        float* zbuf = block + plane;
        for (size_t i0 = 0; i0 < plane; i0 += width) {
            int w = int(std::min<size_t>(width, plane - i0));
            for (int z = 0; z < nz; ++z)
                for (int j = 0; j < w; ++j) zbuf[size_t(j) * nz + z] = res[z * plane + i0 + j];
            for (int j = 0; j < w; ++j) filter_line(zbuf + size_t(j) * nz, line, nz, kz, nkz);
            for (int z = 0; z < nz; ++z)
                for (int j = 0; j < w; ++j) res[z * plane + i0 + j] = zbuf[size_t(j) * nz + z];
        }
        scale(res, n, sz);
    } else if (kz) {
        // A single plane still sees the centre tap.
        for (size_t i = 0; i < n; ++i) filter_line(res + i, line, 1, kz, nkz);
        scale(res, n, sz);
    }
    if (add) {
        for (size_t i = 0; i < n; ++i) out[i] += res[i];
        std::free(res);
    }
    std::free(scratch);
    return out;
}

void fast_3d_x_mean(const float* in, float* out, int nx, int ny, int nz, const float* k, int nk) {
    if (invalid_box("fast_3d_x_mean", k, nk)) return;
    std::vector<float> line(nx);
    size_t rows = size_t(ny) * nz;
    for (size_t r = 0; r < rows; ++r) {
        if (out != in) std::memcpy(out + r * nx, in + r * nx, sizeof(float) * nx);
        filter_line(out + r * nx, line.data(), nx, k, nk);
    }
}

void fast_3d_y_mean(const float* in, float* out, int nx, int ny, int nz, const float* k, int nk) {
    if (invalid_box("fast_3d_y_mean", k, nk)) return;
    int h = nk / 2;
    size_t plane = size_t(nx) * ny;
    std::vector<double> sum(nx);
    std::vector<float> copy(plane);
    for (int z = 0; z < nz; ++z) {
        const float* src = in + z * plane;
        std::memcpy(copy.data(), src, sizeof(float) * plane);
        float* dst = out + z * plane;
        std::fill(sum.begin(), sum.end(), 0.0);
        for (int y = 0; y < std::min(h, ny); ++y)
            for (int x = 0; x < nx; ++x) sum[x] += copy[size_t(y) * nx + x];
        for (int y = 0; y < ny; ++y) {
            if (y + h < ny)
                for (int x = 0; x < nx; ++x) sum[x] += copy[size_t(y + h) * nx + x];
            if (y - h - 1 >= 0)
                for (int x = 0; x < nx; ++x) sum[x] -= copy[size_t(y - h - 1) * nx + x];
            for (int x = 0; x < nx; ++x) dst[size_t(y) * nx + x] = float(sum[x]);
        }
    }
}

double dot_strided(const float* a, int stride_a, const float* b, int stride_b, int n) {
    double s = 0.0;
    for (int i = 0; i < n; ++i) s += double(a[size_t(i) * stride_a]) * b[size_t(i) * stride_b];
    return s;
}

double sum_strided(const float* a, int stride, int n) {
    double s = 0.0;
    for (int i = 0; i < n; ++i) s += a[size_t(i) * stride];
    return s;
}
