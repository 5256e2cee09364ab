// CFormHistory: the history pane, a read-only text in which reports are appended. Its text
// and limit are kept by a CHistory; when it fills up, the user is told, the old text goes to
// the clipboard and the pane starts again. Double-clicking a line picks it.
#pragma once

#include <QPlainTextEdit>
#include <QWidget>
#include <string>

#include "shell/history.h"

class CFormHistory : public QWidget {
    Q_OBJECT
  public:
    CFormHistory(CHistory& history, QWidget* parent = nullptr);

    void Append(const std::string& line);
    void Partial(const std::string& text) { history_.Partial(text); }
    void Flush(const std::string& text);
    // Empties the text and the pane.
    void Clear();
    CHistory& Record() { return history_; }
    QPlainTextEdit* Edit() const { return edit_; }

  signals:
    // The text of a line the user picked, without its line end.
    void linePicked(const QString& line);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void Show(const std::string& line, bool filled, const std::string& old_text);

    CHistory& history_;
    QPlainTextEdit* edit_;
};
