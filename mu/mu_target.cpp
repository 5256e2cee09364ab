#include "mu/mu_target.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "core/data_space.h"
#include "core/element_type.h"
#include "core/host.h"
#include "core/zrk_data.h"
#include "mu/name_format.h"

int MakeTarget(MuOutputTarget* t, CDataSpace& space, const std::string& format,
               const std::string& base, int count, bool append, const char* palette, int apply_mask,
               std::string* error) {
    *t = MuOutputTarget();
    std::string name = FormatOutputName(format, base, count, error);
    if (name.empty()) return 1;
    if (append) {
        CZrkData* old = space.FindData(name.c_str());
        if (!old) return 1;
        t->append_offset = old->data ? old->Bytes() : 0;
    }
    t->name = name;
    if (palette && *palette) {
        std::snprintf(t->palette, sizeof t->palette, "%s", palette);
        t->look = kMuLookFlag;
    }
    t->apply_mask = apply_mask;
    return 0;
}

namespace {

// The target's array, ready for `volumes` volumes of `type` behind its append offset; null
// after the report when it could not be had.
CZrkData* Ready(CDataSpace& space, const wave_params* p, MuOutputTarget* t, int type, int volumes,
                const MuFirstStoreFn& first) {
    const res_t nx = res_t(p->nx), ny = res_t(p->ny), nz = res_t(std::max(p->nz, 1));
    volumes = std::max(volumes, t->passes + t->extra);
    CZrkData* a = space.FindData(t->name.c_str());
    const uint64_t bytes_per_volume = nx * ny * nz * uint64_t(TypeInfo(type)->elem_bytes);
    const uint64_t want = t->append_offset + bytes_per_volume * uint64_t(volumes);
    if (a && a->data && a->type == type && a->Bytes() >= want && t->written) return a;
    if (!a) a = space.NewData(t->name.c_str());
    if (!a) {
        Host().History("image alloc failed\r\n");
        return nullptr;
    }
    res_t z = nz, tt = res_t(volumes);
    if (z == 1 || tt == 1) z = z * tt, tt = 1;
    if (t->append_offset) z = (want / uint64_t(TypeInfo(type)->elem_bytes)) / (nx * ny), tt = 1;
    if (!a->data || a->type != type || a->Bytes() != want) {
        CZrkData grown;
        grown.SetHeader(type, nx, ny, z, tt, 1, 1);
        void* data = grown.Allocate();
        if (!data) {
            Host().History("image alloc failed\r\n");
            return nullptr;
        }
        std::memset(data, 0, grown.Bytes());
        // Appended planes, and volumes this run already wrote, survive the growth.
        uint64_t keep = t->written ? a->Bytes() : t->append_offset;
        if (keep && a->data) std::memcpy(data, a->data, std::min(keep, grown.Bytes()));
        a->FreeData();
        a->SetHeader(type, nx, ny, z, tt, 1, 1);
        a->data = data;
    } else {
        a->SetHeader(type, nx, ny, z, tt, 1, 1);
    }
    if (t->look) {
        a->SetMm(p->fov[0] * 1000.0f / float(nx), p->fov[1] * 1000.0f / float(ny),
                 nz > 1 ? p->fov[2] * 1000.0f / float(nz) : 1.0f, 1.0f, 1.0f, 1.0f);
    } else {
        a->SetMm(1, 1, 1, 1, 1, 1);
    }
    a->changed = 1;
    t->array = a;
    if (!t->written) {
        t->written = 1;
        if (t->look && first) first(a, t->palette);
    }
    return a;
}

char* VolumeAt(CZrkData* a, const MuOutputTarget* t, const wave_params* p, int position) {
    uint64_t n = uint64_t(p->nx) * uint64_t(p->ny) * uint64_t(std::max(p->nz, 1));
    return static_cast<char*>(a->data) + t->append_offset +
           n * uint64_t(a->elem_bytes) * uint64_t(position);
}

}  // namespace

int StorePlaneBytes(CDataSpace& space, const uint8_t* plane, const wave_params* p,
                    MuOutputTarget* t, int position, int volumes, const MuFirstStoreFn& first) {
    CZrkData* a = Ready(space, p, t, TYPE_N1, std::max(volumes, position + 1), first);
    if (!a) return 1;
    size_t n = size_t(p->nx) * p->ny * std::max(p->nz, 1);
    std::memcpy(VolumeAt(a, t, p, position), plane, n);
    return 0;
}

int StorePlaneComplex(CDataSpace& space, const float* plane, int planar, const wave_params* p,
                      MuOutputTarget* t, int position, int volumes, const MuFirstStoreFn& first) {
    CZrkData* a = Ready(space, p, t, TYPE_CR4, std::max(volumes, position + 1), first);
    if (!a) return 1;
    size_t n = size_t(p->nx) * p->ny * std::max(p->nz, 1);
    auto* out = reinterpret_cast<float*>(VolumeAt(a, t, p, position));
    if (!planar) {
        std::memcpy(out, plane, sizeof(float) * 2 * n);
        return 0;
    }
    for (size_t i = 0; i < n; ++i) {
        out[2 * i] = plane[i];
        out[2 * i + 1] = plane[n + i];
    }
    return 0;
}

int StorePlaneFloatMask(CDataSpace& space, const float* plane, const uint8_t* mask,
                        const wave_params* p, MuOutputTarget* t, int position, int volumes,
                        const MuFirstStoreFn& first) {
    CZrkData* a = Ready(space, p, t, TYPE_R4, std::max(volumes, position + 1), first);
    if (!a) return 1;
    size_t n = size_t(p->nx) * p->ny * std::max(p->nz, 1);
    auto* out = reinterpret_cast<float*>(VolumeAt(a, t, p, position));
    for (size_t i = 0; i < n; ++i) out[i] = mask[i] ? plane[i] : 0.0f;
    return 0;
}

int StorePlaneFloat(CDataSpace& space, const float* plane, const wave_params* p, MuOutputTarget* t,
                    int position, int volumes, const MuFirstStoreFn& first) {
    CZrkData* a = Ready(space, p, t, TYPE_R4, std::max(volumes, position + 1), first);
    if (!a) return 1;
    size_t n = size_t(p->nx) * p->ny * std::max(p->nz, 1);
    std::memcpy(VolumeAt(a, t, p, position), plane, sizeof(float) * n);
    return 0;
}
