// The NIfTI rows of the open dialog (code 2): NIfTI-1 and NIfTI-2, single file or header and
// image pair, plain or gzipped, through nifticlib.
//
// The header step checks the sizes against the file (against memory for gzipped files)
// before anything is allocated. Types map one to one onto the array types; RGB files give
// three arrays. When scl_slope is set (not 0, not NaN, not the identity) the array is r4
// (complex r4 for complex files) and holds value x slope + intercept. Steps come from
// pixdim. The file's qform and sform are kept under the array's name (nifti_orientation.h).
#pragma once

#include "files/file_entry.h"
#include "files/file_options.h"

class CZrkData;

// 1 when the file is usable, with "header success" in entry.status.
int NiftiHeader(const COpenOptions& options, FileEntry& entry);
// Reads the samples straight into targets[0] when they can go there unconverted; 1 with
// "read complete", 0 with the reason in entry.status.
int NiftiLoad(const COpenOptions& options, FileEntry& entry, CZrkData* const targets[3]);

// Registers the reader under code 2 and the NIfTI-1 writer for ".nii" and ".nii.gz".
void RegisterNiftiKinds();
