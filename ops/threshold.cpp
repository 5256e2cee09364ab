#include "ops/threshold.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "core/element_type.h"
#include "core/zrk_error.h"
#include "ops/structural_base.h"

namespace {

// A limit as a value of T: floats take it as it is, integers rounded by `round` and held to
// their range (an infinite limit is the range's end).
template <class T>
T Limit(double v, double (*round)(double)) {
    if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(v);
    } else {
        constexpr double lo = static_cast<double>(std::numeric_limits<T>::min());
        constexpr double hi = static_cast<double>(std::numeric_limits<T>::max());
        v = round(v);
        if (v <= lo) return std::numeric_limits<T>::min();
        if (v >= hi) return std::numeric_limits<T>::max();
        return static_cast<T>(v);
    }
}

void CheckRange(double low, double high) {
    // NaN limits fail here as well: no component could be compared with them.
    if (!(low <= high)) Raise("low must not be above high");
}

CZrkData* SameShape(CDataSpace& temp, const CZrkData* a) {
    RequireData(a);
    res_t res[6];
    a->GetRes(res);
    return NewResult(temp, a->type, res, a);
}

uint64_t Components(const CZrkData* a) { return a->Count() * (IsComplexType(a->type) ? 2 : 1); }

}  // namespace

CZrkData* Clip(CDataSpace& temp, const CZrkData* a, double low, double high) {
    CheckRange(low, high);
    CZrkData* out = SameShape(temp, a);
    WithComponent(a->type, [&](auto zero) {
        using T = decltype(zero);
        const T lo = Limit<T>(low, std::ceil);
        const T hi = Limit<T>(high, std::floor);
        if (lo > hi) Raise("no value of the data type lies between low and high");
        const T* x = static_cast<const T*>(a->data);
        T* y = static_cast<T*>(out->data);
        const uint64_t n = Components(a);
        for (uint64_t k = 0; k < n; ++k) y[k] = x[k] < lo ? lo : (x[k] > hi ? hi : x[k]);
    });
    return out;
}

CZrkData* Thresh(CDataSpace& temp, const CZrkData* a, double low, double high,
                 const CZrkData* value) {
    CheckRange(low, high);
    CZrkData* out = SameShape(temp, a);
    WithComponent(a->type, [&](auto zero) {
        using T = decltype(zero);
        unsigned char bytes[16] = {};
        CastValue(value, a->type % 10, bytes);
        T fill;
        std::memcpy(&fill, bytes, sizeof fill);
        const T* x = static_cast<const T*>(a->data);
        T* y = static_cast<T*>(out->data);
        const uint64_t n = Components(a);
        // Compared as doubles, so an integer component meets the limits as given.
        for (uint64_t k = 0; k < n; ++k) {
            const double v = static_cast<double>(x[k]);
            y[k] = v < low || v > high ? fill : x[k];
        }
    });
    return out;
}
