// CDisplayEntry: a window-list entry of a display, with what a workspace keeps of it: the
// look, the caption, the pages shown, and the placement. The Qt displays derive from it;
// the workspace writer walks the window list for these entries and skips any other.
//
// Displays are made through one factory hook per kind. With none installed (a console
// program, most tests) a workspace's display blocks are read and dropped.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/window_space.h"
#include "display/look.h"

// One picture of a display for the picture and movie writers: 8-bit indices into `palette`
// (r, g, b) or 32-bit B, G, R, 0 words as QImage::Format_RGB32 lays them out; rows top
// first, each `stride` bytes (a multiple of 4).
struct CFrame {
    int width = 0;
    int height = 0;
    int bits = 8;
    int stride = 0;
    std::vector<uint8_t> pixels;
    uint8_t palette[256][3] = {};
};

struct CWindowLoc {
    int top = 0, left = 0, bottom = 0, right = 0;
};

class CDisplayEntry : public CWindowEntry {
  public:
    explicit CDisplayEntry(const CLook& a_look) : look(a_look) { kind = a_look.flags; }

    // Draws the display at page (z, t, u, v) into `frame`; 0 when this display can't (the
    // views override it).
    virtual int RenderFrame(const uint64_t page[4], CFrame& frame) {
        (void)page;
        (void)frame;
        return 0;
    }

    // Draws again with the picture marked stale (the arrays changed).
    virtual void Redraw() {}

    CLook look;
    std::string caption;
    int page_z = 0;
    int page_t = 0;
    int minimized = 0;
    CWindowLoc window_loc;
};

// What a display is made of: the kind bit, the arrays (x and y for xy, r, g, b for rgb; any
// may be null for rgb), the look, caption, and for 2d the entry's name.
struct CDisplayRequest {
    uint32_t kind = 0;
    CZrkData* data[3] = {nullptr, nullptr, nullptr};
    const CLook* look = nullptr;
    std::string caption;
    std::string name;
};

// Makes and lists the display of `request`; null when it can't.
using DisplayWindowHook = CDisplayEntry* (*)(const CDisplayRequest& request);

// The hook of one kind bit; null when none is installed.
DisplayWindowHook DisplayWindow(uint32_t kind);
// Installs `hook` for `kind`; returns the previous one.
DisplayWindowHook SetDisplayWindow(uint32_t kind, DisplayWindowHook hook);
