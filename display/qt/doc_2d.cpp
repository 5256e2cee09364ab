#include "display/qt/doc_2d.h"

#include "display/image_bits.h"

int CDoc2d::RenderFrame(const uint64_t page[4], CFrame& frame) {
    return RenderDisplayFrame(&Space(), *this, page, frame);
}
