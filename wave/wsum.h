// Running weighted sums addressed by sequence numbers, which survive between engine calls so
// that results of components, directions and offsets can be averaged. A holder is a u32 that
// ADD_ functions fill when it is 0. Functions return null for success or the error text.
#pragma once

#include <cstdint>

struct wsum_rec {
    uint32_t seq;
    float* sum_buf;
    int32_t vol_size;  // floats in one volume
    int32_t count;     // additions so far
};

const char* allocate_sequence(uint32_t seq, int32_t vol_size);
const char* free_sequence(uint32_t* holder);
uint32_t new_sequence_number();
// Index (from 1) of the record of `seq`, or 0.
int find_sequence(uint32_t seq);
float* sequence_buffer(uint32_t seq);
// Frees every sequence (end of a run).
void free_all_sequences();

const char* ADD_weighted_sum(uint32_t* holder, const float* data, const float* weight, int n,
                             int invert, int reset);
const char* ADD_weighted_sum_inv_cmu(uint32_t* holder, const float* re, const float* im,
                                     const float* weight, int n, int reset);
// Output holders that are null get a malloc'ed buffer (the caller frees it).
const char* CALC_weighted_avg(uint32_t* holder, uint32_t weight_seq, float** out_holder, int n,
                              int invert, int free_after);
const char* CALC_weighted_avg_inv_cmu(uint32_t* holder, uint32_t weight_seq, float** out_re_holder,
                                      float** out_im_holder, int n, int free_after);
const char* CALC_scaled_sum(uint32_t* holder, float** out_holder, float scale, int free_after);
const char* CALC_sqrt_of_sum(uint32_t* holder, float** out_holder, float scale, int free_after);
// Wave speed squared and attenuation from a complex modulus that already contains w^2;
// with `im` null, `re` is interleaved.
void CALC_cmu_speed(const float* re, const float* im, float* speed2, float* atten, int n,
                    float mech_freq);
