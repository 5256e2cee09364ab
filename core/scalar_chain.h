// CScalarChain: arithmetic steps with one-element operands on one large float array, kept
// back and then run in a single pass: each block goes through every step while it is in
// cache, so ((a*2+1)*3+4)*5 reads `a` and writes the result once instead of five times.
// Every element meets the same kernels in the same working precision as step-by-step
// evaluation, and a float result type stores that precision exactly, so the results are bit
// for bit those of BinaryOperation.
//
//   if (CScalarChain::Starts(op, x, s)) chain.emplace(x, NewTemp(...));
//   chain->Add(op, s, scalar_left);   // for each following step on chain->Out()
//   chain->Run();                     // before anything reads Out() or changes x
#pragma once

#include <vector>

#include "core/zrk_data.h"

class CScalarChain {
  public:
    // Whether `x op scalar` (either order) may be kept back: an arithmetic operator, a
    // one-element `scalar`, and a large `x` whose result type is float (r4, r8 or complex).
    static bool Starts(int op, const CZrkData* x, const CZrkData* scalar);
    // Whether that step may join this chain: it works on Out() and keeps its type.
    bool Takes(int op, const CZrkData* x, const CZrkData* scalar) const;

    // The steps will read `source` (which may be `out` itself) and write `out`, of the
    // result type and of source's resolutions.
    CScalarChain(const CZrkData* source, CZrkData* out);

    void Add(int op, const CZrkData* scalar, bool scalar_left);
    // Runs the steps; the chain is then empty.
    void Run();

    CZrkData* Out() const { return out_; }

  private:
    struct Step {
        int op;
        bool scalar_left;
        double value[2];  // the scalar in the working precision, i then q
    };
    const CZrkData* source_;
    CZrkData* out_;
    std::vector<Step> steps_;
};
