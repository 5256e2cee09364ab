#include "display/qt/form_wl.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

#include "core/data_space.h"
#include "core/host.h"
#include "display/image_bits.h"
#include "display/image_options.h"

namespace {

template <class W>
W* Named(W* w, const char* name) {
    w->setObjectName(name);
    return w;
}

QString Number(float v) { return QString::number(v, 'g', 6); }

}  // namespace

CFormWL::CFormWL(GWinLev& wl, CDataSpace& space, QWidget* parent)
    : QDockWidget("window/level", parent), wl_(wl), space_(space) {
    setObjectName("form_wl");
    auto* body = new QWidget;
    auto* form = new QFormLayout;
    window_ = Named(new QLineEdit, "wl_window");
    level_ = Named(new QLineEdit, "wl_level");
    range_ = Named(new QLabel, "wl_range");
    window_slider_ = Named(new QSlider(Qt::Horizontal), "wl_window_slider");
    level_slider_ = Named(new QSlider(Qt::Horizontal), "wl_level_slider");
    window_slider_->setRange(0, 100);
    level_slider_->setRange(0, 100);
    scale_ = Named(new QComboBox, "wl_scale");
    for (const char* s : GWinLev::kScaleNames) scale_->addItem(s);
    nonlin_ = Named(new QLineEdit, "wl_nonlin");
    cycles_ = Named(new QSpinBox, "wl_cycles");
    cycles_->setRange(1, 64);
    inv_ = Named(new QCheckBox("invert"), "wl_inv");
    mouse_ = Named(new QComboBox, "wl_mouse");
    for (const char* s : GWinLev::kMouseStepNames) mouse_->addItem(s);
    plot_ = Named(new QComboBox, "wl_plot");
    for (const char* s : GWinLev::kPlotNames) plot_->addItem(s);
    ramp_ = Named(new QCheckBox("spatial ramp"), "wl_ramp");
    ramp_dir_ = Named(new QComboBox, "wl_ramp_dir");
    ramp_dir_->addItems({"x", "y", "z", "t"});
    ramp_end_ = Named(new QComboBox, "wl_ramp_end");
    ramp_end_->addItems({"both ends", "low end", "high end"});
    auto* channels = new QHBoxLayout;
    const char* kChannels[3][2] = {{"r", "wl_red"}, {"g", "wl_green"}, {"b", "wl_blue"}};
    for (int k = 0; k < 3; ++k) {
        channels_[k] = Named(new QCheckBox(kChannels[k][0]), kChannels[k][1]);
        channels->addWidget(channels_[k]);
    }
    auto* buttons = new QHBoxLayout;
    auto* apply = Named(new QPushButton("apply"), "wl_apply");
    auto* copy = Named(new QPushButton("copy"), "wl_copy");
    auto* paste = Named(new QPushButton("paste"), "wl_paste");
    for (QPushButton* b : {apply, copy, paste}) buttons->addWidget(b);
    picture_ = Named(new QLabel, "wl_picture");
    picture_->setMinimumSize(160, 200);
    picture_->setAlignment(Qt::AlignCenter);

    form->addRow("window", window_);
    form->addRow("level", level_);
    form->addRow("range", range_);
    form->addRow("window", window_slider_);
    form->addRow("level", level_slider_);
    form->addRow("scale", scale_);
    form->addRow("nonlin", nonlin_);
    form->addRow("cycles", cycles_);
    form->addRow("", inv_);
    form->addRow("mouse", mouse_);
    form->addRow("plot", plot_);
    form->addRow(ramp_, ramp_dir_);
    form->addRow("ramp drag", ramp_end_);
    form->addRow("rgb", channels);
    // The picture stands beside the fields, so the pane stays short.
    auto* fields = new QVBoxLayout;
    fields->addLayout(form);
    fields->addLayout(buttons);
    fields->addStretch(1);
    auto* layout = new QHBoxLayout(body);
    layout->addLayout(fields);
    layout->addWidget(picture_, 1);
    // Scrolled, so the pane never holds the main window taller than the screen.
    auto* scroll = new QScrollArea;
    scroll->setWidget(body);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    setWidget(scroll);

    auto edited = [this] {
        if (loading_) return;
        Store();
        ApplyNow();
    };
    connect(window_, &QLineEdit::editingFinished, this, edited);
    connect(level_, &QLineEdit::editingFinished, this, edited);
    connect(nonlin_, &QLineEdit::editingFinished, this, edited);
    connect(cycles_, &QSpinBox::valueChanged, this, edited);
    connect(inv_, &QCheckBox::toggled, this, edited);
    connect(ramp_, &QCheckBox::toggled, this, edited);
    connect(ramp_dir_, &QComboBox::currentIndexChanged, this, edited);
    connect(ramp_end_, &QComboBox::currentIndexChanged, this, edited);
    for (QCheckBox* c : channels_) connect(c, &QCheckBox::toggled, this, edited);
    connect(scale_, &QComboBox::currentIndexChanged, this, [this](int i) {
        if (loading_) return;
        Store();
        wl_.SetScale(i);
        ApplyNow();
    });
    connect(window_slider_, &QSlider::valueChanged, this, [this](int p) {
        if (loading_) return;
        wl_.SetWindowSlider(p);
        ApplyNow();
    });
    connect(level_slider_, &QSlider::valueChanged, this, [this](int p) {
        if (loading_) return;
        wl_.SetLevelSlider(p);
        ApplyNow();
    });
    connect(mouse_, &QComboBox::currentIndexChanged, this, [this](int i) {
        if (!loading_) wl_.SetMouseStep(i);
    });
    connect(plot_, &QComboBox::currentIndexChanged, this, [this](int i) {
        if (loading_) return;
        wl_.wl_plot = i;
        Load();
    });
    connect(apply, &QPushButton::clicked, this, [this] {
        Store();
        ApplyNow();
    });
    connect(copy, &QPushButton::clicked, this, [this] {
        if (target_) wl_.Copy(target_->TargetLook());
    });
    connect(paste, &QPushButton::clicked, this, [this] {
        if (!target_) return Host().Status("no window and level to paste");
        wl_.Paste(*target_, space_);
        wl_.Take(*target_, &space_);
        Load();
    });
    Load();
}

