#include "wave/lfe.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "wave/fft.h"
#include "wave/image_buffers.h"
#include "wave/lfe_filters.h"
#include "wave/mem.h"
#include "wave/messages.h"
#include "wave/progress.h"
#include "wave/wsum.h"

namespace {

constexpr float kOctaveRoot = 1.4142135f;
// Below this many pixels a loop stays on one thread.
constexpr int kParallelPixels = 1 << 15;

// One filter of band centre f into `filter`; k picks which of the band's filters.
using FilterFn = void (*)(float* filter, int k, double f, const void* ctx);

struct Bank {
    int nx, ny, nz;
    int sx, sy, sz;  // signed transform sizes
    float fov[3];
    int nfilters;
    double ratio;        // between band centres
    bool running_float;  // centres as a running float product (the ratio banks)
    float lp_sigma;
    FilterFn make;
};

// Our own checks of a bank, shared by the cores and the dispatchers; false after reporting.
bool bank_ok(int nbands, float base, float ratio) {
    const char* text = nullptr;
    if (nbands < 2)
        text = "lfe: at least 2 bands are needed\n";
    else if (!(base > 0.0f) || !(ratio > 1.0f))
        text = "lfe: base frequency must be above 0 and ratio above 1\n";
    if (text) wave_warn(WF_LFE, text, text);
    return !text;
}

// The shared core: forward transform, bands of summed envelopes, combination.
int run_bank(const Bank& b, float* buf, float* est, float* cert, int nbands, float base,
             float ratio_root, int stiff_flag, int seq, int nseq) {
    if (!bank_ok(nbands, base, float(b.ratio))) return 1;
    int npix = b.nx * b.ny * b.nz;
    int level = mem_next_level();
    float* bands = nullptr;
    mem_allocate(&bands, sizeof(float), uint32_t(npix) * uint32_t(nbands), 0);
    std::memset(bands, 0, sizeof(float) * size_t(npix) * nbands);
    GENERAL_cvfft_3d(buf, b.sx, b.sy, b.sz, 1);

    int work_level = mem_next_level();
    float *work = nullptr, *filter = nullptr;
    mem_allocate(&work, sizeof(float), uint32_t(2 * npix), 0);
    mem_allocate(&filter, sizeof(float), uint32_t(npix), 0);
    if (b.lp_sigma > 0.0f) {
        gauss_lp_2d(filter, b.lp_sigma, b.nx, b.ny, b.fov[0], b.fov[1]);
        complex_times_real(buf, filter, npix);
    }
    float f_float = base;
    double f_double = base;
    for (int band = 0; band < nbands; ++band) {
        if (nseq > 0)
            run_progress(1, band * nbands / (nbands - 1) + nbands * seq, nbands * nseq, 0, 0, 0, 0);
        double f = b.running_float ? double(f_float) : f_double;
        float* q = bands + size_t(band) * npix;
        for (int k = 0; k < b.nfilters; ++k) {
            b.make(filter, k, f, &b);
            // Pixel by pixel, so the result is the same on any number of threads; the threads
            // the transforms use would otherwise wait between them.
#pragma omp parallel for schedule(static) if (npix >= kParallelPixels)
            for (int i = 0; i < npix; ++i) {
                work[2 * i] = buf[2 * i] * filter[i];
                work[2 * i + 1] = buf[2 * i + 1] * filter[i];
            }
            GENERAL_cvfft_3d(work, b.sx, b.sy, b.sz, -1);
#pragma omp parallel for schedule(static) if (npix >= kParallelPixels)
            for (int i = 0; i < npix; ++i)
                q[i] += std::sqrt(work[2 * i] * work[2 * i] + work[2 * i + 1] * work[2 * i + 1]);
        }
        f_float *= float(b.ratio);
        f_double *= b.ratio;
    }
    mem_free_level(work_level, 0);
    lfe_combine(bands, est, cert, npix, b.nx, nbands, base, ratio_root, stiff_flag);
    mem_free_level(level, 0);
    return 0;
}

void real_filters(float* f, int k, double fc, const void* ctx) {
    auto* b = static_cast<const Bank*>(ctx);
    if (k == 0)
        lognormal_y_2d(f, b->nx, b->ny, b->fov[0], b->fov[1], fc, b->ratio);
    else
        lognormal_x_2d(f, b->nx, b->ny, b->fov[0], b->fov[1], fc, b->ratio);
}

void iso_filter(float* f, int, double fc, const void* ctx) {
    auto* b = static_cast<const Bank*>(ctx);
    lognormal_iso_2d(f, b->nx, b->ny, b->fov[0], b->fov[1], fc, b->ratio);
}

void row_filter(float* f, int, double fc, const void* ctx) {
    auto* b = static_cast<const Bank*>(ctx);
    lognormal_1d(f, b->nx, b->ny, b->fov[0], fc);
}

void soft_filter(float* f, int, double fc, const void* ctx) {
    auto* b = static_cast<const Bank*>(ctx);
    lognormal_soft_2d(f, b->nx, b->ny, b->fov[0], b->fov[1], fc);
}

void volume_filters(float* f, int k, double fc, const void* ctx) {
    auto* b = static_cast<const Bank*>(ctx);
    auto fn = k == 0 ? lognormal_x_3d : k == 1 ? lognormal_y_3d : lognormal_z_3d;
    fn(f, b->nx, b->ny, b->nz, b->fov[0], b->fov[1], b->fov[2], fc);
}

// What one call of lfe_2d or lfe_3d works with.
struct Job {
    const char* name;  // "lfe_2d" or "lfe_3d"
    int nx, ny, nz;
    float fov[3];
    int nbands;
    float base, lp_sigma, ratio;
    int stiff_flag, complex_flag;
    const uint8_t* mask;
    lfe_callback callback;
    size_t npix() const { return size_t(nx) * ny * nz; }
};

// One image (a woven pair with complex_flag) through its core. Non-finite input values are
// set aside so that the transform does not spread them, and come back as NaN results.
void one_image(const Job& j, const float* image, float* est, float* cert, int seq, int nseq) {
    int npix = int(j.npix());
    int level = mem_next_level();
    // Holders live as long as the level that frees them.
    float *buf = nullptr, *planar = nullptr;
    uint8_t* marks = nullptr;
    mem_allocate(&buf, sizeof(float), uint32_t(2 * npix), 0);
    mem_allocate(&marks, 1, uint32_t(npix), 0);
    int held;
    if (j.complex_flag) {
        std::vector<uint8_t> second(npix);
        mem_allocate(&planar, sizeof(float), uint32_t(2 * npix), 0);
        std::memcpy(planar, image, sizeof(float) * 2 * npix);
        held = hold_nonfinite(planar, marks, npix) +
               hold_nonfinite(planar + npix, second.data(), npix);
        for (int i = 0; i < npix; ++i) marks[i] |= second[i];
        interleave_planes(planar, buf, npix);
        lfe_core_complex_2d(buf, est, cert, j.nx, j.ny, j.fov[0], j.fov[1], j.nbands, j.base,
                            j.lp_sigma, j.stiff_flag, j.ratio, seq, nseq);
    } else {
        std::memcpy(buf, image, sizeof(float) * npix);
        held = hold_nonfinite(buf, marks, npix);
        real_to_complex_inplace(buf, npix);
        if (j.nz > 1)
            lfe_core_3d(buf, est, cert, j.nx, j.ny, j.nz, j.fov[0], j.fov[1], j.fov[2], j.nbands,
                        j.base, seq, nseq);
        else
            lfe_core_real_2d(buf, est, cert, j.nx, j.ny, j.fov[0], j.fov[1], j.nbands, j.base,
                             j.lp_sigma, j.stiff_flag, j.ratio, seq, nseq);
    }
    if (held) {
        restore_nan(est, marks, npix);
        restore_nan(cert, marks, npix);
    }
    mem_free_level(level, 0);
}

bool wsum_ok(const Job& j, const char* error) {
    if (!error) return true;
    std::string t = wave_fmt("\n%s (%s)\n", error, j.name);
    wave_warn(WF_LFE, t.c_str(), t.c_str());
    return false;
}

// Results of `n` images into est and cert (one plane each, or one for an average).
bool run_images(const Job& j, const float* in, const float* amp2, int n, int pairs, int average,
                float* est, float* cert, int seq, int nseq) {
    size_t npix = j.npix();
    size_t step = (pairs || j.complex_flag) ? 2 * npix : npix;
    if (average == 0) {
        for (int i = 0; i < n; ++i) {
            float* e = est + i * npix;
            float* c = cert + i * npix;
            if (j.callback) j.callback(i, e, c);
            const float* image = in + i * step;
            if (!pairs || j.complex_flag) {
                one_image(j, image, e, c, seq * n + i, nseq * n);
            } else if (!run_images(j, image, nullptr, 2, 0, 1, e, c, seq * n + i, nseq * n)) {
                return false;
            }
        }
        return true;
    }

    int level = mem_next_level();
    float *e = nullptr, *c = nullptr, *w = nullptr;
    mem_allocate(&e, sizeof(float), uint32_t(npix), 0);
    mem_allocate(&c, sizeof(float), uint32_t(npix), 0);
    mem_allocate(&w, sizeof(float), uint32_t(npix), 0);
    uint32_t s_est = 0, s_cert = 0, s_w = 0;
    bool ok = true;
    if (average == 1) {
        // Root mean square over single images: both halves of each pair count.
        int m = (pairs && !j.complex_flag) ? 2 * n : n;
        size_t single = j.complex_flag ? 2 * npix : npix;
        for (int k = 0; k < m && ok; ++k) {
            if (j.callback) j.callback(k, e, c);
            one_image(j, in + k * single, e, c, seq * m + k, nseq * m);
            apply_mask(e, j.mask, int(npix));
            apply_mask(c, j.mask, int(npix));
            for (size_t i = 0; i < npix; ++i) {
                e[i] *= e[i];
                c[i] *= c[i];
            }
            ok = wsum_ok(j, ADD_weighted_sum(&s_est, e, nullptr, int(npix), 0, 0)) &&
                 wsum_ok(j, ADD_weighted_sum(&s_cert, c, nullptr, int(npix), 0, 0));
        }
    } else {
        for (int k = 0; k < n && ok; ++k) {
            const float* image = in + k * step;
            if (j.callback) j.callback(k, e, c);
            if (pairs && !j.complex_flag)
                ok = run_images(j, image, nullptr, 2, 0, 1, e, c, seq * n + k, nseq * n);
            else
                one_image(j, image, e, c, seq * n + k, nseq * n);
            if (!ok) break;
            if (amp2) {
                std::memcpy(w, amp2 + k * npix, sizeof(float) * npix);
            } else {
                for (size_t i = 0; i < npix; ++i)
                    w[i] = image[i] * image[i] + image[npix + i] * image[npix + i];
            }
            apply_mask(w, j.mask, int(npix));
            for (size_t i = 0; i < npix; ++i) {
                e[i] *= e[i];
                c[i] *= c[i];
            }
            ok = wsum_ok(j, ADD_weighted_sum(&s_est, e, w, int(npix), 0, 0)) &&
                 wsum_ok(j, ADD_weighted_sum(&s_cert, c, w, int(npix), 0, 0)) &&
                 wsum_ok(j, ADD_weighted_sum(&s_w, w, nullptr, int(npix), 0, 0));
        }
    }
    if (ok)
        ok = wsum_ok(j, CALC_weighted_avg(&s_est, s_w, &est, int(npix), 0, 1)) &&
             wsum_ok(j, CALC_weighted_avg(&s_cert, s_w, &cert, int(npix), 0, 1));
    free_sequence(&s_est);
    free_sequence(&s_cert);
    free_sequence(&s_w);
    if (ok)
        for (size_t i = 0; i < npix; ++i) {
            est[i] = std::sqrt(est[i]);
            cert[i] = std::sqrt(cert[i]);
        }
    mem_free_level(level, 0);
    return ok;
}

// The input checks shared by lfe_2d and lfe_3d, in order; false after reporting.
bool valid_input(const Job& j, const float* amp2, int n, int pairs, int average) {
    std::string quiet, verbose;
    std::string flags_n =
        wave_fmt("  pairs_flag = %d, average_flag = %d, n = %d \n\n", pairs, average, n);
    std::string flags = wave_fmt("  pairs_flag = %d, average_flag = %d \n\n", pairs, average);
    if (n < 1) {
        quiet = wave_fmt("\nInvalid number of input images in %s\n", j.name);
        verbose = wave_fmt("\nInvalid number of input images in %s: \n", j.name) + flags_n;
    } else if (pairs > 1 || average > 2) {
        quiet = wave_fmt("\npairs_flag or average_flag invalid in %s\n", j.name);
        verbose = wave_fmt("\nInvalid flag value(s) in %s: \n", j.name) + flags;
    } else if (n > 1 && pairs == 0 && average == 2 && !amp2) {
        quiet = wave_fmt("\nrequired amp2_buf is null in %s\n", j.name);
        verbose = wave_fmt("\nNULL amp2_buf in %s; amp2_buf is REQUIRED \n", j.name) +
                  "for squared-amplitude-weighted averaging when input \n" +
                  "array is multiple single images. \n" + flags;
    } else {
        return bank_ok(j.nbands, j.base, j.ratio);
    }
    wave_warn(WF_LFE, quiet.c_str(), verbose.c_str());
    return false;
}

int dispatch(const Job& j, const float* in, const float* amp2, int n, int pairs, int average,
             float** est_holder, float** cert_holder, int seq, int nseq) {
    if (!valid_input(j, amp2, n, pairs, average)) return 0;
    if (n == 1 && average >= 1) average = j.mask ? 1 : 0;
    int nout = average ? 1 : n;
    uint32_t count = uint32_t(j.npix() * nout);
    if (!*est_holder) mem_allocate(est_holder, sizeof(float), count, 0);
    if (!*cert_holder) mem_allocate(cert_holder, sizeof(float), count, 0);
    int level = mem_next_level();
    bool ok = run_images(j, in, amp2, n, pairs, average, *est_holder, *cert_holder, seq, nseq);
    mem_free_level(level, 0);
    return ok ? nout : 0;
}

}  // namespace

