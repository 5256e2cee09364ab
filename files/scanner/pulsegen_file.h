// Waveform files of the scanner's pulse sequencer (open code 8, save row 6), big-endian:
//   "IPG0": 64-byte header of sixteen 32-bit words (word 1 and word 3: file bytes, word 2: 1),
//           16-bit points, padded with a 0 to an even count, and a trailing 32-bit word, the
//           one's complement of the sum of every 32-bit word before it;
//   "DFT2": complex points, the i parts at 96 and the q parts at 608, the count in the
//           second of sixteen 16-bit words that follow the first sixteen 32-bit words.
#pragma once

#include <string>

#include "files/file_entry.h"
#include "files/file_kinds.h"
#include "files/file_options.h"

int ReadPulsegenHeader(FileEntry& entry);

// A failure also shows the message "read failed".
int LoadPulsegen(const COpenOptions& dialog, FileEntry& entry, CZrkData* const targets[3]);

// Writes `part` (0 i, 1 q, 2 magnitude, 3 phase) of `data` as an "IPG0" file, asking before
// values outside 16 bits wrap. 1 on success; 0 with the text in `status`.
int SavePulsegen(const std::string& path, const CZrkData* data, int part, std::string& status);

// SavePulsegen for the save dialog: its first array and save_iqmp=.
int SavePulsegenRequest(const CSaveRequest& request);
