#include <algorithm>
#include <cmath>
#include <vector>

#include "wave/kernels.h"

float median_select(float* buf, int n) {
    const int k = (n - 1) / 2;
    // NaN goes last, as NumPy sorts it: left to the comparison, the pick would depend on
    // where a NaN happened to sit.
    float* const end = std::partition(buf, buf + n, [](float v) { return !std::isnan(v); });
    if (buf + k < end) std::nth_element(buf, buf + k, end);
    return buf[k];
}

void median_filter_2d(float* out, const float* in, const int* medwin, const int* dims) {
    int ny = dims[0], nx = dims[1];
    int hy = medwin[0] / 2, hx = medwin[1] / 2;
    int full = (2 * hy + 1) * (2 * hx + 1);
    if (nx < 1 || ny < 1 || full < 1) return;
    std::vector<float> win(full);
    for (int y = 0; y < ny; ++y)
        for (int x = 0; x < nx; ++x) {
            int k = 0;
            for (int v = std::max(y - hy, 0); v <= std::min(y + hy, ny - 1); ++v)
                for (int u = std::max(x - hx, 0); u <= std::min(x + hx, nx - 1); ++u)
                    win[k++] = in[size_t(v) * nx + u];
            std::fill(win.begin() + k, win.end(), 0.0f);  // the edge bias is wanted
            out[size_t(y) * nx + x] = median_select(win.data(), full);
        }
}
