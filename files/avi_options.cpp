#include "files/avi_options.h"

#include "core/key_reader.h"

void CAviOptions::ResetRanges() {
    for (int k = 0; k < 4; ++k) first[k] = 0, last[k] = -1;
}

int CAviOptions::ScanfOptions(CKeyReader& reader) {
    if (!reader.Int("avi_encoder=", &encoder)) return 0;
    if (encoder < 0 || encoder >= AVI_ENCODER_COUNT) encoder = AVI_MJPEG;
    return 1;
}

void CAviOptions::PrintfOptions(FILE* file) const {
    std::fprintf(file, "\n//avi options\n");
    std::fprintf(file, "avi_encoder= %d\n", encoder);
}

const char* AviEncoderName(int encoder) {
    switch (encoder) {
        case AVI_FFV1:
            return "FFV1 (lossless)";
        case AVI_RAW:
            return "raw";
        default:
            return "Motion JPEG";
    }
}

CAviOptions& AviOptions() {
    static CAviOptions options;
    return options;
}
