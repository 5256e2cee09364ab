#include "shell/shell_host.h"

#include <cstdio>
#include <vector>

#include "shell/crash_hooks.h"
#include "shell/history.h"
#include "shell/trace.h"

std::string FlakyText(const char* program, const char* location, int counter) {
    const char* format =
        "%s is FLAKY; last action incomplete.\nlast known location:\n\t%s\nsave workspace in "
        "backup crash file?\n\ng_InitBitmap %d";
    const int n = std::snprintf(nullptr, 0, format, program, location, counter);
    std::vector<char> text(static_cast<size_t>(n) + 1);
    std::snprintf(text.data(), text.size(), format, program, location, counter);
    return text.data();
}

void CShellHost::Trace(const char* location) { trace_.Set(location); }

void CShellHost::Flaky(const char* what) {
    History(std::string("error caught: ") + (what ? what : "unknown error") + "\r\n");
    if (!AskYesNo(FlakyText(trace_.Program(), trace_.Text(), trace_.Counter()))) return;
    const CCrashHooks& hooks = CrashHooks();
    const bool saved = hooks.write && trace_.CrashFile()[0] && hooks.write(trace_.CrashFile()) == 0;
    Message(saved ? "save complete" : "save failed");
}

const std::string& CShellHost::HistoryText() const {
    return history_ ? history_->Text() : CHost::HistoryText();
}

void CShellHost::ClearHistory() {
    if (history_) history_->Clear();
}
