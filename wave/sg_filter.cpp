// Savitzky-Golay kernel sets over the four modes, and their application to images and volumes.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "wave/filter3d.h"
#include "wave/kernels.h"
#include "wave/messages.h"

namespace {

constexpr int kVariant = 64;
constexpr int kNonSeparable = 128;

// Axes in kernel order: x (index 1), y (index 0), z (index 2).
constexpr int kAxis[3] = {1, 0, 2};

// Where the window of a pixel at i on an axis of n points starts, as an offset back from the
// pixel: the centre inside, less near the first edge, more near the last.
inline int edge_position(int i, int n, int w) {
    int h = w / 2;
    if (i < h) return i;
    if (i > n - 1 - h) return w - (n - i);
    return h;
}

// One axis of the separable modes: win taps (invariant) or win kernels of win taps (variant).
int separable_axis(int deriv, int order, int win, float* coef, int variant, float scale) {
    int h = win / 2;
    if (!variant) {
        if (SGcoeff(deriv, order, h, h, coef)) return 1;
    } else {
        for (int p = 0; p < win; ++p)
            if (SGcoeff(deriv, order, p, win - 1 - p, coef + size_t(p) * win)) return 1;
    }
    if (scale != 1.0f)
        for (int i = 0; i < (variant ? win * win : win); ++i) coef[i] *= scale;
    return 0;
}

// Non-separable kernels over `dims` axes: one centred kernel, or one per edge position.
int nonseparable(int dims, const int* deriv, int order, const int* win, float* coef, int variant,
                 float scale) {
    int w[3] = {win[0], win[1], dims == 3 ? win[2] : 1};
    int area = w[0] * w[1] * w[2];
    auto fit = [&](const int* p, float* out) {
        int nl[3], nr[3];
        for (int a = 0; a < dims; ++a) nl[a] = p[a], nr[a] = win[a] - 1 - p[a];
        int r =
            dims == 3 ? SGcoeff3d(deriv, order, nl, nr, out) : SGcoeff2d(deriv, order, nl, nr, out);
        if (!r && scale != 1.0f)
            for (int i = 0; i < area; ++i) out[i] *= scale;
        return r;
    };
    if (!variant) {
        int p[3] = {win[0] / 2, win[1] / 2, dims == 3 ? win[2] / 2 : 0};
        return fit(p, coef);
    }
    for (int p0 = 0; p0 < w[0]; ++p0)
        for (int p1 = 0; p1 < w[1]; ++p1)
            for (int p2 = 0; p2 < w[2]; ++p2) {
                int p[3] = {p0, p1, p2};
                if (fit(p, coef + size_t((p0 * w[1] + p1) * w[2] + p2) * area)) return 1;
            }
    return 0;
}

int sg_kernel_nd(int dims, const int* deriv, const int* order, const int* win, float* coef,
                 int flags, const float* scale) {
    int variant = (flags & kVariant) != 0;
    if (flags & kNonSeparable)
        return nonseparable(dims, deriv, order[0], win, coef, variant, scale ? scale[0] : 1.0f);
    float* at = coef;
    for (int k = 0; k < dims; ++k) {
        int a = kAxis[k];
        if (separable_axis(deriv[a], order[a], win[a], at, variant, scale ? scale[a] : 1.0f))
            return 1;
        at += variant ? win[a] * win[a] : win[a];
    }
    return 0;
}

// Laplacian kernels: separable modes hold each axis's second derivative over its pixel size
// squared; non-separable ones the sum of the per-axis kernels.
int sg_laplacian_nd(int dims, const int* order, const int* win, const float* pixel, float* coef,
                    int flags) {
    if (!(flags & kNonSeparable)) {
        float scale[3];
        int deriv[3] = {2, 2, 2};
        for (int a = 0; a < dims; ++a) scale[a] = 1.0f / (pixel[a] * pixel[a]);
        return sg_kernel_nd(dims, deriv, order, win, coef, flags, scale);
    }
    int count = sg_kernel_size(win, flags, dims);
    std::vector<float> part(size_t(count), 0.0f);
    std::fill(coef, coef + count, 0.0f);
    for (int a = 0; a < dims; ++a) {
        int deriv[3] = {0, 0, 0};
        deriv[a] = 2;
        float scale = 1.0f / (pixel[a] * pixel[a]);
        if (sg_kernel_nd(dims, deriv, order, win, part.data(), flags, &scale)) return 1;
        for (int i = 0; i < count; ++i) coef[i] += part[i];
    }
    return 0;
}

// One axis of a volume through per-position kernels, the window inside the line.
void variant_axis(const float* in, float* out, int nx, int ny, int nz, int axis, const float* k,
                  int w) {
    int n = axis == 0 ? ny : axis == 1 ? nx : nz;
    size_t stride = axis == 0 ? size_t(nx) : axis == 1 ? 1 : size_t(nx) * ny;
    size_t nlines = size_t(nx) * ny * nz / n;
    std::vector<float> line(n);
    for (size_t l = 0; l < nlines; ++l) {
        size_t base;
        if (axis == 1) {
            base = l * nx;
        } else if (axis == 0) {
            base = (l / nx) * nx * ny + l % nx;
        } else {
            base = l;
        }
        for (int i = 0; i < n; ++i) line[i] = in[base + i * stride];
        for (int i = 0; i < n; ++i) {
            int p = edge_position(i, n, w);
            const float* kp = k + size_t(p) * w;
            const float* src = line.data() + i - p;
            float s = 0.0f;
            for (int j = 0; j < w; ++j) s += kp[j] * src[j];
            out[base + i * stride] = s;
        }
    }
}

// A non-separable kernel (set) over a volume; invariant kernels are cut at the edges.
void nonseparable_apply(const float* in, float* out, const float* coef, const int* w, int nx,
                        int ny, int nz, int variant) {
    int area = w[0] * w[1] * w[2];
    int h0 = w[0] / 2, h1 = w[1] / 2, h2 = w[2] / 2;
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x) {
                int p0 = h0, p1 = h1, p2 = h2;
                const float* k = coef;
                if (variant) {
                    p0 = edge_position(y, ny, w[0]);
                    p1 = edge_position(x, nx, w[1]);
                    p2 = edge_position(z, nz, w[2]);
                    k = coef + size_t((p0 * w[1] + p1) * w[2] + p2) * area;
                }
                int a0 = std::max(0, p0 - y), a1 = std::min(w[0], ny - y + p0);
                int b0 = std::max(0, p1 - x), b1 = std::min(w[1], nx - x + p1);
                int c0 = std::max(0, p2 - z), c1 = std::min(w[2], nz - z + p2);
                double s = 0.0;
                for (int a = a0; a < a1; ++a)
                    for (int b = b0; b < b1; ++b) {
                        const float* kr = k + size_t(a * w[1] + b) * w[2];
                        size_t row = size_t(y + a - p0) * nx + (x + b - p1);
                        for (int c = c0; c < c1; ++c)
                            s += double(kr[c]) * in[(size_t(z + c - p2) * ny) * nx + row];
                    }
                out[(size_t(z) * ny + y) * nx + x] = float(s);
            }
}

