#include "eval/qt/form_equ.h"

#include <QApplication>
#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/host.h"
#include "core/report.h"
#include "eval/equation_form.h"

CFormEqu::CFormEqu(CDataSpace& space, QWidget* parent)
    : QWidget(parent),
      space_(space),
      edit_(new QPlainTextEdit(this)),
      update_range_(new QCheckBox("update range", this)),
      this_name_(new QLineEdit(this)),
      report_(new QLabel(this)) {
    setObjectName("form_equ");
    setWindowTitle("equation");
    edit_->setObjectName("form_equ_edit");
    update_range_->setObjectName("form_equ_update_range");
    this_name_->setObjectName("form_equ_this");
    report_->setObjectName("form_equ_report");
    report_->setWordWrap(true);
    report_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* run = new QPushButton("evaluate", this);
    run->setObjectName("form_equ_eval");
    auto* options = new QFormLayout;
    options->addRow("this", this_name_);
    options->addRow(update_range_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(edit_, 1);
    layout->addLayout(options);
    layout->addWidget(run);
    layout->addWidget(report_);
    connect(run, &QPushButton::clicked, this, &CFormEqu::OnEval);
}

void CFormEqu::OnEval() {
    Host().Trace("CFormEqu::OnEval");
    report_->setText("..calculating..");
    QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    CEquationFormOptions options;
    options.update_range = update_range_->isChecked();
    options.this_name = this_name_->text().trimmed().toStdString();
    const int status = FormEquEval(space_, edit_->toPlainText().toStdString(), options);
    report_->setText(status ? QString::fromStdString(ErrorText()) : QString());
    emit evaluated();
}
