// CEditTable: the logic of the spreadsheet display: the current plane (z, t, u, v) of its
// array as a table of texts, x across and y down, and the edit of one sample. The toolkit's
// view (CViewEdit) shows the texts and hands typed text back; nothing here needs a display.
//
// Cells read in the number format: "default" for floats, "long_default" for integers. A
// complex sample reads "i, q" with both parts in that format. The text an edit starts from
// holds the sample exactly ("%.9g" for r4, "%.17g" for r8, integers in full), so an edit that
// changes nothing else keeps the value.
//
// An edit accepts one number; a complex sample takes "i, q" (comma or blanks between) or one
// number for a real value. Integer types take whole numbers inside the type's range only. An
// accepted edit keeps the array as it was for undo ("undo edit"), sets `changed` and asks the
// host to refresh the displays; refused text leaves the array alone and says why in the status.
//
//   CEditTable& t = ...;             // over a 4 x 3 r4 array
//   t.Text(1, 2);                    // "2.500"
//   t.SetText(1, 2, "7");            // sample (1, 2) of the plane is 7, undo "undo edit"
//   t.SetText(1, 2, "7x");           // false, status "not a number: 7x"
#pragma once

#include <string>

#include "core/zrk_data.h"
#include "display/view_state.h"

class CEditTable : public CMdiView {
  public:
    explicit CEditTable(CDisplayEntry& doc) : CMdiView(doc) {}

    // The size of the plane shown; 0 without samples.
    res_t Columns() const;
    res_t Rows() const;
    // The xy plane shown, counted over the whole array (pages beyond the array's end clamp).
    uint64_t CurrentPlane() const;

    std::string Text(res_t x, res_t y) const;
    std::string EditText(res_t x, res_t y) const;
    // True when sample (x, y) of the current plane took the value of `text`.
    bool SetText(res_t x, res_t y, const std::string& text);
    // Takes back the last change of the array (an edit or anything else with an undo).
    void OnUndo();

  protected:
    // The cells show i and q together, whatever the look's channel.
    std::string Readout() const override;

  private:
    // The sample's byte address; null outside the plane or without samples.
    char* Sample(res_t x, res_t y) const;
};

// Opens the spreadsheet display of the array `name` through the spreadsheet factory; the
// status text of the try ("edit data" on success, else why not).
std::string OpenEditDisplay(CDataSpace& space, const std::string& name);