void lfe_combine(const float* bands, float* est, float* cert, int npix, int nx, int nbands,
                 float base_freq, float ratio_root, int stiff_flag) {
    double r = ratio_root, r2 = double(ratio_root) * ratio_root;
    std::vector<double> fb(std::max(nbands - 1, 0));
    for (int b = 0; b + 1 < nbands; ++b) fb[b] = base_freq * r * std::pow(r2, b);
#pragma omp parallel for schedule(static) if (npix >= kParallelPixels)
    for (int i = 0; i < npix; ++i) {
        double num = 0.0, den = 0.0;
        for (int b = 0; b + 1 < nbands; ++b) {
            double q0 = bands[size_t(b) * npix + i], q1 = bands[size_t(b + 1) * npix + i];
            num += fb[b] * q0 * q1;
            den += q0 * q0;
        }
        double e = num / den;
        double dev = 0.0;
        for (int b = 0; b + 1 < nbands; ++b) {
            double q0 = bands[size_t(b) * npix + i], q1 = bands[size_t(b + 1) * npix + i];
            double d = fb[b] * (q1 / q0) - e;
            dev += q0 * q0 * d * d;
        }
        dev /= den;
        double c = 1.0 - std::min(1.0, std::sqrt(dev) / e);
        if (stiff_flag) {
            e = e < 1e-6 ? 1e6 : 1.0 / e;
            e = e * e * nx;
        }
        est[i] = float(e);
        cert[i] = float(c);
    }
}

