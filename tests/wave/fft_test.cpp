#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "tests/peer.h"
#include "wave/fft.h"
#include "wave/messages.h"

namespace {

std::vector<float> noise(size_t n, unsigned seed) {
    std::mt19937 gen(seed);
    std::uniform_real_distribution<float> d(-1.0f, 1.0f);
    std::vector<float> v(n);
    for (float& x : v) x = d(gen);
    return v;
}

float max_diff(const std::vector<float>& a, const std::vector<float>& b) {
    float m = 0.0f;
    for (size_t i = 0; i < a.size(); ++i) m = std::max(m, std::fabs(a[i] - b[i]));
    return m;
}

}  // namespace

TEST(Fourier, InverseAfterForwardRestoresLinesOfOddEvenAndPrimeLength) {
    for (int n : {1, 2, 7, 16, 97, 120, 251}) {
        auto v = noise(2 * n, n);
        auto orig = v;
        ASSERT_EQ(cvfft(v.data(), 1, n, 1), 0);
        ASSERT_EQ(cvfft(v.data(), 1, n, -1), 0);
        EXPECT_LT(max_diff(v, orig), 2e-6f * std::log2(n + 1) + 1e-6f) << n;
    }
}

TEST(Fourier, StridedLineMatchesContiguous) {
    const int n = 13, stride = 3;
    auto v = noise(2 * n * stride, 3);
    std::vector<float> line(2 * n);
    for (int i = 0; i < n; ++i) std::memcpy(&line[2 * i], &v[2 * i * stride], 8);
    cvfft(line.data(), 1, n, 1);
    cvfft(v.data(), stride, n, 1);
    for (int i = 0; i < n; ++i) {
        EXPECT_FLOAT_EQ(v[2 * i * stride], line[2 * i]);
        EXPECT_FLOAT_EQ(v[2 * i * stride + 1], line[2 * i + 1]);
    }
}

TEST(Fourier, ScaleModesOfTheForwardTransform) {
    const int n = 16;
    struct Case {
        float mode, expected_dc;
    } cases[] = {{0.0f, 16.0f}, {1.0f, 1.0f}, {2.0f, 4.0f}, {8.0f, 2.0f}};
    for (auto c : cases) {
        std::vector<float> v(2 * n, 0.0f);
        for (int i = 0; i < n; ++i) v[2 * i] = 1.0f;
        fwd_scale = c.mode;
        cvfft(v.data(), 1, n, 1);
        EXPECT_FLOAT_EQ(v[0], c.expected_dc) << c.mode;
    }
    fwd_scale = 0.0f;
}

TEST(Fourier, Volume3dRoundTripsAndNegativeSizesLeaveAxesAlone) {
    struct Case {
        int nx, ny, nz, flip;
    } cases[] = {{8, 6, 4, 1}, {7, 5, 3, 1}, {13, 11, 2, 0}, {1, 9, 5, 1}, {1, 1, 17, 1}};
    for (auto c : cases) {
        flip_flag = c.flip;
        size_t n = size_t(c.nx) * c.ny * c.nz;
        auto v = noise(2 * n, c.nx + c.ny);
        auto orig = v;
        GENERAL_cvfft_3d(v.data(), c.nx, c.ny, c.nz, 1);
        GENERAL_cvfft_3d(v.data(), c.nx, c.ny, c.nz, -1);
        EXPECT_LT(max_diff(v, orig), 1e-5f) << c.nx << "x" << c.ny << "x" << c.nz;
    }
    flip_flag = 1;
    // Only y transformed: every column is a 1-D transform, rows along x untouched by x.
    const int nx = 5, ny = 8, nz = 3;
    auto v = noise(2 * nx * ny * nz, 9);
    auto expect = v;
    for (int z = 0; z < nz; ++z)
        for (int x = 0; x < nx; ++x) cvfft(expect.data() + 2 * (z * nx * ny + x), nx, ny, 1);
    BASE_cvfft_3d(v.data(), -nx, ny, -nz, 1);
    EXPECT_LT(max_diff(v, expect), 1e-5f);
}