void CFormWL::SetTarget(CWinLevTarget* target) {
    target_ = target;
    if (wl_.target != target) wl_.target = nullptr;
    if (target_) wl_.Take(*target_, &space_);
    Load();
}

void CFormWL::Load() {
    loading_ = true;
    const CWinLevValues& v = wl_.values;
    window_->setText(Number(v.window));
    level_->setText(Number(v.level));
    range_->setText(Number(v.datamin) + " ... " + Number(v.datamax));
    window_slider_->setValue(wl_.WindowSlider());
    level_slider_->setValue(wl_.LevelSlider());
    scale_->setCurrentIndex(std::clamp(v.wscale, 0, 2));
    nonlin_->setText(Number(v.nonlin));
    cycles_->setValue(v.wlcycles);
    inv_->setChecked(v.inv != 0);
    plot_->setCurrentIndex(wl_.wl_plot);
    ramp_->setChecked(wl_.wl_ramp != 0);
    ramp_dir_->setCurrentIndex(wl_.ramp_dir);
    ramp_end_->setCurrentIndex(wl_.ramp_end);
    for (int k = 0; k < 3; ++k) channels_[k]->setChecked(wl_.channel_mask & (1u << k));
    picture_->setPixmap(QPixmap::fromImage(PlotPicture(180, 280)));
    loading_ = false;
}

void CFormWL::Store() {
    CWinLevValues& v = wl_.values;
    bool ok = false;
    float f = window_->text().toFloat(&ok);
    if (ok && f != v.window) v.window = wl_.window_lo = wl_.window_hi = f;
    f = level_->text().toFloat(&ok);
    if (ok && f != v.level) v.level = wl_.level_lo = wl_.level_hi = f;
    f = nonlin_->text().toFloat(&ok);
    if (ok) v.nonlin = f;
    v.wlcycles = cycles_->value();
    v.inv = inv_->isChecked();
    v.wscale = scale_->currentIndex();
    wl_.wl_ramp = ramp_->isChecked();
    wl_.ramp_dir = ramp_dir_->currentIndex();
    wl_.ramp_end = ramp_end_->currentIndex();
    wl_.channel_mask = 0;
    for (int k = 0; k < 3; ++k)
        if (channels_[k]->isChecked()) wl_.channel_mask |= 1u << k;
    wl_.SetScale(v.wscale);
}