int lfe_core_real_2d(float* buf, float* est, float* cert, int nx, int ny, float fov_x, float fov_y,
                     int nbands, float base, float lp_sigma, int stiff_flag, float ratio, int seq,
                     int nseq) {
    Bank b{nx, ny, 1, nx, ny, 1, {fov_x, fov_y, 1.0f}, 2, ratio, true, lp_sigma, real_filters};
    return run_bank(b, buf, est, cert, nbands, base, std::sqrt(ratio), stiff_flag, seq, nseq);
}

int lfe_core_complex_2d(float* buf, float* est, float* cert, int nx, int ny, float fov_x,
                        float fov_y, int nbands, float base, float lp_sigma, int stiff_flag,
                        float ratio, int seq, int nseq) {
    Bank b{nx, ny, 1, nx, ny, 1, {fov_x, fov_y, 1.0f}, 1, ratio, true, lp_sigma, iso_filter};
    return run_bank(b, buf, est, cert, nbands, base, std::sqrt(ratio), stiff_flag, seq, nseq);
}

int lfe_pure_1d(float* buf, float* est, float* cert, int nx, int ny, float fov_x, int nbands,
                float base, int seq, int nseq) {
    Bank b{nx, ny, 1, nx, -ny, 1, {fov_x, 1.0f, 1.0f}, 1, 2.0, false, 0.0f, row_filter};
    return run_bank(b, buf, est, cert, nbands, base, kOctaveRoot, 0, seq, nseq);
}

