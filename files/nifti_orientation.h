// Where an array read from a NIfTI file sits in the scanner's space: the file's qform and
// sform, kept beside the data space by array name, so that an array saved under that name
// as NIfTI again lines up with the file it came from in any other viewer.
#pragma once

#include <string>

struct CNiftiOrientation {
    int qform_code = 0;
    int sform_code = 0;
    double quatern[3] = {};  // b, c, d
    double qoffset[3] = {};
    double qfac = 1.0;
    double srow[3][4] = {};
};

void KeepNiftiOrientation(const std::string& name, const CNiftiOrientation& orientation);
// False when no file orientation is known under `name`.
bool FindNiftiOrientation(const std::string& name, CNiftiOrientation& orientation);
void ForgetNiftiOrientation(const std::string& name);
