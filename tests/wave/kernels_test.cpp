#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numeric>
#include <vector>

#include "tests/peer.h"
#include "tests/wave/buffer_driver.h"
#include "wave/filter3d.h"
#include "wave/kernels.h"
#include "wave/messages.h"

TEST(SavitzkyGolay, MatchesScipySavgolCoeffs) {
    struct Case {
        int half, order, deriv;
    } cases[] = {{2, 2, 0}, {2, 3, 1}, {3, 4, 2}, {5, 3, 2}, {1, 2, 2}, {4, 8, 0}};
    std::string script;
    for (auto c : cases)
        script += "for x in scipy.signal.savgol_coeffs(" + std::to_string(2 * c.half + 1) + "," +
                  std::to_string(c.order) + ",deriv=" + std::to_string(c.deriv) +
                  ",use='dot'): print(x)\n";
    auto ref = peer::Values(script);
    size_t at = 0;
    for (auto c : cases) {
        int m = 2 * c.half + 1;
        std::vector<float> coef(m);
        ASSERT_EQ(SGcoeff(c.deriv, c.order, c.half, c.half, coef.data()), 0);
        ASSERT_LE(at + m, ref.size());
        for (int i = 0; i < m; ++i)
            EXPECT_NEAR(coef[i], ref[at + i], 1e-5) << c.half << " " << c.order << " " << c.deriv;
        at += m;
    }
}

TEST(SavitzkyGolay, PseudoInverseMatchesNumpyPinv) {
    const int m = 5, n = 3;
    std::vector<double> a(m * n), p(n * m);
    for (int i = 0; i < m * n; ++i) a[i] = std::sin(1.3 * i) + (i % 4);
    std::string lit = "[";
    for (double v : a) lit += std::to_string(v) + ",";
    auto ref = peer::Values("a = np.array(" + lit +
                            "]).reshape(5,3)\nfor x in np.linalg.pinv(a).ravel(): print(x)\n");
    // Same digits in as numpy saw.
    for (double& v : a) v = std::stod(std::to_string(v));
    ASSERT_EQ(pinv_svd(a.data(), p.data(), m, n, 1e-10), 0);
    ASSERT_EQ(ref.size(), size_t(n * m));
    for (int i = 0; i < n * m; ++i) EXPECT_NEAR(p[i], ref[i], 1e-9);
    EXPECT_EQ(pinv_svd(a.data(), p.data(), 0, n, 1e-10), -1);
}

TEST(SavitzkyGolay, TwoDimensionalSmoothingOfAPlaneIsExact) {
    // A fit of order 2 reproduces any quadratic: the smoothed value at the centre is the value.
    int deriv[2] = {0, 0}, nl[2] = {2, 1}, nr[2] = {2, 1};
    std::vector<float> coef(5 * 3);
    ASSERT_EQ(SGcoeff2d(deriv, 2, nl, nr, coef.data()), 0);
    double s = 0.0;
    for (int a = -2; a <= 2; ++a)
        for (int b = -1; b <= 1; ++b) {
            double v = 1.0 + 0.5 * a - 0.25 * b + 0.1 * a * b + 0.3 * b * b;
            s += coef[(a + 2) * 3 + (b + 1)] * v;
        }
    EXPECT_NEAR(s, 1.0, 1e-4);
    // d/db of the same quadratic at the centre is -0.25.
    int d1[2] = {0, 1};
    ASSERT_EQ(SGcoeff2d(d1, 2, nl, nr, coef.data()), 0);
    s = 0.0;
    for (int a = -2; a <= 2; ++a)
        for (int b = -1; b <= 1; ++b)
            s += coef[(a + 2) * 3 + (b + 1)] *
                 (1.0 + 0.5 * a - 0.25 * b + 0.1 * a * b + 0.3 * b * b);
    EXPECT_NEAR(s, -0.25, 1e-4);
    // Unknowns equal to points go through: order 1 has 3 unknowns, a 1 x 3 window 3 points.
    int d0[2] = {0, 0}, l3[2] = {0, 1}, r3[2] = {0, 1};
    EXPECT_EQ(SGcoeff2d(d0, 1, l3, r3, coef.data()), 0);
    int t3[3] = {1, 1, 1}, z3[3] = {0, 0, 0};
    std::vector<float> cube(27);
    EXPECT_EQ(SGcoeff3d(z3, 2, t3, t3, cube.data()), 0);
}

