#include "shell/qt/qt_host.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMessageBox>

#include "shell/qt/form_history.h"
#include "shell/qt/main_frame.h"

void CQtHost::History(const std::string& line) { frame_->History()->Append(line); }

namespace {

// Swallows the user's input while a run holds the loop; notes an Esc among it.
class CEscWatch : public QObject {
  public:
    CEscWatch() { qApp->installEventFilter(this); }
    ~CEscWatch() override { qApp->removeEventFilter(this); }
    bool pressed = false;

  protected:
    bool eventFilter(QObject* target, QEvent* event) override {
        switch (event->type()) {
            case QEvent::KeyPress:
                if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) pressed = true;
                return true;
            case QEvent::KeyRelease:
            case QEvent::MouseButtonPress:
            case QEvent::MouseButtonRelease:
            case QEvent::MouseButtonDblClick:
            case QEvent::Wheel:
            case QEvent::Shortcut:
            case QEvent::Close:
                return true;
            default:
                return QObject::eventFilter(target, event);
        }
    }
};

}  // namespace

bool CQtHost::Interrupted() {
    CEscWatch watch;
    QCoreApplication::processEvents();
    return watch.pressed;
}

void CQtHost::Status(const std::string& text) { frame_->SetStatus(0, text); }

void CQtHost::UndoTip(const std::string& text) { frame_->SetStatus(1, text); }

bool CQtHost::AskYesNo(const std::string& question) {
    if (auto_answer_) {
        questions.push_back(question);
        return *auto_answer_;
    }
    return QMessageBox::question(frame_, "Quelmor", QString::fromStdString(question),
                                 QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}

void CQtHost::Message(const std::string& text) {
    if (auto_answer_) {
        messages.push_back(text);
        return;
    }
    QMessageBox::information(frame_, "Quelmor", QString::fromStdString(text));
}

void CQtHost::RefreshDisplays() { frame_->RefreshAll(); }

void CQtHost::ClearHistory() { frame_->History()->Clear(); }
