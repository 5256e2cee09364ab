#include "core/elementwise.h"

#include <cmath>
#include <cstring>

#include "core/math_errors.h"
#include "core/zrk_error.h"

namespace {

const char* const kOpText[OP_BINARY_COUNT] = {
    "+",  "-", "*", "/",  "%",  "<<", ">>", "&",       "|",       "^",     "==",
    "!=", "<", ">", "<=", ">=", "&&", "||", "iqmul()", "iqdiv()", "pow()", "atan2()"};

bool IsComparison(int op) { return op >= OP_EQ && op <= OP_LOR; }
bool IsIntegerOp(int op) { return op >= OP_SHL && op <= OP_BITXOR; }

template <class W>
void RunComparison(int op, const CZrkData* a, const CZrkData* b, CZrkData* out, int comps) {
    auto zip = [&](auto test) {
        ZipBlocks<W>(a, b, out, comps, [test](W* z, const W* x, const W* y, size_t m) {
            for (size_t j = 0; j < m; ++j) z[j] = test(x[j], y[j]) ? W(1) : W(0);
        });
    };
    switch (op) {
        case OP_EQ:
            zip([](W x, W y) { return x == y; });
            break;
        case OP_NE:
            zip([](W x, W y) { return x != y; });
            break;
        case OP_LT:
            zip([](W x, W y) { return x < y; });
            break;
        case OP_GT:
            zip([](W x, W y) { return x > y; });
            break;
        case OP_LE:
            zip([](W x, W y) { return x <= y; });
            break;
        case OP_GE:
            zip([](W x, W y) { return x >= y; });
            break;
        case OP_LAND:
            zip([](W x, W y) { return x != 0 && y != 0; });
            break;
        case OP_LOR:
            zip([](W x, W y) { return x != 0 || y != 0; });
            break;
        default:
            Raise("internal error, no operator");
    }
}

template <class W>
void ComplexMul(W* z, const W* x, const W* y, size_t m) {
    for (size_t j = 0; j < m; j += 2) {
        const W a = x[j], b = x[j + 1], c = y[j], d = y[j + 1];
        z[j] = a * c - b * d;
        z[j + 1] = a * d + b * c;
    }
}

template <class W>
void ComplexDiv(W* z, const W* x, const W* y, size_t m) {
    for (size_t j = 0; j < m; j += 2) {
        const W a = x[j], b = x[j + 1], c = y[j], d = y[j + 1];
        const W r = W(1) / (c * c + d * d);
        z[j] = (a * c + b * d) * r;
        z[j + 1] = (b * c - a * d) * r;
    }
}

template <class W>
void AddKernel(W* z, const W* x, const W* y, size_t m) {
    for (size_t j = 0; j < m; ++j) z[j] = x[j] + y[j];
}
template <class W>
void SubKernel(W* z, const W* x, const W* y, size_t m) {
    for (size_t j = 0; j < m; ++j) z[j] = x[j] - y[j];
}
template <class W>
void MulKernel(W* z, const W* x, const W* y, size_t m) {
    for (size_t j = 0; j < m; ++j) z[j] = x[j] * y[j];
}
template <class W>
void DivKernel(W* z, const W* x, const W* y, size_t m) {
    for (size_t j = 0; j < m; ++j) z[j] = x[j] / y[j];
}
template <class W>
void ModKernel(W* z, const W* x, const W* y, size_t m) {
    CheckedMap2(MATH_PLAIN, x, y, z, m, [](W p, W q) { return std::fmod(p, q); });
}
template <class W>
void PowKernel(W* z, const W* x, const W* y, size_t m) {
    CheckedMap2(MATH_POLE_AT_ZERO | MATH_UNDERFLOW_TO_ZERO, x, y, z, m,
                [](W p, W q) { return std::pow(p, q); });
}
template <class W>
void Atan2Kernel(W* z, const W* x, const W* y, size_t m) {
    CheckedMap2(MATH_PLAIN, x, y, z, m, [](W p, W q) { return std::atan2(p, q); });
}

template <class W>
void RunArithmetic(int op, const CZrkData* a, const CZrkData* b, CZrkData* out, int comps) {
    ZipBlocks<W>(a, b, out, comps, ArithmeticKernel<W>(op, comps));
}

}  // namespace

