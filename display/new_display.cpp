#include "display/new_display.h"

#include <algorithm>
#include <cstring>

#include "core/data_space.h"
#include "core/host.h"
#include "core/report.h"
#include "core/window_space.h"
#include "display/display_entry.h"
#include "display/display_update.h"
#include "ops/structural_join.h"
#include "ops/transform.h"

namespace {

std::string Format(const char* format, long long a) {
    char out[256];
    std::snprintf(out, sizeof out, format, a);
    return out;
}

// The first name of `format` (from 0) that `space` does not hold.
std::string FreeName(const CDataSpace& space, const std::string& format) {
    for (long long n = 0;; ++n) {
        const std::string name = Format(format.c_str(), n);
        if (!space.FindData(name.c_str())) return name;
    }
}

uint64_t VolumesOf(const CZrkData* a) { return a ? a->nt * a->nu * a->nv : 0; }

}  // namespace

const char* CNewDisplay::Noun() const { return kind & 0xA0000 ? "windows" : "plots"; }

bool CNewDisplay::Check(const CDataSpace& space, CZrkData* found[3]) {
    found[0] = found[1] = found[2] = nullptr;
    CZrkData* a = space.FindData(names[0].c_str());
    if (!a || !a->Data()) {
        status = "data not found";
        return false;
    }
    if (a->CountXY() == 0 || a->nz == 0 || VolumesOf(a) == 0) {
        status = kind == 0x10000 ? "x/y/z/t lines out of range" : "x/y/z/t out of range";
        return false;
    }
    found[0] = a;
    return true;
}

uint64_t CNewDisplay::Volumes(CZrkData* const found[3]) const {
    for (int k = 0; k < 3; ++k)
        if (found[k]) return VolumesOf(found[k]);
    return 0;
}

std::string CNewDisplay::UpdateStatus(const CDataSpace& space) {
    CZrkData* found[3];
    if (!Check(space, found)) return status;
    const CZrkData* a = found[0];
    char text[512];
    std::snprintf(text, sizeof text, "output= %s (%d,%d,%d,1) in %d plots", a->name, int(a->nx),
                  int(a->ny), int(a->nz), int(Volumes(found)));
    return status = text;
}

std::string CNew1d::UpdateStatus(const CDataSpace& space) {
    CZrkData* found[3];
    if (!Check(space, found)) return status;
    const CZrkData* a = found[0];
    char text[512];
    std::snprintf(text, sizeof text, "output= %s (%zu,%zu,%zu,1) in %zu plots", a->name,
                  size_t(a->nx), size_t(a->ny), size_t(a->nz), size_t(Volumes(found)));
    return status = text;
}

std::string CNewRgb::UpdateStatus(const CDataSpace& space) {
    CZrkData* found[3];
    if (!Check(space, found)) return status;
    const CZrkData* a = found[0] ? found[0] : found[1] ? found[1] : found[2];
    char text[256];
    std::snprintf(text, sizeof text, "output= (%d,%d,%d,1) in %d plots", int(a->nx), int(a->ny),
                  int(a->nz), int(Volumes(found)));
    return status = text;
}

bool CNewRgb::Check(const CDataSpace& space, CZrkData* found[3]) {
    const CZrkData* first = nullptr;
    for (int k = 0; k < 3; ++k) {
        found[k] = names[k].empty() ? nullptr : space.FindData(names[k].c_str());
        if (!names[k].empty() && (!found[k] || !found[k]->Data())) {
            status = "data not found";
            return false;
        }
        if (!found[k]) continue;
        if (!first) first = found[k];
        if (found[k]->nx != first->nx) {
            status = "x resolutions incompatible";
            return false;
        }
        if (found[k]->ny != first->ny) {
            status = "y resolutions incompatible";
            return false;
        }
        if (VolumesOf(found[k]) != VolumesOf(first)) {
            status = "different # of display windows";
            return false;
        }
    }
    if (!first) {
        status = "data not found";
        return false;
    }
    return true;
}

bool CNewXy::Check(const CDataSpace& space, CZrkData* found[3]) {
    found[2] = nullptr;
    for (int k = 0; k < 2; ++k) {
        found[k] = space.FindData(names[k].c_str());
        if (!found[k] || !found[k]->Data()) {
            status = "data not found";
            return false;
        }
    }
    if (found[0]->nx != found[1]->nx) {
        status = "x resolutions incompatible";
        return false;
    }
    if (VolumesOf(found[0]) != VolumesOf(found[1])) {
        status = "different # of display windows";
        return false;
    }
    return true;
}

