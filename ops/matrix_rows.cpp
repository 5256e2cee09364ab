// Function-table rows of the matrix family (minv, diag). trace has no row: it stays a routine
// for code.
#include "ops/function_rows.h"
#include "ops/matrix.h"
#include "ops/op_rows.h"

namespace {

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
}  // namespace

std::vector<CFuncDecl> MatrixRows() {
    return {
        Plain<"minv", [](CDataSpace& t, CZrkData** a,
                         int) { return MatrixInverse(t, a[0], a[1], FloatArg(a[2])); }>(
            {.args = 3, .help = kHelpMinv, .place = 1570, .family = FAMILY_PAIRS}),
        Plain<"diag", [](CDataSpace& t, CZrkData** a, int) { return Diag(t, a[0], a[1]); }>(
            {.args = 2, .help = kHelpDiag, .place = 2490, .family = FAMILY_PAIRS}),
    };
}
