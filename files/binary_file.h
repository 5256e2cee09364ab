// The binary reader and writer: raw samples of one type, the layout typed in the open
// dialog (six resolutions, a byte skip after each unit of each direction, a header of
// `dataOffset` bytes, byte order), and on saving the values of one array converted to a
// chosen type.
//
// With s[k] the skip after each unit of direction k and e the element bytes, a unit of x
// takes e + s[0] bytes, a line (s[0] + e) x + s[1], a plane ((s[0] + e) x + s[1]) y + s[2],
// and so on; the data need dataOffset + those bytes.
#pragma once

#include <cstdint>
#include <string>

#include "files/file_entry.h"
#include "files/file_kinds.h"
#include "files/file_options.h"

// A resolution, skip or offset as typed: a number, anything else (negative, missing, text)
// meaning 0.
uint64_t TypedCount(const std::string& text);

// Fills type, sizes, unit steps, skips, dataOffset and byteSwap from the options.
void HeaderFromOptions(const COpenOptions& options, FileEntry& entry);

int ReadBinaryHeader(const COpenOptions& options, FileEntry& entry);
int LoadBinary(const COpenOptions& options, FileEntry& entry, CZrkData* const targets[3]);

// The info line of the open dialog: the file and data sizes and how many x lines, planes
// and cubes the file holds, or "resolutions don't make sense", or "unable to access file".
// `fits` (when given) says whether the file holds all the data.
std::string BinarySizeLine(const FileEntry& entry, bool* fits = nullptr);

int SaveBinary(const CSaveRequest& request);
