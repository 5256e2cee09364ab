// The chain's local frequency estimation: texts, per-component estimates, averaging over
// components, post-filter, mask, stiffness, certainty weighting and the outputs.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "wave/band_filter.h"
#include "wave/driver.h"
#include "wave/image_buffers.h"
#include "wave/lfe.h"
#include "wave/mem.h"
#include "wave/messages.h"
#include "wave/progress.h"
#include "wave/stages.h"

namespace {

constexpr int kStackPlanes = 6;  // estimate, certainty, stiffness, two of the phase gradient, mask

enum Ratio { kHalfOctave, kOctave, kTwoOctave, kOtherRatio };

Ratio ratio_kind(float r) {
    if (std::fabs(r - 1.4142135f) < 1e-4f) return kHalfOctave;
    if (std::fabs(r - 2.0f) < 1e-4f) return kOctave;
    if (std::fabs(r - 4.0f) < 1e-4f) return kTwoOctave;
    return kOtherRatio;
}

void say(const std::string& verbose, const char* quiet = nullptr) {
    wave_say(WF_LFE, quiet, verbose.c_str());
}

int pass_of(const wave_params* p) { return p->angle * p->ncomponents + p->component; }
int passes_of(const wave_params* p) { return std::max(p->ncomponents * p->nangles, 1); }

// Plane `plane` of `nplanes` of an output, after those of earlier passes.
void store_plane(const float* buf, wave_params* p, float** temp, wave_output out, int plane,
                 int nplanes) {
    store_image(buf, p, 0, temp, out, pass_of(p) * nplanes + plane, passes_of(p) * nplanes);
}

struct Run {
    wave_params* p;
    bool volume;
    int nx, ny, nz;
    size_t npix;
    const uint8_t* mask;
    float** temp;
};

Run make_run(wave_params* p, bool volume, const uint8_t* mask, float** temp) {
    int nz = volume ? std::max(p->nz, 1) : 1;
    return {p, volume, p->nx, p->ny, nz, size_t(p->nx) * p->ny * nz, mask, temp};
}

// The pair goes in as one complex image; lfe_3d has no such form.
int woven(const wave_params* p, bool volume) {
    return (p->lfe_complex && !p->lfe_noft && (!volume || p->lfe_2d_of_3d)) ? 1 : 0;
}
int woven(const Run& r) { return woven(r.p, r.volume); }

// lfe_2d on every slice of `n` images (pairs with pairs 1, or woven pairs with complex_flag):
// one result volume in est and cert. amp2 holds n weight volumes, or is null.
bool slices_2d(const Run& r, const float* data, const float* amp2, int n, int pairs, int average,
               int complex_flag, float* est, float* cert, int seq, int nseq) {
    const wave_params* p = r.p;
    size_t plane = size_t(r.nx) * r.ny;
    int per = (pairs || complex_flag) ? 2 : 1;
    int level = mem_next_level();
    float *in = nullptr, *w = nullptr, *es = nullptr, *cs = nullptr;
    mem_allocate(&in, sizeof(float), uint32_t(plane * n * per), 0);
    if (amp2) mem_allocate(&w, sizeof(float), uint32_t(plane * n), 0);
    bool ok = true;
    for (int z = 0; z < r.nz && ok; ++z) {
        for (int k = 0; k < n * per; ++k)
            std::memcpy(in + k * plane, data + k * r.npix + z * plane, sizeof(float) * plane);
        if (amp2)
            for (int k = 0; k < n; ++k)
                std::memcpy(w + k * plane, amp2 + k * r.npix + z * plane, sizeof(float) * plane);
        ok = lfe_2d(in, w, r.mask ? r.mask + z * plane : nullptr, r.nx, r.ny, n, pairs, average,
                    p->fov[0], p->fov[1], p->lfe_nbands, p->lfe_base_freq, 0.0f, 0, complex_flag,
                    p->lfe_octave, nullptr, &es, &cs, seq * r.nz + z, nseq * r.nz) > 0;
        if (ok) {
            std::memcpy(est + z * plane, es, sizeof(float) * plane);
            std::memcpy(cert + z * plane, cs, sizeof(float) * plane);
        }
    }
    mem_free_level(level, 0);
    return ok;
}

// The estimate of image i of `ncomp` (a woven pair with lfe_complex) into est and cert.
bool estimate_one(const Run& r, const float* image, float* est, float* cert, int i, int ncomp) {
    const wave_params* p = r.p;
    int complex_flag = woven(r);
    if (r.volume && !p->lfe_2d_of_3d) {
        return lfe_3d(image, nullptr, r.mask, r.nx, r.ny, r.nz, 1, 0, 0, p->fov[0], p->fov[1],
                      p->fov[2], p->lfe_nbands, p->lfe_base_freq, nullptr, &est, &cert, i,
                      ncomp) > 0;
    }
    if (p->lfe_nd == 1 || p->lfe_nd == 2) {
        size_t plane = size_t(r.nx) * r.ny;
        for (int z = 0; z < r.nz; ++z)
            if (lfe_1d(image + z * plane, est + z * plane, cert + z * plane, r.nx, r.ny, p->fov[0],
                       p->fov[1], p->lfe_nbands, p->lfe_base_freq, p->lfe_nd == 2, i * r.nz + z,
                       ncomp * r.nz))
                return false;
        return true;
    }
    if (r.volume) return slices_2d(r, image, nullptr, 1, 0, 0, complex_flag, est, cert, i, ncomp);
    return lfe_2d(image, nullptr, r.mask, r.nx, r.ny, 1, 0, 0, p->fov[0], p->fov[1], p->lfe_nbands,
                  p->lfe_base_freq, 0.0f, 0, complex_flag, p->lfe_octave, nullptr, &est, &cert, i,
                  ncomp) > 0;
}

void post(const Run& r, float* image) {
    if (r.p->post_on) apply_filter_spec(image, 1, 0, r.mask, r.p, &r.p->post_filter, r.volume);
}

void weight(const Run& r, float* stiff, const float* cert) {
    if (!r.p->lfe_weight_on) return;
    if (r.volume)
        lfe_weight_3d(stiff, cert, r.mask, r.p, 1);
    else
        lfe_weight_2d(stiff, cert, r.mask, r.p, 1);
}

// Steps shared by every driver once the mean estimate and certainty are known: outputs of the
// estimate, stiffness, weighting, certainty, the SNR mask, stiffness outputs.
void finish(const Run& r, float* est, float* cert, const uint8_t* aux_mask) {
    wave_params* p = r.p;
    int n = int(r.npix);
    store_plane(est, p, r.temp, p->lfe_stack_out, 0, kStackPlanes);
    store_plane(est, p, r.temp, p->lfe_est, 0, 1);
    freq_to_stiffness(est, n, p->mech_freq);
    weight(r, est, cert);
    scale_in_place(cert, 1000.0f, n);
    store_plane(cert, p, r.temp, p->lfe_stack_out, 1, kStackPlanes);
    store_plane(cert, p, r.temp, p->lfe_cert, 0, 1);
    if (aux_mask && p->snr_mask && (!p->use_mask || passes_of(p) == 1))
        apply_mask(est, aux_mask, n);
    store_plane(est, p, r.temp, p->lfe_stack_out, 2, kStackPlanes);
    store_plane(est, p, r.temp, p->lfe_stiff, 0, 1);
}

std::string post_text(const wave_params* p) {
    return p->post_on ? "\n   AND POST-FILTER: " + filter_summary(&p->post_filter) : "";
}

// The 2-D texts of the start of a run over raw offsets, and of component i otherwise.
std::string offsets_text_2d(const wave_params* p) {
    if (p->lfe_nd == 1) return "LFE pure-1D processing offsets ";
    if (p->lfe_nd == 2) return "LFE soft-1D processing offsets ";
    std::string t = wave_fmt("LFE base_freq = %.2f (waves/meter), num_bands = %d \n",
                             p->lfe_base_freq, p->lfe_nbands);
    switch (ratio_kind(p->lfe_octave)) {
        case kHalfOctave:
            return t + "HALF-OCTAVE LFE processing offsets ";
        case kOctave:
            return t + "LFE processing offsets ";
        case kTwoOctave:
            return t + "TWO-OCTAVE LFE processing offsets ";
        default:
            return t + wave_fmt("LFE filter frequency ratio = %.2f \n", p->lfe_octave) +
                   "LFE processing offsets ";
    }
}

std::string component_text_2d(const wave_params* p, int i) {
    if (p->lfe_nd == 1) return wave_fmt("LFE pure-1D processing component %d ", i);
    if (p->lfe_nd == 2) return wave_fmt("LFE soft-1D processing component %d ", i);
    std::string t = i == 0 ? wave_fmt("LFE base_freq = %.2f (waves/meter), num_bands = %d \n",
                                      p->lfe_base_freq, p->lfe_nbands)
                           : std::string();
    if (p->lfe_complex) return t + "COMPLEX LFE processing R1,I1 pair ";
    switch (ratio_kind(p->lfe_octave)) {
        case kHalfOctave:
            return t + wave_fmt("HALF-OCTAVE LFE processing component %d ", i);
        case kOctave:
            return t + wave_fmt("LFE processing component %d ", i);
        case kTwoOctave:
            return t + wave_fmt("TWO-OCTAVE LFE processing component %d ", i);
        default:
            return t + wave_fmt("LFE filter frequency ratio = %.2f \n", p->lfe_octave) +
                   wave_fmt("LFE processing component %d ", i);
    }
}

std::string component_text_3d(const wave_params* p, int i) {
    return wave_fmt(
        p->lfe_2d_of_3d ? "LFE 2D processing component %d " : "LFE processing component %d ", i);
}

// lfe_2d_1axis and lfe_3d_1axis: `ncomp` images (one woven pair with lfe_complex, R and I, or
// the raw offsets), each estimated alone, then averaged.
int one_axis(const Run& r, float* data, const uint8_t* aux_mask, int ncomp) {
    wave_params* p = r.p;
    int n = int(r.npix);
    int level = mem_next_level();
    if (p->lfe_noft) {
        std::string head = r.volume ? std::string(p->lfe_2d_of_3d ? "LFE 2D processing offsets "
                                                                  : "LFE processing offsets ")
                                    : offsets_text_2d(p);
        say(head + post_text(p));
    } else if (p->post_on) {
        say(post_text(p));
    }
    run_progress(0, 0, 0, p->component, p->ncomponents, p->angle, p->nangles);
    float *est = nullptr, *cert = nullptr, *sum_est = nullptr, *sum_cert = nullptr;
    mem_allocate(&est, sizeof(float), uint32_t(n), 0);
    mem_allocate(&cert, sizeof(float), uint32_t(n), 0);
    mem_allocate(&sum_est, sizeof(float), uint32_t(n), 0);
    mem_allocate(&sum_cert, sizeof(float), uint32_t(n), 0);
    size_t step = woven(r) ? 2 * r.npix : r.npix;
    for (int i = 0; i < ncomp; ++i) {
        if (!p->lfe_noft) say(r.volume ? component_text_3d(p, i) : component_text_2d(p, i));
        if (!estimate_one(r, data + i * step, est, cert, i, ncomp))
            return mem_free_level(level, 0), 1;
        post(r, est);
        post(r, cert);
        apply_mask(est, r.mask, n);
        apply_mask(cert, r.mask, n);
        if (p->wedge_on)
            for (int z = 0; z < r.nz; ++z) stamp_wedge(est + size_t(z) * r.nx * r.ny, r.nx, r.ny);
        if (i == 0) {
            std::memcpy(sum_est, est, sizeof(float) * n);
            std::memcpy(sum_cert, cert, sizeof(float) * n);
        } else {
            add_in_place(sum_est, est, n);
            add_in_place(sum_cert, cert, n);
        }
        if (p->lfe_individual) {
            freq_to_stiffness(est, n, p->mech_freq);
            weight(r, est, cert);
            store_plane(est, p, r.temp, p->lfe_imu, i, ncomp);
            scale_in_place(cert, 1000.0f, n);
            store_plane(cert, p, r.temp, p->lfe_icert, i, ncomp);
        }
    }
    scale_in_place(sum_est, 1.0f / float(ncomp), n);
    scale_in_place(sum_cert, 1.0f / float(ncomp), n);
    finish(r, sum_est, sum_cert, aux_mask);
    mem_free_level(level, 0);
    return 0;
}

// lfe_2d_XYZ and lfe_3d_XYZ: three pairs averaged by squared amplitude in one call, or the
// offsets of a raw stack by root mean square.
int three_axes(const Run& r, float* data, const float* amp2, const uint8_t* aux_mask) {
    wave_params* p = r.p;
    int n = int(r.npix);
    int level = mem_next_level();
    run_progress(0, 0, 0, p->component, p->ncomponents, p->angle, p->nangles);
    float *est = nullptr, *cert = nullptr, *w = nullptr;
    int count = 3, pairs = 1, average = 2;
    if (p->lfe_noft) {
        count = p->nt;
        pairs = 0;
        average = 1;
    } else if (amp2) {
        // The chain hands over amplitudes; the weights are their squares.
        mem_allocate(&w, sizeof(float), uint32_t(3 * n), 0);
        for (int i = 0; i < 3 * n; ++i) w[i] = amp2[i] * amp2[i];
    }
    int complex_flag = woven(r);
    bool ok;
    if (r.volume && p->lfe_2d_of_3d) {
        mem_allocate(&est, sizeof(float), uint32_t(n), 0);
        mem_allocate(&cert, sizeof(float), uint32_t(n), 0);
        ok = slices_2d(r, data, w, count, pairs, average, complex_flag, est, cert, 0, 1);
    } else if (r.volume) {
        ok = lfe_3d(data, w, r.mask, r.nx, r.ny, r.nz, count, pairs, average, p->fov[0], p->fov[1],
                    p->fov[2], p->lfe_nbands, p->lfe_base_freq, nullptr, &est, &cert, 0, 1) > 0;
    } else {
        ok = lfe_2d(data, w, r.mask, r.nx, r.ny, count, pairs, average, p->fov[0], p->fov[1],
                    p->lfe_nbands, p->lfe_base_freq, 0.0f, 0, complex_flag, p->lfe_octave, nullptr,
                    &est, &cert, 0, 1) > 0;
    }
    if (!ok) return mem_free_level(level, 0), 1;
    post(r, est);
    post(r, cert);
    apply_mask(est, r.mask, n);
    apply_mask(cert, r.mask, n);
    if (p->wedge_on)
        for (int z = 0; z < r.nz; ++z) stamp_wedge(est + size_t(z) * r.nx * r.ny, r.nx, r.ny);
    finish(r, est, cert, aux_mask);
    mem_free_level(level, 0);
    return 0;
}

std::string xyz_text_2d(const wave_params* p) {
    if (p->lfe_complex) return "COMPLEX LFE processing (X,Y,Z)  ";
    switch (ratio_kind(p->lfe_octave)) {
        case kHalfOctave:
            return "HALF-OCTAVE LFE processing (X,Y,Z)  ";
        case kOctave:
            return "LFE processing (X,Y,Z)  ";
        case kTwoOctave:
            return "TWO-OCTAVE LFE processing (X,Y,Z)  ";
        default:
            return wave_fmt("LFE filter ratio = %.2f \n", p->lfe_octave) +
                   "LFE processing (X,Y,Z)  ";
    }
}

}  // namespace

