#include "wave/estimator_output.h"

#include <algorithm>

#include "wave/band_filter.h"
#include "wave/driver.h"
#include "wave/image_buffers.h"

int estimator_pass(const wave_params* p) { return p->angle * p->ncomponents + p->component; }

int estimator_passes(const wave_params* p) { return std::max(p->ncomponents * p->nangles, 1); }

void estimator_store(const float* buf, wave_params* p, float** temp, wave_output out, int plane,
                     int nplanes) {
    if (!out) return;
    store_image(buf, p, 0, temp, out, estimator_pass(p) * nplanes + plane,
                estimator_passes(p) * nplanes);
}

void estimator_post(float* images, int nimages, const uint8_t* mask, wave_params* p, int volume) {
    if (p->post_on) apply_filter_spec(images, nimages, 0, mask, p, &p->post_filter, volume);
}

void estimator_aux_mask(float* stiff, const uint8_t* aux_mask, const wave_params* p, size_t n) {
    if (aux_mask && p->snr_mask && (!p->use_mask || estimator_passes(p) == 1))
        apply_mask(stiff, aux_mask, int(n));
}
