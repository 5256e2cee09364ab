#include "display/image_view.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/host.h"
#include "core/report.h"
#include "display/plot_result.h"
#include "ops/permute.h"
#include "ops/structural_join.h"
#include "ops/structural_shape.h"

const char* const CImageView::kCursorNames[kCursorModes] = {
    "pointer", "window/level",     "1d profile",    "measure angle", "x roi",
    "y roi",   "rectangle roi",    "ellipse roi",   "draw roi",      "+ x roi",
    "+ y roi", "+ rectangle roi",  "+ ellipse roi", "+ draw roi",    "undo add",
    "refresh", "end line segment", "line segment"};
const char* const CImageView::kBitmapKinds[4] = {"normal", "anti-alias x2", "anti-alias x4",
                                                 "24 bit bitmap"};

namespace {

constexpr float kMaxZoom = 6400.0f;

float ClampZoom(float z) { return std::clamp(z, 1.0f, kMaxZoom); }

std::vector<float> Points(const CDataSpace& space, const char* name) {
    const CZrkData* r = space.FindData(name);
    std::vector<float> p;
    if (!r || !r->Data()) return p;
    CDataCursor<float> in(r, 0);
    p.resize(r->Count());
    in.GetIBlock(p.data(), 0, p.size());
    return p;
}

}  // namespace

CZrkData* SetOverlay(CDataSpace& space, const char* name, const std::vector<float>& values) {
    CZrkData* r = space.FindData(name);
    if (r && (r->Type() != TYPE_R4 || r->Count() != values.size() || !r->Data())) {
        space.DelData(r);
        r = nullptr;
    }
    if (!r) r = space.NewData(TYPE_R4, std::max<size_t>(1, values.size()), 1, 1, 1, 1, 1, name);
    if (!r) return nullptr;
    std::memcpy(r->Data(), values.data(), values.size() * sizeof(float));
    r->changed = 1;
    return r;
}

CPlane& CImageView::ZoomPlane() const {
    return Doc().kind == LOOK_RGB ? Look().rplane : Look().palplane;
}

int CImageView::Columns() const {
    const CZrkData* a = Data(0);
    return a && a->Data() ? static_cast<int>(std::min<res_t>(a->nx, 0x7fffffff)) : 0;
}

int CImageView::Rows() const {
    const CZrkData* a = Data(0);
    return a && a->Data() ? static_cast<int>(std::min<res_t>(a->ny, 0x7fffffff)) : 0;
}

void CImageView::SizeFrame(int w, int h) {
    client_w = w;
    client_h = h;
    const int cols = Columns(), rows = Rows();
    if (cols <= 0 || rows <= 0 || w <= 0 || h <= 0) return;
    float* zoom = ZoomPlane().zoom;
    const float zx = std::max(1.0f, std::floor(float(w) * 100.0f / cols));
    const float zy = std::max(1.0f, std::floor(float(h) * 100.0f / rows));
    switch (zoom_mode) {
        case 1:
            zoom[0] = zx;
            break;
        case 2:
            zoom[1] = zy;
            break;
        case 3:
            zoom[0] = zx;
            zoom[1] = zy;
            break;
        case 4: {
            const float r = std::min(zx / zoom[0], zy / zoom[1]);
            zoom[0] = zoom[0] * r;
            zoom[1] = zoom[1] * r;
            break;
        }
        default:
            return;
    }
    zoom[0] = ClampZoom(zoom[0]);
    zoom[1] = ClampZoom(zoom[1]);
    Draw();
}

void CImageView::SetZoom(float percent) {
    float* zoom = ZoomPlane().zoom;
    zoom[0] = zoom[1] = ClampZoom(percent);
    Draw();
}

void CImageView::SetFixedZoom(float percent) {
    zoom_mode = 0;
    SetZoom(percent);
}

void CImageView::OnZoomIn() {
    zoom_mode = 0;
    float* zoom = ZoomPlane().zoom;
    zoom[0] = ClampZoom(zoom[0] * 2);
    zoom[1] = ClampZoom(zoom[1] * 2);
    Draw();
}

void CImageView::OnZoomOut() {
    zoom_mode = 0;
    float* zoom = ZoomPlane().zoom;
    zoom[0] = ClampZoom(zoom[0] / 2);
    zoom[1] = ClampZoom(zoom[1] / 2);
    Draw();
}

