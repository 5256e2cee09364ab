// The load step of raw files (open code 7): the samples of an entry that ReadRawHeader
// filled, into an array the load model made from its header (or from a stack's summed
// header), at entry.dest along z, t, u, v.
//
// Each (receiver, slice, echo) block starts with a baseline line. When the header reports
// baselines (>= 0, also 0) that line is read and consumed; with baselines > 0 and the
// "add" or "subtract" option on, it is added to or subtracted from every line of the block
// at the component's width, wrapping (subtract wins when both are on).
#pragma once

#include "files/file_entry.h"
#include "files/file_options.h"

// 1 with "reading complete"; 0 with "read failed" (the file does not hold the samples, or
// the target cannot take them) or "alloc failed". Checks the file's size before it
// allocates anything.
int LoadRaw(const COpenOptions& dialog, FileEntry& entry, CZrkData* const targets[3]);
