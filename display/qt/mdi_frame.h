// CMdiFrame: the child frame of a display in the main window's multiple-document area: a
// menu bar, the view and a status line of its own. Closing it stops the view and takes the
// document off the window list (which destroys it).
#pragma once

#include <QMdiSubWindow>

class CMdiDoc;
class QLabel;
class QMenuBar;

class CMdiFrame : public QMdiSubWindow {
    Q_OBJECT
  public:
    CMdiFrame(CMdiDoc* doc, QWidget* view);

    QMenuBar* Menus() const { return menus_; }
    QLabel* StatusLine() const { return status_; }
    QWidget* View() const { return view_; }
    // The document went first (closed from the core): closing must not touch it.
    void ForgetDoc() { doc_ = nullptr; }

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    CMdiDoc* doc_;
    QWidget* view_;
    QMenuBar* menus_;
    QLabel* status_;
};
