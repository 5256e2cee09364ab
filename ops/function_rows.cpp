#include "ops/function_rows.h"

#include "eval/matrix_hook.h"
#include "ops/matrix.h"

void InstallFunctions() {
    static const bool kInstalled = [] {
        for (auto* family : {BasicRows, ComplexRows, MathRows, StructuralRows, TransformRows,
                             ConvolutionRows, ReduceRows, MatrixRows, UnwrapRows, ThresholdRows})
            RegisterFunctions(family());
        SetMatrixOperator(MatrixOperate);
        return true;
    }();
    (void)kInstalled;
}
