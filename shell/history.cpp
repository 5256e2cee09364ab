#include "shell/history.h"

#include "core/key_reader.h"

int CHistory::ScanfOptions(CKeyReader& reader) {
    if (reader.Int("view_history=", &view_history)) return 1;
    if (reader.Int("history_minimized=", &history_minimized)) return 1;
    if (ScanRect(reader, "history_loc=", &history_loc)) return 1;
    return 0;
}

void CHistory::PrintfOptions(FILE* file) const {
    std::fprintf(file, "\n// history options\n");
    std::fprintf(file, "view_history= %d\n", view_history);
    std::fprintf(file, "history_minimized= %d\n", history_minimized);
    PrintRect(file, "history_loc=", history_loc);
}

bool CHistory::Append(const std::string& line, std::string* to_clipboard) {
    bool filled = false;
    if (text_.size() + line.size() > limit_) {
        if (to_clipboard) *to_clipboard = text_;
        text_.clear();
        filled = true;
    }
    // A single line longer than the limit keeps its tail.
    text_ += line.size() > limit_ ? line.substr(line.size() - limit_) : line;
    return filled;
}

bool CHistory::Flush(const std::string& text, std::string* to_clipboard) {
    std::string line = partial_ + text;
    partial_.clear();
    return Append(line, to_clipboard);
}
