#include "core/element_type.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "core/data_cursor.h"
#include "tests/core/owned_record.h"

namespace {

// The component of `type` as operators read it: bytes, lowest and highest value, integer.
struct Component {
    size_t bytes;
    double lowest, highest;
    bool integer;
};

Component ComponentOf(int type) {
    Component c{};
    WithComponent(type, [&](auto v) {
        using T = decltype(v);
        c = {sizeof(T), double(std::numeric_limits<T>::lowest()),
             double(std::numeric_limits<T>::max()), std::is_integral_v<T>};
    });
    return c;
}

}  // namespace

// A name reads back as its type, but for the 64-bit integers, which are never read from text.
TEST(ElementType, NamesReadBackAsTheirType) {
    for (int t = TYPE_NULL; t <= TYPE_COUNT; ++t) {
        const bool readable = IsValidType(t) && t % 10 != TYPE_I8 && t % 10 != TYPE_N8;
        EXPECT_EQ(TypeFromText(TypeName(t)), readable ? t : TYPE_NULL) << TypeName(t);
    }
    EXPECT_STREQ(TypeName(TYPE_NULL), "null");
    EXPECT_STREQ(TypeName(TYPE_COUNT), "null");
    EXPECT_EQ(TypeInfo(TYPE_COUNT), nullptr);
}

// A record's bytes are its elements at the width operators read them, i then q; writing one
// element leaves its neighbours alone.
TEST(ElementType, ElementsSitWhereOperatorsReadThem) {
    for (int t = 0; t < TYPE_COUNT; ++t) {
        SCOPED_TRACE(TypeName(t));
        const Component c = ComponentOf(t);
        const size_t width = c.bytes * (IsComplexType(t) ? 2 : 1);
        Owned d(t, 3);
        ASSERT_EQ(d.Bytes(), 3 * width);
        const float iq[2] = {5, 7};
        CDataCursor<float>(&d).SetIQ(iq, 1);
        const auto* bytes = static_cast<const unsigned char*>(d.data);
        for (size_t k = 0; k < d.Bytes(); ++k) {
            if (k < width || k >= 2 * width) {
                EXPECT_EQ(bytes[k], 0) << "byte " << k;
            }
        }
        WithComponent(t, [&](auto v) {
            using T = decltype(v);
            T i, q;
            std::memcpy(&i, bytes + width, sizeof i);
            EXPECT_EQ(i, T(5));
            if (IsComplexType(t)) {
                std::memcpy(&q, bytes + width + sizeof i, sizeof q);
                EXPECT_EQ(q, T(7));
            }
        });
    }
}

// The limits of each integer type survive a store and a read; one past them wraps around.
TEST(ElementType, IntegerLimitsRoundTripAndWrap) {
    for (int t = 0; t < TYPE_COUNT; ++t) {
        const Component c = ComponentOf(t);
        if (!c.integer) continue;
        SCOPED_TRACE(TypeName(t));
        Owned d(t, 4);
        if (t % 10 == TYPE_N8) {
            CDataCursor<uint64_t> u(&d);
            u.SetI(UINT64_MAX, 0);
            uint64_t back = 0;
            u.GetI(back, 0);
            EXPECT_EQ(back, UINT64_MAX);
            continue;
        }
        CDataCursor<int64_t> n(&d);
        // the 64-bit highest, 2^63 - 1, is no double: it rounds up out of range
        const int64_t lo = static_cast<int64_t>(c.lowest);
        const int64_t hi = c.bytes == 8 ? INT64_MAX : static_cast<int64_t>(c.highest);
        n.SetI(lo, 0);
        n.SetI(hi, 1);
        int64_t got[2];
        n.GetI(got[0], 0);
        n.GetI(got[1], 1);
        EXPECT_EQ(got[0], lo);
        EXPECT_EQ(got[1], hi);
        if (c.bytes < 8) {
            n.SetI(hi + 1, 2);
            n.SetI(lo - 1, 3);
            n.GetI(got[0], 2);
            n.GetI(got[1], 3);
            EXPECT_EQ(got[0], lo);
            EXPECT_EQ(got[1], hi);
        }
    }
}

// Single precision keeps its largest finite value and its smallest normal one.
TEST(ElementType, FloatLimitsRoundTrip) {
    for (int t : {TYPE_R4, TYPE_CR4, TYPE_R8, TYPE_CR8}) {
        SCOPED_TRACE(TypeName(t));
        Owned d(t, 2);
        CDataCursor<float> f(&d);
        const float big = std::numeric_limits<float>::max();
        const float tiny = std::numeric_limits<float>::min();
        f.SetI(big, 0);
        f.SetI(-tiny, 1);
        float got[2];
        f.GetI(got[0], 0);
        f.GetI(got[1], 1);
        EXPECT_EQ(got[0], big);
        EXPECT_EQ(got[1], -tiny);
    }
}

