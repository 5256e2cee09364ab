#include "wave/wave_direction.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "wave/band_filter.h"
#include "wave/direction_filter.h"
#include "wave/fft.h"
#include "wave/image_buffers.h"
#include "wave/mem.h"
#include "wave/messages.h"
#include "wave/progress.h"
#include "wave/stages.h"

namespace {

void complain(const std::string& text) { wave_warn(WF_FILTER, text.c_str(), text.c_str()); }

}  // namespace

void clean_range(wave_range* r, float first, float last) {
    // Written so that NaN takes the same turns as a value out of range.
    if (!(r->start >= first) || r->start > r->stop || r->start > last) r->start = first;
    if (!(r->stop >= r->start)) r->stop = r->start;
    r->stop = std::min(r->stop, last);
    if (!(r->step > 0.0f)) {
        r->step = r->count > 1 ? (r->stop - r->start) / float(r->count - 1) : 0.0f;
        if (!(r->step > 0.0f)) r->step = 1.0f;
    }
    if (r->count < 1) {
        // The small allowance keeps a stop that the steps meet exactly in single precision.
        double steps = (double(r->stop) - r->start) / r->step;
        r->count = int(std::floor(steps + 1e-4)) + 1;
    }
    if (double(r->count) > double(last) - first) {
        r->start = first;
        r->stop = last;
        r->step = 1.0f;
        r->count = int(std::floor(double(last) - first)) + 1;
    }
}

int wave_direction_analysis(const float* stack, const uint8_t* mask, const wave_params* p,
                            wave_range* angles, std::vector<double>* energy) {
    energy->clear();
    clean_range(angles, kWaveAngleFirst, kWaveAngleLast);
    const int nx = p->nx, ny = p->ny, nz = std::max(p->nz, 1);
    if (nx < 1 || ny < 1) {
        complain(wave_fmt("wave direction analysis: invalid image size %d x %d\n", nx, ny));
        return 1;
    }
    if (!p->complex_in && (p->harmonic_number < 1 || p->harmonic_number > (p->nt - 1) / 2)) {
        complain(wave_fmt("wave direction analysis: no harmonic %d in %d offsets\n",
                          p->harmonic_number, p->nt));
        return 1;
    }
    stopwatch(0);
    wave_say(WF_FILTER, "Wave Direction Analysis", "Wave Direction Analysis ");

    const size_t plane = size_t(nx) * ny, npix = plane * nz;
    int level = mem_next_level();
    float *band = nullptr, *sector = nullptr, *pair = nullptr, *spectra = nullptr, *buf = nullptr;
    mem_allocate(&band, sizeof(float), uint32_t(plane), 0);
    filter_spec spec;
    spec.type = 7;
    spec.cut[0] = p->dirf_cut[0];
    spec.cut[1] = p->dirf_cut[1];
    spec.order = p->dirf_order;
    if (fill_band_filter(band, "complex", nx, ny, 1, double(p->fov[0]) / p->fov[1], 1.0, &spec)) {
        mem_free_level(level, 0);
        return 1;
    }

    // The harmonic pair: extraction leaves it in planes 1 and 2 of a copy of the offsets.
    if (p->complex_in) {
        mem_allocate(&pair, sizeof(float), uint32_t(2 * npix), 0);
        std::memcpy(pair, stack, sizeof(float) * 2 * npix);
    } else {
        mem_allocate(&pair, sizeof(float), uint32_t(npix * p->nt), 0);
        std::memcpy(pair, stack, sizeof(float) * npix * p->nt);
        phase_offset_filtering_3d(pair, nx, ny, nz, p->nt, p->harmonic_number);
        std::memmove(pair, pair + npix, sizeof(float) * 2 * npix);
    }
    // A value that is not finite would spread over its whole slice: it counts as no wave.
    for (size_t i = 0; i < 2 * npix; ++i)
        if (!std::isfinite(pair[i])) pair[i] = 0.0f;

    mem_allocate(&spectra, sizeof(float), uint32_t(2 * npix), 0);
    for (int z = 0; z < nz; ++z) {
        float* s = spectra + 2 * plane * z;
        for (size_t i = 0; i < plane; ++i) {
            s[2 * i] = pair[plane * z + i];
            s[2 * i + 1] = pair[npix + plane * z + i];
        }
        GENERAL_cvfft_3d(s, nx, ny, 1, 1);
    }

    mem_allocate(&sector, sizeof(float), uint32_t(plane), 0);
    mem_allocate(&buf, sizeof(float), uint32_t(2 * plane), 0);
    energy->assign(size_t(angles->count), 0.0);
    for (int a = 0; a < angles->count; ++a) {
        float angle = angles->start + float(a) * angles->step;
        // Rows run opposite to y, so the sector is mirrored as in the direction filter.
        if (p->dirf_ncos >= 1)
            cos2_sector_2d(sector, nx, ny, p->fov[0], p->fov[1], -angle, p->dirf_ncos);
        else
            std::fill(sector, sector + plane, 1.0f);
        for (size_t i = 0; i < plane; ++i) sector[i] *= band[i];
        double sum = 0.0;
        for (int z = 0; z < nz; ++z) {
            std::memcpy(buf, spectra + 2 * plane * z, sizeof(float) * 2 * plane);
            complex_times_real(buf, sector, int(plane));
            GENERAL_cvfft_3d(buf, nx, ny, 1, -1);
            const uint8_t* m = mask ? mask + plane * z : nullptr;
            for (size_t i = 0; i < plane; ++i)
                if (!m || m[i])
                    sum +=
                        double(buf[2 * i]) * buf[2 * i] + double(buf[2 * i + 1]) * buf[2 * i + 1];
        }
        (*energy)[size_t(a)] = sum;
    }
    mem_free_level(level, 0);
    std::string t = wave_fmt("(%.2f s) ", stopwatch(1));
    wave_say(WF_FILTER, nullptr, t.c_str());
    return 0;
}

std::string wave_direction_table(const wave_range& angles, const std::vector<double>& energy) {
    double top = 0.0;
    for (double e : energy) top = std::max(top, e);
    std::string out = "  angle  energy  % max \r\n";
    for (size_t a = 0; a < energy.size(); ++a) {
        out += wave_fmt("%7.2f ", double(angles.start + float(a) * angles.step));
        out += wave_fmt("%7.2f ", energy[a]);
        out += wave_fmt("%7.2f ", top > 0.0 ? 100.0 * energy[a] / top : 0.0);
        out += "\r\n";
    }
    return out;
}