int lfe_soft_1d(float* buf, float* est, float* cert, int nx, int ny, float fov_x, float fov_y,
                int nbands, float base, int seq, int nseq) {
    Bank b{nx, ny, 1, nx, ny, 1, {fov_x, fov_y, 1.0f}, 1, 2.0, false, 0.0f, soft_filter};
    return run_bank(b, buf, est, cert, nbands, base, kOctaveRoot, 0, seq, nseq);
}

int lfe_core_3d(float* buf, float* est, float* cert, int nx, int ny, int nz, float fov_x,
                float fov_y, float fov_z, int nbands, float base, int seq, int nseq) {
    Bank b{nx, ny, nz, nx, ny, nz, {fov_x, fov_y, fov_z}, 3, 2.0, false, 0.0f, volume_filters};
    return run_bank(b, buf, est, cert, nbands, base, kOctaveRoot, 0, seq, nseq);
}

int lfe_1d(const float* image, float* est, float* cert, int nx, int ny, float fov_x, float fov_y,
           int nbands, float base, int soft, int seq, int nseq) {
    if (!bank_ok(nbands, base, 2.0f)) return 1;
    int npix = nx * ny;
    int level = mem_next_level();
    float* buf = nullptr;
    uint8_t* marks = nullptr;
    mem_allocate(&buf, sizeof(float), uint32_t(2 * npix), 0);
    mem_allocate(&marks, 1, uint32_t(npix), 0);
    std::memcpy(buf, image, sizeof(float) * npix);
    int held = hold_nonfinite(buf, marks, npix);
    real_to_complex_inplace(buf, npix);
    if (soft)
        lfe_soft_1d(buf, est, cert, nx, ny, fov_x, fov_y, nbands, base, seq, nseq);
    else
        lfe_pure_1d(buf, est, cert, nx, ny, fov_x, nbands, base, seq, nseq);
    if (held) {
        restore_nan(est, marks, npix);
        restore_nan(cert, marks, npix);
    }
    mem_free_level(level, 0);
    return 0;
}