void CFormWL::ApplyNow() {
    if (target_) {
        std::vector<CWinLevTarget*> targets{target_};
        if (Global2d().lock_wl && locked_)
            for (CWinLevTarget* t : locked_())
                if (t != target_) targets.push_back(t);
        wl_.ApplyAll(targets, space_);
    }
    Load();
}

QImage CFormWL::PlotPicture(int width, int height) const {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::white);
    const int kind = wl_.wl_plot;
    if (kind == 0) return image;
    QPainter p(&image);
    p.setPen(Qt::black);
    CPlane plane;
    wl_.values.To(plane);
    const CPal* pal = nullptr;
    if (target_) {
        CLook& look = target_->TargetLook();
        const CPlane* shown = look.flags == LOOK_RGB ? &look.rplane : &look.palplane;
        pal = shown->palette.get();
    }
    const CPal grey(7);
    if (!pal) pal = &grey;
    const CIndexMap map(plane);
    const float lo = wl_.values.datamin, hi = wl_.values.datamax;
    const QRect box(30, 10, width - 40, height - 40);
    if (kind == 1 || kind == 2) {
        p.drawRect(box);
        // 1: window and level along the ramp; 2: the index each sample value gets.
        QPolygonF curve, second;
        for (int i = 0; i <= 64; ++i) {
            const double f = i / 64.0;
            double y0, y1 = 0;
            if (kind == 1) {
                const float w = wl_.window_lo + f * (wl_.window_hi - wl_.window_lo);
                const float l = wl_.level_lo + f * (wl_.level_hi - wl_.level_lo);
                const double span = std::max<double>(std::fabs(hi - lo), 1e-30) * 2;
                y0 = w / span;
                y1 = (l - lo) / span * 2;
            } else {
                y0 = map.Index(static_cast<float>(lo + f * (hi - lo)), plane.window, plane.level,
                               0) /
                     255.0;
            }
            curve << QPointF(box.left() + f * box.width(),
                             box.bottom() - std::clamp(y0, 0.0, 1.0) * box.height());
            second << QPointF(box.left() + f * box.width(),
                              box.bottom() - std::clamp(y1, 0.0, 1.0) * box.height());
        }
        p.setPen(QPen(Qt::blue, 2));
        p.drawPolyline(curve);
        if (kind == 1) {
            p.setPen(QPen(Qt::red, 2));
            p.drawPolyline(second);
        }
        p.setPen(Qt::black);
        p.drawText(QRect(0, height - 28, width, 14), Qt::AlignLeft, Number(lo));
        p.drawText(QRect(0, height - 28, width, 14), Qt::AlignRight, Number(hi));
        return image;
    }
    // Colour bars, labelled with the ends of the window.
    const float w0 = wl_.values.level - wl_.values.window / 2,
                w1 = wl_.values.level + wl_.values.window / 2;
    const bool vertical = kind == 4;
    const QRect bar = vertical ? QRect(width / 2 - 20, 20, 40, height - 40)
                               : QRect(10, height / 2 - 20, width - 20, 40);
    const int n = vertical ? bar.height() : bar.width();
    for (int i = 0; i < n; ++i) {
        int index = n > 1 ? i * 255 / (n - 1) : 0;
        if (vertical) index = 255 - index;
        const uint8_t* e = pal->entries[plane.inv ? 255 - index : index];
        p.setPen(QColor(e[0], e[1], e[2]));
        if (vertical)
            p.drawLine(bar.left(), bar.top() + i, bar.right(), bar.top() + i);
        else
            p.drawLine(bar.left() + i, bar.top(), bar.left() + i, bar.bottom());
    }
    p.setPen(Qt::black);
    if (vertical) {
        p.drawText(QRect(0, 2, width, 16), Qt::AlignHCenter, Number(w1));
        p.drawText(QRect(0, height - 18, width, 16), Qt::AlignHCenter, Number(w0));
    } else {
        p.drawText(QRect(10, bar.bottom() + 4, width - 20, 16), Qt::AlignLeft, Number(w0));
        p.drawText(QRect(10, bar.bottom() + 4, width - 20, 16), Qt::AlignRight, Number(w1));
    }
    return image;
}
