#include "display/text_sink.h"

#include <cstdarg>
#include <cstdio>

void CTextSink::Format(const char* format, ...) {
    char line[kLine];
    va_list args;
    va_start(args, format);
    const int n = std::vsnprintf(line, sizeof line, format, args);
    va_end(args);
    if (n > 0)
        Put(line, static_cast<size_t>(n) < sizeof line ? static_cast<size_t>(n) : sizeof line - 1);
}
