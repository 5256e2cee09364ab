#include "display/qt/form_opt_plot.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <QSpinBox>

#include "display/qt/ok_cancel.h"

namespace {

QSpinBox* Spin(const QString& name, int lo, int hi, int value) {
    auto* s = new QSpinBox;
    s->setObjectName(name);
    s->setRange(lo, hi);
    s->setValue(value);
    return s;
}

}  // namespace

CFormOptPlot::CFormOptPlot(CNewPlot& holder, C1d* options, QWidget* parent)
    : QDialog(parent), holder_(holder), options_(options) {
    const bool xy = holder.kind == LOOK_XY;
    const QString kind = xy ? "xy" : "1d";
    // Every field's name starts with "opt1d_" or "optxy_".
    auto name = [&kind](const char* field) { return QString("opt%1_%2").arg(kind, field); };
    setObjectName("form_opt_" + kind);
    setWindowTitle(kind + " display");
    auto* form = new QFormLayout;
    nameformat_ = new QLineEdit(QString::fromStdString(holder.nameformat));
    nameformat_->setObjectName(name("nameformat"));
    form->addRow("name format", nameformat_);
    iqmp_ = new QComboBox;
    iqmp_->setObjectName(name("iqmp"));
    iqmp_->addItems({"i", "q", "mag", "phase"});
    iqmp_->setCurrentIndex(std::clamp(holder.iqmp, 0, 3));
    form->addRow("channel", iqmp_);
    const unsigned colors[4] = {holder.linecolor, holder.linecolor2, holder.axiscolor,
                                holder.backcolor};
    static const char* kColors[4][2] = {{"line colour", "linecolor"},
                                        {"second line colour", "linecolor2"},
                                        {"axis colour", "axiscolor"},
                                        {"background", "backcolor"}};
    // Only hexadecimal digits go into a colour.
    auto* hex = new QRegularExpressionValidator(QRegularExpression("[0-9a-fA-F]{1,6}"), this);
    for (int k = 0; k < 4; ++k) {
        colors_[k] = new QLineEdit(QString::number(colors[k], 16));
        colors_[k]->setObjectName(name(kColors[k][1]));
        colors_[k]->setValidator(hex);
        form->addRow(kColors[k][0], colors_[k]);
    }
    thick_ = Spin(name("thick"), 1, 20, holder.thick);
    form->addRow("line thickness", thick_);
    symbol_ = Spin(name("symbol"), 0, 8, holder.symbol);
    form->addRow("symbol (0 none)", symbol_);
    symsize_ = Spin(name("symsize"), 1, 64, holder.symsize);
    form->addRow("symbol size", symsize_);
    width_ = Spin(name("width"), 64, 4096, holder.plotsize[0]);
    height_ = Spin(name("height"), 48, 4096, holder.plotsize[1]);
    auto* size = new QHBoxLayout;
    size->addWidget(width_);
    size->addWidget(height_);
    form->addRow("plot size", size);
    auto* axes = new QGridLayout;
    static const char* kSides[4] = {"top", "bottom", "left", "right"};
    axes->addWidget(new QLabel("shown"), 1, 0);
    axes->addWidget(new QLabel("labels"), 2, 0);
    for (int k = 0; k < 4; ++k) {
        axes->addWidget(new QLabel(kSides[k]), 0, k + 1);
        axis_[k] = new QCheckBox;
        axis_[k]->setObjectName(name("axis_") + kSides[k]);
        axis_[k]->setChecked(holder.axis[k] != 0);
        axes->addWidget(axis_[k], 1, k + 1);
        axis_text_[k] = new QCheckBox;
        axis_text_[k]->setObjectName(name("axis_") + kSides[k] + "_text");
        axis_text_[k]->setChecked(holder.axis_text[k] != 0);
        axes->addWidget(axis_text_[k], 2, k + 1);
    }
    form->addRow("axes", axes);
    if (options) {
        overlayed_ = new QCheckBox("rows share one axis");
        overlayed_->setObjectName(name("overlayed"));
        overlayed_->setChecked(holder.lines_overlayed != 0);
        form->addRow("", overlayed_);
        lock_ = new QCheckBox("y axis stays through zooms");
        lock_->setObjectName(name("axis_lock"));
        lock_->setChecked(options->axis_lock != 0);
        form->addRow("", lock_);
    }
    OkCancelBelow(this, form, name("ok"), name("cancel"), &CFormOptPlot::OnOk);
}

void CFormOptPlot::OnOk() {
    if (!nameformat_->text().isEmpty()) holder_.nameformat = nameformat_->text().toStdString();
    holder_.iqmp = iqmp_->currentIndex();
    unsigned* colors[4] = {&holder_.linecolor, &holder_.linecolor2, &holder_.axiscolor,
                           &holder_.backcolor};
    for (int k = 0; k < 4; ++k) {
        bool ok = false;
        const unsigned v = colors_[k]->text().trimmed().toUInt(&ok, 16);
        // A word that is not a colour keeps the one there was.
        if (ok && v <= 0xffffff) *colors[k] = v;
    }
    holder_.thick = thick_->value();
    holder_.symbol = symbol_->value();
    holder_.symsize = symsize_->value();
    holder_.plotsize[0] = width_->value();
    holder_.plotsize[1] = height_->value();
    for (int k = 0; k < 4; ++k) {
        holder_.axis[k] = axis_[k]->isChecked();
        holder_.axis_text[k] = axis_text_[k]->isChecked();
    }
    if (options_) {
        holder_.lines_overlayed = overlayed_->isChecked();
        options_->axis_lock = lock_->isChecked();
    }
    holder_.UpdateLookDefaults();
    accept();
}
