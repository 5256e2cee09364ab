#include "display/roi_mask.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "core/block_io.h"
#include "core/data_space.h"
#include "core/zrk_error.h"

namespace {

// The numbers of a region record in storage order (i only); empty when it is missing.
std::vector<double> Numbers(const char* name) {
    const CZrkData* r = GlobalDataSpace().FindData(name);
    std::vector<double> out;
    if (!r || !r->data || r->type < 0) return out;
    // The numbers pass through float, whatever the record stores.
    std::vector<float> buf(r->Count());
    const float* v = CBlockReader<float>(r, 1).Read(0, buf.size(), buf.data());
    out.assign(v, v + buf.size());
    return out;
}

long Clamp(double v, res_t n) {
    return static_cast<long>(std::clamp(v, 0.0, static_cast<double>(n) - 1));
}

struct Plane {
    unsigned char* p;
    res_t nx, ny;
    void Set(long x, long y) { p[static_cast<res_t>(y) * nx + static_cast<res_t>(x)] = 1; }
};

void Binary(Plane m) {
    const CZrkData* b = GlobalDataSpace().FindData("roi_binary");
    if (!b || !b->data || b->nx != m.nx || b->ny != m.ny) return;
    const CBlockReader<float> reader(b, 1);
    float buf[kBlockElements];
    const res_t n = m.nx * m.ny;
    for (res_t k = 0; k < n; k += kBlockElements) {
        const size_t len = static_cast<size_t>(std::min<res_t>(kBlockElements, n - k));
        const float* v = reader.Read(k, len, buf);
        for (size_t j = 0; j < len; ++j)
            if (v[j] != 0) m.p[k + j] = 1;
    }
}

void Ellipse(Plane m) {
    const std::vector<double> v = Numbers("roi_ellip");
    if (v.size() < 4) return;
    const double x0 = Clamp(std::min(v[0], v[2]), m.nx), x1 = Clamp(std::max(v[0], v[2]), m.nx);
    const double y0 = Clamp(std::min(v[1], v[3]), m.ny), y1 = Clamp(std::max(v[1], v[3]), m.ny);
    const double a2 = std::pow((x1 - x0) * 0.5, 2), b2 = std::pow((y1 - y0) * 0.5, 2);
    const double cx = (x0 + x1) * 0.5, cy = (y0 + y1) * 0.5;
    const double p = -2 * cx, q = cx * cx - a2;
    for (long y = static_cast<long>(y0); y <= static_cast<long>(y1); ++y) {
        // A one-row ellipse has b2 = 0: its row is the full chord.
        const double rise = b2 > 0 ? (y - cy) * (y - cy) * a2 / b2 : 0;
        const double d = std::sqrt(p * p - 4 * (rise + q));
        if (std::isnan(d)) continue;
        const long from = Clamp(std::floor((-p - d) / 2 + 0.5), m.nx);
        const long to = Clamp(std::floor((-p + d) / 2 + 0.5), m.nx);
        if (from <= to)
            std::memset(m.p + static_cast<res_t>(y) * m.nx + static_cast<res_t>(from), 1,
                        static_cast<size_t>(to - from + 1));
    }
}

void Rect(Plane m) {
    const std::vector<double> v = Numbers("roi_rect");
    if (v.size() < 4) return;
    const long x0 = Clamp(std::min(v[0], v[2]), m.nx), x1 = Clamp(std::max(v[0], v[2]), m.nx);
    const long y0 = Clamp(std::min(v[1], v[3]), m.ny), y1 = Clamp(std::max(v[1], v[3]), m.ny);
    for (long y = y0; y <= y1; ++y)
        for (long x = x0; x <= x1; ++x) m.Set(x, y);
}

// Whole columns (roi_x) or rows (roi_y) between the two bounds.
void Band(Plane m, bool rows) {
    const std::vector<double> v = Numbers(rows ? "roi_y" : "roi_x");
    if (v.size() < 2) return;
    const res_t n = rows ? m.ny : m.nx;
    const long lo = Clamp(std::min(v[0], v[1]), n), hi = Clamp(std::max(v[0], v[1]), n);
    for (long a = lo; a <= hi; ++a)
        for (res_t b = 0; b < (rows ? m.nx : m.ny); ++b)
            rows ? m.Set(static_cast<long>(b), a) : m.Set(a, static_cast<long>(b));
}

// Polygon by the winding rule, tested at pixel centres row by row.
void Draw(Plane m) {
    const std::vector<double> v = Numbers("roi_draw");
    const size_t n = v.size() / 2;
    if (n < 3) return;
    std::vector<std::pair<double, int>> cross;
    for (res_t y = 0; y < m.ny; ++y) {
        cross.clear();
        for (size_t i = 0; i < n; ++i) {
            const double xa = v[2 * i], ya = v[2 * i + 1];
            const double xb = v[2 * ((i + 1) % n)], yb = v[2 * ((i + 1) % n) + 1];
            const double yy = static_cast<double>(y);
            if ((ya <= yy && yb > yy) || (yb <= yy && ya > yy)) {
                const double x = xa + (yy - ya) * (xb - xa) / (yb - ya);
                cross.push_back({x, yb > ya ? 1 : -1});
            }
        }
        std::sort(cross.begin(), cross.end());
        int winding = 0;
        for (size_t k = 0; k + 1 < cross.size(); ++k) {
            winding += cross[k].second;
            if (winding == 0) continue;
            const long from = std::max(0L, static_cast<long>(std::ceil(cross[k].first)));
            const long to = static_cast<long>(std::ceil(cross[k + 1].first)) - 1;
            for (long x = from; x <= to && x < static_cast<long>(m.nx); ++x)
                m.Set(x, static_cast<long>(y));
        }
    }
}

}  // namespace