template <class W>
ArithmeticKernelFn<W> ArithmeticKernel(int op, int comps) {
    switch (op) {
        case OP_ADD:
            return AddKernel<W>;
        case OP_SUB:
            return SubKernel<W>;
        case OP_MUL:
            return comps == 2 ? ComplexMul<W> : MulKernel<W>;
        case OP_IQMUL:
            return MulKernel<W>;
        case OP_DIV:
            return comps == 2 ? ComplexDiv<W> : DivKernel<W>;
        case OP_IQDIV:
            return DivKernel<W>;
        case OP_MOD:
            return ModKernel<W>;
        case OP_POW:
            return PowKernel<W>;
        case OP_ATAN2:
            return Atan2Kernel<W>;
        default:
            Raise("internal error, no operator");
    }
}

template ArithmeticKernelFn<float> ArithmeticKernel<float>(int op, int comps);
template ArithmeticKernelFn<double> ArithmeticKernel<double>(int op, int comps);

namespace {

// Shifts and bit operations work on 64-bit integers; shift counts wrap at 64 as the
// processor's do, so no count is undefined.
void RunInteger(int op, const CZrkData* a, const CZrkData* b, CZrkData* out) {
    using W = int64_t;
    auto zip = [&](auto kernel) { ZipBlocks<W>(a, b, out, 1, kernel); };
    switch (op) {
        case OP_SHL:
            zip([](W* z, const W* x, const W* y, size_t m) {
                for (size_t j = 0; j < m; ++j)
                    z[j] = static_cast<W>(static_cast<uint64_t>(x[j]) << (y[j] & 63));
            });
            break;
        case OP_SHR:
            zip([](W* z, const W* x, const W* y, size_t m) {
                for (size_t j = 0; j < m; ++j) z[j] = x[j] >> (y[j] & 63);
            });
            break;
        case OP_BITAND:
            zip([](W* z, const W* x, const W* y, size_t m) {
                for (size_t j = 0; j < m; ++j) z[j] = x[j] & y[j];
            });
            break;
        case OP_BITOR:
            zip([](W* z, const W* x, const W* y, size_t m) {
                for (size_t j = 0; j < m; ++j) z[j] = x[j] | y[j];
            });
            break;
        case OP_BITXOR:
            zip([](W* z, const W* x, const W* y, size_t m) {
                for (size_t j = 0; j < m; ++j) z[j] = x[j] ^ y[j];
            });
            break;
        default:
            Raise("internal error, no operator");
    }
}

// Copies the bytes of `a` into `out`, each element from its index modulo a's resolution. A
// line of `out` is a's row repeated: one copy of the row, then copies of what is done, which
// doubles each time. Large results share their lines among the cores.
void TileBytes(const CZrkData* a, CZrkData* out) {
    const uint64_t eb = static_cast<uint64_t>(a->ElementBytes());
    const uint64_t line_bytes = out->nx * eb;
    const uint64_t row_bytes = std::min<uint64_t>(a->nx * eb, line_bytes);
    const int64_t lines = static_cast<int64_t>(out->Count() / out->nx);
    const res_t sizes[5] = {out->ny, out->nz, out->nt, out->nu, out->nv};
    const bool parallel = out->Count() >= kParallelElements;
    const uint64_t run =
        ParallelRun(static_cast<uint64_t>(lines), line_bytes, parallel ? omp_get_max_threads() : 1);
#pragma omp parallel for schedule(dynamic, run) if (parallel)
    for (int64_t line = 0; line < lines; ++line) {
        res_t at[5];
        uint64_t rest = static_cast<uint64_t>(line);
        for (int d = 0; d < 5; ++d) {
            at[d] = rest % sizes[d];
            rest /= sizes[d];
        }
        const char* row = a->Address(0, at[0] % a->ny, at[1] % a->nz, at[2] % a->nt, at[3] % a->nu,
                                     at[4] % a->nv);
        char* dst = static_cast<char*>(out->Data()) + static_cast<uint64_t>(line) * line_bytes;
        std::memcpy(dst, row, row_bytes);
        for (uint64_t done = row_bytes; done < line_bytes;) {
            const uint64_t n = std::min(done, line_bytes - done);
            std::memcpy(dst + done, dst, n);
            done += n;
        }
    }
}

}  // namespace

bool IsArithmeticOp(int op) {
    return op >= 0 && op < OP_BINARY_COUNT && !IsComparison(op) && !IsIntegerOp(op);
}

const char* OpText(int op) { return op >= 0 && op < OP_BINARY_COUNT ? kOpText[op] : ""; }

