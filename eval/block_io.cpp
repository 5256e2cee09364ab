#include "eval/block_io.h"

#include <array>
#include <utility>

namespace {

template <int Base> struct Storage;
template <> struct Storage<TYPE_I1> { using type = int8_t; };
template <> struct Storage<TYPE_I2> { using type = int16_t; };
template <> struct Storage<TYPE_I4> { using type = int32_t; };
template <> struct Storage<TYPE_I8> { using type = int64_t; };
template <> struct Storage<TYPE_N1> { using type = uint8_t; };
template <> struct Storage<TYPE_N2> { using type = uint16_t; };
template <> struct Storage<TYPE_N4> { using type = uint32_t; };
template <> struct Storage<TYPE_N8> { using type = uint64_t; };
template <> struct Storage<TYPE_R4> { using type = float; };
template <> struct Storage<TYPE_R8> { using type = double; };

template <class S>
S FromDouble(double v) {
    if constexpr (std::is_floating_point_v<S>) return static_cast<S>(v);
    else if constexpr (std::is_same_v<S, uint64_t>) return TruncToUInt64(v);
    else return static_cast<S>(TruncToInt64(v));  // keeps the low bits
}

template <int T>
void Load(const char* base, uint64_t index, size_t n, int comps, double* out) {
    using S = typename Storage<T % 10>::type;
    constexpr size_t kStored = T >= 10 ? 2 : 1;
    const S* p = reinterpret_cast<const S*>(base) + index * kStored;
    if (comps == 1) {
        for (size_t j = 0; j < n; ++j) out[j] = static_cast<double>(p[j * kStored]);
    } else if constexpr (kStored == 2) {
        for (size_t j = 0; j < 2 * n; ++j) out[j] = static_cast<double>(p[j]);
    } else {
        for (size_t j = 0; j < n; ++j) {
            out[2 * j] = static_cast<double>(p[j]);
            out[2 * j + 1] = 0.0;
        }
    }
}

template <int T>
void Store(char* base, uint64_t index, size_t n, int comps, const double* in) {
    using S = typename Storage<T % 10>::type;
    constexpr size_t kStored = T >= 10 ? 2 : 1;
    S* p = reinterpret_cast<S*>(base) + index * kStored;
    if (comps == 2 && kStored == 2) {
        for (size_t j = 0; j < 2 * n; ++j) p[j] = FromDouble<S>(in[j]);
    } else {
        // i only: a real record drops q, a complex one keeps its q
        for (size_t j = 0; j < n; ++j) p[j * kStored] = FromDouble<S>(in[j * comps]);
    }
}

template <int... T>
constexpr std::array<DoubleLoadFn, sizeof...(T)> Loaders(std::integer_sequence<int, T...>) {
    return {Load<T>...};
}
template <int... T>
constexpr std::array<DoubleStoreFn, sizeof...(T)> Storers(std::integer_sequence<int, T...>) {
    return {Store<T>...};
}

void LoadNothing(const char*, uint64_t, size_t n, int comps, double* out) {
    for (size_t j = 0; j < n * comps; ++j) out[j] = 0.0;
}
void StoreNothing(char*, uint64_t, size_t, int, const double*) {}

constexpr auto kLoaders = Loaders(std::make_integer_sequence<int, TYPE_COUNT>{});
constexpr auto kStorers = Storers(std::make_integer_sequence<int, TYPE_COUNT>{});

}  // namespace

DoubleLoadFn DoubleLoader(int type) { return IsValidType(type) ? kLoaders[type] : LoadNothing; }

DoubleStoreFn DoubleStorer(int type) {
    return IsValidType(type) ? kStorers[type] : StoreNothing;
}
