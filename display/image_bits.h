// The pixel pipeline of the image views: one plane of an array through its plane's window,
// level, scale and palette into a bitmap, 8-bit indices or 32-bit words (bytes B, G, R, 0, as
// QImage::Format_RGB32 lays them out). Rows are stored top first with data row 0 on top; a
// row is padded with zero bytes to a multiple of 4; columns and rows are cut at 0x7fffffff.
//
// Per-pixel window and level come from the companion arrays "name.window" and "name.level"
// when the data space holds them, read at (column, row, z) with the coordinates clamped.
//
//   CFrame f;
//   const uint64_t page[4] = {z, t, u, v};
//   if (ImageBits(&space, a, look.palplane, page, 8, f) == 0) ... f.pixels, f.palette
#pragma once

#include <cmath>
#include <cstdint>

#include "display/display_entry.h"
#include "display/look.h"

class CDataSpace;
class CZrkData;

// The scale constants of one plane, computed once before the loop over the pixels.
struct CIndexMap {
    explicit CIndexMap(const CPlane& plane);

    // The palette index of sample x under window w and level l, before inversion; `last` is
    // the index of the sample before (kept by an unknown scale).
    int Raw(float x, float w, float l, int last) const {
        switch (wscale) {
            case 0: {
                float t = ((x - l) / w + 0.5f) * span;
                t = t > 0.0f ? t : 0.0f;  // NaN goes to 0 as well
                t = t < 255.0f ? t : 255.0f;
                int i = static_cast<int>(static_cast<double>(t) + 0.5);
                if (cycles >= 2) i = (i < top ? i : top) & 255;
                return i;
            }
            case 1: {
                float t = (x - l) * a / w + b;
                t = t > 1.0f ? t : 1.0f;
                t = t < n ? t : n;
                return static_cast<int>(std::log(static_cast<double>(t)) * 255.999 / c) & 255;
            }
            case 2: {
                float t = (x - l) * a / w + b;
                t = t > 0.0f ? t : 0.0f;
                t = t < n ? t : n;
                return static_cast<int>((std::exp(static_cast<double>(t)) - 1.0) * 255.999 / c) &
                       255;
            }
            default:
                return last;
        }
    }
    int Index(float x, float w, float l, int last) const {
        const int i = Raw(x, w, l, last);
        return inv ? 255 - i : i;
    }

    int wscale, inv, cycles, top;
    float span, n, a, b;
    double c;
};

// Width, height and row stride of a bitmap of `bits` (8 or 32) per pixel for an nx by ny
// plane.
void BitmapSize(uint64_t nx, uint64_t ny, int bits, int& width, int& height, int& stride);

// The companions of `a` in `space` (null when missing).
void FindCompanions(const CDataSpace* space, const CZrkData* a, const CZrkData** window,
                    const CZrkData** level);

// Renders the plane at page (z, t, u, v) of `a` through `plane`; 0 on success, 1 without
// samples or memory (the frame is then left empty).
int ImageBits(const CDataSpace* space, const CZrkData* a, const CPlane& plane,
              const uint64_t page[4], int bits, CFrame& out);

// Three planes (any may be null) into one 32-bit picture, each channel through its own plane
// and palette mask; the size is the smallest of the three.
int ImageBitsRgb(const CDataSpace* space, const CZrkData* const data[3],
                 const CPlane* const planes[3], const uint64_t page[4], CFrame& out);

// The picture of a display entry at `page`: a 2d display in 8 bits with its palette, an rgb
// display in 32 bits. 1 when drawn, 0 for kinds without a picture or without samples.
int RenderDisplayFrame(const CDataSpace* space, CDisplayEntry& entry, const uint64_t page[4],
                       CFrame& out);
