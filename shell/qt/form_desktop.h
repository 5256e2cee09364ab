// CFormDesktop: the data desktop. It lists the records of the data space it is given through
// CDesktop, keeps the desktop selection bits of the records in step with the list, and
// runs the context commands. After each command it emits commandDone with the status text,
// and the frame refreshes everything.
#pragma once

#include <QWidget>
#include <string>

#include "core/report.h"

class CDataSpace;
class CDesktop;
class CRename;
class QComboBox;
class QLabel;
class QMenu;
class QTreeWidget;

class CFormDesktop : public QWidget {
    Q_OBJECT
  public:
    CFormDesktop(CDataSpace& space, CDesktop& desktop, CRename& rename, QWidget* parent = nullptr);

    // Lists the records again and rewrites the byte line.
    void Refresh();
    QTreeWidget* List() const { return list_; }
    QMenu* ContextMenu() const { return menu_; }

    // The kind selector (`desktop_kind`) as the desktop options say.
    void FillKinds();

  signals:
    void commandDone(const QString& status);
    // Arrays to display in a kind (a LOOK_ bit) through the channel (0 i, 1 q, 2 m, 3 p).
    void openRequested(const QStringList& names, unsigned kind, int iqmp);

  private:
    void OnSelectionChanged();
    // Runs a command as a guarded method, then reports its status text.
    template <class F>
    void Run(const char* location, F body) {
        const std::string status = Guarded(location, std::string("command failed"), body);
        emit commandDone(QString::fromStdString(status));
    }
    void OnAllocate();
    void OnRename();
    void OnDetails(int details);
    void OpenSelected(unsigned kind);
    void CheckChannel();
    QAction* AddEntry(const char* text, const char* name);

    CDataSpace& space_;
    CDesktop& desktop_;
    CRename& rename_;
    QTreeWidget* list_;
    QLabel* bytes_;
    QComboBox* paths_;
    QComboBox* kinds_;
    QAction* channels_[4];
    QMenu* menu_;
    bool refreshing_ = false;
};
