#include "core/scalar_chain.h"

#include <memory>

#include "core/block_io.h"
#include "core/elementwise.h"

bool CScalarChain::Starts(int op, const CZrkData* x, const CZrkData* scalar) {
    if (!IsArithmeticOp(op) || x == scalar || !x->Data() || !scalar->Data()) return false;
    if (scalar->Count() != 1 || x->Count() < kParallelElements) return false;
    return IsFloatType(BinaryResultType(op, x->Type(), scalar->Type()));
}

bool CScalarChain::Takes(int op, const CZrkData* x, const CZrkData* scalar) const {
    return x == out_ && Starts(op, x, scalar) &&
           BinaryResultType(op, x->Type(), scalar->Type()) == out_->Type();
}

CScalarChain::CScalarChain(const CZrkData* source, CZrkData* out) : source_(source), out_(out) {}

void CScalarChain::Add(int op, const CZrkData* scalar, bool scalar_left) {
    Step step{op, scalar_left, {0, 0}};
    const int comps = out_->IsComplex() ? 2 : 1;
    // read as the unfused pass reads its spread scalar
    WithFloatWorking(out_->Type(), [&](auto w) {
        using W = decltype(w);
        W buf[2] = {0, 0};
        const W* p = CBlockReader<W>(scalar, comps).Read(0, 1, buf);
        for (int c = 0; c < comps; ++c) step.value[c] = static_cast<double>(p[c]);
        return 0;
    });
    steps_.push_back(step);
}

void CScalarChain::Run() {
    if (steps_.empty()) return;
    const int comps = out_->IsComplex() ? 2 : 1;
    WithFloatWorking(out_->Type(), [&](auto w) {
        using W = decltype(w);
        struct Ready {
            ArithmeticKernelFn<W> kernel;
            bool scalar_left;
            std::unique_ptr<W[]> spread;
        };
        std::vector<Ready> ready;
        for (const Step& s : steps_) {
            Ready r{ArithmeticKernel<W>(s.op, comps), s.scalar_left,
                    std::unique_ptr<W[]>(new W[kBlockElements * comps])};
            for (size_t j = 0; j < kBlockElements; ++j)
                for (int c = 0; c < comps; ++c)
                    r.spread[j * comps + c] = static_cast<W>(s.value[c]);
            ready.push_back(std::move(r));
        }
        const uint64_t count = out_->Count();
        const CBlockReader<W> reader(source_, comps);
        CBlockWriter<W> writer(out_, comps);
        const size_t width = kBlockElements * comps;
        ForEachBlock<W>(count, 2 * width, [&](W* scratch, uint64_t k, size_t n) {
            const W* x = reader.Read(k, n, scratch);
            W* z = writer.Target(k, n, scratch + width);
            const size_t m = n * comps;
            for (const Ready& r : ready) {
                if (r.scalar_left) {
                    r.kernel(z, r.spread.get(), x, m);
                } else {
                    r.kernel(z, x, r.spread.get(), m);
                }
                x = z;
            }
            writer.Commit(k, n, z);
        });
        return 0;
    });
    steps_.clear();
}
