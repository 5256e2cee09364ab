// Matrix operators: an array taken as a stack of matrices over a pair of directions. In the
// pair (p, q) the element M[i][j] sits at index i along p and j along q; every other
// direction runs over the stack. `a *yz b` multiplies plane by plane, `a /yz b` multiplies
// by the inverse of b's planes, minv inverts by singular-value decomposition.
//
// Directions outside the pair take the larger resolution of the two operands, an operand's
// index wrapping at its own resolution as in the elementwise operators, so one matrix acts
// on a whole stack. Work happens in r4, r8, complex r4 or complex r8 (MatrixType); the
// result of a product or division is converted to the operands' common type. Inputs are
// never changed; sizes are checked before anything is allocated.
//
//   CZrkData* c = MatrixMul(temp, a, b, 0, 1);                 // a *xy b
//   CZrkData* inv = MatrixInverse(temp, Text("xy"), a, 1e-6);   // minv("xy", a, 1e-6)
#pragma once

#include <cstdint>

#include "core/data_space.h"
#include "core/zrk_data.h"

// One singular-value decomposition context, sized once by the workspace query and kept for
// every plane of an operator. `compute` decomposes the square or rectangular matrix in `a`
// (column-major, rows x cols) into u, s and vt and returns LAPACK's info. Raises "sample
// points can not be represented as an MKL_INT" for sizes above 0x7FFFFFFF, before any
// allocation.
class SvdWork {
  public:
    // `type` is one of r4, r8, complex r4, complex r8; without `vectors` jobu is 'N'.
    SvdWork(int type, int64_t rows, int64_t cols, bool vectors = true);
    ~SvdWork();
    SvdWork(const SvdWork&) = delete;
    SvdWork& operator=(const SvdWork&) = delete;

    int (*compute)(SvdWork& w) = nullptr;
    int32_t rows = 0, cols = 0;
    int32_t type = 0;
    int32_t realBytes = 0;
    int32_t elementBytes = 0;
    int32_t workCount = 0;
    char jobu = 'A', jobvt = 'A';
    void* a = nullptr;   // rows x cols, overwritten by each decomposition
    void* u = nullptr;   // rows x rows
    void* vt = nullptr;  // cols x cols
    void* s = nullptr;   // min(rows, cols) reals
    void* work = nullptr;
    void* rwork = nullptr;  // complex types only

  private:
    void Release();
};

// The working type of `type`: r4 for r4 and the integers up to two bytes, r8 for r8 and the
// wider integers, the complex counterparts for complex types; -1 for an invalid type.
int MatrixType(int type);

// a times b over the pair (first, second): "matrix size incompatible" unless a's extent
// along `second` equals b's along `first`.
CZrkData* MatrixMul(CDataSpace& temp, const CZrkData* a, const CZrkData* b, int first, int second);
// a times the inverse of b's planes: "inverse matrix needs to be square" for a b that is not
// square in the pair, "matrix size incompatible" when its size does not match a.
CZrkData* MatrixDiv(CDataSpace& temp, const CZrkData* a, const CZrkData* b, int first, int second);
// The evaluator's matrix operator: the sixteen products (xy ... uv and vu) and the fifteen
// divisions; any other ordered pair raises "invalid direction". Shows "*xy" or "/xy" in the
// status bar while it runs and logs its failure line.
CZrkData* MatrixOperate(CDataSpace& temp, const CZrkData* a, const CZrkData* b, int first,
                        int second, bool divide);

// Inverse of each plane in the first two directions named in `pair`: singular values below
// the largest finite one times `thresh` (and non-finite ones) are nulled.
CZrkData* MatrixInverse(CDataSpace& temp, const CZrkData* pair, const CZrkData* a, double thresh);
// [n][n] planes give their diagonal as [n][1]; [n][1] planes give [n][n] with the vector on
// the diagonal. Keeps the element type.
CZrkData* Diag(CDataSpace& temp, const CZrkData* pair, const CZrkData* a);
// Sum of each plane's diagonal, [1][1] in the pair, in the working type. Not a row of the
// function table; callable from code.
CZrkData* Trace(CDataSpace& temp, const CZrkData* pair, const CZrkData* a);