TEST(SavitzkyGolay, BadRequestsGiveBothMessageForms) {
    buffer_driver d;
    float coef[64];
    int big[2] = {3, 0}, win[2] = {1, 1}, tiny[2] = {0, 0};
    struct Case {
        std::function<int()> call;
        const char* quiet;
        const char* verbose;
    } cases[] = {
        {[&] { return SGcoeff(3, 2, 2, 2, coef); },
         "\nSGcoeff: Order of derivative cannot be larger than order of polynomial\n",
         "SGcoeff: Order of derivative cannot be larger than order of polynomial\n"},
        {[&] { return SGcoeff(0, 5, 2, 2, coef); },
         "\nSGcoeff: Order of polynomial must be smaller than window size.",
         "SGcoeff: Order of polynomial must be smaller than window size.\n"},
        {[&] { return SGcoeff2d(big, 2, win, win, coef); },
         "\nSGcoeff2d: Order of derivative cannot be larger than order of polynomial\n",
         "SGcoeff2d: Order of derivative cannot be larger than order of polynomial\n"},
        {[&] { return SGcoeff2d(tiny, 1, tiny, tiny, coef); },
         "\nSGcoeff2d: Number of unknowns in polynomial must be smaller than number of points "
         "in window.\n",
         "SGcoeff2d: Number of unknowns in polynomial must be smaller than number of points in "
         "window.\n"},
        {[&] {
             int d3[3] = {0, 0, 0}, w3[3] = {0, 0, 0};
             return SGcoeff3d(d3, 1, w3, w3, coef);
         },
         "\nSGcoeff3d: Number of unknowns in polynomial must be smaller than number of points "
         "in window.\n",
         "SGcoeff3d: Number of unknowns in polynomial must be smaller than number of points in "
         "window.\n"},
        {[&] { return Farid_coeff(1, 2, coef); },
         "\nInvalid filter order in function Farid_coeff. \n\n",
         "\nInvalid filter order in function Farid_coeff. \n\n"},
        {[&] { return Farid_coeff(0, 7, coef); },
         "\nInvalid filter size in function Farid_coeff. \n\n",
         "\nInvalid filter size in function Farid_coeff. \n\n"},
        {[&] { return Romano_coeff(1, 2, coef); },
         "\nInvalid filter order in function Romano_coeff. \n\n",
         "\nInvalid filter order in function Romano_coeff. \n\n"},
    };
    for (auto& c : cases) {
        d.log.clear();
        EXPECT_NE(c.call(), 0);
        EXPECT_EQ(d.log, c.quiet);
        wave_quiet[WF_KERNELS] = 0;
        testing::internal::CaptureStderr();
        EXPECT_NE(c.call(), 0);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.verbose);
        wave_quiet[WF_KERNELS] = 1;
    }
    EXPECT_EQ(SGcoeff(0, 4, 2, 2, coef), 0);  // order = window - 1 is legal
}

TEST(Kernels, FaridAndRomano) {
    float c[13];
    ASSERT_EQ(Farid_coeff(2, 1, c), 0);
    EXPECT_FLOAT_EQ(c[0], 0.572972894f);
    EXPECT_FLOAT_EQ(c[1], -1.28444886f);
    EXPECT_FLOAT_EQ(c[2], 0.572972894f);
    EXPECT_NE(c[0] + c[1] + c[2], 0.0f);  // kept as published
    ASSERT_EQ(Romano_coeff(0, 0, c), 0);
    EXPECT_EQ(c[0], 1.0f);
    ASSERT_EQ(Romano_coeff(0, 2, c), 0);
    // (1 - (k/2)^2)^2 for k = -2..2: 0, 9/16, 1, 9/16, 0 over 17/8.
    EXPECT_FLOAT_EQ(c[1], 9.0f / 16 / (34.0f / 16));
    ASSERT_EQ(Romano_coeff(2, 2, c), 0);
    EXPECT_NEAR(std::accumulate(c, c + 5, 0.0f), 0.0f, 1e-6);
}

