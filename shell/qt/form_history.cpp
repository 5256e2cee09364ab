#include "shell/qt/form_history.h"

#include <QApplication>
#include <QClipboard>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTextBlock>
#include <QVBoxLayout>

#include "core/host.h"

namespace {

// Lines keep their "\r\n"; the pane shows plain line breaks.
QString Shown(const std::string& text) {
    QString s = QString::fromStdString(text);
    s.remove(QLatin1Char('\r'));
    return s;
}

}  // namespace

CFormHistory::CFormHistory(CHistory& history, QWidget* parent)
    : QWidget(parent), history_(history), edit_(new QPlainTextEdit(this)) {
    setObjectName("history_form");
    edit_->setObjectName("history_text");
    edit_->setReadOnly(true);
    edit_->setLineWrapMode(QPlainTextEdit::NoWrap);
    edit_->setFont(QFont("Monospace", 9));
    edit_->viewport()->installEventFilter(this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(edit_);
    edit_->setPlainText(Shown(history_.Text()));
}

void CFormHistory::Append(const std::string& line) {
    std::string old_text;
    const bool filled = history_.Append(line, &old_text);
    Show(line, filled, old_text);
}

void CFormHistory::Flush(const std::string& text) {
    std::string old_text;
    const std::string line = history_.PartialText() + text;
    const bool filled = history_.Flush(text, &old_text);
    Show(line, filled, old_text);
}

void CFormHistory::Show(const std::string& line, bool filled, const std::string& old_text) {
    if (filled) {
        Host().Message(CHistory::kFilledUp);
        QApplication::clipboard()->setText(Shown(old_text));
        edit_->setPlainText(Shown(history_.Text()));
    } else {
        QTextCursor end(edit_->document());
        end.movePosition(QTextCursor::End);
        end.insertText(Shown(line));
    }
    edit_->verticalScrollBar()->setValue(edit_->verticalScrollBar()->maximum());
}

bool CFormHistory::eventFilter(QObject* watched, QEvent* event) {
    if (watched == edit_->viewport() && event->type() == QEvent::MouseButtonDblClick) {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        const QString line = edit_->cursorForPosition(mouse->position().toPoint()).block().text();
        if (!line.trimmed().isEmpty()) emit linePicked(line);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void CFormHistory::Clear() {
    history_.Clear();
    edit_->clear();
}
