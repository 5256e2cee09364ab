#include "files/mat_scan.h"

#include <zlib.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace {

// zlib never packs more than 1032 bytes into one.
constexpr uint64_t kInflateRatio = 1032;
// The head of an element we look at: tag, flags, a few dimensions, the name.
constexpr size_t kHeadBytes = 4096;

struct FileCloser {
    void operator()(FILE* f) const { std::fclose(f); }
};
using FilePtr = std::unique_ptr<FILE, FileCloser>;

uint32_t Word(const uint8_t* p, bool swap) {
    uint32_t v;
    std::memcpy(&v, p, 4);
    return swap ? __builtin_bswap32(v) : v;
}

// Up to `n` bytes at `at`; how many came.
size_t ReadAt(FILE* f, uint64_t at, uint8_t* out, size_t n) {
    if (fseeko(f, static_cast<off_t>(at), SEEK_SET) != 0) return 0;
    return std::fread(out, 1, n, f);
}

// Version 4: per variable five 32-bit words (type MOPT, rows, columns, imaginary flag, name
// length) in either byte order, the name, then the data.
int ScanVersion4(FILE* f, uint64_t size) {
    int count = 0;
    uint64_t at = 0;
    uint8_t raw[20];
    while (at + 20 <= size && ReadAt(f, at, raw, 20) == 20) {
        bool ok = false;
        uint32_t w[5];
        for (bool swap : {false, true}) {
            for (int k = 0; k < 5; ++k) w[k] = Word(raw + 4 * k, swap);
            const uint32_t o = w[0] / 100 % 10, p = w[0] / 10 % 10, t = w[0] % 10;
            if (w[0] < 5000 && o == 0 && p <= 5 && t <= 2) {
                ok = true;
                break;
            }
        }
        if (!ok) break;
        static const uint64_t kBytes[6] = {8, 4, 4, 2, 2, 1};
        const uint64_t element = kBytes[w[0] / 10 % 10] * (w[3] ? 2 : 1);
        const uint64_t rest = size - at - 20;
        uint64_t data = 0;
        if (w[4] == 0 || w[4] > rest ||
            __builtin_mul_overflow(static_cast<uint64_t>(w[1]), static_cast<uint64_t>(w[2]),
                                   &data) ||
            __builtin_mul_overflow(data, element, &data) || data > rest - w[4])
            break;
        at += 20 + w[4] + data;
        ++count;
    }
    return count;
}

// The sub-elements that open a matrix of `size` bytes (array flags, dimensions, name), as
// far as `head` shows them: each must lie within the matrix.
bool MatrixHeadFits(const uint8_t* head, size_t head_size, uint64_t size, bool swap) {
    uint64_t at = 0;
    for (int sub = 0; sub < 3; ++sub) {
        if (at + 8 > head_size) return true;  // beyond what we see, matio's own checks hold
        const uint32_t tag = Word(head + at, swap);
        uint64_t bytes, step;
        if (tag >> 16) {  // small element: the length in the upper half, data in the tag
            bytes = tag >> 16;
            if (bytes > 4) return false;
            step = 8;
        } else {
            bytes = Word(head + at + 4, swap);
            step = 8 + ((bytes + 7) & ~uint64_t{7});
        }
        if (bytes > size || at + step > size) return false;
        if (sub == 1 && (bytes == 0 || bytes % 4 != 0)) return false;  // int32 dimensions
        at += step;
    }
    return true;
}

// What the start of a compressed element inflates to, up to kHeadBytes.
size_t InflateHead(const std::vector<uint8_t>& packed, std::vector<uint8_t>& head, bool* ok) {
    z_stream z = {};
    *ok = false;
    if (inflateInit(&z) != Z_OK) return 0;
    z.next_in = const_cast<uint8_t*>(packed.data());
    z.avail_in = static_cast<uInt>(packed.size());
    z.next_out = head.data();
    z.avail_out = static_cast<uInt>(head.size());
    const int r = inflate(&z, Z_SYNC_FLUSH);
    const size_t got = head.size() - z.avail_out;
    inflateEnd(&z);
    *ok = r == Z_OK || r == Z_STREAM_END || (r == Z_BUF_ERROR && got > 0);
    return got;
}

// Versions 5 to 7: a 128-byte header, then tagged elements, matrices plain or compressed.
int ScanVersion5(FILE* f, uint64_t size, bool swap) {
    int count = 0;
    uint64_t at = 128;
    std::vector<uint8_t> head(kHeadBytes), packed;
    uint8_t tag[8];
    while (at + 8 <= size && ReadAt(f, at, tag, 8) == 8) {
        const uint32_t type = Word(tag, swap);
        const uint64_t bytes = Word(tag + 4, swap);
        const uint64_t rest = size - at - 8;
        if (bytes > rest) break;
        if (type == 14) {
            const size_t got = ReadAt(f, at + 8, head.data(), std::min<uint64_t>(bytes, kHeadBytes));
            if (!MatrixHeadFits(head.data(), got, bytes, swap)) break;
            at += 8 + ((bytes + 7) & ~uint64_t{7});
        } else if (type == 15) {
            // A stored (uncompressed) deflate block costs 5 bytes per 64 KB, so this many
            // packed bytes always cover the head.
            packed.resize(std::min<uint64_t>(bytes, 2 * kHeadBytes));
            packed.resize(ReadAt(f, at + 8, packed.data(), packed.size()));
            bool ok = false;
            const size_t got = InflateHead(packed, head, &ok);
            if (!ok || got < 8) break;
            const uint64_t inner = Word(&head[4], swap);
            if (Word(&head[0], swap) == 14 &&
                (inner > bytes * kInflateRatio ||
                 !MatrixHeadFits(&head[8], got - 8, inner, swap)))
                break;
            at += 8 + bytes;
        } else {
            at += 8 + ((bytes + 7) & ~uint64_t{7});
        }
        ++count;
    }
    return count;
}

}  // namespace

CMatScan ScanMatFile(const std::string& path) {
    CMatScan scan;
    FilePtr f(std::fopen(path.c_str(), "rb"));
    if (!f || fseeko(f.get(), 0, SEEK_END) != 0) return scan;
    const off_t end = ftello(f.get());
    if (end < 0) return scan;
    const uint64_t size = static_cast<uint64_t>(end);
    uint8_t header[128];
    if (ReadAt(f.get(), 0, header, 128) == 128) {
        const bool little = header[126] == 'I' && header[127] == 'M';
        const bool big = header[126] == 'M' && header[127] == 'I';
        uint16_t version = static_cast<uint16_t>(header[124] | (header[125] << 8));
        if (big) version = __builtin_bswap16(version);
        if ((little || big) && version == 0x0200) {
            scan.version = 73;
            scan.variables = INT_MAX;
            return scan;
        }
        if ((little || big) && version == 0x0100) {
            scan.version = 5;
            scan.variables = ScanVersion5(f.get(), size, big);
            return scan;
        }
    }
    scan.variables = ScanVersion4(f.get(), size);
    scan.version = scan.variables > 0 ? 4 : 0;
    return scan;
}
