#include "wave/wsum.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <numbers>

#include "wave/mem.h"

namespace {

wsum_rec* g_recs = nullptr;  // g_recs[0] unused: indices run from 1
int g_count = 0;
int g_capacity = 0;
uint32_t g_last_seq = 0;

constexpr int kGrowth = 16;

wsum_rec* record(uint32_t seq) {
    int i = find_sequence(seq);
    return i ? &g_recs[i] : nullptr;
}

// The sum of *holder, made of `size` floats on first use; `reset` is set for a new one.
const char* open_sum(uint32_t* holder, int size, int* reset, wsum_rec** rec, const char* alloc_msg,
                     const char* invalid_msg, const char* size_msg) {
    if (*holder == 0) {
        uint32_t seq = new_sequence_number();
        if (allocate_sequence(seq, size)) return alloc_msg;
        *holder = seq;
        *reset = 1;
    }
    *rec = record(*holder);
    if (!*rec) return invalid_msg;
    if ((*rec)->vol_size != size) return size_msg;
    if (*reset) {
        std::memset((*rec)->sum_buf, 0, sizeof(float) * size);
        (*rec)->count = 0;
    }
    return nullptr;
}

float* output(float** holder, size_t n) {
    if (!*holder) *holder = static_cast<float*>(engine_malloc(sizeof(float) * n));
    return *holder;
}

}  // namespace

int find_sequence(uint32_t seq) {
    if (seq == 0) return 0;
    for (int i = 1; i <= g_count; ++i)
        if (g_recs[i].seq == seq) return i;
    return 0;
}

float* sequence_buffer(uint32_t seq) {
    wsum_rec* r = record(seq);
    return r ? r->sum_buf : nullptr;
}

uint32_t new_sequence_number() {
    do ++g_last_seq;
    while (g_last_seq == 0 || find_sequence(g_last_seq));
    return g_last_seq;
}

const char* allocate_sequence(uint32_t seq, int32_t vol_size) {
    if (find_sequence(seq)) return "allocate_sequence: Duplicate sequence number.";
    if (g_count + 1 >= g_capacity) {
        bool first = !g_recs;
        auto* grown =
            static_cast<wsum_rec*>(engine_malloc(sizeof(wsum_rec) * (g_capacity + kGrowth)));
        if (!grown)
            return first ? "allocate_sequence: Unable to allocate wsum_rec array."
                         : "allocate_sequence: Unable to reallocate wsum_rec array.";
        if (g_recs) std::memcpy(grown, g_recs, sizeof(wsum_rec) * (g_count + 1));
        std::free(g_recs);
        g_recs = grown;
        g_capacity += kGrowth;
    }
    auto* buf = static_cast<float*>(engine_malloc(sizeof(float) * size_t(vol_size)));
    if (!buf) return "allocate_sequence: Unable to allocate sum_buf array.";
    g_recs[++g_count] = {seq, buf, vol_size, 0};
    return nullptr;
}

const char* free_sequence(uint32_t* holder) {
    if (*holder == 0) return nullptr;
    int i = find_sequence(*holder);
    if (!i) return "free_sequence: Invalid sequence number.";
    std::free(g_recs[i].sum_buf);
    std::memmove(g_recs + i, g_recs + i + 1, sizeof(wsum_rec) * (g_count - i));
    --g_count;
    *holder = 0;
    if (g_count == 0) {
        std::free(g_recs);
        g_recs = nullptr;
        g_capacity = 0;
    }
    return nullptr;
}

void free_all_sequences() {
    while (g_count > 0) {
        uint32_t seq = g_recs[g_count].seq;
        free_sequence(&seq);
    }
}

const char* ADD_weighted_sum(uint32_t* holder, const float* data, const float* weight, int n,
                             int invert, int reset) {
    wsum_rec* r;
    if (const char* e =
            open_sum(holder, n, &reset, &r, "ADD_weighted_sum: Unable to allocate new sequence.",
                     "ADD_weighted_sum: Invalid sequence number.",
                     "ADD_weighted_sum: Mismatched sequence vol_size."))
        return e;
    float* sum = r->sum_buf;
    for (int i = 0; i < n; ++i) {
        float w = weight ? weight[i] : 1.0f;
        if (!invert)
            sum[i] += weight ? data[i] * w : data[i];
        else if (data[i] != 0.0f)
            sum[i] += w / data[i];
    }
    ++r->count;
    return nullptr;
}

const char* ADD_weighted_sum_inv_cmu(uint32_t* holder, const float* re, const float* im,
                                     const float* weight, int n, int reset) {
    wsum_rec* r;
    if (const char* e = open_sum(holder, 2 * n, &reset, &r,
                                 "ADD_weighted_sum_inv_cmu: Unable to allocate new sequence.",
                                 "ADD_weighted_sum_inv_cmu: Invalid sequence number.",
                                 "ADD_weighted_sum_inv_cmu: Mismatched sequence vol_size."))
        return e;
    float* sre = r->sum_buf;
    float* sim = r->sum_buf + n;
    for (int i = 0; i < n; ++i) {
        if (re[i] == 0.0f && im[i] == 0.0f) continue;
        float w = weight ? weight[i] : 1.0f;
        float m2 = re[i] * re[i] + im[i] * im[i];
        sre[i] += w * re[i] / m2;
        sim[i] -= w * im[i] / m2;
    }
    ++r->count;
    return nullptr;
}