void CImageView::Pan(int dx, int dy) {
    int* pan = ZoomPlane().pan;
    pan[0] += dx;
    pan[1] += dy;
    Draw();
}

bool CImageView::ToData(int sx, int sy, int& x, int& y) const {
    const CPlane& p = ZoomPlane();
    x = static_cast<int>(std::floor((sx + p.pan[0]) * 100.0 / p.zoom[0]));
    y = static_cast<int>(std::floor((sy + p.pan[1]) * 100.0 / p.zoom[1]));
    return x >= 0 && y >= 0 && x < Columns() && y < Rows();
}

double CImageView::LengthMm(double dx, double dy) const {
    const CZrkData* a = Data(0);
    const double mx = a ? a->mm[0] : 1.0, my = a ? a->mm[1] : 1.0;
    return std::hypot(dx * mx, dy * my);
}

std::string CImageView::OverlayInfo(int x, int y) const {
    const CZrkData* a = Data(0);
    if (!a || !a->Data() || x < 0 || y < 0 || x >= Columns() || y >= Rows()) return {};
    std::string rest;
    char piece[96];
    for (int k = 0; k < 4; ++k)
        if (PageSize(k) > 1) {
            std::snprintf(piece, sizeof piece, "[%d]", static_cast<int>(page[k]));
            rest += piece;
        }
    const uint64_t at =
        (((page[3] * a->nu + page[2]) * a->nt + page[1]) * a->nz + page[0]) * a->CountXY() +
        static_cast<uint64_t>(y) * a->nx + x;
    char value[96];
    if (a->IsComplex()) {
        CDataCursor<double> in(a, 2);
        const double mag = in.Get(at);
        in.SetIqmp(3);
        double ph = in.Get(at);
        const bool radians = Look().radians != 0;
        if (!radians) ph = ph * 180.0 / M_PI;
        std::snprintf(value, sizeof value, "%.3f, %.3f%s", mag, ph,
                      radians ? " radians" : " degrees");
    } else {
        std::snprintf(value, sizeof value, "%.3f", CDataCursor<double>(a, 0).Get(at));
    }
    char text[512];
    std::snprintf(text, sizeof text, " %s[%d][%d]%s = %s", a->name, x, y, rest.c_str(), value);
    std::string out = text;
    if (cursor_mode == CURSOR_PROFILE || cursor_mode == CURSOR_LINE ||
        cursor_mode == CURSOR_END_LINE) {
        const std::vector<float> p =
            Points(space_, cursor_mode == CURSOR_PROFILE ? "zrk_profile" : "zrk_line");
        double d = 0;
        for (size_t i = 0; i + 3 < p.size(); i += 2)
            d += LengthMm(p[i + 2] - p[i], p[i + 3] - p[i + 1]);
        std::snprintf(text, sizeof text, ", |d|= %.3f", d);
        out += text;
    }
    return out;
}

std::string CImageView::Readout() const {
    return ReadoutPrefix() + PositionText() + OverlayInfo(mouse_x, mouse_y);
}

void CImageView::SetProfile(CDataSpace& space, float x0, float y0, float x1, float y1) {
    if (!SetOverlay(space, "zrk_profile", {x0, y0, x1, y1})) Host().Status("alloc failed");
}

int CImageView::LoadProfile(const CDataSpace& space, uint64_t z, std::vector<float>& out) const {
    out.clear();
    const CZrkData* a = Data(0);
    const std::vector<float> p = Points(space, "zrk_profile");
    if (!a || !a->Data() || p.size() < 4 || Columns() == 0 || Rows() == 0) {
        Host().Status("invalid profile");
        return 0;
    }
    const double dx = p[2] - p[0], dy = p[3] - p[1];
    const double len = std::hypot(dx, dy);
    if (!(len > 0) || !std::isfinite(len)) {
        Host().Status("invalid profile");
        return 0;
    }
    const uint64_t n = static_cast<uint64_t>(std::lround(len)) + 1;
    const double angle = std::atan2(dy, dx);
    const int w = std::max(1, options_.profile_width);
    const bool complex = a->IsComplex();
    CDataCursor<float> in(a, 0);
    const uint64_t plane = (((page[3] * a->nu + page[2]) * a->nt + page[1]) * a->nz +
                            std::min<uint64_t>(z, a->nz - 1)) *
                           a->CountXY();
    out.assign(complex ? 2 * n : n, 0.0f);
    for (uint64_t i = 0; i < n; ++i) {
        const double f = n > 1 ? double(i) / double(n - 1) : 0.0;
        const double cx = p[0] + dx * f, cy = p[1] + dy * f;
        double sum[2] = {0, 0};
        for (int j = 0; j < w; ++j) {
            const double h = w * 0.5 - 0.5 - j;
            const long px =
                std::clamp<long>(std::lround(cx - std::sin(angle) * h), 0, Columns() - 1);
            const long py = std::clamp<long>(std::lround(cy + std::cos(angle) * h), 0, Rows() - 1);
            float pair[2];
            in.GetIQ(pair, plane + static_cast<uint64_t>(py) * a->nx + px);
            sum[0] += pair[0];
            sum[1] += pair[1];
        }
        if (complex) {
            out[2 * i] = static_cast<float>(sum[0] / w);
            out[2 * i + 1] = static_cast<float>(sum[1] / w);
        } else {
            out[i] = static_cast<float>(sum[0] / w);
        }
    }
    return 1;
}

