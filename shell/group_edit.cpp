#include "shell/group_edit.h"

#include <cstring>

#include "core/data_space.h"
#include "core/report.h"
#include "core/window_space.h"
#include "core/zrk_data.h"
#include "ops/permute.h"
#include "ops/structural_shape.h"

const char* const kGroupCommandTexts[kGroupCommands] = {
    "scroll z",     "scroll t",     "scroll u",     "scroll v",     "scroll all",
    "transpose xy", "transpose xz", "transpose yz", "transpose xt", "transpose yt",
    "transpose zt", "crop 1d",      "crop 2d",      "zero 1d",      "zero 2d",
    "flip x",       "flip y",       "flip z",       "flip t",       "chop x",
    "chop y",       "chop z",       "chop t",       "rot 90",       "rot -90"};

namespace {

enum { kTranspose = 5, kFlip = 15, kChop = 19, kRot = 23 };

// The edited copy of `a` in `temp`.
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

}  // namespace

int GroupCommandIndex(const std::string& text) {
    for (int i = 0; i < kGroupCommands; ++i)
        if (text == kGroupCommandTexts[i]) return i;
    return -1;
}

bool GroupCommandAvailable(int command) {
    return command >= kTranspose && command < kGroupCommands &&
           !(command >= kTranspose + 6 && command < kFlip);
}

std::string GroupEdit(CDataSpace& space, CWindowSpace& windows, int command) {
    if (!GroupCommandAvailable(command)) return "command not available";
    const char* what = kGroupCommandTexts[command];
    std::string failed;
    int done = 0;
    for (int i = 0; i < windows.Count(); ++i) {
        CWindowEntry* w = windows.Get(i);
        if (!w || !(w->select & 1)) continue;
        CZrkData* a = w->data[0];
        if (!a || !space.IsDataValid(a) || !a->Data()) continue;
        const int bad = Reported({.to = REPORT_ERR_MSG}, 1, [&] {
            CDataSpace temp;
            a->NewUndo(what, Edited(temp, command, a));
            a->changed = 1;
            return 0;
        });
        if (bad)
            failed = ErrorText();
        else
            ++done;
    }
    if (!failed.empty()) return failed;
    return std::string(what) + ": " + std::to_string(done) + (done == 1 ? " display" : " displays");
}
