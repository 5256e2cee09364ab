#include <gtest/gtest.h>

#include <cmath>
#include <new>

#include "tests/wave/buffer_driver.h"
#include "wave/chain.h"
#include "wave/conditioning.h"
#include "wave/mask.h"
#include "wave/mem.h"
#include "wave/messages.h"

namespace {

wave_params small_run(buffer_driver& d, int nx, int ny) {
    wave_params p;
    p.nx = nx;
    p.ny = ny;
    p.nt = 4;
    d.phase.assign(size_t(nx) * ny * p.nt, 0.5f);
    d.magnitude.assign(size_t(nx) * ny, 100.0f);
    return p;
}

}  // namespace

TEST(Chain, AllocationFailureMidStageLeavesNoBlock) {
    buffer_driver d;
    wave_params p = small_run(d, 16, 12);
    // Fail each allocation in turn: the stage must unwind with an empty table every time.
    for (long ok = 0; ok < 4; ++ok) {
        mem_fail_after(ok);
        EXPECT_THROW(wave_2d_1axis(&p), std::bad_alloc) << ok;
        mem_fail_after(-1);
        EXPECT_EQ(mem_count(), 0) << ok;
    }
}

TEST(Chain, FailingStageReportsAndFreesItsLevel) {
    buffer_driver d;
    wave_params p = small_run(d, 16, 12);
    float* kept = nullptr;
    mem_allocate(&kept, sizeof(float), 4, 0);  // the caller's block survives the stage
    p.mf_on = 1;
    wave_2d_1axis(&p);
    // The default 17 x 17 window does not fit a 16 x 12 image.
    const std::string too_big = "\nmatched_filter: Filter window cannot be bigger than image.\n";
    EXPECT_EQ(d.log, too_big);
    EXPECT_EQ(mem_count(), 1);
    wave_3d_XYZ(&p);
    EXPECT_NE(d.log.find(too_big + too_big), std::string::npos);
    EXPECT_EQ(mem_count(), 1);
    mem_free_all(0);

    d.phase.clear();  // a read that fails stops the chain
    d.log.clear();
    wave_2d_XYZ(&p);
    EXPECT_EQ(d.log, "wave_2d_XYZ: unable to read the phase data.\n");
    EXPECT_EQ(mem_count(), 0);

    p.nx = 0;
    d.log.clear();
    wave_3d_1axis(&p);
    EXPECT_EQ(d.log, "wave_3d_1axis: Invalid image size.\n");
}

TEST(Chain, ComplexInputRunsToTheEstimatorsAndStoresTheMask) {
    buffer_driver d;
    wave_params p = small_run(d, 8, 8);
    p.complex_in = 1;
    p.nt = 1;
    p.use_mask = 1;
    d.phase.assign(2 * 64, 1.0f);
    for (int i = 0; i < 32; ++i) d.magnitude[i] = 0.0f;  // lower half outside
    for (int i = 0; i < 64; ++i) d.phase[64 + i] = float(i);
    int mask_target = 0, pair_target = 0;
    p.mask_out = &mask_target;
    p.r1i1_out = &pair_target;
    p.mf_on = 1;
    wave_2d_1axis(&p);
    EXPECT_EQ(d.log, "\nmatched_filter: Filter window cannot be bigger than image.\n");
    EXPECT_EQ(d.images[&pair_target][0], d.phase);  // the pair as read
    ASSERT_EQ(d.bytes[&mask_target].size(), 64u);
    EXPECT_EQ(d.bytes[&mask_target][0], 0);
    EXPECT_EQ(d.bytes[&mask_target][63], 1);
    EXPECT_EQ(mem_count(), 0);
}

