// Graph cut unwrapping: each iteration offers every point a move of one `step`, and the
// minimum cut of the pairwise energy (a - b)^2 decides who moves. The energy of a pair is
// submodular (e10 + e01 - e00 - e11 = 2 s^2), so the usual reduction to terminal and edge
// capacities is exact.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

#include "ops/unwrap/grid_graph.h"
#include "ops/unwrap/solvers.h"

namespace {

constexpr int kIterations = 25;  // the loop head stops here: 24 moves at most

struct CGraphCutProblem {
    int64_t width, height, depth;
    float step = 1.0f;
    std::vector<double> source, sink;
    std::vector<double> caps[6];
};

// Adds the energies of all pairs (p, p + offset) whose second point is inside.
void AddPairs(CGraphCutProblem& g, const float* out, int d) {
    static const int64_t dx[6] = {-1, 1, 0, 0, 0, 0}, dy[6] = {0, 0, -1, 1, 0, 0},
                         dz[6] = {0, 0, 0, 0, -1, 1};
    const int64_t w = g.width, h = g.height;
    const int64_t offset = dx[d] + dy[d] * w + dz[d] * w * h;
    const double s = g.step;
    double* source = g.source.data();
    double* sink = g.sink.data();
    double* cap = g.caps[d].data();
    for (int64_t z = 0; z < g.depth; ++z) {
        if (z + dz[d] < 0 || z + dz[d] >= g.depth) continue;
        for (int64_t y = 0; y < h; ++y) {
            if (y + dy[d] < 0 || y + dy[d] >= h) continue;
            const int64_t x0 = dx[d] < 0 ? 1 : 0, x1 = dx[d] > 0 ? w - 1 : w;
            const int64_t row = (z * h + y) * w;
            for (int64_t x = x0; x < x1; ++x) {
                const int64_t p = row + x, q = p + offset;
                // In double, e11 is e00 exactly: a rounding difference between them would
                // offer moves that gain nothing, and the iterations would swing back and forth.
                const double a = out[p], b = out[q];
                const double e00 = (a - b) * (a - b);
                const double e10 = (s + a - b) * (s + a - b);
                const double e01 = (a - (s + b)) * (a - (s + b));
                const double e11 = ((s + a) - (s + b)) * ((s + a) - (s + b));
                double t = e10 - e00;
                if (t > 0)
                    source[p] += t;
                else
                    sink[p] -= t;
                t = e11 - e10;
                if (t > 0)
                    source[q] += t;
                else
                    sink[q] -= t;
                t = e10 + e01 - e00 - e11;
                if (t > 0) cap[p] += t;
            }
        }
    }
}

template <int Dims>
int Solve(const float* phase, float* out, int64_t w, int64_t h, int64_t depth,
          const UnwrapStatusFn& status) {
    const int64_t n = w * h * depth;
    std::copy(phase, phase + n, out);
    if (n == 0) return 0;
    CGraphCutProblem g;
    g.width = w;
    g.height = h;
    g.depth = depth;
    g.source.resize(n);
    g.sink.resize(n);
    for (int d = 0; d < 2 * Dims; ++d) g.caps[d].resize(n);
    std::vector<uint8_t> ones(n);
    int iteration = 1;
    for (; iteration < kIterations; ++iteration) {
        std::fill(g.source.begin(), g.source.end(), 0.0);
        std::fill(g.sink.begin(), g.sink.end(), 0.0);
        const double* caps[6] = {};
        for (int d = 0; d < 2 * Dims; ++d) {
            std::fill(g.caps[d].begin(), g.caps[d].end(), 0.0);
            caps[d] = g.caps[d].data();
        }
        for (int d = 0; d < 2 * Dims; ++d) AddPairs(g, out, d);

        GridGraph<Dims> graph(w, h, depth);
        graph.Load(g.source.data(), g.sink.data(), caps);
        const float flow = graph.MaxFlow();
        if (status) {
            char text[96];
            std::snprintf(text, sizeof text, "iteration %d of %d: %g", iteration, kIterations,
                          static_cast<double>(flow / static_cast<float>(n)));
            status(text);
        }
        int64_t count = 0, p = 0;
        for (int64_t z = 0; z < depth; ++z)
            for (int64_t y = 0; y < h; ++y)
                for (int64_t x = 0; x < w; ++x, ++p) {
                    ones[p] = graph.InSinkTree(graph.Node(x, y, z)) ? 1 : 0;
                    count += ones[p];
                }
        if (count == 0 || count == n) {
            if (status) status("unchanged; early exit");
            break;
        }
        for (p = 0; p < n; ++p) out[p] += static_cast<float>(ones[p]) * g.step;
        g.step = -g.step;
    }
    return std::min(iteration, kIterations - 1);
}

}  // namespace

int UnwrapGraphCut(const float* phase, float* out, int64_t width, int64_t height,
                   const UnwrapStatusFn& status) {
    return Solve<2>(phase, out, width, height, 1, status);
}

int UnwrapGraphCut3d(const float* phase, float* out, int64_t width, int64_t height, int64_t depth,
                     const UnwrapStatusFn& status) {
    return Solve<3>(phase, out, width, height, depth, status);
}
