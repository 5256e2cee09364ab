// Small helpers of the wave tests: float images to and from the NumPy peer, seeded noise,
// medians, and the capture of standard output.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tests/peer.h"

namespace wave_test {

inline peer::Array f32(const std::vector<float>& v, std::vector<uint64_t> shape) {
    return {"float32", std::move(shape),
            std::string(reinterpret_cast<const char*>(v.data()), v.size() * sizeof(float))};
}

inline std::vector<float> floats(const peer::Array& a) {
    std::vector<float> v(a.bytes.size() / sizeof(float));
    std::memcpy(v.data(), a.bytes.data(), v.size() * sizeof(float));
    return v;
}

inline std::vector<float> noise(size_t n, unsigned seed, float lo = -1.0f, float hi = 1.0f) {
    std::mt19937 gen(seed);
    std::uniform_real_distribution<float> d(lo, hi);
    std::vector<float> v(n);
    for (float& x : v) x = d(gen);
    return v;
}

inline double median(std::vector<double> v) {
    if (v.empty()) return 0.0;
    std::nth_element(v.begin(), v.begin() + v.size() / 2, v.end());
    return v[v.size() / 2];
}

// Largest |a - b| relative to the largest |b| (at least 1).
inline double max_error(const std::vector<float>& a, const std::vector<float>& b) {
    double scale = 1.0, err = 0.0;
    for (float x : b) scale = std::max(scale, double(std::fabs(x)));
    for (size_t i = 0; i < std::min(a.size(), b.size()); ++i)
        err = std::max(err, double(std::fabs(a[i] - b[i])));
    return a.size() == b.size() ? err / scale : 1e30;
}

}  // namespace wave_test