TEST(Chain, PairComesFromOffsetPlanesOneAndTwoAndDirectionOutputs) {
    buffer_driver d;
    const int n = 64;
    wave_params p = small_run(d, 8, 8);
    for (size_t i = 0; i < d.phase.size(); ++i) d.phase[i] = float(i % 7) - float(i / n);
    int pair_target = 0, dirf_target = 0;
    p.r1i1_out = &pair_target;
    // Two offsets: no harmonic fits, so the pair is offset 1 and a cleared third plane.
    p.nt = 2;
    d.phase.resize(2 * n);
    wave_2d_1axis(&p);
    std::vector<float> want(d.phase.begin() + n, d.phase.end());
    want.resize(2 * n, 0.0f);
    EXPECT_EQ(d.images[&pair_target][0], want);

    // The direction output: ninterp images of the filtered pair in pair mode, the filtered
    // offsets when the raw stack is filtered first.
    p.nt = 4;
    d.phase.assign(4 * n, 0.0f);
    for (int t = 0; t < 4; ++t)
        for (int i = 0; i < n; ++i)
            d.phase[t * n + i] = float(std::cos(2 * M_PI * (i % 8) / 8.0 - M_PI * t / 2));
    p.dirf_on = 1;
    p.dirf_out = &dirf_target;
    p.dirf_ncos = 0;
    p.dirf_cut[0] = 0.5f;
    p.dirf_cut[1] = 2.0f;  // full gain at their geometric mean, 1 cycle per row
    p.dirf_order = 2;
    p.ninterp = 4;
    wave_2d_1axis(&p);
    EXPECT_EQ(d.log, "");
    EXPECT_EQ(d.images[&dirf_target].size(), 4u);
    d.images.clear();
    p.dirf_all = 1;
    p.nt = 4;
    wave_2d_1axis(&p);
    ASSERT_EQ(d.images[&dirf_target].size(), 4u);
    // A wave of one cycle per row passes the band-pass unchanged, offset by offset.
    for (int t = 0; t < 4; ++t)
        for (int i = 0; i < n; ++i)
            EXPECT_NEAR(d.images[&dirf_target][t][i], d.phase[t * n + i], 1e-5) << t << " " << i;
    EXPECT_EQ(mem_count(), 0);
}

TEST(Conditioning, DisplacementScaleForTheThreeEncodings) {
    wave_params p;
    p.phase_min = -3.14f;
    p.phase_max = 3.14f;
    double r = 2 * M_PI / (double(3.14f) * 2);
    p.menc = 20.0f;
    EXPECT_NEAR(displacement_scale(&p), r * 20.0, 1e-9);
    p.menc = 0.0f;
    p.mech_freq = 100.0f;  // period 10000 us
    p.amp_type = 1;
    p.gradient_pairs = 2;
    p.gradient_amp = 3.0f;
    // h = 5000, T = 2 * 5000
    EXPECT_NEAR(displacement_scale(&p), r * 4 * M_PI * 1e10 / (10000 * 336119.2474834992 * 6),
                1e-6);
    p.amp_type = 0;
    p.gradient_amp = 2.2f;  // q = 184, ramp 184, P8 10000, plateau 5000 - 368
    EXPECT_NEAR(displacement_scale(&p),
                r * M_PI * 1e10 / (2.0 * (4632 + 184) * 106990.079410654 * 2 * 2.2f), 1e-6);
}

