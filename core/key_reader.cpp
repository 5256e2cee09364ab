#include "core/key_reader.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>

namespace {

// Skips blanks (not line ends when `in_line`); returns the next character or EOF.
int SkipBlanks(FILE* f, bool in_line) {
    int c;
    while ((c = std::fgetc(f)) != EOF) {
        if (c == '\n' && in_line) break;
        if (!std::isspace(static_cast<unsigned char>(c))) break;
    }
    return c;
}

}  // namespace

std::string CKeyReader::Word() {
    int c = SkipBlanks(file_, false);
    if (c == EOF) throw EndOfFile{};
    std::string word;
    while (c != EOF && !std::isspace(static_cast<unsigned char>(c))) {
        word.push_back(static_cast<char>(c));
        c = std::fgetc(file_);
    }
    if (c != EOF) std::ungetc(c, file_);
    return word;
}

const std::string& CKeyReader::Next() {
    token_ = Word();
    return token_;
}

long long CKeyReader::Integer() { return std::strtoll(Word().c_str(), nullptr, 10); }

double CKeyReader::Number() { return std::strtod(Word().c_str(), nullptr); }

int CKeyReader::String(const char* key, std::string* out) {
    if (!IsKey(key)) return 0;
    int c = SkipBlanks(file_, true);
    std::string text;
    while (c != EOF && c != '\n') {
        text.push_back(static_cast<char>(c));
        c = std::fgetc(file_);
    }
    while (!text.empty() && (text.back() == '\r' || text.back() == ' ')) text.pop_back();
    *out = text;
    return 1;
}

int CKeyReader::Int(const char* key, int* a) {
    if (!IsKey(key)) return 0;
    *a = static_cast<int>(Integer());
    return 1;
}

int CKeyReader::Int2(const char* key, int* a, int* b) {
    if (!IsKey(key)) return 0;
    *a = static_cast<int>(Integer());
    *b = static_cast<int>(Integer());
    return 1;
}

int CKeyReader::Int3(const char* key, int* a, int* b, int* c) {
    if (!IsKey(key)) return 0;
    *a = static_cast<int>(Integer());
    *b = static_cast<int>(Integer());
    *c = static_cast<int>(Integer());
    return 1;
}

int CKeyReader::Float(const char* key, float* a) {
    if (!IsKey(key)) return 0;
    *a = static_cast<float>(Number());
    return 1;
}

int CKeyReader::Float2(const char* key, float* a, float* b) {
    if (!IsKey(key)) return 0;
    *a = static_cast<float>(Number());
    *b = static_cast<float>(Number());
    return 1;
}

int CKeyReader::Float3(const char* key, float* a, float* b, float* c) {
    if (!IsKey(key)) return 0;
    *a = static_cast<float>(Number());
    *b = static_cast<float>(Number());
    *c = static_cast<float>(Number());
    return 1;
}

int CKeyReader::Hex(const char* key, unsigned* a) {
    if (!IsKey(key)) return 0;
    *a = static_cast<unsigned>(std::strtoul(Word().c_str(), nullptr, 16));
    return 1;
}

int CKeyReader::Chars(const char* key, char* out, int size) {
    std::string text;
    if (!String(key, &text)) return 0;
    if (size > 0) std::snprintf(out, static_cast<size_t>(size), "%s", text.c_str());
    return 1;
}
