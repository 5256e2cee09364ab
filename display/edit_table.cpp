#include "display/edit_table.h"

#include <cerrno>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>

#include "core/data_space.h"
#include "core/host.h"
#include "core/number_format.h"
#include "core/zrk_data.h"

namespace {

// Leading and trailing blanks off.
std::string Trim(const std::string& s) {
    const size_t a = s.find_first_not_of(" \t\r\n");
    if (a == std::string::npos) return "";
    return s.substr(a, s.find_last_not_of(" \t\r\n") - a + 1);
}

template <class T>
std::string Shown(T v) {
    if constexpr (std::is_floating_point_v<T>) {
        return FormatFloat(v, "default");
    } else if constexpr (std::is_unsigned_v<T> && sizeof(T) == 8) {
        // Beyond the signed range the long form has no room; the float form keeps the size.
        if (v > static_cast<uint64_t>(std::numeric_limits<int64_t>::max()))
            return FormatFloat(static_cast<double>(v), "default");
        return FormatLong(static_cast<int64_t>(v), "long_default");
    } else {
        return FormatLong(static_cast<int64_t>(v), "long_default");
    }
}

template <class T>
std::string Exact(T v) {
    char buf[40];
    if constexpr (std::is_same_v<T, float>) {
        std::snprintf(buf, sizeof buf, "%.9g", static_cast<double>(v));
    } else if constexpr (std::is_same_v<T, double>) {
        std::snprintf(buf, sizeof buf, "%.17g", v);
    } else if constexpr (std::is_unsigned_v<T>) {
        std::snprintf(buf, sizeof buf, "%" PRIu64, static_cast<uint64_t>(v));
    } else {
        std::snprintf(buf, sizeof buf, "%" PRId64, static_cast<int64_t>(v));
    }
    return buf;
}

// The element at p of a's type as text, "i, q" when complex, each part through `format`.
template <class Format>
std::string ElementText(const CZrkData* a, const char* p, Format format) {
    std::string out;
    WithComponent(a->Type(), [&](auto t) {
        using T = decltype(t);
        T v[2];
        std::memcpy(v, p, static_cast<size_t>(a->ElementBytes()));
        out = a->IsComplex() ? format(v[0]) + ", " + format(v[1]) : format(v[0]);
    });
    return out;
}

// One number of component type T from the whole of `text`; the reason when it is not one.
template <class T>
bool Parse(const std::string& text, const char* type_name, T* out, std::string* why) {
    const char* s = text.c_str();
    char* end = nullptr;
    errno = 0;
    if constexpr (std::is_floating_point_v<T>) {
        const double v = std::strtod(s, &end);
        if (text.empty() || *end) {
            *why = "not a number: " + text;
            return false;
        }
        if (std::isfinite(v) && std::fabs(v) > std::numeric_limits<T>::max()) {
            *why = text + " is out of range of " + type_name;
            return false;
        }
        *out = static_cast<T>(v);
        return true;
    } else {
        // Read as a whole number first so that 64-bit values keep every digit.
        bool whole;
        bool in_range = true;
        if constexpr (std::is_unsigned_v<T>) {
            const bool negative = Trim(text).rfind('-', 0) == 0;
            const unsigned long long v = std::strtoull(s, &end, 10);
            whole = !text.empty() && !*end;
            in_range = !negative || v == 0;
            in_range = in_range && errno != ERANGE && v <= std::numeric_limits<T>::max();
            if (whole && in_range) *out = static_cast<T>(v);
        } else {
            const long long v = std::strtoll(s, &end, 10);
            whole = !text.empty() && !*end;
            in_range = errno != ERANGE && v >= std::numeric_limits<T>::min() &&
                       v <= std::numeric_limits<T>::max();
            if (whole && in_range) *out = static_cast<T>(v);
        }
        if (whole && in_range) return true;
        if (whole) {
            *why = text + " is out of range of " + type_name;
            return false;
        }
        std::strtod(s, &end);
        *why = !text.empty() && !*end ? text + " is not a whole number" : "not a number: " + text;
        return false;
    }
}

// "i, q", "i q" or "i" into its two parts (q 0 when absent); false when more or fewer.
bool SplitPair(const std::string& text, std::string parts[2]) {
    std::string t = text;
    const size_t comma = t.find(',');
    if (comma != std::string::npos) {
        parts[0] = Trim(t.substr(0, comma));
        parts[1] = Trim(t.substr(comma + 1));
        return !parts[1].empty() && parts[1].find(',') == std::string::npos;
    }
    const size_t blank = t.find_first_of(" \t");
    parts[0] = Trim(t.substr(0, blank));
    parts[1] = blank == std::string::npos ? "0" : Trim(t.substr(blank));
    return parts[1].find_first_of(" \t") == std::string::npos;
}

}  // namespace