int CImageView::MakeLine(CDataSpace& space, const std::vector<float>& line, uint64_t lines,
                         const char* tag, std::string& name) {
    const CZrkData* a = Data(0);
    const bool complex = a->IsComplex();
    const uint64_t n = line.size() / (complex ? 2 : 1) / lines;
    name = NextResultName(space, a->name, tag);
    CZrkData* r = space.NewData(complex ? TYPE_CR4 : TYPE_R4, n, 1, lines, 1, 1, 1, name.c_str());
    if (!r) {
        Host().Status("allocation failed");
        return 0;
    }
    std::memcpy(r->Data(), line.data(), line.size() * sizeof(float));
    r->mm[0] = a->mm[0];
    r->changed = 1;
    last_plot_ = r->name;
    return 1;
}

int CImageView::PlotProfile(CDataSpace& space) {
    Host().Trace("CImageView::PlotProfile");
    std::vector<float> line;
    if (!LoadProfile(space, page[0], line)) return 0;
    std::string name;
    if (!MakeLine(space, line, 1, "_p", name)) return 0;
    const std::vector<float> p = Points(space, "zrk_profile");
    char ends[128], text[512];
    std::snprintf(ends, sizeof ends, "(%g,%g)-(%g,%g)", p[0], p[1], p[2], p[3]);
    std::snprintf(text, sizeof text, " %s profile %s = %d in %s\r\n", Data(0)->name, ends,
                  static_cast<int>(space.FindData(name.c_str())->nx), name.c_str());
    Host().History(text);
    last_plot_thru_z_ = 0;
    OpenPlot(space.FindData(name.c_str()), nullptr, name);
    return 1;
}

int CImageView::PlotProfileThruZ(CDataSpace& space) {
    Host().Trace("CImageView::PlotProfileThruZ");
    std::vector<float> all, line;
    const uint64_t nz = PageSize(0);
    for (uint64_t z = 0; z < nz; ++z) {
        if (!LoadProfile(space, z, line)) return 0;
        all.insert(all.end(), line.begin(), line.end());
    }
    std::string name;
    if (!MakeLine(space, all, nz, "_p", name)) return 0;
    char text[512];
    std::snprintf(text, sizeof text, " %s profile %s = %d in %s\r\n", Data(0)->name, "thru z",
                  static_cast<int>(space.FindData(name.c_str())->nx), name.c_str());
    Host().History(text);
    last_plot_thru_z_ = nz > 1;
    OpenPlot(space.FindData(name.c_str()), nullptr, name);
    return 1;
}

int CImageView::PlotThruZ(CDataSpace& space, int x, int y) {
    Host().Trace("CImageView::PlotThruZ");
    const CZrkData* a = Data(0);
    if (!a || !a->Data() || x < 0 || y < 0 || x >= Columns() || y >= Rows()) return 0;
    const int k = scroll_mode >= 2 && scroll_mode <= 5 ? scroll_mode - 2 : 0;
    const uint64_t n = PageSize(k);
    if (n <= 1) {
        Host().Status("scroll dimension is 1");
        return 0;
    }
    const bool complex = a->IsComplex();
    std::vector<float> line(complex ? 2 * n : n);
    CDataCursor<float> in(a, 0);
    for (uint64_t i = 0; i < n; ++i) {
        uint64_t p[4] = {page[0], page[1], page[2], page[3]};
        p[k] = i;
        const uint64_t at =
            ((((p[3] * a->nu + p[2]) * a->nt + p[1]) * a->nz + p[0]) * a->ny + y) * a->nx + x;
        float pair[2];
        in.GetIQ(pair, at);
        if (complex) {
            line[2 * i] = pair[0];
            line[2 * i + 1] = pair[1];
        } else {
            line[i] = pair[0];
        }
    }
    std::string name;
    if (!MakeLine(space, line, 1, "_p", name)) return 0;
    char text[512];
    std::snprintf(text, sizeof text, " %s[%zu,%zu] through plane\r\n", a->name, size_t(x),
                  size_t(y));
    Host().History(text);
    last_plot_thru_z_ = 0;
    OpenPlot(space.FindData(name.c_str()), nullptr, name);
    return 1;
}

