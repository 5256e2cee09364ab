// A walk over the variable headers of a MAT file of version 4 or 5 (6, 7) before matio
// reads them: matio sizes its buffers from the lengths a header states (a name of 2 GB, a
// rank of millions) before checking them against the file. Each stated length must fit in
// what holds it (the file, the element, or, for a compressed element, what zlib can make of
// it), and the walk stops at the first header that does not. Only headers are read.
#pragma once

#include <string>

struct CMatScan {
    int version = 0;    // 4, 5 (also 6 and 7), 73 (HDF5, whose library checks its own), 0 none
    int variables = 0;  // plausible variables at the start of the file; all of them for 73
};

CMatScan ScanMatFile(const std::string& path);
