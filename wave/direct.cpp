// Direct inversion and AIDE over images and volumes.
#include "wave/direct.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>
#include <string>
#include <vector>

#include "wave/filter3d.h"
#include "wave/kernels.h"
#include "wave/mem.h"
#include "wave/messages.h"
#include "wave/progress.h"

namespace {

using cd = std::complex<double>;
constexpr double kPi = std::numbers::pi;
constexpr int kNonSeparable = 128;

void warn(const std::string& text) {
    std::string quiet = "\n" + text;
    wave_warn(WF_DI, quiet.c_str(), text.c_str());
}
void warn(const std::string& quiet, const std::string& verbose) {
    wave_warn(WF_DI, quiet.c_str(), verbose.c_str());
}
void status(const char* quiet, const char* verbose = nullptr) { wave_say(WF_DI, quiet, verbose); }

size_t volume_of(int nd, const int* dims) {
    size_t n = 1;
    for (int a = 0; a < nd; ++a) n *= size_t(std::max(dims[a], 0));
    return n;
}

bool too_small(int nd, const int* dims, const char* name) {
    for (int a = 0; a < nd; ++a)
        if (dims[a] < 3) {
            warn(std::string(name) + ": Image must be at least 3 pixels along each axis.\n");
            return true;
        }
    return false;
}

bool larger(int nd, const int* win, const int* dims) {
    for (int a = 0; a < nd; ++a)
        if (win[a] > dims[a]) return true;
    return false;
}

// The fix-ups of the Savitzky-Golay paths (direct_division2/3 and aide_2d/3d).
void fix_sg(const char* name, bool aide, int nd, const int* dims, int* win, int* order, int* med,
            int flags) {
    std::string n(name);
    for (int a = 0; a < 2; ++a)
        if (med[a] % 2 == 0) ++med[a];
    for (int a = 0; a < nd; ++a)
        if (win[a] % 2 == 0) ++win[a];
    if (larger(2, med, dims)) {
        warn(n + ": Median filter window cannot be bigger than image, fixing to 3x3.\n");
        med[0] = med[1] = 3;
    }
    if (larger(nd, win, dims)) {
        warn(n + ": Filter window cannot be bigger than image, fixing to 5x5.\n");
        for (int a = 0; a < nd; ++a) win[a] = 5;
    }
    for (int a = 0; a < nd; ++a)
        if (order[a] < 2) {
            warn(n +
                 wave_fmt(aide ? ": Polynomial order must be at least 2:  fixing so Or[%d] = 2.\n"
                               : ": Polynomial order must be at least 2:\n     fixing so "
                                 "Or[%d] = 2.\n",
                          a));
            order[a] = 2;
        }
    if (flags & kNonSeparable) {
        double area = 1.0;
        for (int a = 0; a < nd; ++a) area *= win[a];
        double o = order[0];
        double unknowns = nd == 3 ? (o + 3) * (o + 2) * (o + 1) / 6 : (o + 2) * (o + 1) / 2;
        if (unknowns < area) return;
        warn(n + (aide ? ": Polynomial order must be smaller than available data in window: \n"
                       : ": Polynomial order must be smaller than available data in window:\n"));
        int fixed = nd == 3 ? int(std::floor(std::cbrt(6.0 * area) - 3.0))
                            : int(std::floor((std::sqrt(8.0 * area + 1.0) - 3.0) / 2.0));
        for (int a = 0; a < nd; ++a) {
            order[a] = fixed;
            std::string line = wave_fmt(
                aide ? "      fixing so Or[%d] = %d" : "     fixing so Or[%d] = %d \n", a, fixed);
            warn(line, line);
        }
        return;
    }
    bool header = false;
    for (int a = 0; a < nd; ++a) {
        if (order[a] < win[a]) continue;
        if (!header) warn(n + ": Polynomial order must be smaller than window size:\n");
        header = true;
        order[a] = win[a] - 1;
        warn(wave_fmt("     fixing so Or[%d] = %d\n", a, order[a]),
             wave_fmt("     fixing so Or[%d] = %d", a, order[a]));
    }
}

// The median of the finite values of den2 where `sel` is set (all with a null sel), times
// `regular`; 0 when regular is not above 1e-7 or nothing is gathered.
float regularisation(const float* den2, const uint8_t* sel, size_t n, float regular) {
    if (!(regular > 1e-7f)) return 0.0f;
    std::vector<float> g;
    g.reserve(n);
    for (size_t i = 0; i < n; ++i)
        if ((!sel || sel[i]) && std::isfinite(den2[i])) g.push_back(den2[i]);
    if (g.empty()) return 0.0f;
    return median_select(g.data(), int(g.size())) * regular;
}

// Speed (or its square) and attenuation of a modulus over rho w^2; 0 where undefined.
inline void speed_of(double re, double im, double w, bool square, float& speed, float& atten) {
    speed = atten = 0.0f;
    double m = std::sqrt(re * re + im * im);
    if (!(m > 0.0) || !(m + re > 0.0)) return;
    double h = std::sqrt(m + re);
    double s = m * std::sqrt(2.0) * w / h;
    speed = float(square ? s * s : s);
    atten = float(im / (m * std::sqrt(2.0) * h));
}

// G = -U conj(L) / d per pixel, its speed and attenuation, and G w^2. `clamp` zeroes a
// negative real part; `square` stores the squared speed (otherwise the speed).
void helmholtz(const float* ur, const float* ui, const float* lr, const float* li, float* speed,
               float* atten, float* cmu_re, float* cmu_im, size_t n, float reg, float mech_freq,
               bool clamp, bool square, int nx, int seq, int nseq) {
    double w = 2.0 * kPi * mech_freq;
    double w2 = double(mech_freq) * 2.0 * kPi * mech_freq * kPi * 2.0;
    size_t rows = nx > 0 ? n / nx : 0;
    for (size_t i = 0; i < n; ++i) {
        if (nseq > 0 && nx > 0 && i % nx == 0)
            run_progress(4, int(seq * rows + i / nx), int(nseq * rows), 0, 0, 0, 0);
        speed[i] = atten[i] = cmu_re[i] = cmu_im[i] = 0.0f;
        double Lr = lr[i], Li = li[i], Ur = ur[i], Ui = ui[i];
        double d = double(reg) + (Lr * Lr + Li * Li);
        if (!(d > 1e-7)) continue;
        double gr = -(Li * Ui + Lr * Ur) / d, gi = (Li * Ur - Lr * Ui) / d;
        if (clamp && gr < 0.0) gr = 0.0;
        speed_of(gr, gi, w, square, speed[i], atten[i]);
        cmu_re[i] = float(gr * w2);
        cmu_im[i] = float(gi * w2);
    }
}

// Median of the four outputs, slice by slice.
void median4(float* a, float* b, float* c, float* d, const int* dims, int nz, const int* med) {
    size_t plane = size_t(dims[0]) * dims[1];
    std::vector<float> copy(plane);
    for (float* img : {a, b, c, d})
        for (int z = 0; z < nz; ++z) {
            float* s = img + z * plane;
            std::memcpy(copy.data(), s, sizeof(float) * plane);
            median_filter_2d(s, copy.data(), med, dims);
        }
}

void square_in_place(float* v, size_t n) {
    for (size_t i = 0; i < n; ++i) v[i] *= v[i];
}

struct Outputs {
    float *speed, *atten, *cmu_re, *cmu_im;
};

// The Savitzky-Golay path through the mode kernels (nd 2 or 3).
int sg_path(int nd, const char* name, const float* re, const float* im, Outputs o, int* dims,
            int* order, int* win, float regular, const float* pixel, float mech_freq, int* med,
            int flags, int seq, int nseq) {
    if (too_small(nd, dims, name)) return 1;
    fix_sg(name, false, nd, dims, win, order, med, flags);
    size_t n = volume_of(nd, dims);
    int level = mem_next_level();
    float *coef = nullptr, *buf = nullptr;
    mem_allocate(&coef, sizeof(float), uint32_t(sg_kernel_size(win, flags, nd)), 0);
    mem_allocate(&buf, sizeof(float), uint32_t(5 * n), 0);
    float *ur = buf, *ui = buf + n, *lr = buf + 2 * n, *li = buf + 3 * n, *den = buf + 4 * n;
    auto kernel_smooth = nd == 3 ? sg_smooth_3d : sg_smooth_2d;
    auto kernel_lap = nd == 3 ? sg_laplacian_3d : sg_laplacian_2d;
    auto apply = nd == 3 ? apply_sg_filter_3d : apply_sg_filter_2d;
    status(".phase");
    bool ok = kernel_smooth(order, win, coef, flags) == 0 &&
              apply(re, ur, coef, win, dims, flags, 1) == 0 &&
              apply(im, ui, coef, win, dims, flags, 1) == 0;
    if (ok) {
        status(".derivatives");
        ok = kernel_lap(order, win, pixel, coef, flags) == 0 &&
             apply(ur, lr, coef, win, dims, flags, 0) == 0 &&
             apply(ui, li, coef, win, dims, flags, 0) == 0;
    }
    if (!ok) return mem_free_level(level, 0), 1;
    for (size_t i = 0; i < n; ++i) den[i] = lr[i] * lr[i] + li[i] * li[i];
    float reg = regularisation(den, nullptr, n, regular);
    helmholtz(ur, ui, lr, li, o.speed, o.atten, o.cmu_re, o.cmu_im, n, reg, mech_freq, true, false,
              dims[1], seq, nseq);
    if (med[0] * med[1] > 1) {
        status(".Median");
        median4(o.speed, o.atten, o.cmu_re, o.cmu_im, dims, nd == 3 ? dims[2] : 1, med);
    }
    square_in_place(o.speed, n);
    mem_free_level(level, 0);
    return 0;
}

// 1-D kernels of one axis for types 1 (Farid) and 3 (SG): smoothing and second derivative.
bool axis_kernels(int type, int w, int order, float* s, float* d2) {
    int h = w / 2;
    if (type == 1) return Farid_coeff(0, h, s) == 0 && Farid_coeff(2, h, d2) == 0;
    return SGcoeff(0, order, h, h, s) == 0 && SGcoeff(2, order, h, h, d2) == 0;
}

// Separable kernels (Farid, Romano, SG) with zero padding.
int separable_path(int nd, const char* name, const float* re, const float* im, Outputs o, int* dims,
                   int* order, int* win, float regular, const float* pixel, float mech_freq,
                   int* med, int type, const uint8_t* mask, const uint8_t* aux_mask, int seq,
                   int nseq) {
    if (too_small(nd, dims, name)) return 1;
    if (larger(nd, win, dims)) {
        std::string t = std::string("\n") + name +
                        (nd == 3 ? ": Filter window cannot be bigger than image, fixing to 5x5x5.\n"
                                 : ": Filter window cannot be bigger than image, fixing to 5x5.\n");
        warn(t, t);
        for (int a = 0; a < nd; ++a) win[a] = 5;
    }
    if (type < 1 || type > 3) {
        warn(std::string(name) + wave_fmt(": Unknown filter type %d.\n", type));
        return 1;
    }
    if (type == 3) {
        for (int a = 0; a < 2; ++a)
            if (med[a] % 2 == 0) ++med[a];
        for (int a = 0; a < nd; ++a)
            if (win[a] % 2 == 0) ++win[a];
        std::string n(name);
        if (larger(2, med, dims)) {
            std::string t =
                "\n" + n + ": Median filter window cannot be bigger than image, fixing to 3x3.\n";
            warn(t, t);
            med[0] = med[1] = 3;
        }
        const char* axis_name[3] = {"Y", "X", "Z"};
        for (int a : {1, 0, 2}) {
            if (a >= nd || order[a] >= 2) continue;
            std::string t = "\n" + n +
                            ": Polynomial order must be at least 2:\n     fixing so SG_order[" +
                            axis_name[a] + "] = 2.\n";
            warn(t, t);
            order[a] = 2;
        }
        bool header = false;
        for (int a : {1, 0, 2}) {
            if (a >= nd || order[a] < win[a]) continue;
            if (!header) {
                std::string t = "\n" + n + ": Polynomial order must be smaller than window size:\n";
                warn(t, t);
            }
            header = true;
            order[a] = win[a] - 1;
            std::string t = wave_fmt("     fixing so SG_order[%s] = %d\n", axis_name[a], order[a]);
            warn(t, t);
        }
    }
    size_t n = volume_of(nd, dims);
    int nx = dims[1], ny = dims[0], nz = nd == 3 ? dims[2] : 1;
    int level = mem_next_level();
    float *k = nullptr, *buf = nullptr;
    int wmax = std::max({win[0], win[1], nd == 3 ? win[2] : 1}) + 1;
    mem_allocate(&k, sizeof(float), uint32_t(6 * wmax), 0);
    mem_allocate(&buf, sizeof(float), uint32_t(5 * n), 0);
    float *ur = buf, *ui = buf + n, *lr = buf + 2 * n, *li = buf + 3 * n, *den = buf + 4 * n;
    // s[a], d[a]: smoothing and second derivative of axis a (0 y, 1 x, 2 z).
    float* s[3] = {k, k + wmax, k + 2 * wmax};
    float* d[3] = {k + 3 * wmax, k + 4 * wmax, k + 5 * wmax};
    float sc[3];
    for (int a = 0; a < nd; ++a) sc[a] = 1.0f / (pixel[a] * pixel[a]);
    // Every kernel has 2 * (win / 2) + 1 taps.
    int w[3] = {1, 1, 1};
    for (int a = 0; a < nd; ++a) w[a] = win[a] / 2 * 2 + 1;
    for (int a = 0; a < nd; ++a) {
        bool ok = type == 2 ? Romano_coeff(0, w[a] / 2, s[a]) == 0
                            : axis_kernels(type, w[a], order[a], s[a], d[a]);
        if (!ok) return mem_free_level(level, 0), 1;
    }
    const float* sz = nd == 3 ? s[2] : nullptr;
    static const float kLap[3] = {1.0f, -2.0f, 1.0f};
    const float* parts[2] = {re, im};
    float* smooth[2] = {ur, ui};
    float* lap[2] = {lr, li};
    for (int c = 0; c < 2; ++c) {
        filter3d_zeropad(parts[c], smooth[c], nx, ny, nz, s[1], w[1], 0.0f, s[0], w[0], 0.0f, sz,
                         w[2], 0.0f, 0);
        if (type == 2) {
            filter3d_zeropad(smooth[c], lap[c], nx, ny, nz, kLap, 3, sc[1], nullptr, 0, 0.0f,
                             nullptr, 0, 0.0f, 0);
            filter3d_zeropad(smooth[c], lap[c], nx, ny, nz, nullptr, 0, 0.0f, kLap, 3, sc[0],
                             nullptr, 0, 0.0f, 1);
            if (nd == 3)
                filter3d_zeropad(smooth[c], lap[c], nx, ny, nz, nullptr, 0, 0.0f, nullptr, 0, 0.0f,
                                 kLap, 3, sc[2], 1);
        } else {
            // D2 along one axis times smoothing along the others, on the input itself.
            filter3d_zeropad(parts[c], lap[c], nx, ny, nz, d[1], w[1], sc[1], s[0], w[0], 0.0f, sz,
                             w[2], 0.0f, 0);
            filter3d_zeropad(parts[c], lap[c], nx, ny, nz, s[1], w[1], 0.0f, d[0], w[0], sc[0], sz,
                             w[2], 0.0f, 1);
            if (nd == 3)
                filter3d_zeropad(parts[c], lap[c], nx, ny, nz, s[1], w[1], 0.0f, s[0], w[0], 0.0f,
                                 d[2], w[2], sc[2], 1);
        }
    }
    for (size_t i = 0; i < n; ++i) den[i] = lr[i] * lr[i] + li[i] * li[i];
    float reg = regularisation(den, aux_mask ? aux_mask : mask, n, regular);
    helmholtz(ur, ui, lr, li, o.speed, o.atten, o.cmu_re, o.cmu_im, n, reg, mech_freq, false, true,
              nx, seq, nseq);
    if (type == 3 && med[0] * med[1] > 1) {
        status(".Median");
        median4(o.speed, o.atten, o.cmu_re, o.cmu_im, dims, nz, med);
    }
    mem_free_level(level, 0);
    return 0;
}

// AIDE: per pixel, the least-squares pair (mu, nu - mu) over rho w^2 of
// mu L + (lambda + mu) D = -U for nc components, regularised.
int aide(int nd, const char* name, const float* rx, const float* ix, Outputs o, int* dims,
         int* order, int* win, float regular, const float* pixel, float mech_freq, int* med,
         int flags) {
    if (too_small(nd, dims, name)) return 1;
    fix_sg(name, true, nd, dims, win, order, med, flags);
    size_t n = volume_of(nd, dims);
    const int nc = nd;
    // Derivative pairs (a, b) of the axes 0 y, 1 x, 2 z, in the order of the status texts.
    struct Deriv {
        int a, b;
        const char *quiet, *verbose;
    };
    const Deriv d2[] = {{1, 1, ".derivatives.11.", "Computing derivatives...11..."},
                        {0, 0, "22.", "22..."},
                        {0, 1, "12.", "12...\n"}};
    const Deriv d3[] = {{1, 1, ".derivatives.11.", "Computing derivatives...11..."},
                        {0, 0, "22.", "22..."},
                        {0, 1, "12.", "12..."},
                        {1, 2, "13.", "13..."},
                        {0, 2, "23.", "23..."},
                        {2, 2, "33.", "33...\n"}};
    const Deriv* ds = nd == 3 ? d3 : d2;
    int nderiv = nd == 3 ? 6 : 3;
    int level = mem_next_level();
    float *coef = nullptr, *u = nullptr, *der = nullptr;
    mem_allocate(&coef, sizeof(float), uint32_t(sg_kernel_size(win, flags, nd)), 0);
    mem_allocate(&u, sizeof(float), uint32_t(2 * nc * n), 0);
    mem_allocate(&der, sizeof(float), uint32_t(size_t(2 * nc * nderiv) * n), 0);
    auto apply = nd == 3 ? apply_sg_filter_3d : apply_sg_filter_2d;
    status(".phase", "Computing filtered phase.\n");
    bool ok = (nd == 3 ? sg_smooth_3d(order, win, coef, flags)
                       : sg_smooth_2d(order, win, coef, flags)) == 0;
    for (int c = 0; c < 2 * nc && ok; ++c) {
        const float* src = (c % 2 == 0 ? rx : ix) + size_t(c / 2) * 2 * n;
        ok = apply(src, u + c * n, coef, win, dims, flags, 1) == 0;
    }
    // der[(k * 2 nc + c) n]: derivative k of plane c (R, I of each component).
    for (int k = 0; k < nderiv && ok; ++k) {
        status(ds[k].quiet, ds[k].verbose);
        int deriv[3] = {0, 0, 0};
        ++deriv[ds[k].a];
        ++deriv[ds[k].b];
        ok = (nd == 3 ? sg_kernel_3d(deriv, order, win, coef, flags)
                      : sg_kernel_2d(deriv, order, win, coef, flags)) == 0;
        for (int c = 0; c < 2 * nc && ok; ++c)
            ok = apply(u + c * n, der + (size_t(k) * 2 * nc + c) * n, coef, win, dims, flags, 1) ==
                 0;
    }
    if (!ok) return mem_free_level(level, 0), 1;
    status(nd == 3 ? ".wave speed" : "wave speeds.", "Computing wave speeds...\n");
    // Scale of derivative k: 1 / (pixel_a pixel_b).
    double scale[6];
    for (int k = 0; k < nderiv; ++k) scale[k] = 1.0 / (double(pixel[ds[k].a]) * pixel[ds[k].b]);
    // Index of the derivative along axes (a, b).
    auto index = [&](int a, int b) {
        for (int k = 0; k < nderiv; ++k)
            if ((ds[k].a == a && ds[k].b == b) || (ds[k].a == b && ds[k].b == a)) return k;
        return 0;
    };
    // Component c is displacement along axis comp_axis[c]: x, y, z.
    const int comp_axis[3] = {1, 0, 2};
    double w = 2.0 * kPi * mech_freq;
    double w2 = w * w;
    bool no_div = flags & kAideNoDivergence, add_div = flags & kAideDivergence;
    for (size_t i = 0; i < n; ++i) {
        auto value = [&](int k, int c) {
            return cd(der[(size_t(k) * 2 * nc + 2 * c) * n + i],
                      der[(size_t(k) * 2 * nc + 2 * c + 1) * n + i]) *
                   scale[k];
        };
        cd L[3], D[3], U[3];
        for (int c = 0; c < nc; ++c) {
            U[c] = cd(u[2 * c * n + i], u[(2 * c + 1) * n + i]);
            L[c] = 0.0;
            for (int a = 0; a < nd; ++a) L[c] += value(index(a, a), c);
            // (grad div U)_c: derivatives of every component e along c and e.
            D[c] = 0.0;
            for (int e = 0; e < nc; ++e) D[c] += value(index(comp_axis[c], comp_axis[e]), e);
        }
        double r = regular;
        if (no_div) {
            for (int c = 0; c < nc; ++c) D[c] = 0.0;
            r = 1.0;
        } else if (add_div) {
            for (int c = 0; c < nc; ++c) L[c] += D[c], D[c] = 0.0;
            r = 1.0;
        }
        // Normal equations of M = [L D] against b = -U, solved by the 2 x 2 inverse.
        double aa = 0.0, bb = 0.0;
        cd ab = 0.0, ar = 0.0, br = 0.0;
        for (int c = 0; c < nc; ++c) {
            aa += std::norm(L[c]);
            bb += std::norm(D[c]);
            ab += std::conj(L[c]) * D[c];
            ar += std::conj(L[c]) * -U[c];
            br += std::conj(D[c]) * -U[c];
        }
        double den = (aa * bb - std::norm(ab)) + r * (aa + bb + regular);
        cd X = (bb + r) * ar - ab * br;
        cd Y = (aa + r) * br - std::conj(ab) * ar;
        float* outs[4] = {o.speed, o.atten, o.cmu_re, o.cmu_im};
        for (float* p : outs) p[i] = 0.0f;
        if (!(den >= 1e-7)) continue;
        cd mu = X / den;
        cd nu = (flags & 0x300) ? cd(0.0) : (X + Y) / den;
        if (mu.real() < 0.0) mu.real(0.0);
        if (nu.real() < 0.0) nu.real(0.0);
        if (flags & kAideSpeed) {
            speed_of(mu.real(), mu.imag(), w, false, o.speed[i], o.atten[i]);
            speed_of(nu.real(), nu.imag(), w, false, o.cmu_re[i], o.cmu_im[i]);
        } else {
            o.speed[i] = float(mu.real() * w2);
            o.atten[i] = float(mu.imag() * w2);
            o.cmu_re[i] = float(nu.real() * w2);
            o.cmu_im[i] = float(nu.imag() * w2);
        }
    }
    if (med[0] * med[1] > 1) {
        status("Median.", "Median.");
        median4(o.speed, o.atten, o.cmu_re, o.cmu_im, dims, nd == 3 ? dims[2] : 1, med);
    }
    square_in_place(o.speed, n);
    mem_free_level(level, 0);
    return 0;
}

}  // namespace