namespace {

// The plot `name` with `line` as one more row in y.
int AppendRow(CDataSpace& space, const char* name, const std::vector<float>& line, bool complex,
              bool multi_plane_source) {
    CZrkData* plot = name && name[0] ? space.FindData(name) : nullptr;
    if (!plot || !plot->Data()) {
        Host().Status("previous profile no longer exists");
        return 0;
    }
    if (multi_plane_source) {
        Host().Status("multi-plane append not implemented");
        return 0;
    }
    if (plot->nz > 1 || plot->nt > 1 || plot->nu > 1 || plot->nv > 1) {
        Host().Status("can not append to multi-plane plot");
        return 0;
    }
    const uint64_t n = line.size() / (complex ? 2 : 1);
    if (plot->nx != n || plot->IsComplex() != complex || plot->ComponentBytes() != 4 ||
        (plot->type % 10) != TYPE_R4) {
        Host().Status("profile has changed length");
        return 0;
    }
    CDataSpace temp;
    CZrkData* grown = temp.NewData(plot->type, plot->nx, plot->ny + 1, 1, 1, 1, 1, "append");
    if (!grown) {
        Host().Status("uh ohh, out of memory");
        return 0;
    }
    const uint64_t old_bytes = plot->Bytes();
    std::memcpy(grown->Data(), plot->Data(), old_bytes);
    std::memcpy(static_cast<char*>(grown->Data()) + old_bytes, line.data(),
                line.size() * sizeof(float));
    plot->NewUndo("append", grown);
    return 1;
}

}  // namespace

int CImageView::AppendProfile(CDataSpace& space, const char* plot) {
    Host().Trace("CImageView::AppendProfile");
    std::vector<float> line;
    if (!LoadProfile(space, page[0], line)) return 0;
    return AppendRow(space, plot, line, Data(0)->IsComplex(), false);
}

int CImageView::AppendThruZ(CDataSpace& space, const char* plot, int x, int y) {
    Host().Trace("CImageView::AppendThruZ");
    const std::string keep = last_plot_;
    CDataSpace scratch;
    // The pixel's line, made as a plot of its own on a scratch list and then appended.
    if (!PlotThruZ(scratch, x, y)) return 0;
    last_plot_ = keep;
    const CZrkData* made = scratch.GetData(0);
    std::vector<float> line(made->Count() * (made->IsComplex() ? 2 : 1));
    std::memcpy(line.data(), made->Data(), line.size() * sizeof(float));
    return AppendRow(space, plot, line, made->IsComplex(), last_plot_thru_z_ != 0);
}

double CImageView::Angle(const float p[6]) {
    const double ax = p[0] - p[2], ay = p[1] - p[3], bx = p[4] - p[2], by = p[5] - p[3];
    if ((ax == 0 && ay == 0) || (bx == 0 && by == 0)) return 0.0;
    return std::atan2(std::fabs(ax * by - ay * bx), ax * bx + ay * by);
}

void CImageView::OnAngle(CDataSpace& space, float x, float y) {
    std::vector<float> p = Points(space, "zrk_angle");
    if (angle_clicks == 0 || p.size() != 6) p.assign(6, 0.0f);
    const int k = angle_clicks % 3;
    // Points not yet clicked sit on the last one, so a partial angle draws as a line.
    for (int i = k; i < 3; ++i) {
        p[2 * i] = x;
        p[2 * i + 1] = y;
    }
    if (!SetOverlay(space, "zrk_angle", p)) {
        Host().Status("alloc failed");
        return;
    }
    angle_clicks = k + 1;
    if (angle_clicks < 3) {
        Host().Status(" click left button 3 times to define angle");
        return;
    }
    angle_clicks = 0;
    const bool radians = Look().radians != 0;
    const double a = Angle(p.data()) * (radians ? 1.0 : 180.0 / M_PI);
    char text[96];
    std::snprintf(text, sizeof text, " angle= %.3f%s", a, radians ? " radians" : " degrees");
    Host().Status(text);
}