int CNewDisplay::AppendTo(CDataSpace& space, CZrkData* const found[3]) {
    (void)space;
    const CZrkData* a = found[0];
    if (!a || Volumes(found) > 1) {
        status = "zarnik cannot append to multiple windows";
        return 0;
    }
    CWindowSpace& windows = GlobalWindowSpace();
    const bool plot = kind == 0x10000;
    for (int i = 0; i < windows.Count(); ++i) {
        CWindowEntry* e = windows.Get(i);
        CZrkData* d = e ? e->data[0] : nullptr;
        if (!d || e->kind != kind || d == a || VolumesOf(d) != 1) continue;
        if (d->nx != a->nx || (plot ? d->nz != a->nz : d->ny != a->ny)) continue;
        return Reported({.to = REPORT_STATUS}, 0, [&] {
            CDataSpace temp;
            d->NewUndo("append", Cat(temp, plot ? 1 : 2, d, a));
            d->changed = d->shape_changed = 1;
            Host().RefreshDisplays();
            return 1;
        });
    }
    char text[256];
    if (plot)
        std::snprintf(text, sizeof text, "no plots found with the resoulution [%zu][*][%zu][1]",
                      size_t(a->nx), size_t(a->nz));
    else
        std::snprintf(text, sizeof text, "no images found with the resoulution (%zu, %zu, *, 1)",
                      size_t(a->nx), size_t(a->ny));
    status = text;
    return 0;
}

int CNewDisplay::OnViewNew(CDataSpace& space) {
    Host().Trace("CNewDisplay::OnViewNew");
    opened.clear();
    CZrkData* found[3];
    if (!Check(space, found)) {
        Host().Status(status);
        return 0;
    }
    if (append) {
        const int done = AppendTo(space, found);
        if (!done) Host().Status(status);
        return done;
    }
    const uint64_t count = Volumes(found);
    if (count >= 3) {
        char question[128];
        std::snprintf(question, sizeof question, "Do you really want %i %s", int(count), Noun());
        if (!Host().AskYesNo(question)) return 0;
    }
    DisplayWindowHook hook = DisplayWindow(kind);
    SetLookDefaults();
    for (uint64_t n = 0; n < count; ++n) {
        Host().Status("loading...");
        CZrkData* shown[3] = {nullptr, nullptr, nullptr};
        std::string name;
        const bool copy = count > 1 || ft_x || ft_y;
        if (copy) name = FreeName(space, nameformat);
        for (int k = 0; k < 3; ++k) {
            CZrkData* a = found[k];
            if (!a) continue;
            if (!copy) {
                shown[k] = a;
                continue;
            }
            const std::string copy_name = kind == 0x80000 ? name + "_" + "rgb"[k] : name;
            CZrkData* c = space.NewData(a->type, a->nx, a->ny, a->nz, 1, 1, 1, copy_name.c_str());
            if (!c) {
                status = "alloc failed";
                Host().Status(status);
                return opened.size() > 0;
            }
            std::memcpy(c->Data(), static_cast<char*>(a->Data()) + n * a->BytesPerVolume(),
                        a->BytesPerVolume());
            c->CopyMm(*a);
            if (ft_x || ft_y) {
                Host().Status("ft...");
                const int ok = Reported({.to = REPORT_STATUS}, 0, [&] {
                    CDataSpace temp;
                    for (int dir = 0; dir < 2; ++dir)
                        if (dir == 0 ? ft_x : ft_y) c->NewUndo("ft", Ft(temp, dir, c, 1, 0, 1));
                    c->NoUndo();
                    return 1;
                });
                if (!ok) return opened.size() > 0;
            }
            c->changed = 1;
            shown[k] = c;
        }
        CLook look(kind);
        for (int k = 0; k < 4; ++k)
            if (CPlane* plane = look.Plane(k);
                plane && (k == 0 ? kind == 0x20000 : kind == 0x80000)) {
                CZrkData* d = shown[k == 0 ? 0 : k - 1];
                plane->iqmp = iqmp;
                if (d) SetRangeWinLev(*plane, d);
            }
        if (!hook) {
            status = kind & 0xA0000 ? "NewDisplay error" : "display failed";
            Host().Status(status);
            return opened.size() > 0;
        }
        CDisplayRequest request;
        request.kind = kind;
        for (int k = 0; k < 3; ++k) request.data[k] = shown[k];
        request.look = &look;
        const CZrkData* first = shown[0] ? shown[0] : shown[1] ? shown[1] : shown[2];
        request.caption = first->name;
        request.name = first->name;
        CDisplayEntry* entry = hook(request);
        if (!entry) {
            status = "NewDisplay error";
            Host().Status(status);
            return opened.size() > 0;
        }
        opened.push_back(entry);
    }
    status = kind == 0x20000   ? "display 2d"
             : kind == 0x80000 ? "display rgb"
             : kind == 0x10000 ? "display 1d"
                               : "scatter xy";
    Host().Status("");
    Host().RefreshDisplays();
    return 1;
}