const char* CALC_weighted_avg(uint32_t* holder, uint32_t weight_seq, float** out_holder, int n,
                              int invert, int free_after) {
    wsum_rec* r = record(*holder);
    if (!r) return "CALC_weighted_avg: NULL data sum array.";
    const float* weights = nullptr;
    if (weight_seq) {
        wsum_rec* w = record(weight_seq);
        if (!w) return "CALC_weighted_avg: NULL weight sum array.";
        if (w->vol_size != r->vol_size) return "CALC_weighted_avg: Mismatched array sizes.";
        weights = w->sum_buf;
    } else if (r->count < 0.5) {
        return "CALC_weighted_avg: Invalid straight average N.";
    }
    float* out = output(out_holder, n);
    if (!out) return "CALC_weighted_avg: Unable to allocate output_buf.";
    const float* sum = r->sum_buf;
    float count = float(r->count);
    for (int i = 0; i < n; ++i) {
        if (invert) {
            float top = weights ? weights[i] : count;
            out[i] = sum[i] != 0.0f ? top / sum[i] : 0.0f;
        } else if (weights) {
            out[i] = weights[i] != 0.0f ? sum[i] / weights[i] : 0.0f;
        } else {
            out[i] = sum[i] / count;
        }
    }
    if (free_after) free_sequence(holder);
    return nullptr;
}

const char* CALC_weighted_avg_inv_cmu(uint32_t* holder, uint32_t weight_seq, float** out_re_holder,
                                      float** out_im_holder, int n, int free_after) {
    wsum_rec* r = record(*holder);
    if (!r) return "CALC_weighted_avg_inv_cmu: NULL mu sum array.";
    const float* weights = nullptr;
    if (weight_seq) {
        wsum_rec* w = record(weight_seq);
        if (!w) return "CALC_weighted_avg_inv_cmu: NULL weight sum array.";
        if (2 * w->vol_size != r->vol_size)
            return "CALC_weighted_avg_inv_cmu: Mismatched array sizes.";
        weights = w->sum_buf;
    } else if (r->count < 0.5) {
        return "CALC_weighted_avg_inv_cmu: Invalid straight average N.";
    }
    float* out_re = output(out_re_holder, n);
    if (!out_re) return "CALC_weighted_avg_inv_cmu: Unable to allocate Out_mu_real.";
    float* out_im = output(out_im_holder, n);
    if (!out_im) return "CALC_weighted_avg_inv_cmu: Unable to allocate Out_mu_imag.";
    const float* sre = r->sum_buf;
    const float* sim = r->sum_buf + n;
    for (int i = 0; i < n; ++i) {
        float w = weights ? weights[i] : float(r->count);
        float a = w != 0.0f ? sre[i] / w : 0.0f;
        float b = w != 0.0f ? sim[i] / w : 0.0f;
        float m2 = a * a + b * b;
        out_re[i] = m2 > 0.0f ? a / m2 : 0.0f;
        out_im[i] = m2 > 0.0f ? -b / m2 : 0.0f;
    }
    if (free_after) free_sequence(holder);
    return nullptr;
}

const char* CALC_scaled_sum(uint32_t* holder, float** out_holder, float scale, int free_after) {
    wsum_rec* r = record(*holder);
    if (!r) return "CALC_scaled_sum: NULL data sum array.";
    float* out = output(out_holder, r->vol_size);
    if (!out) return "CALC_scaled_sum: Unable to allocate output_buf.";
    if (scale == 1.0f)
        std::memcpy(out, r->sum_buf, sizeof(float) * r->vol_size);
    else
        for (int i = 0; i < r->vol_size; ++i) out[i] = scale * r->sum_buf[i];
    if (free_after) free_sequence(holder);
    return nullptr;
}

const char* CALC_sqrt_of_sum(uint32_t* holder, float** out_holder, float scale, int free_after) {
    wsum_rec* r = record(*holder);
    if (!r) return "CALC_sqrt_of_sum: NULL data sum array.";
    float* out = output(out_holder, r->vol_size);
    if (!out) return "CALC_sqrt_of_sum: Unable to allocate output_buf.";
    for (int i = 0; i < r->vol_size; ++i) {
        float v = scale * r->sum_buf[i];
        if (v < 0.0f) return "CALC_sqrt_of_sum: Negative data sum value.";
        out[i] = std::sqrt(v);
    }
    if (free_after) free_sequence(holder);
    return nullptr;
}

void CALC_cmu_speed(const float* re, const float* im, float* speed2, float* atten, int n,
                    float mech_freq) {
    for (int i = 0; i < n; ++i) {
        double a = im ? re[i] : re[2 * i];
        double b = im ? im[i] : re[2 * i + 1];
        speed2[i] = 0.0f;
        atten[i] = 0.0f;
        double m2 = a * a + b * b;
        if (!(m2 > 0.0)) continue;
        double m = std::sqrt(m2);
        if (!(a + m > 0.0)) continue;
        speed2[i] = float(2.0 * m2 / (a + m));
        atten[i] =
            float(std::sqrt(2.0) * std::numbers::pi * mech_freq * b / (std::sqrt(a + m) * m));
    }
}
