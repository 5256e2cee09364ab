#include "display/image_bits.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "core/data_cursor.h"
#include "core/data_space.h"

namespace {

constexpr uint64_t kMaxSide = 0x7fffffff;

struct CPage {
    uint64_t z, t, u, v;
};

// Element index of (0, row) on the page, each page index clamped to its direction.
uint64_t RowStart(const CZrkData* a, const CPage& p, uint64_t row) {
    auto clamp = [](uint64_t i, uint64_t n) { return i < n ? i : n - 1; };
    const uint64_t z = clamp(p.z, a->nz), t = clamp(p.t, a->nt), u = clamp(p.u, a->nu),
                   v = clamp(p.v, a->nv);
    return ((((v * a->nu + u) * a->nt + t) * a->nz + z) * a->ny + row) * a->nx;
}

bool HasPlane(const CZrkData* a) {
    return a && a->Data() && a->nx && a->ny && a->nz && a->nt && a->nu && a->nv;
}

// One row of palette indices of `a` through `plane`.
class CRowMapper {
  public:
    CRowMapper(const CDataSpace* space, const CZrkData* a, const CPlane& plane, const CPage& page)
        : a_(a),
          plane_(plane),
          page_(page),
          map_(plane),
          cursor_(a, a->IsComplex() ? plane.iqmp : 0) {
        FindCompanions(space, a, &window_, &level_);
        if (window_) wc_.emplace_back(window_, 0);
        if (level_) lc_.emplace_back(level_, 0);
    }

    void Map(uint64_t row, int width, uint8_t* __restrict out) {
        samples_.resize(width);
        cursor_.GetBlock(samples_.data(), RowStart(a_, page_, row), width);
        const float* __restrict x = samples_.data();
        if (!window_ && !level_ && map_.wscale == 0) {
            // The common case: one window and level for the row. The clamp keeps t at most
            // 255, so the cycles' upper clamp and modulo never change an index here.
            const float w = plane_.window, l = plane_.level, span = map_.span;
            const int inv = map_.inv ? 255 : 0;
            int i = 0;
#ifdef __SSE2__
            const __m128 vl = _mm_set1_ps(l), vw = _mm_set1_ps(w), half = _mm_set1_ps(0.5f);
            const __m128 vspan = _mm_set1_ps(span), zero = _mm_setzero_ps();
            const __m128 top = _mm_set1_ps(255.0f);
            const __m128i vinv = _mm_set1_epi16(static_cast<short>(inv));
            for (; i + 16 <= width; i += 16) {
                __m128i q[4];
                for (int k = 0; k < 4; ++k) {
                    const __m128 v = _mm_loadu_ps(x + i + 4 * k);
                    __m128 t =
                        _mm_mul_ps(_mm_add_ps(_mm_div_ps(_mm_sub_ps(v, vl), vw), half), vspan);
                    t = _mm_max_ps(t, zero);  // maxps answers its second operand for NaN
                    t = _mm_min_ps(t, top);
                    q[k] = _mm_cvttps_epi32(_mm_add_ps(t, half));
                }
                const __m128i lo = _mm_xor_si128(_mm_packs_epi32(q[0], q[1]), vinv);
                const __m128i hi = _mm_xor_si128(_mm_packs_epi32(q[2], q[3]), vinv);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_packus_epi16(lo, hi));
            }
#endif
            for (; i < width; ++i) {
                float t = ((x[i] - l) / w + 0.5f) * span;
                t = t > 0.0f ? t : 0.0f;
                t = t < 255.0f ? t : 255.0f;
                out[i] = static_cast<uint8_t>(static_cast<int>(t + 0.5f) ^ inv);
            }
            return;
        }
        int last = 0;
        const uint64_t z = page_.z;
        for (int i = 0; i < width; ++i) {
            const float w =
                window_ ? wc_[0].Get(window_->Offset3dClamped(i, row, z)) : plane_.window;
            const float l = level_ ? lc_[0].Get(level_->Offset3dClamped(i, row, z)) : plane_.level;
            last = map_.Raw(x[i], w, l, last);
            out[i] = static_cast<uint8_t>(map_.inv ? 255 - last : last);
        }
    }

  private:
    const CZrkData* a_;
    const CPlane& plane_;
    CPage page_;
    CIndexMap map_;
    CDataCursor<float> cursor_;
    const CZrkData* window_ = nullptr;
    const CZrkData* level_ = nullptr;
    std::vector<CDataCursor<float>> wc_, lc_;
    std::vector<float> samples_;
};

void PaletteOf(const CPlane& plane, uint8_t out[256][3], bool add) {
    CPal grey(plane.palette_word ? plane.palette_word : 7);
    const CPal& pal = plane.palette ? *plane.palette : grey;
    for (int i = 0; i < 256; ++i)
        for (int c = 0; c < 3; ++c) out[i][c] = (add ? out[i][c] : 0) | pal.entries[i][c];
}

uint32_t Word(const uint8_t rgb[3]) {
    return uint32_t(rgb[2]) | uint32_t(rgb[1]) << 8 | uint32_t(rgb[0]) << 16;
}

}  // namespace

