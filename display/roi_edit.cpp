#include "display/roi_edit.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "core/data_space.h"
#include "core/host.h"
#include "display/roi.h"
#include "display/roi_mask.h"

int CRoiEdit::KindOf(int mode) {
    switch (mode) {
        case MODE_X:
        case MODE_ADD_X:
            return ROI_X;
        case MODE_Y:
        case MODE_ADD_Y:
            return ROI_Y;
        case MODE_RECT:
        case MODE_ADD_RECT:
            return ROI_RECT;
        case MODE_ELLIPSE:
        case MODE_ADD_ELLIPSE:
            return ROI_ELLIPSE;
        case MODE_DRAW:
        case MODE_ADD_DRAW:
            return ROI_DRAW;
        default:
            return 0;
    }
}

const char* CRoiEdit::Status(int mode) {
    const int kind = KindOf(mode);
    if (kind == ROI_DRAW) return " drag left button to draw roi";
    return kind ? " drag left button to define roi" : "";
}

CZrkData* SetRoiRecord(const char* name, const std::vector<float>& values) {
    CDataSpace& space = GlobalDataSpace();
    CZrkData* r = space.FindOrNew(name);
    if (!r) return nullptr;
    auto fresh = std::make_unique<CZrkData>();
    fresh->SetHeader(TYPE_R4, std::max<size_t>(1, values.size()), 1, 1, 1, 1, 1);
    if (!fresh->Allocate()) return nullptr;
    std::memset(fresh->data, 0, fresh->Bytes());
    std::memcpy(fresh->data, values.data(), values.size() * sizeof(float));
    r->NewUndo("roi", fresh.get());
    r->changed = 1;
    return r;
}

bool CRoiEdit::Press(int mode, float x, float y) {
    if (!KindOf(mode)) return false;
    mode_ = mode;
    points_ = {x, y};
    Write();
    return true;
}

bool CRoiEdit::Move(float x, float y) {
    if (!mode_) return false;
    if (KindOf(mode_) == ROI_DRAW) {
        points_.push_back(x);
        points_.push_back(y);
    } else {
        points_.resize(2);
        points_.insert(points_.end(), {x, y});
    }
    Write();
    return true;
}

void CRoiEdit::Write() {
    const int kind = KindOf(mode_);
    std::vector<float> v = points_;
    // A band keeps the one coordinate it spans; a lone press is a band of one.
    if (kind == ROI_X || kind == ROI_Y) {
        const size_t k = kind == ROI_X ? 0 : 1;
        v = {points_[k], points_.size() >= 4 ? points_[2 + k] : points_[k]};
    } else if (kind != ROI_DRAW && points_.size() == 2) {
        v.insert(v.end(), {points_[0], points_[1]});
    }
    if (!SetRoiRecord(RoiRecordName(kind), v)) Host().Status("alloc failed");
    Host().RefreshDisplays();
}

int CRoiEdit::Release(float x, float y, res_t nx, res_t ny) {
    if (!mode_) return 0;
    const int mode = mode_;
    const int kind = KindOf(mode);
    // A drawn outline ends where the button came up; the other shapes take it as corner.
    if (kind == ROI_DRAW) {
        if (points_.size() < 2 || points_[points_.size() - 2] != x || points_.back() != y) {
            points_.push_back(x);
            points_.push_back(y);
        }
        Write();
    } else {
        Move(x, y);
    }
    mode_ = 0;
    if (!IsAdd(mode) || nx == 0 || ny == 0) return kind;
    // The mask as it stands (or empty when it belongs to another size), then the new shape.
    const CZrkData* old = GlobalDataSpace().FindData("roi_mask");
    std::vector<uint8_t> before(nx * ny, 0);
    if (old && old->data && old->type == TYPE_N1 && old->nx == nx && old->ny == ny)
        std::memcpy(before.data(), old->data, before.size());
    CRoi& roi = TheRoi();
    roi.SaveComposite();
    CZrkData* mask = GetRoiMask(kind, nx, ny);
    auto* m = static_cast<uint8_t*>(mask->data);
    for (size_t k = 0; k < before.size(); ++k) m[k] |= before[k];
    roi.OrIntoComposite(mask);
    Host().RefreshDisplays();
    return kind;
}

int CRoiEdit::UndoAdd() {
    CZrkData* mask = GlobalDataSpace().FindData("roi_mask");
    if (!mask || !mask->HasUndo()) return 0;
    mask->Undo();
    TheRoi().RestoreComposite();
    Host().RefreshDisplays();
    return 1;
}

int CRoiEdit::SelectAll(int kind, res_t nx, res_t ny) {
    if (nx == 0 || ny == 0) return 0;
    const float x1 = static_cast<float>(nx - 1), y1 = static_cast<float>(ny - 1);
    CZrkData* r = kind == ROI_X   ? SetRoiRecord("roi_x", {0, x1})
                  : kind == ROI_Y ? SetRoiRecord("roi_y", {0, y1})
                                  : SetRoiRecord("roi_rect", {0, 0, x1, y1});
    if (!r) {
        Host().Status("alloc failed");
        return 0;
    }
    Host().Status(" select all");
    Host().RefreshDisplays();
    return 1;
}