int CNew2d::ScanfOptions(CKeyReader& reader) {
    int taken = 1;
    if (reader.String("2d_nameformat=", &nameformat)) {
    } else if (reader.Int("2d_iqmp=", &iqmp)) {
        iqmp = std::clamp(iqmp, 0, 3);
    } else if (reader.String("2d_palname=", &palname)) {
    } else if (reader.Hex("2d_roicolor=", &roicolor)) {
    } else if (reader.Int("2d_scroll_time(ms)=", &scroll_time)) {
        scroll_time = std::max(1, scroll_time);
    } else if (reader.Int("2d_radians=", &radians)) {
    } else if (reader.Int("2d_units=", &units)) {
    } else {
        taken = 0;
    }
    if (taken) SetLookDefaults();
    return taken;
}

void CNew2d::PrintfOptions(FILE* file) const {
    std::fprintf(file, "\n// 2d plot options\n");
    std::fprintf(file, "2d_nameformat= %s\n", nameformat.c_str());
    std::fprintf(file, "2d_iqmp= %d\n", iqmp);
    std::fprintf(file, "2d_palname= %s\n", palname.c_str());
    std::fprintf(file, "2d_roicolor= %x\n", roicolor);
    std::fprintf(file, "2d_scroll_time(ms)= %d\n", scroll_time);
    std::fprintf(file, "2d_radians= %d\n", radians);
    std::fprintf(file, "2d_units= %d\n", units);
}

void CNew2d::SetLookDefaults() const {
    CLookDefaults& d = LookDefaults(0x20000);
    d.scroll_time = scroll_time;
    d.roi_color = static_cast<int>(roicolor);
    d.radians = radians;
    d.units = units;
    std::snprintf(d.palname, sizeof d.palname, "%s", palname.c_str());
}

int CNewRgb::ScanfOptions(CKeyReader& reader) {
    return reader.String("rgb_nameformat=", &nameformat);
}

void CNewRgb::PrintfOptions(FILE* file) const {
    std::fprintf(file, "\n// rgb plot options\n");
    std::fprintf(file, "rgb_nameformat= %s\n", nameformat.c_str());
}

int CNew1d::ScanfOptions(CKeyReader& reader) {
    int taken = 1;
    if (reader.String("1d_nameformat=", &nameformat)) {
    } else if (reader.Int("1d_iqmp=", &iqmp)) {
    } else if (reader.Hex("1d_roicolor=", &roicolor)) {
    } else if (reader.Hex("1d_ncolor=", &ncolor)) {
    } else if (reader.Int("1d_thick=", &thick)) {
    } else if (reader.Int("1d_symbol=", &symbol)) {
    } else if (reader.Int("1d_symsize=", &symsize)) {
    } else if (reader.Hex("1d_linecolor=", &linecolor)) {
    } else if (reader.Hex("1d_linecolor2=", &linecolor2)) {
    } else if (reader.Hex("1d_axiscolor=", &axiscolor)) {
    } else if (reader.Hex("1d_backcolor=", &backcolor)) {
    } else if (reader.Int("1d_scroll_time(ms)=", &scroll_time)) {
    } else if (reader.Int2("1d_plotsize(pixels)=", &plotsize[0], &plotsize[1])) {
    } else if (reader.Int("1d_axis_top=", &axis[0]) || reader.Int("1d_axis_bottom=", &axis[1]) ||
               reader.Int("1d_axis_left=", &axis[2]) || reader.Int("1d_axis_right=", &axis[3])) {
    } else if (reader.Int("1d_axis_top_text=", &axis_text[0]) ||
               reader.Int("1d_axis_bottom_text=", &axis_text[1]) ||
               reader.Int("1d_axis_left_text=", &axis_text[2]) ||
               reader.Int("1d_axis_right_text=", &axis_text[3])) {
    } else if (reader.Int("1d_lines_overlayed=", &lines_overlayed)) {
    } else if (reader.Font("1d_axisfont=", &axisfont)) {
    } else {
        taken = 0;
    }
    if (taken) SetLookDefaults();
    return taken;
}

