#include "display/qt/form_new.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/data_space.h"

CFormNew::CFormNew(CNewDisplay& holder, CDataSpace& space, const QStringList& labels,
                   const char* title, QWidget* parent)
    : QDialog(parent), holder_(holder), space_(space) {
    setObjectName("form_new");
    setWindowTitle(title);
    auto* form = new QFormLayout;
    QStringList arrays;
    for (int i = 0; i < space.Count(); ++i)
        if (const CZrkData* a = space.GetData(i); a && a->Data()) arrays << a->name;
    for (int k = 0; k < labels.size(); ++k) {
        auto* box = new QComboBox;
        box->setObjectName(QString("new_name%1").arg(k));
        box->setEditable(true);
        box->addItems(arrays);
        box->setCurrentText(QString::fromStdString(holder.names[k]));
        names_ << box;
        form->addRow(labels[k], box);
        connect(box, &QComboBox::currentTextChanged, this, &CFormNew::UpdateStatus);
    }
    iqmp_ = new QComboBox;
    iqmp_->setObjectName("new_iqmp");
    iqmp_->addItems({"i", "q", "mag", "phase"});
    iqmp_->setCurrentIndex(std::clamp(holder.iqmp, 0, 3));
    form->addRow("channel", iqmp_);
    ft_x_ = new QCheckBox("ft x");
    ft_x_->setObjectName("new_ft_x");
    ft_y_ = new QCheckBox("ft y");
    ft_y_->setObjectName("new_ft_y");
    append_ = new QCheckBox("append");
    append_->setObjectName("new_append");
    auto* ticks = new QHBoxLayout;
    for (QCheckBox* c : {ft_x_, ft_y_, append_}) ticks->addWidget(c);
    form->addRow("", ticks);
    status_ = new QLabel(title);
    status_->setObjectName("new_status");
    auto* display = new QPushButton("display");
    display->setObjectName("new_display");
    display->setDefault(true);
    auto* cancel = new QPushButton("cancel");
    cancel->setObjectName("new_cancel");
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(display);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(status_);
    layout->addLayout(buttons);
    connect(display, &QPushButton::clicked, this, &CFormNew::OnViewNew);
    connect(cancel, &QPushButton::clicked, this, &CFormNew::OnViewCancel);
    if (!holder.names[0].empty()) UpdateStatus();
}

void CFormNew::Store() {
    for (int k = 0; k < names_.size(); ++k)
        holder_.names[k] = names_[k]->currentText().toStdString();
    holder_.iqmp = iqmp_->currentIndex();
    holder_.ft_x = ft_x_->isChecked();
    holder_.ft_y = ft_y_->isChecked();
    holder_.append = append_->isChecked();
}

void CFormNew::UpdateStatus() {
    Store();
    status_->setText(QString::fromStdString(holder_.UpdateStatus(space_)));
}

void CFormNew::OnViewNew() {
    Store();
    if (holder_.OnViewNew(space_)) {
        accept();
        return;
    }
    status_->setText(QString::fromStdString(holder_.status));
}
