#include "files/scanner/raw_load.h"

#include <memory>
#include <new>

#include "files/scanner/scanner_io.h"

namespace {

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
    uint64_t at = static_cast<uint64_t>(entry.dataOffset);
    for (res_t r = 0; r < h.nu; ++r)
        for (res_t z = 0; z < h.nz; ++z)
            for (res_t e = 0; e < h.nt; ++e) {
                char* out = target->Address(0, 0, entry.dest[0] + z, entry.dest[1] + e,
                                            entry.dest[2] + r, entry.dest[3]);
                // The baseline line and the block's lines in one call.
                iovec parts[2] = {{buffer.get(), baseline ? line : 0}, {out, plane}};
                if (!file.ReadV(at, parts, 2)) return 0;
                at += block;
                if (entry.byteSwap) {
                    if (baseline) SwapUnits(buffer.get(), line, comp);
                    SwapUnits(out, plane, comp);
                }
                if (!correct) continue;
                if (comp == 2)
                    Correct<uint16_t>(out, buffer.get(), h.ny, comps, subtract);
                else
                    Correct<uint32_t>(out, buffer.get(), h.ny, comps, subtract);
            }
    target->CopyMm(h);
    entry.status = "reading complete";
    return 1;
}
