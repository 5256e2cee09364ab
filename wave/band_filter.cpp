#include "wave/band_filter.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "wave/driver.h"
#include "wave/fft.h"
#include "wave/image_buffers.h"
#include "wave/kernels.h"
#include "wave/mem.h"
#include "wave/messages.h"

namespace {

// Gaussian HP sigmas are the LP ones divided by this.
constexpr double kHighPassNarrowing = 1.3658;

bool is_complex(const char* kind) { return kind && std::strcmp(kind, "complex") == 0; }

int columns(const char* kind, int nx) { return is_complex(kind) ? nx : nx / 2 + 1; }

void reject(const char* text) {
    std::string line = std::string(text) + "\n";
    wave_warn(WF_FILTER, line.c_str(), line.c_str());
}

bool valid_spec(const filter_spec* s) {
    bool band = s->type == 4 || s->type == 7;
    if (!(s->cut[0] > 0.0f) || (band && !(s->cut[1] > s->cut[0]))) {
        reject("filter cut-offs must be above 0 and in rising order");
        return false;
    }
    if (s->type >= 5 && s->order < 1) {
        reject("filter order must be at least 1");
        return false;
    }
    return true;
}

// Product of the three axis Gaussians over the filter, sigmas in cycles/FOV(x).
void gaussian_product(float* f, bool complex_kind, int nx, int ny, int nz, double step_y,
                      double step_z, double sigma) {
    int nc = complex_kind ? nx : nx / 2 + 1;
    std::vector<float> gx(nc), gy(ny), gz(nz);
    gaussian_vector(gx.data(), nc, 0.0, sigma, complex_kind ? 1 : 0);
    gaussian_vector(gy.data(), ny, 0.0, sigma / step_y, 1);
    gaussian_vector(gz.data(), nz, 0.0, sigma / step_z, 1);
    for (int k = 0; k < nz; ++k)
        for (int j = 0; j < ny; ++j) {
            float* row = f + (size_t(k) * ny + j) * nc;
            float a = gy[j] * gz[k];
            for (int i = 0; i < nc; ++i) row[i] = gx[i] * a;
        }
}

double butterworth(int type, double r2, const filter_spec* s) {
    double c0 = s->cut[0], c1 = s->cut[0], c2 = s->cut[1];
    switch (type) {
        case 5:
            return 1.0 / std::sqrt(1.0 + std::pow(r2 / (c0 * c0), s->order));
        case 6:
            return r2 > 0.0 ? 1.0 / std::sqrt(1.0 + std::pow(c0 * c0 / r2, s->order)) : 0.0;
        default: {
            if (!(r2 > 0.0)) return 0.0;
            double q = (c1 * c2 - r2) / (std::sqrt(r2) * (c2 - c1));
            return 1.0 / std::sqrt(1.0 + std::pow(q, 2.0 * s->order));
        }
    }
}

// Frequency filtering of one real image through the complex transform (odd rows).
void filter_real_as_complex(float* image, size_t npix, int nx, int ny, int nz,
                            const float* filter) {
    float* pair = nullptr;
    mem_allocate(&pair, sizeof(float), uint32_t(2 * npix), 0);
    std::memcpy(pair, image, sizeof(float) * npix);
    std::memset(pair + npix, 0, sizeof(float) * npix);
    filter_complex_pair(pair, nx, ny, filter, nz);
    std::memcpy(image, pair, sizeof(float) * npix);
    mem_free(&pair, 0);
}

// Shared text of the PRE, MID and POST filters; summary to the run log.
void announce(const filter_spec* spec, const char* verbose_head, const char* quiet) {
    std::string summary = filter_summary(spec);
    std::string verbose = verbose_head + summary;
    wave_say(WF_FILTER, quiet, verbose.c_str());
    if (!summary.empty()) msg_fatal_text(summary.c_str());
}

bool configured(const filter_spec* spec) { return spec && spec->type >= 0 && spec->type <= 7; }

int run_filter(float* data, int nimages, int pair, uint8_t* mask, wave_params* p, filter_spec* spec,
               int volume, const char* head, const char* quiet) {
    if (!configured(spec)) return 0;
    if (spec->type >= 2 && !valid_spec(spec)) return 1;
    announce(spec, head, quiet);
    return apply_filter_spec(data, nimages, pair, mask, p, spec, volume);
}

}  // namespace

