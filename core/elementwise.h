// The elementwise engine of the evaluator: result records of operators and elementwise
// functions, made on the evaluator's temporary list.
//
// The rule of a binary operation: the result type comes from the operator, each resolution
// is the larger of the two operands', and each operand is tiled to the result by modulo
// indexing, direction by direction, without any check of compatibility. A scalar is spread
// without being copied; an operand of the result's shape is read in place.
//
// Dispatch on the element type happens once per operation: each operation is a template
// per working type (float, double or int64_t), and its inner loops run over blocks.
//
//   CZrkData* r = BinaryOperation(temp, OP_ADD, a, b);   // raises on failure
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

#include <omp.h>

#include "core/block_io.h"
#include "core/data_space.h"
#include "core/zrk_data.h"

enum EvalOp {
    OP_ADD,
    OP_SUB,
    OP_MUL,
    OP_DIV,
    OP_MOD,
    OP_SHL,
    OP_SHR,
    OP_BITAND,
    OP_BITOR,
    OP_BITXOR,
    OP_EQ,
    OP_NE,
    OP_LT,
    OP_GT,
    OP_LE,
    OP_GE,
    OP_LAND,
    OP_LOR,
    OP_IQMUL,
    OP_IQDIV,
    OP_POW,
    OP_ATAN2,
    OP_BINARY_COUNT
};

enum EvalUnaryOp { OP_NEG, OP_LNOT, OP_COMPL };

// The err_func text of a binary operator: "+", "<<", "==", ...
const char* OpText(int op);

// The result type of `op` on operands of types a and b; -1 when there is none.
int BinaryResultType(int op, int a, int b);

// A record of `type` and resolutions `res` on `temp`; raises "invalid data type" for a
// negative type and "out of memory".
CZrkData* NewTemp(CDataSpace& temp, int type, const res_t res[6]);

// Operands of BinaryOperation that are temporaries nobody else refers to: the result may be
// written over one of them when type and shape allow, saving a buffer and its first touch.
enum SpareOperand : unsigned { SPARE_NONE = 0, SPARE_LEFT = 1, SPARE_RIGHT = 2 };

// The kernel of an arithmetic operator (+ - * / % iqmul() iqdiv() pow() atan2()) on numbers
// of `comps` components: z = x op y for m numbers; z may be x or y.
template <class W>
using ArithmeticKernelFn = void (*)(W* z, const W* x, const W* y, size_t m);
template <class W>
ArithmeticKernelFn<W> ArithmeticKernel(int op, int comps);
bool IsArithmeticOp(int op);

// a op b.
CZrkData* BinaryOperation(CDataSpace& temp, int op, CZrkData* a, CZrkData* b,
                          unsigned spare = SPARE_NONE);
CZrkData* UnaryOperation(CDataSpace& temp, int op, const CZrkData* a);
// a += delta in place, in a's own type.
void IncrementInPlace(CZrkData* a, int delta);
// Per element `c` not zero ? a : b, with the larger resolutions of the three.
CZrkData* TernaryOperation(CDataSpace& temp, const CZrkData* c, const CZrkData* a,
                           const CZrkData* b);
// A copy of `a` at resolutions `res`, each element taken at its index modulo a's resolution.
CZrkData* TileTo(CDataSpace& temp, const CZrkData* a, const res_t res[6]);
// A copy of `a` converted to `type`: truncation and low bits for integers, q dropped or 0.
CZrkData* ConvertRecord(CDataSpace& temp, const CZrkData* a, int type);
// Converts all of `from` into `to` (same element count), with the rules of ConvertRecord.
void ConvertInto(const CZrkData* from, CZrkData* to);

// Raises "invalid data type" for an operand without type or without samples.
void CheckOperand(const CZrkData* a);

// Runs body(W{}) with W = double for r8 and complex r8, else float.
template <class F>
decltype(auto) WithFloatWorking(int type, F&& body) {
    if (type % 10 == TYPE_R8) return body(double{});
    return body(float{});
}

// Elements from which a pass is shared among the cores: below it, waking threads costs more
// than it saves.
constexpr uint64_t kParallelElements = uint64_t{1} << 17;

// Runs of work handed to the threads of a large pass as they come free: a core busy with
// another program holds nobody up. Each run is a whole number of 2 MB pages of a fresh
// result when it can be, so one thread faults each page in; at least eight runs a thread.
inline uint64_t ParallelRun(uint64_t units, uint64_t unit_bytes, int threads) {
    const uint64_t page =
        std::max<uint64_t>(1, (uint64_t{2} << 20) / std::max<uint64_t>(1, unit_bytes));
    return std::clamp<uint64_t>(units / (8 * static_cast<uint64_t>(threads)), 1, page);
}

// Calls body(scratch, first, n) for the blocks of kBlockElements elements of [0, count). A
// large pass shares the blocks among the cores in runs of consecutive blocks, so each thread
// also makes the first touch of its own parts of a fresh result; each thread has `width`
// numbers of scratch of its own. Every element meets the same operations whatever the
// number of threads.
template <class W, class Body>
void ForEachBlock(uint64_t count, size_t width, Body&& body) {
    const bool parallel = count >= kParallelElements;
    const int threads = parallel ? omp_get_max_threads() : 1;
    std::unique_ptr<W[]> scratch(new W[width * static_cast<size_t>(threads)]);
    const uint64_t blocks = (count + kBlockElements - 1) / kBlockElements;
    // runs of 2 MB for 4-byte results, whole pages for wider ones
    const uint64_t run = ParallelRun(blocks, kBlockElements * 4, threads);
#pragma omp parallel for schedule(dynamic, run) num_threads(threads) if (parallel)
    for (uint64_t b = 0; b < blocks; ++b) {
        const uint64_t first = b * kBlockElements;
        body(scratch.get() + width * static_cast<size_t>(omp_get_thread_num()), first,
             static_cast<size_t>(std::min<uint64_t>(kBlockElements, count - first)));
    }
}

