// Savitzky-Golay kernel sets over the four modes and their application.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/peer.h"
#include "tests/wave/buffer_driver.h"
#include "tests/wave/wave_test_util.h"
#include "wave/kernels.h"

using wave_test::f32;
using wave_test::floats;
using wave_test::max_error;

namespace {

// a + b x + c y + d x^2 + e x y + g y^2 on an nx by ny grid.
std::vector<float> quadratic(int nx, int ny) {
    std::vector<float> v(size_t(nx) * ny);
    for (int y = 0; y < ny; ++y)
        for (int x = 0; x < nx; ++x)
            v[size_t(y) * nx + x] =
                float(1.5 + 0.2 * x - 0.3 * y + 0.05 * x * x + 0.02 * x * y - 0.04 * y * y);
    return v;
}

}  // namespace

TEST(SgFilter, KernelCountsOfTheFourModes) {
    const int win[3] = {5, 7, 3}, order[3] = {2, 3, 2};
    EXPECT_EQ(sg_kernel_size(win, 0, 2), 12);
    EXPECT_EQ(sg_kernel_size(win, 64, 2), 25 + 49);
    EXPECT_EQ(sg_kernel_size(win, 128, 2), 35);
    EXPECT_EQ(sg_kernel_size(win, 192, 2), 35 * 35);
    EXPECT_EQ(sg_kernel_size(win, 0, 3), 15);
    EXPECT_EQ(sg_kernel_size(win, 192, 3), 105 * 105);
    // Mode 0 holds the x kernel then the y kernel, each SciPy's.
    std::vector<float> coef(12);
    const int deriv[2] = {0, 2};
    ASSERT_EQ(sg_kernel_2d(deriv, order, win, coef.data(), 0), 0);
    auto ref = peer::Values(
        "for x in scipy.signal.savgol_coeffs(7,3,deriv=2,use='dot'): print(x)\n"
        "for x in scipy.signal.savgol_coeffs(5,2,deriv=0,use='dot'): print(x)\n");
    ASSERT_EQ(ref.size(), 12u);
    for (int i = 0; i < 12; ++i) EXPECT_NEAR(coef[i], ref[i], 1e-5) << i;
    // Mode 64: kernel p of the x block fits p points before the pixel.
    std::vector<float> var(74), one(7);
    ASSERT_EQ(sg_kernel_2d(deriv, order, win, var.data(), 64), 0);
    ASSERT_EQ(SGcoeff(2, 3, 1, 5, one.data()), 0);
    for (int i = 0; i < 7; ++i) EXPECT_EQ(var[7 + i], one[i]);
    // A failing fit is passed on.
    const int high[2] = {9, 9};
    EXPECT_NE(sg_smooth_2d(high, win, coef.data(), 0), 0);
}

TEST(SgFilter, SeparableInvariantEqualsScipyCorrelate1d) {
    const int nx = 23, ny = 17;
    const int win[2] = {5, 7}, dims[2] = {ny, nx}, order[2] = {2, 3};
    const float pixel[2] = {0.5f, 0.25f};
    auto img = wave_test::noise(size_t(nx) * ny, 11);
    std::vector<float> smooth(12), lap(12), out(img.size()), out2(img.size());
    ASSERT_EQ(sg_smooth_2d(order, win, smooth.data(), 0), 0);
    ASSERT_EQ(sg_laplacian_2d(order, win, pixel, lap.data(), 0), 0);
    peer::Peer p;
    p.Put("img", f32(img, {nx, ny}));
    p.Put("sx", f32({smooth.begin(), smooth.begin() + 7}, {7}));
    p.Put("sy", f32({smooth.begin() + 7, smooth.end()}, {5}));
    p.Put("lx", f32({lap.begin(), lap.begin() + 7}, {7}));
    p.Put("ly", f32({lap.begin() + 7, lap.end()}, {5}));
    std::string s = p.Case("sep img sx sy"), l = p.Case("sepsum img lx ly");
    ASSERT_TRUE(p.Run("wave/inversion_numpy.py"));
    ASSERT_EQ(apply_sg_filter_2d(img.data(), out.data(), smooth.data(), win, dims, 0, 1), 0);
    EXPECT_LT(max_error(out, floats(p.Get(s))), 1e-6);
    ASSERT_EQ(apply_sg_filter_2d(img.data(), out2.data(), lap.data(), win, dims, 0, 0), 0);
    EXPECT_LT(max_error(out2, floats(p.Get(l))), 1e-6);
    // In place gives the same.
    std::vector<float> in_place = img;
    apply_sg_filter_2d(in_place.data(), in_place.data(), lap.data(), win, dims, 0, 0);
    EXPECT_EQ(in_place, out2);
}