int lfe_2d(const float* in, const float* amp2_buf, const uint8_t* mask, int nx, int ny, int n,
           int pairs_flag, int average_flag, float fov_x, float fov_y, int nbands, float base_freq,
           float lp_sigma, int stiff_flag, int complex_flag, float ratio, lfe_callback callback,
           float** est_holder, float** cert_holder, int seq, int nseq) {
    Job j{"lfe_2d",     nx,        ny,       1,     {fov_x, fov_y, 1.0f},
          nbands,       base_freq, lp_sigma, ratio, stiff_flag,
          complex_flag, mask,      callback};
    return dispatch(j, in, amp2_buf, n, pairs_flag, average_flag, est_holder, cert_holder, seq,
                    nseq);
}

int lfe_3d(const float* in, const float* amp2_buf, const uint8_t* mask, int nx, int ny, int nz,
           int n, int pairs_flag, int average_flag, float fov_x, float fov_y, float fov_z,
           int nbands, float base_freq, lfe_callback callback, float** est_holder,
           float** cert_holder, int seq, int nseq) {
    Job j{"lfe_3d", nx, ny,   std::max(nz, 1), {fov_x, fov_y, fov_z}, nbands, base_freq, 0.0f, 2.0f,
          0,        0,  mask, callback};
    return dispatch(j, in, amp2_buf, n, pairs_flag, average_flag, est_holder, cert_holder, seq,
                    nseq);
}
