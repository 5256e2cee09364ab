// Fuzz target: any bytes as a plotpulse file, header step and load.
#include "files/scanner/plotpulse_file.h"
#include "tests/files/scanner/fuzz_scanner.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return fuzz::RunOne(data, size, ReadPlotpulseHeader, LoadPlotpulse, {"invalid header"});
}
