#include "ops/window.h"

#include <cmath>
#include <numbers>

#include "core/block_io.h"
#include "core/data_cursor.h"
#include "core/directions.h"
#include "core/zrk_error.h"
#include "ops/structural_base.h"

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kFourPi = 12.566370614359172;

const char* KernelName(int window) {
    switch (window) {
        case FT_WINDOW_BARTLETT:
            return "bart";
        case FT_WINDOW_BLACKMAN:
            return "black";
        case FT_WINDOW_HAMMING:
            return "hamm";
        default:
            return "hann";
    }
}

const char* KernelCaught(int window) {
    switch (window) {
        case FT_WINDOW_BARTLETT:
            return "error caught: Bart:\r\n";
        case FT_WINDOW_BLACKMAN:
            return "error caught: Black:\r\n";
        case FT_WINDOW_HAMMING:
            return "error caught: Hamm:\r\n";
        default:
            return "error caught: Hann:\r\n";
    }
}

}  // namespace

std::vector<double> WindowWeights(int window, uint64_t n) {
    std::vector<double> w(n, 1.0);
    if (n < 2) return w;
    const double m = static_cast<double>(n - 1);
    for (uint64_t k = 0; k < n; ++k) {
        const double i = static_cast<double>(k);
        switch (window) {
            case FT_WINDOW_BARTLETT: {
                const double c = m / 2;
                w[k] = i < c ? i / c : i == c ? 1.0 : 2.0 - i / c;
                break;
            }
            case FT_WINDOW_HAMMING:
                w[k] = 0.54 - 0.46 * std::cos(kTwoPi * i / m);
                break;
            case FT_WINDOW_BLACKMAN:
                w[k] = 0.42 - 0.5 * std::cos(kTwoPi * i / m) + 0.08 * std::cos(kFourPi * i / m);
                break;
            case FT_WINDOW_HANNING:
                w[k] = 0.5 - 0.5 * std::cos(kTwoPi * i / m);
                break;
            default:
                break;
        }
    }
    return w;
}

void ApplyWindow(CZrkData* a, int window) {
    if (window == FT_WINDOW_NONE || !a->Data()) return;
    res_t res[6];
    a->GetRes(res);
    std::vector<float> weights[6];
    for (int d = 0; d < 6; ++d) {
        const std::vector<double> w = WindowWeights(window, res[d]);
        weights[d].assign(w.begin(), w.end());
    }
    // One row of x at a time: the weights of y ... v make one factor per row.
    const uint64_t nx = res[0];
    const uint64_t rows = a->Count() / (nx ? nx : 1);
    CBlockReader<float> in(a, 2);
    CBlockWriter<float> out(a, 2);
    std::vector<float> buf_in(2 * nx), buf_out(2 * nx);
    for (uint64_t r = 0; r < rows; ++r) {
        uint64_t rest = r;
        float f = 1.0f;
        for (int d = 1; d < 6; ++d) {
            f *= weights[d][rest % res[d]];
            rest /= res[d];
        }
        const float* x = in.Read(r * nx, nx, buf_in.data());
        float* y = out.Target(r * nx, nx, buf_out.data());
        for (uint64_t i = 0; i < nx; ++i) {
            const float g = f * weights[0][i];
            y[2 * i] = x[2 * i] * g;
            y[2 * i + 1] = x[2 * i + 1] * g;
        }
        out.Commit(r * nx, nx, y);
    }
}

float KernelWeight(int dir, uint64_t i, uint64_t n, float cutoff, bool lo_pass) {
    if (n < 2) return 1.0f;
    if (lo_pass) {
        const float t = static_cast<float>(
            (static_cast<double>(i) - static_cast<double>(n - 1) / 2) * std::numbers::pi);
        return t == 0.0f ? cutoff : std::sin(cutoff * t) / t;
    }
    const float t =
        (static_cast<float>(i) - static_cast<float>(n - 1) / 2.0f) * std::numbers::pi_v<float>;
    if (t == 0.0f) return -cutoff;
    // x and y take the plain difference; z ... v divide the first sine by t once more.
    if (dir < 2) return (std::sin(t) - std::sin(cutoff * t)) / t;
    return (std::sin(t) / t - std::sin(cutoff * t)) / t;
}

CZrkData* Kernel(CDataSpace& temp, int window, const CZrkData* directions, double cutoff,
                 int64_t points, bool lo_pass) {
    SetOpFunc(KernelName(window), -1);
    return LogFailure({KernelCaught(window)}, [&] {
        const unsigned found = DirectionsOf(directions);
        if (!found) Raise("direction invalid");
        if (!(cutoff >= 0.0 && cutoff <= 1.0)) Raise("cutoff must be between 0 and 1");
        if (points < 1) Raise("resolution must be positive");
        res_t res[6];
        for (int d = 0; d < 6; ++d) res[d] = (found >> d) & 1 ? static_cast<res_t>(points) : 1;
        CZrkData* r = NewResult(temp, TYPE_R4, res, nullptr);
        const float c = static_cast<float>(cutoff);
        std::vector<float> base[6];
        for (int d = 0; d < 6; ++d) {
            base[d].resize(res[d]);
            for (uint64_t i = 0; i < res[d]; ++i)
                base[d][i] = KernelWeight(d, i, res[d], c, lo_pass);
        }
        float* p = static_cast<float*>(r->data);
        for (uint64_t k = 0; k < r->Count(); ++k) {
            uint64_t rest = k;
            float v = 1.0f;
            for (int d = 0; d < 6; ++d) {
                v *= base[d][rest % res[d]];
                rest /= res[d];
            }
            p[k] = v;
        }
        ApplyWindow(r, window);
        return r;
    });
}
