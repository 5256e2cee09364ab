// The seam through which the matrix operators reach the evaluator: `a *xy b` and `a /xy b`
// parse here, and the file that implements them installs its routine at start-up. Until
// one is installed they fail with "matrix operators not available".
#pragma once

#include "core/data_space.h"
#include "core/zrk_data.h"

// The product (or with `divide` the division) of a and b over the directions `first` and
// `second` (0 ... 5), made on `temp`; raises its failure text.
using MatrixOperator = CZrkData* (*)(CDataSpace& temp, const CZrkData* a, const CZrkData* b,
                                     int first, int second, bool divide);

// Installs `op`; returns the previous one.
MatrixOperator SetMatrixOperator(MatrixOperator op);
MatrixOperator InstalledMatrixOperator();
