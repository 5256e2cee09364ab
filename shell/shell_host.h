// CShellHost: the part of the host that belongs to the application, not to the toolkit: the
// trace of the last known location and the flaky path. The Qt host derives from it and
// answers the questions.
//
// Flaky path: a failure escaped a guarded method. The user is asked whether to save the
// workspace in the crash file; on yes it is written and "save complete" or "save failed"
// shown; on no nothing happens. The program goes on either way.
#pragma once

#include <string>

#include "core/host.h"

class CHistory;
class CTrace;

// The question of the flaky path.
std::string FlakyText(const char* program, const char* location, int counter);

class CShellHost : public CHost {
  public:
    explicit CShellHost(CTrace& trace) : trace_(trace) {}

    void Trace(const char* location) override;
    void Flaky(const char* what) override;
    // The history text and its clear go to `history` once one is set.
    const std::string& HistoryText() const override;
    void ClearHistory() override;
    void SetHistory(CHistory* history) { history_ = history; }

    CTrace& TraceObject() { return trace_; }

  private:
    CTrace& trace_;
    CHistory* history_ = nullptr;
};