CIndexMap::CIndexMap(const CPlane& plane)
    : wscale(plane.wscale),
      inv(plane.inv),
      cycles(plane.wlcycles),
      top(0),
      span(256.0f),
      n(plane.nonlin),
      a(0),
      b(0),
      c(1) {
    if (cycles >= 2) {
        span = static_cast<float>(cycles) * 256.0f;
        top = cycles * 256 - 1;
    }
    if (wscale == 1) {
        a = n - 1.0f;
        b = n * 0.5f + 0.5f;
        c = std::log(static_cast<double>(n));
    } else if (wscale == 2) {
        a = n;
        b = n * 0.5f;
        c = std::exp(static_cast<double>(n)) - 1.0;
    }
}

void BitmapSize(uint64_t nx, uint64_t ny, int bits, int& width, int& height, int& stride) {
    width = static_cast<int>(std::min(nx, kMaxSide));
    height = static_cast<int>(std::min(ny, kMaxSide));
    const uint64_t row = (static_cast<uint64_t>(width) * (bits / 8) + 3) & ~uint64_t(3);
    stride = static_cast<int>(std::min<uint64_t>(row, 0x7ffffffc));
}

void FindCompanions(const CDataSpace* space, const CZrkData* a, const CZrkData** window,
                    const CZrkData** level) {
    *window = *level = nullptr;
    if (!space || !a) return;
    const std::string name = a->name;
    const CZrkData* w = space->FindData((name + ".window").c_str());
    const CZrkData* l = space->FindData((name + ".level").c_str());
    *window = w && w->Data() && w->Count() ? w : nullptr;
    *level = l && l->Data() && l->Count() ? l : nullptr;
}

int ImageBits(const CDataSpace* space, const CZrkData* a, const CPlane& plane,
              const uint64_t page[4], int bits, CFrame& out) {
    out = CFrame{};
    if (!HasPlane(a) || (bits != 8 && bits != 32)) return 1;
    try {
        BitmapSize(a->nx, a->ny, bits, out.width, out.height, out.stride);
        out.bits = bits;
        out.pixels.assign(static_cast<size_t>(out.stride) * out.height, 0);
        PaletteOf(plane, out.palette, false);
        CRowMapper mapper(space, a, plane, {page[0], page[1], page[2], page[3]});
        std::vector<uint8_t> index(bits == 32 ? out.width : 0);
        uint32_t words[256];
        for (int i = 0; i < 256; ++i) words[i] = Word(out.palette[i]);
        for (int r = 0; r < out.height; ++r) {
            uint8_t* row = out.pixels.data() + static_cast<size_t>(r) * out.stride;
            if (bits == 8) {
                mapper.Map(r, out.width, row);
                continue;
            }
            mapper.Map(r, out.width, index.data());
            for (int i = 0; i < out.width; ++i) std::memcpy(row + 4 * i, &words[index[i]], 4);
        }
        return 0;
    } catch (const std::bad_alloc&) {
        out = CFrame{};
        return 1;
    }
}

int ImageBitsRgb(const CDataSpace* space, const CZrkData* const data[3],
                 const CPlane* const planes[3], const uint64_t page[4], CFrame& out) {
    out = CFrame{};
    uint64_t nx = kMaxSide, ny = kMaxSide;
    bool any = false;
    for (int k = 0; k < 3; ++k) {
        if (!data[k]) continue;
        if (!HasPlane(data[k]) || !planes[k]) return 1;
        nx = std::min<uint64_t>(nx, data[k]->nx);
        ny = std::min<uint64_t>(ny, data[k]->ny);
        any = true;
    }
    if (!any) return 1;
    try {
        BitmapSize(nx, ny, 32, out.width, out.height, out.stride);
        out.bits = 32;
        out.pixels.assign(static_cast<size_t>(out.stride) * out.height, 0);
        const CPage p{page[0], page[1], page[2], page[3]};
        std::vector<uint8_t> index(out.width);
        for (int k = 0; k < 3; ++k) {
            if (!data[k]) continue;
            uint8_t colours[256][3];
            PaletteOf(*planes[k], colours, false);
            uint32_t words[256];
            for (int i = 0; i < 256; ++i) words[i] = Word(colours[i]);
            CRowMapper mapper(space, data[k], *planes[k], p);
            for (int r = 0; r < out.height; ++r) {
                auto* row = reinterpret_cast<uint32_t*>(out.pixels.data() +
                                                        static_cast<size_t>(r) * out.stride);
                mapper.Map(r, out.width, index.data());
                for (int i = 0; i < out.width; ++i) row[i] |= words[index[i]];
            }
        }
        return 0;
    } catch (const std::bad_alloc&) {
        out = CFrame{};
        return 1;
    }
}

int RenderDisplayFrame(const CDataSpace* space, CDisplayEntry& entry, const uint64_t page[4],
                       CFrame& out) {
    if (entry.kind == LOOK_2D)
        return ImageBits(space, entry.data[0], entry.look.palplane, page, 8, out) == 0;
    if (entry.kind == LOOK_RGB) {
        const CPlane* planes[3] = {&entry.look.rplane, &entry.look.gplane, &entry.look.bplane};
        return ImageBitsRgb(space, entry.data, planes, page, out) == 0;
    }
    return 0;
}
