// Single reconstructed image files of the scanner (open code 12): one plane of 16-bit
// samples behind a header in one of four forms, told by the first four bytes read
// big-endian:
//   1. "IMGF": big-endian, header revision 2 or 3;
//   2. any first byte over 0xFD0708: little-endian, header revision 2;
//   3. 0x24FE0708: as 2, with the samples at 9452;
//   4. anything else: an "IMGF" header at 3228, big-endian.
// Exam, series and image numbers are big-endian in every form, the little-endian ones too.
#pragma once

#include "files/file_entry.h"
#include "files/file_options.h"

// The header step: 1 with "exam %d series %d image %d", 0 with the status and `failed`.
int ReadImageHeader(FileEntry& reader);

// The plane into targets[0] at reader.dest: 1 with "reading complete", 0 with "read failed".
int LoadImage(const COpenOptions& dialog, FileEntry& reader, CZrkData* const targets[3]);
