// FileEntry: one file selected in the open dialog. A header step fills it without touching
// the data; the load step then makes arrays from it.
#pragma once

#include <cstdint>
#include <string>

#include "core/zrk_data.h"

struct FileEntry {
    std::string status;  // last message of this file, shown in the dialog
    std::string path;
    std::string title;
    CZrkData header;  // sizes, type and steps; never data
    uint64_t skip[6] = {};
    uint64_t dest[4] = {};
    int32_t exam = 0, series = 0, image = 0;
    int32_t addBaseline = 0, subtractBaseline = 0;
    int32_t volumeFlag = 0;
    int32_t echoes = 0;
    int32_t receivers = 0;
    int32_t byteSwap = 0;
    int32_t hasBitmap = 0;
    int32_t baselines = -1;
    int32_t dataOffset = 0;
    int32_t failed = 0;
    // Three-byte RGB pixels, loaded as three arrays ".r", ".g", ".b".
    int32_t isRgb = 0;
    // DICOM modality rescale: stored value times slope plus intercept.
    float rescaleSlope = 1.0f;
    float rescaleIntercept = 0.0f;
    // The open code this entry was read as.
    int32_t code = 0;
};

// True when `target` can take the entry's samples at entry.dest: the same type, the same x
// and y, and the entry's z, t, u, v from dest on inside the target. Readers check it before
// they write, whatever made the target.
inline bool EntryFitsTarget(const FileEntry& entry, const CZrkData& target) {
    const CZrkData& h = entry.header;
    if (target.Type() != h.Type() || !target.Data() || target.nx != h.nx || target.ny != h.ny)
        return false;
    const res_t have[4] = {target.nz, target.nt, target.nu, target.nv};
    const res_t need[4] = {h.nz, h.nt, h.nu, h.nv};
    for (int k = 0; k < 4; ++k)
        if (entry.dest[k] > have[k] || need[k] > have[k] - entry.dest[k]) return false;
    return true;
}
