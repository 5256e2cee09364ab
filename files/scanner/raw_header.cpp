#include "files/scanner/raw_header.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>
#include <vector>

#include "core/host.h"
#include "files/scanner/scanner_io.h"

namespace {

// clang-format off
const CRawRevision kRevisions[] = {
    {"5x", 5, 6, true, 39940, "5x pool size %d\r\n", RAW_OLD, COUNT_S16, 68, 10240, 40,
     38946, 38948, 38966, 38970, 38942, 39032, 38924, 38926, 38928, false},
    {"7x", 7, 8, true, 39984, "7x pool size %d\r\n", RAW_OLD, COUNT_S16, 68, 10240, 40,
     59452, 59454, 59472, 59476, 59448, 59540, 59428, 59430, 59432, false},
    {"8x", 8, 9, true, 60464, "8x pool size %d\r\n", RAW_OLD, COUNT_S16, 68, 10240, 40,
     38972, 38974, 38992, 38996, 38968, 39060, 38948, 38950, 38952, false},
    {"9x", 9, 10, false, 61464, "9x pool size %d\r\n", RAW_MID, COUNT_EXCHANGED, 68, 10240, 40,
     0, 0, 59980, 59984, 59956, 60048, 59936, 59938, 59940, false},
    {"11x", 11, 12, false, 66072, "11x pool size %d\r\n", RAW_MID, COUNT_U16, 68, 10240, 44,
     0, 0, 64920, 64924, 64548, 64552, 65200, 65212, 65214, false},
    {"14x", 14, 15, false, 145908, "14x pool size %d\r\n", RAW_MID, COUNT_U16, 68, 34816, 48,
     0, 0, 64920, 64924, 64548, 64552, 65200, 65212, 65214, false},
    // 15 and 20 log as 24x, as they always have.
    {"15", 15, 16, false, 145908, "24x pool size %d\r\n", RAW_MID, COUNT_S16, 68, 34816, 48,
     0, 0, 144308, 144312, 143936, 143940, 144884, 144896, 144752, true},
    {"16x", 16, 17, false, 145908, "16x pool size %d\r\n", RAW_MID, COUNT_S16, 68, 34816, 48,
     0, 0, 144356, 144360, 143984, 143988, 144932, 144944, 144800, true},
    {"20", 20, 21, false, 149788, "24x pool size %d\r\n", RAW_MID, COUNT_S16, 68, 36864, 48,
     0, 0, 148028, 148032, 147656, 147660, 148712, 148724, 148576, true},
    {"24x", 24, 25, false, 157276, "24x pool size %d\r\n", RAW_MID, COUNT_S16, 68, 36864, 48,
     0, 0, 148028, 148032, 147656, 147660, 148712, 148724, 148576, true},
    {"26x", 26, 27, false, 213684, "26x pool size %d\r\n", RAW_NEW, COUNT_S16, 144, 36864, 72,
     0, 0, 198868, 198872, 198496, 198500, 199552, 199564, 199416, true},
    {"27", 27, 28, false, 219828, "27 pool size %d\r\n", RAW_NEW, COUNT_S16, 144, 36864, 72,
     0, 0, 198868, 198872, 198496, 198500, 199552, 199564, 199416, true},
    {"28", 28, 28.002, false, 228020, "28 pool size %d\r\n", RAW_NEW, COUNT_S16, 144, 36864, 76,
     0, 0, 207060, 207064, 206688, 206692, 207744, 207756, 207608, true},
    {"28.002", 28.002, 29, false, 228020, "28.002 pool size %d\r\n", RAW_NEW, COUNT_U32, 3200,
     36864, 76, 0, 0, 207060, 207064, 206688, 206692, 207744, 207756, 207608, true},
};
// clang-format on

// Offsets of the fields every revision has: flag word, echoes, baselines, point size, x and
// y resolution, first and last receiver.
struct CRawFields {
    uint32_t flag, echoes, baselines, point, xres, yres, first, last;
};
constexpr CRawFields kLowFields = {56, 70, 76, 82, 102, 104, 200, 202};
constexpr CRawFields kHighFields = {132, 146, 152, 158, 178, 180, 264, 266};

// The largest slice number among the first `count` entries of the table, from 0; entries
// that would reach past the pool are not read.
int64_t SliceCount(const CByteView& pool, const CRawRevision& rev, uint64_t count) {
    int64_t z = 0;
    for (uint64_t k = 0; k < count; ++k) {
        const uint64_t at = rev.table + k * rev.entry;
        if (!pool.Has(at + 2, 2)) break;
        z = std::max<int64_t>(z, pool.S16(at + 2));
    }
    return z;
}

// The image block's fields. Where a revision keeps them past its pool (7x), they are read
// from the file at the same offsets when it is long enough; `found` is false otherwise.
struct CBlock {
    std::vector<uint8_t> bytes;
    uint64_t origin = 0;
    CByteView view{nullptr, 0, false};
    bool found = false;