const char* RoiRecordName(int kind) {
    switch (kind) {
        case ROI_X:
            return "roi_x";
        case ROI_Y:
            return "roi_y";
        case ROI_RECT:
            return "roi_rect";
        case ROI_ELLIPSE:
            return "roi_ellip";
        case ROI_DRAW:
            return "roi_draw";
        case ROI_BINARY:
            return "roi_binary";
        default:
            return "roi_mask";
    }
}

bool HasRoi(int kind) {
    const CZrkData* region = GlobalDataSpace().FindData(RoiRecordName(kind));
    return region && region->data && region->type >= 0 && region->nx >= 2;
}

CZrkData* GetRoiMask(int kind, res_t nx, res_t ny) {
    CDataSpace& space = GlobalDataSpace();
    CZrkData* mask = space.FindOrNew("roi_mask");
    if (!mask) Raise("out of memory");
    auto plane = std::make_unique<CZrkData>();
    // The plane the undo is about to drop is used again: a fresh one costs a page fault for
    // every 4 KiB on first touch.
    if (mask->undo_data && mask->undo_type == TYPE_N1 && mask->undo_nx == nx &&
        mask->undo_ny == ny && mask->undo_nz * mask->undo_nt * mask->undo_nu * mask->undo_nv == 1) {
        plane->SetHeaderData(TYPE_N1, nx, ny, 1, 1, 1, 1, mask->undo_data);
        mask->undo_data = nullptr;
    } else {
        plane->SetHeader(TYPE_N1, nx, ny, 1, 1, 1, 1);
        plane->AllocateOrThrow();
    }
    auto* p = static_cast<unsigned char*>(plane->data);
    const bool shape = kind >= ROI_X && kind <= ROI_BINARY;
    std::memset(p, shape ? 0 : 1, nx * ny);
    if ((kind == ROI_2D || kind == ROI_RGB) && mask->data && mask->nx == nx && mask->ny == ny &&
        mask->type == TYPE_N1)
        std::memcpy(p, mask->data, nx * ny);
    const Plane m{p, nx, ny};
    if (kind == ROI_BINARY) Binary(m);
    if (kind == ROI_ELLIPSE) Ellipse(m);
    if (kind == ROI_RECT) Rect(m);
    if (kind == ROI_Y || kind == ROI_X) Band(m, kind == ROI_Y);
    if (kind == ROI_DRAW) Draw(m);
    mask->NewUndo("roi", plane.get());
    return mask;
}
