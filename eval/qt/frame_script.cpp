#include "eval/qt/frame_script.h"

#include "eval/qt/form_script.h"
#include "eval/script_manager.h"

CFrameScript::CFrameScript(CScript& script, CScriptSpace& space, QWidget* parent)
    : QDockWidget("scripts", parent), script_(script), form_(new CFormScript(script, space, this)) {
    setObjectName("script_dock");
    setWidget(form_);
}

void CFrameScript::RestorePlace() {
    setVisible(script_.view_script && !script_.script_minimized);
    const int* r = script_.script_loc;
    if (r[2] > r[0] && r[3] > r[1]) resize(r[2] - r[0] + 1, r[3] - r[1] + 1);
}

void CFrameScript::KeepPlace() {
    script_.view_script = isVisible() ? 1 : 0;
    script_.script_minimized = 0;
    const QRect g = geometry();
    const int loc[4] = {g.left(), g.top(), g.right(), g.bottom()};
    std::copy(loc, loc + 4, script_.script_loc);
}
