// The shape every operator family gives its function-table rows: one handler per direction
// that calls Op::Run(temp, direction, args, nargs), and the general function that takes the
// direction string first.
//
//   struct OpFlip {
//       static constexpr const char* kGeneral = "flip()";  // err_func of the general row
//       static constexpr bool kMultiple = true;            // choose multiple, else choose one
//       static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int n) { return Flip(t, d, a[0]);
//       }
//   };
//   {"flip", Family<OpFlip, 4>::General, 2, 2, FAMILY_XYZT, kHelpFlip},
//   {"flipx", V<OpFlip>(0), 1, 1, FAMILY_PLAIN, nullptr},
#pragma once

#include "eval/function_table.h"
#include "ops/structural_base.h"

// A handler body: the operator's record is the call's result; what it raises is the report.
template <class F>
int Row(CZrkData** result, F&& op) {
    return Reported({}, 1, [&] { return Deliver(result, op()); });
}

// One handler per direction: Variant<Op, D> calls Op::Run(temp, D, args).
template <class Op, int D>
int Variant(CZrkData** result, CDataSpace& temp, CZrkData** args, int nargs) {
    return Row(result, [&] { return Op::Run(temp, D, args, nargs); });
}

// What the general function says of a string without a direction: "invalid direction" unless
// the family names its own text in kNoDirection.
template <class Op>
constexpr const char* NoDirectionText() {
    if constexpr (requires { Op::kNoDirection; })
        return Op::kNoDirection;
    else
        return "invalid direction";
}

// Count is 4 for a family of x ... t, 6 for one of x ... v.
template <class Op, int Count>
struct Family {
    static constexpr FuncHandler kVariants[6] = {Variant<Op, 0>,
                                                 Variant<Op, 1>,
                                                 Variant<Op, 2>,
                                                 Variant<Op, 3>,
                                                 Count > 4 ? Variant<Op, 4> : nullptr,
                                                 Count > 4 ? Variant<Op, 5> : nullptr};
    static int General(CZrkData** result, CDataSpace& temp, CZrkData** args, int nargs) {
        SetOpText(Op::kGeneral);
        return DirectionCall(kVariants, Op::kMultiple, NoDirectionText<Op>(), result, temp, args,
                             nargs);
    }
};

// The variant row of direction d.
template <class Op>
constexpr FuncHandler V(int d) {
    return Family<Op, 6>::kVariants[d];
}