res_t CEditTable::Columns() const {
    const CZrkData* a = Data(0);
    return a && a->Data() && a->Count() ? a->nx : 0;
}

res_t CEditTable::Rows() const {
    const CZrkData* a = Data(0);
    return a && a->Data() && a->Count() ? a->ny : 0;
}

uint64_t CEditTable::CurrentPlane() const {
    const CZrkData* a = Data(0);
    if (!a) return 0;
    uint64_t plane = 0;
    for (int k = 3; k >= 0; --k) plane = plane * PageSize(k) + std::min(page[k], PageSize(k) - 1);
    return plane;
}

char* CEditTable::Sample(res_t x, res_t y) const {
    const CZrkData* a = Data(0);
    if (x >= Columns() || y >= Rows()) return nullptr;
    const uint64_t index = CurrentPlane() * a->CountXY() + y * a->nx + x;
    return static_cast<char*>(a->Data()) + index * static_cast<uint64_t>(a->ElementBytes());
}

std::string CEditTable::Text(res_t x, res_t y) const {
    const char* p = Sample(x, y);
    return p ? ElementText(Data(0), p, [](auto v) { return Shown(v); }) : "";
}

std::string CEditTable::EditText(res_t x, res_t y) const {
    const char* p = Sample(x, y);
    return p ? ElementText(Data(0), p, [](auto v) { return Exact(v); }) : "";
}

bool CEditTable::SetText(res_t x, res_t y, const std::string& typed) {
    Host().Trace("CViewEdit::OnEdit");
    CZrkData* a = Data(0);
    if (!Sample(x, y)) {
        ShowStatus("data not found");
        return false;
    }
    const std::string text = Trim(typed);
    std::string why;
    std::unique_ptr<char[]> value(new char[static_cast<size_t>(a->ElementBytes())]);
    WithComponent(a->Type(), [&](auto t) {
        using T = decltype(t);
        T v[2] = {};
        const char* name = TypeName(a->Type() % 10);
        std::string parts[2] = {text, "0"};
        if (a->IsComplex() && !SplitPair(text, parts)) {
            why = "not a number: " + text;
            return;
        }
        if (!Parse(parts[0], name, &v[0], &why)) return;
        if (a->IsComplex() && !Parse(parts[1], name, &v[1], &why)) return;
        std::memcpy(value.get(), v, static_cast<size_t>(a->ElementBytes()));
    });
    if (!why.empty()) {
        ShowStatus(why);
        return false;
    }
    // The edit goes into a copy, which becomes the array; the old samples stay for undo.
    std::unique_ptr<CZrkData> copy(a->Duplicate());
    if (!copy) {
        ShowStatus("out of memory");
        return false;
    }
    const uint64_t offset = static_cast<uint64_t>(Sample(x, y) - static_cast<char*>(a->Data()));
    std::memcpy(static_cast<char*>(copy->Data()) + offset, value.get(),
                static_cast<size_t>(a->ElementBytes()));
    a->NewUndo("edit", copy.get());
    ShowStatus(std::string(a->name) + "[" + std::to_string(x) + "][" + std::to_string(y) + "]" +
               PositionText() + "= " + Text(x, y));
    Host().RefreshDisplays();
    return true;
}

void CEditTable::OnUndo() {
    Host().Trace("CViewEdit::OnUndo");
    CZrkData* a = Data(0);
    if (!a) return;
    a->Undo();
    Host().RefreshDisplays();
}

std::string CEditTable::Readout() const {
    const CZrkData* a = Data(0);
    return a ? std::string(a->name) + " i/q:" + PositionText() : std::string();
}

std::string OpenEditDisplay(CDataSpace& space, const std::string& name) {
    CZrkData* a = space.FindData(name.c_str());
    if (!a || !a->Data() || a->Type() < 0) return "data not found";
    const DisplayWindowHook open = DisplayWindow(LOOK_SPREADSHEET);
    CDisplayRequest request;
    request.kind = LOOK_SPREADSHEET;
    request.data[0] = a;
    request.name = name;
    if (!open || !open(request)) return "NewDisplay error";
    return "edit data";
}
