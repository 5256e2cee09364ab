#include "display/qt/frame_edit.h"

#include <QMenu>
#include <QMenuBar>

#include "display/qt/scroll_menu.h"
#include "display/qt/view_edit.h"

CFrameEdit::CFrameEdit(CMdiDoc* doc, CViewEdit* view) : CMdiFrame(doc, view) {
    view->SetStatusLine(StatusLine());
    QMenu* edit = Menus()->addMenu("edit");
    QAction* undo = edit->addAction("undo");
    undo->setObjectName("edit_undo");
    connect(undo, &QAction::triggered, this, [view] { view->OnUndo(); });
    AddScrollMenu(Menus()->addMenu("scroll"), view, this);
}
