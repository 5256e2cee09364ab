// Verbosity of the engine. Each estimator family has a `quiet` flag (all set at start). Quiet:
// progress goes to the status text in a short form and warnings to the run log. Not quiet:
// full texts go to standard output (flushed) and warnings to standard error.
#pragma once

#include <string>

enum wave_family {
    WF_CHAIN,
    WF_FFT,
    WF_KERNELS,
    WF_FILTER,
    WF_LFE,
    WF_PG,
    WF_DI,
    WF_MF,
    WF_WSUM,
    WF_SNR,
    WF_COUNT
};

extern int wave_quiet[WF_COUNT];

// printf into a string.
std::string wave_fmt(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Progress text: `quiet_text` to the status line, or `verbose_text` to standard output.
// Either may be null to say nothing in that form.
void wave_say(wave_family family, const char* quiet_text, const char* verbose_text);
// Warning: `quiet_text` to the run log, or `verbose_text` to standard error.
void wave_warn(wave_family family, const char* quiet_text, const char* verbose_text);
// The fatal exit of the Fourier layer: "\n<text> \n" on standard error, status -1.
[[noreturn]] void wave_fatal(const char* text);
