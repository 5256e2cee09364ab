#include <cblas.h>
#include <lapacke.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <string>
#include <vector>

#include "wave/kernels.h"
#include "wave/messages.h"

namespace {

using cd = std::complex<double>;

void report(const char* quiet_text, const char* verbose_text) {
    wave_warn(WF_KERNELS, quiet_text, verbose_text);
}

// Quiet form "\n<text>", verbose form "<text>".
void report_nl(const std::string& text) { report(("\n" + text).c_str(), text.c_str()); }

double factorial(int n) {
    double f = 1.0;
    for (int i = 2; i <= n; ++i) f *= i;
    return f;
}

// Coefficients (constant first) of the Legendre polynomials P_0 .. P_order, by
// n P_n = (2n - 1) x P_(n-1) - (n - 1) P_(n-2).
std::vector<std::vector<double>> legendre(int order) {
    std::vector<std::vector<double>> p(order + 1, std::vector<double>(order + 1, 0.0));
    p[0][0] = 1.0;
    if (order >= 1) p[1][1] = 1.0;
    for (int n = 2; n <= order; ++n)
        for (int k = 0; k <= n; ++k) {
            double v = -(n - 1) * p[n - 2][k];
            if (k > 0) v += (2 * n - 1) * p[n - 1][k - 1];
            p[n][k] = v / n;
        }
    return p;
}

double horner(const std::vector<double>& c, double x) {
    double v = 0.0;
    for (size_t k = c.size(); k-- > 0;) v = v * x + c[k];
    return v;
}

// Non-separable fit over `dims` axes; `name` heads the messages.
int sg_coeff_nd(int dims, const int* deriv, int order, const int* nl, const int* nr, float* coef,
                const char* name) {
    for (int a = 0; a < dims; ++a)
        if (deriv[a] > order || deriv[a] < 0) {
            report_nl(std::string(name) +
                      ": Order of derivative cannot be larger than order of polynomial\n");
            return 1;
        }
    int size[3] = {1, 1, 1};
    long m = 1;
    for (int a = 0; a < dims; ++a) {
        size[a] = nl[a] + 1 + nr[a];
        m *= std::max(size[a], 0);
    }
    // Exponent tuples with sum at most order, first axis outermost, each ascending.
    std::vector<std::array<int, 3>> terms;
    for (int i = 0; i <= order; ++i)
        for (int j = 0; j <= (dims > 1 ? order - i : 0); ++j)
            for (int k = 0; k <= (dims > 2 ? order - i - j : 0); ++k) terms.push_back({i, j, k});
    long u = long(terms.size());
    if (u > m || m < 1) {
        report_nl(std::string(name) +
                  ": Number of unknowns in polynomial must be smaller than number of points in "
                  "window.\n");
        return 1;
    }
    auto leg = legendre(order);
    // Each axis's coordinates mapped onto [-1, 1].
    std::vector<double> xs[3];
    double stretch[3] = {1.0, 1.0, 1.0};
    for (int a = 0; a < dims; ++a) {
        double lo = -nl[a], hi = nr[a];
        stretch[a] = hi > lo ? 2.0 / (hi - lo) : 1.0;
        for (int t = -nl[a]; t <= nr[a]; ++t)
            xs[a].push_back(hi > lo ? 2.0 * (t - lo) / (hi - lo) - 1.0 : 0.0);
    }
    for (int a = dims; a < 3; ++a) xs[a] = {0.0};
    std::vector<double> A(size_t(m) * u), P(size_t(u) * m);
    size_t row = 0;
    for (double xa : xs[0])
        for (double xb : xs[1])
            for (double xc : xs[2]) {
                for (long c = 0; c < u; ++c) {
                    auto [i, j, k] = terms[c];
                    double v = horner(leg[i], xa);
                    if (dims > 1) v *= horner(leg[j], xb);
                    if (dims > 2) v *= horner(leg[k], xc);
                    A[row * u + c] = v;
                }
                ++row;
            }
    if (pinv_svd(A.data(), P.data(), int(m), int(u), 1e-10)) {
        report_nl(std::string(name) +
                  ": Error finding matrix inverse while finding filter coefficients.\n");
        return 1;
    }
    // d-th derivative of P_k at 0, in the units of the window.
    auto D = [&](int k, int axis) {
        int d = deriv[axis];
        if (d > k) return 0.0;
        return factorial(d) * leg[k][d] * std::pow(stretch[axis], d);
    };
    std::vector<double> rhs(u);
    for (long c = 0; c < u; ++c) {
        auto [i, j, k] = terms[c];
        rhs[c] = D(i, 0) * (dims > 1 ? D(j, 1) : 1.0) * (dims > 2 ? D(k, 2) : 1.0);
    }
    for (long q = 0; q < m; ++q) {
        double s = 0.0;
        for (long c = 0; c < u; ++c) s += rhs[c] * P[c * m + q];
        coef[q] = float(s);
    }
    return 0;
}

}  // namespace