void CNew1d::PrintfOptions(FILE* file) const {
    std::fprintf(file, "\n// 1d plot options\n");
    std::fprintf(file, "1d_nameformat= %s\n", nameformat.c_str());
    std::fprintf(file, "1d_iqmp= %d\n", iqmp);
    std::fprintf(file, "1d_roicolor= %x\n", roicolor);
    std::fprintf(file, "1d_ncolor= %x\n", ncolor);
    std::fprintf(file, "1d_thick= %d\n", thick);
    std::fprintf(file, "1d_symbol= %d\n", symbol);
    std::fprintf(file, "1d_symsize= %d\n", symsize);
    std::fprintf(file, "1d_linecolor= %x\n", linecolor);
    std::fprintf(file, "1d_linecolor2= %x\n", linecolor2);
    std::fprintf(file, "1d_axiscolor= %x\n", axiscolor);
    std::fprintf(file, "1d_backcolor= %x\n", backcolor);
    std::fprintf(file, "1d_scroll_time(ms)= %d\n", scroll_time);
    std::fprintf(file, "1d_plotsize(pixels)= %d %d\n", plotsize[0], plotsize[1]);
    static const char* kSides[4] = {"top", "bottom", "left", "right"};
    for (int k = 0; k < 4; ++k) std::fprintf(file, "1d_axis_%s= %d\n", kSides[k], axis[k]);
    for (int k = 0; k < 4; ++k)
        std::fprintf(file, "1d_axis_%s_text= %d\n", kSides[k], axis_text[k]);
    std::fprintf(file, "1d_lines_overlayed= %d\n", lines_overlayed);
    char font[160];
    FontLine(font, sizeof font, axisfont);
    std::fprintf(file, "1d_axis%s", font);
}

void CNewPlot::SetLookDefaults() const {
    CLookDefaults& d = LookDefaults(kind);
    d.bg = static_cast<int>(backcolor);
    // Axis kinds 1 to 4 stand bottom, left, top, right; the options list top, bottom, left,
    // right.
    static const int kOption[4] = {1, 2, 0, 3};
    for (int k = 0; k < 4; ++k) {
        GAxis& a = d.axes[k];
        a.color = static_cast<int>(axiscolor);
        a.show = axis[kOption[k]];
        a.label = axis_text[kOption[k]];
        a.font = axisfont;
    }
}

void CNew1d::SetLookDefaults() const {
    CNewPlot::SetLookDefaults();
    CLookDefaults& d = LookDefaults(kind);
    d.scroll_time = scroll_time;
    d.roi_color = static_cast<int>(roicolor);
}

int CNewXy::ScanfOptions(CKeyReader& reader) {
    int taken = 1;
    if (reader.String("xy_nameformat=", &nameformat)) {
    } else if (reader.Font("xy_font=", &axisfont)) {
    } else if (reader.Int("xy_iqmp=", &iqmp)) {
    } else if (reader.Int("xy_thick=", &thick)) {
    } else if (reader.Int("xy_symbol=", &symbol)) {
    } else if (reader.Int("xy_symsize=", &symsize)) {
    } else if (reader.Hex("xy_linecolor=", &linecolor)) {
    } else if (reader.Hex("xy_linecolor2=", &linecolor2)) {
    } else if (reader.Hex("xy_axiscolor=", &axiscolor)) {
    } else if (reader.Hex("xy_backcolor=", &backcolor)) {
    } else if (reader.Int2("xy_plotsize(pixels)=", &plotsize[0], &plotsize[1])) {
    } else if (reader.Int("xy_axis_top=", &axis[0]) || reader.Int("xy_axis_bottom=", &axis[1]) ||
               reader.Int("xy_axis_left=", &axis[2]) || reader.Int("xy_axis_right=", &axis[3])) {
    } else if (reader.Int("xy_axis_top_text=", &axis_text[0]) ||
               reader.Int("xy_axis_bottom_text=", &axis_text[1]) ||
               reader.Int("xy_axis_left_text=", &axis_text[2]) ||
               reader.Int("xy_axis_right_text=", &axis_text[3])) {
    } else {
        taken = 0;
    }
    if (taken) SetLookDefaults();
    return taken;
}

void CNewXy::PrintfOptions(FILE* file) const {
    std::fprintf(file, "\n// xy plot options\n");
    std::fprintf(file, "xy_nameformat= %s\n", nameformat.c_str());
    char line[160];
    FontLine(line, sizeof line, axisfont);
    std::fprintf(file, "xy_%s", line);
    std::fprintf(file, "xy_iqmp= %d\n", iqmp);
    std::fprintf(file, "xy_thick= %d\n", thick);
    std::fprintf(file, "xy_symbol= %d\n", symbol);
    std::fprintf(file, "xy_symsize= %d\n", symsize);
    std::fprintf(file, "xy_linecolor= %x\n", linecolor);
    std::fprintf(file, "xy_linecolor2= %x\n", linecolor2);
    std::fprintf(file, "xy_axiscolor= %x\n", axiscolor);
    std::fprintf(file, "xy_backcolor= %x\n", backcolor);
    std::fprintf(file, "xy_plotsize(pixels)= %d %d\n", plotsize[0], plotsize[1]);
    static const char* kSides[4] = {"top", "bottom", "left", "right"};
    for (int k = 0; k < 4; ++k) std::fprintf(file, "xy_axis_%s= %d\n", kSides[k], axis[k]);
    for (int k = 0; k < 4; ++k)
        std::fprintf(file, "xy_axis_%s_text= %d\n", kSides[k], axis_text[k]);
}
