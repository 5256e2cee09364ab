// The floor that the operator benchmarks measure against: one copy of an array into a new
// record, as any operator that makes its result must at least do.
#pragma once

#include <benchmark/benchmark.h>

#include <cstring>

#include "core/elementwise.h"

inline void PlainCopyOf(benchmark::State& state, const CZrkData* a) {
    res_t res[6];
    a->GetRes(res);
    for (auto _ : state) {
        CDataSpace temp;
        CZrkData* r = NewTemp(temp, a->type, res);
        std::memcpy(r->data, a->data, a->Bytes());
        benchmark::DoNotOptimize(r->data);
    }
}