TEST(Kernels, MedianSelectAndTheEdgeBiasOfTheWindowMedian) {
    std::vector<float> v = {5, 1, 4, 2, 3, 9, 0};
    EXPECT_EQ(median_select(v.data(), 7), 3.0f);
    std::vector<float> even = {4, 1, 3, 2};
    EXPECT_EQ(median_select(even.data(), 4), 2.0f);
    std::vector<float> img(6 * 5, 7.0f), out(30);
    int win[2] = {3, 3}, dims[2] = {5, 6};
    median_filter_2d(out.data(), img.data(), win, dims);
    EXPECT_EQ(out[2 * 6 + 2], 7.0f);
    EXPECT_EQ(out[2 * 6 + 0], 7.0f);  // 6 of 9 inside
    EXPECT_EQ(out[0], 0.0f);          // 4 of 9 inside: zeros win
}

TEST(Kernels, Filter3dMatchesDirectCorrelationWithZeroPadding) {
    const int nx = 7, ny = 6, nz = 5;
    std::vector<float> in(nx * ny * nz);
    for (size_t i = 0; i < in.size(); ++i) in[i] = float((i * 37) % 11) - 5.0f;
    float kx[5] = {0.0f, 0.5f, 1.0f, -0.25f, 0.0f}, ky[3] = {1, -2, 1}, kz[3] = {1, 1, 1};
    auto at = [&](const std::vector<float>& v, int x, int y, int z) {
        if (x < 0 || y < 0 || z < 0 || x >= nx || y >= ny || z >= nz) return 0.0f;
        return v[(z * ny + y) * nx + x];
    };
    std::vector<float> a(in.size()), b(in.size()), c(in.size());
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x) {
                float s = 0;
                for (int j = 0; j < 5; ++j) s += kx[j] * at(in, x + j - 2, y, z);
                a[(z * ny + y) * nx + x] = 2.0f * s;
            }
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x) {
                float s = 0;
                for (int j = 0; j < 3; ++j) s += ky[j] * at(a, x, y + j - 1, z);
                b[(z * ny + y) * nx + x] = s;
            }
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x) {
                float s = 0;
                for (int j = 0; j < 3; ++j) s += at(b, x, y, z + j - 1);
                c[(z * ny + y) * nx + x] = s;
            }
    std::vector<float> out(in.size(), 1.0f);
    ASSERT_EQ(filter3d_zeropad(in.data(), out.data(), nx, ny, nz, kx, 5, 2.0f, ky, 3, 0.0f, kz, 3,
                               1.0f, 1),
              out.data());
    for (size_t i = 0; i < in.size(); ++i) EXPECT_NEAR(out[i], c[i] + 1.0f, 1e-4) << i;
    float* own =
        filter3d_zeropad(in.data(), nullptr, nx, ny, nz, nullptr, 0, 1, nullptr, 0, 1, kz, 3, 1, 0);
    for (int z = 0; z < nz; ++z)
        EXPECT_NEAR(own[z * nx * ny], at(in, 0, 0, z - 1) + at(in, 0, 0, z) + at(in, 0, 0, z + 1),
                    1e-5);
    std::free(own);

    testing::internal::CaptureStderr();
    EXPECT_EQ(filter3d_zeropad(nullptr, out.data(), nx, ny, nz, kx, 5, 1, nullptr, 0, 1, nullptr, 0,
                               1, 0),
              nullptr);
    float bad[3] = {1.0f, 0.5f, 1.0f};
    fast_3d_x_mean(in.data(), out.data(), nx, ny, nz, bad, 3);
    fast_3d_y_mean(in.data(), out.data(), nx, ny, nz, bad, 3);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "filter3d_zeropad: input_buf must be a valid pointer.\n"
              "fast_3d_x_mean: Invalid filter value (0.50) \n"
              "fast_3d_y_mean: Invalid filter value (0.50) \n");
}
