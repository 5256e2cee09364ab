// The chain's direct inversion: texts, one component or three (weighted sums of the inverse
// moduli, or AIDE), post-filter, masks and the outputs.
#include <algorithm>
#include <cstring>
#include <string>

#include "wave/band_filter.h"
#include "wave/direct.h"
#include "wave/driver.h"
#include "wave/estimator_output.h"
#include "wave/image_buffers.h"
#include "wave/mem.h"
#include "wave/messages.h"
#include "wave/progress.h"
#include "wave/stages.h"
#include "wave/wsum.h"

namespace {

const char* kernel_name(int type) {
    switch (type) {
        case 0:
            return "OLD SG";
        case 1:
            return "Farid";
        case 2:
            return "Romano";
        case 3:
            return "SG";
        default:
            return "INVALID FILTER TYPE";
    }
}

void say(const std::string& verbose, const char* quiet = nullptr) {
    wave_say(WF_DI, quiet, verbose.c_str());
}

// The pair arrays of a run: 0 y, 1 x, 2 z.
struct Setup {
    int dims[3], win[3], order[3], med[2];
    float pixel[3];
    int nx, ny, nz;
    size_t n;  // pixels of the image or volume
};

Setup setup(const wave_params* p, bool volume) {
    Setup s;
    s.nx = p->nx;
    s.ny = p->ny;
    s.nz = volume ? std::max(p->nz, 1) : 1;
    s.n = size_t(s.nx) * s.ny * s.nz;
    s.dims[0] = s.ny, s.dims[1] = s.nx, s.dims[2] = s.nz;
    s.win[0] = p->di_win[1], s.win[1] = p->di_win[0], s.win[2] = p->di_win[2];
    s.order[0] = p->di_order[1], s.order[1] = p->di_order[0], s.order[2] = p->di_order[2];
    s.pixel[0] = p->fov[1] / s.ny, s.pixel[1] = p->fov[0] / s.nx, s.pixel[2] = p->fov[2] / s.nz;
    s.med[0] = s.med[1] = p->post_on ? 1 : 3;  // a post-filter replaces the median
    return s;
}

// "... window[, order ...][, type ...]) " after the head text.
std::string window_text(const wave_params* p, bool three) {
    std::string t = three
                        ? wave_fmt("%d x %d x %d window", p->di_win[0], p->di_win[1], p->di_win[2])
                        : wave_fmt("%d x %d window", p->di_win[0], p->di_win[1]);
    if (p->di_type == 0 || p->di_type == 3)
        t += three ? wave_fmt(", order %d, %d, %d", p->di_order[0], p->di_order[1], p->di_order[2])
                   : wave_fmt(", order %d, %d", p->di_order[0], p->di_order[1]);
    if (p->di_type == 0) t += wave_fmt(", type %d", p->di_sg_mode);
    return t + ") ";
}

// The outputs of one run, contiguous: speed2, atten, cmu_re, cmu_im.
void finish(wave_params* p, float* out, const Setup& s, const uint8_t* mask,
            const uint8_t* aux_mask, float** temp, int volume, bool xyz) {
    if (p->post_on) {
        if (xyz)
            say("\n   POST-FILTER: " + filter_summary(&p->post_filter), ".POST-FILTER");
        else
            say("   POST-FILTER: " + filter_summary(&p->post_filter));
        estimator_post(out, 4, mask, p, volume);
    }
    for (int i = 0; i < 4; ++i) apply_mask(out + i * s.n, mask, int(s.n));
    estimator_aux_mask(out, aux_mask, p, s.n);
    for (int i = 0; i < 4; ++i) estimator_store(out + i * s.n, p, temp, p->di_stack_out, i, 4);
    estimator_store(out, p, temp, p->di_stiff, 0, 1);
    estimator_store(out + s.n, p, temp, p->di_atten, 0, 1);
    if (p->di_cmu) store_complex(out + 2 * s.n, p, 1, temp, p->di_cmu);
}

// One component: the image through direct_division2 (slice by slice with `slices`) or the
// volume through direct_division3.
bool one_component(wave_params* p, Setup& s, const float* pair, float* out, const uint8_t* mask,
                   const uint8_t* aux_mask, bool volume, bool slices, int seq, int nseq) {
    size_t n = s.n;
    float *sp = out, *at = out + n, *cr = out + 2 * n, *ci = out + 3 * n;
    if (volume && !slices)
        return direct_division3(pair, pair + n, sp, at, cr, ci, s.dims, s.order, s.win,
                                p->di_regular, s.pixel, p->mech_freq, s.med, p->di_sg_mode,
                                p->di_type, mask, aux_mask, seq, nseq) == 0;
    size_t plane = size_t(s.nx) * s.ny;
    for (int z = 0; z < s.nz; ++z) {
        size_t o = z * plane;
        if (direct_division2(pair + o, pair + n + o, sp + o, at + o, cr + o, ci + o, s.dims,
                             s.order, s.win, p->di_regular, s.pixel, p->mech_freq, s.med,
                             p->di_sg_mode, p->di_type, mask ? mask + o : nullptr,
                             aux_mask ? aux_mask + o : nullptr, seq * s.nz + z, nseq * s.nz))
            return false;
    }
    return true;
}

int one_axis(wave_params* p, float* pair, uint8_t* mask, uint8_t* aux_mask, float** temp,
             bool volume, const std::string& head, const char* error) {
    bool slices = !volume || p->di_2d;
    say(head);
    stopwatch(0);
    Setup s = setup(p, volume);
    int level = mem_next_level();
    float *out = nullptr, *own_temp = nullptr;
    if (!temp) temp = &own_temp;  // the store's scratch then lives at this level
    mem_allocate(&out, sizeof(float), uint32_t(4 * s.n), 0);
    run_progress(0, 0, 0, p->component, p->ncomponents, p->angle, p->nangles);
    if (!one_component(p, s, pair, out, mask, aux_mask, volume, slices, 0, 1)) {
        msg_fatal_text(error);
        return mem_free_level(level, 0), 1;
    }
    finish(p, out, s, mask, aux_mask, temp, volume, false);
    say(wave_fmt("(%.2f s) \n", stopwatch(1)));
    mem_free_level(level, 0);
    return 0;
}

int three_axes(wave_params* p, float* pairs, uint8_t* mask, bool volume, const std::string& head,
               const char* error) {
    say((p->di_aide ? "AIDE " : "XYZ ") + head);
    stopwatch(0);
    Setup s = setup(p, volume);
    size_t n = s.n;
    int level = mem_next_level();
    // Holders live to the end: the table writes to them when the level is freed.
    float *out = nullptr, *w = nullptr, *temp = nullptr, *in = nullptr, *res = nullptr;
    mem_allocate(&out, sizeof(float), uint32_t(4 * n), 0);
    bool ok = true;
    if (p->di_aide) {
        run_progress(0, 0, 0, p->component, p->ncomponents, p->angle, p->nangles);
        auto solve = volume && !p->di_2d ? aide_3d : aide_2d;
        if (volume && p->di_2d) {
            // Slice by slice: the planes of each slice gathered in the x, y order of aide_2d.
            size_t plane = size_t(s.nx) * s.ny;
            mem_allocate(&in, sizeof(float), uint32_t(4 * plane), 0);
            mem_allocate(&res, sizeof(float), uint32_t(4 * plane), 0);
            for (int z = 0; z < s.nz && ok; ++z) {
                for (int k = 0; k < 4; ++k)
                    std::memcpy(in + k * plane, pairs + k * n + z * plane, sizeof(float) * plane);
                ok = aide_2d(in, in + plane, res, res + plane, res + 2 * plane, res + 3 * plane,
                             s.dims, s.order, s.win, p->di_regular, s.pixel, p->mech_freq, s.med,
                             p->di_sg_mode) == 0;
                for (int k = 0; k < 4 && ok; ++k)
                    std::memcpy(out + k * n + z * plane, res + k * plane, sizeof(float) * plane);
            }
        } else {
            ok = solve(pairs, pairs + n, out, out + n, out + 2 * n, out + 3 * n, s.dims, s.order,
                       s.win, p->di_regular, s.pixel, p->mech_freq, s.med, p->di_sg_mode) == 0;
        }
    } else {
        uint32_t seq = 0, wseq = 0;
        mem_allocate(&w, sizeof(float), uint32_t(n), 0);
        for (int c = 0; c < 3 && ok; ++c) {
            run_progress(0, 0, 0, c, 3, p->angle, p->nangles);
            const float* pair = pairs + 2 * c * n;
            ok = one_component(p, s, pair, out, mask, p->aux_mask, volume, !volume || p->di_2d, c,
                               3);
            if (!ok) break;
            for (size_t i = 0; i < n; ++i) w[i] = pair[i] * pair[i] + pair[n + i] * pair[n + i];
            ADD_weighted_sum_inv_cmu(&seq, out + 2 * n, out + 3 * n, w, int(n), 0);
            ADD_weighted_sum(&wseq, w, nullptr, int(n), 0, 0);
        }
        if (ok) {
            float *cr = out + 2 * n, *ci = out + 3 * n;
            CALC_weighted_avg_inv_cmu(&seq, wseq, &cr, &ci, int(n), 1);
            CALC_cmu_speed(cr, ci, out, out + n, int(n), p->mech_freq);
        }
        if (seq) free_sequence(&seq);
        if (wseq) free_sequence(&wseq);
    }
    if (!ok) {
        msg_fatal_text(error);
        return mem_free_level(level, 0), 1;
    }
    finish(p, out, s, mask, p->aux_mask, &temp, volume, true);
    say(wave_fmt("(%.2f s) \n", stopwatch(1)));
    mem_free_level(level, 0);
    return 0;
}

}  // namespace

