// The chain's phase gradient: texts, the estimate of the harmonic's phase (one component, or
// three weighted by squared amplitude), post-filter, masks, stiffness and the outputs.
#include <algorithm>
#include <cstring>
#include <string>

#include "wave/band_filter.h"
#include "wave/estimator_output.h"
#include "wave/image_buffers.h"
#include "wave/lfe.h"
#include "wave/mem.h"
#include "wave/messages.h"
#include "wave/phgrad.h"
#include "wave/progress.h"
#include "wave/stages.h"

namespace {

constexpr int kStackPlanes = 6;  // the planes of lfe_stack_out; the gradient has 3 and 4

void say(const std::string& verbose, const std::string& quiet = "") {
    wave_say(WF_PG, quiet.empty() ? nullptr : quiet.c_str(), verbose.c_str());
}

// Estimate (and direction in 2-D) of `n` pairs, slice by slice with `slices`.
bool estimate(wave_params* p, const float* pairs, int n, uint8_t* mask, bool volume, bool slices,
              float* est, float* dir) {
    int nx = p->nx, ny = p->ny, nz = volume ? std::max(p->nz, 1) : 1;
    size_t plane = size_t(nx) * ny, npix = plane * nz;
    int average = n > 1 ? 2 : 0;
    if (volume && !slices) {
        return phgrad_3d(pairs, nullptr, mask, nx, ny, nz, n, 1, average, p->fov[0], p->fov[1],
                         p->fov[2], p->pg_win, nullptr, &est) > 0;
    }
    int level = mem_next_level();
    float* in = nullptr;
    mem_allocate(&in, sizeof(float), uint32_t(2 * n * plane), 0);
    bool ok = true;
    for (int z = 0; z < nz && ok; ++z) {
        for (int k = 0; k < 2 * n; ++k)
            std::memcpy(in + k * plane, pairs + k * npix + z * plane, sizeof(float) * plane);
        float* e = est + z * plane;
        float* d = dir + z * plane;
        ok = phgrad_2d(in, nullptr, mask ? mask + z * plane : nullptr, nx, ny, n, 1, average,
                       p->fov[0], p->fov[1], p->pg_win, nullptr, &e, &d, p->pg_dir_on,
                       p->pg_dir_angle) > 0;
    }
    mem_free_level(level, 0);
    return ok;
}

int run(wave_params* p, float* pairs, int n, uint8_t* mask, uint8_t* aux_mask, float** temp,
        bool volume, bool slices) {
    int nz = volume ? std::max(p->nz, 1) : 1;
    size_t npix = size_t(p->nx) * p->ny * nz;
    int level = mem_next_level();
    float *est = nullptr, *dir = nullptr, *own_temp = nullptr;
    if (!temp) temp = &own_temp;
    mem_allocate(&est, sizeof(float), uint32_t(npix), 0);
    mem_allocate(&dir, sizeof(float), uint32_t(npix), 0);
    std::fill(dir, dir + npix, 0.0f);
    run_progress(0, 0, 0, p->component, p->ncomponents, p->angle, p->nangles);
    if (!estimate(p, pairs, n, mask, volume, slices, est, dir)) return mem_free_level(level, 0), 1;
    if (p->post_on) {
        say("   POST-FILTER: " + filter_summary(&p->post_filter));
        estimator_post(est, 1, mask, p, volume);
        estimator_post(dir, 1, mask, p, volume);
    }
    apply_mask(est, mask, int(npix));
    apply_mask(dir, mask, int(npix));
    if (p->wedge_on)
        for (int z = 0; z < nz; ++z) stamp_wedge(est + size_t(z) * p->nx * p->ny, p->nx, p->ny);
    estimator_store(est, p, temp, p->lfe_stack_out, 3, kStackPlanes);
    estimator_store(est, p, temp, p->pg_est, 0, 1);
    freq_to_stiffness(est, int(npix), p->mech_freq);
    estimator_aux_mask(est, aux_mask, p, npix);
    estimator_store(est, p, temp, p->lfe_stack_out, 4, kStackPlanes);
    estimator_store(est, p, temp, p->pg_stiff, 0, 1);
    estimator_store(dir, p, temp, p->pg_dir, 0, 1);
    mem_free_level(level, 0);
    return 0;
}

}  // namespace

int pg_2d_1axis(wave_params* p, float* pair, uint8_t* mask, uint8_t* aux_mask, float** temp) {
    say(wave_fmt("Phase Gradient (%d x %d window) ", p->pg_win[0], p->pg_win[1]));
    return run(p, pair, 1, mask, aux_mask, temp, false, true);
}

int pg_2d_XYZ(wave_params* p, float* pairs, uint8_t* mask) {
    say(wave_fmt("Phase Gradient XYZ (%d x %d window) ", p->pg_win[0], p->pg_win[1]),
        "Phase Gradient XYZ");
    return run(p, pairs, 3, mask, p->aux_mask, nullptr, false, true);
}

int pg_3d_1axis(wave_params* p, float* pair, uint8_t* mask, uint8_t* aux_mask, float** temp) {
    const int* w = p->pg_win;
    if (p->pg_mode)
        say(wave_fmt("2D Phase Gradient (%d x %d window) ", w[0], w[1]));
    else
        say(wave_fmt("Phase Gradient (%d x %d x %d window) ", w[0], w[1], w[2]));
    return run(p, pair, 1, mask, aux_mask, temp, true, p->pg_mode != 0);
}

int pg_3d_XYZ(wave_params* p, float* pairs, uint8_t* mask) {
    const int* w = p->pg_win;
    if (p->pg_mode)
        say(wave_fmt("2D Phase Gradient XYZ (%d x %d window) ", w[0], w[1]),
            "2D Phase Gradient XYZ");
    else
        say(wave_fmt("Phase Gradient XYZ (%d x %d x %d window) ", w[0], w[1], w[2]),
            "3D Phase Gradient XYZ");
    return run(p, pairs, 3, mask, p->aux_mask, nullptr, true, p->pg_mode != 0);
}
