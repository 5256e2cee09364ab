// The NIfTI-1 writer: one array as a single .nii file, gzipped when the name ends in .gz.
// Steps go to pixdim (in millimetres); an array that came from a NIfTI file keeps that
// file's qform and sform (nifti_orientation.h). Complex integer arrays are written as
// complex r4, since NIfTI has no complex integers. The file appears whole or not at all.
#pragma once

#include <string>

#include "files/file_kinds.h"

class CZrkData;

// 1 on success; on failure `status` says why and any previous file is left as it was.
int WriteNifti(const CZrkData& array, const std::string& path, std::string& status);

// The writer entry of the save dispatch: the one array of the request.
int SaveNifti(const CSaveRequest& request);
