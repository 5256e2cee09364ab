// Raw acquisition files of the scanner (open code 7). A file starts with a fixed header
// "pool" whose size and layout depend on the software revision that wrote it; the samples
// follow the pool. The first four bytes, taken as an IEEE single, tell the revision: 5x, 7x
// and 8x wrote big-endian files, every later revision little-endian.
//
// The samples nest receivers outermost, then slices (z), then echoes (t); each such block is
// one baseline line followed by `y` lines of `x` complex points. The header step fills a
// FileEntry from the pool without touching the samples:
//
//   FileEntry e;
//   e.path = "/data/P12345.7";
//   if (ReadRawHeader(e, nullptr)) ...   // e.header: complex i2 [x][y][z][echoes][receivers]
#pragma once

#include <cstdint>

#include "files/file_entry.h"

// Where the revisions keep their fields: 5x to 8x, 9x to 24x, 26x on.
enum RawLayout { RAW_OLD, RAW_MID, RAW_NEW };

// How a revision stores the slice count that enters the z step.
enum RawCount { COUNT_S16, COUNT_U16, COUNT_EXCHANGED, COUNT_U32 };

struct CRawRevision {
    const char* name;  // "5x", "28.002"
    double low;        // the revision holds low <= v < high, v the first word widened
    double high;
    bool big;
    int32_t pool;
    const char* log;
    RawLayout layout;
    RawCount count;
    uint32_t slice_count;  // offset of the slice-entries field
    uint32_t table;        // slice table and its entry size
    uint32_t entry;
    // The image block: steps (pixel sizes in the old layout, with the image size at dim_x
    // and dim_y), thickness, gap and the identification.
    uint32_t dim_x, dim_y, step_x, step_y, thickness, gap, exam, series, image;
    bool wide_ids;  // exam unsigned 16, series signed 16, image 32-bit; else three unsigned 16
};

// The revision of a file that begins with `first`, or null: the rows are tried in their
// order and the first that holds decides.
const CRawRevision* FindRawRevision(const uint8_t first[4]);

extern const char* const kNotRawHeader;

// The header step: 1 on success, 0 with the status and `failed` set. Logs the pool size to
// the history. When `preview` is given it receives the preview plane (see ReadRawPreview).
int ReadRawHeader(FileEntry& entry, CZrkData* preview);

// The first plane of the first block, past its baseline line, at most 4096 x 4096 points:
// what the open dialog shows while the user clicks through files. The caller frees it.
// False (and `plane` left without samples) when the file does not hold it.
bool ReadRawPreview(const FileEntry& entry, CZrkData& plane);