void freq_to_stiffness(float* buf, int n, float mech_freq) {
    double f2 = double(mech_freq) * mech_freq;
    for (int i = 0; i < n; ++i) {
        double e2 = double(buf[i]) * buf[i];
        buf[i] = e2 >= 1e-20 ? float(f2 / e2) : 0.0f;
    }
}

void stamp_wedge(float* buf, int nx, int ny) {
    for (int y = 0; y < std::min(ny, 10); ++y)
        for (int x = 0; x < nx; ++x) buf[size_t(y) * nx + x] = float((x >> 4) + 1);
}

void window_weighted_mean(const float* values, const float* weights, const uint8_t* mask,
                          float* out, int nx, int ny, int nz, int winx, int winy, int winz,
                          int mode) {
    int hx = winx / 2, hy = winy / 2, hz = winz / 2;
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x) {
                size_t i = (size_t(z) * ny + y) * nx + x;
                if (mode != 0 && !(mask && mask[i])) continue;
                double S = 0.0, N = 0.0;
                for (int c = std::max(z - hz, 0); c <= std::min(z + hz, nz - 1); ++c)
                    for (int b = std::max(y - hy, 0); b <= std::min(y + hy, ny - 1); ++b)
                        for (int a = std::max(x - hx, 0); a <= std::min(x + hx, nx - 1); ++a) {
                            size_t k = (size_t(c) * ny + b) * nx + a;
                            if (mode >= 2 && !(mask && mask[k])) continue;
                            S += weights[k];
                            N += double(weights[k]) * values[k];
                        }
                if (S > 0.0) out[i] = float(N / S);
            }
}

