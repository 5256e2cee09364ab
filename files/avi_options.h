// CAviOptions: what the movie writer asks beyond the save dialog's frame rate and frames per
// time point: the encoder, and the pages (z, t, u, v ranges) that become frames. The
// encoder is kept in the preferences file; the ranges are chosen per save (CSaveAvi).
#pragma once

#include <cstdint>
#include <cstdio>

class CKeyReader;

enum AviEncoder { AVI_MJPEG, AVI_FFV1, AVI_RAW, AVI_ENCODER_COUNT };

struct CAviOptions {
    int encoder = AVI_MJPEG;
    // First and last page of z, t, u, v; a last of -1 runs to the end.
    int64_t first[4] = {0, 0, 0, 0};
    int64_t last[4] = {-1, -1, -1, -1};

    // Every page of the display again.
    void ResetRanges();
    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;
};

// The encoder's name as the dialog lists it: "Motion JPEG", "FFV1 (lossless)", "raw".
const char* AviEncoderName(int encoder);

// The options the movie row of the save dialog uses.
CAviOptions& AviOptions();
