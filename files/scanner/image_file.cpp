#include "files/scanner/image_file.h"

#include <cstdio>

#include "files/scanner/scanner_io.h"

namespace {

constexpr uint32_t kImgf = 0x494D4746;  // "IMGF"

// Where a block keeps thickness, x step, y step and gap, from its start.
struct CBlockForm {
    uint32_t thickness, step_x, step_y, gap;
    bool big;
};
constexpr CBlockForm kPlain = {26, 50, 54, 116, true};
constexpr CBlockForm kShifted = {28, 52, 56, 120, true};
constexpr CBlockForm kLittle = {28, 52, 56, 120, false};

constexpr uint64_t kBlockBytes = 124;

// Reads the block at `at` into the entry's steps and numbers; false when the file is short.
bool ReadBlock(const CScannerFile& file, uint64_t at, const CBlockForm& form, FileEntry& e) {
    uint8_t bytes[kBlockBytes];
    if (!file.Read(at, bytes, sizeof bytes)) return false;
    const CByteView b{bytes, sizeof bytes, form.big};
    const CByteView ids{bytes, sizeof bytes, true};
    const float thickness = b.F32(form.thickness);
    e.header.SetMm(b.F32(form.step_x), b.F32(form.step_y), thickness + b.F32(form.gap), 1.0f,
                   e.header.mm[4], e.header.mm[5]);
    e.exam = ids.U16(8);
    e.series = ids.U16(10);
    e.image = ids.U16(12);
    return true;
}

// The little-endian forms 2 and 3: only header revision 2 is known.
int LittleHeader(const CScannerFile& file, FileEntry& e) {
    uint8_t head[56];
    if (!file.Read(0, head, sizeof head)) return 0;
    const CByteView v{head, sizeof head, false};
    e.dataOffset = v.S32(4);
    e.header.SetRes(ResOf(v.S32(8)), ResOf(v.S32(12)), 1, 1, 1, 1);
    e.byteSwap = 0;
    if (v.U16(52) != 2) {
        e.status = "unknown rev of 11x header";
        return -1;
    }
    return ReadBlock(file, 2816, kLittle, e) ? 1 : 0;
}

}  // namespace

int ReadImageHeader(FileEntry& reader) {
    FileEntry& e = reader;
    e.failed = 1;
    CScannerFile file(e.path);
    if (!file.IsOpen()) return OpenFailed(e);
    const res_t ones[6] = {1, 1, 1, 1, 1, 1};
    ResetScannerHeader(e, TYPE_I2, ones);
    e.exam = e.series = e.image = 0;
    uint8_t word[4];
    // 0 short file, -1 unknown form (status set), 1 done.
    int found = 0;
    if (file.Read(0, word, 4)) {
        const uint32_t first = CByteView{word, 4, true}.U32(0);
        if (first == kImgf) {
            uint8_t head[152];
            if (file.Read(0, head, sizeof head)) {
                const CByteView v{head, sizeof head, true};
                e.dataOffset = v.S32(4);
                e.header.SetRes(ResOf(v.S32(8)), ResOf(v.S32(12)), 1, 1, 1, 1);
                e.byteSwap = 1;
                const uint16_t rev = v.U16(52);
                if (rev == 2) {
                    found = ReadBlock(file, 2308, kShifted, e);
                    e.dataOffset = 8432;
                } else if (rev == 3) {
                    found = ReadBlock(file, v.U32(148), kPlain, e);
                } else {
                    e.status = "unknown rev of 5x header";
                    found = -1;
                }
            }
        } else if ((first & 0xFFFFFF) == 0xFD0708) {
            found = LittleHeader(file, e);
        } else if (first == 0x24FE0708) {
            found = LittleHeader(file, e);
            if (found == 1) e.dataOffset = 9452;
        } else {
            uint8_t head[16] = {};
            if (!file.Read(3228, head, 4) || CByteView{head, 4, true}.U32(0) != kImgf) {
                e.status = "unknown header";
                found = -1;
            } else if (file.Read(3232, head + 4, 12)) {
                const CByteView v{head, sizeof head, true};
                e.dataOffset = static_cast<int32_t>(v.U32(4) + 3228u);
                e.header.SetRes(ResOf(v.S32(8)), ResOf(v.S32(12)), 1, 1, 1, 1);
                e.byteSwap = 1;
                found = ReadBlock(file, 2184, kShifted, e);
            }
        }
    }
    if (found == 0) e.status = "read failed";
    if (found != 1) return 0;
    char text[96];
    std::snprintf(text, sizeof text, "exam %d series %d image %d", e.exam, e.series, e.image);
    e.status = text;
    e.failed = 0;
    return 1;
}

int LoadImage(const COpenOptions& dialog, FileEntry& reader, CZrkData* const targets[3]) {
    (void)dialog;
    FileEntry& e = reader;
    e.status = "read failed";
    CZrkData* target = targets[0];
    if (!TargetFits(e, target) || e.dataOffset < 0) return 0;
    CScannerFile file(e.path);
    const uint64_t bytes = e.header.BytesPerPlane();
    char* out = target->Address(0, 0, e.dest[0], e.dest[1], e.dest[2], e.dest[3]);
    if (!file.Read(static_cast<uint64_t>(e.dataOffset), out, bytes)) return 0;
    if (e.byteSwap) SwapUnits(out, bytes, 2);
    target->CopyMm(e.header);
    e.status = "reading complete";
    return 1;
}
