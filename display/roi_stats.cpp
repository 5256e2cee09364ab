#include "display/roi_stats.h"

#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/host.h"
#include "core/number_format.h"
#include "display/roi_mask.h"
#include "ops/stats.h"

namespace {

std::string F(double v) { return FormatFloat(v, "default"); }

std::string Line(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Line(const char* format, ...) {
    char buf[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buf, sizeof buf, format, args);
    va_end(args);
    return buf;
}

bool Usable(const CZrkData* a) { return a && a->data && a->type >= 0 && a->CountXY() > 0; }

// Statistics of `plane` with its status text, or false (status said why).
bool Plane(const CZrkData* a, uint64_t plane, int kind, int iqmp, CRoiStats* s) {
    if (!RoiStats(a, plane, kind, iqmp, s)) {
        Host().Status("roi_mask does not exist");
        return false;
    }
    return true;
}

std::string Status(const CRoiStats& s) {
    return " mean=" + F(s.mean) + "; sd=" + F(s.sd) + "; snr=" + F(s.snr) +
           "; n=" + std::to_string(s.n);
}

// roi_x's bounds, clamped to a's lines, or false with the status saying why.
bool XRange(const CZrkData* a, res_t* x0, res_t* x1) {
    const CZrkData* roi = GlobalDataSpace().FindData("roi_x");
    if (!roi || !roi->data || roi->type < 0 || roi->Count() < 2) {
        Host().Status("1d roi does not exist");
        return false;
    }
    float lo = 0, hi = 0;
    CDataCursor<float> c(roi);
    c.GetI(lo, 0);
    c.GetI(hi, 1);
    if (!(lo <= hi) || hi < 0 || lo > static_cast<float>(a->nx - 1)) {
        Host().Status("1d roi is invalid");
        return false;
    }
    *x0 = lo < 0 ? 0 : static_cast<res_t>(lo);
    *x1 = static_cast<res_t>(hi);
    return true;
}

struct MinMax {
    float min = 0, max = 0;
    uint64_t n = 0;
};

MinMax LineMinMax(const CZrkData* a, uint64_t line, res_t x0, res_t x1, int iqmp) {
    MinMax m;
    m.n = MinMaxX(a, line, x0, x1, &m.min, &m.max, iqmp);
    return m;
}

}  // namespace

bool RoiStats(const CZrkData* a, uint64_t plane, int kind, int iqmp, CRoiStats* out) {
    if (!Usable(a) || !HasRoi(kind)) return false;
    CRoiStats s;
    s.n = MeanSdXy(a, plane, kind, &s.mean, &s.sd, iqmp);
    if (s.n == 0) s.mean = s.sd = 0;
    s.snr = s.sd != 0 ? s.mean / s.sd : 0;
    *out = s;
    return true;
}

int CalcRoi(const CZrkData* a, uint64_t plane, int kind, int iqmp) {
    CRoiStats s;
    if (!Plane(a, plane, kind, iqmp, &s)) return 0;
    Host().History(Line("[][]%s %s, %s, %s, %" PRIu64 "\r\n", a->name, F(s.mean).c_str(),
                        F(s.sd).c_str(), F(s.snr).c_str(), s.n));
    Host().Status(Status(s));
    return 1;
}

int CalcRoiAll(const CZrkData* a, int kind, int iqmp) {
    if (!Usable(a)) return 0;
    const uint64_t planes = a->Count() / a->CountXY();
    CRoiStats s;
    for (uint64_t p = 0; p < planes; ++p) {
        if (!Plane(a, p, kind, iqmp, &s)) return 0;
        Host().History(Line("%s, %s, %s, %" PRIu64 "\r\n", F(s.mean).c_str(), F(s.sd).c_str(),
                            F(s.snr).c_str(), s.n));
    }
    Host().Status(Status(s));
    return 1;
}

int CalcRoiZAll(const CZrkData* a, uint64_t plane, int kind, int iqmp) {
    if (!Usable(a)) return 0;
    const uint64_t first = plane / a->nz * a->nz;
    CRoiStats s;
    for (uint64_t z = 0; z < a->nz; ++z) {
        if (!Plane(a, first + z, kind, iqmp, &s)) return 0;
        Host().History(Line("[][]%s %s, %s, %s, %i\r\n", a->name, F(s.mean).c_str(),
                            F(s.sd).c_str(), F(s.snr).c_str(), static_cast<int>(s.n)));
    }
    Host().Status(Status(s));
    return 1;
}

int CalcRoiX(const CZrkData* a, uint64_t line, int iqmp) {
    res_t x0, x1;
    if (!Usable(a) || !XRange(a, &x0, &x1)) return 0;
    const MinMax m = LineMinMax(a, line, x0, x1, iqmp);
    Host().History(
        Line("[][]%s %s, %s, %" PRIu64 "\r\n", a->name, F(m.min).c_str(), F(m.max).c_str(), m.n));
    Host().Status(Line(" min=%s; max=%s; n=%" PRIu64, F(m.min).c_str(), F(m.max).c_str(), m.n));
    return 1;
}

int CalcRoiXAll(const CZrkData* a, int iqmp) {
    res_t x0, x1;
    if (!Usable(a) || !XRange(a, &x0, &x1)) return 0;
    const uint64_t lines = a->Count() / a->nx;
    MinMax m;
    for (uint64_t k = 0; k < lines; ++k) {
        m = LineMinMax(a, k, x0, x1, iqmp);
        Host().History(Line("%s, %s, %" PRIu64 "\r\n", F(m.min).c_str(), F(m.max).c_str(), m.n));
    }
    Host().Status(Line("min=%s; max=%s; n=%" PRIu64, F(m.min).c_str(), F(m.max).c_str(), m.n));
    return 1;
}

int CalcRoiXZAll(const CZrkData* a, uint64_t line, int iqmp) {
    res_t x0, x1;
    if (!Usable(a) || !XRange(a, &x0, &x1)) return 0;
    const uint64_t first = line / a->ny * a->ny;
    MinMax m;
    uint64_t y = 0;
    for (; y < a->ny; ++y) {
        m = LineMinMax(a, first + y, x0, x1, iqmp);
        Host().History(Line("[][]%s, %s, %s, %" PRIu64 "\r\n", a->name, F(m.min).c_str(),
                            F(m.max).c_str(), m.n));
    }
    Host().Status(Line("%" PRIu64 " min=%s; max=%s; n=%" PRIu64, y - 1, F(m.min).c_str(),
                       F(m.max).c_str(), m.n));
    return 1;
}
