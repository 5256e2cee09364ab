#include "ops/matrix.h"

#include <complex>
// LAPACKE's complex arguments as the standard library's complex types.
#define lapack_complex_float std::complex<float>
#define lapack_complex_double std::complex<double>
#include <cblas.h>
#include <lapacke.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "core/directions.h"
#include "core/elementwise.h"
#include "core/host.h"
#include "core/zrk_error.h"
#include "ops/structural_base.h"

extern "C" {
void openblas_set_num_threads(int num_threads);
int openblas_get_num_threads(void);
}

namespace {

constexpr int64_t kMaxLapackInt = 0x7FFFFFFF;
// Planes at or below this size run the library single-threaded: its threads cost more than
// they bring on small matrices, and the stack loop is the work.
constexpr int64_t kSmallPlane = 64;

using cfloat = std::complex<float>;
using cdouble = std::complex<double>;

template <class T>
struct RealOf {
    using type = T;
};
template <class R>
struct RealOf<std::complex<R>> {
    using type = R;
};
template <class T>
using Real = typename RealOf<T>::type;

template <class T>
constexpr bool kComplex = !std::is_same_v<T, Real<T>>;

// A failed decomposition (LAPACK's info not 0): the operator stops, reported as the
// wrappers report anything that is not one of our texts.
struct SvdFailed {};

void CheckLapackSize(int64_t n) {
    if (n > kMaxLapackInt) Raise("sample points can not be represented as an MKL_INT");
}

// Temporaries made along the way, released when the operator is done with them.
class Scratch {
  public:
    explicit Scratch(CDataSpace& temp) : temp_(temp) {}
    ~Scratch() {
        for (CZrkData* r : made_)
            if (temp_.IsDataValid(r)) temp_.DelData(r);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    // `a` in `type`: itself, or a converted copy that dies with this object.
    const CZrkData* As(const CZrkData* a, int type) {
        const CZrkData* r = AsType(temp_, a, type);
        if (r != a) made_.push_back(const_cast<CZrkData*>(r));
        return r;
    }
    CZrkData* Keep(CZrkData* r) {
        made_.push_back(r);
        return r;
    }
    // Hands a kept record over to the caller.
    CZrkData* Release(CZrkData* r) {
        made_.erase(std::remove(made_.begin(), made_.end(), r), made_.end());
        return r;
    }

  private:
    CDataSpace& temp_;
    std::vector<CZrkData*> made_;
};

// The library's thread count set to one for the life of a scope, when that helps.
class SingleBlasThread {
  public:
    explicit SingleBlasThread(bool small) {
        if (small) saved_ = openblas_get_num_threads();
        if (saved_ > 1) openblas_set_num_threads(1);
    }
    ~SingleBlasThread() {
        if (saved_ > 1) openblas_set_num_threads(saved_);
    }
    SingleBlasThread(const SingleBlasThread&) = delete;
    SingleBlasThread& operator=(const SingleBlasThread&) = delete;

  private:
    int saved_ = 0;
};

// The pair as the log names it: "Xy", "Vu".
std::string PairName(int p, int q) { return {kDirCapitals[p], kDirLetters[q]}; }
std::string PairLetters(int p, int q) { return {kDirLetters[p], kDirLetters[q]}; }

// The first two directions of a string argument, in direction order; false when it names
// fewer than two.
bool PairOf(const CZrkData* text, int* p, int* q) {
    const unsigned bits = DirectionsOf(text);
    int found[2], k = 0;
    for (int d = 0; d < 6 && k < 2; ++d)
        if (bits & (1u << d)) found[k++] = d;
    if (k < 2) return false;
    *p = found[0];
    *q = found[1];
    return true;
}

// A record seen as a stack of matrices over (p, q): its resolutions and element strides,
// and the four stack directions in direction order.
struct Stack {
    Stack(const CZrkData* r, int p_, int q_) : p(p_), q(q_) {
        r->GetRes(res);
        uint64_t s = 1;
        for (int d = 0; d < 6; ++d) {
            stride[d] = s;
            s *= res[d];
        }
        int k = 0;
        for (int d = 0; d < 6; ++d)
            if (d != p && d != q) outer[k++] = d;
    }
    uint64_t Count() const {
        uint64_t n = 1;
        for (int d : outer) n *= res[d];
        return n;
    }
    // Element offset of the plane at stack coordinates `c` (of a possibly larger stack),
    // each wrapped at this record's resolution.
    uint64_t Offset(const res_t c[4]) const {
        uint64_t off = 0;
        for (int k = 0; k < 4; ++k) off += (c[k] % res[outer[k]]) * stride[outer[k]];
        return off;
    }
    // Plane s of this stack as coordinates.
    void Coords(uint64_t s, res_t c[4]) const {
        for (int k = 0; k < 4; ++k) {
            c[k] = s % res[outer[k]];
            s /= res[outer[k]];
        }
    }
    // Planes that are contiguous column-major matrices: no gathering needed.
    bool Packed() const { return p == 0 && q == 1; }

