#include "files/qt/dialog_load.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "core/host.h"
#include "files/load_model.h"

CDialogLoad::CDialogLoad(CLoadModel& model, QWidget* parent)
    : QDialog(parent),
      model_(model),
      file_(new QLabel(this)),
      status_(new QLabel(this)),
      format_(new QLineEdit(QString::fromStdString(model.options.data_format), this)),
      name_(new QLineEdit(QString::fromStdString(model.typed_name), this)),
      report_(new QCheckBox("report to history", this)) {
    setObjectName("load_dialog");
    setWindowTitle("load");
    file_->setObjectName("load_file");
    status_->setObjectName("load_status");
    format_->setObjectName("load_format");
    name_->setObjectName("load_name");
    report_->setObjectName("load_report");
    report_->setChecked(model.options.report);
    auto* form = new QFormLayout(this);
    form->addRow(file_);
    form->addRow(status_);
    const char* rules[4] = {"file title", "exam, series, image", "name format", "name"};
    auto* rule_group = new QButtonGroup(this);
    for (int k = 0; k < 4; ++k) {
        rule_[k] = new QRadioButton(rules[k], this);
        rule_[k]->setObjectName(QString("load_rule%1").arg(k + 1));
        rule_group->addButton(rule_[k]);
        form->addRow(rule_[k]);
    }
    form->addRow("name format", format_);
    form->addRow("name", name_);
    form->addRow(report_);
    const char* shows[3] = {"no display", "1d display", "2d display"};
    auto* display_group = new QButtonGroup(this);
    auto* displays = new QHBoxLayout;
    for (int k = 0; k < 3; ++k) {
        display_[k] = new QRadioButton(shows[k], this);
        display_[k]->setObjectName(QString("load_display%1").arg(k));
        display_[k]->setChecked(model.options.display[k]);
        display_group->addButton(display_[k]);
        displays->addWidget(display_[k]);
    }
    form->addRow(displays);
    const struct {
        const char* text;
        const char* name;
        int (CLoadModel::*action)();
    } buttons[] = {
        {"load 1", "load_one", &CLoadModel::Load1},
        {"load all individually", "load_all", &CLoadModel::LoadAllIndividually},
        {"skip", "load_skip", &CLoadModel::Skip},
        {"load in stack", "load_stack", &CLoadModel::LoadInStack},
    };
    auto* row = new QHBoxLayout;
    for (const auto& b : buttons) {
        auto* button = new QPushButton(b.text, this);
        button->setObjectName(b.name);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, action = b.action] { Run(action); });
        row->addWidget(button);
    }
    auto* quit = new QPushButton("quit", this);
    quit->setObjectName("load_quit");
    quit->setAutoDefault(false);
    connect(quit, &QPushButton::clicked, this, [this] {
        model_.Quit();
        reject();
    });
    row->addWidget(quit);
    form->addRow(row);
    ShowCurrent();
}

void CDialogLoad::StoreFields() {
    COpenOptions& o = model_.options;
    for (int k = 0; k < 4; ++k)
        if (rule_[k]->isChecked()) o.name_is_file = k + 1;
    o.data_format = format_->text().toStdString();
    model_.typed_name = name_->text().toStdString();
    o.report = report_->isChecked();
    for (int k = 0; k < 3; ++k) o.display[k] = display_[k]->isChecked();
}

void CDialogLoad::ShowCurrent() {
    const FileEntry* e = model_.Current();
    const int rule = model_.options.name_is_file;
    rule_[rule >= 1 && rule <= 4 ? rule - 1 : 0]->setChecked(true);
    file_->setText(e ? QString::fromStdString(e->path) : QString());
    status_->setText(QString::fromStdString(e ? e->status : model_.status));
}

void CDialogLoad::Run(int (CLoadModel::*action)()) {
    Host().Trace("CDialogLoad::Run");
    StoreFields();
    (model_.*action)();
    Host().RefreshDisplays();
    if (model_.Done()) {
        accept();
        return;
    }
    ShowCurrent();
    // The outcome of what was just done stays in view until the next button.
    if (!model_.status.empty()) status_->setText(QString::fromStdString(model_.status));
}
