#include "display/qt/view_rgb.h"

#include "display/image_bits.h"

int CViewRgb::Render(CFrame& frame) {
    const CPlane* planes[3] = {&Look().rplane, &Look().gplane, &Look().bplane};
    return ImageBitsRgb(&Space(), Doc().data, planes, page, frame);
}
