#include "wave/driver.h"

#include <cstdio>

namespace {
wave_driver* g_driver = nullptr;
}

wave_driver* set_wave_driver(wave_driver* driver) {
    wave_driver* previous = g_driver;
    g_driver = driver;
    return previous;
}

int read_phase_stack(wave_params* p, float* buf) {
    return g_driver ? g_driver->read_phase_stack(p, buf) : 1;
}

int read_max_magnitude(wave_params* p, float* buf) {
    return g_driver ? g_driver->read_max_magnitude(p, buf) : 1;
}

int read_magnitude_float(wave_params* p, float* buf) {
    return g_driver ? g_driver->read_magnitude_float(p, buf) : 1;
}

int store_image(const float* buf, wave_params* p, int kind, float** temp_holder, wave_output output,
                int index, int total) {
    if (!g_driver || !output) return 0;
    return g_driver->store_image(buf, p, kind, temp_holder, output, index, total);
}

int store_complex(const float* buf, wave_params* p, int planar, float** temp, wave_output output) {
    if (!g_driver || !output) return 0;
    return g_driver->store_complex(buf, p, planar, temp, output);
}

int store_byte_image(const uint8_t* buf, wave_params* p, wave_output output) {
    if (!g_driver || !output) return 0;
    return g_driver->store_byte_image(buf, p, output);
}

void msg_fatal_text(const char* text) {
    if (g_driver) g_driver->msg_fatal_text(text);
}

void status_text(const char* text) {
    if (g_driver) g_driver->status_text(text);
}

void status_printf(const char* format, double value) {
    char line[256];
    std::snprintf(line, sizeof line, format, value);
    status_text(line);
}

void status_printf(const char* format, int value) {
    char line[256];
    std::snprintf(line, sizeof line, format, value);
    status_text(line);
}

void status_clear() {
    if (g_driver) g_driver->status_clear();
}
