// CRoi: the one object behind the region entries of every display. It builds the mask at
// the present image's size before each use, and crops, fills, keeps, zeroes and pastes
// through it, each edit taking the array's undo; Undo gives back the last array it changed.
// It also holds the composite: a byte plane the views paint over the image, the union of the
// regions added with the "+" entries.
//
// `plane` counts xy planes over the whole array; the non-All forms change that plane alone,
// the All forms every plane. `kind` is the view's region kind (display/roi_mask.h). Failures
// go to the status with an "error caught: CRoi::...:" history line and leave the array alone.
//
//   CRoi& roi = TheRoi();
//   roi.Fill2dRoi(image, page, ROI_RECT);   // roi_fill inside the rectangle of this plane
//   roi.Undo(image);                        // the plane as it was
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/zrk_data.h"

class CRoi {
  public:
    CRoi() = default;
    ~CRoi() { composite_.FreeData(); }
    CRoi(const CRoi&) = delete;
    CRoi& operator=(const CRoi&) = delete;

    // Bounding box of the mask of `kind` built at nx x ny; false when the mask is empty or
    // there is no region.
    bool Get2dRoiRange(int kind, res_t nx, res_t ny, res_t* x0, res_t* y0, res_t* x1, res_t* y1);

    // Cut the x range (roi_x) or the mask's bounding box out of every plane; 1 when done.
    int Crop1dRoi(CZrkData* a);
    int Crop2dRoi(CZrkData* a, int kind);
    // Samples of the x range or under the mask set to roi_fill (Fill) or the others (Keep).
    int Fill1dRoi(CZrkData* a, uint64_t plane) { return Edit1d(a, plane, false, false); }
    int Fill1dRoiAll(CZrkData* a) { return Edit1d(a, 0, true, false); }
    int Keep1dRoi(CZrkData* a, uint64_t plane) { return Edit1d(a, plane, false, true); }
    int Keep1dRoiAll(CZrkData* a) { return Edit1d(a, 0, true, true); }
    int Fill2dRoi(CZrkData* a, uint64_t plane, int kind) {
        return Edit2d(a, plane, kind, false, false, false);
    }
    int Fill2dRoiAll(CZrkData* a, int kind) { return Edit2d(a, 0, kind, true, false, false); }
    int Keep2dRoi(CZrkData* a, uint64_t plane, int kind) {
        return Edit2d(a, plane, kind, false, true, false);
    }
    int Keep2dRoiAll(CZrkData* a, int kind) { return Edit2d(a, 0, kind, true, true, false); }
    // The same with 0 in place of roi_fill, under the undo text "zero".
    int OnZeroInside(CZrkData* a, uint64_t plane, int kind) {
        return Edit2d(a, plane, kind, false, false, true);
    }
    int OnZeroOutside(CZrkData* a, uint64_t plane, int kind) {
        return Edit2d(a, plane, kind, false, true, true);
    }
    // Where the mask is set, the samples of a clipboard payload (display/binary_copy.h) of
    // the image's x and y size replace those of the plane.
    int OnPaste(CZrkData* a, uint64_t plane, int kind, const std::string& payload);
    // Restores `a` when the last edit was on it; 0 otherwise. The array is only compared,
    // never reached, through what is remembered: it may have gone since.
    int Undo(CZrkData* a);

    // The union of the added regions, at the size of the last image; empty before any add.
    // OrIntoComposite widens it by `mask` (n1, any size: a new size starts it afresh).
    const CZrkData& Composite() const { return composite_; }
    void OrIntoComposite(const CZrkData* mask);
    // One level of undo for the composite: an add saves it, "undo add" puts it back.
    void SaveComposite();
    void RestoreComposite();

  private:
    int Edit1d(CZrkData* a, uint64_t plane, bool all, bool keep);
    int Edit2d(CZrkData* a, uint64_t plane, int kind, bool all, bool keep, bool zero);
    // Puts `result` in place of a's samples under `what`, remembers a for Undo, redraws.
    void Replace(CZrkData* a, CZrkData* result, const char* what);

    CZrkData composite_;
    std::vector<uint8_t> saved_;  // the composite before the last add
    res_t saved_nx_ = 0, saved_ny_ = 0;
    const CZrkData* last_ = nullptr;  // the array the last edit changed
};

// The application's one region object.
CRoi& TheRoi();

// roi_fill of the global data space, made (complex r4, one element, 0) when missing.
const CZrkData* RoiFill();
// roi_mask built for `kind` at a's x and y size; raises "roi_mask does not exist" for the
// display kinds without one.
const CZrkData* BuildMask(int kind, const CZrkData* a);
