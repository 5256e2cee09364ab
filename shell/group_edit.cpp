#include "shell/group_edit.h"

#include <cstring>
#include <vector>

#include "core/data_space.h"
#include "core/host.h"
#include "core/report.h"
#include "core/window_space.h"
#include "core/zrk_data.h"
#include "display/roi.h"
#include "display/view_state.h"
#include "ops/permute.h"
#include "ops/structural_shape.h"

const char* const kGroupCommandTexts[kGroupCommands] = {
    "scroll z",     "scroll t",     "scroll u",     "scroll v",     "scroll all",
    "transpose xy", "transpose xz", "transpose yz", "transpose xt", "transpose yt",
    "transpose zt", "crop 1d",      "crop 2d",      "zero 1d",      "zero 2d",
    "flip x",       "flip y",       "flip z",       "flip t",       "chop x",
    "chop y",       "chop z",       "chop t",       "rot 90",       "rot -90"};

namespace {

enum {
    kScroll = 0,
    kTranspose = 5,
    kCrop1d = 11,
    kCrop2d,
    kZero1d,
    kZero2d,
    kFlip = 15,
    kChop = 19,
    kRot = 23
};

// Passes everything on to the host it stands in for and keeps the last status: the region
// object tells its failures only there.
class CStatusCatcher : public CHost {
  public:
    CStatusCatcher() : host_(Host()) {}
    void History(const std::string& line) override { host_.History(line); }
    const std::string& HistoryText() const override { return host_.HistoryText(); }
    void ClearHistory() override { host_.ClearHistory(); }
    void Status(const std::string& text) override {
        status = text;
        host_.Status(text);
    }
    void UndoTip(const std::string& text) override { host_.UndoTip(text); }
    bool AskYesNo(const std::string& question) override { return host_.AskYesNo(question); }
    void Message(const std::string& text) override { host_.Message(text); }
    bool Interrupted() override { return host_.Interrupted(); }
    void RefreshDisplays() override { host_.RefreshDisplays(); }
    void Trace(const char* location) override { host_.Trace(location); }
    void Flaky(const char* what) override { host_.Flaky(what); }

    std::string status;

  private:
    CHost& host_;
};

// The edited copy of `a` in `temp`, for the commands of the structural operators.
CZrkData* Edited(CDataSpace& temp, int command, const CZrkData* a) {
    if (command >= kTranspose && command < kTranspose + 6) {
        const char* pair = kGroupCommandTexts[command] + std::strlen("transpose ");
        char letters[4] = {pair[0], pair[1], 0, 0};
        CZrkData text;
        text.SetHeaderData(TYPE_I1, 2, 1, 1, 1, 1, 1, letters);
        return Trans(temp, &text, a);
    }
    if (command >= kFlip && command < kFlip + 4) return Flip(temp, command - kFlip, a);
    if (command >= kChop && command < kChop + 4) return Chop(temp, command - kChop, a);
    return command == kRot ? RotXy(temp, a) : RotMXy(temp, a);
}

// A crop or zero through the region object; the empty text when done, else its failure.
std::string RegionEdit(int command, CZrkData* a, const CGroupView& view) {
    const int kind = command == kZero1d ? ROI_X : view.roi_kind;
    // Zeroing through an empty mask would quietly change nothing: no region is a failure,
    // in the words of the operators that need one.
    if ((command == kZero1d || command == kZero2d) && kind >= ROI_X && kind <= ROI_BINARY &&
        !HasRoi(kind))
        return kind == ROI_X ? "1d roi does not exist" : "invalid 2d roi";
    CStatusCatcher catcher;
    CScopedHost scoped(catcher);
    CRoi& roi = TheRoi();
    const int done = command == kCrop1d   ? roi.Crop1dRoi(a)
                     : command == kCrop2d ? roi.Crop2dRoi(a, kind)
                                          : roi.OnZeroInside(a, view.plane, kind);
    return done ? std::string() : catcher.status.empty() ? "command failed" : catcher.status;
}

void Scroll(int command, CMdiView& view) {
    static void (CMdiView::*const kModes[])() = {&CMdiView::OnScrollZ, &CMdiView::OnScrollT,
                                                 &CMdiView::OnScrollU, &CMdiView::OnScrollV,
                                                 &CMdiView::OnScrollAll};
    (view.*kModes[command - kScroll])();
    view.OnScrollNext();
}

}  // namespace

int GroupCommandIndex(const std::string& text) {
    for (int i = 0; i < kGroupCommands; ++i)
        if (text == kGroupCommandTexts[i]) return i;
    return -1;
}

std::string GroupEdit(CDataSpace& space, CWindowSpace& windows, int command,
                      const GroupViewOf& view_of) {
    if (command < 0 || command >= kGroupCommands) return "command not available";
    const char* what = kGroupCommandTexts[command];
    // Picked first: a redraw on the way must not change what the loop walks.
    std::vector<CWindowEntry*> picked;
    for (int i = 0; i < windows.Count(); ++i)
        if (CWindowEntry* w = windows.Get(i); w && (w->select & 1)) picked.push_back(w);
    std::string failed;
    int done = 0;
    for (CWindowEntry* w : picked) {
        if (!windows.IsDataValid(w)) continue;
        const CGroupView view = view_of ? view_of(*w) : CGroupView{};
        if (command < kTranspose) {
            if (!view.view) continue;
            Scroll(command, *view.view);
            ++done;
            continue;
        }
        CZrkData* a = w->data[0];
        if (!a || !space.IsDataValid(a) || !a->Data()) continue;
        std::string failure;
        if (command >= kCrop1d && command <= kZero2d) {
            failure = RegionEdit(command, a, view);
        } else if (Reported({.to = REPORT_ERR_MSG}, 1, [&] {
                       CDataSpace temp;
                       a->NewUndo(what, Edited(temp, command, a));
                       a->changed = 1;
                       return 0;
                   })) {
            failure = ErrorText();
        }
        if (failure.empty())
            ++done;
        else
            failed = failure;
    }
    if (!failed.empty()) return failed;
    return std::string(what) + ": " + std::to_string(done) + (done == 1 ? " display" : " displays");
}
