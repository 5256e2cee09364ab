// Fuzz target: any bytes as a NIfTI file, through the header and load steps. Input that
// starts as gzip does is named .nii.gz, as the library decides compression by name.
#include "files/nifti_reader.h"
#include "tests/files/med_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const bool gz = size >= 2 && data[0] == 0x1f && data[1] == 0x8b;
    med::FuzzOne(data, size, gz ? ".nii.gz" : ".nii", &NiftiHeader, &NiftiLoad);
    return 0;
}
