#include "files/qt/save_avi.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>

#include <algorithm>
#include <climits>

#include "core/host.h"
#include "files/save_avi_model.h"

namespace {

QSpinBox* Spin(QWidget* parent, const char* name, int lo, int hi, int value) {
    auto* s = new QSpinBox(parent);
    s->setObjectName(name);
    s->setRange(lo, hi);
    s->setValue(value);
    return s;
}

}  // namespace

CSaveAvi::CSaveAvi(CSaveAviModel& model, QWidget* parent)
    : QDialog(parent),
      model_(model),
      encoder_(new QComboBox(this)),
      frames_(new QLabel(this)),
      status_(new QLabel(this)) {
    setObjectName("save_avi");
    setWindowTitle("avi");
    encoder_->setObjectName("avi_encoder");
    for (int e = 0; e < AVI_ENCODER_COUNT; ++e) encoder_->addItem(AviEncoderName(e));
    encoder_->setCurrentIndex(model.Encoder());
    fps_ = Spin(this, "avi_fps", 1, 1000, model.Fps());
    ppt_ = Spin(this, "avi_ppt", 1, 1000, model.Ppt());
    frames_->setObjectName("avi_frames");
    status_->setObjectName("avi_status");

    auto* form = new QFormLayout(this);
    form->addRow("compression", encoder_);
    form->addRow("frames a second", fps_);
    form->addRow("frames per time point", ppt_);
    static const char* const kDirections[4] = {"z", "t", "u", "v"};
    for (int k = 0; k < 4; ++k) {
        const int top = static_cast<int>(std::min<int64_t>(model.Pages(k) - 1, INT_MAX));
        const std::string first = std::string("avi_") + kDirections[k] + "_first";
        const std::string last = std::string("avi_") + kDirections[k] + "_last";
        first_[k] = Spin(this, first.c_str(), 0, top, static_cast<int>(model.First(k)));
        last_[k] = Spin(this, last.c_str(), 0, top, static_cast<int>(model.Last(k)));
        auto* row = new QHBoxLayout;
        row->addWidget(first_[k]);
        row->addWidget(last_[k]);
        form->addRow(QString(kDirections[k]) + " pages", row);
        connect(first_[k], &QSpinBox::valueChanged, this, [this, k](int v) {
            model_.SetFirst(k, v);
            Refresh();
        });
        connect(last_[k], &QSpinBox::valueChanged, this, [this, k](int v) {
            model_.SetLast(k, v);
            Refresh();
        });
    }
    form->addRow("frames", frames_);
    form->addRow(status_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setObjectName("avi_ok");
    buttons->button(QDialogButtonBox::Cancel)->setObjectName("avi_cancel");
    form->addRow(buttons);

    connect(encoder_, &QComboBox::currentIndexChanged, this,
            [this](int e) { model_.SetEncoder(e); });
    connect(fps_, &QSpinBox::valueChanged, this, [this](int v) { model_.SetFps(v); });
    connect(ppt_, &QSpinBox::valueChanged, this, [this](int v) { model_.SetPpt(v); });
    connect(buttons, &QDialogButtonBox::accepted, this, &CSaveAvi::OnOk);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    Refresh();
}

void CSaveAvi::Refresh() {
    frames_->setText(QString::number(model_.FrameCount()));
    status_->setText(QString::fromStdString(model_.Check()));
}

void CSaveAvi::OnOk() {
    Host().Trace("CSaveAvi::OnOk");
    const std::string problem = model_.Check();
    status_->setText(QString::fromStdString(problem));
    if (!problem.empty()) return;
    model_.Apply();
    accept();
}
