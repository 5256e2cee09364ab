// MuOutputTarget: one output of the chain, handed to the engine as its opaque output handle,
// and the functions that store the engine's planes into the target's array.
//
// An array is made at the first store: x = nx, y = ny, z = nz, t = volumes, folded so that z
// takes the larger when either is 1. A target with a palette (look flag) gets spacing in
// millimetres from the field of view and opens a 2d display at its first store; one without
// is a temporary, deleted at the end of the run. With "append data" the array must exist; it
// grows and keeps its old planes, and new volumes go behind the append offset.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "wave/wave_params.h"

class CDataSpace;
class CZrkData;

constexpr int kMuLookFlag = 0x20000;

struct MuOutputTarget {
    std::string name;
    char palette[128] = {};
    int look = 0;  // kMuLookFlag, or 0 for a temporary
    int written = 0;
    int slot = 0;    // the current pass
    int passes = 1;  // volumes of the passes
    int extra = 0;   // further volumes behind them (a weighted sum's result)
    int apply_mask = 0;
    uint64_t append_offset = 0;  // bytes
    CZrkData* array = nullptr;

    bool Active() const { return !name.empty(); }
    wave_output Handle() { return Active() ? this : nullptr; }
};

// Expands `format` into t->name and readies the target. 0 on success; 1 with `error` set when
// the name is invalid or, with `append`, when the array does not exist.
int MakeTarget(MuOutputTarget* t, CDataSpace& space, const std::string& format,
               const std::string& base, int count, bool append, const char* palette, int apply_mask,
               std::string* error);

// Called with a look target's array at its first store (the form opens its display there).
using MuFirstStoreFn = std::function<void(CZrkData* array, const char* palette)>;

// The store functions. Each writes `n` samples of one volume at volume `position`, making
// or growing the array first; 0 on success, 1 after "image alloc failed" on the history.
int StorePlaneBytes(CDataSpace& space, const uint8_t* plane, const wave_params* p,
                    MuOutputTarget* t, int position, int volumes, const MuFirstStoreFn& first);
// `planar`: the real plane then the imaginary plane; else interleaved pairs.
int StorePlaneComplex(CDataSpace& space, const float* plane, int planar, const wave_params* p,
                      MuOutputTarget* t, int position, int volumes, const MuFirstStoreFn& first);
// Samples whose `mask` byte is 0 are stored as 0.
int StorePlaneFloatMask(CDataSpace& space, const float* plane, const uint8_t* mask,
                        const wave_params* p, MuOutputTarget* t, int position, int volumes,
                        const MuFirstStoreFn& first);
int StorePlaneFloat(CDataSpace& space, const float* plane, const wave_params* p, MuOutputTarget* t,
                    int position, int volumes, const MuFirstStoreFn& first);
