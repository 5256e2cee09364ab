// Element types of an array record: their numbers are written to workspace files and used
// as table indices, so the order never changes. Complex type = real type + 10.
#pragma once

#include <complex>
#include <cstdint>
#include <type_traits>

#include "core/zrk_error.h"

enum : int {
    TYPE_NULL = -1,
    TYPE_I1 = 0,
    TYPE_I2,
    TYPE_I4,
    TYPE_I8,
    TYPE_N1,
    TYPE_N2,
    TYPE_N4,
    TYPE_N8,
    TYPE_R4,
    TYPE_R8,
    TYPE_CI1,
    TYPE_CI2,
    TYPE_CI4,
    TYPE_CI8,
    TYPE_CN1,
    TYPE_CN2,
    TYPE_CN4,
    TYPE_CN8,
    TYPE_CR4,
    TYPE_CR8,
    TYPE_COUNT
};

struct ElementTypeInfo {
    const char* name;
    int components;
    int comp_bytes;
    int elem_bytes;
    // The range table keeps its historic oddities: the maxima of i4, n4 and n8 are the
    // powers of two themselves and the minimum of i8 is positive.
    double range_min;
    double range_max;
};

// The row of `type`, or null outside 0 ... 19.
const ElementTypeInfo* TypeInfo(int type);

inline bool IsValidType(int type) { return type >= 0 && type < TYPE_COUNT; }
inline bool IsComplexType(int type) { return type >= TYPE_CI1 && type < TYPE_COUNT; }
inline bool IsFloatType(int type) {
    return type >= 0 && (type % 10 == TYPE_R4 || type % 10 == TYPE_R8);
}

// The name text of a type, "null" for anything outside the table.
const char* TypeName(int type);

// The type of an arithmetic result; -1 when either type is invalid.
int Promote(int a, int b);

// The type of a bit operation or shift; -1 when either is a float type or invalid.
int PromoteInteger(int a, int b);

// Reads a type out of free text by substring search; -1 when none is found.
// "i8" and "n8" are deliberately not understood.
int TypeFromText(const char* text);

// Runs body(T{}) with T the component type of `type` (a complex type by its parts): the one
// switch on element type of an operation. Raises "invalid data type" for anything else.
template <class F>
void WithComponent(int type, F&& body) {
    if (type < 0 || type >= TYPE_COUNT) Raise("invalid data type");
    switch (type % 10) {
        case TYPE_I1:
            return body(int8_t{});
        case TYPE_I2:
            return body(int16_t{});
        case TYPE_I4:
            return body(int32_t{});
        case TYPE_I8:
            return body(int64_t{});
        case TYPE_N1:
            return body(uint8_t{});
        case TYPE_N2:
            return body(uint16_t{});
        case TYPE_N4:
            return body(uint32_t{});
        case TYPE_N8:
            return body(uint64_t{});
        case TYPE_R4:
            return body(float{});
        default:
            return body(double{});
    }
}

// Runs body(V{}) with V the value type of a float type: float, double or their complex, as
// the library kernels take them. Raises "invalid data type" for any other type.
template <class F>
void WithFloatValue(int type, F&& body) {
    if (!IsFloatType(type)) Raise("invalid data type");
    WithComponent(type, [&](auto c) {
        using C = decltype(c);
        if constexpr (std::is_floating_point_v<C>) {
            if (IsComplexType(type)) return body(std::complex<C>{});
            return body(C{});
        }
    });
}
