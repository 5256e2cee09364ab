#include "wave/matched.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "wave/image_buffers.h"
#include "wave/kernels.h"
#include "wave/mem.h"
#include "wave/messages.h"
#include "wave/progress.h"

namespace {

inline int reflect(int c, int n) {
    if (c < 0) c = -c - 1;
    if (c >= n) c = 2 * n - 1 - c;
    return std::clamp(c, 0, n - 1);
}

// The 1-D factor of the normalised Gaussian along an axis of half-width h.
std::vector<float> gauss_1d(int h, float sigma) {
    std::vector<float> g(2 * h + 1, 1.0f);
    if (h > 0)
        for (int a = -h; a <= h; ++a)
            g[a + h] = std::exp(double(a) * a / (double(h) * h) * (-double(sigma) * sigma * 0.5));
    return g;
}

}  // namespace

void gauss_window_norm(float* buf, const int* win, float sigma) {
    int h0 = win[0] / 2, h1 = win[1] / 2;
    auto gy = gauss_1d(h0, sigma), gx = gauss_1d(h1, sigma);
    for (int a = 0; a <= 2 * h0; ++a)
        for (int b = 0; b <= 2 * h1; ++b) buf[a * (2 * h1 + 1) + b] = gy[a] * gx[b];
}

void window_extract(const mf_complex* wave, mf_complex* ext, mf_complex* core, int nx, int ny,
                    int x, int y, const int* win) {
    int h0 = win[0] / 2, h1 = win[1] / 2;
    int ew = 2 * h1 + 3, cw = 2 * h1 + 1;
    for (int a = -h0 - 1; a <= h0 + 1; ++a) {
        const mf_complex* row = wave + size_t(reflect(y + a, ny)) * nx;
        for (int b = -h1 - 1; b <= h1 + 1; ++b) {
            mf_complex v = row[reflect(x + b, nx)];
            ext[(a + h0 + 1) * ew + (b + h1 + 1)] = v;
            if (std::abs(a) <= h0 && std::abs(b) <= h1) core[(a + h0) * cw + (b + h1)] = v;
        }
    }
}

void window_correlate(const mf_complex* core, mf_complex* F, const float* g1y, const float* g1x,
                      const float* g2, const int* win) {
    int h0 = win[0] / 2, h1 = win[1] / 2;
    int rows = 2 * h0 + 1, cols = 2 * h1 + 1;
    std::vector<mf_complex> t(size_t(rows) * cols);
    // Along x: t[k][j] = sum_l conj(core[k][l]) g1x[j - l + h1], the index cut to the window.
    for (int k = 0; k < rows; ++k)
        for (int j = 0; j < cols; ++j) {
            mf_complex s = 0.0f;
            for (int l = std::max(0, j - h1); l <= std::min(cols - 1, j + h1); ++l)
                s += std::conj(core[k * cols + l]) * g1x[j - l + h1];
            t[k * cols + j] = s;
        }
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) {
            mf_complex s = 0.0f;
            for (int k = std::max(0, i - h0); k <= std::min(rows - 1, i + h0); ++k)
                s += t[k * cols + j] * g1y[i - k + h0];
            F[i * cols + j] = s * g2[i * cols + j];
        }
}

void laplacian_filter(const mf_complex* F, mf_complex* L, const int* win, float c) {
    int h0 = win[0] / 2, h1 = win[1] / 2;
    int rows = 2 * h0 + 1, cols = 2 * h1 + 1;
    auto at = [&](int i, int j) {  // F on the extended grid, 0 outside its own
        return (i < 1 || j < 1 || i > rows || j > cols) ? mf_complex(0.0f)
                                                        : F[(i - 1) * cols + (j - 1)];
    };
    for (int i = 0; i < rows + 2; ++i)
        for (int j = 0; j < cols + 2; ++j)
            L[i * (cols + 2) + j] = (2 * c + 2) * at(i, j) - at(i, j - 1) - at(i, j + 1) -
                                    c * at(i - 1, j) - c * at(i + 1, j);
}

mf_complex complex_dot(const mf_complex* a, const mf_complex* b, int n) {
    std::complex<double> s = 0.0;
    for (int i = 0; i < n; ++i) s += std::complex<double>(a[i]) * std::complex<double>(b[i]);
    return mf_complex(s);
}

void mf_energies(const mf_complex* F, const mf_complex* L, const float* extw, const int* win,
                 double* e_l, double* e_f, double* e_c) {
    int h0 = win[0] / 2, h1 = win[1] / 2;
    int rows = 2 * h0 + 1, cols = 2 * h1 + 1, ecols = cols + 2;
    *e_l = *e_f = *e_c = 0.0;
    for (int i = 0; i < rows + 2; ++i)
        for (int j = 0; j < ecols; ++j) *e_l += std::norm(L[i * ecols + j]) * extw[i * ecols + j];
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) {
            double w = extw[(i + 1) * ecols + j + 1];
            mf_complex f = F[i * cols + j], l = L[(i + 1) * ecols + j + 1];
            *e_f += std::norm(f) * w;
            *e_c += (std::conj(f) * l).real() * w;
        }
}

