// The SNR stage's stored maps and report lines, in verbose and quiet form.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/wave/buffer_driver.h"
#include "wave/mem.h"
#include "wave/messages.h"
#include "wave/snr.h"

namespace {

int g_mag_out, g_pd_out, g_mask_out;

const char* Name(wave_output output) {
    if (output == &g_mag_out) return "snr_mag";
    if (output == &g_pd_out) return "snr_pd";
    return output == &g_mask_out ? "snr_mask" : "other";
}

class SnrOutputs : public ::testing::Test {
  protected:
    void SetUp() override {
        p.nx = p.ny = 24;
        p.snr_on = 1;
        p.type_code = 8;
        p.snr_mask = 1;
        p.snr_bg_erode[0] = p.snr_bg_erode[1] = p.snr_bg_erode[2] = 2;
        p.snr_mag_out = &g_mag_out;
        p.snr_pd_out = &g_pd_out;
        p.snr_mask_out = &g_mask_out;
        mask.assign(24 * 24, 0);
        for (int y = 8; y < 16; ++y)
            for (int x = 8; x < 16; ++x) mask[y * 24 + x] = 1;
        // A background that varies about 0.8 around an object of `object`.
        SetObject(100.0f);
        previous_ = set_snr_output_namer(Name);
        quiet_ = wave_quiet[WF_SNR];
    }
    void TearDown() override {
        set_snr_output_namer(previous_);
        wave_quiet[WF_SNR] = quiet_;
        mem_free_all(0);
    }
    void SetObject(float object) {
        d.magnitudes.resize(24 * 24);
        for (size_t i = 0; i < d.magnitudes.size(); ++i)
            d.magnitudes[i] = mask[i] ? object : float(i % 3);
    }

    buffer_driver d;
    wave_params p;
    std::vector<uint8_t> mask;
    std::vector<float> pair = std::vector<float>(2 * 24 * 24, 1.0f);
    wave_output_namer previous_ = nullptr;
    int quiet_ = 1;
};

TEST_F(SnrOutputs, MapsAreStoredInTwoPlanesWithTheirLines) {
    wave_quiet[WF_SNR] = 0;
    ::testing::internal::CaptureStdout();
    ASSERT_NE(snr_maps(pair.data(), mask.data(), &p), nullptr);
    const std::string out = ::testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("\nSNR Output file: snr_mask "), std::string::npos) << out;
    EXPECT_NE(out.find("\nSNR Output magnitude file: snr_mag "), std::string::npos) << out;
    EXPECT_NE(out.find("\nSNR Output pd file: snr_pd "), std::string::npos) << out;
    // The mask line comes with the mask, before the maps.
    EXPECT_LT(out.find("SNR Output file"), out.find("SNR Output magnitude file"));
    for (wave_output o : {wave_output(&g_mag_out), wave_output(&g_pd_out)}) {
        ASSERT_EQ(d.images[o].size(), 2u) << Name(o);
        EXPECT_EQ(d.images[o][0], d.images[o][1]) << Name(o);
    }
    // Inside the object the maps have values, outside none.
    EXPECT_GT(d.images[&g_mag_out][0][12 * 24 + 12], 1.0f);
    EXPECT_GT(d.images[&g_pd_out][0][12 * 24 + 12], 0.0f);
    EXPECT_EQ(d.images[&g_pd_out][0][0], 0.0f);
    EXPECT_EQ(d.bytes[&g_mask_out][12 * 24 + 12], 1);
    EXPECT_EQ(mem_count(), 1);
}

TEST_F(SnrOutputs, WithoutPhaseNoiseThePdMapFailsAndTheMaskComesFromMagnitude) {
    // An object darker than the noise: every magnitude SNR below 1, no phase noise.
    SetObject(0.5f);
    p.snr_threshold = 0.0f;
    wave_quiet[WF_SNR] = 1;
    uint8_t* got = snr_maps(pair.data(), mask.data(), &p);
    ASSERT_NE(got, nullptr);
    EXPECT_NE(d.log.find(": Unable to create Phase Difference SNR image. "), std::string::npos)
        << d.log;
    EXPECT_EQ(d.images.count(&g_pd_out), 0u);
    EXPECT_EQ(d.images[&g_mag_out].size(), 2u);
    // A threshold of 0 keeps every pixel of the input mask.
    for (size_t i = 0; i < mask.size(); ++i) EXPECT_EQ(got[i], mask[i]) << i;

    wave_quiet[WF_SNR] = 0;
    ::testing::internal::CaptureStderr();
    ::testing::internal::CaptureStdout();
    snr_maps(pair.data(), mask.data(), &p);
    const std::string out = ::testing::internal::GetCapturedStdout();
    const std::string err = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(err.find(": Unable to create Phase Difference SNR image. "), std::string::npos);
    EXPECT_EQ(out.find("SNR Output pd file"), std::string::npos);
}

TEST_F(SnrOutputs, AnOutputWithoutANamerIsUnnamed) {
    set_snr_output_namer(nullptr);
    p.snr_pd_out = nullptr;
    p.snr_mask = 0;
    wave_quiet[WF_SNR] = 0;
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(snr_maps(pair.data(), mask.data(), &p), nullptr);
    const std::string out = ::testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("\nSNR Output magnitude file: unnamed "), std::string::npos) << out;
    EXPECT_EQ(out.find("SNR Output file"), std::string::npos);
    EXPECT_EQ(out.find("SNR Output pd file"), std::string::npos);
}

}  // namespace
