#include "display/display_entry.h"

namespace {

DisplayWindowHook* Slot(uint32_t kind) {
    static DisplayWindowHook hooks[5] = {};
    switch (kind) {
        case LOOK_1D:
            return &hooks[0];
        case LOOK_2D:
            return &hooks[1];
        case LOOK_XY:
            return &hooks[2];
        case LOOK_RGB:
            return &hooks[3];
        case LOOK_SPREADSHEET:
            return &hooks[4];
        default:
            return nullptr;
    }
}

}  // namespace

DisplayWindowHook DisplayWindow(uint32_t kind) {
    DisplayWindowHook* slot = Slot(kind);
    return slot ? *slot : nullptr;
}

DisplayWindowHook SetDisplayWindow(uint32_t kind, DisplayWindowHook hook) {
    DisplayWindowHook* slot = Slot(kind);
    if (!slot) return nullptr;
    DisplayWindowHook previous = *slot;
    *slot = hook;
    return previous;
}