void mf_core(const mf_complex* wave, mf_complex* ratio, const float* weights, float* err,
             const int* dims, const float* pixel, const float* sigmas, const int* win, int seq,
             int nseq) {
    int ny = dims[0], nx = dims[1];
    int h0 = win[0] / 2, h1 = win[1] / 2;
    int rows = 2 * h0 + 1, cols = 2 * h1 + 1, erows = rows + 2, ecols = cols + 2;
    auto g1y = gauss_1d(h0, sigmas[0]), g1x = gauss_1d(h1, sigmas[0]);
    std::vector<float> g2(size_t(rows) * cols), extw(size_t(erows) * ecols);
    gauss_window_norm(g2.data(), win, sigmas[1]);
    std::vector<mf_complex> core(size_t(rows) * cols), ext(size_t(erows) * ecols), F(core.size()),
        L(ext.size());
    std::vector<mf_complex> wimg(size_t(nx) * ny), wext(ext.size()), wcore(core.size());
    for (size_t i = 0; i < wimg.size(); ++i) wimg[i] = weights[i];
    float c = 1.0f / ((pixel[0] / pixel[1]) * (pixel[0] / pixel[1]));
    double p2 = double(pixel[1]) * pixel[1];
    for (int y = 0; y < ny; ++y) {
        if (wave_quiet[WF_MF]) {
            if (nseq > 0) run_progress(3, seq * ny + y, nseq * ny, 0, 0, 0, 0);
        } else {
            std::string t = wave_fmt("\rProcessing row %d of %d ", y + 1, ny);
            wave_say(WF_MF, nullptr, t.c_str());
        }
        for (int x = 0; x < nx; ++x) {
            size_t p = size_t(y) * nx + x;
            window_extract(wave, ext.data(), core.data(), nx, ny, x, y, win);
            window_extract(wimg.data(), wext.data(), wcore.data(), nx, ny, x, y, win);
            for (size_t i = 0; i < extw.size(); ++i) extw[i] = wext[i].real();
            window_correlate(core.data(), F.data(), g1y.data(), g1x.data(), g2.data(), win);
            laplacian_filter(F.data(), L.data(), win, c);
            double el, ef, ec;
            mf_energies(F.data(), L.data(), extw.data(), win, &el, &ef, &ec);
            std::complex<double> A = complex_dot(F.data(), core.data(), int(core.size()));
            if (std::abs(A) < 1e-7) {
                ratio[p] = 0.0f;
                err[p] = 1e+35f;
                continue;
            }
            std::complex<double> B = complex_dot(L.data(), ext.data(), int(ext.size()));
            std::complex<double> q = B / A, qp = q / p2;
            ratio[p] = mf_complex(qp);
            err[p] =
                float((std::norm(qp) * ef + el - 2 * qp.real() * ec) / std::norm(A) / (p2 * p2));
        }
    }
    if (!wave_quiet[WF_MF]) wave_say(WF_MF, nullptr, "\r                            \r");
}

int matched_filter(const float* re, const float* im, float* speed2, float* atten, float* cmu_re,
                   float* cmu_im, int nx, int ny, float fov_x, float fov_y, float mech_freq,
                   const int* win, float regular, const uint8_t* mask, const uint8_t* aux_mask,
                   int seq, int nseq) {
    if (nx < 3 || ny < 3) {
        const char* t = "\nmatched_filter: Image must be at least 3 pixels along each axis.\n";
        wave_warn(WF_MF, t, t);
        return 1;
    }
    if (win[0] > ny || win[1] > nx || win[0] < 1 || win[1] < 1) {
        const char* t = "\nmatched_filter: Filter window cannot be bigger than image.\n";
        wave_warn(WF_MF, t, t);
        return 1;
    }
    size_t n = size_t(nx) * ny;
    int level = mem_next_level();
    mf_complex *wave = nullptr, *ratio = nullptr;
    float *weights = nullptr, *mag2 = nullptr;
    mem_allocate(&wave, sizeof(mf_complex), uint32_t(n), 0);
    mem_allocate(&ratio, sizeof(mf_complex), uint32_t(n), 0);
    mem_allocate(&weights, sizeof(float), uint32_t(2 * n), 0);
    mag2 = weights + n;
    for (size_t i = 0; i < n; ++i) wave[i] = mf_complex(re[i], im[i]), weights[i] = 1.0f;
    const int dims[2] = {ny, nx};
    const float pixel[2] = {fov_y / ny, fov_x / nx}, sigmas[2] = {3.2f, 1.4f};
    mf_core(wave, ratio, weights, speed2, dims, pixel, sigmas, win, seq, nseq);
    std::vector<float> gathered;
    const uint8_t* sel = aux_mask ? aux_mask : mask;
    for (size_t i = 0; i < n; ++i) {
        mag2[i] = std::norm(ratio[i]);
        if (regular > 1e-7f && (!sel || sel[i]) && std::isfinite(mag2[i]))
            gathered.push_back(mag2[i]);
    }
    float reg =
        gathered.empty() ? 0.0f : median_select(gathered.data(), int(gathered.size())) * regular;
    double w = 2 * std::numbers::pi * mech_freq, w2 = w * w;
    for (size_t i = 0; i < n; ++i) {
        speed2[i] = atten[i] = cmu_re[i] = cmu_im[i] = 0.0f;
        double r2 = mag2[i], d = reg + r2;
        if (!(d > 1e-7)) continue;
        double cr = ratio[i].real() / d, ci = -ratio[i].imag() / d;
        if (r2 > 0.0) {
            double m = std::sqrt(r2) / d;
            if (m + cr > 0.0) {
                double h = std::sqrt(m + cr), s = m * std::sqrt(2.0) * w / h;
                speed2[i] = float(s * s);
                atten[i] = float(ci / (m * std::sqrt(2.0) * h));
            }
        }
        cmu_re[i] = float(cr * w2);
        cmu_im[i] = float(ci * w2);
    }
    mem_free_level(level, 0);
    return 0;
}
