// CKeyReader: the keyed text reader of the preferences file. It holds the current token
// (one word). Each keyed read compares the token with its key, does nothing when they
// differ, and reads its values and returns 1 when they match. Reading past the end throws
// CKeyReader::EndOfFile, which the caller's loop catches to stop.
//
//   CKeyReader r(file);
//   try { for (;;) { r.Next(); if (r.Int("histogram_bins=", &n)) continue; ... } }
//   catch (const CKeyReader::EndOfFile&) {}
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

// A font as the looks and options keep it. One line, "font= HEIGHT WEIGHT ITALIC NAME\n": the
// numbers first, so the face name may hold blanks and runs to the end of the line.
struct CFont {
    int height = 14;
    int weight = 400;
    int italic = 0;
    char name[64] = "arial";
};

// Formats the font line of `font` into `out` (no heap: looks are written on the crash path
// too); returns its length, cut to size - 1.
size_t FontLine(char* out, size_t size, const CFont& font);

class CKeyReader {
  public:
    struct EndOfFile {};

    explicit CKeyReader(FILE* file) : file_(file) {}

    // Reads the next blank-separated word into the token.
    const std::string& Next();
    const std::string& Token() const { return token_; }
    bool IsKey(const char* key) const { return token_ == key; }

    // Blanks skipped, then the rest of the line.
    int String(const char* key, std::string* out);
    int Int(const char* key, int* a);
    int Int2(const char* key, int* a, int* b);
    int Int3(const char* key, int* a, int* b, int* c);
    // `n` integers into `out`.
    int Ints(const char* key, int* out, int n);
    int Float(const char* key, float* a);
    int Float2(const char* key, float* a, float* b);
    int Float3(const char* key, float* a, float* b, float* c);
    int Hex(const char* key, unsigned* a);
    // A fixed character field: the rest of the line, cut to size - 1 characters.
    int Chars(const char* key, char* out, int size);
    // The font line written by FontLine.
    int Font(const char* key, CFont* font);
    // Blanks skipped, then the rest of the line without its line end and trailing blanks.
    std::string RestOfLine();
    // The file under the reader, for the raw parts of files that mix text and bytes.
    FILE* File() const { return file_; }

  private:
    // One word as a value; throws EndOfFile at the end.
    std::string Word();
    long long Integer();
    double Number();

    FILE* file_;
    std::string token_;
};
