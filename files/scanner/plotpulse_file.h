// Plot files of the scanner's pulse sequencer (open code 9): seven instruction streams and a
// table of waveform entries, expanded into an i2 array of `x` samples by 7 channels (y) by
// the blocks of the streams (z).
//
// The file starts with nine 32-bit big-endian words: the table's length, the byte lengths of
// streams 1 to 7 and one more length; the table follows at 80 and the streams after it. A
// variant that starts with "PD/P" keeps the nine words little-endian at 333; its samples
// are read as if it were the plain form.
//
// An instruction is four big-endian 16-bit words w0 ... w3. It lasts
// (256 - (w0 & 255)) * 65536 - w1 steps of 2 us (twice as many in streams 1 to 3). With
// bit 8 of w0 set it ends a block; otherwise w3 is 0 for a constant 0, or the table index of
// a waveform that runs up to and including the first entry with bit 0 set, each entry held
// for the duration at the amplitude w2: ((entry & ~1) * w2) >> 15.
#pragma once

#include "files/file_entry.h"
#include "files/file_options.h"

// The header step: 1 on success; 0 with "invalid header" and `failed` set.
int ReadPlotpulseHeader(FileEntry& entry);

// Expands the streams into targets[0] at entry.dest: 1 with "reading complete", 0 with
// "read failed" when the file or its streams do not fit the header.
int LoadPlotpulse(const COpenOptions& dialog, FileEntry& entry, CZrkData* const targets[3]);