// Rows and the flip blocks go through batched plans; they must give what one strided line at
// a time gives, whatever the block width leaves over, the buffer's alignment or the zero-line
// rule.
TEST(Fourier, BatchedAxesMatchLineByLineTransforms) {
    const int nx = 13, ny = 11, nz = 5;
    const size_t n = size_t(nx) * ny * nz;
    struct Case {
        int cache, offset, skip;
    } cases[] = {{1, 0, 0}, {1, 2, 0}, {64, 2, 0}, {1, 0, 1}, {3, 2, 1}};
    for (auto c : cases)
        for (int dir : {1, -1}) {
            auto held = noise(2 * n + c.offset, c.cache + c.offset);
            std::fill_n(held.begin() + c.offset + 2 * nx, 2 * nx, 0.0f);  // one zero row
            float* v = held.data() + c.offset;
            const int axes[3][3] = {{nx, -ny, -nz}, {-nx, ny, -nz}, {-nx, -ny, nz}};
            for (const auto& a : axes) {
                std::vector<float> expect(v, v + 2 * n);
                if (a[0] > 0)
                    for (int r = 0; r < ny * nz; ++r) cvfft(expect.data() + 2 * r * nx, 1, nx, dir);
                if (a[1] > 0)
                    for (int z = 0; z < nz; ++z)
                        for (int x = 0; x < nx; ++x)
                            cvfft(expect.data() + 2 * (z * nx * ny + x), nx, ny, dir);
                if (a[2] > 0)
                    for (int i = 0; i < nx * ny; ++i)
                        cvfft(expect.data() + 2 * i, nx * ny, nz, dir);
                cache_kb = c.cache;
                skip_zero_lines = c.skip;
                ASSERT_EQ(BASE_cvfft_3d(v, a[0], a[1], a[2], dir), 0);
                skip_zero_lines = 0;
                std::vector<float> got(v, v + 2 * n);
                EXPECT_LT(max_diff(got, expect), 2e-5f)
                    << "cache " << c.cache << " offset " << c.offset << " skip " << c.skip
                    << " dir " << dir << " axes " << a[0] << "," << a[1] << "," << a[2];
            }
        }
    cache_kb = 0;
    fft_cleanup();
}

TEST(Fourier, VolumeResultsDoNotDependOnTheNumberOfThreads) {
    const int nx = 66, ny = 45, nz = 25;  // above the size that brings in threads
    const auto input = noise(2 * size_t(nx) * ny * nz, 21);
    const int threads = omp_get_max_threads();
    for (int dir : {1, -1}) {
        std::vector<std::vector<float>> out;
        for (int t : {1, 3}) {
            omp_set_num_threads(t);
            out.push_back(input);
            ASSERT_EQ(GENERAL_cvfft_3d(out.back().data(), nx, ny, nz, dir), 0);
        }
        EXPECT_EQ(std::memcmp(out[0].data(), out[1].data(), sizeof(float) * input.size()), 0)
            << "dir " << dir;
        EXPECT_GT(max_diff(out[0], input), 1.0f);
    }
    omp_set_num_threads(threads);
}

TEST(Fourier, General3dMatchesNumpyFftn) {
    const int nx = 6, ny = 5, nz = 7;
    size_t n = size_t(nx) * ny * nz;
    auto v = noise(2 * n, 11);
    std::string script = "v = np.array(" + peer::Literal(v.data(), v.size()) +
                         ")\nc = (v[0::2] + 1j * v[1::2]).reshape(" + std::to_string(nz) + "," +
                         std::to_string(ny) + "," + std::to_string(nx) +
                         ")\nf = np.fft.fftn(c).ravel()\nfor x in f: print(x.real, x.imag)\n";
    auto ref = peer::Values(script);
    ASSERT_EQ(ref.size(), 2 * n);
    GENERAL_cvfft_3d(v.data(), nx, ny, nz, 1);
    for (size_t i = 0; i < 2 * n; ++i) EXPECT_NEAR(v[i], ref[i], 2e-5 * 20) << i;
}

