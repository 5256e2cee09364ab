// Fuzz target: any bytes as an image file, header step and load.
#include "files/scanner/image_file.h"
#include "tests/files/scanner/fuzz_scanner.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return fuzz::RunOne(
        data, size, ReadImageHeader, LoadImage,
        {"read failed", "unknown header", "unknown rev of 5x header", "unknown rev of 11x header"});
}
