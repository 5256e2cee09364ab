// The three unwrap solvers through the driver against scikit-image's unwrap_phase on the same
// wrapped data, run from this program: 256², 512² and 1024² planes and a 256² x 64 volume
// (graph cut in 3-D against unwrap_phase in 3-D), noise-free and with noise of 0.3 rad.
// Prints seconds, the ratio unwrap_phase / ours (target: at least 1) and the wrong points
// of each, counted against the truth (with noise: the truth plus the noise unwrapped).
//
//   bench_unwrap [MAX_SIZE [DEPTH [METHODS]]]   // planes up to MAX_SIZE (1024), the volume's
//                                               // depth (64), methods by number ("012")
#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "ops/unwrap/unwrap.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

struct Case {
    std::string name;
    int64_t w, h, d;
    double noise;
    std::vector<double> truth;  // with noise: the truth plus the noise unwrapped
    std::vector<float> wrapped, magnitude;
};

double Wrap(double t) { return t - 2 * kPi * std::floor((t + kPi) / (2 * kPi)); }

// A ramp and two Gaussian bumps, 6 cycles from lowest to highest; the magnitude is a smooth
// bump of its own.
Case Make(int64_t w, int64_t h, int64_t d, double noise) {
    char name[64];
    if (d > 1)
        std::snprintf(name, sizeof name, "%lldx%lldx%lld", static_cast<long long>(w),
                      static_cast<long long>(h), static_cast<long long>(d));
    else
        std::snprintf(name, sizeof name, "%lldx%lld", static_cast<long long>(w),
                      static_cast<long long>(h));
    if (noise > 0) std::strcat(name, "_noisy");
    Case c{name, w, h, d, noise, {}, {}, {}};
    std::mt19937 g(static_cast<unsigned>(w + d + (noise > 0)));
    std::normal_distribution<double> n(0, noise > 0 ? noise : 1);
    std::vector<double> t;
    for (int64_t z = 0; z < d; ++z)
        for (int64_t y = 0; y < h; ++y)
            for (int64_t x = 0; x < w; ++x) {
                const double fx = double(x) / w, fy = double(y) / h, fz = double(z) / d;
                const double b1 = std::exp(-((fx - .35) * (fx - .35) + (fy - .6) * (fy - .6) +
                                             (d > 1 ? (fz - .5) * (fz - .5) : 0)) /
                                           0.04);
                const double b2 = std::exp(-((fx - .7) * (fx - .7) + (fy - .3) * (fy - .3)) / 0.02);
                t.push_back(0.6 * fx + 0.4 * fy + 0.2 * fz + b1 - 0.5 * b2);
                c.magnitude.push_back(static_cast<float>(0.2 + b1 + 0.3 * fx));
            }
    const auto [lo, hi] = std::minmax_element(t.begin(), t.end());
    const double scale = 6 * 2 * kPi / (*hi - *lo), base = *lo;
    for (double v : t) {
        const double truth = (v - base) * scale;
        const double sample = Wrap(truth + (noise > 0 ? n(g) : 0));
        c.wrapped.push_back(static_cast<float>(sample));
        c.truth.push_back(truth + Wrap(sample - truth));
    }
    return c;
}

// Points off the truth by other than the most common whole number of cycles.
template <class T>
int64_t Wrong(const T* got, const std::vector<double>& truth) {
    std::map<long, int64_t> count;
    std::vector<long> k(truth.size());
    for (size_t i = 0; i < truth.size(); ++i) {
        const double c = (got[i] - truth[i]) / (2 * kPi);
        k[i] = std::isfinite(c) && std::fabs(c - std::round(c)) < 0.25 ? std::lround(c) : -999999;
        ++count[k[i]];
    }
    long best = 0;
    int64_t most = -1;
    for (const auto& [off, n] : count)
        if (off != -999999 && n > most) best = off, most = n;
    return static_cast<int64_t>(
        std::count_if(k.begin(), k.end(), [&](long v) { return v != best; }));
}

struct Timed {
    double seconds;
    int64_t wrong;
};

