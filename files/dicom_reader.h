// The DICOM rows of the open dialog (code 1): the header step fills a FileEntry from the
// dataset, the load step decodes the pixels into the arrays the load model made for it.
//
// Types follow the stored samples: 1, 2 and 4 bytes give n1, n2, n4, or i1, i2, i4 when
// signed; with open_dicom_scale= on the array is r4 and holds sample x slope + intercept.
// Colour files give three arrays, r, g and b. A mosaic of slices opens as a volume. Steps
// come from Pixel Spacing and the slice spacing, in millimetres.
#pragma once

#include "files/file_entry.h"
#include "files/file_options.h"

class CZrkData;

// 1 when the file is usable; entry.status holds the header text or the reason.
int DicomHeader(const COpenOptions& options, FileEntry& entry);
// Writes into targets[0] (targets[0..2] for colour) at entry.dest; 1 on success with
// "read complete", 0 with the reason in entry.status.
int DicomLoad(const COpenOptions& options, FileEntry& entry, CZrkData* const targets[3]);

// Registers the reader under code 1.
void RegisterDicomKinds();
