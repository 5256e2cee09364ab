// CDoc1d: the document of a 1d or xy plot. It draws its picture for the picture and movie
// writers through the view's DrawBitmap, as 32-bit pixels.
#pragma once

#include "display/qt/mdi_doc.h"

class CDoc1d : public CMdiDoc {
  public:
    using CMdiDoc::CMdiDoc;
    int RenderFrame(const uint64_t page[4], CFrame& frame) override;
};
