// A display for the picture and movie writers' tests: it draws a pattern of its own that
// changes with the page, as 8-bit indices into a palette or as 32-bit B, G, R, 0 words, and
// the RGB bytes a reader should see for it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "core/window_space.h"
#include "core/zrk_data.h"
#include "display/display_entry.h"

class CStubDisplay : public CDisplayEntry {
  public:
    CStubDisplay(uint32_t a_kind, int bits, int width, int height)
        : CDisplayEntry(CLook(a_kind)), bits_(bits), width_(width), height_(height) {
        kind = a_kind;
        for (int k = 0; k < 256; ++k) {
            palette_[k][0] = static_cast<uint8_t>(k);
            palette_[k][1] = static_cast<uint8_t>(255 - k);
            palette_[k][2] = static_cast<uint8_t>(k < 128 ? 2 * k : 511 - 2 * k);
        }
    }

    int RenderFrame(const uint64_t page[4], CFrame& f) override {
        f.width = width_ + (page[0] == resize_at_z_ ? 2 : 0);
        f.height = height_;
        f.bits = bits_;
        f.stride = bits_ == 8 ? (f.width + 3) & ~3 : 4 * f.width;
        f.pixels.assign(static_cast<size_t>(f.stride) * f.height, 0xEE);  // padding shows
        std::memcpy(f.palette, palette_, sizeof palette_);
        for (int y = 0; y < f.height; ++y)
            for (int x = 0; x < f.width; ++x) {
                uint8_t* p = &f.pixels[static_cast<size_t>(y) * f.stride + x * (bits_ / 8)];
                if (bits_ == 8) {
                    *p = Index(x, y, page);
                } else {
                    const uint8_t* rgb = Rgb(x, y, page);
                    p[0] = rgb[2], p[1] = rgb[1], p[2] = rgb[0], p[3] = 0;
                }
            }
        return 1;
    }

    // The frame of `page` as R, G, B bytes, rows top first, no padding.
    std::string Expected(const uint64_t page[4]) const {
        std::string out;
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x) {
                const uint8_t* rgb = bits_ == 8 ? palette_[Index(x, y, page)] : Rgb(x, y, page);
                out.append(reinterpret_cast<const char*>(rgb), 3);
            }
        return out;
    }

    // A frame of another size at this z page, to break a movie midway.
    uint64_t resize_at_z_ = ~0ull;

  private:
    // Smooth ramps, as a wave image is, with a page-dependent shift.
    static uint8_t Index(int x, int y, const uint64_t page[4]) {
        return static_cast<uint8_t>(x * 5 + y * 3 + page[0] * 40 + page[1] * 90);
    }
    const uint8_t* Rgb(int x, int y, const uint64_t page[4]) const {
        static thread_local uint8_t rgb[3];
        rgb[0] = static_cast<uint8_t>(x * 4 + page[0] * 30);
        rgb[1] = static_cast<uint8_t>(y * 4 + page[1] * 60);
        rgb[2] = static_cast<uint8_t>((x + y) * 2);
        return rgb;
    }

    int bits_, width_, height_;
    uint8_t palette_[256][3];
};

// Lists a stub display in the window list, which owns it from then on.
inline CStubDisplay* ListStub(uint32_t kind, int bits, int width, int height, CZrkData* data) {
    auto stub = std::make_unique<CStubDisplay>(kind, bits, width, height);
    std::snprintf(stub->name, sizeof stub->name, "w%02d", GlobalWindowSpace().Count());
    stub->data[0] = data;
    return static_cast<CStubDisplay*>(GlobalWindowSpace().NewData(std::move(stub)));
}
