#include "mu/qt/form_mu.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>
#include <string>
#include <utility>
#include <vector>

#include "core/data_space.h"
#include "core/host.h"
#include "core/zrk_data.h"
#include "display/display_entry.h"
#include "display/display_update.h"
#include "display/look.h"
#include "mu/qt/page_mu_view.h"

// The engine's services for the form: its look targets open 2-D displays and its progress
// repaints the form's status line while the run holds the loop.
class CMuViewDriver : public CMuDriver {
  public:
    CMuViewDriver(CDataSpace& space, QLabel* status) : CMuDriver(space), status_(status) {}

    // A run's displays open once it is over: at its first store an array is not yet written,
    // and a display opened then would be drawn twice, and repaint the windows around it while
    // the run holds the loop.
    void OpenDisplay2d(CZrkData* record, const char* palette) override {
        if (record) pending_.push_back({record, palette ? palette : ""});
    }
    void FinishDisplays() {
        const DisplayWindowHook hook = DisplayWindow(LOOK_2D);
        for (const auto& [record, palette] : pending_) {
            if (!hook || !Space().IsDataValid(record)) continue;
            CLook look(LOOK_2D);
            look.palplane.SetPalette(7, palette.c_str(), &Space());
            SetRangeWinLev(look.palplane, record);
            CDisplayRequest request;
            request.kind = LOOK_2D;
            request.data[0] = record;
            request.look = &look;
            request.caption = record->name;
            request.name = record->name;
            hook(request);
        }
        pending_.clear();
    }
    void status_text(const char* text) override {
        CMuDriver::status_text(text);
        const QString line = QString::fromUtf8(text);
        if (line == status_->text()) return;  // the engine repeats a line between its steps
        status_->setText(line);
        status_->repaint();
    }

  private:
    QLabel* status_;
    std::vector<std::pair<CZrkData*, std::string>> pending_;
};

CMuSheet::CMuSheet(QWidget* parent) : QTabWidget(parent) { setObjectName("mu_sheet"); }

CPageMuView* CMuSheet::View(int i) const { return qobject_cast<CPageMuView*>(widget(i)); }

CFormMu::CFormMu(CDataSpace& space, CMuOptions& options, QWidget* parent)
    : QWidget(parent),
      space_(space),
      model_(space, options),
      options_(new QComboBox(this)),
      status_(new QLabel(this)),
      base_(new QLineEdit(this)),
      count_(new QLineEdit(this)),
      append_(new QCheckBox("append data", this)),
      sheet_(new CMuSheet(this)),
      continue_(new QPushButton("continue>>", this)) {
    setObjectName("form_mu");
    setWindowTitle("wave inversion");
    setAttribute(Qt::WA_DeleteOnClose);
    auto driver = std::make_unique<CMuViewDriver>(space, status_);
    driver_ = driver.get();
    model_.SetDriver(std::move(driver));

    options_->setObjectName("mu_options");
    status_->setObjectName("mu_status");
    base_->setObjectName("mu_base");
    count_->setObjectName("mu_count");
    count_->setValidator(new QIntValidator(0, 1 << 20, count_));
    append_->setObjectName("mu_append");
    continue_->setObjectName("mu_continue");

    auto* menu_button = new QToolButton(this);
    menu_button->setObjectName("mu_option_menu");
    menu_button->setText("options");
    menu_button->setPopupMode(QToolButton::InstantPopup);
    auto* menu = new QMenu(menu_button);
    menu->addAction("save", this, &CFormMu::OnSave)->setObjectName("mu_save");
    menu->addAction("remove", this, &CFormMu::OnRemove)->setObjectName("mu_remove");
    menu->addAction("update", this, &CFormMu::OnUpdate)->setObjectName("mu_update");
    menu_button->setMenu(menu);

    auto* grid = new QGridLayout(this);
    grid->addWidget(options_, 0, 0, 1, 3);
    grid->addWidget(menu_button, 0, 3);
    grid->addWidget(status_, 1, 0, 1, 4);
    grid->addWidget(new QLabel("base name", this), 2, 0);
    grid->addWidget(base_, 2, 1);
    grid->addWidget(new QLabel("count", this), 2, 2);
    grid->addWidget(count_, 2, 3);
    grid->addWidget(append_, 3, 0, 1, 4);
    grid->addWidget(sheet_, 4, 0, 1, 4);
    grid->addWidget(continue_, 5, 3);

    connect(options_, &QComboBox::activated, this, [this](int i) {
        model_.SelectOptions(i);
        Sync();
    });
    connect(continue_, &QPushButton::clicked, this, &CFormMu::OnContinue);
    connect(sheet_, &QTabWidget::currentChanged, this, [this](int i) {
        if (syncing_) return;
        Store();
        model_.Activate(i);
        ShowStatus();
    });
    Sync();
}

