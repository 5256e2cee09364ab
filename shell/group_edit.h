// The group commands of a display's context menu: each runs on every display picked in the
// window list (select bit 1). The scrolls set the scroll mode of each display's view and step
// it once, so the picked displays move together. The edits go through the structural
// operators, the crops and zeros through the region object, each taking the array's undo. A
// failure leaves that array and puts the operator's text in the status; the other displays
// still change.
//
//   std::string status = GroupEdit(space, GlobalWindowSpace(), GroupCommandIndex("flip x"),
//                                  [](CWindowEntry& w) { return CGroupView{ViewOf(w)}; });
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "display/roi_mask.h"

class CDataSpace;
class CMdiView;
class CWindowEntry;
class CWindowSpace;

inline constexpr int kGroupCommands = 25;
extern const char* const kGroupCommandTexts[kGroupCommands];

// What a group command needs of a display beyond its list entry: the view that scrolls, the
// kind of the region last drawn on it and the xy plane it shows (counted over the array).
struct CGroupView {
    CMdiView* view = nullptr;
    int roi_kind = ROI_2D;
    uint64_t plane = 0;
};
using GroupViewOf = std::function<CGroupView(CWindowEntry&)>;

// The index of a command's text, -1 for none.
int GroupCommandIndex(const std::string& text);
// Runs the command on the selected displays; the status text. Without `view_of` every display
// has the defaults of CGroupView: no view to scroll, the region mask as it stands, plane 0.
std::string GroupEdit(CDataSpace& space, CWindowSpace& windows, int command,
                      const GroupViewOf& view_of = nullptr);