    int p, q;
    res_t res[6];
    uint64_t stride[6];
    int outer[4];
};

// Plane at `src` (strides sp, sq) into a column-major m x n buffer, and back.
template <class T>
void Gather(const T* src, uint64_t sp, uint64_t sq, int64_t m, int64_t n, T* dst) {
    for (int64_t j = 0; j < n; ++j) {
        const T* col = src + j * sq;
        T* d = dst + j * m;
        if (sp == 1) {
            std::memcpy(d, col, m * sizeof(T));
        } else {
            for (int64_t i = 0; i < m; ++i) d[i] = col[i * sp];
        }
    }
}
template <class T>
void Scatter(const T* src, int64_t m, int64_t n, T* dst, uint64_t sp, uint64_t sq) {
    for (int64_t j = 0; j < n; ++j) {
        const T* s = src + j * m;
        T* col = dst + j * sq;
        if (sp == 1) {
            std::memcpy(col, s, m * sizeof(T));
        } else {
            for (int64_t i = 0; i < m; ++i) col[i * sp] = s[i];
        }
    }
}

// C (m x n) = op(A) op(B), column-major; op transposes (conjugating complex values) when
// `trans` is set.
template <class T>
void Gemm(bool trans, int m, int n, int k, const T* a, int lda, const T* b, int ldb, T* c,
          int ldc) {
    const CBLAS_TRANSPOSE t = trans ? (kComplex<T> ? CblasConjTrans : CblasTrans) : CblasNoTrans;
    if constexpr (std::is_same_v<T, float>) {
        cblas_sgemm(CblasColMajor, t, t, m, n, k, 1.0f, a, lda, b, ldb, 0.0f, c, ldc);
    } else if constexpr (std::is_same_v<T, double>) {
        cblas_dgemm(CblasColMajor, t, t, m, n, k, 1.0, a, lda, b, ldb, 0.0, c, ldc);
    } else {
        const T one(1), zero(0);
        if constexpr (std::is_same_v<T, cfloat>) {
            cblas_cgemm(CblasColMajor, t, t, m, n, k, &one, a, lda, b, ldb, &zero, c, ldc);
        } else {
            cblas_zgemm(CblasColMajor, t, t, m, n, k, &one, a, lda, b, ldb, &zero, c, ldc);
        }
    }
}

template <class T>
int ComputeSvd(SvdWork& w) {
    T* a = static_cast<T*>(w.a);
    T* u = static_cast<T*>(w.u);
    T* vt = static_cast<T*>(w.vt);
    Real<T>* s = static_cast<Real<T>*>(w.s);
    T* work = static_cast<T*>(w.work);
    const int m = w.rows, n = w.cols;
    if constexpr (std::is_same_v<T, float>) {
        return LAPACKE_sgesvd_work(LAPACK_COL_MAJOR, w.jobu, w.jobvt, m, n, a, m, s, u, m, vt, n,
                                   work, w.workCount);
    } else if constexpr (std::is_same_v<T, double>) {
        return LAPACKE_dgesvd_work(LAPACK_COL_MAJOR, w.jobu, w.jobvt, m, n, a, m, s, u, m, vt, n,
                                   work, w.workCount);
    } else if constexpr (std::is_same_v<T, cfloat>) {
        return LAPACKE_cgesvd_work(LAPACK_COL_MAJOR, w.jobu, w.jobvt, m, n, a, m, s, u, m, vt, n,
                                   work, w.workCount, static_cast<float*>(w.rwork));
    } else {
        return LAPACKE_zgesvd_work(LAPACK_COL_MAJOR, w.jobu, w.jobvt, m, n, a, m, s, u, m, vt, n,
                                   work, w.workCount, static_cast<double*>(w.rwork));
    }
}

// The workspace query: lwork = -1 leaves the wanted size in work[0].
template <class T>
double QueryWork(SvdWork& w) {
    T answer{};
    const int saved = w.workCount;
    void* saved_work = w.work;
    w.work = &answer;
    w.workCount = -1;
    const int info = ComputeSvd<T>(w);
    w.work = saved_work;
    w.workCount = saved;
    if (info != 0) throw SvdFailed{};
    return static_cast<double>(std::real(answer));
}

template <class T>
void SetUpSvd(SvdWork& w) {
    w.compute = ComputeSvd<T>;
    w.realBytes = sizeof(Real<T>);
    w.elementBytes = sizeof(T);
    const int64_t m = w.rows, n = w.cols, small = std::min(m, n);
    // Buffers the query itself may touch (rwork) come first.
    if constexpr (kComplex<T>) {
        const int64_t count = 10 * std::max<int64_t>(3 * small, 5 * small - 4);
        w.rwork = AlignedAlloc(std::max<int64_t>(count, 1) * sizeof(Real<T>));
    }
    w.a = AlignedAlloc(m * n * sizeof(T));
    w.u = AlignedAlloc(m * m * sizeof(T));
    w.vt = AlignedAlloc(n * n * sizeof(T));
    w.s = AlignedAlloc(std::max<int64_t>(small, 1) * sizeof(Real<T>));
    if (!w.a || !w.u || !w.vt || !w.s || (kComplex<T> && !w.rwork)) throw std::bad_alloc();
    const double answer = QueryWork<T>(w) * 10;
    if (!(answer >= 1) || answer > kMaxLapackInt)
        Raise("sample points can not be represented as an MKL_INT");
    w.workCount = static_cast<int32_t>(answer);
    w.work = AlignedAlloc(static_cast<uint64_t>(w.workCount) * sizeof(T));
    if (!w.work) throw std::bad_alloc();
}

// Inverse of the decomposed plane into c (m x m, leading dimension ldc): V (U W)^H with W
// the kept reciprocals. U is scaled in place.
template <class T>
void FormInverse(SvdWork& w, double thresh, T* c, int ldc) {
    using R = Real<T>;
    const int m = w.rows;
    const R* s = static_cast<const R*>(w.s);
    T* u = static_cast<T*>(w.u);
    R smax = 0;
    for (int k = 0; k < m; ++k)
        if (std::isfinite(s[k])) smax = std::max(smax, s[k]);
    // The cut passes s = smax * thresh, so thresh 0 keeps a zero and gives its infinity.
    const R cut = static_cast<R>(smax * thresh);
    for (int k = 0; k < m; ++k) {
        R keep = 0;
        if (std::isfinite(s[k]) && !(cut > s[k]))
            keep = s[k] == 0 ? std::numeric_limits<R>::infinity() : 1 / s[k];
        T* col = u + static_cast<int64_t>(k) * m;
        for (int i = 0; i < m; ++i) col[i] *= keep;
    }
    Gemm<T>(true, m, m, m, static_cast<const T*>(w.vt), m, u, m, c, ldc);
}

template <class T>
void InverseTyped(const CZrkData* a, CZrkData* r, int p, int q, double thresh) {
    const Stack st(a, p, q);
    const int64_t m = static_cast<int64_t>(st.res[p]);
    SvdWork w(r->type, m, m);
    const SingleBlasThread one(m <= kSmallPlane);
    const T* src = static_cast<const T*>(a->data);
    T* dst = static_cast<T*>(r->data);
    std::vector<T> plane(st.Packed() ? 0 : m * m);
    const uint64_t count = st.Count();
    res_t c[4];
    for (uint64_t s = 0; s < count; ++s) {
        st.Coords(s, c);
        const uint64_t off = st.Offset(c);
        Gather(src + off, st.stride[p], st.stride[q], m, m, static_cast<T*>(w.a));
        if (w.compute(w) != 0) throw SvdFailed{};
        if (st.Packed()) {
            FormInverse<T>(w, thresh, dst + off, static_cast<int>(m));
        } else {
            FormInverse<T>(w, thresh, plane.data(), static_cast<int>(m));
            Scatter(plane.data(), m, m, dst + off, st.stride[p], st.stride[q]);
        }
    }
}

template <class T>
void MulTyped(const CZrkData* a, const CZrkData* b, CZrkData* r, int p, int q) {
    const Stack sa(a, p, q), sb(b, p, q), sr(r, p, q);
    const int64_t m = sa.res[p], k = sa.res[q], n = sb.res[q];
    const bool packed = sr.Packed();
    const SingleBlasThread one(std::max({m, n, k}) <= kSmallPlane);
    std::vector<T> pa(packed ? 0 : m * k), pb(packed ? 0 : k * n), pc(packed ? 0 : m * n);
    const T* da = static_cast<const T*>(a->data);
    const T* db = static_cast<const T*>(b->data);
    T* dr = static_cast<T*>(r->data);
    const uint64_t count = sr.Count();
    res_t c[4];
    for (uint64_t s = 0; s < count; ++s) {
        sr.Coords(s, c);
        const T* pla = da + sa.Offset(c);
        const T* plb = db + sb.Offset(c);
        T* plr = dr + sr.Offset(c);
        if (packed) {
            Gemm<T>(false, m, n, k, pla, m, plb, k, plr, m);
            continue;
        }
        Gather(pla, sa.stride[p], sa.stride[q], m, k, pa.data());
        Gather(plb, sb.stride[p], sb.stride[q], k, n, pb.data());
        Gemm<T>(false, m, n, k, pa.data(), m, pb.data(), k, pc.data(), m);
        Scatter(pc.data(), m, n, plr, sr.stride[p], sr.stride[q]);
    }
}

// The result header of a product: the pair from the outer sizes, the rest the larger.
void ProductRes(const CZrkData* a, const CZrkData* b, int p, int q, res_t res[6]) {
    res_t ra[6], rb[6];
    a->GetRes(ra);
    b->GetRes(rb);
    for (int d = 0; d < 6; ++d) res[d] = std::max(ra[d], rb[d]);
    res[p] = ra[p];
    res[q] = rb[q];
}

// The product of records already in the working type `work`, converted to `type`.
CZrkData* Product(CDataSpace& temp, Scratch& scratch, const CZrkData* a, const CZrkData* b, int p,
                  int q, int work, int type) {
    res_t res[6];
    ProductRes(a, b, p, q, res);
    CZrkData* r = scratch.Keep(NewResult(temp, work, res, a));
    WithFloatValue(work, [&](auto v) { MulTyped<decltype(v)>(a, b, r, p, q); });
    if (type == work) return scratch.Release(r);
    CZrkData* out = ConvertRecord(temp, r, type);
    out->CopyMm(*a);
    return out;
}

// Inverse of every plane of `a` (already in its working type) over (p, q).
CZrkData* Inverse(CDataSpace& temp, const CZrkData* a, int p, int q, double thresh) {
    res_t res[6];
    a->GetRes(res);
    CZrkData* r = NewResult(temp, a->type, res, a);
    WithFloatValue(a->type, [&](auto v) { InverseTyped<decltype(v)>(a, r, p, q, thresh); });
    return r;
}

int WorkTypeOf(const CZrkData* a, const CZrkData* b, int* common) {
    *common = CommonType(a->type, b->type);
    if (*common < 0) Raise("invalid data type");
    return MatrixType(*common);
}

// The common routine of the sixteen products.
CZrkData* Multiply(CDataSpace& temp, const CZrkData* a, const CZrkData* b, int p, int q) {
    return LogFailure({"MatrixMul is flaky\r\n"}, [&] {
        RequireData(a);
        RequireData(b);
        if (a->Res(q) != b->Res(p)) Raise("matrix size incompatible");
        for (res_t n : {a->Res(p), a->Res(q), b->Res(q)}) CheckLapackSize(static_cast<int64_t>(n));
        int common;
        const int work = WorkTypeOf(a, b, &common);
        res_t res[6];
        ProductRes(a, b, p, q, res);
        CheckResultSize(common, res);
        Scratch scratch(temp);
        return Product(temp, scratch, scratch.As(a, work), scratch.As(b, work), p, q, work, common);
    });
}

// Threshold of the division: singular values below the working precision's rank cut-off
// relative to the largest are noise.
double DivisionThreshold(int work, res_t n) {
    const double eps = work % 10 == TYPE_R4 ? std::numeric_limits<float>::epsilon()
                                            : std::numeric_limits<double>::epsilon();
    return eps * static_cast<double>(n);
}

CZrkData* Divide(CDataSpace& temp, const CZrkData* a, const CZrkData* b, int p, int q) {
    RequireData(a);
    RequireData(b);
    const res_t n = b->Res(p);
    if (b->Res(q) != n) Raise("inverse matrix needs to be square");
    if (a->Res(q) != n) Raise("matrix size incompatible");
    for (res_t k : {a->Res(p), n}) CheckLapackSize(static_cast<int64_t>(k));
    int common;
    const int work = WorkTypeOf(a, b, &common);
    res_t res[6];
    ProductRes(a, b, p, q, res);
    CheckResultSize(common, res);
    Scratch scratch(temp);
    const CZrkData* inv =
        scratch.Keep(Inverse(temp, scratch.As(b, work), p, q, DivisionThreshold(work, n)));
    return Product(temp, scratch, scratch.As(a, work), inv, p, q, work, common);
}

// Raises "invalid direction" unless (p, q) is one of the operator's pairs.
void CheckPair(int p, int q, bool divide) {
    const bool ordered = p >= 0 && q < 6 && p < q;
    if (!ordered && (divide || p != 5 || q != 4)) Raise("invalid direction");
}

// The status text for the life of an operator.
class StatusText {
  public:
    explicit StatusText(const std::string& text) { Host().Status(text); }
    ~StatusText() { Host().Status(""); }
    StatusText(const StatusText&) = delete;
    StatusText& operator=(const StatusText&) = delete;
};

}  // namespace

SvdWork::SvdWork(int type_, int64_t rows_, int64_t cols_, bool vectors) {
    CheckLapackSize(rows_);
    CheckLapackSize(cols_);
    rows = static_cast<int32_t>(rows_);
    cols = static_cast<int32_t>(cols_);
    type = type_;
    if (!vectors) jobu = jobvt = 'N';
    try {
        WithFloatValue(type, [&](auto v) { SetUpSvd<decltype(v)>(*this); });
    } catch (...) {
        Release();
        throw;
    }
}

SvdWork::~SvdWork() { Release(); }

void SvdWork::Release() {
    for (void** p : {&a, &u, &vt, &s, &work, &rwork}) {
        AlignedFree(*p);
        *p = nullptr;
    }
}

int MatrixType(int type) {
    if (!IsValidType(type)) return -1;
    const int base = type % 10;
    const int real = base == TYPE_R8 || TypeInfo(base)->comp_bytes >= 4 ? TYPE_R8 : TYPE_R4;
    return (base == TYPE_R4 ? TYPE_R4 : real) + (IsComplexType(type) ? 10 : 0);
}

CZrkData* MatrixMul(CDataSpace& temp, const CZrkData* a, const CZrkData* b, int first, int second) {
    CheckPair(first, second, false);
    return LogFailure({"MatrixMul" + PairName(first, second) + " zarnik is flaky\r\n"},
                      [&] { return Multiply(temp, a, b, first, second); });
}

CZrkData* MatrixDiv(CDataSpace& temp, const CZrkData* a, const CZrkData* b, int first, int second) {
    CheckPair(first, second, true);
    return LogFailure({"MatrixDiv" + PairName(first, second) + "unknown error\r\n"},
                      [&] { return Divide(temp, a, b, first, second); });
}

CZrkData* MatrixOperate(CDataSpace& temp, const CZrkData* a, const CZrkData* b, int first,
                        int second, bool divide) {
    CheckPair(first, second, divide);
    const StatusText status({divide ? '/' : '*', kDirLetters[first], kDirLetters[second]});
    return divide ? MatrixDiv(temp, a, b, first, second) : MatrixMul(temp, a, b, first, second);
}

CZrkData* MatrixInverse(CDataSpace& temp, const CZrkData* pair, const CZrkData* a, double thresh) {
    int p = -1, q = -1;
    const bool found = PairOf(pair, &p, &q);
    const std::string letters = found ? PairLetters(p, q) : "";
    SetErrFunc(("minv('" + letters + "')").c_str());
    const std::string name = "MatrixInverse" + (found ? PairName(p, q) : "");
    return LogFailure({CaughtLine(name.c_str(), -1)}, [&] {
        if (!found) Raise("invalid direction");
        RequireData(a);
        if (a->Res(p) != a->Res(q)) Raise("inverse matrix needs to be square");
        CheckLapackSize(static_cast<int64_t>(a->Res(p)));
        const int work = MatrixType(a->type);
        res_t res[6];
        a->GetRes(res);
        CheckResultSize(work, res);
        Scratch scratch(temp);
        return Inverse(temp, scratch.As(a, work), p, q, thresh);
    });
}

CZrkData* Diag(CDataSpace& temp, const CZrkData* pair, const CZrkData* a) {
    int p = -1, q = -1;
    const bool found = PairOf(pair, &p, &q);
    const std::string letters = found ? PairLetters(p, q) : "";
    SetErrFunc(("diag('" + letters + "')").c_str());
    return LogFailure({"diag('" + letters + "') failed\r\n"}, [&] {
        if (!found) Raise("invalid direction");
        RequireData(a);
        const res_t m = a->Res(p), n = a->Res(q);
        const bool square = m == n;
        if (!square && n != 1) Raise("matrix size incompatible");
        res_t res[6];
        a->GetRes(res);
        res[q] = square ? 1 : m;
        CZrkData* r = NewResult(temp, a->type, res, a);
        const Stack sa(a, p, q), sr(r, p, q);
        const uint64_t bytes = a->elem_bytes, count = sr.Count();
        const char* src = static_cast<const char*>(a->data);
        char* dst = static_cast<char*>(r->data);
        if (!square) std::memset(dst, 0, r->Bytes());
        res_t c[4];
        for (uint64_t s = 0; s < count; ++s) {
            sr.Coords(s, c);
            const uint64_t oa = sa.Offset(c), orr = sr.Offset(c);
            // Square: element (i, i) to (i, 0); vector: (i, 0) to (i, i).
            for (res_t i = 0; i < m; ++i) {
                const uint64_t from = oa + i * sa.stride[p] + (square ? i * sa.stride[q] : 0);
                const uint64_t to = orr + i * sr.stride[p] + (square ? 0 : i * sr.stride[q]);
                std::memcpy(dst + to * bytes, src + from * bytes, bytes);
            }
        }
        return r;
    });
}

namespace {

// The sum of each plane's diagonal, accumulated in double precision.
template <class T>
void TraceTyped(const CZrkData* a, CZrkData* r, int p, int q) {
    const Stack sa(a, p, q), sr(r, p, q);
    const res_t n = std::min(sa.res[p], sa.res[q]);
    const T* src = static_cast<const T*>(a->data);
    T* dst = static_cast<T*>(r->data);
    const uint64_t count = sr.Count();
    res_t c[4];
    using Acc = std::conditional_t<kComplex<T>, cdouble, double>;
    for (uint64_t s = 0; s < count; ++s) {
        sr.Coords(s, c);
        const T* plane = src + sa.Offset(c);
        Acc sum = 0;
        for (res_t i = 0; i < n; ++i) sum += Acc(plane[i * (sa.stride[p] + sa.stride[q])]);
        dst[sr.Offset(c)] = T(sum);
    }
}

}  // namespace

CZrkData* Trace(CDataSpace& temp, const CZrkData* pair, const CZrkData* a) {
    int p = -1, q = -1;
    const bool found = PairOf(pair, &p, &q);
    SetErrFunc(("trace('" + (found ? PairLetters(p, q) : std::string()) + "')").c_str());
    return LogFailure({CaughtLine("eval_diag", -1)}, [&] {
        if (!found) Raise("invalid direction");
        RequireData(a);
        const int work = MatrixType(a->type);
        res_t res[6];
        a->GetRes(res);
        res[p] = res[q] = 1;
        CheckResultSize(work, res);
        Scratch scratch(temp);
        const CZrkData* in = scratch.As(a, work);
        CZrkData* r = NewResult(temp, work, res, a);
        WithFloatValue(work, [&](auto v) { TraceTyped<decltype(v)>(in, r, p, q); });
        return r;
    });
}
