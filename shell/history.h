// CHistory: the text and the options of the history pane. Lines keep their "\r\n". The text
// has a fixed limit; a write that would pass it hands the whole text over for the clipboard,
// empties the text and then takes the line, so the pane keeps only what came after.
//
// Partial lines gather in a buffer until a flush closes the line:
//   history.Partial("lfe: slice 3 ");  history.Flush("done\r\n");   // one line
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

#include "shell/main_frame_options.h"

class CKeyReader;

class CHistory {
  public:
    static constexpr const char* kFilledUp =
        "the history window has filled up\nit's contents wil be copied to the clipboard";

    explicit CHistory(size_t limit = 1 << 20) : limit_(limit) {}

    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;

    // Appends `line`; returns true when the text filled up first, with the old text in
    // `*to_clipboard`.
    bool Append(const std::string& line, std::string* to_clipboard);
    void Partial(const std::string& text) { partial_ += text; }
    // Closes the partial line with `text` and appends it.
    bool Flush(const std::string& text, std::string* to_clipboard);

    const std::string& Text() const { return text_; }
    const std::string& PartialText() const { return partial_; }
    void Clear() { text_.clear(); }
    size_t Limit() const { return limit_; }
    void SetLimit(size_t limit) { limit_ = limit; }

    int view_history = 1;
    int history_minimized = 0;
    CRectOption history_loc;

  private:
    size_t limit_;
    std::string text_;
    std::string partial_;
};
