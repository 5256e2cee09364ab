// CBarEqu: the equation bar, a docked bar with one edit field. Enter evaluates the text
// through EquationBarEval on the data space the bar is given: "calculating..." in the status
// while it runs; on failure the report goes to the status and the text stays for correction;
// on success the line goes to the history, the field is emptied and the status cleared.
// SetText puts a picked history line back. The button beside the field opens the function
// browser; the name chosen there goes in at the cursor.
#pragma once

#include <QDockWidget>

class CDataSpace;
class QLineEdit;

class CBarEqu : public QDockWidget {
    Q_OBJECT
  public:
    explicit CBarEqu(CDataSpace& space, QWidget* parent = nullptr);

    void OnEquEval();
    void OnEquFunctions();
    void SetText(const QString& text);
    QLineEdit* Edit() const { return edit_; }

  signals:
    // After every evaluation, so the frame refreshes the desktop and the displays.
    void evaluated();

  private:
    CDataSpace& space_;
    QLineEdit* edit_;
};
