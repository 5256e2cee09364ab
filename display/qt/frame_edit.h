// CFrameEdit: the child frame of a spreadsheet display, with its menus: "edit" (undo) and
// "scroll". Actions carry objectNames ("edit_undo", "scroll_next" ...).
#pragma once

#include "display/qt/mdi_frame.h"

class CViewEdit;

class CFrameEdit : public CMdiFrame {
    Q_OBJECT
  public:
    CFrameEdit(CMdiDoc* doc, CViewEdit* view);
};
