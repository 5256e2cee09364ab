#include "core/data_cursor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <type_traits>
#include <utility>

namespace {

constexpr double kTwo63 = 9223372036854775808.0;

// Like the x86 truncating instruction: out of range and NaN give the most negative value.
inline int64_t Trunc64(double v) {
    return (v >= -kTwo63 && v < kTwo63) ? static_cast<int64_t>(v) : INT64_MIN;
}

inline uint64_t TruncU64(double v) {
    if (v >= kTwo63) return static_cast<uint64_t>(Trunc64(v - kTwo63)) | (uint64_t{1} << 63);
    return static_cast<uint64_t>(Trunc64(v));
}

// The one conversion rule between stored and working numbers.
template <class To, class From>
inline To Convert(From v) {
    if constexpr (std::is_floating_point_v<To>) {
        return static_cast<To>(v);
    } else if constexpr (std::is_integral_v<From>) {
        return static_cast<To>(v);  // keeps the low bits
    } else if constexpr (std::is_same_v<To, uint64_t>) {
        return TruncU64(v);
    } else {
        return static_cast<To>(Trunc64(v));
    }
}

// Block conversion. Same-type blocks are copies; narrow integer targets from floats take
// the 32-bit route (clamped, so always defined) and keep it when the whole block fitted,
// which gives the same low bits and vectorises; otherwise the block is redone one by one.
template <class To, class From>
inline void ConvertBlock(const From* in, size_t n, size_t in_stride, To* out, size_t out_stride) {
    if (in_stride == 1 && out_stride == 1) {
        if constexpr (std::is_same_v<To, From>) {
            std::memcpy(out, in, n * sizeof(To));
            return;
        } else if constexpr (std::is_floating_point_v<From> && std::is_integral_v<To> &&
                             sizeof(To) <= 4) {
            int fits = 1;
            for (size_t j = 0; j < n; ++j) {
                const From v = in[j];
                const int in_range = (v > From(-2147483649.0)) & (v < From(2147483648.0));
                fits &= in_range;
                const From c = in_range ? v : From(0);  // NaN too: the cast stays defined
                out[j] = static_cast<To>(static_cast<int32_t>(c));
            }
            if (fits) return;
        }
    }
    for (size_t j = 0; j < n; ++j) out[j * out_stride] = Convert<To>(in[j * in_stride]);
}

template <int Base>
struct StorageOf;
template <>
struct StorageOf<TYPE_I1> {
    using type = int8_t;
};
template <>
struct StorageOf<TYPE_I2> {
    using type = int16_t;
};
template <>
struct StorageOf<TYPE_I4> {
    using type = int32_t;
};
template <>
struct StorageOf<TYPE_I8> {
    using type = int64_t;
};
template <>
struct StorageOf<TYPE_N1> {
    using type = uint8_t;
};
template <>
struct StorageOf<TYPE_N2> {
    using type = uint16_t;
};
template <>
struct StorageOf<TYPE_N4> {
    using type = uint32_t;
};
template <>
struct StorageOf<TYPE_N8> {
    using type = uint64_t;
};
template <>
struct StorageOf<TYPE_R4> {
    using type = float;
};
template <>
struct StorageOf<TYPE_R8> {
    using type = double;
};

// The routines of one element type (T) for one working type (W).
template <class W, int T>
struct Routines {
    using S = typename StorageOf<T % 10>::type;
    static constexpr bool kComplex = T >= 10;
    static constexpr size_t kComps = kComplex ? 2 : 1;

    static const S* At(const char* base, uint64_t index) {
        return reinterpret_cast<const S*>(base) + index * kComps;
    }
    static S* At(char* base, uint64_t index) { return reinterpret_cast<S*>(base) + index * kComps; }

