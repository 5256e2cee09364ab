// The open code of a file chosen without a dialog (the console front end): by content
// first, then by extension.
//   1 DICOM: "DICM" at byte 128
//   2 NIfTI: "n+1"/"ni1" at 344, "n+2"/"ni2" at 4, or .nii, .nii.gz, .hdr
//   5 MAT: a text header beginning "MATLAB", or .mat
//   6 workspace: "zarnik " at the start, or .zrk
//   4 text: .txt
//   3 binary: anything else
#pragma once

#include <string>

int GuessOpenCode(const std::string& path);
