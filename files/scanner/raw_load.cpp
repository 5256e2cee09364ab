#include "files/scanner/raw_load.h"

#include <algorithm>
#include <memory>
#include <new>

#include "files/scanner/scanner_io.h"

namespace {

// Lines read and corrected together: well inside the second-level cache.
constexpr uint64_t kRunBytes = 64 * 1024;

// Adds or subtracts the baseline line from each of `lines` lines, at the width of T and
// wrapping: the arithmetic runs unsigned.
template <class T>
void Correct(char* plane, const char* baseline, uint64_t lines, uint64_t comps, bool subtract) {
    auto* p = reinterpret_cast<T*>(plane);
    const auto* b = reinterpret_cast<const T*>(baseline);
    for (uint64_t j = 0; j < lines; ++j, p += comps) {
        if (subtract)
            for (uint64_t k = 0; k < comps; ++k) p[k] = static_cast<T>(p[k] - b[k]);
        else
            for (uint64_t k = 0; k < comps; ++k) p[k] = static_cast<T>(p[k] + b[k]);
    }
}

}  // namespace

int LoadRaw(const COpenOptions& dialog, FileEntry& entry, CZrkData* const targets[3]) {
    (void)dialog;
    entry.status = "read failed";
    const CZrkData& h = entry.header;
    CZrkData* target = targets[0];
    const int comp = h.ComponentBytes();
    if ((comp != 2 && comp != 4) || !TargetFits(entry, target)) return 0;
    CScannerFile file(entry.path);
    if (!file.IsOpen()) return 0;
    const bool baseline = entry.baselines >= 0;
    const uint64_t line = h.BytesPerLine();
    const uint64_t plane = SatMul(line, h.ny);
    const uint64_t block = SatAdd(plane, baseline ? line : 0);
    const uint64_t blocks = SatMul(SatMul(h.nu, h.nz), h.nt);
    const uint64_t end = SatAdd(static_cast<uint64_t>(entry.dataOffset), SatMul(block, blocks));
    if (end == ~uint64_t{0} || end > file.Size()) return 0;

    entry.status = "alloc failed";
    std::unique_ptr<char[]> buffer(new (std::nothrow) char[line ? line : 1]);
    if (!buffer) return 0;
    entry.status = "read failed";

    const bool correct = entry.baselines > 0 && (entry.subtractBaseline || entry.addBaseline);
    const bool subtract = entry.subtractBaseline != 0;
    const uint64_t comps = line / static_cast<uint64_t>(comp);
    // Corrected lines go in runs that stay in cache between the read and the correction.
    const uint64_t run = correct ? std::max<uint64_t>(1, kRunBytes / std::max<uint64_t>(line, 1))
                                 : std::max<res_t>(h.ny, 1);
    uint64_t at = static_cast<uint64_t>(entry.dataOffset);
    // Blocks of no bytes hold nothing to read, however many the header counts.
    for (res_t r = 0; r < h.nu && block > 0; ++r)
        for (res_t z = 0; z < h.nz; ++z)
            for (res_t e = 0; e < h.nt; ++e) {
                // The baseline line with the block's lines.
                for (res_t y = 0; y < h.ny || (y == 0 && baseline); y += run) {
                    const uint64_t lines = std::min<uint64_t>(run, h.ny - y);
                    char* out = target->Address(0, y, entry.dest[0] + z, entry.dest[1] + e,
                                                entry.dest[2] + r, entry.dest[3]);
                    const bool first = y == 0 && baseline;
                    iovec parts[2] = {{buffer.get(), first ? line : 0}, {out, lines * line}};
                    if (!file.ReadV(at, parts, 2)) return 0;
                    at += (first ? line : 0) + lines * line;
                    if (entry.byteSwap) {
                        if (first) SwapUnits(buffer.get(), line, comp);
                        SwapUnits(out, lines * line, comp);
                    }
                    if (!correct) continue;
                    if (comp == 2)
                        Correct<uint16_t>(out, buffer.get(), lines, comps, subtract);
                    else
                        Correct<uint32_t>(out, buffer.get(), lines, comps, subtract);
                }
            }
    target->CopyMm(h);
    entry.status = "reading complete";
    return 1;
}
