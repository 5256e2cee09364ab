// Fuzz target: the escapes and the user's formats on any text. Expanding never lengthens a
// text, and a format that passes the check formats a number without reading past it.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "files/escapes.h"
#include "files/user_format.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string out = ExpandEscapes(text);
    if (out.size() > text.size()) std::abort();
    // Text without a backslash stands as it is.
    if (text.find('\\') == std::string::npos && out != text) std::abort();
    const std::string format = out.substr(0, out.find('\0'));
    FormatCount(format, 7);
    if (CountConversions(format, "aAeEfFgG") == 1) {
        std::vector<char> buffer(format.size() + 4096);
        std::snprintf(buffer.data(), buffer.size(), format.c_str(), 1.5);
    }
    return 0;
}
