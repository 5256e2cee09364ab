#include "files/dicom_reader.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <type_traits>

#include "core/element_type.h"
#include "core/zrk_data.h"
#include "core/zrk_error.h"
#include "files/dicom_file.h"
#include "files/entry_block.h"

namespace {

int StoredType(const DicomRecord& r) {
    const int type = r.sampleBytes == 1 ? TYPE_N1 : r.sampleBytes == 2 ? TYPE_N2 : TYPE_N4;
    return r.isSigned ? type - TYPE_N1 + TYPE_I1 : type;
}

bool Scaled(const COpenOptions& o, const DicomRecord& r) { return o.dicom_scale && !r.isRgb; }

int Failed(FileEntry& e, const std::string& text) {
    e.status = text;
    e.failed = 1;
    return 0;
}

// Copies the decoded pixels of one colour channel into the entry's block of `target`,
// converting to r4 with the rescale when asked. Samples past the end of a short decode
// come out as 0.
template <class S>
void CopyChannel(const CDicomFile& file, const DicomRecord& r, int channel, bool scale,
                 const CEntryBlock& block) {
    const auto* src = reinterpret_cast<const S*>(file.Pixels());
    const uint64_t have = file.PixelBytes() / sizeof(S);
    const uint64_t nx = r.x;
    for (uint64_t p = 0; p < block.Planes(); ++p) {
        char* plane = block.Plane(p);
        for (int64_t j = 0; j < r.y; ++j) {
            uint64_t at, stride = 1;
            if (r.mosaic.tiles) {
                at = r.mosaic.RowOffset(static_cast<int>(p), static_cast<int>(j), r.columns);
            } else if (r.planar) {
                at = ((p * r.samples + channel) * r.rows + j) * r.columns;
            } else {
                at = ((p * r.rows + j) * r.columns) * r.samples + channel;
                stride = r.samples;
            }
            const uint64_t n = at >= have ? 0 : std::min(nx, (have - at + stride - 1) / stride);
            if (scale) {
                float* out = reinterpret_cast<float*>(plane) + j * nx;
                for (uint64_t i = 0; i < n; ++i)
                    out[i] = static_cast<float>(src[at + i * stride]) * r.rescaleSlope +
                             r.rescaleIntercept;
                std::fill(out + n, out + nx, 0.0f);
            } else {
                S* out = reinterpret_cast<S*>(plane) + j * nx;
                if (stride == 1) {
                    std::memcpy(out, src + at, n * sizeof(S));
                } else {
                    for (uint64_t i = 0; i < n; ++i) out[i] = src[at + i * stride];
                }
                std::fill(out + n, out + nx, S{0});
            }
        }
    }
}

void CopyInto(const CDicomFile& file, const DicomRecord& r, int channel, bool scale,
              const CEntryBlock& block) {
    switch (StoredType(r)) {
        case TYPE_N1:
            return CopyChannel<uint8_t>(file, r, channel, scale, block);
        case TYPE_I1:
            return CopyChannel<int8_t>(file, r, channel, scale, block);
        case TYPE_N2:
            return CopyChannel<uint16_t>(file, r, channel, scale, block);
        case TYPE_I2:
            return CopyChannel<int16_t>(file, r, channel, scale, block);
        case TYPE_N4:
            return CopyChannel<uint32_t>(file, r, channel, scale, block);
        default:
            return CopyChannel<int32_t>(file, r, channel, scale, block);
    }
}

}  // namespace

int DicomHeader(const COpenOptions& options, FileEntry& entry) {
    entry.failed = 0;
    DicomRecord r;
    try {
        CDicomFile file;
        if (!file.Open(entry.path, r)) return Failed(entry, r.errorText);
    } catch (...) {
        return Failed(entry, "unknown error");
    }
    entry.header.SetHeader(Scaled(options, r) ? TYPE_R4 : StoredType(r), r.x, r.y, r.z, 1, 1, 1);
    entry.header.SetMm(r.step[0], r.step[1], r.step[2], 1.0f, 1.0f, 1.0f);
    entry.exam = r.exam;
    entry.series = r.series;
    entry.image = r.image;
    entry.isRgb = r.isRgb;
    entry.rescaleSlope = r.rescaleSlope;
    entry.rescaleIntercept = r.rescaleIntercept;
    entry.baselines = -1;
    entry.dataOffset = 0;
    entry.byteSwap = 0;
    for (uint64_t& s : entry.skip) s = 0;
    char text[600];
    std::snprintf(text, sizeof text, "%s %s\nexam %d series %d image %d", r.text1.c_str(),
                  r.text2.c_str(), r.exam, r.series, r.image);
    // the info line; the title stays the file's, which names the array
    entry.status = text;
    return 1;
}

int DicomLoad(const COpenOptions& options, FileEntry& entry, CZrkData* const targets[3]) {
    try {
        CDicomFile file;
        DicomRecord r;
        if (!file.Open(entry.path, r)) return Failed(entry, r.errorText);
        const bool scale = Scaled(options, r);
        if (r.x != static_cast<int64_t>(entry.header.nx) ||
            r.y != static_cast<int64_t>(entry.header.ny) ||
            r.z != static_cast<int64_t>(entry.header.nz) || r.isRgb != entry.isRgb ||
            entry.header.type != (scale ? TYPE_R4 : StoredType(r)))
            return Failed(entry, "file changed since its header was read");
        const int channels = r.isRgb ? 3 : 1;
        for (int c = 0; c < channels; ++c)
            if (!targets[c]) Raise("target does not fit the file");
        // On a size mismatch the pixels that did decode are still read in.
        const bool whole = file.ReadImage(r);
        if (!whole && !file.Pixels()) return Failed(entry, r.errorText);
        for (int c = 0; c < channels; ++c) {
            const CEntryBlock block(entry, *targets[c]);
            CopyInto(file, r, c, scale, block);
            if (block.AtOrigin()) targets[c]->CopyMm(entry.header);
            targets[c]->changed = 1;
        }
        if (!whole) return Failed(entry, r.errorText);
        entry.status = "read complete";
        return 1;
    } catch (const ZrkError& e) {
        return Failed(entry, e.what());
    } catch (...) {
        return Failed(entry, "unknown error");
    }
}