    uint16_t U16(uint64_t at) const { return view.U16(at - origin); }
    int16_t S16(uint64_t at) const { return view.S16(at - origin); }
    uint32_t U32(uint64_t at) const { return view.U32(at - origin); }
    float F32(uint64_t at) const { return view.F32(at - origin); }
};

void FindBlock(const CRawRevision& rev, const CByteView& pool, const CScannerFile& file,
               CBlock& block) {
    const uint32_t at[] = {rev.dim_x, rev.dim_y, rev.step_x, rev.step_y, rev.thickness,
                           rev.gap,   rev.exam,  rev.series, rev.image};
    uint64_t lo = ~uint64_t{0}, hi = 0;
    for (uint32_t a : at)
        if (a) lo = std::min<uint64_t>(lo, a), hi = std::max<uint64_t>(hi, a + 4);
    if (pool.Has(lo, hi - lo)) {
        block.view = pool;
        block.found = true;
        return;
    }
    block.bytes.resize(hi - lo);
    block.found = file.Read(lo, block.bytes.data(), block.bytes.size());
    block.origin = lo;
    block.view = {block.bytes.data(), block.bytes.size(), pool.big};
}

}  // namespace

const char* const kNotRawHeader = "not raw header rev 5.2, 7, 8, 9, 11, 14, 15, 16, 20, 24, 26, 28";

const CRawRevision* FindRawRevision(const uint8_t first[4]) {
    uint32_t le;
    std::memcpy(&le, first, 4);
    const double vle = std::bit_cast<float>(le);
    const double vbe = std::bit_cast<float>(Swap32(le));
    // Widening is exact, so on the whole-number bounds this equals a single-precision test;
    // only 28.002 is compared in double.
    for (const CRawRevision& rev : kRevisions) {
        const double v = rev.big ? vbe : vle;
        if (v >= rev.low && v < rev.high) return &rev;
    }
    return nullptr;
}

