#include "display/roi.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "core/data_space.h"
#include "core/host.h"
#include "core/report.h"
#include "core/zrk_error.h"
#include "display/binary_copy.h"
#include "display/roi_mask.h"
#include "ops/structural_base.h"
#include "ops/structural_fill.h"

namespace {

// A full copy of a (header and samples) in `temp`, the record a plane edit writes into.
CZrkData* Copy(CDataSpace& temp, const CZrkData* a) {
    res_t res[6];
    a->GetRes(res);
    CZrkData* r = NewResult(temp, a->type, res, a);
    std::memcpy(r->data, a->data, a->Bytes());
    return r;
}

// Plane `plane` of a as a record of its own in `temp`.
CZrkData* PlaneOf(CDataSpace& temp, const CZrkData* a, uint64_t plane) {
    const uint64_t planes = a->Count() / a->CountXY();
    if (plane >= planes) Raise("plane out of range");
    const res_t res[6] = {a->nx, a->ny, 1, 1, 1, 1};
    CZrkData* p = NewResult(temp, a->type, res, a);
    const uint64_t bytes = a->CountXY() * a->elem_bytes;
    std::memcpy(p->data, static_cast<const char*>(a->data) + plane * bytes, bytes);
    return p;
}

// A copy of a whose plane `plane` is `p`.
CZrkData* WithPlane(CDataSpace& temp, const CZrkData* a, uint64_t plane, const CZrkData* p) {
    CZrkData* r = Copy(temp, a);
    const uint64_t bytes = a->CountXY() * a->elem_bytes;
    std::memcpy(static_cast<char*>(r->data) + plane * bytes, p->data, bytes);
    return r;
}

const CZrkData* Zero(CDataSpace& temp) {
    CZrkData* z = temp.NewData(TYPE_R4, 1, 1, 1, 1, 1, 1, "zero");
    if (!z) Raise("out of memory");
    *static_cast<float*>(z->data) = 0;
    return z;
}

std::string Trace(const char* form, bool all) {
    return std::string("CRoi::") + form + (all ? "All" : "");
}

}  // namespace

CRoi& TheRoi() {
    static CRoi roi;
    return roi;
}

const CZrkData* RoiFill() {
    CDataSpace& space = GlobalDataSpace();
    if (const CZrkData* f = space.FindData("roi_fill"); f && f->data && f->Count() > 0) return f;
    CZrkData* f = space.FindOrNew("roi_fill");
    if (!f) Raise("out of memory");
    f->FreeData();
    f->SetHeader(TYPE_CR4, 1, 1, 1, 1, 1, 1);
    f->AllocateOrThrow();
    std::memset(f->data, 0, f->Bytes());
    return f;
}

const CZrkData* BuildMask(int kind, const CZrkData* a) {
    if (kind < ROI_X || kind > ROI_BINARY) {
        const CZrkData* m = GlobalDataSpace().FindData("roi_mask");
        if (!m || !m->data) Raise("roi_mask does not exist");
    }
    return GetRoiMask(kind, a->nx, a->ny);
}

bool CRoi::Get2dRoiRange(int kind, res_t nx, res_t ny, res_t* x0, res_t* y0, res_t* x1, res_t* y1) {
    if (nx == 0 || ny == 0) return false;
    if (!HasRoi(kind)) return false;
    const auto* m = static_cast<const unsigned char*>(GetRoiMask(kind, nx, ny)->data);
    res_t lx = nx, ly = ny, hx = 0, hy = 0;
    bool any = false;
    for (res_t y = 0; y < ny; ++y)
        for (res_t x = 0; x < nx; ++x)
            if (m[y * nx + x]) {
                any = true;
                lx = std::min(lx, x), hx = std::max(hx, x);
                ly = std::min(ly, y), hy = std::max(hy, y);
            }
    if (!any) return false;
    *x0 = lx, *y0 = ly, *x1 = hx, *y1 = hy;
    return true;
}

void CRoi::Replace(CZrkData* a, CZrkData* result, const char* what) {
    a->NewUndo(what, result);
    a->changed = 1;
    last_ = a;
    Host().RefreshDisplays();
}

int CRoi::Crop1dRoi(CZrkData* a) {
    return Reported({.lines = {CaughtLine("CRoi::Crop1dRoi")}, .to = REPORT_STATUS}, 0, [&] {
        RequireData(a);
        CDataSpace temp;
        Replace(a, Crop1d(temp, a), "crop");
        Host().Status("crop complete");
        return 1;
    });
}