void gaussian_vector(float* g, int n, double c, double sigma, int wrapped) {
    for (int i = 0; i < n; ++i) {
        double d = (wrapped && i > n / 2) ? i - (c + n) : i - c;
        double e = -d * d / (2.0 * sigma * sigma);
        g[i] = e < -20.0 ? 0.0f : float(std::exp(e));
    }
}

void mirror_filter(float* filter, const char* kind, int nx, int ny, int nz) {
    int nc = columns(kind, nx);
    size_t plane = size_t(nc) * ny;
    for (int k = nz / 2 + 1; k < nz; ++k)
        std::memcpy(filter + k * plane, filter + (nz - k) * plane, sizeof(float) * plane);
    for (int k = 0; k < nz; ++k) {
        float* slice = filter + k * plane;
        for (int j = ny / 2 + 1; j < ny; ++j)
            std::memcpy(slice + size_t(j) * nc, slice + size_t(ny - j) * nc, sizeof(float) * nc);
        if (is_complex(kind))
            for (int j = 0; j < ny; ++j) {
                float* row = slice + size_t(j) * nc;
                for (int i = nx / 2 + 1; i < nx; ++i) row[i] = row[nx - i];
            }
    }
}

int fill_band_filter(float* filter, const char* kind, int nx, int ny, int nz, double step_y,
                     double step_z, const filter_spec* spec) {
    if (spec->type < 2 || spec->type > 7) return 1;
    if (!valid_spec(spec)) return 1;
    bool cx = is_complex(kind);
    int nc = columns(kind, nx);
    size_t n = size_t(nc) * ny * nz;
    switch (spec->type) {
        case 2:
            gaussian_product(filter, cx, nx, ny, nz, step_y, step_z, spec->cut[0]);
            return 0;
        case 3:
        case 4:
            gaussian_product(filter, cx, nx, ny, nz, step_y, step_z,
                             spec->cut[0] / kHighPassNarrowing);
            for (size_t i = 0; i < n; ++i) filter[i] = 1.0f - filter[i];
            if (spec->type == 4) {
                std::vector<float> lp(n);
                gaussian_product(lp.data(), cx, nx, ny, nz, step_y, step_z, spec->cut[1]);
                for (size_t i = 0; i < n; ++i) filter[i] *= lp[i];
            }
            return 0;
        default:
            break;
    }
    int hx = std::min(nx / 2, nc - 1);
    for (int k = 0; k <= nz / 2; ++k)
        for (int j = 0; j <= ny / 2; ++j) {
            float* row = filter + (size_t(k) * ny + j) * nc;
            double fy = j * step_y, fz = k * step_z;
            for (int i = 0; i <= hx; ++i)
                row[i] = float(butterworth(spec->type, double(i) * i + fy * fy + fz * fz, spec));
        }
    mirror_filter(filter, kind, nx, ny, nz);
    return 0;
}

float* build_filter(const char* kind, const wave_params* p, const filter_spec* spec) {
    wave_params flat = *p;
    flat.nz = 1;
    return build_filter_3d(kind, &flat, spec);
}

float* build_filter_3d(const char* kind, const wave_params* p, const filter_spec* spec) {
    int nz = std::max(p->nz, 1);
    size_t n = size_t(columns(kind, p->nx)) * p->ny * nz;
    float* f = nullptr;
    mem_allocate(&f, sizeof(float), uint32_t(n), 0);
    double step_y = double(p->fov[0]) / p->fov[1], step_z = double(p->fov[0]) / p->fov[2];
    if (fill_band_filter(f, kind, p->nx, p->ny, nz, step_y, step_z, spec)) {
        mem_free(&f, 0);
        return nullptr;
    }
    return f;
}

