// GIF pictures through giflib (Qt reads GIF but has no writer).
#include <gif_lib.h>

#include <cstring>
#include <map>
#include <vector>

#include "files/picture_file.h"

namespace {

struct GifColors {
    std::vector<GifColorType> table;   // 256 entries, as many as the map holds
    std::vector<GifByteType> indices;  // width * height
};

// Indexed frames as they are; a 32-bit frame by its own colours when they fit a table.
bool ColorsOf(const CFrame& f, GifColors& out) {
    const size_t n = static_cast<size_t>(f.width) * f.height;
    out.indices.resize(n);
    out.table.assign(256, GifColorType{0, 0, 0});
    if (f.bits == 8) {
        for (int k = 0; k < 256; ++k)
            out.table[k] = {f.palette[k][0], f.palette[k][1], f.palette[k][2]};
        for (int y = 0; y < f.height; ++y)
            std::memcpy(&out.indices[static_cast<size_t>(y) * f.width],
                        &f.pixels[static_cast<size_t>(y) * f.stride], f.width);
        return true;
    }
    std::map<uint32_t, int> seen;
    bool fits = true;
    for (int y = 0; y < f.height && fits; ++y) {
        const uint8_t* row = &f.pixels[static_cast<size_t>(y) * f.stride];
        for (int x = 0; x < f.width; ++x) {
            const uint8_t* p = row + 4 * x;  // B, G, R, 0
            const uint32_t rgb = (p[2] << 16) | (p[1] << 8) | p[0];
            auto it = seen.find(rgb);
            if (it == seen.end()) {
                if (seen.size() == 256) {
                    fits = false;
                    break;
                }
                const int index = static_cast<int>(seen.size());
                it = seen.emplace(rgb, index).first;
                out.table[index] = {p[2], p[1], p[0]};
            }
            out.indices[static_cast<size_t>(y) * f.width + x] =
                static_cast<GifByteType>(it->second);
        }
    }
    if (fits) return true;
    // More colours than a GIF holds: giflib's median cut picks 256.
    std::vector<GifByteType> r(n), g(n), b(n);
    for (int y = 0; y < f.height; ++y)
        for (int x = 0; x < f.width; ++x) {
            const uint8_t* p = &f.pixels[static_cast<size_t>(y) * f.stride + 4 * x];
            const size_t k = static_cast<size_t>(y) * f.width + x;
            r[k] = p[2], g[k] = p[1], b[k] = p[0];
        }
    int size = 256;
    return GifQuantizeBuffer(f.width, f.height, &size, r.data(), g.data(), b.data(),
                             out.indices.data(), out.table.data()) == GIF_OK;
}

}  // namespace

int WriteGif(const CFrame& frame, const std::string& path, std::string* error) {
    GifColors colors;
    if (frame.width <= 0 || frame.height <= 0 || !ColorsOf(frame, colors)) {
        if (error) *error = "can not compress";
        return 0;
    }
    int code = 0;
    GifFileType* gif = EGifOpenFileName(path.c_str(), false, &code);
    if (!gif) {
        if (error) *error = std::string("file create failed: ") + GifErrorString(code);
        return 0;
    }
    ColorMapObject* map = GifMakeMapObject(256, colors.table.data());
    bool ok = map && EGifPutScreenDesc(gif, frame.width, frame.height, 8, 0, map) == GIF_OK &&
              EGifPutImageDesc(gif, 0, 0, frame.width, frame.height, false, nullptr) == GIF_OK;
    for (int y = 0; ok && y < frame.height; ++y)
        ok = EGifPutLine(gif, &colors.indices[static_cast<size_t>(y) * frame.width], frame.width) ==
             GIF_OK;
    if (!ok) code = gif->Error;
    GifFreeMapObject(map);
    if (EGifCloseFile(gif, &code) != GIF_OK) ok = false;
    if (!ok && error) *error = std::string("write failed: ") + GifErrorString(code);
    return ok ? 1 : 0;
}