int CRoi::Crop2dRoi(CZrkData* a, int kind) {
    return Reported({.lines = {CaughtLine("CRoi::Crop2dRoi")}, .to = REPORT_STATUS}, 0, [&] {
        RequireData(a);
        if (kind >= ROI_X && kind <= ROI_BINARY && !HasRoi(kind)) Raise("invalid 2d roi");
        BuildMask(kind, a);
        CDataSpace temp;
        Replace(a, Crop2d(temp, a), "crop");
        Host().Status("crop complete");
        return 1;
    });
}

int CRoi::Edit1d(CZrkData* a, uint64_t plane, bool all, bool keep) {
    const std::string where = Trace(keep ? "Keep1dRoi" : "Fill1dRoi", all);
    return Reported({.lines = {CaughtLine(where.c_str())}, .to = REPORT_STATUS}, 0, [&] {
        RequireData(a);
        const CZrkData* value = RoiFill();
        CDataSpace temp;
        const auto op = keep ? Strip1d : Fill1d;
        CZrkData* r = all ? op(temp, a, value)
                          : WithPlane(temp, a, plane, op(temp, PlaneOf(temp, a, plane), value));
        Replace(a, r, keep ? "keep" : "fill");
        return 1;
    });
}

int CRoi::Edit2d(CZrkData* a, uint64_t plane, int kind, bool all, bool keep, bool zero) {
    const std::string where = Trace(
        zero ? (keep ? "OnZeroOutside" : "OnZeroInside") : (keep ? "Keep2dRoi" : "Fill2dRoi"), all);
    return Reported({.lines = {CaughtLine(where.c_str())}, .to = REPORT_STATUS}, 0, [&] {
        RequireData(a);
        CDataSpace temp;
        const CZrkData* value = zero ? Zero(temp) : RoiFill();
        BuildMask(kind, a);
        const auto op = keep ? Strip2d : Fill2d;
        CZrkData* r = all ? op(temp, a, value)
                          : WithPlane(temp, a, plane, op(temp, PlaneOf(temp, a, plane), value));
        Replace(a, r, zero ? "zero" : keep ? "keep" : "fill");
        return 1;
    });
}

int CRoi::OnPaste(CZrkData* a, uint64_t plane, int kind, const std::string& payload) {
    return Reported({.lines = {CaughtLine("CRoi::OnPaste")}, .to = REPORT_STATUS}, 0, [&] {
        RequireData(a);
        CDataSpace temp;
        const CZrkData* pasted = BinaryPaste(payload, temp);
        if (!pasted) Raise("memory error");
        if (pasted->nx != a->nx || pasted->ny != a->ny)
            Raise("paste refused: the copy is not of the image's x and y size");
        const auto* mask = static_cast<const unsigned char*>(BuildMask(kind, a)->data);
        const CZrkData* src = AsType(temp, pasted, a->type);
        CZrkData* p = PlaneOf(temp, a, plane);
        const int e = a->elem_bytes;
        for (uint64_t k = 0; k < a->CountXY(); ++k)
            if (mask[k])
                std::memcpy(static_cast<char*>(p->data) + k * e,
                            static_cast<const char*>(src->data) + k * e, e);
        Replace(a, WithPlane(temp, a, plane, p), "paste");
        Host().Status("paste complete");
        return 1;
    });
}

int CRoi::Undo(CZrkData* a) {
    if (!a || a != last_ || !a->HasUndo()) return 0;
    a->Undo();
    a->changed = 1;
    last_ = nullptr;
    Host().RefreshDisplays();
    return 1;
}

void CRoi::OrIntoComposite(const CZrkData* mask) {
    if (!mask || !mask->data || mask->type != TYPE_N1) return;
    if (!composite_.data || composite_.nx != mask->nx || composite_.ny != mask->ny) {
        composite_.FreeData();
        composite_.SetHeader(TYPE_N1, mask->nx, mask->ny, 1, 1, 1, 1);
        if (!composite_.Allocate()) {
            Host().Status("alloc failed");
            return;
        }
        std::memset(composite_.data, 0, composite_.Bytes());
    }
    auto* c = static_cast<unsigned char*>(composite_.data);
    const auto* m = static_cast<const unsigned char*>(mask->data);
    for (uint64_t k = 0; k < composite_.CountXY(); ++k) c[k] |= m[k];
}

void CRoi::SaveComposite() {
    saved_nx_ = composite_.data ? composite_.nx : 0;
    saved_ny_ = composite_.data ? composite_.ny : 0;
    const auto* c = static_cast<const uint8_t*>(composite_.data);
    saved_.assign(c, c + saved_nx_ * saved_ny_);
}

void CRoi::RestoreComposite() {
    composite_.FreeData();
    if (saved_nx_ == 0) return;
    composite_.SetHeader(TYPE_N1, saved_nx_, saved_ny_, 1, 1, 1, 1);
    if (!composite_.Allocate()) return;
    std::memcpy(composite_.data, saved_.data(), saved_.size());
}
