// Small builders for operator tests: string and scalar arguments, filled arrays, and a
// plain reading of a record's numbers.
#pragma once

#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/zrk_data.h"

// A string argument as the language passes it: an n1 array of the characters.
inline CZrkData* Text(CDataSpace& s, const char* text) {
    const res_t n = std::strlen(text);
    CZrkData* r = s.NewData(TYPE_N1, n, 1, 1, 1, 1, 1, "");
    std::memcpy(r->data, text, n);
    return r;
}

// An array of `type` and shape filled from `values` (i only; the rest 0), or 0, 1, 2 ...
inline CZrkData* Array(CDataSpace& s, int type, std::initializer_list<res_t> shape,
                       std::vector<double> values = {}) {
    res_t r[6] = {1, 1, 1, 1, 1, 1};
    int k = 0;
    for (res_t v : shape) r[k++] = v;
    CZrkData* a = s.NewData(type, r[0], r[1], r[2], r[3], r[4], r[5], "");
    std::memset(a->data, 0, a->Bytes());
    CDataCursor<float> c(a);
    for (uint64_t i = 0; i < a->Count(); ++i)
        c.SetI(static_cast<float>(i < values.size() ? values[i] : values.empty() ? i : 0), i);
    return a;
}

inline CZrkData* Scalar(CDataSpace& s, double v) { return Array(s, TYPE_R4, {1}, {v}); }

// The i components in storage order.
inline std::vector<float> Values(const CZrkData* a) {
    std::vector<float> out(a->Count());
    CDataCursor<float> c(a);
    for (uint64_t i = 0; i < out.size(); ++i) c.GetI(out[i], i);
    return out;
}

inline std::vector<res_t> Shape(const CZrkData* a) {
    return {a->nx, a->ny, a->nz, a->nt, a->nu, a->nv};
}
