#include "display/qt/doc_1d.h"

#include <algorithm>
#include <cstring>

#include "display/qt/view_1d.h"

int CDoc1d::RenderFrame(const uint64_t page[4], CFrame& frame) {
    auto* view = Frame() ? qobject_cast<CView1d*>(Frame()->View()) : nullptr;
    if (!view) return 0;
    uint64_t kept[4];
    std::memcpy(kept, view->page, sizeof kept);
    std::memcpy(view->page, page, sizeof kept);
    view->dirty = true;
    QImage image(std::max(16, view->width()), std::max(16, view->height()), QImage::Format_RGB32);
    view->DrawBitmap(image);
    std::memcpy(view->page, kept, sizeof kept);
    view->Draw();
    frame.width = image.width();
    frame.height = image.height();
    frame.bits = 32;
    frame.stride = static_cast<int>(image.bytesPerLine());
    frame.pixels.assign(image.constBits(), image.constBits() + image.sizeInBytes());
    return 1;
}
