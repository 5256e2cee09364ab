#include "wave/mask.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <vector>

namespace {

constexpr int kFirstLabel = 2;
constexpr int kLastLabel = 255;

struct Labels {
    uint8_t parent[256];
    int next = kFirstLabel;

    Labels() { std::iota(parent, parent + 256, 0); }
    int root(int a) const {
        while (parent[a] != a) a = parent[a];
        return a;
    }
    void join(int a, int b) {
        a = root(a);
        b = root(b);
        if (a != b) parent[std::max(a, b)] = uint8_t(std::min(a, b));
    }
};

// Rewrites every label to its root and renumbers the roots from 2; returns the next free label.
int compact(std::vector<uint8_t>& img, Labels& t) {
    uint8_t map[256] = {};
    int next = kFirstLabel;
    for (int a = kFirstLabel; a < t.next; ++a)
        if (t.root(a) == a) map[a] = uint8_t(next++);
    for (uint8_t& v : img)
        if (v >= kFirstLabel) v = map[t.root(v)];
    t = Labels();
    t.next = next;
    return next;
}

// Labels the 1-pixels of a padded volume (a zero plane, row and column on every side) with
// 6-connected 8-bit labels from 2. Returns false when 254 labels do not suffice.
bool label(std::vector<uint8_t>& img, int px, int py, int pz) {
    Labels t;
    size_t plane = size_t(px) * py;
    for (int z = 1; z < pz - 1; ++z)
        for (int y = 1; y < py - 1; ++y)
            for (int x = 1; x < px - 1; ++x) {
                size_t i = z * plane + size_t(y) * px + x;
                if (img[i] != 1) continue;
                int found = 0;
                for (size_t back : {size_t(1), size_t(px), plane}) {
                    int v = img[i - back];
                    if (v < kFirstLabel) continue;
                    if (found)
                        t.join(found, v);
                    else
                        found = v;
                }
                if (!found) {
                    if (t.next > kLastLabel && compact(img, t) > kLastLabel) return false;
                    found = t.next++;
                }
                img[i] = uint8_t(found);
            }
    compact(img, t);
    return true;
}

// Keeps (value 1) the `keep` largest labelled regions of `img`; returns false on label overflow.
bool largest_regions(std::vector<uint8_t>& img, int px, int py, int pz, int keep,
                     std::vector<uint8_t>& kept) {
    if (!label(img, px, py, pz)) return false;
    int area[256] = {};
    for (uint8_t v : img) ++area[v];
    std::vector<int> order;
    for (int a = kFirstLabel; a <= kLastLabel; ++a)
        if (area[a]) order.push_back(a);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return area[a] > area[b]; });
    kept.assign(256, 0);
    for (int i = 0; i < keep && i < int(order.size()); ++i) kept[order[i]] = 1;
    return true;
}

// Region cleaning of one block (a slice or the volume).
bool clean(uint8_t* mask, int nx, int ny, int nz, int nregions, int nvoids) {
    int px = nx + 2, py = ny + 2, pz = nz + 2;
    std::vector<uint8_t> img(size_t(px) * py * pz), kept;
    auto pad = [&](bool invert) {
        std::fill(img.begin(), img.end(), invert ? 1 : 0);
        for (int z = 0; z < nz; ++z)
            for (int y = 0; y < ny; ++y)
                for (int x = 0; x < nx; ++x) {
                    bool in = mask[(size_t(z) * ny + y) * nx + x] != 0;
                    img[(size_t(z + 1) * py + y + 1) * px + x + 1] = in != invert;
                }
    };
    auto each = [&](auto&& f) {
        for (int z = 0; z < nz; ++z)
            for (int y = 0; y < ny; ++y)
                for (int x = 0; x < nx; ++x)
                    f(mask[(size_t(z) * ny + y) * nx + x],
                      img[(size_t(z + 1) * py + y + 1) * px + x + 1]);
    };
    std::vector<uint8_t> result(mask, mask + size_t(nx) * ny * nz);
    if (nregions > 0) {
        pad(false);
        if (!largest_regions(img, px, py, pz, nregions, kept)) return false;
        each([&](uint8_t& m, uint8_t v) { m = v >= kFirstLabel && kept[v]; });
    }
    if (nvoids >= 0) {
        pad(true);
        if (!largest_regions(img, px, py, pz, nvoids, kept)) {
            std::copy(result.begin(), result.end(), mask);
            return false;
        }
        each([&](uint8_t& m, uint8_t v) {
            if (v >= kFirstLabel && !kept[v]) m = 1;
        });
    }
    return true;
}

}  // namespace

void mask_from_magnitude(const float* mag, uint8_t* mask, int nx, int ny, int nz, float background,
                         int smooth) {
    size_t n = size_t(nx) * ny * nz;
    for (size_t i = 0; i < n; ++i) mask[i] = mag[i] >= background;
    if (!smooth) return;
    for (int z = 0; z < nz; ++z) {
        mask_smooth_9x9(mask + size_t(z) * nx * ny, nx, ny);
        mask_smooth_9x9(mask + size_t(z) * nx * ny, nx, ny);
    }
}

void mask_smooth_9x9(uint8_t* mask, int nx, int ny) {
    std::vector<uint8_t> rows(size_t(nx) * ny, 0);
    // Running sums of 9 columns, then of 9 rows; at most 81, so 8 bits hold them.
    for (int y = 0; y < ny; ++y) {
        const uint8_t* m = mask + size_t(y) * nx;
        uint8_t* r = rows.data() + size_t(y) * nx;
        if (nx < 9) continue;
        int s = 0;
        for (int x = 0; x < 9; ++x) s += m[x] != 0;
        r[4] = uint8_t(s);
        for (int x = 5; x < nx - 4; ++x) {
            s += (m[x + 4] != 0) - (m[x - 5] != 0);
            r[x] = uint8_t(s);
        }
    }
    std::memset(mask, 0, size_t(nx) * ny);
    if (ny < 9) return;
    for (int x = 4; x < nx - 4; ++x) {
        int s = 0;
        for (int y = 0; y < 9; ++y) s += rows[size_t(y) * nx + x];
        mask[size_t(4) * nx + x] = s > 40;
        for (int y = 5; y < ny - 4; ++y) {
            s += rows[size_t(y + 4) * nx + x] - rows[size_t(y - 5) * nx + x];
            mask[size_t(y) * nx + x] = s > 40;
        }
    }
}

int mask_regions(uint8_t* mask, int nx, int ny, int nz, int nregions, int nvoids, int mask_2d) {
    if (nregions <= 0 && nvoids < 0) return 0;
    if (mask_2d || nz == 1) {
        int failed = 0;
        for (int z = 0; z < nz; ++z)
            failed |= !clean(mask + size_t(z) * nx * ny, nx, ny, 1, nregions, nvoids);
        return failed;
    }
    return clean(mask, nx, ny, nz, nregions, nvoids) ? 0 : 1;
}
