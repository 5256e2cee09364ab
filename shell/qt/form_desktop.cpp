#include "shell/qt/form_desktop.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "core/data_space.h"
#include "core/host.h"
#include "core/zrk_data.h"
#include "display/look.h"
#include "shell/desktop.h"
#include "shell/desktop_commands.h"
#include "shell/qt/form_alloc.h"
#include "shell/qt/form_rename.h"
#include "shell/rename.h"

CFormDesktop::CFormDesktop(CDataSpace& space, CDesktop& desktop, CRename& rename, QWidget* parent)
    : QWidget(parent),
      space_(space),
      desktop_(desktop),
      rename_(rename),
      list_(new QTreeWidget(this)),
      bytes_(new QLabel(this)),
      paths_(new QComboBox(this)),
      kinds_(new QComboBox(this)),
      menu_(new QMenu(this)) {
    setObjectName("desktop_form");
    list_->setObjectName("desktop_list");
    list_->setHeaderLabels({"name", "size", "type", "caption"});
    list_->setRootIsDecorated(false);
    list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list_->setContextMenuPolicy(Qt::CustomContextMenu);
    list_->header()->setStretchLastSection(true);
    bytes_->setObjectName("desktop_bytes");
    paths_->setObjectName("desktop_paths");
    paths_->setToolTip("recent folders");
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);
    kinds_->setObjectName("desktop_kind");
    kinds_->setToolTip("display type a double click opens");
    layout->addWidget(paths_);
    layout->addWidget(kinds_);
    layout->addWidget(list_, 1);
    layout->addWidget(bytes_);

    connect(list_, &QTreeWidget::itemSelectionChanged, this, &CFormDesktop::OnSelectionChanged);
    connect(list_, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& at) { menu_->popup(list_->viewport()->mapToGlobal(at)); });
    connect(paths_, &QComboBox::activated, this,
            [this](int index) { desktop_.desktop_selpath = index; });
    connect(kinds_, &QComboBox::activated, this, [this](int index) {
        const std::vector<int> listed = desktop_.ListedKinds();
        if (index >= 0 && index < int(listed.size())) desktop_.kind = listed[index];
    });
    connect(list_, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item) {
        emit openRequested({item->text(0)}, desktop_.KindBit(), desktop_.desktop_iqmp);
    });

    connect(AddEntry("free data", "desktop_free_data"), &QAction::triggered, this,
            [this] { Run("CFormDesktop::OnFreeData", [&] { return FreeSelectedData(space_); }); });
    connect(AddEntry("free undo buffers", "desktop_free_undo"), &QAction::triggered, this,
            [this] { Run("CFormDesktop::OnFreeUndo", [&] { return FreeUndoBuffers(space_); }); });
    connect(AddEntry("display as 1d plot", "desktop_display_1d"), &QAction::triggered, this,
            [this] { OpenSelected(CDesktop::kKindBits[0]); });
    connect(AddEntry("display as 2d image", "desktop_display_2d"), &QAction::triggered, this,
            [this] { OpenSelected(CDesktop::kKindBits[1]); });
    connect(AddEntry("edit data", "desktop_edit_data"), &QAction::triggered, this,
            [this] { OpenSelected(LOOK_SPREADSHEET); });
    connect(AddEntry("allocate data", "desktop_allocate"), &QAction::triggered, this,
            &CFormDesktop::OnAllocate);
    menu_->addSeparator();
    connect(AddEntry("list details", "desktop_details"), &QAction::triggered, this,
            [this] { OnDetails(1); });
    connect(AddEntry("list no detail", "desktop_no_detail"), &QAction::triggered, this,
            [this] { OnDetails(0); });
    connect(AddEntry("list all display types", "desktop_list_all_types"), &QAction::triggered, this,
            [this] {
                desktop_.one_kind = 0;
                FillKinds();
                emit commandDone("list all display types");
            });
    connect(AddEntry("list 1 display type", "desktop_list_one_type"), &QAction::triggered, this,
            [this] {
                desktop_.one_kind = 1;
                FillKinds();
                emit commandDone("list 1 display type");
            });
    connect(AddEntry("toggle 1 display type", "desktop_toggle_type"), &QAction::triggered, this,
            [this] {
                desktop_.ToggleKind();
                FillKinds();
                emit commandDone(QString("display type ") + CDesktop::kKindNames[desktop_.kind]);
            });
    menu_->addSeparator();
    static const char* kChannels[][2] = {{"display I channel on open", "desktop_iqmp_i"},
                                         {"display Q channel on open", "desktop_iqmp_q"},
                                         {"display magnitude on open", "desktop_iqmp_m"},
                                         {"display phase on open", "desktop_iqmp_p"}};
    for (int c = 0; c < 4; ++c) {
        channels_[c] = AddEntry(kChannels[c][0], kChannels[c][1]);
        channels_[c]->setCheckable(true);
        connect(channels_[c], &QAction::triggered, this, [this, c] {
            desktop_.desktop_iqmp = c;
            CheckChannel();
        });
    }
    connect(menu_, &QMenu::aboutToShow, this, &CFormDesktop::CheckChannel);
    menu_->addSeparator();
    connect(AddEntry("declare pi", "desktop_declare_pi"), &QAction::triggered, this, [this] {
        Run("CFormDesktop::OnDeclarePi",
            [&] { return DeclareConstant(space_, "pi", 3.14159265358979323846); });
    });
    connect(AddEntry("declare e", "desktop_declare_e"), &QAction::triggered, this, [this] {
        Run("CFormDesktop::OnDeclareE",
            [&] { return DeclareConstant(space_, "e", 2.71828182845904523536); });
    });
    connect(AddEntry("duplicate", "desktop_duplicate"), &QAction::triggered, this, [this] {
        Run("CFormDesktop::OnDuplicate", [&] { return DuplicateSelected(space_); });
    });
    connect(AddEntry("rename", "desktop_rename"), &QAction::triggered, this,
            &CFormDesktop::OnRename);
    CheckChannel();
    Refresh();
}

