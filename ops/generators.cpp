#include "ops/generators.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

#include "core/elementwise.h"
#include "core/zrk_error.h"
#include "ops/structural_base.h"
#include "ops/twister.h"

namespace {

constexpr uint32_t kSeed = 777;
constexpr double kTwoM32 = 1.0 / 4294967296.0;

// An r4 record of n points along dir, filled by f(i).
template <class F>
CZrkData* Along(CDataSpace& temp, int dir, int64_t n, const char* bad_size, F&& f) {
    if (n <= 0) Raise(bad_size);
    res_t res[6] = {1, 1, 1, 1, 1, 1};
    res[dir] = static_cast<res_t>(n);
    CZrkData* r = NewResult(temp, TYPE_R4, res, nullptr);
    float* p = static_cast<float*>(r->data);
#pragma omp parallel for schedule(static) if (n >= static_cast <int64_t>(kParallelElements))
    for (int64_t i = 0; i < n; ++i) p[i] = static_cast<float>(f(i));
    return r;
}

// The draws of the twister seeded `seed` as doubles in [0, 1), a block at a time:
// body(first, words, count) gets the untempered words of draws first ... first + count - 1
// (an even count but for the last block) and shares them among the cores itself.
template <class Body>
void ForDrawBlocks(uint32_t seed, uint64_t n, Body&& body) {
    CTwister g(seed, std::min(CTwister::kBlock, n + (n & 1)));
    for (uint64_t first = 0; first < n; first += g.Block()) {
        const uint32_t* words = g.NextBlock();
        body(first, words, std::min(g.Block(), n - first));
    }
}

double Draw(uint32_t word) { return CTwister::Temper(word) * kTwoM32; }

// Gaussian values of deviation sd, two per pair of draws; each value of unit deviation is
// taken to float before it is scaled.
void Gaussian(uint32_t seed, double sd, float* out, uint64_t n) {
    ForDrawBlocks(seed, n + (n & 1), [&](uint64_t first, const uint32_t* words, uint64_t count) {
        const int64_t pairs = static_cast<int64_t>(count / 2);
        float* const block = out + first;
        const uint64_t left = n - first;
#pragma omp parallel for schedule(static) if (pairs >= 4096)
        for (int64_t k = 0; k < pairs; ++k) {
            const double u1 = 1.0 - Draw(words[2 * k]), u2 = Draw(words[2 * k + 1]);
            const double r = std::sqrt(-2.0 * std::log(u1)), a = 2.0 * std::numbers::pi * u2;
            block[2 * k] = static_cast<float>(static_cast<float>(r * std::cos(a)) * sd);
            if (static_cast<uint64_t>(2 * k + 1) < left)
                block[2 * k + 1] = static_cast<float>(static_cast<float>(r * std::sin(a)) * sd);
        }
    });
}

// out[k] = f(draw k) for the n draws of the twister seeded `seed`.
template <class F>
void MapDraws(uint32_t seed, float* out, uint64_t n, F&& f) {
    ForDrawBlocks(seed, n, [&](uint64_t first, const uint32_t* words, uint64_t count) {
        float* const block = out + first;
#pragma omp parallel for schedule(static) if (count >= kParallelElements)
        for (int64_t k = 0; k < static_cast<int64_t>(count); ++k)
            block[k] = static_cast<float>(f(Draw(words[k])));
    });
}

CZrkData* RandomComplex(CDataSpace& temp, uint32_t seed, const CZrkData* list) {
    res_t res[6];
    ResList(list, res);
    CZrkData* r = NewResult(temp, TYPE_CR4, res, nullptr);
    MapDraws(seed, static_cast<float*>(r->data), 2 * r->Count(), [](double u) { return u; });
    return r;
}

}  // namespace

CZrkData* Line(CDataSpace& temp, int dir, double slope, double intercept, int64_t n) {
    SetOpFunc("line", dir);
    return LogFailure({std::string("Line") + kDirCapitals[dir] + "() failed\r\n"}, [&] {
        return Along(temp, dir, n, "resolution must be positive",
                     [&](int64_t i) { return slope * i + intercept; });
    });
}

