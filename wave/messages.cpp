#include "wave/messages.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "wave/driver.h"

int wave_quiet[WF_COUNT] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1};

std::string wave_fmt(const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    int n = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::string text(n > 0 ? n : 0, '\0');
    if (n > 0) std::vsnprintf(text.data(), n + 1, format, args);
    va_end(args);
    return text;
}

void wave_say(wave_family family, const char* quiet_text, const char* verbose_text) {
    if (wave_quiet[family]) {
        if (quiet_text) status_text(quiet_text);
    } else if (verbose_text) {
        std::fputs(verbose_text, stdout);
        std::fflush(stdout);
    }
}

void wave_warn(wave_family family, const char* quiet_text, const char* verbose_text) {
    if (wave_quiet[family]) {
        if (quiet_text) msg_fatal_text(quiet_text);
    } else if (verbose_text) {
        std::fputs(verbose_text, stderr);
        std::fflush(stderr);
    }
}

void wave_fatal(const char* text) {
    std::fprintf(stderr, "\n%s \n", text);
    std::fflush(stderr);
    std::exit(-1);
}