int lfe_weight_2d(float* stiff, const float* cert, const uint8_t* mask, wave_params* p,
                  int verbose) {
    if (verbose)
        say(wave_fmt("Weighting LFE values by Certainty values (%d x %d window) ",
                     p->lfe_weight_win[0], p->lfe_weight_win[1]),
            ".weighting");
    int n = p->nx * p->ny;
    int level = mem_next_level();
    float* temp = nullptr;
    mem_allocate(&temp, sizeof(float), uint32_t(n), 0);
    std::memcpy(temp, stiff, sizeof(float) * n);
    std::memset(stiff, 0, sizeof(float) * n);
    window_weighted_mean(temp, cert, mask, stiff, p->nx, p->ny, 1, p->lfe_weight_win[0],
                         p->lfe_weight_win[1], 1, p->lfe_weight_mode);
    mem_free_level(level, 0);
    return 0;
}

int lfe_weight_3d(float* stiff, const float* cert, const uint8_t* mask, wave_params* p,
                  int verbose) {
    const int* w = p->lfe_weight_win;
    if (verbose)
        say(wave_fmt("Weighting LFE values by Certainty values (%dx%dx%d window) ", w[0], w[1],
                     w[2]),
            ".weighting");
    int nz = std::max(p->nz, 1);
    int n = p->nx * p->ny * nz;
    int level = mem_next_level();
    float* temp = nullptr;
    mem_allocate(&temp, sizeof(float), uint32_t(n), 0);
    std::memcpy(temp, stiff, sizeof(float) * n);
    std::memset(stiff, 0, sizeof(float) * n);
    window_weighted_mean(temp, cert, mask, stiff, p->nx, p->ny, nz, w[0], w[1], w[2],
                         p->lfe_weight_mode);
    mem_free_level(level, 0);
    return 0;
}

