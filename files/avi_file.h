// AVI movies of a display through libavformat/libavcodec/libswscale: one key frame for each
// page of the chosen z, t, u, v ranges (z fastest), frame n at frame number
// (n + 1) * save_ppt= of a stream at save_fps= frames a second, encoded as Motion JPEG,
// FFV1 (lossless) or raw BGR. ".avi" is added to a name that lacks it; the movie is written
// to a temporary beside it and renamed in place when whole.
//
//   CAviOptions avi;               // or AviOptions(), which the save dialog edits
//   avi.encoder = AVI_FFV1;
//   SaveAvi(request, avi);         // "avi file error: %x %s" on an encoder failure
#pragma once

#include <string>

#include "files/avi_options.h"
#include "files/file_kinds.h"

int SaveAvi(const CSaveRequest& request, const CAviOptions& avi);

// The writer of save row 3: SaveAvi with AviOptions().
int SaveAviRow(const CSaveRequest& request);

// The text shown for a libav error code (AVERROR(...)) after "avi file error: %x ".
const char* AviErrorText(int error);

// The name the movie is written under: `path`, with ".avi" added unless it ends so.
std::string AviPath(const std::string& path);
