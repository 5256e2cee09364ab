#include "shell/qt/form_rename.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "core/data_space.h"
#include "core/host.h"
#include "shell/rename.h"

CFormRename::CFormRename(CDataSpace& space, CRename& rename, QWidget* parent)
    : QDialog(parent),
      space_(space),
      rename_(rename),
      old_name_(new QLineEdit(QString::fromStdString(rename.old_name), this)),
      new_name_(new QLineEdit(QString::fromStdString(rename.new_name), this)),
      status_(new QLabel(this)) {
    setObjectName("rename_form");
    setWindowTitle("rename");
    old_name_->setObjectName("rename_old");
    new_name_->setObjectName("rename_new");
    status_->setObjectName("rename_status");
    auto* form = new QFormLayout(this);
    form->addRow("old name", old_name_);
    form->addRow("new name", new_name_);
    form->addRow(status_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    QPushButton* run = buttons->addButton("rename", QDialogButtonBox::ApplyRole);
    run->setObjectName("rename_run");
    form->addRow(buttons);
    connect(run, &QPushButton::clicked, this, &CFormRename::OnRename);
    connect(new_name_, &QLineEdit::returnPressed, this, &CFormRename::OnRename);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void CFormRename::OnRename() {
    Host().Trace("CFormRename::OnRename");
    const std::string status =
        rename_.Rename(space_, old_name_->text().toStdString(), new_name_->text().toStdString());
    status_->setText(QString::fromStdString(status));
    // The next rename starts from the new name.
    if (status == "rename successful") old_name_->setText(new_name_->text());
    emit renamed(QString::fromStdString(status));
}
