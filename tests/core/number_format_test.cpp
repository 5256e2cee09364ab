#include <gtest/gtest.h>

#include <cmath>

#include "core/number_format.h"

namespace {

TEST(NumberFormatTest, LongDefaultStepsInThousands) {
    const struct {
        int64_t value;
        const char* text;
    } cases[] = {
        {0, "0"},
        {7, "7"},
        {9999, "9999"},
        {-9999, "-9999"},
        {10000, "10.000e3"},
        {-123456, "-123.456e3"},
        {999999, "999.999e3"},
        {1000000, "1.000e6"},
        {2500000000LL, "2.500e9"},
        {INT64_MAX, "9.223e18"},
    };
    for (const auto& c : cases) EXPECT_EQ(FormatLong(c.value, "long_default"), c.text) << c.value;
}

TEST(NumberFormatTest, DefaultFloat) {
    const struct {
        double value;
        const char* text;
    } cases[] = {
        {0.0, "0"},
        {3.0, "3"},
        {-42.0, "-42"},
        {3.14159, "3.142"},
        {0.5, "0.5000"},
        {0.00512, "0.005120"},
        {0.000123, "123.000e-6"},
        {2.5e-7, "250.000e-9"},
        {1e-30, "0.000e-18"},
        {12345.678, "12.346e3"},
        {-4.5e7, "-45.000e6"},
        {INFINITY, "+inf"},
        {-INFINITY, "-inf"},
        {NAN, "nan"},
    };
    for (const auto& c : cases) EXPECT_EQ(FormatFloat(c.value, "default"), c.text) << c.value;
}

TEST(NumberFormatTest, FixedDecimalsAndUnsafeFormats) {
    char format[16];
    std::snprintf(format, sizeof format, "%%.%df", 2);
    EXPECT_EQ(FormatFloat(3.14159, format), "3.14");
    EXPECT_EQ(FormatFloat(2.0, "%8.1e"), " 2.0e+00");
    // Anything but one float conversion falls back to "default" rather than misprint.
    EXPECT_EQ(FormatFloat(3.14159, "%s"), "3.142");
    EXPECT_EQ(FormatFloat(3.14159, "%f %f"), "3.142");
    EXPECT_EQ(FormatFloat(3.14159, "%*f"), "3.142");
    EXPECT_EQ(FormatFloat(3.14159, nullptr), "3.142");
    EXPECT_EQ(FormatLong(12, "%.1f"), "12.0");
}

}  // namespace
