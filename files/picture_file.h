// Pictures and movies of a display: the frame its entry draws (CDisplayEntry::RenderFrame)
// goes to a bmp, jpg, png or gif file, or, page after page, to an AVI movie.
//
// A display must be listed in the window list and be one of the display kinds, or the save
// stops with the texts the save dialog shows. bmp, jpg and png go through Qt's image
// writers (QtGui only), gif through giflib; all write atomically.
//
//   CSaveRequest r;
//   r.path = "wave.png";
//   r.display = view;      // listed in GlobalWindowSpace()
//   r.status = &status;
//   SavePicture(r);        // 0 with status "can not find image" for a window that is gone
#pragma once

#include <string>

#include "display/display_entry.h"
#include "files/file_kinds.h"

// The checks both writers make; "" when the display can be saved, else the text for
// `what` ("bmp" or "avi").
std::string CheckDisplay(const CDisplayEntry* display, const char* what);

// Writes the display's current page (page_z, page_t) in the format the extension of
// request.path names: .jpg/.jpeg, .png, .gif, and bmp for anything else.
int SavePicture(const CSaveRequest& request);

// Writes `frame` as a GIF at `path`: indexed frames keep their palette; 32-bit frames keep
// their colours exactly when there are 256 or fewer, else are quantised. 1 on success.
int WriteGif(const CFrame& frame, const std::string& path, std::string* error);

// Save rows 2 (".bmp .jpg .jpeg .png .gif") and 3 (".avi") in the file kinds.
void RegisterPictureKinds();