int ReadRawHeader(FileEntry& entry, CZrkData* preview) {
    entry.failed = 1;
    CScannerFile file(entry.path);
    if (!file.IsOpen()) return OpenFailed(entry);
    uint8_t first[4];
    if (!file.Read(0, first, 4)) {
        entry.status = "read failed";
        return 0;
    }
    const CRawRevision* rev = FindRawRevision(first);
    if (!rev) {
        entry.status = kNotRawHeader;
        return 0;
    }
    std::vector<uint8_t> bytes(static_cast<size_t>(rev->pool));
    if (!file.Read(0, bytes.data(), bytes.size())) {
        entry.status = "read failed";
        return 0;
    }
    entry.dataOffset = rev->pool;
    char line[64];
    std::snprintf(line, sizeof line, rev->log, rev->pool);
    Host().History(line);
    entry.byteSwap = rev->big ? 1 : 0;

    const CByteView pool{bytes.data(), bytes.size(), rev->big};
    const CRawFields& f = rev->layout == RAW_NEW ? kHighFields : kLowFields;
    const uint32_t flag = rev->layout == RAW_OLD ? pool.U16(f.flag) : pool.U32(f.flag);
    entry.volumeFlag = static_cast<int32_t>(flag & 64);
    entry.echoes = pool.S16(f.echoes);
    entry.baselines = pool.S16(f.baselines);
    const int type = pool.U16(f.point) == 2 ? TYPE_CI2 : TYPE_CI4;
    const int64_t x = pool.U16(f.xres);
    const int64_t y = int64_t{pool.U16(f.yres)} - 1;  // the baseline line is not an image line
    entry.receivers = pool.S16(f.last) - pool.S16(f.first) + 1;

    // The slice count: as many table entries as it says, and the volume's z step. 9x keeps
    // the count in the other byte order for the step (0x0100 slices step as one).
    uint64_t entries = 0;
    float count = 0;
    switch (rev->count) {
        case COUNT_S16:
            count = pool.S16(rev->slice_count);
            entries = static_cast<uint64_t>(std::max<int16_t>(pool.S16(rev->slice_count), 0));
            break;
        case COUNT_EXCHANGED:
            count = static_cast<int16_t>(Swap16(pool.U16(rev->slice_count)));
            entries = static_cast<uint64_t>(std::max<int16_t>(pool.S16(rev->slice_count), 0));
            break;
        case COUNT_U16:
            count = pool.U16(rev->slice_count);
            entries = pool.U16(rev->slice_count);
            break;
        case COUNT_U32:
            count = static_cast<float>(pool.U32(rev->slice_count));
            entries = pool.U32(rev->slice_count);
            break;
    }
    const int64_t z = SliceCount(pool, *rev, entries);

    // Steps and identification. The old layout keeps image and pixel sizes, so its in-plane
    // steps are reciprocals. 7x keeps the block past its pool: the file's bytes there are
    // taken when it is long enough, else unit steps and zero numbers.
    CBlock block;
    FindBlock(*rev, pool, file, block);
    float sx = 1.0f, sy = 1.0f, sz = 1.0f;
    entry.exam = entry.series = entry.image = 0;
    if (block.found) {
        if (rev->layout == RAW_OLD) {
            sx = 1.0f / (block.F32(rev->step_x) * static_cast<float>(block.S16(rev->dim_x)));
            sy = 1.0f / (block.F32(rev->step_y) * static_cast<float>(block.S16(rev->dim_y)));
        } else {
            sx = block.F32(rev->step_x);
            sy = block.F32(rev->step_y);
        }
        const float thickness = block.F32(rev->thickness);
        sz = entry.volumeFlag ? 1.0f / (count * thickness) : thickness + block.F32(rev->gap);
        entry.exam = block.U16(rev->exam);
        if (rev->wide_ids) {
            entry.series = block.S16(rev->series);
            entry.image = static_cast<int32_t>(block.U32(rev->image));
        } else {
            entry.series = block.U16(rev->series);
            entry.image = block.U16(rev->image);
        }
    }

    const res_t res[6] = {ResOf(x), ResOf(y), ResOf(z), ResOf(entry.echoes), ResOf(entry.receivers),
                          1};
    ResetScannerHeader(entry, type, res);
    CZrkData& h = entry.header;
    h.SetMm(sx, sy, sz, 1.0f, h.mm[4], h.mm[5]);

    if (preview) ReadRawPreview(entry, *preview);
    char status[32];
    std::snprintf(status, sizeof status, "%d baselines", entry.baselines);
    entry.status = status;
    entry.failed = 0;
    return 1;
}

bool ReadRawPreview(const FileEntry& entry, CZrkData& plane) {
    plane.FreeData();
    plane = CZrkData();
    const CZrkData& h = entry.header;
    const uint64_t line = h.BytesPerLine();
    const res_t nx = std::min<res_t>(h.nx, 4096), ny = std::min<res_t>(h.ny, 4096);
    CScannerFile file(entry.path);
    const uint64_t end =
        SatAdd(static_cast<uint64_t>(entry.dataOffset), SatMul(line, SatAdd(ny, 1)));
    if (!file.IsOpen() || line == 0 || ny == 0 || end > file.Size()) return false;
    plane.SetHeader(h.Type(), nx, ny, 1, 1, 1, 1);
    plane.CopyMm(h);
    if (!plane.Allocate()) return false;
    const uint64_t keep = plane.BytesPerLine();
    auto* out = static_cast<char*>(plane.Data());
    bool ok = true;
    for (res_t j = 0; j < ny && ok; ++j)
        ok = file.Read(static_cast<uint64_t>(entry.dataOffset) + (j + 1) * line, out + j * keep,
                       keep);
    if (!ok) {
        plane.FreeData();
        return false;
    }
    if (entry.byteSwap) SwapUnits(out, keep * ny, h.ComponentBytes());
    return true;
}
