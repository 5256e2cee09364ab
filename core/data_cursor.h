// CDataCursor<W>: reads and writes the elements of one record, whatever its element type,
// as numbers of the working type W (float, double, int32_t, int64_t or uint64_t). Operators are
// written once per working type; the routines for the record's type are looked up once,
// at construction or when iqmp changes, so inner loops carry no switch on type.
//
// Conversions: integer to float by value; float to integer truncates toward zero and keeps
// the low bits (300.7 to n1 is 44, -1.0 to n2 is 65535), never clips; a float outside the
// 64-bit range or NaN becomes the most negative 64-bit value first. Into unsigned 64-bit,
// values at or above 2^63 subtract 2^63, truncate and set the top bit.
//
// iqmp: 0 i, 1 q, 2 magnitude, 3 phase (see Get).
//
//   CDataCursor<float> in(&a), out(&b);
//   std::vector<float> buf(4096);
//   for (uint64_t k = 0; k < n; k += len) { in.GetIBlock(buf.data(), k, len); ...
//                                           out.SetIBlock(buf.data(), k, len); }
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/zrk_data.h"

template <class W>
class CDataCursor {
  public:
    explicit CDataCursor(const CZrkData* record, int iqmp = 0);

    void SetIqmp(int iqmp);
    int Iqmp() const { return iqmp_; }
    int Type() const { return type_; }

    // The element reduced to one number by iqmp.
    W Get(uint64_t index) const { return get_(base_, index); }
    void GetIQ(W pair[2], uint64_t index) const { get_iq_(base_, index, pair); }
    void GetI(W& value, uint64_t index) const { value = get_i_(base_, index); }
    void SetIQ(const W pair[2], uint64_t index) { set_iq_(base_, index, pair); }
    void SetI(W value, uint64_t index) { set_i_(base_, index, value); }

    // Sequential forms: at the current position, then one element on.
    void GetIQ(W pair[2]) {
        get_iq_(pos_, 0, pair);
        pos_ += step_;
    }
    void GetI(W& value) {
        value = get_i_(pos_, 0);
        pos_ += step_;
    }
    void SetIQ(const W pair[2]) {
        set_iq_(pos_, 0, pair);
        pos_ += step_;
    }
    void SetI(W value) {
        set_i_(pos_, 0, value);
        pos_ += step_;
    }
    W Get() {
        W v = get_(pos_, 0);
        pos_ += step_;
        return v;
    }

    void Seek(uint64_t index);
    void Seek(res_t x, res_t y);
    void Seek(res_t x, res_t y, res_t z);
    void Seek(res_t x, res_t y, res_t z, res_t t, res_t u, res_t v);
    void SeekWrapped(res_t x, res_t y, res_t z, res_t t, res_t u, res_t v);
    void SeekClamped(res_t x, res_t y);
    void NextPlane();
    // Current position as an element index.
    uint64_t Tell() const;

    // Block forms: n elements from `index` on, one call per block. `out`/`in` of the IQ
    // forms hold 2n numbers, i and q interleaved.
    void GetBlock(W* out, uint64_t index, size_t n) const { get_block_(base_, index, n, out); }
    void GetIBlock(W* out, uint64_t index, size_t n) const { get_i_block_(base_, index, n, out); }
    void GetIQBlock(W* out, uint64_t index, size_t n) const { get_iq_block_(base_, index, n, out); }
    void SetIBlock(const W* in, uint64_t index, size_t n) { set_i_block_(base_, index, n, in); }
    void SetIQBlock(const W* in, uint64_t index, size_t n) { set_iq_block_(base_, index, n, in); }

    using GetFn = W (*)(const char*, uint64_t);
    using GetIQFn = void (*)(const char*, uint64_t, W*);
    using SetIQFn = void (*)(char*, uint64_t, const W*);
    using SetIFn = void (*)(char*, uint64_t, W);
    using GetBlockFn = void (*)(const char*, uint64_t, size_t, W*);
    using SetBlockFn = void (*)(char*, uint64_t, size_t, const W*);

  private:
    const CZrkData* record_;
    int iqmp_;
    int type_;
    char* base_;
    char* pos_;
    uint64_t step_;
    GetFn get_;
    GetIQFn get_iq_;
    GetFn get_i_;
    SetIQFn set_iq_;
    SetIFn set_i_;
    GetBlockFn get_block_;
    GetBlockFn get_i_block_;
    GetBlockFn get_iq_block_;
    SetBlockFn set_i_block_;
    SetBlockFn set_iq_block_;
};

extern template class CDataCursor<float>;
extern template class CDataCursor<double>;
extern template class CDataCursor<int32_t>;
extern template class CDataCursor<int64_t>;
extern template class CDataCursor<uint64_t>;

// The scalar conversion rules of the cursor, for code that converts single values.
int64_t TruncToInt64(double v);
uint64_t TruncToUInt64(double v);