int pinv_svd(const double* a, double* ainv, int m, int n, double tol) {
    if (m < 1 || n < 1 || !a || !ainv) return -1;
    // Column-major complex copy for zgesvd.
    std::vector<cd> ac(size_t(m) * n), u(size_t(m) * m), vt(size_t(n) * n);
    for (int i = 0; i < m; ++i)
        for (int j = 0; j < n; ++j) ac[i + size_t(j) * m] = a[size_t(i) * n + j];
    int k = std::min(m, n);
    std::vector<double> s(k), superb(std::max(k - 1, 1));
    auto z = [](std::vector<cd>& v) { return reinterpret_cast<lapack_complex_double*>(v.data()); };
    int info = LAPACKE_zgesvd(LAPACK_COL_MAJOR, 'A', 'A', m, n, z(ac), m, s.data(), z(u), m, z(vt),
                              n, superb.data());
    if (info != 0) return -1;
    int r = 0;
    while (r < k && s[r] > tol) ++r;
    // pinv = V_r S_r^-1 U_r^H: scale the kept rows of V^H, then one product.
    for (int i = 0; i < r; ++i) cblas_zdscal(n, 1.0 / s[i], vt.data() + i, n);
    std::vector<cd> c(size_t(n) * m, cd(0.0, 0.0));
    if (r > 0) {
        const cd one(1.0, 0.0), zero(0.0, 0.0);
        cblas_zgemm(CblasColMajor, CblasConjTrans, CblasConjTrans, n, m, r, &one, vt.data(), n,
                    u.data(), m, &zero, c.data(), n);
    }
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < m; ++j) ainv[size_t(i) * m + j] = c[i + size_t(j) * n].real();
    return 0;
}

int SGcoeff(int deriv, int order, int nl, int nr, float* coef) {
    if (deriv > order || deriv < 0) {
        report("\nSGcoeff: Order of derivative cannot be larger than order of polynomial\n",
               "SGcoeff: Order of derivative cannot be larger than order of polynomial\n");
        return 1;
    }
    int m = nl + nr + 1;
    if (order >= m || nl < 0 || nr < 0) {
        report("\nSGcoeff: Order of polynomial must be smaller than window size.",
               "SGcoeff: Order of polynomial must be smaller than window size.\n");
        return 1;
    }
    int u = order + 1;
    std::vector<double> A(size_t(m) * u), P(size_t(u) * m);
    for (int i = 0; i < m; ++i) {
        double t = i - nl, v = 1.0;
        for (int j = 0; j < u; ++j, v *= t) A[size_t(i) * u + j] = v;
    }
    if (pinv_svd(A.data(), P.data(), m, u, 1e-10)) return 1;
    double f = factorial(deriv);
    for (int i = 0; i < m; ++i) coef[i] = float(f * P[size_t(deriv) * m + i]);
    return 0;
}

int SGcoeff2d(const int* deriv2, int order, const int* nl2, const int* nr2, float* coef) {
    return sg_coeff_nd(2, deriv2, order, nl2, nr2, coef, "SGcoeff2d");
}

int SGcoeff3d(const int* deriv3, int order, const int* nl3, const int* nr3, float* coef) {
    return sg_coeff_nd(3, deriv3, order, nl3, nr3, coef, "SGcoeff3d");
}

int Farid_coeff(int order, int half, float* coef) {
    // Left half and centre of the symmetric kernels, windows 3 to 13. The second-derivative
    // rows do not sum to zero; they are kept as published.
    static const float kSmooth[6][7] = {
        {0.191983208f, 0.616033554f},
        {0.0248433184f, 0.246357471f, 0.457598418f},
        {0.00355099095f, 0.0627684519f, 0.246340767f, 0.374679595f},
        {0.000442298013f, 0.0128819551f, 0.0857097954f, 0.237113744f, 0.32770443f},
        {5.5419001e-05f, 0.00231718598f, 0.0233095195f, 0.100090928f, 0.22663556f, 0.295182794f},
        {5.47499985e-06f, 0.000358513993f, 0.00523513509f, 0.0325196758f, 0.108659931f,
         0.217102721f, 0.272237092f}};
    static const float kSecond[6][7] = {
        {0.572972894f, -1.28444886f},
        {0.23400794f, 0.0368355662f, -0.544950306f},
        {0.0479735248f, 0.153139323f, -0.0469632968f, -0.308488339f},
        {0.0079021249f, 0.060710717f, 0.0969283953f, -0.0606722198f, -0.209744349f},
        {0.001155579f, 0.0159723554f, 0.0588582493f, 0.0614573359f, -0.0600105673f, -0.154862687f},
        {0.000142972f, 0.00325706601f, 0.0209388807f, 0.0525537506f, 0.040057417f, -0.055645898f,
         -0.122655421f}};
    const char* bad_order = "\nInvalid filter order in function Farid_coeff. \n\n";
    const char* bad_size = "\nInvalid filter size in function Farid_coeff. \n\n";
    if (order != 0 && order != 2) return report(bad_order, bad_order), 1;
    if (half < 1 || half > 6) return report(bad_size, bad_size), 1;
    const float* left = order == 0 ? kSmooth[half - 1] : kSecond[half - 1];
    for (int i = 0; i <= half; ++i) coef[i] = coef[2 * half - i] = left[i];
    return 0;
}

int Romano_coeff(int order, int half, float* coef) {
    const char* bad_order = "\nInvalid filter order in function Romano_coeff. \n\n";
    if (order != 0 && order != 2) return report(bad_order, bad_order), 1;
    if (half < 1) {
        coef[0] = 1.0f;
        return 0;
    }
    int n = 2 * half + 1;
    std::vector<double> w(n);
    double sum = 0.0;
    for (int k = -half; k <= half; ++k) {
        double r = double(k) / half;
        w[k + half] = (1.0 - r * r) * (1.0 - r * r);
        sum += w[k + half];
    }
    for (double& v : w) v /= sum;
    if (order == 0) {
        for (int i = 0; i < n; ++i) coef[i] = float(w[i]);
        return 0;
    }
    // The smoothing kernel convolved with the 3-tap Laplacian, cut to the window.
    coef[0] = float(w[1]);
    for (int i = 1; i < n - 1; ++i) coef[i] = float(w[i - 1] - 2.0 * w[i] + w[i + 1]);
    coef[n - 1] = float(w[n - 2]);
    return 0;
}
