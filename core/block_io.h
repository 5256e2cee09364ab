// Block access to a record's samples as numbers of a working type W (float, double,
// int64_t or uint64_t), in `comps` components per element: 1 reads i only, 2 reads i and q (q = 0
// for a real record). The routines are picked once, at construction; when the record already stores
// W in the wanted layout, blocks are handed out in place and nothing is copied.
//
//   CBlockReader<float> in(a, 1);
//   CBlockWriter<float> out(b, 1);
//   for (uint64_t k = 0; k < n; k += len) {
//       const float* x = in.Read(k, len, buf_in);
//       float* y = out.Target(k, len, buf_out);
//       ... y[j] = f(x[j]) ...
//       out.Commit(k, len, y);
//   }
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "core/data_cursor.h"
#include "core/zrk_data.h"

// Elements per block of the elementwise loops: small enough for the first-level cache.
constexpr size_t kBlockElements = 2048;

// True when a record of `type` stores exactly W in `comps` components, so that blocks can be
// used in place.
template <class W>
constexpr bool StoresWorking(int type, int comps) {
    int real = -1;
    if constexpr (std::is_same_v<W, float>) real = TYPE_R4;
    if constexpr (std::is_same_v<W, double>) real = TYPE_R8;
    if constexpr (std::is_same_v<W, int64_t>) real = TYPE_I8;
    if constexpr (std::is_same_v<W, uint64_t>) real = TYPE_N8;
    return real >= 0 && type == real + (comps == 2 ? 10 : 0);
}

template <class W>
class CBlockReader {
  public:
    CBlockReader(const CZrkData* record, int comps)
        : comps_(comps),
          base_(static_cast<const char*>(record->Data())),
          direct_(StoresWorking<W>(record->Type(), comps)),
          cursor_(record) {}

    // n elements from `index` on, either in place or converted into `buf` (n * comps long).
    const W* Read(uint64_t index, size_t n, W* buf) const {
        if (direct_) return reinterpret_cast<const W*>(base_) + index * comps_;
        if (comps_ == 2) {
            cursor_.GetIQBlock(buf, index, n);
        } else {
            cursor_.GetIBlock(buf, index, n);
        }
        return buf;
    }

  private:
    int comps_;
    const char* base_;
    bool direct_;
    CDataCursor<W> cursor_;
};

template <class W>
class CBlockWriter {
  public:
    CBlockWriter(CZrkData* record, int comps)
        : comps_(comps),
          base_(static_cast<char*>(record->Data())),
          direct_(StoresWorking<W>(record->Type(), comps)),
          cursor_(record) {}

    // Where the block's n elements are to be written: in place, or `buf`.
    W* Target(uint64_t index, size_t n, W* buf) const {
        (void)n;
        return direct_ ? reinterpret_cast<W*>(base_) + index * comps_ : buf;
    }
    // Stores a block written to `buf`; nothing to do for one written in place.
    void Commit(uint64_t index, size_t n, const W* buf) {
        if (direct_) return;
        if (comps_ == 2) {
            cursor_.SetIQBlock(buf, index, n);
        } else {
            cursor_.SetIBlock(buf, index, n);
        }
    }

  private:
    int comps_;
    char* base_;
    bool direct_;
    CDataCursor<W> cursor_;
};