int direct_division2(const float* re, const float* im, float* speed2, float* atten, float* cmu_re,
                     float* cmu_im, int* dims, int* order, int* win, float regular,
                     const float* pixel, float mech_freq, int* med, int flags, int type,
                     const uint8_t* mask, const uint8_t* aux_mask, int seq, int nseq) {
    if (type != 0)
        return direct_inversion_2d(re, im, speed2, atten, cmu_re, cmu_im, dims, order, win, regular,
                                   pixel, mech_freq, med, flags, type, mask, aux_mask, seq, nseq);
    return sg_path(2, "direct_division2", re, im, {speed2, atten, cmu_re, cmu_im}, dims, order, win,
                   regular, pixel, mech_freq, med, flags, seq, nseq);
}

int direct_inversion_2d(const float* re, const float* im, float* speed2, float* atten,
                        float* cmu_re, float* cmu_im, int* dims, int* order, int* win,
                        float regular, const float* pixel, float mech_freq, int* med, int, int type,
                        const uint8_t* mask, const uint8_t* aux_mask, int seq, int nseq) {
    return separable_path(2, "direct_inversion_2d", re, im, {speed2, atten, cmu_re, cmu_im}, dims,
                          order, win, regular, pixel, mech_freq, med, type, mask, aux_mask, seq,
                          nseq);
}

