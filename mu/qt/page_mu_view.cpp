#include "mu/qt/page_mu_view.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleValidator>
#include <QFileDialog>
#include <QFormLayout>
#include <QImage>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>

#include "core/data_space.h"
#include "core/zrk_data.h"

CPageMuView::CPageMuView(CPageMu& page, CDataSpace& space, const char* name, QWidget* parent)
    : QWidget(parent), form_(new QFormLayout(this)), page_(page), space_(space) {
    setObjectName(name);
}

void CPageMuView::Load() {
    for (auto& load : loads_) load();
}

void CPageMuView::Store() {
    for (auto& store : stores_) store();
}

QCheckBox* CPageMuView::Tick(const char* text, const char* name, int& value) {
    auto* tick = new QCheckBox(text, this);
    tick->setObjectName(name);
    form_->addRow(tick);
    loads_.push_back([tick, &value] { tick->setChecked(value != 0); });
    stores_.push_back([tick, &value] { value = tick->isChecked() ? 1 : 0; });
    return tick;
}

QLineEdit* CPageMuView::Int(const char* label, const char* name, int& value, int low, int high) {
    auto* edit = new QLineEdit(this);
    edit->setObjectName(name);
    edit->setValidator(new QIntValidator(low, high, edit));
    form_->addRow(label, edit);
    loads_.push_back([edit, &value] { edit->setText(QString::number(value)); });
    // An empty or half-typed number keeps the record's value; the page check meets the rest.
    stores_.push_back([edit, &value] {
        bool ok = false;
        const int v = edit->text().toInt(&ok);
        if (ok) value = v;
    });
    return edit;
}

QLineEdit* CPageMuView::Float(const char* label, const char* name, float& value) {
    auto* edit = new QLineEdit(this);
    edit->setObjectName(name);
    auto* valid = new QDoubleValidator(edit);
    valid->setLocale(QLocale::c());
    valid->setNotation(QDoubleValidator::StandardNotation);
    edit->setValidator(valid);
    form_->addRow(label, edit);
    loads_.push_back([edit, &value] { edit->setText(QString::number(value, 'g', 7)); });
    stores_.push_back([edit, &value] {
        bool ok = false;
        const float v = QLocale::c().toFloat(edit->text(), &ok);
        if (ok) value = v;
    });
    return edit;
}

QLineEdit* CPageMuView::Text(const char* label, const char* name, std::string& value) {
    auto* edit = new QLineEdit(this);
    edit->setObjectName(name);
    form_->addRow(label, edit);
    loads_.push_back([edit, &value] { edit->setText(QString::fromStdString(value)); });
    stores_.push_back([edit, &value] { value = edit->text().toStdString(); });
    return edit;
}

QComboBox* CPageMuView::Choice(const char* label, const char* name, int& value,
                               const QStringList& items) {
    auto* combo = new QComboBox(this);
    combo->setObjectName(name);
    combo->addItems(items);
    form_->addRow(label, combo);
    loads_.push_back([combo, &value] { combo->setCurrentIndex(value); });
    stores_.push_back([combo, &value] {
        if (combo->currentIndex() >= 0) value = combo->currentIndex();
    });
    return combo;
}

QComboBox* CPageMuView::ArrayName(const char* label, const char* name, std::string& value) {
    auto* combo = new QComboBox(this);
    combo->setObjectName(name);
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    form_->addRow(label, combo);
    // The list is the desktop's as it stands now; the sheet keeps names, never records.
    loads_.push_back([this, combo, &value] {
        combo->clear();
        for (int i = 0; i < space_.Count(); ++i)
            if (const CZrkData* d = space_.GetData(i)) combo->addItem(d->name);
        combo->setCurrentText(QString::fromStdString(value));
    });
    stores_.push_back([combo, &value] { value = combo->currentText().trimmed().toStdString(); });
    return combo;
}

void CPageMuView::LockWith(QCheckBox* tick, std::vector<QWidget*> controls) {
    auto lock = [controls](bool on) {
        for (QWidget* w : controls) w->setEnabled(!on);
    };
    connect(tick, &QCheckBox::toggled, this, lock);
    loads_.push_back([tick, lock] { lock(tick->isChecked()); });
}

void CPageMuView::AddHelp() {
    auto* help = new QPushButton("help", this);
    help->setObjectName("mu_help");
    form_->addRow(help);
    connect(help, &QPushButton::clicked, this,
            [this] { emit helpRequested(QString::fromLatin1(page_.HelpPage())); });
}

namespace {

const QStringList kChannels = {"i", "q", "m", "p"};

}  // namespace

