#include "display/qt/view_edit.h"

#include <QHeaderView>
#include <QLabel>

#include "core/host.h"
#include "display/qt/edit_model.h"
#include "display/qt/mdi_doc.h"

CViewEdit::CViewEdit(CMdiDoc& doc, QWidget* parent)
    : QTableView(parent), CEditTable(doc), model_(new CEditModel(*this, this)) {
    setObjectName("view_edit");
    setModel(model_);
    // Fixed row heights keep a large plane quick to scroll.
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    horizontalHeader()->setDefaultSectionSize(80);
    setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                    QAbstractItemView::AnyKeyPressed);
    connect(&timer_, &QTimer::timeout, this, [this] {
        if (!detached_) OnTimer();
    });
}

void CViewEdit::Detach() {
    timer_.stop();
    scroll_running = false;
    detached_ = true;
}

bool CViewEdit::StartTimer(int period) {
    timer_.start(period);
    return timer_.isActive();
}

bool CViewEdit::StopTimer() {
    timer_.stop();
    return true;
}

void CViewEdit::Redraw() {
    if (detached_) return;
    dirty = false;
    model_->Refresh();
}

void CViewEdit::ShowStatus(const std::string& text) {
    if (status_line_) status_line_->setText(QString::fromStdString(text));
    Host().Status(text);
}