    static W GetI(const char* base, uint64_t index) { return Convert<W>(*At(base, index)); }
    static W GetQ(const char* base, uint64_t index) {
        if constexpr (kComplex) return Convert<W>(At(base, index)[1]);
        (void)base, (void)index;
        return W(0);
    }
    static W GetMag(const char* base, uint64_t index) {
        const S* p = At(base, index);
        if constexpr (kComplex) {
            const double i = static_cast<double>(p[0]), q = static_cast<double>(p[1]);
            return Convert<W>(std::sqrt(static_cast<float>(i * i + q * q)));
        } else if constexpr (std::is_floating_point_v<S>) {
            return Convert<W>(std::fabs(*p));
        } else if constexpr (std::is_signed_v<S>) {
            const int64_t v = *p;
            return Convert<W>(v < 0 ? uint64_t{0} - static_cast<uint64_t>(v)
                                    : static_cast<uint64_t>(v));
        } else {
            return Convert<W>(*p);
        }
    }
    static W GetPhase(const char* base, uint64_t index) {
        if constexpr (kComplex) {
            const S* p = At(base, index);
            return Convert<W>(static_cast<float>(
                std::atan2(static_cast<double>(p[1]), static_cast<double>(p[0]))));
        }
        (void)base, (void)index;
        return W(0);
    }
    static void GetIQ(const char* base, uint64_t index, W* pair) {
        pair[0] = GetI(base, index);
        pair[1] = GetQ(base, index);
    }
    static void SetI(char* base, uint64_t index, W v) { *At(base, index) = Convert<S>(v); }
    static void SetIQ(char* base, uint64_t index, const W* pair) {
        S* p = At(base, index);
        p[0] = Convert<S>(pair[0]);
        if constexpr (kComplex) p[1] = Convert<S>(pair[1]);
    }

    template <W (*Reading)(const char*, uint64_t)>
    static void GetBlockBy(const char* base, uint64_t index, size_t n, W* out) {
        for (size_t j = 0; j < n; ++j) out[j] = Reading(base, index + j);
    }
    static void GetIBlock(const char* base, uint64_t index, size_t n, W* out) {
        ConvertBlock(At(base, index), n, kComps, out, 1);
    }
    static void GetIQBlock(const char* base, uint64_t index, size_t n, W* out) {
        if constexpr (kComplex) {
            ConvertBlock(At(base, index), 2 * n, 1, out, 1);
        } else {
            for (size_t j = 0; j < n; ++j) out[2 * j + 1] = W(0);
            ConvertBlock(At(base, index), n, 1, out, 2);
        }
    }
    static void SetIBlock(char* base, uint64_t index, size_t n, const W* in) {
        ConvertBlock(in, n, 1, At(base, index), kComps);
    }
    static void SetIQBlock(char* base, uint64_t index, size_t n, const W* in) {
        if constexpr (kComplex)
            ConvertBlock(in, 2 * n, 1, At(base, index), 1);
        else
            ConvertBlock(in, n, 2, At(base, index), 1);
    }
};

template <class W>
struct Table {
    typename CDataCursor<W>::GetFn get[4];
    typename CDataCursor<W>::GetIQFn get_iq;
    typename CDataCursor<W>::GetFn get_i;
    typename CDataCursor<W>::SetIQFn set_iq;
    typename CDataCursor<W>::SetIFn set_i;
    typename CDataCursor<W>::GetBlockFn get_block[4];
    typename CDataCursor<W>::GetBlockFn get_i_block;
    typename CDataCursor<W>::GetBlockFn get_iq_block;
    typename CDataCursor<W>::SetBlockFn set_i_block;
    typename CDataCursor<W>::SetBlockFn set_iq_block;
};

template <class W, int T>
constexpr Table<W> Row() {
    using R = Routines<W, T>;
    return {{R::GetI, R::GetQ, R::GetMag, R::GetPhase},
            R::GetIQ,
            R::GetI,
            R::SetIQ,
            R::SetI,
            {R::GetIBlock, R::template GetBlockBy<R::GetQ>, R::template GetBlockBy<R::GetMag>,
             R::template GetBlockBy<R::GetPhase>},
            R::GetIBlock,
            R::GetIQBlock,
            R::SetIBlock,
            R::SetIQBlock};
}

template <class W, int... T>
constexpr std::array<Table<W>, sizeof...(T)> MakeTables(std::integer_sequence<int, T...>) {
    return {Row<W, T>()...};
}

template <class W>
const Table<W>& TableOf(int type) {
    static constexpr auto kTables = MakeTables<W>(std::make_integer_sequence<int, TYPE_COUNT>{});
    return kTables[type];
}

// A cursor without samples reads zeros and writes nothing.
template <class W>
struct Nothing {
    static W Get(const char*, uint64_t) { return W(0); }
    static void GetIQ(const char*, uint64_t, W* pair) { pair[0] = pair[1] = W(0); }
    static void SetIQ(char*, uint64_t, const W*) {}
    static void SetI(char*, uint64_t, W) {}
    static void GetBlock(const char*, uint64_t, size_t n, W* out) { std::fill(out, out + n, W(0)); }
    static void GetIQBlock(const char*, uint64_t, size_t n, W* out) {
        std::fill(out, out + 2 * n, W(0));
    }
    static void SetBlock(char*, uint64_t, size_t, const W*) {}
};

}  // namespace

