#include "display/qt/mdi_frame.h"

#include <QCloseEvent>
#include <QLabel>
#include <QMenuBar>
#include <QVBoxLayout>

#include "core/window_space.h"
#include "display/qt/mdi_doc.h"
#include "display/qt/view_2d.h"
#include "display/qt/view_edit.h"

CMdiFrame::CMdiFrame(CMdiDoc* doc, QWidget* view)
    : doc_(doc), view_(view), menus_(new QMenuBar), status_(new QLabel) {
    setObjectName("display_frame");
    auto* body = new QWidget;
    auto* layout = new QVBoxLayout(body);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    menus_->setObjectName("display_menus");
    status_->setObjectName("display_status");
    layout->setMenuBar(menus_);
    layout->addWidget(view, 1);
    layout->addWidget(status_);
    setWidget(body);
    setAttribute(Qt::WA_DeleteOnClose);
    doc->SetFrame(this);
}

void CMdiFrame::closeEvent(QCloseEvent* event) {
    if (auto* view = qobject_cast<CView2d*>(view_)) view->Detach();
    if (auto* edit = qobject_cast<CViewEdit*>(view_)) edit->Detach();
    if (CMdiDoc* doc = doc_) {
        doc_ = nullptr;
        doc->SetFrame(nullptr);
        GlobalWindowSpace().DelData(doc);
    }
    QMdiSubWindow::closeEvent(event);
}