TEST(Fourier, RealTransformMatchesNumpyRfftAndRoundTrips) {
    const int n = 12;
    auto v = noise(n, 5);
    auto orig = v;
    auto ref = peer::Values("f = np.fft.rfft(np.array(" + peer::Literal(v.data(), n) +
                            "))\nfor x in f: print(x.real, x.imag)\n");
    ASSERT_EQ(ref.size(), size_t(n + 2));
    rvfft(v.data(), n, 1);
    EXPECT_NEAR(v[0], ref[0], 1e-5);
    EXPECT_NEAR(v[1], ref[n], 1e-5);  // packed Nyquist
    for (int k = 1; k < n / 2; ++k) {
        EXPECT_NEAR(v[2 * k], ref[2 * k], 1e-5) << k;
        EXPECT_NEAR(v[2 * k + 1], ref[2 * k + 1], 1e-5) << k;
    }
    rvfft(v.data(), n, -1);
    EXPECT_LT(max_diff(v, orig), 1e-5f);

    const int nx = 8, ny = 3, nz = 5;
    std::vector<float> vol(size_t(nx + 2) * ny * nz);
    auto src = noise(size_t(nx) * ny * nz, 6);
    std::copy(src.begin(), src.end(), vol.begin());
    rvfft_3d(vol.data(), nx, ny, nz, 1);
    rvfft_3d(vol.data(), nx, ny, nz, -1);
    vol.resize(src.size());
    EXPECT_LT(max_diff(vol, src), 1e-5f);
    rvfft_cleanup();
}

TEST(Fourier, CalcTableFlipsSinesForTheOtherDirection) {
    float* table = nullptr;
    ASSERT_EQ(calc_table(&table, 8, 1), 0);
    float* first = table;
    EXPECT_NEAR(table[2 * 1 + 1], -std::sin(2 * M_PI / 8), 1e-7);
    ASSERT_EQ(calc_table(&table, 8, -1), 0);
    EXPECT_EQ(table, first);  // same block, no rebuild
    EXPECT_NEAR(table[2 * 1 + 1], std::sin(2 * M_PI / 8), 1e-7);
    ASSERT_EQ(calc_table(&table, 10, -1), 0);
    EXPECT_NEAR(table[2 * 1], std::cos(2 * M_PI / 10), 1e-7);
    std::free(table - 1);
}

TEST(Fourier, ShiftMatchesNumpyFftshiftAndOddSizesReturnANewBlock) {
    struct Case {
        int nx, ny, nz;
    } cases[] = {{4, 6, 2}, {5, 4, 1}, {3, 3, 3}, {8, 1, 1}, {1, 1, 6}};
    for (auto c : cases) {
        size_t n = size_t(c.nx) * c.ny * c.nz;
        auto* buf = static_cast<float*>(std::malloc(sizeof(float) * 2 * n));
        for (size_t i = 0; i < n; ++i) buf[2 * i] = float(i), buf[2 * i + 1] = -float(i);
        auto ref = peer::Values("a = np.arange(" + std::to_string(n) + ").reshape(" +
                                std::to_string(c.nz) + "," + std::to_string(c.ny) + "," +
                                std::to_string(c.nx) +
                                ")\nfor x in np.fft.fftshift(a).ravel(): print(x)\n");
        bool odd = (c.nx > 1 && c.nx % 2) || (c.ny > 1 && c.ny % 2) || (c.nz > 1 && c.nz % 2);
        float* out = fft_shift_3d(buf, c.nx, c.ny, c.nz);
        ASSERT_NE(out, nullptr);
        EXPECT_EQ(out != buf, odd);
        ASSERT_EQ(ref.size(), n);
        for (size_t i = 0; i < n; ++i) {
            EXPECT_EQ(out[2 * i], float(ref[i]));
            EXPECT_EQ(out[2 * i + 1], -float(ref[i]));
        }
        std::free(out);
    }
    float one[2] = {1, 2};
    EXPECT_EQ(fft_shift_2d(one, 1, 1), one);
    EXPECT_EQ(fft_shift_3d(one, 0, 1, 1), nullptr);
    fft_cleanup();
}

TEST(FourierDeathTest, FatalTextsExitWithStatusMinusOne) {
    EXPECT_EXIT(wave_fatal("BASE_cvfft_3d: cvfft(x) error."), testing::ExitedWithCode(255),
                "\nBASE_cvfft_3d: cvfft\\(x\\) error. \n");
}