// One operand of an elementwise pass: read in place, converted into the caller's buffer, or
// a spread scalar. Reading changes nothing, so threads share one operand.
template <class W>
class COperand {
  public:
    COperand(const CZrkData* record, uint64_t count, int comps) : reader_(record, comps) {
        if (record->Count() != 1 || count == 1) return;
        spread_.reset(new W[kBlockElements * comps]);
        W one[2] = {0, 0};
        const W* p = reader_.Read(0, 1, one);
        for (size_t j = 0; j < kBlockElements; ++j)
            for (int c = 0; c < comps; ++c) spread_[j * comps + c] = p[c];
    }
    // n elements from `index` on; `buf` holds kBlockElements elements.
    const W* Block(uint64_t index, size_t n, W* buf) const {
        return spread_ ? spread_.get() : reader_.Read(index, n, buf);
    }

  private:
    CBlockReader<W> reader_;
    std::unique_ptr<W[]> spread_;
};

// out = kernel(a) over all elements of `out`, in blocks: a is read in `in_comps`
// components per element, out written in `out_comps`; the kernel takes (out, in, n) for n
// elements. `a` has out's element count or is a scalar.
template <class W, class K>
void MapElements(const CZrkData* a, CZrkData* out, int in_comps, int out_comps, K kernel) {
    const uint64_t count = out->Count();
    const COperand<W> in(a, count, in_comps);
    CBlockWriter<W> writer(out, out_comps);
    const size_t in_width = kBlockElements * in_comps;
    ForEachBlock<W>(count, in_width + kBlockElements * out_comps,
                    [&](W* scratch, uint64_t k, size_t n) {
                        const W* x = in.Block(k, n, scratch);
                        W* y = writer.Target(k, n, scratch + in_width);
                        kernel(y, x, n);
                        writer.Commit(k, n, y);
                    });
}

// out = kernel(a, b), the same with two operands read in `in_comps` components.
template <class W, class K>
void ZipElements(const CZrkData* a, const CZrkData* b, CZrkData* out, int in_comps, int out_comps,
                 K kernel) {
    const uint64_t count = out->Count();
    const COperand<W> left(a, count, in_comps), right(b, count, in_comps);
    CBlockWriter<W> writer(out, out_comps);
    const size_t in_width = kBlockElements * in_comps;
    ForEachBlock<W>(count, 2 * in_width + kBlockElements * out_comps,
                    [&](W* scratch, uint64_t k, size_t n) {
                        const W* x = left.Block(k, n, scratch);
                        const W* y = right.Block(k, n, scratch + in_width);
                        W* z = writer.Target(k, n, scratch + 2 * in_width);
                        kernel(z, x, y, n);
                        writer.Commit(k, n, z);
                    });
}

// Component-wise forms: the kernel takes m = elements * comps numbers.
template <class W, class K>
void MapBlocks(const CZrkData* a, CZrkData* out, int comps, K kernel) {
    MapElements<W>(a, out, comps, comps,
                   [&](W* y, const W* x, size_t n) { kernel(y, x, n * comps); });
}

template <class W, class K>
void ZipBlocks(const CZrkData* a, const CZrkData* b, CZrkData* out, int comps, K kernel) {
    ZipElements<W>(a, b, out, comps, comps,
                   [&](W* z, const W* x, const W* y, size_t n) { kernel(z, x, y, n * comps); });
}

// Operands brought to the result's shape: the record itself when it already has it or is a
// scalar, else a tiled temporary that dies with this object.
class CTiled {
  public:
    CTiled(CDataSpace& temp, const CZrkData* a, const res_t res[6]);
    ~CTiled();
    CTiled(const CTiled&) = delete;
    CTiled& operator=(const CTiled&) = delete;
    const CZrkData* get() const { return use_; }

  private:
    CDataSpace& temp_;
    CZrkData* tile_ = nullptr;
    const CZrkData* use_;
};

// An elementwise function of one record: result of `type` at a's resolutions, computed in
// the float precision of Promote(a, type). kernel(W* out, const W* in, size_t n) for n
// elements, a read in `in_comps` and out written in `out_comps` components.
template <class K>
CZrkData* MapFloat(CDataSpace& temp, const CZrkData* a, int type, int in_comps, int out_comps,
                   K&& kernel) {
    CheckOperand(a);
    res_t res[6];
    a->GetRes(res);
    CZrkData* out = NewTemp(temp, type, res);
    WithFloatWorking(Promote(a->Type(), type), [&](auto w) {
        MapElements<decltype(w)>(a, out, in_comps, out_comps, kernel);
        return 0;
    });
    return out;
}

// An elementwise function of two records by the rule of binary operations: result of `type`,
// larger resolutions, tiled operands. kernel(W* out, const W* a, const W* b, size_t n).
template <class K>
CZrkData* ZipFloat(CDataSpace& temp, const CZrkData* a, const CZrkData* b, int type, int in_comps,
                   int out_comps, K&& kernel) {
    CheckOperand(a);
    CheckOperand(b);
    CZrkData header;
    header.PromoteFrom(*a, *b);
    res_t res[6];
    header.GetRes(res);
    CZrkData* out = NewTemp(temp, type, res);
    CTiled ta(temp, a, res), tb(temp, b, res);
    WithFloatWorking(Promote(header.Type(), type), [&](auto w) {
        ZipElements<decltype(w)>(ta.get(), tb.get(), out, in_comps, out_comps, kernel);
        return 0;
    });
    return out;
}
