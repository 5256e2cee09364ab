// The driver services over plain buffers, for tests: reads come from vectors, stores and texts
// are recorded.
#pragma once

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "wave/driver.h"
#include "wave/mem.h"

class buffer_driver : public wave_driver {
  public:
    buffer_driver() : previous_(set_wave_driver(this)) {}
    ~buffer_driver() override { set_wave_driver(previous_); }

    int read_phase_stack(wave_params*, float* buf) override { return copy(phase, buf); }
    int read_max_magnitude(wave_params*, float* buf) override { return copy(magnitude, buf); }
    int read_magnitude_float(wave_params*, float* buf) override { return copy(magnitudes, buf); }
    int store_image(const float* buf, wave_params* p, int, float** temp, wave_output output,
                    int index, int) override {
        size_t n = size_t(p->nx) * p->ny * p->nz;
        if (!*temp) mem_allocate(temp, sizeof(float), uint32_t(n), 0);  // as the real driver
        images[output][index].assign(buf, buf + n);
        return 0;
    }
    int store_complex(const float* buf, wave_params* p, int, float**, wave_output output) override {
        size_t n = size_t(p->nx) * p->ny * p->nz;
        images[output][0].assign(buf, buf + 2 * n);
        return 0;
    }
    int store_byte_image(const uint8_t* buf, wave_params* p, wave_output output) override {
        bytes[output].assign(buf, buf + size_t(p->nx) * p->ny * p->nz);
        return 0;
    }
    void msg_fatal_text(const char* text) override { log += text; }
    void status_text(const char* text) override { status += text; }
    void status_clear() override { status.clear(); }

    std::vector<float> phase, magnitude, magnitudes;
    std::map<wave_output, std::map<int, std::vector<float>>> images;
    std::map<wave_output, std::vector<uint8_t>> bytes;
    std::string log, status;

  private:
    static int copy(const std::vector<float>& from, float* to) {
        if (from.empty()) return 1;
        std::memcpy(to, from.data(), sizeof(float) * from.size());
        return 0;
    }
    wave_driver* previous_;
};
