// The one seam through which the core talks to the user. The GUI installs a Qt host at
// start-up; tests and command-line programs use CHeadlessHost, which records what it is
// told and answers questions with a preset answer. With no host installed every call is a
// quiet no-op, so the core works without a shell.
#pragma once

#include <string>
#include <vector>

class CHost {
  public:
    virtual ~CHost() = default;
    // One line for the history pane; lines keep their "\r\n".
    virtual void History(const std::string& line) { (void)line; }
    // The whole history text. A reference, so the crash path can read it without the heap.
    virtual const std::string& HistoryText() const;
    virtual void ClearHistory() {}
    virtual void Status(const std::string& text) { (void)text; }
    virtual void UndoTip(const std::string& text) { (void)text; }
    // Yes (true) or no.
    virtual bool AskYesNo(const std::string& question) {
        (void)question;
        return false;
    }
    virtual void Message(const std::string& text) { (void)text; }
    // Polled between planes and rows by long operations.
    virtual bool Interrupted() { return false; }
    // Redraw the displays of arrays whose `changed` is set.
    virtual void RefreshDisplays() {}
    // Last known location, as "CDataSpace::NewData".
    virtual void Trace(const char* location) { (void)location; }
    // A failure escaped a guarded method; `what` is its text. The shell runs its flaky path.
    virtual void Flaky(const char* what) { (void)what; }
};

// The installed host; a do-nothing host when none is.
CHost& Host();
// Installs `host` (not owned); null restores the do-nothing host. Returns the previous one.
CHost* SetHost(CHost* host);

class CHeadlessHost : public CHost {
  public:
    void History(const std::string& line) override {
        history.push_back(line);
        history_text += line;
    }
    const std::string& HistoryText() const override { return history_text; }
    void ClearHistory() override { history_text.clear(); }
    void Status(const std::string& text) override { status.push_back(text); }
    void UndoTip(const std::string& text) override { undo_tips.push_back(text); }
    bool AskYesNo(const std::string& question) override {
        questions.push_back(question);
        return answer;
    }
    void Message(const std::string& text) override { messages.push_back(text); }
    bool Interrupted() override { return interrupt; }
    void RefreshDisplays() override { ++refreshes; }
    void Trace(const char* location) override { trace = location ? location : ""; }
    void Flaky(const char* what) override { flaky.push_back(what ? what : ""); }

    std::vector<std::string> history, status, undo_tips, questions, messages, flaky;
    std::string trace;
    // What History appended since the last ClearHistory.
    std::string history_text;
    int refreshes = 0;
    bool answer = false;
    bool interrupt = false;
};

// Installs a host for the life of a scope and restores the previous one.
class CScopedHost {
  public:
    explicit CScopedHost(CHost& host) : previous_(SetHost(&host)) {}
    ~CScopedHost() { SetHost(previous_); }
    CScopedHost(const CScopedHost&) = delete;
    CScopedHost& operator=(const CScopedHost&) = delete;

  private:
    CHost* previous_;
};
