#include "eval/qt/form_script.h"

#include <QAction>
#include <QComboBox>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QProcess>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "core/host.h"
#include "core/script_space.h"
#include "eval/script_manager.h"

CFormScript::CFormScript(CScript& script, CScriptSpace& space, QWidget* parent)
    : QWidget(parent),
      script_(script),
      space_(space),
      folders_(new QComboBox(this)),
      list_(new QTreeWidget(this)),
      status_(new QLabel(this)) {
    setObjectName("form_script");
    folders_->setObjectName("script_folders");
    list_->setObjectName("script_list");
    status_->setObjectName("script_status");
    list_->setRootIsDecorated(false);
    list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list_->setContextMenuPolicy(Qt::ActionsContextMenu);
    list_->header()->setSectionsClickable(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(folders_);
    layout->addWidget(list_, 1);
    layout->addWidget(status_);

    auto command = [this](const char* text, const char* name, auto slot) {
        auto* action = new QAction(text, list_);
        action->setObjectName(name);
        connect(action, &QAction::triggered, this, slot);
        list_->addAction(action);
        return action;
    };
    command("new script", "script_new", [this] { OnNewScript(); });
    command("edit script", "script_edit", [this] { OnEditScript(); });
    command("delete from disk", "script_delete", [this] { OnDeleteScript(); });
    command("duplicate", "script_duplicate", [this] { OnDuplicateScript(); });
    command("list details", "script_details", [this] { OnListDetails(true); });
    command("list no detail", "script_no_detail", [this] { OnListDetails(false); });
    command("refresh from disk", "script_refresh", [this] { Refresh(); });

    start_editor = [](const std::vector<std::string>& command) {
        QStringList args;
        for (size_t k = 1; k < command.size(); ++k) args << QString::fromStdString(command[k]);
        return QProcess::startDetached(QString::fromStdString(command[0]), args);
    };
    choose_folder = [this] {
        return QFileDialog::getExistingDirectory(this, "script folder",
                                                 QString::fromStdString(space_.Directory()));
    };

    connect(folders_, &QComboBox::activated, this, &CFormScript::OnFolder);
    connect(list_, &QTreeWidget::itemDoubleClicked, this, [this] { OnEditScript(); });
    connect(list_->header(), &QHeaderView::sectionClicked, this, [this](int section) {
        if (section != 1) return;
        script_.NextSizeUnit();
        ShowList();
    });
    // An editor that saves by renaming changes the folder; one that writes in place, the file.
    // Quietly: a save elsewhere must not wipe the frame's status, only a failure tells.
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, [this] { Reread(false); });
    connect(&watcher_, &QFileSystemWatcher::fileChanged, this, [this] { Reread(false); });
    ShowFolders();
    ShowList();
    Watch();
}

void CFormScript::Refresh() { Reread(true); }

void CFormScript::Reread(bool tell) {
    Host().Trace("CFormScript::Refresh");
    const std::string status = script_.Refresh(space_);
    if (tell || !status.empty()) SetStatus(status);
    ShowList();
    Watch();
}

void CFormScript::ShowFolders() {
    const QSignalBlocker block(folders_);
    folders_->clear();
    for (const std::string& entry : script_.FolderEntries())
        folders_->addItem(QString::fromStdString(entry));
    folders_->setCurrentIndex(script_.FolderIndex(space_));
    folders_->setToolTip(QString::fromStdString(space_.Directory()));
}

void CFormScript::ShowList() {
    const std::vector<std::string> keep = Selected();
    list_->clear();
    if (script_.script_details) {
        list_->setColumnCount(3);
        list_->setHeaderLabels({"script", script_.SizeUnit(), "1st line"});
    } else {
        list_->setColumnCount(1);
        list_->setHeaderLabels({"script"});
    }
    for (const CScriptRow& row : script_.Rows(space_)) {
        auto* item = new QTreeWidgetItem(list_);
        item->setText(0, QString::fromStdString(row.name));
        if (!script_.script_details) continue;
        item->setText(1, QString::fromStdString(row.size));
        item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
        item->setText(2, QString::fromStdString(row.first_line));
    }
    for (int i = 0; i < list_->topLevelItemCount(); ++i) {
        QTreeWidgetItem* item = list_->topLevelItem(i);
        for (const std::string& name : keep)
            if (item->text(0).toStdString() == name) item->setSelected(true);
    }
    for (int c = 0; c + 1 < list_->columnCount(); ++c) list_->resizeColumnToContents(c);
}

void CFormScript::Watch() {
    if (!watcher_.files().isEmpty()) watcher_.removePaths(watcher_.files());
    if (!watcher_.directories().isEmpty()) watcher_.removePaths(watcher_.directories());
    if (space_.Directory().empty()) return;
    QStringList paths{QString::fromStdString(space_.Directory())};
    for (int i = 0; i < space_.Count(); ++i)
        paths << QString::fromStdString(space_.Directory() + "/" + space_.Get(i)->name);
    watcher_.addPaths(paths);
}

void CFormScript::SetStatus(const std::string& text) {
    status_->setText(QString::fromStdString(text));
    emit statusChanged(status_->text());
}

QString CFormScript::StatusText() const { return status_->text(); }

std::vector<std::string> CFormScript::Selected() const {
    std::vector<std::string> names;
    for (QTreeWidgetItem* item : list_->selectedItems())
        names.push_back(item->text(0).toStdString());
    return names;
}

void CFormScript::OnFolder(int index) {
    Host().Trace("CFormScript::OnFolder");
    const std::vector<std::string> entries = script_.FolderEntries();
    if (index < 0 || index >= static_cast<int>(entries.size())) return;
    std::string status;
    if (entries[index] == CScript::kNone) {
        script_.SetNoFolder(space_);
    } else if (entries[index] == CScript::kBrowse) {
        const QString folder = choose_folder ? choose_folder() : QString();
        if (!folder.isEmpty()) status = script_.SetFolder(space_, folder.toStdString());
    } else {
        status = script_.SetFolder(space_, entries[index]);
    }
    SetStatus(status);
    ShowFolders();
    ShowList();
    Watch();
}

void CFormScript::OnNewScript() {
    Host().Trace("CFormScript::OnNewScript");
    SetStatus(script_.NewScript(space_));
    ShowList();
    Watch();
}

void CFormScript::OnEditScript() {
    Host().Trace("CFormScript::OnEditScript");
    const std::vector<std::string> names = Selected();
    if (names.empty()) return SetStatus("no script selected");
    const std::vector<std::string> command = script_.EditCommand(space_, names.front());
    SetStatus(start_editor && start_editor(command) ? "starting editor"
                                                    : "could not start " + command.front());
}

void CFormScript::OnDeleteScript() {
    Host().Trace("CFormScript::OnDeleteScript");
    SetStatus(script_.Delete(space_, Selected()));
    ShowList();
    Watch();
}

void CFormScript::OnDuplicateScript() {
    Host().Trace("CFormScript::OnDuplicateScript");
    const std::vector<std::string> names = Selected();
    SetStatus(script_.Duplicate(space_, names.empty() ? std::string() : names.front()));
    ShowList();
    Watch();
}

void CFormScript::OnListDetails(bool details) {
    script_.script_details = details ? 1 : 0;
    ShowList();
}