TEST(ElementType, PromoteFollowsTheTable) {
    struct Case {
        int a, b, want;
    } cases[] = {
        {TYPE_I2, TYPE_I2, TYPE_R4},
        {TYPE_N8, TYPE_I1, TYPE_R4},
        {TYPE_I1, TYPE_R8, TYPE_R8},
        {TYPE_R8, TYPE_R4, TYPE_R8},
        {TYPE_CI1, TYPE_I1, TYPE_CR4},
        {TYPE_R4, TYPE_CN2, TYPE_CR4},
        {TYPE_R8, TYPE_CI2, TYPE_CR8},
        {TYPE_CI2, TYPE_R8, TYPE_CR8},
        {TYPE_CR8, TYPE_CR4, TYPE_CR8},
        {TYPE_CR8, TYPE_CN2, TYPE_CR8},
        // the kept asymmetry
        {TYPE_CR8, TYPE_CN4, TYPE_CR4},
        {TYPE_CR8, TYPE_CN8, TYPE_CR4},
        {TYPE_CN4, TYPE_CR8, TYPE_CR8},
        {TYPE_CN8, TYPE_CR8, TYPE_CR8},
        {TYPE_NULL, TYPE_R4, TYPE_NULL},
        {TYPE_R4, 20, TYPE_NULL},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Promote(c.a, c.b), c.want) << TypeName(c.a) << " with " << TypeName(c.b);
}

TEST(ElementType, PromoteIntegerTakesWidthAndFirstSign) {
    struct Case {
        int a, b, want;
    } cases[] = {
        {TYPE_I1, TYPE_N2, TYPE_I2},   {TYPE_N1, TYPE_I2, TYPE_N2},
        {TYPE_I8, TYPE_N1, TYPE_I8},   {TYPE_N4, TYPE_N8, TYPE_N8},
        {TYPE_CI1, TYPE_N4, TYPE_CI4}, {TYPE_N2, TYPE_CI1, TYPE_CN2},
        {TYPE_R4, TYPE_I1, TYPE_NULL}, {TYPE_I1, TYPE_CR8, TYPE_NULL},
        {TYPE_R8, TYPE_R8, TYPE_NULL}, {TYPE_NULL, TYPE_I1, TYPE_NULL},
    };
    for (const Case& c : cases)
        EXPECT_EQ(PromoteInteger(c.a, c.b), c.want) << TypeName(c.a) << " with " << TypeName(c.b);
}

TEST(ElementType, TypeFromTextBySubstring) {
    struct Case {
        const char* text;
        int want;
    } cases[] = {
        {"double", TYPE_R8}, {"float", TYPE_R4},
        {"r4", TYPE_R4},     {"complex r4", TYPE_CR4},
        {"iq r8", TYPE_CR8}, {"quad n2", TYPE_CN2},
        {"u1", TYPE_N1},     {"n4", TYPE_N4},
        {"i2", TYPE_I2},     {"complex i8", TYPE_NULL},
        {"n8", TYPE_NULL},   {"", TYPE_NULL},
        {"cr4", TYPE_CR4},   {"complex double", TYPE_CR8},
        {"n1 i2", TYPE_N1},  // unsigned names are looked for first
    };
    for (const Case& c : cases) EXPECT_EQ(TypeFromText(c.text), c.want) << c.text;
    EXPECT_EQ(TypeFromText(nullptr), TYPE_NULL);
}

TEST(ElementType, FloatValueIsTheStoredElementOfTheFourFloatTypesOnly) {
    for (int t = -1; t <= TYPE_COUNT + 8; ++t) {
        int bytes = 0;
        bool complex = false;
        try {
            WithFloatValue(t, [&](auto v) {
                bytes = sizeof v;
                complex = !std::is_floating_point_v<decltype(v)>;
            });
        } catch (const ZrkError& e) {
            EXPECT_STREQ(e.what(), "invalid data type") << t;
        }
        const bool stored = t == TYPE_R4 || t == TYPE_R8 || t == TYPE_CR4 || t == TYPE_CR8;
        EXPECT_EQ(bytes, stored ? TypeInfo(t)->elem_bytes : 0) << t;
        EXPECT_EQ(complex, stored && IsComplexType(t)) << t;
    }
}
