// Fuzz target: any bytes as a DICOM file, through the header and load steps.
#include "files/dicom_reader.h"
#include "tests/files/med_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    med::FuzzOne(data, size, ".dcm", &DicomHeader, &DicomLoad);
    return 0;
}
