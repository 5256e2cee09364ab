#include "files/guess_code.h"

#include <cctype>
#include <cstdio>
#include <cstring>

namespace {

bool EndsWith(const std::string& path, const char* tail) {
    std::string lower = path;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    const size_t n = std::strlen(tail);
    return lower.size() > n && lower.compare(lower.size() - n, n, tail) == 0;
}

bool At(const unsigned char* head, size_t got, size_t offset, const char* text, size_t n) {
    return got >= offset + n && std::memcmp(head + offset, text, n) == 0;
}

}  // namespace

int GuessOpenCode(const std::string& path) {
    unsigned char head[352] = {};
    size_t got = 0;
    if (FILE* f = std::fopen(path.c_str(), "rb")) {
        got = std::fread(head, 1, sizeof head, f);
        std::fclose(f);
    }
    if (At(head, got, 128, "DICM", 4)) return 1;
    if (At(head, got, 344, "n+1\0", 4) || At(head, got, 344, "ni1\0", 4) ||
        At(head, got, 4, "n+2\0", 4) || At(head, got, 4, "ni2\0", 4))
        return 2;
    if (At(head, got, 0, "MATLAB", 6)) return 5;
    if (At(head, got, 0, "zarnik ", 7)) return 6;
    if (EndsWith(path, ".nii") || EndsWith(path, ".nii.gz") || EndsWith(path, ".hdr")) return 2;
    if (EndsWith(path, ".mat")) return 5;
    if (EndsWith(path, ".zrk")) return 6;
    if (EndsWith(path, ".txt")) return 4;
    return 3;
}