int direct_2d_1axis(wave_params* p, float* pair, uint8_t* mask, uint8_t* aux_mask, float** temp) {
    std::string head =
        wave_fmt("Direct Inversion (%s, ", kernel_name(p->di_type)) + window_text(p, false);
    return one_axis(p, pair, mask, aux_mask, temp, false, head,
                    p->di_type == 0 ? "direct_2d_1axis: Error in Direct Division processing.\n"
                                    : "direct_2d_1axis: Error in Direct Inversion processing.\n");
}

int direct_3d_1axis(wave_params* p, float* pair, uint8_t* mask, uint8_t* aux_mask, float** temp) {
    std::string head = p->di_2d ? wave_fmt("2-D Direct Inversion (%s, ", kernel_name(p->di_type)) +
                                      window_text(p, false)
                                : wave_fmt("3-D Direct Inversion (%s, ", kernel_name(p->di_type)) +
                                      window_text(p, true);
    return one_axis(p, pair, mask, aux_mask, temp, true, head,
                    "direct_3d_1axis: Error in Direct Division processing.\n");
}

int direct_2d_XYZ(wave_params* p, float* pairs, uint8_t* mask) {
    std::string head =
        wave_fmt("Direct Inversion (%s, ", kernel_name(p->di_type)) + window_text(p, false);
    return three_axes(p, pairs, mask, false, head,
                      "direct_2d_XYZ: Error in Direct Division processing.\n");
}

int direct_3d_XYZ(wave_params* p, float* pairs, uint8_t* mask) {
    std::string head =
        wave_fmt("Direct Inversion (%s, ", kernel_name(p->di_type)) + window_text(p, true);
    return three_axes(p, pairs, mask, true, head,
                      "direct_3d_XYZ: Error in Direct Division processing.\n");
}
