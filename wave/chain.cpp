#include "wave/chain.h"

#include <algorithm>
#include <cstring>

#include "wave/conditioning.h"
#include "wave/driver.h"
#include "wave/image_buffers.h"
#include "wave/mask.h"
#include "wave/mem.h"
#include "wave/messages.h"
#include "wave/progress.h"
#include "wave/snr.h"
#include "wave/stages.h"

namespace {

struct Shape {
    const char* name;
    bool volume;
    int nx, ny, nz;
    size_t npix;  // pixels of one image (a volume for 3-D)
};

// The offsets of a filtered stack as planes of `output`, masked on request.
void store_offsets(wave_params* p, const float* stack, const uint8_t* mask, size_t npix,
                   wave_output output, int masked, int pass, int npasses) {
    if (!output) return;
    float *plane = nullptr, *temp = nullptr;
    mem_allocate(&plane, sizeof(float), uint32_t(npix), 0);
    for (int t = 0; t < p->nt; ++t) {
        std::memcpy(plane, stack + t * npix, sizeof(float) * npix);
        if (masked) apply_mask(plane, mask, int(npix));
        store_image(plane, p, 0, &temp, output, pass * p->nt + t, npasses * p->nt);
    }
    mem_free(&temp, 0);
    mem_free(&plane, 0);
}

void fail(const Shape& s, const char* what) {
    std::string text = wave_fmt("%s: %s\n", s.name, what);
    wave_warn(WF_CHAIN, text.c_str(), text.c_str());
}

// Steps from reading to the filtered harmonic pair of one component: reads, mask, conditioning,
// harmonic extraction and direction filtering, harmonic outputs, SNR. Leaves the pair in
// `pair` (2 * npix floats) and, for LFE on raw offsets, the stack copy in *lfe_stack.
// Returns false when a stage failed (already reported).
bool condition_component(wave_params* p, const Shape& s, float* mag, uint8_t* mask, float* pair,
                         float** lfe_stack, float* amp2, int pass, int npasses) {
    size_t npix = s.npix;
    int nimages = p->complex_in ? 2 : p->nt;
    // Harmonic extraction leaves the pair in planes 1 and 2, and complex input is read there:
    // at least 3 planes, the ones no offset fills cleared.
    size_t nplanes = std::max(nimages + (p->complex_in ? 1 : 0), 3);
    float* stack = nullptr;
    mem_allocate(&stack, sizeof(float), uint32_t(npix * nplanes), 0);
    std::memset(stack, 0, sizeof(float) * npix * nplanes);
    float* images = p->complex_in ? stack + npix : stack;
    float* harmonic = stack + npix;
    // The table holds &stack: an early return must free it before this frame goes.
    struct Release {
        float** holder;
        ~Release() { mem_free(holder, 0); }
    } release{&stack};
    if (read_phase_stack(p, images)) return fail(s, "unable to read the phase data."), false;
    if (read_max_magnitude(p, mag)) return fail(s, "unable to read the magnitude."), false;

    if (p->use_mask) {
        mask_from_magnitude(mag, mask, s.nx, s.ny, s.nz, float(p->background), p->smooth_mask);
        if (p->mask_nregions > 0 || p->mask_nvoids >= 0)
            mask_regions(mask, s.nx, s.ny, s.nz, p->mask_nregions, p->mask_nvoids, p->mask_2d);
    } else {
        std::memset(mask, 1, npix);
    }

    if (p->pre_on) {
        int bad = s.volume ? pre_filter_3d(images, mask, p, &p->pre_filter)
                           : pre_filter(images, mask, p, &p->pre_filter);
        if (bad) return false;
    }
    if (p->gdc_flag) global_dc_removal(images, mask, int(npix), nimages);
    if (p->pre_on && p->meanx2_out) {
        float* temp = nullptr;
        for (int i = 0; i < nimages; ++i)
            store_image(images + i * npix, p, 0, &temp, p->meanx2_out, i, nimages);
        mem_free(&temp, 0);
    }
    if (p->meanx2_flag) mean_x2_filter(p, images, mask, pass, npasses);
    if (p->ldc_flag) local_dc_removal(p, images, mask, pass, npasses);

    if (p->magmask_out) {
        float* filled = nullptr;
        if (fill_outside_with_mean(mag, mask, s.nx, int(npix / s.nx), &filled)) {
            float* temp = nullptr;
            store_image(filled, p, 0, &temp, p->magmask_out, pass, npasses);
            mem_free(&temp, 0);
            mem_free(&filled, 1);
        }
    }

    // The Z-only filter separates waves by the sign of the time frequency: raw offsets only.
    if (s.volume && p->zonly_on && !p->complex_in) {
        if (zonly_filter(stack, p)) return false;
        store_offsets(p, stack, mask, npix, p->zonly_out, 0, pass, npasses);
    }
    auto extract = [&]() {
        if (p->complex_in) return true;
        return (s.volume
                    ? phase_offset_filtering_3d(stack, s.nx, s.ny, s.nz, p->nt, p->harmonic_number)
                    : phase_offset_filtering(stack, s.nx, s.ny, p->nt, p->harmonic_number)) == 0;
    };
    auto direction = [&](int mode) {
        if (!p->dirf_on) return true;
        float* data = mode == 1 ? harmonic : stack;
        if ((s.volume ? direction_filter(data, p, mode) : direction_filter_2d(data, p, mode)))
            return false;
        if (!p->dirf_out) return true;
        if (mode == 1) return dirf_images(harmonic, mask, p, pass, npasses) == 0;
        store_offsets(p, stack, mask, npix, p->dirf_out, p->dirf_mask, pass, npasses);
        return true;
    };
    bool ordinary =
        p->lfe_noft == 0 && (!p->dirf_on || !p->dirf_all || p->complex_in || !p->dirf_out);
    if (ordinary) {
        if (!extract() || !direction(1)) return false;
    } else {
        if (!direction(0)) return false;
        if (p->lfe_noft && p->lfe_on) {
            size_t n = npix * p->nt;
            mem_allocate(lfe_stack, sizeof(float), uint32_t(n), 0);
            std::memcpy(*lfe_stack, stack, sizeof(float) * n);
        }
        if (!extract()) return false;
    }
    std::memcpy(pair, harmonic, sizeof(float) * 2 * npix);
    mem_free(&stack, 0);

    if (p->mid_on) {
        int bad = s.volume ? mid_filter_3d(pair, mask, p, &p->mid_filter)
                           : mid_filter(pair, mask, p, &p->mid_filter);
        if (bad) return false;
    }
    if (p->ninterp > 0 && p->interp_out && interp_images(pair, mask, p, pass, npasses))
        return false;
    if (p->lfe_noft == 0) harmonic_outputs(p, pair, nullptr, amp2, mask, pass, npasses);
    if (p->r1i1_out) {
        float* temp = nullptr;
        store_complex(pair, p, 1, &temp, p->r1i1_out);
        mem_free(&temp, 0);
    }
    if (p->snr_on) {
        if (uint8_t* snr = snr_maps(pair, mask, p)) {
            mem_free(&p->aux_mask, 1);
            p->aux_mask = snr;
        }
    }
    return true;
}

void store_mask_outputs(wave_params* p, const Shape& s, float* mag, uint8_t* mask) {
    apply_mask(mag, mask, int(s.npix));
    store_byte_image(mask, p, p->mask_out);
    if (p->lfe_on && p->lfe_stack_out) {
        // The last plane of the estimate stack is the mask.
        float *plane = nullptr, *temp = nullptr;
        mem_allocate(&plane, sizeof(float), uint32_t(s.npix), 0);
        for (size_t i = 0; i < s.npix; ++i) plane[i] = mask[i] ? 1.0f : 0.0f;
        int pass = p->angle * p->ncomponents + p->component;
        int npasses = std::max(p->ncomponents * p->nangles, 1);
        store_image(plane, p, 0, &temp, p->lfe_stack_out, pass * 6 + 5, npasses * 6);
        mem_free(&temp, 0);
        mem_free(&plane, 0);
    }
}

void run_1axis(wave_params* p, const Shape& s) {
    int level = mem_next_level();
    run_progress(-1, 0, 0, p->component, p->ncomponents, p->angle, p->nangles);
    int pass = p->angle * p->ncomponents + p->component;
    int npasses = p->ncomponents * p->nangles;
    float *mag = nullptr, *pair = nullptr, *lfe_stack = nullptr, *temp = nullptr;
    uint8_t* mask = nullptr;
    mem_allocate(&mag, sizeof(float), uint32_t(s.npix), 0);
    mem_allocate(&mask, 1, uint32_t(s.npix), 0);
    mem_allocate(&pair, sizeof(float), uint32_t(2 * s.npix), 0);
    if (condition_component(p, s, mag, mask, pair, &lfe_stack, nullptr, pass, npasses)) {
        if (p->lfe_on) {
            float* data = p->lfe_noft ? lfe_stack : pair;
            int ncomp = lfe_ncomp(p, s.volume);
            if (s.volume)
                lfe_3d_1axis(p, data, mask, p->aux_mask, ncomp, &temp);
            else
                lfe_2d_1axis(p, data, mask, p->aux_mask, ncomp, &temp);
        }
        if (p->pg_on) {
            if (s.volume)
                pg_3d_1axis(p, pair, mask, p->aux_mask, &temp);
            else
                pg_2d_1axis(p, pair, mask, p->aux_mask, &temp);
        }
        store_mask_outputs(p, s, mag, mask);
        if (p->mf_on) (s.volume ? mf_3d : mf_2d)(p, pair, mask, p->aux_mask);
        if (p->di_on)
            (s.volume ? direct_3d_1axis : direct_2d_1axis)(p, pair, mask, p->aux_mask, &temp);
    }
    mem_free_level(level, 0);
    mem_free(&p->aux_mask, 1);
}

void run_XYZ(wave_params* p, const Shape& s) {
    int level = mem_next_level();
    run_progress(-1, 0, 0, p->component, p->ncomponents, p->angle, p->nangles);
    float *mag = nullptr, *pairs = nullptr, *amp2 = nullptr, *lfe_stack = nullptr, *temp = nullptr;
    uint8_t* mask = nullptr;
    mem_allocate(&mag, sizeof(float), uint32_t(s.npix), 0);
    mem_allocate(&mask, 1, uint32_t(s.npix), 0);
    mem_allocate(&pairs, sizeof(float), uint32_t(6 * s.npix), 0);
    mem_allocate(&amp2, sizeof(float), uint32_t(3 * s.npix), 0);
    int component = p->component;
    bool ok = true;
    for (int c = 0; c < 3 && ok; ++c) {
        p->component = c;
        ok = condition_component(p, s, mag, mask, pairs + 2 * c * s.npix, &lfe_stack,
                                 amp2 + c * s.npix, c, 3);
    }
    p->component = component;
    if (ok) {
        if (p->lfe_on) {
            float* data = p->lfe_noft ? lfe_stack : pairs;
            (s.volume ? lfe_3d_XYZ : lfe_2d_XYZ)(p, data, mask, amp2, p->aux_mask, &temp);
        }
        if (p->pg_on) (s.volume ? pg_3d_XYZ : pg_2d_XYZ)(p, pairs, mask);
        store_mask_outputs(p, s, mag, mask);
        if (p->mf_on) (s.volume ? mf_3d_XYZ : mf_2d_XYZ)(p, pairs, mask);
        if (p->di_on) (s.volume ? direct_3d_XYZ : direct_2d_XYZ)(p, pairs, mask);
    }
    mem_free_level(level, 0);
    mem_free(&p->aux_mask, 1);
}

Shape shape(const char* name, const wave_params* p, bool volume) {
    int nz = volume ? p->nz : 1;
    return {name, volume, p->nx, p->ny, nz, size_t(p->nx) * p->ny * nz};
}

bool usable(const wave_params* p, const char* name) {
    if (p && p->nx > 0 && p->ny > 0 && p->nz > 0 && p->nt > 0) return true;
    std::string text = wave_fmt("%s: Invalid image size.\n", name);
    wave_warn(WF_CHAIN, text.c_str(), text.c_str());
    return false;
}

}  // namespace

void wave_2d_1axis(wave_params* p) {
    if (usable(p, "wave_2d_1axis")) run_1axis(p, shape("wave_2d_1axis", p, false));
}

void wave_2d_XYZ(wave_params* p) {
    if (usable(p, "wave_2d_XYZ")) run_XYZ(p, shape("wave_2d_XYZ", p, false));
}

void wave_3d_1axis(wave_params* p) {
    if (usable(p, "wave_3d_1axis")) run_1axis(p, shape("wave_3d_1axis", p, true));
}

void wave_3d_XYZ(wave_params* p) {
    if (usable(p, "wave_3d_XYZ")) run_XYZ(p, shape("wave_3d_XYZ", p, true));
}
