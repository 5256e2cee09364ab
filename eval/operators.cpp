// The reductions of operators, assignment and function calls: pop the operands, run the
// elementwise engine under the operator's err_func, push the result.
#include <cstring>
#include <vector>

#include "core/elementwise.h"
#include "core/report.h"
#include "core/zrk_error.h"
#include "eval/eval.h"
#include "eval/function_table.h"
#include "eval/matrix_hook.h"

namespace {

MatrixOperator g_matrix_operator = nullptr;

const char* UnaryText(int op) {
    switch (op) {
        case OP_NEG:
            return "unary (-)";
        case OP_LNOT:
            return "!";
        default:
            return "~";
    }
}

}  // namespace

MatrixOperator SetMatrixOperator(MatrixOperator op) {
    MatrixOperator previous = g_matrix_operator;
    g_matrix_operator = op;
    return previous;
}

MatrixOperator InstalledMatrixOperator() { return g_matrix_operator; }

void CEval::Drop(CZrkData* used, const CZrkData* result) {
    // a consumed temporary of ours is referred to by nothing else: free it now, so long
    // equations keep the temporary list short
    if (used != result && temp.IsDataValid(used)) temp.DelData(used);
}

CZrkData* CEval::KeepBack(int op, CZrkData* a, CZrkData* b) {
    const bool scalar_left = a->Count() == 1 && b->Count() != 1;
    CZrkData* x = scalar_left ? b : a;
    CZrkData* s = scalar_left ? a : b;
    if (chain_ && chain_->Takes(op, x, s)) {
        chain_->Add(op, s, scalar_left);
        Drop(s, x);
        return x;
    }
    if (!CScalarChain::Starts(op, x, s)) return nullptr;
    const int type = BinaryResultType(op, x->Type(), s->Type());
    // a temporary of ours is written over only when it keeps its type; one that would not
    // is consumed here and must not outlive this step
    const bool spare = temp.IsDataValid(x);
    if (spare && x->Type() != type) return nullptr;
    Settle();
    res_t res[6];
    x->GetRes(res);
    CZrkData* out = spare ? x : NewTemp(temp, type, res);
    chain_.emplace(x, out);
    chain_->Add(op, s, scalar_left);
    Drop(s, out);
    return out;
}

int CEval::BinaryOp(int op) {
    if (skip) return 0;
    // operands are popped unsettled: a step on the kept-back result may join it
    CZrkData* b = PopOperand();
    if (!b) return DataNotOnStack("BinaryOp()");
    CZrkData* a = PopOperand();
    if (!a) return DataNotOnStack("BinaryOp()");
    return Reported({.func = OpText(op)}, 1, [&] {
        if (CZrkData* kept = KeepBack(op, a, b)) return PushData(kept);
        Settle();
        // A temporary of ours is referred to by nothing else: it may carry the result.
        const unsigned spare = (temp.IsDataValid(a) ? SPARE_LEFT : SPARE_NONE) |
                               (temp.IsDataValid(b) ? SPARE_RIGHT : SPARE_NONE);
        CZrkData* out = BinaryOperation(temp, op, a, b, spare);
        Drop(a, out);
        Drop(b, out);
        return PushData(out);
    });
}

int CEval::UnaryOp(int op) {
    if (skip) return 0;
    CZrkData* a = PopData();
    if (!a) return DataNotOnStack("UnaryOp()");
    return Reported({.func = UnaryText(op)}, 1, [&] {
        CZrkData* out = UnaryOperation(temp, op, a);
        Drop(a, out);
        return PushData(out);
    });
}

int CEval::AutoOp(int delta) {
    if (skip) return 0;
    CZrkData* a = PopData();
    if (!a) return DataNotOnStack("AutoOp()");
    return Reported({.func = delta > 0 ? "++" : "--"}, 1, [&] {
        IncrementInPlace(a, delta);
        return PushData(a);
    });
}

int CEval::TernaryOp() {
    if (skip) return 0;
    CZrkData* b = PopData();
    if (!b) return DataNotOnStack("TernaryOp()");
    CZrkData* a = PopData();
    if (!a) return DataNotOnStack("TernaryOp()");
    CZrkData* c = PopData();
    if (!c) return DataNotOnStack("TernaryOp()");
    return Reported({.func = "()?():()"}, 1,
                    [&] { return PushData(TernaryOperation(temp, c, a, b)); });
}

int CEval::MatrixOp(bool divide, int pair) {
    if (skip) return 0;
    const char* func = divide ? "CEval::EvalMatrixDiv" : "CEval::EvalMatrixMul";
    CZrkData* b = PopData();
    if (!b) return DataNotOnStack(func);
    CZrkData* a = PopData();
    if (!a) return DataNotOnStack(func);
    return Reported({.func = func}, 1, [&] {
        if (!g_matrix_operator) Raise("matrix operators not available");
        return PushData(g_matrix_operator(temp, a, b, pair / 6, pair % 6, divide));
    });
}

int CEval::Assignment() {
    if (skip) return 0;
    CZrkData* e = PopData();
    if (!e) return DataNotOnStack("Assignment()");
    uint64_t tag = 0;
    if (PopTag(&tag)) {
        err_func = "Assignment()";
        return 1;
    }
    const int op = static_cast<int>(tag - TAG_ASSIGN);
    if (tag < TAG_ASSIGN || (op != ASSIGN_EQUAL && op >= OP_BINARY_COUNT))
        return SetError("Assignment()", "internal error, invalid stack");
    const uint64_t top = Peek(0);
    if (top > TAG_INDEXED && top <= TAG_INDEXED + 6) return IndexedAssignment(op, e);
    if (top != TAG_DATA) return SetError("Assignment()", "internal error, invalid stack");
    CZrkData* a = PopData();
    if (!a) return DataNotOnStack("Assignment()");
    return Reported({.func = "Assignment()"}, 1, [&] {
        CZrkData* value;
        if (op == ASSIGN_EQUAL) {
            if (e->Type() < 0) Raise("invalid data type");
            if (temp.IsDataValid(e) && e != a) {
                value = e;  // our own temporary: its samples move, a copy would be the same
            } else {
                res_t res[6];
                e->GetRes(res);
                value = NewTemp(temp, e->Type(), res);
                if (e->Bytes()) std::memcpy(value->Data(), e->Data(), e->Bytes());
            }
        } else {
            SetErrFunc(OpText(op));
            value = BinaryOperation(temp, op, a, e);
        }
        a->NewUndo("equation", value);
        temp.DelData(value);
        return PushData(a);
    });
}

int CEval::CallFunction(int index) {
    Settle();
    if (skip) return 0;
    const CFuncRow* row = FunctionRow(index);
    if (!row) return SetError("CallFunction()", "internal error, invalid function");
    const int count = CountArgs();
    if (count < row->min_args || count > row->max_args)
        return SetError("CallFunction()", "argument number mismatch");
    std::vector<CZrkData*> args(static_cast<size_t>(count));
    for (int k = count - 1; k >= 0; --k) {
        args[k] = PopData();
        if (!args[k]) return DataNotOnStack("CallFunction()");
        if (args[k]->Bytes() == 0) return SetError("CallFunction()", "null input data set");
    }
    CZrkData* out = nullptr;
    const int status =
        Reported({}, 1, [&] { return row->handler(&out, temp, args.data(), count); });
    uint64_t mark = 0;
    PopTag(&mark);
    if (status) return status;
    if (!out) return SetError("CallFunction()", "internal error, data not on stack");
    return PushData(out);
}
