// Fuzz target: any bytes as a pulsegen file, header step and load.
#include "files/scanner/pulsegen_file.h"
#include "tests/files/scanner/fuzz_scanner.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return fuzz::RunOne(data, size, ReadPulsegenHeader, LoadPulsegen,
                        {"read failed", "unknown file type"});
}
