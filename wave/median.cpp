#include <algorithm>
#include <utility>
#include <vector>

#include "wave/kernels.h"

float median_select(float* buf, int n) {
    int k = (n - 1) / 2;
    int lo = 0, hi = n - 1;
    while (hi > lo) {
        // Median of three as pivot, placed at lo.
        int mid = lo + (hi - lo) / 2;
        if (buf[mid] < buf[lo]) std::swap(buf[mid], buf[lo]);
        if (buf[hi] < buf[lo]) std::swap(buf[hi], buf[lo]);
        if (buf[hi] < buf[mid]) std::swap(buf[hi], buf[mid]);
        std::swap(buf[mid], buf[lo]);
        float pivot = buf[lo];
        int i = lo, j = hi + 1;
        for (;;) {
            do ++i;
            while (i <= hi && buf[i] < pivot);
            do --j;
            while (buf[j] > pivot);
            if (i >= j) break;
            std::swap(buf[i], buf[j]);
        }
        std::swap(buf[lo], buf[j]);
        if (j == k) break;
        if (j < k)
            lo = j + 1;
        else
            hi = j - 1;
    }
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
