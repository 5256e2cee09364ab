#include "core/element_type.h"

#include <gtest/gtest.h>

#include <cmath>
#include <type_traits>

TEST(ElementType, NamesAndSizes) {
    EXPECT_STREQ(TypeName(TYPE_I1), "i1");
    EXPECT_STREQ(TypeName(TYPE_R8), "r8");
    EXPECT_STREQ(TypeName(TYPE_CN2), "complex n2");
    EXPECT_STREQ(TypeName(-1), "null");
    EXPECT_STREQ(TypeName(20), "null");
    for (int t = 0; t < 10; ++t) {
        EXPECT_EQ(TypeInfo(t + 10)->comp_bytes, TypeInfo(t)->comp_bytes) << t;
        EXPECT_EQ(TypeInfo(t + 10)->elem_bytes, 2 * TypeInfo(t)->elem_bytes) << t;
        EXPECT_EQ(TypeInfo(t + 10)->range_min, TypeInfo(t)->range_min) << t;
    }
    EXPECT_EQ(TypeInfo(TYPE_I8)->elem_bytes, 8);
    EXPECT_EQ(TypeInfo(TYPE_CR8)->elem_bytes, 16);
}

TEST(ElementType, RangeTableKeepsItsOddities) {
    EXPECT_EQ(TypeInfo(TYPE_I4)->range_max, 2147483648.0);
    EXPECT_EQ(TypeInfo(TYPE_N4)->range_max, 4294967296.0);
    EXPECT_EQ(TypeInfo(TYPE_N8)->range_max, 18446744073709551616.0);
    EXPECT_GT(TypeInfo(TYPE_I8)->range_min, 9.2e18);
    EXPECT_GT(TypeInfo(TYPE_CI8)->range_min, 9.2e18);
    EXPECT_TRUE(std::isinf(TypeInfo(TYPE_R8)->range_max));
    EXPECT_LT(TypeInfo(TYPE_R8)->range_min, 0);
}

TEST(ElementType, PromoteFollowsTheTable) {
    struct Case { int a, b, want; } cases[] = {
        {TYPE_I2, TYPE_I2, TYPE_R4},     {TYPE_N8, TYPE_I1, TYPE_R4},
        {TYPE_I1, TYPE_R8, TYPE_R8},     {TYPE_R8, TYPE_R4, TYPE_R8},
        {TYPE_CI1, TYPE_I1, TYPE_CR4},   {TYPE_R4, TYPE_CN2, TYPE_CR4},
        {TYPE_R8, TYPE_CI2, TYPE_CR8},   {TYPE_CI2, TYPE_R8, TYPE_CR8},
        {TYPE_CR8, TYPE_CR4, TYPE_CR8},  {TYPE_CR8, TYPE_CN2, TYPE_CR8},
        // the kept asymmetry
        {TYPE_CR8, TYPE_CN4, TYPE_CR4},  {TYPE_CR8, TYPE_CN8, TYPE_CR4},
        {TYPE_CN4, TYPE_CR8, TYPE_CR8},  {TYPE_CN8, TYPE_CR8, TYPE_CR8},
        {TYPE_NULL, TYPE_R4, TYPE_NULL}, {TYPE_R4, 20, TYPE_NULL},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Promote(c.a, c.b), c.want) << TypeName(c.a) << " with " << TypeName(c.b);
}

TEST(ElementType, PromoteIntegerTakesWidthAndFirstSign) {
    struct Case { int a, b, want; } cases[] = {
        {TYPE_I1, TYPE_N2, TYPE_I2},    {TYPE_N1, TYPE_I2, TYPE_N2},
        {TYPE_I8, TYPE_N1, TYPE_I8},    {TYPE_N4, TYPE_N8, TYPE_N8},
        {TYPE_CI1, TYPE_N4, TYPE_CI4},  {TYPE_N2, TYPE_CI1, TYPE_CN2},
        {TYPE_R4, TYPE_I1, TYPE_NULL},  {TYPE_I1, TYPE_CR8, TYPE_NULL},
        {TYPE_R8, TYPE_R8, TYPE_NULL},  {TYPE_NULL, TYPE_I1, TYPE_NULL},
    };
    for (const Case& c : cases)
        EXPECT_EQ(PromoteInteger(c.a, c.b), c.want) << TypeName(c.a) << " with " << TypeName(c.b);
}

TEST(ElementType, TypeFromTextBySubstring) {
    struct Case { const char* text; int want; } cases[] = {
        {"double", TYPE_R8},        {"float", TYPE_R4},       {"r4", TYPE_R4},
        {"complex r4", TYPE_CR4},   {"iq r8", TYPE_CR8},      {"quad n2", TYPE_CN2},
        {"u1", TYPE_N1},            {"n4", TYPE_N4},          {"i2", TYPE_I2},
        {"complex i8", TYPE_NULL},  {"n8", TYPE_NULL},        {"", TYPE_NULL},
        {"cr4", TYPE_CR4},          {"complex double", TYPE_CR8},
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
