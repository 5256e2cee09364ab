#include "files/picture_file.h"

#include <QImage>
#include <QImageWriter>
#include <QString>

#include <algorithm>
#include <cctype>

#include "core/window_space.h"
#include "files/atomic_file.h"

namespace {

std::string LowerExtension(const std::string& path) {
    const size_t dot = path.rfind('.');
    const size_t slash = path.rfind('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    std::string ext = path.substr(dot + 1);
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ext;
}

// A view of the frame's pixels, no copy: the frame outlives the image.
QImage ImageOf(const CFrame& frame) {
    if (frame.bits == 8) {
        QImage image(frame.pixels.data(), frame.width, frame.height, frame.stride,
                     QImage::Format_Indexed8);
        QList<QRgb> table(256);
        for (int k = 0; k < 256; ++k)
            table[k] = qRgb(frame.palette[k][0], frame.palette[k][1], frame.palette[k][2]);
        image.setColorTable(table);
        return image;
    }
    return QImage(frame.pixels.data(), frame.width, frame.height, frame.stride,
                  QImage::Format_RGB32);
}

bool FrameIsWhole(const CFrame& f) {
    if (f.width <= 0 || f.height <= 0 || (f.bits != 8 && f.bits != 32)) return false;
    const int row = f.width * (f.bits / 8);
    return f.stride >= row && f.pixels.size() >= static_cast<size_t>(f.stride) * f.height;
}

}  // namespace

std::string CheckDisplay(const CDisplayEntry* display, const char* what) {
    if (!display || !GlobalWindowSpace().IsDataValid(display)) return "can not find image";
    if ((display->kind & 0xF0000) == 0)
        return std::string("display data as 1d/2d/xy/rgb before saving as ") + what;
    return "";
}

int SavePicture(const CSaveRequest& request) {
    std::string scratch;
    std::string& status = request.status ? *request.status : scratch;
    status = CheckDisplay(request.display, "bmp");
    if (!status.empty()) return 0;
    CFrame frame;
    const uint64_t page[4] = {static_cast<uint64_t>(std::max(request.display->page_z, 0)),
                              static_cast<uint64_t>(std::max(request.display->page_t, 0)), 0, 0};
    if (!request.display->RenderFrame(page, frame) || !FrameIsWhole(frame)) {
        status = "can not draw image";
        return 0;
    }
    const std::string ext = LowerExtension(request.path);
    CAtomicFile file(request.path);
    if (!file.Create()) {
        status = "file create failed";
        return 0;
    }
    if (ext == "gif") {
        if (!WriteGif(frame, file.TempPath(), &status)) return 0;
    } else {
        const char* format = ext == "jpg" || ext == "jpeg" ? "jpg" : ext == "png" ? "png" : "bmp";
        QImageWriter writer(QString::fromStdString(file.TempPath()), format);
        // JPEG keeps fine detail of a wave image only at high quality.
        if (format[0] == 'j') writer.setQuality(95);
        if (!writer.write(ImageOf(frame))) {
            status = "file create failed: " + writer.errorString().toStdString();
            return 0;
        }
    }
    if (!file.Commit()) {
        status = "write failed";
        return 0;
    }
    return 1;
}