void CFormDesktop::CheckChannel() {
    for (int c = 0; c < 4; ++c) channels_[c]->setChecked(desktop_.desktop_iqmp == c);
}

void CFormDesktop::FillKinds() {
    kinds_->clear();
    for (int k : desktop_.ListedKinds()) {
        kinds_->addItem(CDesktop::kKindNames[k]);
        if (k == desktop_.kind) kinds_->setCurrentIndex(kinds_->count() - 1);
    }
}

void CFormDesktop::OpenSelected(unsigned kind) {
    QStringList names;
    for (QTreeWidgetItem* item : list_->selectedItems()) names << item->text(0);
    if (names.isEmpty()) {
        emit commandDone("no data selected");
        return;
    }
    emit openRequested(names, kind, desktop_.desktop_iqmp);
}

QAction* CFormDesktop::AddEntry(const char* text, const char* name) {
    QAction* action = menu_->addAction(text);
    action->setObjectName(name);
    return action;
}

void CFormDesktop::Refresh() {
    Host().Trace("CFormDesktop::Refresh");
    refreshing_ = true;
    const std::vector<CDesktopRow> rows = desktop_.Rows(space_);
    const int count = static_cast<int>(rows.size());
    list_->setColumnCount(desktop_.desktop_details ? 4 : 1);
    list_->setHeaderHidden(!desktop_.desktop_details);
    // The rows are kept and rewritten where they differ, the missing ones added in one go:
    // every command ends with a refresh, and rebuilding thousands of rows each time is slow.
    while (list_->topLevelItemCount() > count)
        delete list_->takeTopLevelItem(list_->topLevelItemCount() - 1);
    QList<QTreeWidgetItem*> added;
    for (int i = list_->topLevelItemCount(); i < count; ++i) added << new QTreeWidgetItem;
    list_->addTopLevelItems(added);
    const QVariant dim = palette().color(QPalette::Disabled, QPalette::Text);
    for (int i = 0; i < count; ++i) {
        const CDesktopRow& row = rows[i];
        QTreeWidgetItem* item = list_->topLevelItem(i);
        const std::string* texts[] = {&row.name, &row.size, &row.type, &row.caption};
        for (int c = 0; c < 4; ++c) {
            const QString text = QString::fromStdString(*texts[c]);
            if (item->text(c) != text) item->setText(c, text);
        }
        const QVariant foreground = row.reserved ? dim : QVariant();
        if (item->data(0, Qt::ForegroundRole) != foreground)
            item->setData(0, Qt::ForegroundRole, foreground);
        const bool selected = row.record->select & kDesktopSelect;
        if (item->isSelected() != selected) item->setSelected(selected);
    }
    for (int c = 0; c + 1 < list_->columnCount(); ++c) list_->resizeColumnToContents(c);
    FillKinds();
    bytes_->setText(QString::fromStdString(desktop_.ByteLine(space_)));
    paths_->clear();
    for (int i = 0; i < desktop_.desktop_npath; ++i)
        paths_->addItem(QString::fromStdString(desktop_.desktop_path[i]));
    paths_->setCurrentIndex(desktop_.desktop_npath ? desktop_.desktop_selpath : -1);
    paths_->setVisible(desktop_.desktop_npath > 0);
    refreshing_ = false;
}

void CFormDesktop::OnSelectionChanged() {
    if (refreshing_) return;
    space_.ClearSel(kDesktopSelect);
    for (QTreeWidgetItem* item : list_->selectedItems())
        if (CZrkData* record = space_.FindData(item->text(0).toStdString().c_str()))
            record->select |= kDesktopSelect;
}

void CFormDesktop::OnAllocate() {
    CFormAlloc form(space_, this);
    connect(&form, &CFormAlloc::allocated, this, &CFormDesktop::commandDone);
    form.exec();
}

void CFormDesktop::OnRename() {
    const QList<QTreeWidgetItem*> picked = list_->selectedItems();
    if (!picked.isEmpty()) rename_.old_name = picked.front()->text(0).toStdString();
    CFormRename form(space_, rename_, this);
    connect(&form, &CFormRename::renamed, this, &CFormDesktop::commandDone);
    form.exec();
}

void CFormDesktop::OnDetails(int details) {
    desktop_.desktop_details = details;
    emit commandDone(details ? "list details" : "list no detail");
}
