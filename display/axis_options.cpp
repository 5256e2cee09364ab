#include "display/axis_options.h"

#include <algorithm>
#include <cmath>

#include "core/key_reader.h"
#include "display/look.h"

namespace {

const char* Prefix(uint32_t kind) { return kind == LOOK_XY ? "xy" : "1d"; }

float Spacing(float v) { return std::isfinite(v) && v > 0 ? v : 0.0f; }

}  // namespace

int CAxisOptions::ScanfOptions(CKeyReader& reader) {
    static const char* kDir[2] = {"x", "y"};
    char key[64];
    auto name = [&](int d, const char* field) {
        std::snprintf(key, sizeof key, "%s_%s_%s=", Prefix(kind), kDir[d], field);
        return key;
    };
    for (int d = 0; d < 2; ++d) {
        CAxisStyle& s = axis[d];
        if (reader.Float(name(d, "tick"), &s.tick) ||
            reader.Float(name(d, "minortick"), &s.minortick) ||
            reader.Int(name(d, "ticklen"), &s.ticklen) ||
            reader.Int(name(d, "mticklen"), &s.mticklen) ||
            reader.Int(name(d, "skipinter"), &s.skipinter) ||
            reader.Int(name(d, "grid"), &s.grid) || reader.Int(name(d, "thick"), &s.thick) ||
            reader.Float(name(d, "tickscale"), &s.tickscale) ||
            reader.Float(name(d, "tickoff"), &s.tickoff) ||
            reader.String(name(d, "tickformat"), &s.tickformat)) {
            Normalize();
            UpdateLookDefaults();
            return 1;
        }
    }
    return 0;
}

void CAxisOptions::PrintfOptions(FILE* file) const {
    static const char* kDir[2] = {"x", "y"};
    const char* p = Prefix(kind);
    for (int d = 0; d < 2; ++d) {
        const CAxisStyle& s = axis[d];
        const char* x = kDir[d];
        std::fprintf(file, "%s_%s_tick= %g\n", p, x, s.tick);
        std::fprintf(file, "%s_%s_minortick= %g\n", p, x, s.minortick);
        std::fprintf(file, "%s_%s_ticklen= %d\n", p, x, s.ticklen);
        std::fprintf(file, "%s_%s_mticklen= %d\n", p, x, s.mticklen);
        std::fprintf(file, "%s_%s_skipinter= %d\n", p, x, s.skipinter);
        std::fprintf(file, "%s_%s_grid= %d\n", p, x, s.grid);
        std::fprintf(file, "%s_%s_thick= %d\n", p, x, s.thick);
        std::fprintf(file, "%s_%s_tickscale= %g\n", p, x, s.tickscale);
        std::fprintf(file, "%s_%s_tickoff= %g\n", p, x, s.tickoff);
        std::fprintf(file, "%s_%s_tickformat= %s\n", p, x, s.tickformat.c_str());
    }
}

void CAxisOptions::Normalize() {
    for (CAxisStyle& s : axis) {
        s.tick = Spacing(s.tick);
        s.minortick = Spacing(s.minortick);
        s.ticklen = std::clamp(s.ticklen, 0, 100);
        s.mticklen = std::clamp(s.mticklen, 0, 100);
        s.skipinter = std::clamp(s.skipinter, 0, 100);
        s.grid = s.grid != 0;
        s.thick = std::clamp(s.thick, 1, 20);
        if (!std::isfinite(s.tickscale) || s.tickscale == 0) s.tickscale = 1.0f;
        if (!std::isfinite(s.tickoff)) s.tickoff = 0.0f;
        // The look keeps the format in a fixed field, and the preferences one per line.
        if (s.tickformat.empty() || s.tickformat.size() >= sizeof GAxis{}.tickformat ||
            s.tickformat.find_first_of("\r\n") != std::string::npos)
            s.tickformat = "default";
    }
}

void CAxisOptions::Apply(GAxis& a) const {
    const CAxisStyle& s = axis[a.kind == 2 || a.kind == 4];
    a.tick = s.tick;
    a.minortick = s.minortick;
    a.showmtick = s.minortick > 0;
    a.ticklen[0] = s.ticklen;
    a.mticklen[0] = s.mticklen;
    a.skipinter = s.skipinter;
    a.grid = s.grid;
    a.ax_thick = a.tk_thick = s.thick;
    a.tickscale = s.tickscale;
    a.tickoff = s.tickoff;
    std::snprintf(a.tickformat, sizeof a.tickformat, "%s", s.tickformat.c_str());
}

void CAxisOptions::Apply(CLook& look) const {
    for (GAxis& a : look.axes) Apply(a);
}

void CAxisOptions::UpdateLookDefaults() const {
    for (GAxis& a : LookDefaults(kind).axes) Apply(a);
}
