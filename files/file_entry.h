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
    int32_t isRgb = 0;
    float rescaleSlope = 1.0f;
    float rescaleIntercept = 0.0f;
};
