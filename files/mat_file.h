// MAT files through matio: versions 4 (either byte order), 5/6/7 (zlib-compressed or not)
// and 7.3 (HDF5) read; versions 4, 6 and 7 written.
//
// Reading walks the variables in file order. A numeric array of the classes double, single
// and the 8-, 16- and 32-bit integers, real or complex, of one to six dimensions becomes an
// array of the data space under its variable's name; anything else (cells, structures,
// text, sparse, 64-bit integers, more than six dimensions, empty) is passed by. Column-major
// MAT order is the record's x-fastest order, so x is the first MAT dimension; with
// `swapxy` x and y trade places. Every size is checked against the file before anything
// is allocated, so a hostile header costs nothing.
//
//   FileEntry e;
//   e.path = "/data/wave.mat";
//   if (ReadMatHeader(options, e)) LoadMatFile(options, e, GlobalDataSpace());
//   // e.status: "reading complete"
#pragma once

#include <string>

#include "files/file_kinds.h"

// Header step of open code 5: "%d bytes in %d out of %d compatible array(s)" in status, the
// first compatible array's sizes in `header`; 1 when the file opened.
int ReadMatHeader(const COpenOptions& options, FileEntry& entry);
// Loads every compatible array into `space`; "reading complete" and 1 on success.
int LoadMatFile(const COpenOptions& options, FileEntry& entry, CDataSpace& space);
// Writes request.arrays in the version of options->mat_version (4, 6 or 7), atomically.
int SaveMatFile(const CSaveRequest& request);

// The variable name an array is saved under: every character other than a letter, digit
// or '_' becomes '_', and "num_" goes in front of a leading digit.
std::string MatName(const char* name);

// Open code 5 and save row 4 (".mat") in the file kinds.
void RegisterMatKinds();
