// CQtHost: the host of the running program. History lines go to the history pane, status
// texts and undo tips to the panes of the status bar, questions and messages to message
// boxes. Esc interrupts a long run. With an automatic answer set (widget tests), questions are
// answered and messages recorded without a modal box.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "shell/shell_host.h"

class CMainFrame;

class CQtHost : public CShellHost {
  public:
    CQtHost(CTrace& trace, CMainFrame* frame) : CShellHost(trace), frame_(frame) {}

    void History(const std::string& line) override;
    void Status(const std::string& text) override;
    void UndoTip(const std::string& text) override;
    bool AskYesNo(const std::string& question) override;
    void Message(const std::string& text) override;
    void RefreshDisplays() override;
    void ClearHistory() override;
    // Long runs hold the event loop and ask here between their steps: pending events are
    // handled (repaints) with the user's input held back, and Esc among it interrupts.
    bool Interrupted() override;

    void SetAutoAnswer(std::optional<bool> answer) { auto_answer_ = answer; }
    // What was asked and told while the automatic answer was set.
    std::vector<std::string> questions, messages;

  private:
    CMainFrame* frame_;
    std::optional<bool> auto_answer_;
};
