// The text reader and writer: numbers separated by any one character (and blanks), complex
// values as pairs. "1 x line" (perline 0) puts x fastest, one line of x values per y; "1 y
// line" (perline 1) puts y fastest, one line of y values per x. Planes follow each other,
// the writer leaving an empty line behind each.
//
//   1.5<TAB>2<TAB>3
//   4<TAB>5<TAB>6
//
//   (empty line)
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "files/file_entry.h"
#include "files/file_kinds.h"
#include "files/file_options.h"

int ReadTextHeader(const COpenOptions& options, FileEntry& entry);
int LoadText(const COpenOptions& options, FileEntry& entry, CZrkData* const targets[3]);
int SaveText(const CSaveRequest& request);

// The numbers of a text in order, each with the one character behind it taken as its
// separator, blanks before a number skipped; false at the end or at anything that is not a
// number. Exposed for the fuzz target.
class CNumberScanner {
  public:
    explicit CNumberScanner(FILE* file) : file_(file) {}
    bool Next(double* value);

  private:
    bool Fill();

    FILE* file_;
    char buffer_[1 << 16];
    size_t at_ = 0;
    size_t end_ = 0;
    bool eof_ = false;
};