TEST(Conditioning, AmplitudeClipAndDivisionWithBothMessageForms) {
    buffer_driver d;
    wave_params p;
    p.nx = 2;
    p.ny = 1;
    float pair[4] = {3.0f, 0.5f, 4.0f, 0.0f};  // amplitudes 5 and 0.5
    uint8_t mask[2] = {1, 1};
    p.amp_clip = 2;
    harmonic_outputs(&p, pair, nullptr, nullptr, mask, 0, 1);
    EXPECT_EQ(d.status, "Suppressing amplitudes larger than 2");
    EXPECT_FLOAT_EQ(pair[0], 3.0f * 2 / 5);
    EXPECT_FLOAT_EQ(pair[2], 4.0f * 2 / 5);
    EXPECT_FLOAT_EQ(pair[1], 0.5f);

    wave_quiet[WF_CHAIN] = 0;
    testing::internal::CaptureStdout();
    harmonic_outputs(&p, pair, nullptr, nullptr, mask, 0, 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Suppressing amplitudes larger than 2.000000\n");
    p.amp_divide = 1;
    testing::internal::CaptureStdout();
    harmonic_outputs(&p, pair, nullptr, nullptr, mask, 0, 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Amplitude Division \n");
    wave_quiet[WF_CHAIN] = 1;
    EXPECT_NEAR(std::hypot(pair[0], pair[2]), 1.0f, 1e-6);
    EXPECT_EQ(mem_count(), 0);
}

TEST(Conditioning, LocalMeanGlobalDcAndFill) {
    // 3 x 3 image, window 3 x 3: the corner mean covers 2 x 2 masked pixels.
    float in[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    uint8_t all[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
    float out[9];
    local_mean_2d(in, all, out, 3, 3, 3, 3);
    EXPECT_FLOAT_EQ(out[0], (1 + 2 + 4 + 5) / 4.0f);
    EXPECT_FLOAT_EQ(out[4], 5.0f);
    local_mean_2d(in, all, out, 3, 3, 99, 99);  // larger than the image: image size
    EXPECT_FLOAT_EQ(out[0], (1 + 2 + 4 + 5) / 4.0f);

    uint8_t none[9] = {};
    float stack[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    global_dc_removal(stack, none, 9, 1);
    for (float v : stack) EXPECT_EQ(v, 0.0f);
    float* filled = nullptr;
    EXPECT_EQ(fill_outside_with_mean(in, none, 3, 3, &filled), nullptr);
    uint8_t two[9] = {1, 0, 0, 0, 0, 0, 0, 0, 1};
    fill_outside_with_mean(in, two, 3, 3, &filled);
    EXPECT_FLOAT_EQ(filled[4], 5.0f);
    EXPECT_FLOAT_EQ(filled[8], 9.0f);
    mem_free_all(0);
}

TEST(Mask, SmoothingNeedsMoreThanFortyAndRegionsKeepTheLargest) {
    const int n = 20;
    std::vector<uint8_t> m(n * n, 0);
    for (int y = 5; y < 14; ++y)
        for (int x = 5; x < 14; ++x) m[y * n + x] = 1;  // 81 at the centre
    mask_smooth_9x9(m.data(), n, n);
    EXPECT_EQ(m[9 * n + 9], 1);
    EXPECT_EQ(m[5 * n + 5], 0);  // corner sees 25
    std::vector<uint8_t> thin(n * n, 0);
    for (int x = 0; x < n; ++x) thin[9 * n + x] = thin[10 * n + x] = thin[11 * n + x] = 1;
    mask_smooth_9x9(thin.data(), n, n);  // 27 at most
    for (uint8_t v : thin) EXPECT_EQ(v, 0);

    // Two blobs (sizes 6 and 2) and a void in the bigger one.
    std::vector<uint8_t> r = {1, 1, 1, 0, 0, 0,  //
                              1, 0, 1, 0, 1, 1,  //
                              1, 1, 1, 0, 0, 0};
    EXPECT_EQ(mask_regions(r.data(), 6, 3, 1, 1, 1, 0), 0);
    std::vector<uint8_t> want = {1, 1, 1, 0, 0, 0, 1, 1, 1, 0, 0, 0, 1, 1, 1, 0, 0, 0};
    EXPECT_EQ(r, want);

    // More than 254 separate regions exhaust the 8-bit labels even after compaction.
    std::vector<uint8_t> dots(64 * 64, 0);
    for (int y = 0; y < 64; y += 2)
        for (int x = 0; x < 64; x += 2) dots[y * 64 + x] = 1;
    auto before = dots;
    EXPECT_EQ(mask_regions(dots.data(), 64, 64, 1, 1, -1, 0), 1);
    EXPECT_EQ(dots, before);
}