int BinaryResultType(int op, int a, int b) {
    if (!IsValidType(a) || !IsValidType(b)) return -1;
    if (op >= OP_BITAND && op <= OP_BITXOR) return PromoteInteger(a, b);
    if (IsComparison(op)) return IsComplexType(a) || IsComplexType(b) ? TYPE_CN1 : TYPE_N1;
    return Promote(a, b);
}

void CheckOperand(const CZrkData* a) {
    if (!a || a->Type() < 0 || a->Bytes() == 0) Raise("invalid data type");
}

CZrkData* NewTemp(CDataSpace& temp, int type, const res_t res[6]) {
    if (!IsValidType(type)) Raise("invalid data type");
    CZrkData* out = temp.NewData(type, res[0], res[1], res[2], res[3], res[4], res[5], "");
    if (!out) Raise("out of memory");
    return out;
}

CTiled::CTiled(CDataSpace& temp, const CZrkData* a, const res_t res[6]) : temp_(temp), use_(a) {
    res_t own[6];
    a->GetRes(own);
    if (a->Count() == 1 || std::equal(own, own + 6, res)) return;
    tile_ = TileTo(temp, a, res);
    use_ = tile_;
}

CTiled::~CTiled() {
    if (tile_) temp_.DelData(tile_);
}

CZrkData* TileTo(CDataSpace& temp, const CZrkData* a, const res_t res[6]) {
    CheckOperand(a);
    CZrkData* out = NewTemp(temp, a->Type(), res);
    if (out->Count() != 0) TileBytes(a, out);
    return out;
}

CZrkData* BinaryOperation(CDataSpace& temp, int op, CZrkData* a, CZrkData* b, unsigned spare) {
    CheckOperand(a);
    CheckOperand(b);
    const int type = BinaryResultType(op, a->Type(), b->Type());
    if (!IsValidType(type)) Raise("invalid data type");
    if (IsIntegerOp(op) && (a->IsComplex() || b->IsComplex())) Raise("internal error, no operator");
    CZrkData header;
    header.PromoteFrom(*a, *b);
    res_t res[6];
    header.GetRes(res);

    const bool in_place = a != b;
    auto fits = [&](const CZrkData* r) { return r->Type() == type && header.SameRes(*r); };
    CZrkData* out;
    if (in_place && (spare & SPARE_LEFT) && fits(a)) {
        out = a;
    } else if (in_place && (spare & SPARE_RIGHT) && fits(b)) {
        out = b;
    } else {
        out = NewTemp(temp, type, res);
    }
    CTiled ta(temp, a, res), tb(temp, b, res);
    if (IsIntegerOp(op)) {
        RunInteger(op, ta.get(), tb.get(), out);
    } else if (IsComparison(op)) {
        WithFloatWorking(Promote(a->Type(), b->Type()), [&](auto w) {
            RunComparison<decltype(w)>(op, ta.get(), tb.get(), out, IsComplexType(type) ? 2 : 1);
            return 0;
        });
    } else {
        WithFloatWorking(type, [&](auto w) {
            RunArithmetic<decltype(w)>(op, ta.get(), tb.get(), out, IsComplexType(type) ? 2 : 1);
            return 0;
        });
    }
    return out;
}

CZrkData* UnaryOperation(CDataSpace& temp, int op, const CZrkData* a) {
    CheckOperand(a);
    res_t res[6];
    a->GetRes(res);
    const int comps = a->IsComplex() ? 2 : 1;
    const bool integer = !IsFloatType(a->Type());
    if (op == OP_NEG) {
        CZrkData header;
        header.SetType(a->Type());
        header.MakeSigned();
        CZrkData* out = NewTemp(temp, header.Type(), res);
        auto negate = [](auto* y, const auto* x, size_t m) {
            for (size_t j = 0; j < m; ++j) y[j] = -x[j];
        };
        if (integer) {
            MapBlocks<int64_t>(a, out, comps, [](int64_t* y, const int64_t* x, size_t m) {
                // wraps like the machine's negation, also for the most negative value
                for (size_t j = 0; j < m; ++j)
                    y[j] = static_cast<int64_t>(0 - static_cast<uint64_t>(x[j]));
            });
        } else {
            WithFloatWorking(a->Type(), [&](auto w) {
                MapBlocks<decltype(w)>(a, out, comps, negate);
                return 0;
            });
        }
        return out;
    }
    if (op == OP_LNOT) {
        CZrkData* out = NewTemp(temp, comps == 2 ? TYPE_CN1 : TYPE_N1, res);
        WithFloatWorking(a->Type(), [&](auto w) {
            using W = decltype(w);
            MapBlocks<W>(a, out, comps, [](W* y, const W* x, size_t m) {
                for (size_t j = 0; j < m; ++j) y[j] = x[j] == 0 ? W(1) : W(0);
            });
            return 0;
        });
        return out;
    }
    if (op == OP_COMPL && integer) {
        CZrkData* out = NewTemp(temp, a->Type(), res);
        MapBlocks<int64_t>(a, out, comps, [](int64_t* y, const int64_t* x, size_t m) {
            for (size_t j = 0; j < m; ++j) y[j] = ~x[j];
        });
        return out;
    }
    Raise("internal error, no operator");
}