int direct_division3(const float* re, const float* im, float* speed2, float* atten, float* cmu_re,
                     float* cmu_im, int* dims, int* order, int* win, float regular,
                     const float* pixel, float mech_freq, int* med, int flags, int type,
                     const uint8_t* mask, const uint8_t* aux_mask, int seq, int nseq) {
    if (type != 0)
        return direct_inversion_3d(re, im, speed2, atten, cmu_re, cmu_im, dims, order, win, regular,
                                   pixel, mech_freq, med, flags, type, mask, aux_mask, seq, nseq);
    return sg_path(3, "direct_division3", re, im, {speed2, atten, cmu_re, cmu_im}, dims, order, win,
                   regular, pixel, mech_freq, med, flags, seq, nseq);
}

int direct_inversion_3d(const float* re, const float* im, float* speed2, float* atten,
                        float* cmu_re, float* cmu_im, int* dims, int* order, int* win,
                        float regular, const float* pixel, float mech_freq, int* med, int, int type,
                        const uint8_t* mask, const uint8_t* aux_mask, int seq, int nseq) {
    return separable_path(3, "direct_inversion_3d", re, im, {speed2, atten, cmu_re, cmu_im}, dims,
                          order, win, regular, pixel, mech_freq, med, type, mask, aux_mask, seq,
                          nseq);
}

int aide_2d(const float* rx, const float* ix, float* speed2, float* atten, float* p2,
            float* p2_atten, int* dims, int* order, int* win, float regular, const float* pixel,
            float mech_freq, int* med, int flags) {
    return aide(2, "aide_2d", rx, ix, {speed2, atten, p2, p2_atten}, dims, order, win, regular,
                pixel, mech_freq, med, flags);
}

int aide_3d(const float* rx, const float* ix, float* speed2, float* atten, float* p2,
            float* p2_atten, int* dims, int* order, int* win, float regular, const float* pixel,
            float mech_freq, int* med, int flags) {
    return aide(3, "aide_3d", rx, ix, {speed2, atten, p2, p2_atten}, dims, order, win, regular,
                pixel, mech_freq, med, flags);
}
