// CDoc2d: the document of a 2d or rgb image display. It draws its picture for the picture and
// movie writers by the view's pipeline: 8-bit indices with the palette, or 32-bit for rgb.
#pragma once

#include "display/qt/mdi_doc.h"

class CDoc2d : public CMdiDoc {
  public:
    using CMdiDoc::CMdiDoc;
    int RenderFrame(const uint64_t page[4], CFrame& frame) override;
};
