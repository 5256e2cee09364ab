// The numbers a binary or text save writes of one array, as doubles: one a element (the
// part of save_iqmp: 0 i, 1 q, 2 magnitude, 3 phase) or two (4 i and q, 5 magnitude and
// phase, or i and q whenever the output type is complex). A real array has one part, its
// value, and writes it whatever part is chosen: a magnitude would drop its signs.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/data_cursor.h"

class CSaveValues {
  public:
    CSaveValues(const CZrkData* array, int iqmp, bool complex_out)
        : pairs_(complex_out || iqmp == 4 || iqmp == 5),
          polar_(!complex_out && iqmp == 5),
          first_(array, pairs_ ? (polar_ ? 2 : 0)
                               : (array->IsComplex() && iqmp >= 0 && iqmp <= 3 ? iqmp : 0)),
          second_(array, 3) {}

    int PerElement() const { return pairs_ ? 2 : 1; }

    // n elements from `index` on: PerElement() * n numbers into `out`.
    void Read(uint64_t index, size_t n, double* out) const {
        if (!pairs_) return first_.GetBlock(out, index, n);
        if (!polar_) return first_.GetIQBlock(out, index, n);
        for (size_t k = 0; k < n; ++k) {
            out[2 * k] = first_.Get(index + k);
            out[2 * k + 1] = second_.Get(index + k);
        }
    }

  private:
    bool pairs_;
    bool polar_;
    CDataCursor<double> first_;
    CDataCursor<double> second_;
};