void CImageView::OnLinePoint(CDataSpace& space, float x, float y, bool end) {
    std::vector<float> p =
        cursor_mode == CURSOR_END_LINE ? std::vector<float>{} : Points(space, "zrk_line");
    if (cursor_mode == CURSOR_END_LINE) cursor_mode = CURSOR_LINE;
    p.push_back(x);
    p.push_back(y);
    if (!SetOverlay(space, "zrk_line", p)) {
        Host().Status("alloc failed");
        return;
    }
    if (end) cursor_mode = CURSOR_END_LINE;
    Host().Status(end ? OverlayInfo(static_cast<int>(x), static_cast<int>(y))
                      : " click left button define lines; double click to end");
}

void CImageView::Replace(CZrkData* result, const char* what) {
    CZrkData* a = Data(0);
    a->NewUndo(what, result);
    a->changed = 1;
    Draw();
}

int CImageView::OnCrop(CDataSpace& space) {
    Host().Trace("CImageView::OnCrop");
    CZrkData* a = Data(0);
    const std::vector<float> r = Points(space, "roi_rect");
    if (!a || !a->Data() || r.size() < 4) {
        Host().Status("alloc failed");
        return 0;
    }
    auto bound = [](float v, int n) { return std::clamp<long>(std::lround(v), 0, n - 1); };
    const long x0 = bound(std::min(r[0], r[2]), Columns()),
               x1 = bound(std::max(r[0], r[2]), Columns());
    const long y0 = bound(std::min(r[1], r[3]), Rows()), y1 = bound(std::max(r[1], r[3]), Rows());
    return Reported({.to = REPORT_STATUS}, 0, [&] {
        CDataSpace temp;
        CZrkData* cx = Cut(temp, 0, a, x0, x1);
        CZrkData* cy = Cut(temp, 1, cx, y0, y1);
        Replace(cy, "crop");
        char text[256];
        std::snprintf(text, sizeof text, " %s crop [%d][%d] to [%d][%d]\r\n", a->name, int(x0),
                      int(y0), int(x1), int(y1));
        Host().History(text);
        Host().Status("crop complete");
        return 1;
    });
}

int CImageView::CatWith(CDataSpace& space, const CZrkData* b, int dir, bool before,
                        const char* what) {
    (void)space;
    CZrkData* a = Data(0);
    if (!a || !b) return 0;
    return Reported({.to = REPORT_STATUS}, 0, [&] {
        CDataSpace temp;
        CZrkData* r = nullptr;
        try {
            r = before ? Cat(temp, dir, b, a) : Cat(temp, dir, a, b);
        } catch (const std::bad_alloc&) {
            Host().Status("alloc failed");
            return 0;
        }
        Replace(r, what);
        Host().Status(std::string(what) + " complete");
        return 1;
    });
}

int CImageView::Transpose(const char* pair) {
    CZrkData* a = Data(0);
    if (!a || !a->Data()) return 0;
    return Reported({.to = REPORT_STATUS}, 0, [&] {
        char letters[4] = {pair[0], pair[1], 0, 0};
        CZrkData text;
        text.SetHeaderData(TYPE_I1, 2, 1, 1, 1, 1, 1, letters);
        CDataSpace temp;
        Replace(Trans(temp, &text, a), "transpose");
        Host().Status("transpose complete");
        return 1;
    });
}

int CImageView::OnRotate90() {
    CZrkData* a = Data(0);
    if (!a || !a->Data()) return 0;
    return Reported({.to = REPORT_STATUS}, 0, [&] {
        CDataSpace temp;
        Replace(RotXy(temp, a), "rotate");
        SizeFrame(client_w, client_h);
        return 1;
    });
}

int CImageView::OnRotateM90() {
    CZrkData* a = Data(0);
    if (!a || !a->Data()) return 0;
    return Reported({.to = REPORT_STATUS}, 0, [&] {
        CDataSpace temp;
        Replace(RotMXy(temp, a), "rotate");
        SizeFrame(client_w, client_h);
        return 1;
    });
}