int apply_nd(int dims, const float* in, float* out, const float* coef, const int* win,
             const int* size, int flags, int serial, const char* name) {
    int ny = size[0], nx = size[1], nz = dims == 3 ? size[2] : 1;
    int w[3] = {win[0], win[1], dims == 3 ? win[2] : 1};
    int n[3] = {ny, nx, nz};
    if (!in || !out || !coef || nx < 1 || ny < 1 || nz < 1) {
        std::string t = std::string(name) + ": invalid image or kernel.\n";
        wave_warn(WF_KERNELS, t.c_str(), t.c_str());
        return 1;
    }
    for (int a = 0; a < 3; ++a)
        if (w[a] < 1 || w[a] % 2 == 0 || ((flags & kVariant) && w[a] > n[a])) {
            std::string t = std::string(name) +
                            ": Filter window must be odd and, for a variant filter, no bigger than "
                            "image.\n";
            wave_warn(WF_KERNELS, t.c_str(), t.c_str());
            return 1;
        }
    size_t count = size_t(nx) * ny * nz;
    if (flags & kNonSeparable) {
        if (in == out) {
            std::vector<float> copy(in, in + count);
            nonseparable_apply(copy.data(), out, coef, w, nx, ny, nz, flags & kVariant);
        } else {
            nonseparable_apply(in, out, coef, w, nx, ny, nz, flags & kVariant);
        }
        return 0;
    }
    // Separable: kernels for x, y, z follow one another.
    const float* k[3];
    const float* at = coef;
    for (int i = 0; i < dims; ++i) {
        int a = kAxis[i];
        k[i] = at;
        at += (flags & kVariant) ? w[a] * w[a] : w[a];
    }
    if (!(flags & kVariant)) {
        const float* kz = dims == 3 ? k[2] : nullptr;
        if (serial) {
            filter3d_zeropad(in, out, nx, ny, nz, k[0], w[1], 0.0f, k[1], w[0], 0.0f, kz, w[2],
                             0.0f, 0);
            return 0;
        }
        std::vector<float> copy;
        if (in == out) copy.assign(in, in + count), in = copy.data();
        filter3d_zeropad(in, out, nx, ny, nz, k[0], w[1], 0.0f, nullptr, 0, 0.0f, nullptr, 0, 0.0f,
                         0);
        filter3d_zeropad(in, out, nx, ny, nz, nullptr, 0, 0.0f, k[1], w[0], 0.0f, nullptr, 0, 0.0f,
                         1);
        if (kz)
            filter3d_zeropad(in, out, nx, ny, nz, nullptr, 0, 0.0f, nullptr, 0, 0.0f, kz, w[2],
                             0.0f, 1);
        return 0;
    }
    std::vector<float> tmp(count), acc;
    const int axis_code[3] = {1, 0, 2};  // variant_axis: 0 y, 1 x, 2 z
    if (serial) {
        std::vector<float> cur(in, in + count);
        for (int i = 0; i < dims; ++i) {
            int a = kAxis[i];
            variant_axis(cur.data(), tmp.data(), nx, ny, nz, axis_code[i], k[i], w[a]);
            cur.swap(tmp);
        }
        std::memcpy(out, cur.data(), sizeof(float) * count);
        return 0;
    }
    acc.assign(count, 0.0f);
    for (int i = 0; i < dims; ++i) {
        int a = kAxis[i];
        variant_axis(in, tmp.data(), nx, ny, nz, axis_code[i], k[i], w[a]);
        for (size_t j = 0; j < count; ++j) acc[j] += tmp[j];
    }
    std::memcpy(out, acc.data(), sizeof(float) * count);
    return 0;
}

}  // namespace

