// The services the engine calls back on its driver. The engine only sees float buffers; the
// driver (the inversion workflow, or a test over plain buffers) moves them to and from arrays
// and owns the run log and the status line. Install one with set_wave_driver(); without one,
// reads fail, stores are dropped and texts go nowhere.
#pragma once

#include <cstdint>

#include "wave/wave_params.h"

class wave_driver {
  public:
    virtual ~wave_driver() = default;
    // Reads return 0 on success. The phase stack is nx*ny*nz*nt floats (real input) or a
    // planar complex pair; magnitudes are nx*ny*nz floats (all components for the float read).
    virtual int read_phase_stack(wave_params* p, float* buf) = 0;
    virtual int read_max_magnitude(wave_params* p, float* buf) = 0;
    virtual int read_magnitude_float(wave_params* p, float* buf) = 0;
    // One plane `index` of `total` of an output. `temp_holder` is the driver's scratch between
    // the planes of one output; the engine frees it through the table after the last plane.
    virtual int store_image(const float* buf, wave_params* p, int kind, float** temp_holder,
                            wave_output output, int index, int total) = 0;
    virtual int store_complex(const float* buf, wave_params* p, int planar, float** temp,
                              wave_output output) = 0;
    virtual int store_byte_image(const uint8_t* buf, wave_params* p, wave_output output) = 0;
    virtual void msg_fatal_text(const char* text) = 0;
    // The one-line status text: status_text appends, status_clear empties it.
    virtual void status_text(const char* text) = 0;
    virtual void status_clear() = 0;
};

// Installs `driver` (not owned); null removes it. Returns the previous one.
wave_driver* set_wave_driver(wave_driver* driver);

int read_phase_stack(wave_params* p, float* buf);
int read_max_magnitude(wave_params* p, float* buf);
int read_magnitude_float(wave_params* p, float* buf);
int store_image(const float* buf, wave_params* p, int kind, float** temp_holder, wave_output output,
                int index, int total);
int store_complex(const float* buf, wave_params* p, int planar, float** temp, wave_output output);
int store_byte_image(const uint8_t* buf, wave_params* p, wave_output output);
void msg_fatal_text(const char* text);
void status_text(const char* text);
// Formats one value into the status text.
void status_printf(const char* format, double value);
void status_printf(const char* format, int value);
void status_clear();
