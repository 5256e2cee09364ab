// The median pick and the window median against NumPy's sort and SciPy's median filter:
// ties, even counts (the lower middle), NaN (sorted last) and the zeros beyond the edge.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "tests/peer.h"
#include "wave/kernels.h"

namespace {

// Arrays of every length up to 40 and a few long ones, drawn from few values (many ties),
// from many, with zeros of both signs, and with NaN.
std::vector<std::vector<float>> Samples() {
    std::mt19937 g(7);
    std::uniform_real_distribution<float> wide(-50, 50);
    std::vector<std::vector<float>> out;
    std::vector<int> sizes;
    for (int n = 1; n <= 40; ++n) sizes.push_back(n);
    for (int n : {255, 256, 1000, 1001}) sizes.push_back(n);
    for (int n : sizes)
        for (int kind = 0; kind < 4; ++kind) {
            std::vector<float> v(n);
            for (float& x : v) {
                x = kind == 1 ? wide(g) : float(int(g() % 5)) - 2;
                if (kind == 2 && x == 0 && (g() & 1)) x = -0.0f;
                if (kind == 3 && g() % 4 == 0) x = NAN;
            }
            out.push_back(v);
        }
    return out;
}

TEST(WaveMedian, PickIsTheLowerMiddleOfNumpysSortWithNanLast) {
    const auto samples = Samples();
    std::string script = "nan = np.nan\n";
    for (const auto& v : samples)
        script += "a = np.sort(np.array(" + peer::Literal(v.data(), v.size()) +
                  ", dtype=np.float32))\nprint(float(a[(len(a) - 1) // 2]))\n";
    const std::vector<double> ref = peer::Values(script);
    ASSERT_EQ(ref.size(), samples.size());
    for (size_t c = 0; c < samples.size(); ++c) {
        std::vector<float> buf = samples[c];
        const float got = median_select(buf.data(), int(buf.size()));
        if (std::isnan(ref[c]))
            EXPECT_TRUE(std::isnan(got)) << "case " << c << " n " << buf.size();
        else
            EXPECT_EQ(got, float(ref[c])) << "case " << c << " n " << buf.size();
    }
}

TEST(WaveMedian, WindowMedianIsScipysWithZerosBeyondTheEdge) {
    const int ny = 9, nx = 13;
    std::mt19937 g(3);
    std::uniform_real_distribution<float> u(-4, 6);  // both signs, so the zeros take part
    std::vector<float> img(ny * nx);
    for (float& v : img) v = (g() % 5 == 0) ? float(int(u(g))) : u(g);
    // Even sizes grow to the next odd one; 1 leaves that direction alone.
    const int wins[][2] = {{3, 3}, {5, 3}, {1, 5}, {4, 4}, {7, 9}, {1, 1}};
    std::string script = "import scipy.ndimage\nimg = np.array(" +
                         peer::Literal(img.data(), img.size()) + ", dtype=np.float32).reshape(" +
                         std::to_string(ny) + ", " + std::to_string(nx) + ")\n";
    for (const auto& w : wins)
        script += "for x in scipy.ndimage.median_filter(img, size=(" +
                  std::to_string(w[0] / 2 * 2 + 1) + ", " + std::to_string(w[1] / 2 * 2 + 1) +
                  "), mode='constant', cval=0.0).ravel(): print(float(x))\n";
    const std::vector<double> ref = peer::Values(script);
    ASSERT_EQ(ref.size(), std::size(wins) * img.size());
    const int dims[2] = {ny, nx};
    for (size_t k = 0; k < std::size(wins); ++k) {
        std::vector<float> out(img.size(), -99.0f);
        median_filter_2d(out.data(), img.data(), wins[k], dims);
        for (size_t i = 0; i < img.size(); ++i)
            ASSERT_EQ(out[i], float(ref[k * img.size() + i]))
                << "window " << wins[k][0] << "x" << wins[k][1] << " pixel " << i;
    }
}

}  // namespace
