// The engine's one parameter record, filled by the inversion sheet and handed by pointer to
// every entry point, and the record of one pre, mid or post filter. Plain data: the engine
// never owns what the output handles point at; a null handle means "not wanted".
#pragma once

#include <cstdint>

// An output of the chain, opaque to the engine; the driver's store services interpret it.
using wave_output = void*;

// Filter types: below 0 none; 0 spatial mean; 1 spatial median; 2 Gaussian LP; 3 Gaussian HP;
// 4 Gaussian BP; 5 Butterworth LP; 6 Butterworth HP; 7 Butterworth BP.
struct filter_spec {
    int32_t type = -1;
    int32_t res[3] = {3, 3, 3};
    float cut[2] = {0.0f, 0.0f};
    int32_t order = 2;
};

struct wave_params {
    int32_t xyz = 0;
    int32_t complex_in = 0;
    int32_t complex_split = 0;
    int32_t nx = 0, ny = 0, nz = 1;
    int32_t nt = 1;
    int32_t ncopies = 1;
    int32_t component = 0, ncomponents = 1;
    int32_t angle = 0, nangles = 1;
    char data_name[3][128] = {};
    int32_t data_index[3] = {};
    char mag_name[128] = {};
    int32_t mag_index = 0;
    int32_t use_mask = 0;
    float fov[3] = {0.24f, 0.24f, 0.2f};
    int32_t type_code = 0;  // 8 marks 8-bit source data
    float gain = 1.0f;
    float mech_freq = 60.0f;
    int32_t wedge_on = 0;
    float phase_min = -3.14f, phase_max = 3.14f;
    int32_t background = 40;
    int32_t smooth_mask = 0;
    int32_t mask_nregions = 0, mask_nvoids = -1, mask_2d = 0;
    wave_output mask_out = nullptr, magmask_out = nullptr;
    int32_t ninterp = 8;
    wave_output interp_out = nullptr;
    int32_t interp_mask = 0;
    int32_t harmonic_number = 1;
    int32_t amp_divide = 0, amp_clip = 0;
    float amp_threshold = 0.0f;
    int32_t amp_phase_out = 0;
    wave_output r1i1_out = nullptr;
    wave_output amplitude_out = nullptr;
    int32_t amp_type = 0;
    float menc = 0.0f;
    int32_t gradient_pairs = 1;
    float gradient_amp = 1.0f;

    int32_t lfe_on = 0, lfe_nbands = 6, lfe_nd = 0;
    float lfe_base_freq = 1.0f, lfe_octave = 2.0f;
    int32_t lfe_noft = 0, lfe_complex = 0, lfe_2d_of_3d = 0;
    int32_t lfe_weight_on = 0, lfe_weight_win[3] = {5, 5, 5}, lfe_weight_mode = 0;
    wave_output lfe_stack_out = nullptr, lfe_pair_out = nullptr, lfe_icert = nullptr,
                lfe_imu = nullptr, lfe_est = nullptr, lfe_cert = nullptr, lfe_stiff = nullptr;
    int32_t lfe_individual = 0;

    int32_t pg_on = 0, pg_win[3] = {5, 5, 5}, pg_dir_on = 0;
    float pg_dir_angle = 0.0f;
    wave_output pg_est = nullptr, pg_stiff = nullptr, pg_dir = nullptr;
    int32_t pg_mode = 0;

    int32_t di_on = 0, di_2d = 0, di_aide = 0, di_win[3] = {11, 11, 5}, di_order[3] = {3, 3, 3};
    int32_t di_sg_mode = 0;
    float di_regular = 1e-6f;
    int32_t di_type = 3;
    wave_output di_stack_out = nullptr, di_stiff = nullptr, di_atten = nullptr, di_cmu = nullptr;

    int32_t mf_on = 0, mf_win[3] = {17, 17, 1};
    float mf_regular = 1e-6f;
    wave_output mf_stack_out = nullptr, mf_stiff = nullptr, mf_atten = nullptr, mf_cmu = nullptr;

    int32_t dirf_on = 0, dirf_mode = 0;
    float dirf_angle = 0.0f, dirf_vector[3] = {0.0f, 0.0f, 1.0f};
    wave_output dirf_out = nullptr;
    int32_t dirf_all = 0, dirf_mask = 0;
    float dirf_cut[2] = {0.0f, 0.0f};
    int32_t dirf_order = 0, dirf_use[3] = {1, 1, 1}, dirf_ncos = 1;

    int32_t zonly_on = 0;
    float zonly_arg = 0.0f, zonly_cut[2] = {0.0f, 0.0f};
    int32_t zonly_order = 0;
    wave_output zonly_out = nullptr;

    int32_t snr_on = 0, snr_mask = 0, snr_mask_pattern = 0;
    float snr_bg_sd = 0.0f, snr_amp_scale = 0.0f, snr_threshold = 0.0f;
    int32_t snr_win[3] = {3, 3, 3}, snr_bg_erode[3] = {10, 10, 10};
    wave_output snr_mask_out = nullptr, snr_mag_out = nullptr, snr_pd_out = nullptr;

    // Mask for the median of regularisation; registered in the allocation table.
    uint8_t* aux_mask = nullptr;

    int32_t gdc_flag = 0, ldc_flag = 0, ldc_win[2] = {25, 25};
    wave_output ldc_out = nullptr, ldcr_out = nullptr;
    int32_t meanx2_flag = 0;
    wave_output meanx2_out = nullptr;

    int32_t pre_on = 0;
    filter_spec pre_filter;
    int32_t mid_on = 0;
    filter_spec mid_filter;
    int32_t post_on = 0;
    filter_spec post_filter;
};
