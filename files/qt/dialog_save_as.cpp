#include "files/qt/dialog_save_as.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include "core/element_type.h"
#include "core/host.h"
#include "files/save_model.h"

CDialogSaveAs::CDialogSaveAs(CSaveModel& model, QWidget* parent)
    : QDialog(parent),
      model_(model),
      type_(new QComboBox(this)),
      list_(new QListWidget(this)),
      file_(new QLineEdit(QString::fromStdString(model.file_name), this)),
      dtype_(new QComboBox(this)),
      iqmp_(new QComboBox(this)),
      swap_(new QCheckBox("swap bytes", this)),
      format_(new QLineEdit(QString::fromStdString(model.options.txtformat), this)),
      separator_(new QLineEdit(QString::fromStdString(model.options.separator), this)),
      eol_(new QLineEdit(QString::fromStdString(model.options.eol), this)),
      perline_(new QComboBox(this)),
      stay_(new QCheckBox("stay open", this)),
      names_(new QLabel(this)),
      status_(new QLabel(this)) {
    setObjectName("save_dialog");
    setWindowTitle("save as");
    const CSaveOptions& o = model.options;
    type_->setObjectName("save_type");
    for (const CSaveFileType& row : SaveFileTypes()) type_->addItem(row.filter, row.row);
    type_->setCurrentIndex(o.ftype >= 0 && o.ftype < type_->count() ? o.ftype : 0);
    list_->setObjectName("save_list");
    file_->setObjectName("save_file");
    dtype_->setObjectName("save_dtype");
    for (int t = 0; t < TYPE_COUNT; ++t) dtype_->addItem(TypeName(t));
    dtype_->setCurrentIndex(IsValidType(o.dtype) ? o.dtype : 6);
    iqmp_->setObjectName("save_iqmp");
    iqmp_->addItems({"i", "q", "magnitude", "phase", "i and q", "magnitude and phase"});
    iqmp_->setCurrentIndex(o.iqmp >= 0 && o.iqmp <= 5 ? o.iqmp : 2);
    swap_->setObjectName("save_swap");
    swap_->setChecked(o.swap);
    format_->setObjectName("save_format");
    separator_->setObjectName("save_separator");
    eol_->setObjectName("save_eol");
    perline_->setObjectName("save_perline");
    perline_->addItems({"1 x line", "1 y line"});
    perline_->setCurrentIndex(o.perline == 1 ? 1 : 0);
    stay_->setObjectName("save_stay");
    stay_->setChecked(o.stay);
    names_->setObjectName("save_names");
    status_->setObjectName("save_status");
    auto* browse = new QPushButton("file...", this);
    browse->setObjectName("save_browse");

    auto* form = new QFormLayout(this);
    form->addRow("type", type_);
    form->addRow(list_);
    form->addRow(names_);
    form->addRow("file", file_);
    form->addRow(browse);
    form->addRow("data type", dtype_);
    form->addRow("part", iqmp_);
    form->addRow(swap_);
    form->addRow("number format", format_);
    form->addRow("separator", separator_);
    form->addRow("end of line", eol_);
    form->addRow("text lines", perline_);
    form->addRow(stay_);
    form->addRow(status_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setObjectName("save_ok");
    form->addRow(buttons);

    connect(type_, &QComboBox::currentIndexChanged, this, [this] {
        model_.options.ftype = type_->currentData().toInt();
        Fill();
    });
    connect(list_, &QListWidget::itemChanged, this, [this](QListWidgetItem* item) {
        model_.Tick(item->text().toStdString(), item->checkState() == Qt::Checked);
        model_.file_name = file_->text().toStdString();
        model_.DefaultFileName();
        file_->setText(QString::fromStdString(model_.file_name));
        names_->setText(QString::fromStdString(model_.ListText()));
    });
    connect(browse, &QPushButton::clicked, this, [this] {
        const QString path = QFileDialog::getSaveFileName(
            this, "save as", file_->text(), QString(), nullptr, QFileDialog::DontConfirmOverwrite);
        if (!path.isEmpty()) file_->setText(path);
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &CDialogSaveAs::OnOk);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    model_.options.ftype = type_->currentData().toInt();
    Fill();
}

void CDialogSaveAs::Fill() {
    model_.Fill();
    const QSignalBlocker block(list_);
    list_->clear();
    for (const CSaveModel::CItem& item : model_.items) {
        auto* row = new QListWidgetItem(QString::fromStdString(item.name), list_);
        row->setFlags(row->flags() | Qt::ItemIsUserCheckable);
        row->setCheckState(item.ticked ? Qt::Checked : Qt::Unchecked);
    }
    names_->setText(QString::fromStdString(model_.ListText()));
}

void CDialogSaveAs::StoreFields() {
    CSaveOptions& o = model_.options;
    o.ftype = type_->currentData().toInt();
    o.dtype = dtype_->currentIndex();
    o.iqmp = iqmp_->currentIndex();
    o.swap = swap_->isChecked();
    o.txtformat = format_->text().toStdString();
    o.separator = separator_->text().toStdString();
    o.eol = eol_->text().toStdString();
    o.perline = perline_->currentIndex();
    o.stay = stay_->isChecked();
    model_.file_name = file_->text().toStdString();
}

void CDialogSaveAs::OnOk() {
    Host().Trace("CDialogSaveAs::OnOk");
    StoreFields();
    const int close = model_.Save();
    status_->setText(QString::fromStdString(model_.status));
    // The list moves up: the saved name is unticked.
    {
        const QSignalBlocker block(list_);
        for (int k = 0; k < list_->count(); ++k)
            list_->item(k)->setCheckState(
                model_.items[static_cast<size_t>(k)].ticked ? Qt::Checked : Qt::Unchecked);
    }
    names_->setText(QString::fromStdString(model_.ListText()));
    emit saved(QString::fromStdString(model_.status));
    if (close) accept();
}