int filter_real_images(float* images, int nx, int ny, int n, const float* filter, int nz) {
    if (nx % 2) return 1;
    size_t npix = size_t(nx) * ny * nz;
    size_t points = size_t(nx / 2 + 1) * ny * nz;
    int level = mem_next_level();
    float* buf = nullptr;
    uint8_t* marks = nullptr;
    mem_allocate(&buf, sizeof(float), uint32_t(size_t(nx + 2) * ny * nz), 0);
    mem_allocate(&marks, 1, uint32_t(npix), 0);
    for (int i = 0; i < n; ++i) {
        float* image = images + i * npix;
        std::memcpy(buf, image, sizeof(float) * npix);
        int held = hold_nonfinite(buf, marks, int(npix));
        rvfft_3d(buf, nx, ny, nz, 1);
        complex_times_real(buf, filter, int(points));
        rvfft_3d(buf, nx, ny, nz, -1);
        std::memcpy(image, buf, sizeof(float) * npix);
        if (held) restore_nan(image, marks, int(npix));
    }
    mem_free_level(level, 0);
    return 0;
}

int filter_complex_pair(float* pair, int nx, int ny, const float* filter, int nz) {
    int npix = nx * ny * nz;
    int level = mem_next_level();
    float* buf = nullptr;
    uint8_t* marks = nullptr;
    mem_allocate(&buf, sizeof(float), uint32_t(2 * npix), 0);
    mem_allocate(&marks, 1, uint32_t(2 * npix), 0);
    int held = hold_nonfinite(pair, marks, 2 * npix);
    interleave_planes(pair, buf, npix);
    GENERAL_cvfft_3d(buf, nx, ny, nz, 1);
    complex_times_real(buf, filter, npix);
    GENERAL_cvfft_3d(buf, nx, ny, nz, -1);
    split_planes(buf, pair, npix);
    if (held)
        for (int i = 0; i < npix; ++i)
            if (marks[i] || marks[npix + i])
                pair[i] = pair[npix + i] = std::numeric_limits<float>::quiet_NaN();
    mem_free_level(level, 0);
    return 0;
}

void spatial_filter(float* images, int nimages, const uint8_t* mask, int nx, int ny, int nz,
                    const int* res, int median) {
    int h[3] = {std::max(res[0], 1) / 2, std::max(res[1], 1) / 2,
                nz > 1 ? std::max(res[2], 1) / 2 : 0};
    // Labels: 1 inside, 0 outside the mask, 2 beyond the image.
    int px = nx + 2 * h[0], py = ny + 2 * h[1], pz = nz + 2 * h[2];
    std::vector<uint8_t> label(size_t(px) * py * pz, 2);
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x) {
                size_t i = (size_t(z) * ny + y) * nx + x;
                label[(size_t(z + h[2]) * py + y + h[1]) * px + x + h[0]] =
                    (!mask || mask[i]) ? 1 : 0;
            }
    size_t npix = size_t(nx) * ny * nz;
    std::vector<float> in(npix), vals;
    vals.reserve(size_t(2 * h[0] + 1) * (2 * h[1] + 1) * (2 * h[2] + 1));
    for (int m = 0; m < nimages; ++m) {
        float* out = images + m * npix;
        std::memcpy(in.data(), out, sizeof(float) * npix);
        for (int z = 0; z < nz; ++z)
            for (int y = 0; y < ny; ++y)
                for (int x = 0; x < nx; ++x) {
                    // A value that is not finite stays in its pixel and is no one's neighbour.
                    if (!std::isfinite(in[(size_t(z) * ny + y) * nx + x])) continue;
                    bool inside = label[(size_t(z + h[2]) * py + y + h[1]) * px + x + h[0]] == 1;
                    vals.clear();
                    for (int dz = -h[2]; dz <= h[2]; ++dz)
                        for (int dy = -h[1]; dy <= h[1]; ++dy) {
                            // Rows beyond the image hold label 2 only.
                            if (z + dz < 0 || z + dz >= nz || y + dy < 0 || y + dy >= ny) continue;
                            const uint8_t* lrow =
                                &label[(size_t(z + dz + h[2]) * py + y + dy + h[1]) * px + h[0]];
                            const float* vrow = in.data() + (size_t(z + dz) * ny + y + dy) * nx;
                            for (int dx = -h[0]; dx <= h[0]; ++dx) {
                                uint8_t l = lrow[x + dx];
                                if (inside ? l != 1 : l == 2) continue;
                                float v = vrow[x + dx];
                                if (std::isfinite(v)) vals.push_back(v);
                            }
                        }
                    if (vals.size() < 3) continue;
                    float v;
                    if (median) {
                        v = median_select(vals.data(), int(vals.size()));
                    } else {
                        double s = 0.0;
                        for (float a : vals) s += a;
                        v = float(s / double(vals.size()));
                    }
                    out[(size_t(z) * ny + y) * nx + x] = v;
                }
    }
}

