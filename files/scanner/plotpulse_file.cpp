#include "files/scanner/plotpulse_file.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

#include "files/scanner/scanner_io.h"

namespace {

constexpr uint32_t kPdp = 0x50442F50;  // "PD/P"
constexpr uint64_t kTableAt = 80;
constexpr int kStreams = 7;
constexpr int kUnits[kStreams] = {2, 2, 2, 1, 1, 1, 1};

// The waveform table: `words` 16-bit entries, of which the file holds the first `words`
// bytes; the rest stay 0. `last[k]` is the index of the entry that ends a waveform started
// at k (the first at or after k with bit 0 set), or the table's size when none does, so a
// scan measures a waveform without walking it.
struct CTable {
    std::vector<int16_t> entries;
    std::vector<uint32_t> last;
    uint32_t words = 0;
};

bool ReadTable(const CScannerFile& file, uint32_t words, CTable& table) {
    table.words = words;
    table.entries.assign(words, 0);
    if (!file.Read(kTableAt, table.entries.data(), words)) return false;
    SwapUnits(table.entries.data(), uint64_t{words} * 2, 2);
    table.last.resize(words);
    uint32_t end = words;
    for (uint32_t k = words; k-- > 0;) {
        if (table.entries[k] & 1) end = k;
        table.last[k] = end;
    }
    return true;
}

// Walks one stream: block() at each block end, wave(first, last, count, amplitude) for each
// waveform over entries first ... last, and wave(0, 0, count, 0) for a constant. False for a
// bad stream: an address past the table, or a waveform that runs off its end.
template <class Block, class Wave>
bool WalkStream(const std::vector<uint8_t>& stream, const CTable& table, int unit, Block block,
                Wave wave) {
    const CByteView v{stream.data(), stream.size(), true};
    for (uint64_t at = 0; at + 8 <= stream.size(); at += 8) {
        const uint16_t w0 = v.U16(at), w1 = v.U16(at + 2), w3 = v.U16(at + 6);
        const int16_t w2 = v.S16(at + 4);
        const uint32_t duration = (256u - (w0 & 255u)) * 65536u - w1;
        const uint64_t count = uint64_t{duration} * static_cast<uint64_t>(unit);
        bool ok;
        if (w0 & 0x100)
            ok = block();
        else if (w3 == 0)
            ok = wave(0, 0, count, int16_t{0});
        else
            ok = w3 <= table.words && w3 < table.entries.size() &&
                 table.last[w3] < table.entries.size() && wave(w3, table.last[w3], count, w2);
        if (!ok) return false;
    }
    return true;
}

// The sample of one waveform entry.
int16_t Sample(int16_t entry, int16_t amplitude) {
    return static_cast<int16_t>(((int32_t{entry} & ~1) * int32_t{amplitude}) >> 15);
}

int Invalid(FileEntry& entry) {
    entry.status = "invalid header";
    return 0;
}

}  // namespace

int ReadPlotpulseHeader(FileEntry& entry) {
    entry.failed = 1;
    CScannerFile file(entry.path);
    if (!file.IsOpen()) return OpenFailed(entry);
    uint8_t first[4];
    if (!file.Read(0, first, 4)) return Invalid(entry);
    const bool pdp = CByteView{first, 4, true}.U32(0) == kPdp;
    uint8_t bytes[36];
    if (!file.Read(pdp ? 173 + 160 : 0, bytes, sizeof bytes)) return Invalid(entry);
    const CByteView words{bytes, sizeof bytes, !pdp};
    // Summed without wrapping: lengths that overflow 32 bits exceed any file.
    uint64_t sum = 0;
    for (int k = 0; k < 9; ++k) {
        if (words.S32(4 * k) < 0) return Invalid(entry);
        sum += words.U32(4 * k);
    }
    if (sum > file.Size()) return Invalid(entry);
    const uint32_t tableWords = words.U32(0);
    CTable table;
    if (!ReadTable(file, tableWords, table)) return Invalid(entry);

    uint64_t at = kTableAt + tableWords, longest = 0, most = 0;
    std::vector<uint8_t> stream;
    for (int s = 0; s < kStreams; ++s) {
        stream.resize(words.U32(4 * (s + 1)));
        if (!file.Read(at, stream.data(), stream.size())) return Invalid(entry);
        at += stream.size();
        uint64_t length = 0, blocks = 0;
        const bool ok = WalkStream(
            stream, table, kUnits[s],
            [&] {
                longest = std::max(longest, length);
                length = 0;
                ++blocks;
                return true;
            },
            [&](uint32_t first, uint32_t last, uint64_t count, int16_t) {
                length = SatAdd(length, SatMul(count, uint64_t{last} - first + 1));
                return true;
            });
        if (!ok) return Invalid(entry);
        most = std::max(most, blocks);
    }
    const res_t res[6] = {longest, kStreams, most, 1, 1, 1};
    ResetScannerHeader(entry, TYPE_I2, res);
    entry.header.mm[0] = std::bit_cast<float>(0x360637BDu);  // 2 us
    entry.failed = 0;
    return 1;
}

int LoadPlotpulse(const COpenOptions& dialog, FileEntry& entry, CZrkData* const targets[3]) {
    (void)dialog;
    entry.status = "read failed";
    CZrkData* target = targets[0];
    const CZrkData& h = entry.header;
    if (h.Type() != TYPE_I2 || h.ny != kStreams || !TargetFits(entry, target)) return 0;
    CScannerFile file(entry.path);
    // The plain form's words, whatever form the header step saw.
    uint8_t bytes[32];
    if (!file.Read(0, bytes, sizeof bytes)) return 0;
    const CByteView words{bytes, sizeof bytes, true};
    for (int k = 0; k < 8; ++k)
        if (words.S32(4 * k) < 0) return 0;
    const uint32_t tableWords = words.U32(0);
    CTable table;
    if (uint64_t{tableWords} > file.Size() || !ReadTable(file, tableWords, table)) return 0;

    const uint64_t nx = h.nx, nz = h.nz;
    for (res_t z = 0; z < nz && nx > 0; ++z)
        for (int c = 0; c < kStreams; ++c)
            std::memset(target->Address(0, c, entry.dest[0] + z, entry.dest[1], entry.dest[2],
                                        entry.dest[3]),
                        0, nx * 2);

    uint64_t at = kTableAt + tableWords;
    std::vector<uint8_t> stream;
    for (int c = 0; c < kStreams; ++c) {
        stream.resize(words.U32(4 * (c + 1)));
        if (!file.Read(at, stream.data(), stream.size())) return 0;
        at += stream.size();
        uint64_t plane = 0, pos = 0;
        const bool ok = WalkStream(
            stream, table, kUnits[c],
            [&] {
                ++plane;
                pos = 0;
                return true;
            },
            [&](uint32_t first, uint32_t last, uint64_t count, int16_t amplitude) {
                // A constant is one run of zeros.
                for (uint32_t k = first; k <= last; ++k) {
                    if (plane >= nz || count > nx - pos) return false;
                    auto* out = reinterpret_cast<int16_t*>(
                        target->Address(pos, c, entry.dest[0] + plane, entry.dest[1], entry.dest[2],
                                        entry.dest[3]));
                    std::fill(out, out + count, first ? Sample(table.entries[k], amplitude) : 0);
                    pos += count;
                }
                return true;
            });
        if (!ok) return 0;
    }
    target->CopyMm(h);
    entry.status = "reading complete";
    return 1;
}