int lfe_ncomp(const wave_params* p, int volume) {
    if (p->lfe_noft) return p->nt;
    return woven(p, volume != 0) ? 1 : 2;
}

int lfe_2d_1axis(wave_params* p, float* data, uint8_t* mask, uint8_t* aux_mask, int ncomp,
                 float** temp_holder) {
    return one_axis(make_run(p, false, mask, temp_holder), data, aux_mask, ncomp);
}

int lfe_3d_1axis(wave_params* p, float* data, uint8_t* mask, uint8_t* aux_mask, int ncomp,
                 float** temp_holder) {
    return one_axis(make_run(p, true, mask, temp_holder), data, aux_mask, ncomp);
}

int lfe_2d_XYZ(wave_params* p, float* data, uint8_t* mask, float* amp2, uint8_t* aux_mask,
               float** temp_holder) {
    say(xyz_text_2d(p) + post_text(p), "lfe");
    return three_axes(make_run(p, false, mask, temp_holder), data, amp2, aux_mask);
}

int lfe_3d_XYZ(wave_params* p, float* data, uint8_t* mask, float* amp2, uint8_t* aux_mask,
               float** temp_holder) {
    if (p->lfe_2d_of_3d)
        say("LFE 2D processing (X,Y,Z)  " + post_text(p), "2d lfe xyz");
    else
        say("LFE 3D processing (X,Y,Z)  " + post_text(p), "3d lfe xyz");
    return three_axes(make_run(p, true, mask, temp_holder), data, amp2, aux_mask);
}
