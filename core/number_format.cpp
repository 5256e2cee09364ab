#include "core/number_format.h"

#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

std::string Printf(const char* format, double value) {
    char buf[64];
    std::snprintf(buf, sizeof buf, format, value);
    return buf;
}

std::string WithSuffix(double mantissa, int exponent) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.3fe%d", mantissa, exponent);
    return buf;
}

// Exactly one conversion, of a float kind, and no '*': the only formats safe to hand a double.
bool IsOneFloatConversion(const char* format) {
    int conversions = 0;
    for (const char* p = format; *p; ++p) {
        if (*p != '%') continue;
        if (p[1] == '%') {
            ++p;
            continue;
        }
        ++p;
        p += std::strspn(p, "-+ #0");
        p += std::strspn(p, "0123456789");
        if (*p == '.') p += 1 + std::strspn(p + 1, "0123456789");
        if (!*p || !std::strchr("fFeEgG", *p)) return false;
        ++conversions;
    }
    return conversions == 1 && std::strlen(format) < 32;
}

std::string DefaultFloat(double v) {
    if (std::isnan(v)) return "nan";
    if (std::isinf(v)) return v > 0 ? "+inf" : "-inf";
    if (v == 0) return "0";
    const double size = std::fabs(v);
    if (size < 1e4 && v == std::trunc(v)) return Printf("%.0f", v);
    if (size >= 1 && size < 1e4) return Printf("%.3f", v);
    if (size >= 1e-2 && size < 1) return Printf("%.4f", v);
    if (size >= 1e-3 && size < 1e-2) return Printf("%.6f", v);
    int exponent = 0;
    double mantissa = v;
    if (size >= 1e4) {
        while (std::fabs(mantissa) >= 1000) {
            mantissa /= 1000;
            exponent += 3;
        }
    } else {
        while (std::fabs(mantissa) < 1 && exponent > -18) {
            mantissa *= 1000;
            exponent -= 3;
        }
    }
    return WithSuffix(mantissa, exponent);
}

}  // namespace

std::string FormatFloat(double value, const char* format) {
    if (format && std::strcmp(format, "default") != 0 && IsOneFloatConversion(format))
        return Printf(format, value);
    return DefaultFloat(value);
}

std::string FormatLong(int64_t value, const char* format) {
    if (!format || std::strcmp(format, "long_default") != 0)
        return FormatFloat(static_cast<double>(value), format);
    if (value > -10000 && value < 10000) {
        char buf[32];
        std::snprintf(buf, sizeof buf, "%d", static_cast<int>(value));
        return buf;
    }
    double mantissa = static_cast<double>(value);
    int exponent = 0;
    while (std::fabs(mantissa) >= 1000 && exponent < 18) {
        mantissa /= 1000;
        exponent += 3;
    }
    return WithSuffix(mantissa, exponent);
}