int sg_kernel_size(const int* win, int flags, int dims) {
    int area = 1, sum = 0, squares = 0;
    for (int a = 0; a < dims; ++a) area *= win[a], sum += win[a], squares += win[a] * win[a];
    switch (flags & 192) {
        case 0:
            return sum;
        case kVariant:
            return squares;
        case kNonSeparable:
            return area;
        default:
            return area * area;
    }
}

int sg_kernel_2d(const int* deriv2, const int* order2, const int* win2, float* coef, int flags) {
    return sg_kernel_nd(2, deriv2, order2, win2, coef, flags, nullptr);
}

int sg_smooth_2d(const int* order2, const int* win2, float* coef, int flags) {
    const int deriv[2] = {0, 0};
    return sg_kernel_2d(deriv, order2, win2, coef, flags);
}

int sg_laplacian_2d(const int* order2, const int* win2, const float* pixel, float* coef,
                    int flags) {
    return sg_laplacian_nd(2, order2, win2, pixel, coef, flags);
}

int sg_kernel_3d(const int* deriv3, const int* order3, const int* win3, float* coef, int flags) {
    return sg_kernel_nd(3, deriv3, order3, win3, coef, flags, nullptr);
}

int sg_smooth_3d(const int* order3, const int* win3, float* coef, int flags) {
    const int deriv[3] = {0, 0, 0};
    return sg_kernel_3d(deriv, order3, win3, coef, flags);
}

int sg_laplacian_3d(const int* order3, const int* win3, const float* pixel, float* coef,
                    int flags) {
    return sg_laplacian_nd(3, order3, win3, pixel, coef, flags);
}

int apply_sg_filter_2d(const float* in, float* out, const float* coef, const int* win,
                       const int* dims, int flags, int serial) {
    return apply_nd(2, in, out, coef, win, dims, flags, serial, "apply_sg_filter_2d");
}

int apply_sg_filter_3d(const float* in, float* out, const float* coef, const int* win,
                       const int* dims, int flags, int serial) {
    return apply_nd(3, in, out, coef, win, dims, flags, serial, "apply_sg_filter_3d");
}
