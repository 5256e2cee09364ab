// The chain's matched filter: texts, slice by slice over one component or three (weighted
// sums of the inverse moduli), post-filter, masks and the outputs.
#include <algorithm>
#include <string>

#include "wave/band_filter.h"
#include "wave/driver.h"
#include "wave/estimator_output.h"
#include "wave/image_buffers.h"
#include "wave/matched.h"
#include "wave/mem.h"
#include "wave/messages.h"
#include "wave/progress.h"
#include "wave/stages.h"
#include "wave/wsum.h"

namespace {

void say(const std::string& verbose) { wave_say(WF_MF, nullptr, verbose.c_str()); }

// One component (a planar pair of p's image or volume) into out: speed2, atten, cmu_re,
// cmu_im, slice by slice.
bool component(wave_params* p, const float* pair, float* out, const uint8_t* mask,
               const uint8_t* aux_mask, int nz, int seq, int nseq) {
    size_t plane = size_t(p->nx) * p->ny, n = plane * nz;
    const int win[2] = {p->mf_win[1], p->mf_win[0]};
    for (int z = 0; z < nz; ++z) {
        size_t o = z * plane;
        if (matched_filter(pair + o, pair + n + o, out + o, out + n + o, out + 2 * n + o,
                           out + 3 * n + o, p->nx, p->ny, p->fov[0], p->fov[1], p->mech_freq, win,
                           p->mf_regular, mask ? mask + o : nullptr,
                           aux_mask ? aux_mask + o : nullptr, seq * nz + z, nseq * nz))
            return false;
    }
    return true;
}

int run(wave_params* p, float* data, int ncomp, uint8_t* mask, uint8_t* aux_mask, bool volume) {
    int nz = volume ? std::max(p->nz, 1) : 1;
    size_t n = size_t(p->nx) * p->ny * nz;
    if (volume)
        say(wave_fmt("Matched Filter Inversion (%d x %d x %d window) \n", p->mf_win[0],
                     p->mf_win[1], p->mf_win[2]));
    else
        say(wave_fmt("Matched Filter Inversion (%d x %d window) \n", p->mf_win[0], p->mf_win[1]));
    int level = mem_next_level();
    float *out = nullptr, *w = nullptr, *temp = nullptr;
    mem_allocate(&out, sizeof(float), uint32_t(4 * n), 0);
    bool ok = true;
    if (ncomp == 1) {
        run_progress(0, 0, 0, p->component, p->ncomponents, p->angle, p->nangles);
        ok = component(p, data, out, mask, aux_mask, nz, 0, 1);
    } else {
        uint32_t seq = 0, wseq = 0;
        mem_allocate(&w, sizeof(float), uint32_t(n), 0);
        for (int c = 0; c < 3 && ok; ++c) {
            run_progress(0, 0, 0, c, 3, p->angle, p->nangles);
            const float* pair = data + 2 * c * n;
            if (!(ok = component(p, pair, out, mask, aux_mask, nz, c, 3))) break;
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
    if (!ok) return mem_free_level(level, 0), 1;
    if (p->post_on) {
        say("   POST-FILTER: " + filter_summary(&p->post_filter));
        estimator_post(out, 4, mask, p, volume);
    }
    for (int i = 0; i < 4; ++i) apply_mask(out + i * n, mask, int(n));
    estimator_aux_mask(out, aux_mask, p, n);
    for (int i = 0; i < 4; ++i) estimator_store(out + i * n, p, &temp, p->mf_stack_out, i, 4);
    estimator_store(out, p, &temp, p->mf_stiff, 0, 1);
    estimator_store(out + n, p, &temp, p->mf_atten, 0, 1);
    if (p->mf_cmu) store_complex(out + 2 * n, p, 1, &temp, p->mf_cmu);
    mem_free_level(level, 0);
    return 0;
}

}  // namespace

int mf_2d(wave_params* p, float* pair, uint8_t* mask, uint8_t* aux_mask) {
    return run(p, pair, 1, mask, aux_mask, false);
}
int mf_2d_XYZ(wave_params* p, float* pairs, uint8_t* mask) {
    return run(p, pairs, 3, mask, p->aux_mask, false);
}
int mf_3d(wave_params* p, float* pair, uint8_t* mask, uint8_t* aux_mask) {
    return run(p, pair, 1, mask, aux_mask, true);
}
int mf_3d_XYZ(wave_params* p, float* pairs, uint8_t* mask) {
    return run(p, pairs, 3, mask, p->aux_mask, true);
}
