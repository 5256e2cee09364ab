// CFormScript: the script manager's form, a thin widget over CScript and the script space it
// is handed. A folder combo (remembered folders, "browse ...", "---none---"), the list with
// the columns "script", the size unit and "1st line", and a context menu of the commands.
// A click on the size column's title steps its unit; a double click edits.
//
// The list follows the disk: the folder and its files are watched, so a script saved by the
// editor, or made or removed elsewhere, is re-read (and callable) at once.
//
// The editor start and the folder dialog are members the tests replace.
#pragma once

#include <QFileSystemWatcher>
#include <QWidget>
#include <functional>
#include <string>
#include <vector>

class CScript;
class CScriptSpace;
class QComboBox;
class QLabel;
class QTreeWidget;

class CFormScript : public QWidget {
    Q_OBJECT
  public:
    CFormScript(CScript& script, CScriptSpace& space, QWidget* parent = nullptr);

    // Re-reads the folder and shows the list, the combo and the unit.
    void Refresh();
    void OnNewScript();
    void OnEditScript();
    void OnDeleteScript();
    void OnDuplicateScript();
    void OnListDetails(bool details);
    // The combo entry `index` was picked.
    void OnFolder(int index);

    QTreeWidget* List() const { return list_; }
    QString StatusText() const;

    // Starts a program with its arguments in a process of its own; true when it started.
    std::function<bool(const std::vector<std::string>&)> start_editor;
    // Asks for a folder; empty when cancelled.
    std::function<QString()> choose_folder;

  signals:
    // A command left a status text for the frame (empty clears it).
    void statusChanged(const QString& text);

  private:
    void Reread(bool tell);
    void ShowList();
    void ShowFolders();
    void Watch();
    void SetStatus(const std::string& text);
    std::vector<std::string> Selected() const;

    CScript& script_;
    CScriptSpace& space_;
    QComboBox* folders_;
    QTreeWidget* list_;
    QLabel* status_;
    QFileSystemWatcher watcher_;
};