std::string filter_summary(const filter_spec* s) {
    switch (s->type) {
        case 2:
            return wave_fmt("Gaussian LP filter, passing frequencies below %.1f cycles/FOV(x)\r\n",
                            s->cut[0]);
        case 3:
            return wave_fmt("Gaussian HP filter, Passing frequencies above %.1f cycles/FOV(x)\r\n",
                            s->cut[0]);
        case 4:
            return wave_fmt(
                "Gaussian BP filter, Passing frequencies between %.1f and %.1f cycles/FOV(x)\r\n",
                s->cut[0], s->cut[1]);
        case 5:
            return wave_fmt(
                "Butterworth LP filter, passing frequencies below %.1f cycles/FOV(x)\r\n",
                s->cut[0]);
        case 6:
            return wave_fmt(
                "Butterworth HP filter, Passing frequencies above %.1f cycles/FOV(x)\r\n",
                s->cut[0]);
        case 7:
            return wave_fmt(
                "Butterworth BP filter, Passing frequencies between %.1f and %.1f "
                "cycles/FOV(x)\r\n",
                s->cut[0], s->cut[1]);
        default:
            return "";
    }
}

int apply_filter_spec(float* images, int nimages, int pair, const uint8_t* mask,
                      const wave_params* p, const filter_spec* spec, int volume) {
    if (!configured(spec)) return 0;
    int nx = p->nx, ny = p->ny, nz = volume ? std::max(p->nz, 1) : 1;
    size_t npix = size_t(nx) * ny * nz;
    if (spec->type <= 1) {
        spatial_filter(images, nimages, mask, nx, ny, nz, spec->res, spec->type);
        return 0;
    }
    int level = mem_next_level();
    // rvfft needs even rows; odd ones take the complex transform.
    bool real_path = !pair && nx % 2 == 0;
    wave_params shape = *p;
    shape.nz = nz;
    float* f = build_filter_3d(real_path ? "real" : "complex", &shape, spec);
    if (!f) return mem_free_level(level, 0), 1;
    if (real_path)
        filter_real_images(images, nx, ny, nimages, f, nz);
    else if (pair)
        for (int i = 0; i + 1 < nimages; i += 2)
            filter_complex_pair(images + i * npix, nx, ny, f, nz);
    else
        for (int i = 0; i < nimages; ++i)
            filter_real_as_complex(images + i * npix, npix, nx, ny, nz, f);
    mem_free_level(level, 0);
    return 0;
}

int pre_filter(float* stack, uint8_t* mask, wave_params* p, filter_spec* spec) {
    int n = p->complex_in ? 2 : p->nt;
    return run_filter(stack, n, 0, mask, p, spec, 0, "PRE-FILTER: ", "PRE-FILTER");
}

int pre_filter_3d(float* stack, uint8_t* mask, wave_params* p, filter_spec* spec) {
    int n = p->complex_in ? 2 : p->nt;
    return run_filter(stack, n, 0, mask, p, spec, 1, "PRE-FILTER: ", "PRE-FILTER");
}

int mid_filter(float* pair, uint8_t* mask, wave_params* p, filter_spec* spec) {
    return run_filter(pair, 2, 1, mask, p, spec, 0, "MID-FILTER: ", "MID-FILTER");
}

int mid_filter_3d(float* pair, uint8_t* mask, wave_params* p, filter_spec* spec) {
    return run_filter(pair, 2, 1, mask, p, spec, 1, "MID-FILTER: ", "MID-FILTER");
}

int post_filter(float* image, uint8_t* mask, wave_params* p, filter_spec* spec) {
    return run_filter(image, 1, 0, mask, p, spec, 0, "   POST-FILTER: ", ".POST-FILTER");
}

int post_filter_3d(float* image, uint8_t* mask, wave_params* p, filter_spec* spec) {
    return run_filter(image, 1, 0, mask, p, spec, 1, "   POST-FILTER: ", ".POST-FILTER");
}
