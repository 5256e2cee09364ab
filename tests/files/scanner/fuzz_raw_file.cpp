// Fuzz target: any bytes as a raw file, header step and load.
#include "files/scanner/raw_header.h"
#include "files/scanner/raw_load.h"
#include "tests/files/scanner/fuzz_scanner.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Each header step logs its pool size; the history is not kept here.
    return fuzz::RunOne(data, size, [](FileEntry& e) { return ReadRawHeader(e, nullptr); }, LoadRaw,
                        {"read failed", kNotRawHeader});
}
