// CUnwrap: the options of phase unwrapping and the driver that runs a solver over a stack of
// planes (or xyz volumes). The unwrap form and the inversion sheet both call it.
//
// Per plane: the mask (quality >= unwrap_thresh when the threshold check is on, the region
// when one is given, finite samples only), optionally smoothed; phase and quality normalised
// to 0 ... 1; the solver; the result centred by whole cycles and brought back to the range.
// Masked points keep their input (keep_masked) or get the middle of the range. The result is
// an r4 array of the input's sizes, stored by NewUndo under "unwrap"; the input keeps its
// samples on any failure.
//
//   CUnwrap u;
//   u.unwrap_method = UNWRAP_GRAPH_CUT;
//   u.SetPreset(UNWRAP_RANGE_PI);
//   u.Unwrap({.phase = p});              // in place; raises on failure
//   int status = u.Run({.phase = p, .output = o, .quality = mag});  // 0, or 1 with a status text
#pragma once

#include <cstdint>
#include <cstdio>

#include "core/zrk_data.h"
#include "ops/unwrap/solvers.h"

class CKeyReader;

enum UnwrapMethod : int {
    UNWRAP_QUALITY_GUIDED = 0,
    UNWRAP_MIN_DISCONTINUITY = 1,
    UNWRAP_GRAPH_CUT
};
inline constexpr const char* kUnwrapMethodLabels[] = {"quality guided", "minimum discontinuity",
                                                      "graph cut"};

// The phase range presets, in the order the form lists them; "other" keeps what is typed.
enum UnwrapRange : int {
    UNWRAP_RANGE_3141 = 0,
    UNWRAP_RANGE_255,
    UNWRAP_RANGE_4095,
    UNWRAP_RANGE_HALF_PI,
    UNWRAP_RANGE_PI,
    UNWRAP_RANGE_OTHER,
};
inline constexpr const char* kUnwrapRangeLabels[] = {"-3141 ... +3141", "0 ... 255",   "0 ... 4095",
                                                     "-pi/2 ... +pi/2", "-pi ... +pi", "other"};

struct CUnwrapJob {
    CZrkData* phase = nullptr;
    CZrkData* output = nullptr;         // null: the result replaces the input
    const CZrkData* quality = nullptr;  // null: uniform quality, no threshold
    const CZrkData* region = nullptr;   // an xy plane, non-zero inside; null: no region
    uint64_t plane = 0;                 // the shown plane (z, t, u, v folded) without stack
    UnwrapStatusFn status = {};         // graph cut's progress lines
};

class CUnwrap {
  public:
    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;

    // Sets low and high from a preset; "other" leaves them.
    void SetPreset(int preset);

    // Runs the job; raises "phase range low and high must differ", "memory error", "user
    // interupt" and the checks of the arrays. Says "complete" on the status line at the end.
    void Unwrap(const CUnwrapJob& job) const;
    // Unwrap with the failure on the status line: 0 or 1.
    int Run(const CUnwrapJob& job) const;

    int unwrap_thresh = 0;
    int unwrap_stack = 1;
    int unwrap_do_3d = 0;
    int unwrap_method = UNWRAP_QUALITY_GUIDED;
    int unwrap_smooth = 0;
    bool thresh_check = false;  // the mask comes from the quality threshold
    bool keep_masked = false;   // masked points keep their input value
    int preset = UNWRAP_RANGE_PI;
    double low = -3.14159265358979323846;
    double high = 3.14159265358979323846;
};

// One plane's work, for callers that hold plain buffers: the mask from `quality` (or all 1),
// the smoothing, normalising, solver, centring (without region) and denormalising, as the
// driver does it. `region` (one plane) may be null. `depth` planes of width x height, solved
// as one volume by graph cut with unwrap_do_3d and centred together.
void UnwrapPlanes(const CUnwrap& options, const float* phase, const float* quality,
                  const uint8_t* region, float* out, int64_t width, int64_t height, int64_t depth,
                  const UnwrapStatusFn& status);