CFormMu::~CFormMu() = default;

void CFormMu::Store() {
    for (int i = 0; i < sheet_->count(); ++i) sheet_->View(i)->Store();
    model_.base_name = base_->text().toStdString();
    bool ok = false;
    const int count = count_->text().toInt(&ok);
    if (ok) model_.count = count;
    model_.append_data = append_->isChecked() ? 1 : 0;
}

void CFormMu::OnContinue() {
    Store();
    const int pages = model_.PageCount();
    const bool run = model_.ActivePage() == CMuForm::PAGE_LFE;
    model_.Continue();
    driver_->FinishDisplays();
    Sync();
    if (run || model_.PageCount() != pages) emit dataChanged();
}

void CFormMu::OnApply() {
    Store();
    model_.Apply();
    driver_->FinishDisplays();
    Sync();
    emit dataChanged();
}

void CFormMu::OnSave() {
    Store();
    model_.SaveOptions();
    Sync();
}

void CFormMu::OnRemove() {
    model_.RemoveOptions();
    Sync();
}

void CFormMu::OnUpdate() {
    Store();
    model_.UpdateOptions();
    Sync();
}

CPageMuView* CFormMu::MakeView(int page) {
    switch (page) {
        case CMuForm::PAGE_DATA:
            return new CPageMuDataView(*model_.Data(), space_);
        case CMuForm::PAGE_PARAMS:
            return new CPageMuParamsView(*model_.Params(), space_);
        case CMuForm::PAGE_MASK:
            return new CPageMuMaskView(*model_.Mask(), space_, model_.record.nx);
        case CMuForm::PAGE_WRAP:
            return new CPageMuWrapView(*model_.Wrap(), space_);
        case CMuForm::PAGE_FILTER:
            return new CPageMuFilterView(*model_.Filter(), space_);
        case CMuForm::PAGE_OUTPUT:
            return new CPageMuOutputView(*model_.Output(), space_);
        default:
            return new CPageMuLfeView(*model_.Lfe(), space_);
    }
}

void CFormMu::Sync() {
    syncing_ = true;
    options_->clear();
    for (const std::string& name : model_.OptionNames())
        options_->addItem(QString::fromStdString(name));
    options_->setCurrentIndex(model_.Selected());
    base_->setText(QString::fromStdString(model_.base_name));
    count_->setText(QString::number(model_.count));
    append_->setChecked(model_.append_data != 0);
    // Views of pages the model dropped or made anew go; missing ones are made.
    for (int i = sheet_->count() - 1; i >= 0; --i)
        if (i >= model_.PageCount() || &sheet_->View(i)->Model() != model_.Page(i)) {
            QWidget* gone = sheet_->widget(i);
            sheet_->removeTab(i);
            delete gone;
        }
    for (int i = sheet_->count(); i < model_.PageCount(); ++i) {
        CPageMuView* view = MakeView(i);
        connect(view, &CPageMuView::helpRequested, this, &CFormMu::helpRequested);
        connect(view, &CPageMuView::applyRequested, this, &CFormMu::OnApply);
        connect(view, &CPageMuView::statusChanged, this, &CFormMu::ShowStatus);
        sheet_->addTab(view, model_.Page(i)->Title());
    }
    for (int i = 0; i < sheet_->count(); ++i) sheet_->View(i)->Load();
    sheet_->setCurrentIndex(model_.ActivePage());
    ShowStatus();
    syncing_ = false;
}

void CFormMu::ShowStatus() { status_->setText(QString::fromStdString(model_.status)); }