CZrkData* Ramp(CDataSpace& temp, int dir, double a, double b, int64_t n) {
    SetOpFunc("ramp", dir);
    return LogFailure({CaughtLine("Ramp", dir)}, [&] {
        const double inc = n > 1 ? (b - a) / (n - 1) : 0;
        return Along(temp, dir, n, "resolution must be positive",
                     [&](int64_t i) { return a + inc * i; });
    });
}

CZrkData* Step(CDataSpace& temp, int dir, int64_t i, int64_t n) {
    SetOpFunc("step", dir);
    return LogFailure({CaughtLine("Step", dir)}, [&] {
        return Along(temp, dir, n, "resolution must be at positive",
                     [&](int64_t k) { return k >= i ? 1.0 : 0.0; });
    });
}

CZrkData* Delta(CDataSpace& temp, int dir, int64_t i, int64_t n) {
    SetOpFunc("delta", dir);
    return LogFailure({CaughtLine("Delta", dir)}, [&] {
        return Along(temp, dir, n, "resolution must be positive",
                     [&](int64_t k) { return k == i ? 1.0 : 0.0; });
    });
}

CZrkData* Eye(CDataSpace& temp, const CZrkData* dirs, int64_t n) {
    SetOpFunc("eye", -1);
    return LogFailure({CaughtLine("Eye", -1)}, [&] {
        const std::string text = TextOf(dirs);
        int found[2], k = 0;
        for (int d = 0; d < 6 && k < 2; ++d)
            if (text.find(kDirLetters[d]) != std::string::npos) found[k++] = d;
        if (k < 2) Raise("invalid direction");
        if (n <= 0) Raise("resolution must be positive");
        res_t res[6] = {1, 1, 1, 1, 1, 1};
        res[found[0]] = res[found[1]] = static_cast<res_t>(n);
        CZrkData* r = NewResult(temp, TYPE_R4, res, nullptr);
        const unsigned char zero[4] = {0, 0, 0, 0};
        FillElements(static_cast<char*>(r->data), zero, 4, r->Count());
        // Element (i, i) lies i steps of both directions' strides from the start.
        uint64_t stride = 0, s = 1;
        for (int d = 0; d < 6; ++d) {
            if (d == found[0] || d == found[1]) stride += s;
            s *= res[d];
        }
        float* p = static_cast<float*>(r->data);
        for (int64_t i = 0; i < n; ++i) p[i * stride] = 1.0f;
        return r;
    });
}

CZrkData* Noise(CDataSpace& temp, const CZrkData* distribution, double sd, const CZrkData* list) {
    SetOpFunc("noise", -1);
    return LogFailure({"noise() failed\r\n"}, [&] {
        res_t res[6];
        ResList(list, res);
        CZrkData* r = NewResult(temp, TYPE_R4, res, nullptr);
        const std::string kind = TextOf(distribution);
        float* p = static_cast<float*>(r->data);
        const uint64_t n = r->Count();
        if (kind.find("gauss") != std::string::npos || kind.find("normal") != std::string::npos) {
            Gaussian(kSeed, sd, p, n);
        } else {
            // Uniform of the same deviation: width sd * sqrt(12), centred on 0.
            const double width = sd * std::sqrt(12.0);
            MapDraws(kSeed, p, n, [width](double u) { return (u - 0.5) * width; });
        }
        return r;
    });
}

CZrkData* Rand(CDataSpace& temp, const CZrkData* list) {
    SetOpFunc("rand", -1);
    return LogFailure({CaughtLine("Rand", -1)}, [&] { return RandomComplex(temp, kSeed, list); });
}

CZrkData* SRand(CDataSpace& temp, int64_t seed, const CZrkData* list) {
    SetOpFunc("srand", -1);
    return LogFailure({CaughtLine("SRand", -1)},
                      [&] { return RandomComplex(temp, static_cast<uint32_t>(seed), list); });
}
