#include "core/key_reader.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <limits>

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

// A value outside the float range saturates instead of being undefined.
float ToFloat(double v) {
    constexpr double kMax = std::numeric_limits<float>::max();
    if (v > kMax) return std::numeric_limits<float>::infinity();
    if (v < -kMax) return -std::numeric_limits<float>::infinity();
    return static_cast<float>(v);
}

}  // namespace

size_t FontLine(char* out, size_t size, const CFont& font) {
    if (size == 0) return 0;
    const int n = std::snprintf(out, size, "font= %d %d %d %.*s\n", font.height, font.weight,
                                font.italic, static_cast<int>(sizeof font.name) - 1, font.name);
    if (n < 0) {
        out[0] = 0;
        return 0;
    }
    return static_cast<size_t>(n) < size ? static_cast<size_t>(n) : size - 1;
}

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

std::string CKeyReader::RestOfLine() {
    int c = SkipBlanks(file_, true);
    std::string text;
    while (c != EOF && c != '\n') {
        text.push_back(static_cast<char>(c));
        c = std::fgetc(file_);
    }
    while (!text.empty() && (text.back() == '\r' || text.back() == ' ')) text.pop_back();
    return text;
}

int CKeyReader::String(const char* key, std::string* out) {
    if (!IsKey(key)) return 0;
    *out = RestOfLine();
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

int CKeyReader::Ints(const char* key, int* out, int n) {
    if (!IsKey(key)) return 0;
    for (int k = 0; k < n; ++k) out[k] = static_cast<int>(Integer());
    return 1;
}

int CKeyReader::Float(const char* key, float* a) {
    if (!IsKey(key)) return 0;
    *a = ToFloat(Number());
    return 1;
}

int CKeyReader::Float2(const char* key, float* a, float* b) {
    if (!IsKey(key)) return 0;
    *a = ToFloat(Number());
    *b = ToFloat(Number());
    return 1;
}

int CKeyReader::Float3(const char* key, float* a, float* b, float* c) {
    if (!IsKey(key)) return 0;
    *a = ToFloat(Number());
    *b = ToFloat(Number());
    *c = ToFloat(Number());
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

int CKeyReader::Font(const char* key, CFont* font) {
    if (!IsKey(key)) return 0;
    font->height = static_cast<int>(Integer());
    font->weight = static_cast<int>(Integer());
    font->italic = static_cast<int>(Integer());
    const std::string name = RestOfLine();
    std::snprintf(font->name, sizeof font->name, "%s", name.c_str());
    return 1;
}
