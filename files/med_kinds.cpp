// The DICOM and NIfTI rows of the open and save dispatch.
#include "files/dicom_reader.h"
#include "files/file_kinds.h"
#include "files/nifti_reader.h"
#include "files/nifti_writer.h"

void RegisterDicomKinds() { RegisterReader(1, CFileReader{&DicomHeader, &DicomLoad, nullptr}); }

void RegisterNiftiKinds() {
    RegisterReader(2, CFileReader{&NiftiHeader, &NiftiLoad, nullptr});
    RegisterWriter(CFileWriter{-1, ".nii .nii.gz", &SaveNifti});
}
