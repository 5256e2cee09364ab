#include "files/user_format.h"

#include <cstdio>
#include <cstring>
#include <vector>

int CountConversions(const std::string& format, const char* kinds) {
    int count = 0;
    for (size_t k = 0; k < format.size(); ++k) {
        if (format[k] != '%') continue;
        ++k;
        if (k < format.size() && format[k] == '%') continue;
        while (k < format.size() && std::strchr("-+ #0", format[k])) ++k;
        // Widths and precisions of three digits at most keep the output of one number short.
        auto digits = [&] {
            const size_t first = k;
            while (k < format.size() && format[k] >= '0' && format[k] <= '9') ++k;
            return k - first <= 3;
        };
        if (!digits()) return -1;
        if (k < format.size() && format[k] == '.') {
            ++k;
            if (!digits()) return -1;
        }
        if (k >= format.size() || !std::strchr(kinds, format[k]) || format[k] == 0) return -1;
        ++count;
    }
    return count;
}

std::string FormatCount(const std::string& format, int n) {
    const int count = CountConversions(format, "diuxXo");
    if (count < 0 || count > 1) return "";
    std::vector<char> out(format.size() + 512);
    std::snprintf(out.data(), out.size(), format.c_str(), n);
    return out.data();
}
