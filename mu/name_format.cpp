#include "mu/name_format.h"

#include <cstdio>
#include <cstring>

#include "shell/rename.h"

namespace {

// At most one conversion, and an integer one: flags, width and precision allowed, no length
// modifier, no '*'. "%%" is a plain percent.
bool SafeFormat(const std::string& f) {
    int fields = 0;
    for (size_t i = 0; i < f.size(); ++i) {
        if (f[i] != '%') continue;
        if (++i < f.size() && f[i] == '%') continue;
        while (i < f.size() && std::strchr("-+ #0", f[i])) ++i;
        while (i < f.size() && f[i] >= '0' && f[i] <= '9') ++i;
        if (i < f.size() && f[i] == '.')
            for (++i; i < f.size() && f[i] >= '0' && f[i] <= '9';) ++i;
        if (i >= f.size() || !std::strchr("diouxX", f[i])) return false;
        if (++fields > 1) return false;
    }
    return true;
}

}  // namespace

std::string FormatOutputName(const std::string& format, const std::string& base, int count,
                             std::string* error) {
    std::string f = format;
    for (size_t at = f.find("%s"); at != std::string::npos; at = f.find("%s", at + base.size()))
        f.replace(at, 2, base);
    if (!SafeFormat(f)) {
        *error = "invalid name format: " + format;
        return "";
    }
    char name[256];
    std::snprintf(name, sizeof name, f.c_str(), count);
    if (!IsValidDataName(name)) {
        *error = std::string("invalid output name: ") + name;
        return "";
    }
    return name;
}
