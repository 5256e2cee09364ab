#include "eval/qt/bar_equ.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

#include "core/host.h"
#include "eval/equation_bar.h"
#include "eval/qt/dialog_func.h"

CBarEqu::CBarEqu(CDataSpace& space, QWidget* parent)
    : QDockWidget("equation", parent), space_(space), edit_(new QLineEdit) {
    setObjectName("equation_bar");
    setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetClosable);
    edit_->setObjectName("equation_edit");
    edit_->setPlaceholderText("b = a * 2 + 1");
    edit_->setClearButtonEnabled(true);
    auto* body = new QWidget(this);
    auto* layout = new QHBoxLayout(body);
    layout->setContentsMargins(4, 2, 4, 2);
    layout->addWidget(new QLabel("=", body));
    layout->addWidget(edit_, 1);
    auto* functions = new QToolButton(body);
    functions->setObjectName("equation_functions");
    functions->setText("f()");
    functions->setToolTip("functions");
    layout->addWidget(functions);
    setWidget(body);
    connect(edit_, &QLineEdit::returnPressed, this, &CBarEqu::OnEquEval);
    connect(functions, &QToolButton::clicked, this, &CBarEqu::OnEquFunctions);
}

void CBarEqu::SetText(const QString& text) {
    edit_->setText(text);
    edit_->setFocus();
}

void CBarEqu::OnEquEval() {
    Host().Trace("CBarEqu::OnEquEval");
    const std::string text = edit_->text().toStdString();
    if (text.find_first_not_of(" \t") == std::string::npos) return;
    Host().Status("calculating...");
    // The status pane repaints before the evaluation blocks the loop.
    QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    // The text stays in the field when the evaluation fails, for correction.
    if (EquationBarEval(space_, text) == 0) edit_->clear();
    emit evaluated();
}

void CBarEqu::OnEquFunctions() {
    Host().Trace("CBarEqu::OnEquFunctions");
    CDialogFunc dialog(this);
    if (dialog.exec() != QDialog::Accepted || dialog.Chosen().isEmpty()) return;
    edit_->insert(dialog.Chosen());
    edit_->setFocus();
}
