// CFrameScript: the script manager's window, a docked pane around CFormScript. It takes its
// place and visibility from the script options and gives them back at exit.
#pragma once

#include <QDockWidget>

class CFormScript;
class CScript;
class CScriptSpace;

class CFrameScript : public QDockWidget {
    Q_OBJECT
  public:
    CFrameScript(CScript& script, CScriptSpace& space, QWidget* parent = nullptr);

    // Shows or hides the pane and sizes it as the options say.
    void RestorePlace();
    // The pane's visibility and rectangle into the options.
    void KeepPlace();
    CFormScript* Form() const { return form_; }

  private:
    CScript& script_;
    CFormScript* form_;
};