int64_t TruncToInt64(double v) { return Trunc64(v); }
uint64_t TruncToUInt64(double v) { return TruncU64(v); }

template <class W>
CDataCursor<W>::CDataCursor(const CZrkData* record, int iqmp)
    : record_(record),
      iqmp_(iqmp & 3),
      type_(record ? record->type : TYPE_NULL),
      base_(record && IsValidType(record->type) ? static_cast<char*>(record->data) : nullptr),
      pos_(base_),
      step_(base_ ? static_cast<uint64_t>(record->ElementBytes()) : 0) {
    if (base_) {
        const Table<W>& t = TableOf<W>(type_);
        get_iq_ = t.get_iq;
        get_i_ = t.get_i;
        set_iq_ = t.set_iq;
        set_i_ = t.set_i;
        get_i_block_ = t.get_i_block;
        get_iq_block_ = t.get_iq_block;
        set_i_block_ = t.set_i_block;
        set_iq_block_ = t.set_iq_block;
    } else {
        get_iq_ = Nothing<W>::GetIQ;
        get_i_ = Nothing<W>::Get;
        set_iq_ = Nothing<W>::SetIQ;
        set_i_ = Nothing<W>::SetI;
        get_i_block_ = Nothing<W>::GetBlock;
        get_iq_block_ = Nothing<W>::GetIQBlock;
        set_i_block_ = Nothing<W>::SetBlock;
        set_iq_block_ = Nothing<W>::SetBlock;
    }
    SetIqmp(iqmp);
}

template <class W>
void CDataCursor<W>::SetIqmp(int iqmp) {
    iqmp_ = iqmp & 3;
    if (base_) {
        get_ = TableOf<W>(type_).get[iqmp_];
        get_block_ = TableOf<W>(type_).get_block[iqmp_];
    } else {
        get_ = Nothing<W>::Get;
        get_block_ = Nothing<W>::GetBlock;
    }
}

template <class W>
void CDataCursor<W>::Seek(uint64_t index) {
    if (base_) pos_ = base_ + index * step_;
}

template <class W>
void CDataCursor<W>::Seek(res_t x, res_t y) {
    if (base_) pos_ = record_->Address(x, y);
}

template <class W>
void CDataCursor<W>::Seek(res_t x, res_t y, res_t z) {
    if (base_) pos_ = record_->Address(x, y, z);
}

template <class W>
void CDataCursor<W>::Seek(res_t x, res_t y, res_t z, res_t t, res_t u, res_t v) {
    if (base_) pos_ = record_->Address(x, y, z, t, u, v);
}

template <class W>
void CDataCursor<W>::SeekWrapped(res_t x, res_t y, res_t z, res_t t, res_t u, res_t v) {
    if (base_) pos_ = record_->AddressWrapped(x, y, z, t, u, v);
}

template <class W>
void CDataCursor<W>::SeekClamped(res_t x, res_t y) {
    if (!base_) return;
    pos_ = base_ + record_->Offset3dClamped(x, y, 0) * step_;
}

template <class W>
void CDataCursor<W>::NextPlane() {
    if (base_) pos_ += record_->BytesPerPlane();
}

template <class W>
uint64_t CDataCursor<W>::Tell() const {
    return step_ ? static_cast<uint64_t>(pos_ - base_) / step_ : 0;
}

template class CDataCursor<float>;
template class CDataCursor<double>;
template class CDataCursor<int32_t>;
template class CDataCursor<int64_t>;
template class CDataCursor<uint64_t>;
