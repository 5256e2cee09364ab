#include "files/escapes.h"

namespace {

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

char Simple(char c) {
    switch (c) {
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case 't':
            return '\t';
        case 'v':
            return '\v';
        case 'f':
            return '\f';
        case 'a':
            return '\a';
        case 'b':
            return '\b';
        case 's':
            return ' ';
        case '\\':
        case '"':
        case '\'':
        case '?':
            return c;
        default:
            return 0;
    }
}

}  // namespace

std::string ExpandEscapes(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (size_t k = 0; k < text.size(); ++k) {
        if (text[k] != '\\' || k + 1 == text.size()) {
            out.push_back(text[k]);
            continue;
        }
        const char c = text[k + 1];
        if (const char s = Simple(c)) {
            out.push_back(s);
            ++k;
        } else if (c == 'x' && k + 2 < text.size() && HexDigit(text[k + 2]) >= 0) {
            int v = HexDigit(text[k + 2]);
            k += 2;
            if (k + 1 < text.size() && HexDigit(text[k + 1]) >= 0) v = v * 16 + HexDigit(text[++k]);
            out.push_back(static_cast<char>(v));
        } else if (c >= '0' && c <= '7') {
            int v = 0;
            size_t digits = 0;
            while (digits < 3 && k + 1 < text.size() && text[k + 1] >= '0' && text[k + 1] <= '7') {
                v = v * 8 + (text[++k] - '0');
                ++digits;
            }
            out.push_back(static_cast<char>(v & 0xff));
        } else {
            out.push_back('\\');
        }
    }
    return out;
}
