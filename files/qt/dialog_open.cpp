#include "files/qt/dialog_open.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPixmap>
#include <QPushButton>
#include <QRadioButton>

#include "core/element_type.h"
#include "core/host.h"
#include "files/open_model.h"
#include "files/qt/dialog_load.h"

namespace {

const char* const kDirections[6] = {"x", "y", "z", "t", "u", "v"};

}  // namespace

CDialogOpen::CDialogOpen(COpenModel& model, QWidget* parent)
    : QDialog(parent),
      model_(model),
      folder_(new QLineEdit(QString::fromStdString(model.folder), this)),
      files_(new QListWidget(this)),
      type_(new QComboBox(this)),
      offset_(new QLineEdit(QString::fromStdString(model.options.offset), this)),
      datatype_(new QComboBox(this)),
      swap_(new QCheckBox("swap bytes", this)),
      perline_(new QComboBox(this)),
      dicom_scale_(new QCheckBox("dicom rescale", this)),
      stay_(new QCheckBox("stay open", this)),
      preview_(new QCheckBox("preview", this)),
      picture_(new QLabel(this)),
      title_(new QLabel(this)),
      info_(new QLabel(this)) {
    setObjectName("open_dialog");
    setWindowTitle("open");
    model_.Open();
    COpenOptions& o = model_.options;
    folder_->setObjectName("open_folder");
    files_->setObjectName("open_files");
    files_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    type_->setObjectName("open_type");
    for (const COpenFileType& t : OpenFileTypes()) type_->addItem(t.filter, t.code);
    type_->setCurrentIndex(type_->findData(o.filetype));
    auto* layout = new QGridLayout;
    for (int k = 0; k < 6; ++k) {
        const std::string& r = k < 4 ? o.res4d[k] : o.res_uv[k - 4];
        const std::string& s = k < 4 ? o.skip4d[k] : o.skip_uv[k - 4];
        res_[k] = new QLineEdit(QString::fromStdString(r), this);
        skip_[k] = new QLineEdit(QString::fromStdString(s), this);
        res_[k]->setObjectName(QString("open_res_%1").arg(kDirections[k]));
        skip_[k]->setObjectName(QString("open_skip_%1").arg(kDirections[k]));
        layout->addWidget(new QLabel(kDirections[k], this), 0, k + 1);
        layout->addWidget(res_[k], 1, k + 1);
        layout->addWidget(skip_[k], 2, k + 1);
        connect(res_[k], &QLineEdit::editingFinished, this, &CDialogOpen::OnSelection);
        connect(skip_[k], &QLineEdit::editingFinished, this, &CDialogOpen::OnSelection);
    }
    layout->addWidget(new QLabel("size", this), 1, 0);
    layout->addWidget(new QLabel("skip", this), 2, 0);
    offset_->setObjectName("open_offset");
    datatype_->setObjectName("open_datatype");
    for (int t = 0; t < TYPE_COUNT; ++t) datatype_->addItem(TypeName(t));
    datatype_->setCurrentIndex(IsValidType(o.datatype) ? o.datatype : TYPE_R4);
    swap_->setObjectName("open_swap");
    swap_->setChecked(o.swap);
    perline_->setObjectName("open_perline");
    perline_->addItems({"1 x line", "1 y line"});
    perline_->setCurrentIndex(o.perline == 1 ? 1 : 0);
    dicom_scale_->setObjectName("open_dicom_scale");
    dicom_scale_->setChecked(o.dicom_scale);
    stay_->setObjectName("open_stay");
    stay_->setChecked(o.stay);
    preview_->setObjectName("open_preview");
    preview_->setChecked(o.preview);
    picture_->setObjectName("open_picture");
    auto* baselines = new QHBoxLayout;
    auto* baseline_group = new QButtonGroup(this);
    const char* baseline_texts[3] = {"ignore baselines", "add baselines", "subtract baselines"};
    for (int k = 0; k < 3; ++k) {
        baselines_[k] = new QRadioButton(baseline_texts[k], this);
        baselines_[k]->setObjectName(QString("open_baseline%1").arg(k));
        baselines_[k]->setChecked(o.baselines[k]);
        baseline_group->addButton(baselines_[k]);
        baselines->addWidget(baselines_[k]);
    }
    title_->setObjectName("open_title");
    info_->setObjectName("open_info");

    auto* browse = new QPushButton("folder...", this);
    browse->setObjectName("open_browse");
    auto* form = new QFormLayout(this);
    form->addRow("folder", folder_);
    form->addRow(browse);
    form->addRow(files_);
    form->addRow("type", type_);
    form->addRow(layout);
    form->addRow("header bytes", offset_);
    form->addRow("data type", datatype_);
    form->addRow(swap_);
    form->addRow("text lines", perline_);
    form->addRow(dicom_scale_);
    form->addRow(baselines);
    form->addRow(stay_);
    form->addRow(preview_);
    form->addRow(picture_);
    form->addRow(title_);
    form->addRow(info_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setObjectName("open_ok");
    form->addRow(buttons);

    connect(browse, &QPushButton::clicked, this, [this] {
        const QString dir = QFileDialog::getExistingDirectory(this, "folder", folder_->text());
        if (dir.isEmpty()) return;
        folder_->setText(dir);
        ShowFolder();
    });
    connect(folder_, &QLineEdit::editingFinished, this, &CDialogOpen::ShowFolder);
    connect(files_, &QListWidget::currentRowChanged, this, &CDialogOpen::OnSelection);
    connect(type_, &QComboBox::currentIndexChanged, this, &CDialogOpen::OnSelection);
    connect(offset_, &QLineEdit::editingFinished, this, &CDialogOpen::OnSelection);
    connect(datatype_, &QComboBox::currentIndexChanged, this, &CDialogOpen::OnSelection);
    connect(swap_, &QCheckBox::toggled, this, &CDialogOpen::OnSelection);
    connect(preview_, &QCheckBox::toggled, this, &CDialogOpen::OnSelection);
    connect(buttons, &QDialogButtonBox::accepted, this, &CDialogOpen::OnOk);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    ShowFolder();
}

void CDialogOpen::ShowFolder() {
    files_->clear();
    const QDir dir(folder_->text());
    for (const QString& name : dir.entryList(QDir::Files, QDir::Name)) files_->addItem(name);
}

void CDialogOpen::StoreFields() {
    COpenOptions& o = model_.options;
    for (int k = 0; k < 6; ++k) {
        (k < 4 ? o.res4d[k] : o.res_uv[k - 4]) = res_[k]->text().toStdString();
        (k < 4 ? o.skip4d[k] : o.skip_uv[k - 4]) = skip_[k]->text().toStdString();
    }
    o.offset = offset_->text().toStdString();
    o.datatype = datatype_->currentIndex();
    o.swap = swap_->isChecked();
    o.perline = perline_->currentIndex();
    o.dicom_scale = dicom_scale_->isChecked();
    o.stay = stay_->isChecked();
    o.preview = preview_->isChecked();
    for (int k = 0; k < 3; ++k) o.baselines[k] = baselines_[k]->isChecked();
    o.filetype = type_->currentData().toInt();
}

void CDialogOpen::OnSelection() {
    StoreFields();
    const QListWidgetItem* item = files_->currentItem();
    model_.Select(item ? QDir(folder_->text()).filePath(item->text()).toStdString() : "");
    title_->setText(QString::fromStdString(model_.title));
    info_->setText(QString::fromStdString(model_.info));
    ShowPreview();
}

void CDialogOpen::ShowPreview() {
    picture_->clear();
    CZrkData plane;
    if (!model_.options.preview || !model_.Preview(plane)) return;
    const std::vector<uint8_t> grey = COpenModel::PreviewLevels(plane);
    const int w = static_cast<int>(plane.nx), h = static_cast<int>(plane.ny);
    plane.FreeData();
    if (grey.empty()) return;
    QImage image(grey.data(), w, h, w, QImage::Format_Grayscale8);
    picture_->setPixmap(QPixmap::fromImage(image.copy().scaled(160, 160, Qt::KeepAspectRatio)));
}

void CDialogOpen::OnOk() {
    Host().Trace("CDialogOpen::OnOk");
    StoreFields();
    std::vector<std::string> paths;
    for (const QListWidgetItem* item : files_->selectedItems())
        paths.push_back(QDir(folder_->text()).filePath(item->text()).toStdString());
    if (paths.empty()) return;
    model_.run_load = [this](CLoadModel& load) {
        CDialogLoad dialog(load, this);
        dialog.exec();
    };
    const int close = model_.Ok(paths);
    info_->setText(QString::fromStdString(model_.status));
    emit opened(QString::fromStdString(model_.status));
    if (close) accept();
}