CPageMuDataView::CPageMuDataView(CPageMuData& page, CDataSpace& space, QWidget* parent)
    : CPageMuView(page, space, "mu_page_data", parent) {
    auto& c = page.c;
    ArrayName("magnitude", "magnitude", c.magnitude);
    Choice("channel", "mag_iqmp", c.mag_iqmp, kChannels);
    Choice("phase kind", "harmin", c.harmin, {"phase time series", "complex harmonic"});
    Tick("xyz", "xyz", c.xyz);
    static const char* kAxes[] = {"x phase", "y phase", "z phase"};
    for (int k = 0; k < 3; ++k) {
        const QByteArray name = QByteArray("phase_name") + char('0' + k);
        const QByteArray channel = QByteArray("pdif_iqmp") + char('0' + k);
        ArrayName(kAxes[k], name.constData(), c.phase[k]);
        Choice("channel", channel.constData(), c.pdif_iqmp[k], kChannels);
    }
    AddHelp();
}

CPageMuParamsView::CPageMuParamsView(CPageMuParams& page, CDataSpace& space, QWidget* parent)
    : CPageMuView(page, space, "mu_page_params", parent), params_(page) {
    auto& c = page.c;
    QCheckBox* defaults = Tick("defaults", "param_default", c.param_default);
    std::vector<QWidget*> locked = {
        Float("frequency (Hz)", "mech_freq", c.mech_freq),
        Float("fov x (m)", "fov_x", c.fov[0]),
        Float("fov y (m)", "fov_y", c.fov[1]),
        Float("fov z (m)", "fov_z", c.fov[2]),
        Int("harmonic number", "harmonic_number", c.harmonic_number, -1000, 1000),
    };
    QComboBox* preset = Choice("phase range", "phase_range", c.phase_preset,
                               {"0 ... 255", "0 ... 4095", "-pi/2 ... +pi/2", "-pi ... +pi",
                                "-3141 ... +3141", "-31415 ... +31415", "other"});
    range_[0] = Float("low", "phase_min", c.phase_range[0]);
    range_[1] = Float("high", "phase_max", c.phase_range[1]);
    locked.insert(
        locked.end(),
        {preset, Int("phase offsets", "noff", c.noff, 0, 1 << 20), Float("menc", "menc", c.menc),
         Tick("weighted sum", "wsum", c.wsum), Tick("divide", "amp_divide", c.ampweight[0]),
         Tick("suppress", "amp_clip", c.ampweight[1])});
    LockWith(defaults, locked);
    connect(preset, &QComboBox::activated, this, [this](int i) {
        Store();
        params_.SetPhasePreset(i);
        Load();
    });
    auto* load = new QPushButton("load from file", this);
    load->setObjectName("mu_load_file");
    form_->addRow(load);
    connect(load, &QPushButton::clicked, this, [this] {
        auto* dialog = new QFileDialog(this, "load from file");
        dialog->setObjectName("mu_load_dialog");
        dialog->setOption(QFileDialog::DontUseNativeDialog);
        dialog->setFileMode(QFileDialog::ExistingFile);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) {
            Store();
            params_.LoadFromFile(path.toStdString());
            Load();
            emit statusChanged();
        });
        dialog->open();
    });
    AddHelp();
}

void CPageMuParamsView::Load() {
    CPageMuView::Load();
    for (QLineEdit* e : range_) e->setEnabled(params_.RangeEditable());
}

CPageMuMaskView::CPageMuMaskView(CPageMuMask& page, CDataSpace& space, const int& width,
                                 QWidget* parent)
    : CPageMuView(page, space, "mu_page_mask", parent),
      mask_(page),
      width_(width),
      preview_(new QLabel(this)) {
    auto& c = page.c;
    QCheckBox* defaults = Tick("defaults", "mask_default", c.mask_default);
    LockWith(defaults, {
                           Int("threshold", "background", c.background, 0, 255),
                           Tick("use mask", "use_mask", c.use_mask),
                           Tick("smooth mask", "smooth_mask", c.smooth_mask),
                           Tick("2d mask on 3d data", "mask_2d", c.mask_2d),
                           Tick("limit regions", "mask_regions", c.mask_regions),
                           Int("regions", "mask_nregions", c.mask_nregions, 0, 1 << 20),
                           Tick("limit voids", "mask_voids", c.mask_voids),
                           Int("voids", "mask_nvoids", c.mask_nvoids, 0, 1 << 20),
                           Int("amplitude threshold", "amp_threshold", c.amp_threshold, 0, 255),
                       });
    Tick("save mask", "mask_out", c.mask_out);
    Text("mask", "mask", c.mask);
    preview_->setObjectName("mask_preview");
    preview_->setMinimumSize(64, 64);
    form_->addRow("preview", preview_);
    AddHelp();
}

void CPageMuMaskView::Load() {
    CPageMuView::Load();
    // The preview holds the middle slice, rows of the record's width.
    const std::vector<uint8_t>& bytes = mask_.preview;
    preview_->clear();
    const int width = width_;
    if (bytes.empty() || width < 1 || bytes.size() % width) return;
    const int height = static_cast<int>(bytes.size()) / width;
    QImage image(bytes.data(), width, height, width, QImage::Format_Grayscale8);
    preview_->setPixmap(QPixmap::fromImage(image.copy())
                            .scaled(128, 128, Qt::KeepAspectRatio, Qt::FastTransformation));
}

