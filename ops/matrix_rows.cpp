// Function-table rows of the matrix family (minv, diag) and the installation of the matrix
// operator behind `a *xy b` and `a /xy b`, both at start-up. trace has no row: it stays a
// routine for code.
#include "eval/matrix_hook.h"
#include "ops/matrix.h"
#include "ops/op_rows.h"

namespace {

int EvalMinv(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return MatrixInverse(t, a[0], a[1], FloatArg(a[2])); });
}
int EvalDiag(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Diag(t, a[0], a[1]); });
}

// Help records: title, argument pairs, null, example lines, null.
const char* const kHelpMinv[] = {"invert matrix",
                                 "\"xy\"",
                                 "two directions: the matrix plane",
                                 "data",
                                 "input data array",
                                 "thresh",
                                 "singular values below thresh times the largest are nulled",
                                 nullptr,
                                 "out = minv('xy',data,1e-6)",
                                 "inverse by singular value decomposition",
                                 "all other dimensions will be processed",
                                 nullptr};
const char* const kHelpDiag[] = {"matrix diag",
                                 "\"xy\"",
                                 "two directions: the matrix plane",
                                 "data",
                                 "input data array",
                                 nullptr,
                                 "out = diag('xy',data)",
                                 "[n][n] gives the diagonal [n][1]; [n][1] gives [n][n]",
                                 nullptr};

// The threshold is part of every call, so minv takes three arguments.
const CFuncRow kRows[] = {
    {"minv", EvalMinv, 3, 3, FAMILY_PAIRS, kHelpMinv},
    {"diag", EvalDiag, 2, 2, FAMILY_PAIRS, kHelpDiag},
};

const CFunctionRows kRegister(kRows);
const MatrixOperator kPrevious = SetMatrixOperator(MatrixOperate);

}  // namespace