void IncrementInPlace(CZrkData* a, int delta) {
    CheckOperand(a);
    const int comps = a->IsComplex() ? 2 : 1;
    auto add = [delta, comps](auto* y, const auto* x, size_t m) {
        // the i4 scalar has no q: only i moves
        for (size_t j = 0; j < m; j += comps) y[j] = x[j] + delta;
        if (comps == 2)
            for (size_t j = 1; j < m; j += 2) y[j] = x[j];
    };
    if (!IsFloatType(a->Type())) {
        MapBlocks<int64_t>(a, a, comps, add);
    } else {
        WithFloatWorking(a->Type(), [&](auto w) {
            MapBlocks<decltype(w)>(a, a, comps, add);
            return 0;
        });
    }
    a->changed = 1;
}

CZrkData* TernaryOperation(CDataSpace& temp, const CZrkData* c, const CZrkData* a,
                           const CZrkData* b) {
    CheckOperand(c);
    CheckOperand(a);
    CheckOperand(b);
    const int type = Promote(a->Type(), b->Type());
    res_t ra[6], rb[6], rc[6], res[6];
    a->GetRes(ra);
    b->GetRes(rb);
    c->GetRes(rc);
    CZrkData::MaxRes(res, ra, rb, rc);
    CZrkData* out = NewTemp(temp, type, res);
    CTiled tc(temp, c, res), ta(temp, a, res), tb(temp, b, res);
    const int comps = IsComplexType(type) ? 2 : 1;
    WithFloatWorking(type, [&](auto w) {
        using W = decltype(w);
        const uint64_t count = out->Count();
        const COperand<W> oc(tc.get(), count, 2), oa(ta.get(), count, comps),
            ob(tb.get(), count, comps);
        CBlockWriter<W> writer(out, comps);
        const size_t width = kBlockElements * comps;
        ForEachBlock<W>(count, 2 * kBlockElements + 3 * width,
                        [&](W* scratch, uint64_t k, size_t n) {
                            const W* pc = oc.Block(k, n, scratch);
                            const W* pa = oa.Block(k, n, scratch + 2 * kBlockElements);
                            const W* pb = ob.Block(k, n, scratch + 2 * kBlockElements + width);
                            W* z = writer.Target(k, n, scratch + 2 * kBlockElements + 2 * width);
                            for (size_t j = 0; j < n; ++j) {
                                const bool pick = pc[2 * j] != 0 || pc[2 * j + 1] != 0;
                                for (int q = 0; q < comps; ++q)
                                    z[j * comps + q] = pick ? pa[j * comps + q] : pb[j * comps + q];
                            }
                            writer.Commit(k, n, z);
                        });
        return 0;
    });
    return out;
}

void ConvertInto(const CZrkData* from, CZrkData* to) {
    // complex targets read q as 0 from real sources; real targets take i only
    const int comps = to->IsComplex() ? 2 : 1;
    auto copy = [](auto* y, const auto* x, size_t m) { std::copy(x, x + m, y); };
    if (IsFloatType(to->Type())) {
        MapBlocks<double>(from, to, comps, copy);
    } else if (to->Type() % 10 == TYPE_N8 && IsFloatType(from->Type())) {
        MapBlocks<uint64_t>(from, to, comps, copy);  // values at or above 2^63 stay whole
    } else {
        MapBlocks<int64_t>(from, to, comps, copy);
    }
}

CZrkData* ConvertRecord(CDataSpace& temp, const CZrkData* a, int type) {
    CheckOperand(a);
    res_t res[6];
    a->GetRes(res);
    CZrkData* out = NewTemp(temp, type, res);
    ConvertInto(a, out);
    return out;
}