Timed Ours(const Case& c, int method) {
    CDataSpace s;
    CZrkData* in = s.NewData(TYPE_R4, c.w, c.h, c.d, 1, 1, 1, "phase");
    CZrkData* q = s.NewData(TYPE_R4, c.w, c.h, c.d, 1, 1, 1, "magnitude");
    std::copy(c.wrapped.begin(), c.wrapped.end(), static_cast<float*>(in->data));
    std::copy(c.magnitude.begin(), c.magnitude.end(), static_cast<float*>(q->data));
    CZrkData* out = s.NewData("out");
    CUnwrap u;
    u.unwrap_method = method;
    u.unwrap_do_3d = c.d > 1;
    u.SetPreset(UNWRAP_RANGE_PI);
    const auto start = std::chrono::steady_clock::now();
    // Graph cut takes no quality; the others weigh by the magnitude.
    u.Unwrap({.phase = in, .output = out, .quality = method == UNWRAP_GRAPH_CUT ? nullptr : q});
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return {seconds, Wrong(static_cast<const float*>(out->data), c.truth)};
}

// Runs unwrap_phase on every case at once; its seconds and wrong points per case, or empty.
std::vector<Timed> Peer(const std::vector<Case>& cases) {
    char pattern[] = "/tmp/quelmor_bench_unwrap_XXXXXX";
    if (!mkdtemp(pattern)) return {};
    const std::filesystem::path dir = pattern;
    std::ofstream list(dir / "cases.txt");
    for (const Case& c : cases) {
        list << c.name << " " << c.w << " " << c.h << " " << c.d << "\n";
        std::ofstream(dir / (c.name + ".bin"), std::ios::binary)
            .write(reinterpret_cast<const char*>(c.wrapped.data()),
                   static_cast<std::streamsize>(c.wrapped.size() * sizeof(float)));
    }
    list.close();
    const std::string command = std::string(QUELMOR_PYTHON) + " " + QUELMOR_BENCH_DIR +
                                "/skimage_unwrap.py " + dir.string();
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::vector<Timed> out;
    for (const Case& c : cases) {
        double seconds = 0;
        if (!pipe || std::fscanf(pipe.get(), "%lf", &seconds) != 1) break;
        std::vector<double> result(c.truth.size());
        std::ifstream(dir / (c.name + ".out.bin"), std::ios::binary)
            .read(reinterpret_cast<char*>(result.data()),
                  static_cast<std::streamsize>(result.size() * sizeof(double)));
        out.push_back({seconds, Wrong(result.data(), c.truth)});
    }
    pipe.reset();
    std::filesystem::remove_all(dir);
    return out;
}

}  // namespace

int main(int argc, char** argv) {
    const int64_t max_size = argc > 1 ? std::atoll(argv[1]) : 1024;
    const int64_t depth = argc > 2 ? std::atoll(argv[2]) : 64;
    const std::string methods = argc > 3 ? argv[3] : "012";
    std::vector<Case> cases;
    for (int64_t n : {256, 512, 1024})
        if (n <= max_size)
            for (double noise : {0.0, 0.3}) cases.push_back(Make(n, n, 1, noise));
    if (depth > 1)
        for (double noise : {0.0, 0.3}) cases.push_back(Make(256, 256, depth, noise));

    const std::vector<Timed> peer = Peer(cases);
    if (peer.size() != cases.size()) std::printf("unwrap_phase did not run\n");
    for (size_t k = 0; k < cases.size(); ++k) {
        const Case& c = cases[k];
        std::printf("%s", c.name.c_str());
        if (k < peer.size())
            std::printf("  unwrap_phase %.3f s (%lld wrong)\n", peer[k].seconds,
                        static_cast<long long>(peer[k].wrong));
        else
            std::printf("\n");
        const int methods_2d[] = {UNWRAP_QUALITY_GUIDED, UNWRAP_MIN_DISCONTINUITY,
                                  UNWRAP_GRAPH_CUT};
        for (int method : methods_2d) {
            if (c.d > 1 && method != UNWRAP_GRAPH_CUT) continue;
            if (methods.find(static_cast<char>('0' + method)) == std::string::npos) continue;
            const Timed t = Ours(c, method);
            std::printf("    %-22s %8.3f s  ratio %7.3f (target >= 1)  %lld wrong\n",
                        c.d > 1 ? "graph cut 3-D" : kUnwrapMethodLabels[method], t.seconds,
                        k < peer.size() && t.seconds > 0 ? peer[k].seconds / t.seconds : 0.0,
                        static_cast<long long>(t.wrong));
            std::fflush(stdout);
        }
    }
    return 0;
}