CPageMuWrapView::CPageMuWrapView(CPageMuWrap& page, CDataSpace& space, QWidget* parent)
    : CPageMuView(page, space, "mu_page_wrap", parent) {
    auto& c = page.c;
    QStringList methods;
    for (const char* m : CPageMuWrap::kMethods) methods << m;
    Choice("method", "uwmethod", c.uwmethod, methods);
    Tick("use the mask", "wrapage_mask", c.wrapage_mask);
    Tick("save", "uw_save", c.save);
    Text("x output", "uwpx", c.uwpx);
    Text("y output", "uwpy", c.uwpy);
    Text("z output", "uwpz", c.uwpz);
    AddHelp();
}

CPageMuFilterView::CPageMuFilterView(CPageMuFilter& page, CDataSpace& space, QWidget* parent)
    : CPageMuView(page, space, "mu_page_filter", parent) {
    auto& c = page.c;
    QStringList choices;
    for (const char* f : CPageMuFilter::kChoices) choices << f;
    Choice("filter", "filter_type", c.filter, choices);
    Int("resolution x", "filter_res_x", c.filter_res[0], 1, 1 << 16);
    Int("resolution y", "filter_res_y", c.filter_res[1], 1, 1 << 16);
    Int("resolution z", "filter_res_z", c.filter_res[2], 1, 1 << 16);
    Float("low cut", "filter_cut_low", c.filter_cut[0]);
    Float("high cut", "filter_cut_high", c.filter_cut[1]);
    Int("order", "filter_order", c.filter_order, 1, 64);
    Tick("save", "pre_out", c.pre_out);
    Text("output", "pre_format", c.pre_format);
    auto* apply = new QPushButton("apply", this);
    apply->setObjectName("mu_apply");
    form_->addRow(apply);
    connect(apply, &QPushButton::clicked, this, &CPageMuView::applyRequested);
    AddHelp();
}

CPageMuOutputView::CPageMuOutputView(CPageMuOutput& page, CDataSpace& space, QWidget* parent)
    : CPageMuView(page, space, "mu_page_output", parent) {
    auto& c = page.c;
    Tick("masked mag", "magmask_out", c.magmask_out);
    Text("", "magmask", c.magmask);
    Tick("interpolated time series", "interp_out", c.interp_out);
    Text("", "interp", c.interp);
    Int("steps", "ninterp", c.ninterp, 1, 1024);
    Tick("mask interpolation", "interp_mask", c.interp_mask);
    Tick("r1i1 harmonic", "r1i1_out", c.r1i1_out);
    Text("", "r1i1", c.r1i1);
    Tick("amplitude(microns)", "amplitude_out", c.amplitude_out);
    Text("", "amplitude", c.amplitude);
    QStringList shapes;
    for (const char* g : CPageMuOutput::kGradients) shapes << g;
    Choice("gradient", "gradient_type", c.gradient_type, shapes);
    Int("gradient pairs", "gradient_pairs", c.gradient_pairs, 0, 1024);
    Float("gradient amplitude", "gradient_amp", c.gradient_amp);
    auto* view = new QPushButton("view output", this);
    view->setObjectName("mu_view_output");
    form_->addRow(view);
    connect(view, &QPushButton::clicked, this, &CPageMuView::applyRequested);
    AddHelp();
}

CPageMuLfeView::CPageMuLfeView(CPageMuLfe& page, CDataSpace& space, QWidget* parent)
    : CPageMuView(page, space, "mu_page_lfe", parent) {
    auto& c = page.c;
    QCheckBox* defaults = Tick("defaults", "lfe_default", c.lfe_default);
    LockWith(defaults, {
                           Choice("dimension", "lfe_nd", c.dimension, {"1d", "2d", "3d"}),
                           Tick("soft 1d", "soft_1d", c.soft_1d),
                           Tick("complex LFE", "lfe_complex", c.lfe_complex),
                           Choice("octave", "lfe_octave", c.octave, {"1.414", "2", "4"}),
                           Int("bands", "lfe_nbands", c.lfe_nbands, 1, 64),
                           Float("base frequency", "lfe_base_freq", c.lfe_base_freq),
                           Tick("no time FT", "lfe_noft", c.lfe_noft),
                       });
    Tick("frequency estimate", "lfe_est_out", c.lfe_est_out);
    Text("", "lfe_est", c.lfe_est);
    Tick("stiffness", "lfe_stiff_out", c.lfe_stiff_out);
    Text("", "lfe_stiff", c.lfe_stiff);
    Tick("certainty", "lfe_cert_out", c.lfe_cert_out);
    Text("", "lfe_cert", c.lfe_cert);
    Tick("individual mu", "lfe_imu_out", c.lfe_imu_out);
    Text("", "lfe_imu", c.lfe_imu);
    Tick("individual certainty", "lfe_icert_out", c.lfe_icert_out);
    Text("", "lfe_icert", c.lfe_icert);
    AddHelp();
}
