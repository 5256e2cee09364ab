// CDialogFunc: the function browser. The list has the columns "function" and "description";
// selecting a row fills the help box and the variant list of its family. "insert" (or a
// double click on a row or a variant) closes the dialog with the chosen name: the general
// function's, or the variant's where one is picked.
#pragma once

#include <QDialog>
#include <QString>

#include "eval/function_browser.h"

class QListWidget;
class QPlainTextEdit;
class QTreeWidget;

class CDialogFunc : public QDialog {
    Q_OBJECT
  public:
    explicit CDialogFunc(QWidget* parent = nullptr);

    // The name to put into the equation bar after the dialog was accepted.
    QString Chosen() const { return chosen_; }
    // Selects the row of `name`; false when it is not listed.
    bool Select(const QString& name);

  private:
    void OnRow();
    void OnInsert();

    CFunctionBrowser browser_;
    QTreeWidget* list_;
    QPlainTextEdit* help_;
    QListWidget* variants_;
    QString chosen_;
};