TEST(SgFilter, NonSeparableInvariantEqualsScipyCorrelateCutAtTheEdges) {
    const int nx = 19, ny = 14;
    const int win[2] = {5, 3}, dims[2] = {ny, nx}, order[2] = {2, 2};
    auto img = wave_test::noise(size_t(nx) * ny, 5);
    std::vector<float> k(15), out(img.size());
    ASSERT_EQ(sg_smooth_2d(order, win, k.data(), 128), 0);
    peer::Peer p;
    p.Put("img", f32(img, {nx, ny}));
    p.Put("k", f32(k, {3, 5}));  // x fastest: index a * 3 + b is (x b, y a)
    std::string c = p.Case("nonsep img k");
    ASSERT_TRUE(p.Run("wave/inversion_numpy.py"));
    ASSERT_EQ(apply_sg_filter_2d(img.data(), out.data(), k.data(), win, dims, 128, 1), 0);
    EXPECT_LT(max_error(out, floats(p.Get(c))), 1e-6);
}

TEST(SgFilter, VariantModesReproduceAQuadraticUpToTheEdges) {
    // A fit of order 2 reproduces a quadratic exactly, and its Laplacian is the constant
    // 2d + 2g, wherever its window lies inside the image: everywhere in the variant modes.
    // The separable fits are evaluated at the pixel; the 2-D fit evaluates its Legendre basis
    // at the middle of the window, so near an edge it gives the value there.
    const int nx = 16, ny = 12;
    const int win[2] = {5, 5}, dims[2] = {ny, nx}, order[2] = {2, 2};
    const float pixel[2] = {1.0f, 1.0f};
    auto img = quadratic(nx, ny);
    auto centre = [&](int i, int n) { return std::clamp(i, 2, n - 3); };
    for (int mode : {64, 192}) {
        std::vector<float> k(sg_kernel_size(win, mode, 2)), out(img.size());
        ASSERT_EQ(sg_smooth_2d(order, win, k.data(), mode), 0);
        ASSERT_EQ(apply_sg_filter_2d(img.data(), out.data(), k.data(), win, dims, mode, 1), 0);
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x) {
                size_t at =
                    mode == 64 ? size_t(y) * nx + x : size_t(centre(y, ny)) * nx + centre(x, nx);
                EXPECT_NEAR(out[size_t(y) * nx + x], img[at], 2e-4) << mode << " " << x << " " << y;
            }
        ASSERT_EQ(sg_laplacian_2d(order, win, pixel, k.data(), mode), 0);
        ASSERT_EQ(apply_sg_filter_2d(img.data(), out.data(), k.data(), win, dims, mode, 0), 0);
        for (size_t i = 0; i < img.size(); ++i)
            EXPECT_NEAR(out[i], 2 * 0.05 - 2 * 0.04, 2e-4) << mode << " " << i;
    }
    // The invariant non-separable mode only inside.
    std::vector<float> k(25), out(img.size());
    ASSERT_EQ(sg_smooth_2d(order, win, k.data(), 128), 0);
    apply_sg_filter_2d(img.data(), out.data(), k.data(), win, dims, 128, 1);
    EXPECT_NEAR(out[6 * nx + 8], img[6 * nx + 8], 2e-4);
    EXPECT_GT(std::fabs(out[0] - img[0]), 0.1);
}

TEST(SgFilter, VolumeFormsAgreeWithThePlaneOnAQuadraticAndRejectBadWindows) {
    const int nx = 9, ny = 8, nz = 7;
    const int win[3] = {5, 5, 3}, dims[3] = {ny, nx, nz}, order[3] = {2, 2, 2};
    const float pixel[3] = {1.0f, 1.0f, 2.0f};
    std::vector<float> vol(size_t(nx) * ny * nz);
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x)
                vol[(size_t(z) * ny + y) * nx + x] =
                    float(0.1 * x * x - 0.05 * y * y + 0.2 * z * z + x * z * 0.01);
    for (int mode : {64, 192}) {
        std::vector<float> k(sg_kernel_size(win, mode, 3)), out(vol.size());
        ASSERT_EQ(sg_laplacian_3d(order, win, pixel, k.data(), mode), 0);
        ASSERT_EQ(apply_sg_filter_3d(vol.data(), out.data(), k.data(), win, dims, mode, 0), 0);
        // 0.2 - 0.1 + 0.4 / 4 (z pixels of 2)
        for (float v : out) EXPECT_NEAR(v, 0.2, 2e-4) << mode;
    }
    buffer_driver d;
    std::vector<float> k(100), out(vol.size());
    const int big[3] = {11, 5, 3}, even[3] = {4, 5, 3};
    EXPECT_EQ(apply_sg_filter_3d(vol.data(), out.data(), k.data(), big, dims, 64, 1), 1);
    EXPECT_EQ(apply_sg_filter_3d(vol.data(), out.data(), k.data(), even, dims, 0, 1), 1);
    EXPECT_NE(d.log.find("apply_sg_filter_3d: Filter window must be odd"), std::string::npos);
}
