// The files of quelmor-mu: reading an input array and writing a result with the input's
// geometry. Reading stays in ReadInputArray so that it can move to the open dialog's readers
// when they serve the command line: NIfTI (.nii, .nii.gz) and workspaces (.zrk, whose first
// array is taken, or FILE.zrk:NAME).
#pragma once

#include <string>

class CDataSpace;
class CZrkData;

// Where the voxels sit: a NIfTI qform and sform when the magnitude had them, else the
// spacing alone.
struct MuGeometry {
    bool oriented = false;
    int qform_code = 0, sform_code = 0;
    double quatern[3] = {}, qoffset[3] = {}, qfac = 1.0;
    double srow[3][4] = {};
    double spacing[3] = {1.0, 1.0, 1.0};  // mm
};

// The array of `path` in `space` under `name`, samples as floats (complex stays complex);
// null with `error` set to the reader's text.
CZrkData* ReadInputArray(CDataSpace& space, const std::string& path, const char* name,
                         MuGeometry* geometry, std::string* error);

// Writes `a` as float32 (complex64 when complex) NIfTI-1 to `path` (.nii or .nii.gz): a
// temporary beside it, renamed over it when whole. 0, or 1 with `error` set.
int WriteNifti(const CZrkData* a, const MuGeometry& geometry, const std::string& path,
               std::string* error);
