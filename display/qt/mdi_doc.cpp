#include "display/qt/mdi_doc.h"

#include "display/qt/mdi_frame.h"
#include "display/qt/view_2d.h"
#include "display/qt/view_edit.h"

CMdiDoc::~CMdiDoc() {
    if (frame_) frame_->ForgetDoc();
}

void CMdiDoc::Close() {
    if (!frame_) return;
    CMdiFrame* frame = frame_;
    frame_ = nullptr;
    frame->ForgetDoc();
    if (auto* view = qobject_cast<CView2d*>(frame->View())) view->Detach();
    if (auto* edit = qobject_cast<CViewEdit*>(frame->View())) edit->Detach();
    frame->setAttribute(Qt::WA_DeleteOnClose);
    frame->close();
}

void CMdiDoc::Redraw() {
    if (!frame_) return;
    if (auto* view = qobject_cast<CView2d*>(frame_->View())) view->Draw();
    if (auto* edit = qobject_cast<CViewEdit*>(frame_->View())) edit->Draw();
}
