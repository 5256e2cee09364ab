#include "mu/mu_driver.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/host.h"
#include "core/zrk_data.h"

MuFirstStoreFn CMuDriver::First() {
    return [this](CZrkData* a, const char* palette) { OpenDisplay2d(a, palette); };
}

namespace {

size_t Volume(const wave_params* p) { return size_t(p->nx) * p->ny * std::max(p->nz, 1); }

}  // namespace

// A real stack as it stands, nx*ny*nz*nt samples through the channel. Complex harmonic input
// is a planar pair: i then q of a complex array, or the two halves of a real one
// (complex_split).
int CMuDriver::read_phase_stack(wave_params* p, float* buf) {
    int c = std::clamp(p->component, 0, 2);
    CZrkData* a = space_.FindData(p->data_name[c]);
    if (!a || !a->data) return 1;
    size_t n = Volume(p);
    if (p->complex_in) {
        if (a->IsComplex() && !p->complex_split) {
            if (a->Count() < n) return 1;
            CDataCursor<float>(a, 0).GetBlock(buf, 0, n);
            CDataCursor<float>(a, 1).GetBlock(buf + n, 0, n);
            return 0;
        }
        if (a->Count() < 2 * n) return 1;
        CDataCursor<float>(a, p->data_index[c]).GetBlock(buf, 0, 2 * n);
        return 0;
    }
    size_t total = n * size_t(std::max(p->nt, 1));
    if (a->Count() < total) return 1;
    CDataCursor<float>(a, p->data_index[c]).GetBlock(buf, 0, total);
    return 0;
}

// The largest of the magnitude's copies per sample.
int CMuDriver::read_max_magnitude(wave_params* p, float* buf) {
    CZrkData* a = space_.FindData(p->mag_name);
    size_t n = Volume(p);
    if (!a || !a->data || a->Count() < n) return 1;
    CDataCursor<float> in(a, p->mag_index);
    in.GetBlock(buf, 0, n);
    size_t copies =
        std::max<size_t>(1, std::min<size_t>(size_t(std::max(p->ncopies, 1)), a->Count() / n));
    std::vector<float> more(n);
    for (size_t k = 1; k < copies; ++k) {
        in.GetBlock(more.data(), k * n, n);
        for (size_t i = 0; i < n; ++i) buf[i] = std::max(buf[i], more[i]);
    }
    return 0;
}

// The magnitude of each component, up to three volumes, as far as the array holds them.
int CMuDriver::read_magnitude_float(wave_params* p, float* buf) {
    CZrkData* a = space_.FindData(p->mag_name);
    size_t n = Volume(p);
    if (!a || !a->data || a->Count() < n) return 1;
    size_t volumes = std::min<size_t>(a->Count() / n, p->xyz ? 3 : 1);
    CDataCursor<float>(a, p->mag_index).GetBlock(buf, 0, volumes * n);
    for (size_t k = volumes; k < size_t(p->xyz ? 3 : 1); ++k)
        std::memcpy(buf + k * n, buf, sizeof(float) * n);
    return 0;
}

int CMuDriver::store_image(const float* buf, wave_params* p, int, float**, wave_output output,
                           int index, int total) {
    auto* t = static_cast<MuOutputTarget*>(output);
    return StorePlaneFloat(space_, buf, p, t, index, total, First());
}

// The engine stores a harmonic once per component, which with the angle picks its volume.
int CMuDriver::store_complex(const float* buf, wave_params* p, int planar, float**,
                             wave_output output) {
    auto* t = static_cast<MuOutputTarget*>(output);
    int position = p->angle * std::max(p->ncomponents, 1) + p->component;
    return StorePlaneComplex(space_, buf, planar, p, t, position, t->passes, First());
}

int CMuDriver::store_byte_image(const uint8_t* buf, wave_params* p, wave_output output) {
    auto* t = static_cast<MuOutputTarget*>(output);
    return StorePlaneBytes(space_, buf, p, t, t->slot, t->passes, First());
}

// Engine lines end in "\n"; the history's in "\r\n". A line may come in pieces.
void CMuDriver::msg_fatal_text(const char* text) {
    log_line_ += text;
    size_t end;
    while ((end = log_line_.find('\n')) != std::string::npos) {
        std::string line = log_line_.substr(0, end);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        Host().History(line + "\r\n");
        log_line_.erase(0, end + 1);
    }
}

void CMuDriver::status_text(const char* text) {
    status_ += text;
    Host().Status(status_);
}

void CMuDriver::status_clear() {
    status_.clear();
    Host().Status(status_);
}

const char* MuOutputName(wave_output output) {
    const auto* t = static_cast<const MuOutputTarget*>(output);
    return t && t->Active() ? t->name.c_str() : "unnamed";
}
