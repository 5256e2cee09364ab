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
constexpr bool kHostBig = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;
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
        // The type word is found in either byte order; the byte order of the rest is then
        // its first digit's, 0 little-endian or 1 big-endian, as matio reads it.
        uint32_t w[5];
        bool ok = false;
        for (bool swap : {false, true}) {
            const uint32_t type = Word(raw, swap);
            const uint32_t m = type / 1000, o = type / 100 % 10, p = type / 10 % 10, t = type % 10;
            if (type < 5000 && m <= 1 && o == 0 && p <= 5 && t <= 2) {
                for (int k = 0; k < 5; ++k) w[k] = Word(raw + 4 * k, (m == 1) != kHostBig);
                w[0] = type;
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

// Cells and structures are read whole, to check every member's header; beyond this size
// one is taken as broken, and the walk stops there.
constexpr uint64_t kWholeBytes = uint64_t{256} << 20;
// matio reads nested members recursively.
constexpr int kMaxDepth = 32;

enum : uint32_t { CLASS_CELL = 1, CLASS_STRUCT = 2, CLASS_OBJECT = 3 };

struct Sub {
    uint32_t type = 0;
    uint64_t bytes = 0;
    const uint8_t* data = nullptr;
};

// The sub-element at `at` of a buffer of `size` bytes, moving `at` past it; false when it
// does not fit. A small element keeps up to 4 bytes in its tag's word.
bool NextSub(const uint8_t* p, uint64_t size, uint64_t& at, bool swap, Sub& s) {
    if (at + 8 > size) return false;
    const uint32_t tag = Word(p + at, swap);
    if (tag >> 16) {
        s = {tag & 0xFFFF, tag >> 16, p + at + 4};
        if (s.bytes > 4) return false;
        at += 8;
        return true;
    }
    s = {tag, Word(p + at + 4, swap), p + at + 8};
    if (s.bytes > size - at - 8) return false;
    at += 8 + ((s.bytes + 7) & ~uint64_t{7});
    if (at > size) at = size;  // the last element may go without its padding
    return true;
}

// One matrix element's contents (after its tag), `size` bytes of which `seen` are at `p`:
// flags, dimensions and name must lie within it; with `whole`, members of cells and
// structures are checked in turn, and there must be room for a header per member.
bool MatrixFits(const uint8_t* p, uint64_t seen, uint64_t size, bool swap, bool whole, int depth,
                uint32_t* cls) {
    if (depth > kMaxDepth) return false;
    const uint64_t limit = std::min(seen, size);
    uint64_t at = 0;
    Sub flags, dims, name;
    if (!NextSub(p, limit, at, swap, flags)) return seen < size && at + 8 > seen;
    if (flags.bytes < 8) return false;
    *cls = Word(flags.data, swap) & 0xFF;
    if (!NextSub(p, limit, at, swap, dims)) return seen < size && at + 8 > seen;
    if (dims.bytes == 0 || dims.bytes % 4 != 0) return false;
    uint64_t members = 1;
    for (uint64_t k = 0; k < dims.bytes / 4; ++k)
        if (__builtin_mul_overflow(members, uint64_t{Word(dims.data + 4 * k, swap)}, &members))
            return false;
    if (!NextSub(p, limit, at, swap, name)) return seen < size && at + 8 > seen;
    if (!whole) return true;
    if (*cls == CLASS_STRUCT || *cls == CLASS_OBJECT) {
        Sub class_name, length, names;
        if (*cls == CLASS_OBJECT && !NextSub(p, size, at, swap, class_name)) return false;
        if (!NextSub(p, size, at, swap, length) || !NextSub(p, size, at, swap, names)) return false;
        const uint64_t len = length.bytes >= 4 ? Word(length.data, swap) : 0;
        const uint64_t fields = len ? names.bytes / len : 0;
        if (__builtin_mul_overflow(members, fields, &members)) return false;
    } else if (*cls != CLASS_CELL) {
        return true;
    }
    if (members > (size - at) / 8) return false;
    for (uint64_t k = 0; k < members; ++k) {
        if (at + 8 > size) return false;
        const uint64_t bytes = Word(p + at + 4, swap);
        if (Word(p + at, swap) != 14 || bytes > size - at - 8) return false;
        uint32_t inner = 0;
        if (bytes > 0 && !MatrixFits(p + at + 8, bytes, bytes, swap, true, depth + 1, &inner))
            return false;
        at += 8 + ((bytes + 7) & ~uint64_t{7});
    }
    return true;
}

// A compressed element inflated up to `cap` bytes; false when the stream is broken before.
bool Inflate(const std::vector<uint8_t>& packed, uint64_t cap, std::vector<uint8_t>& out) {
    out.resize(cap);
    z_stream z = {};
    if (inflateInit(&z) != Z_OK) return false;
    z.next_in = const_cast<uint8_t*>(packed.data());
    z.avail_in = static_cast<uInt>(packed.size());
    z.next_out = out.data();
    z.avail_out = static_cast<uInt>(cap);
    const int r = inflate(&z, Z_SYNC_FLUSH);
    out.resize(cap - z.avail_out);
    inflateEnd(&z);
    return r == Z_OK || r == Z_STREAM_END || (r == Z_BUF_ERROR && !out.empty());
}

// Versions 5 to 7: a 128-byte header, then tagged elements, matrices plain or compressed.
int ScanVersion5(FILE* f, uint64_t size, bool swap) {
    int count = 0;
    uint64_t at = 128;
    std::vector<uint8_t> head(kHeadBytes), packed, whole;
    uint8_t tag[8];
    while (at + 8 <= size && ReadAt(f, at, tag, 8) == 8) {
        const uint32_t type = Word(tag, swap);
        const uint64_t bytes = Word(tag + 4, swap);
        if (bytes > size - at - 8) break;
        uint32_t cls = 0;
        if (type == 14) {
            head.resize(std::min<uint64_t>(bytes, kHeadBytes));
            head.resize(ReadAt(f, at + 8, head.data(), head.size()));
            if (!MatrixFits(head.data(), head.size(), bytes, swap, false, 0, &cls)) break;
            if (cls == CLASS_CELL || cls == CLASS_STRUCT || cls == CLASS_OBJECT) {
                if (bytes > kWholeBytes) break;
                whole.resize(bytes);
                if (ReadAt(f, at + 8, whole.data(), bytes) != bytes ||
                    !MatrixFits(whole.data(), bytes, bytes, swap, true, 0, &cls))
                    break;
            }
            at += 8 + ((bytes + 7) & ~uint64_t{7});
        } else if (type == 15) {
            // A stored (uncompressed) deflate block costs 5 bytes per 64 KB, so this many
            // packed bytes always cover the head.
            packed.resize(std::min<uint64_t>(bytes, 2 * kHeadBytes));
            packed.resize(ReadAt(f, at + 8, packed.data(), packed.size()));
            if (!Inflate(packed, kHeadBytes, head) || head.size() < 8) break;
            if (Word(&head[0], swap) == 14) {
                const uint64_t inner = Word(&head[4], swap);
                if (inner > bytes * kInflateRatio ||
                    !MatrixFits(&head[8], head.size() - 8, inner, swap, false, 0, &cls))
                    break;
                if (cls == CLASS_CELL || cls == CLASS_STRUCT || cls == CLASS_OBJECT) {
                    if (inner + 8 > kWholeBytes) break;
                    packed.resize(bytes);
                    if (ReadAt(f, at + 8, packed.data(), bytes) != bytes ||
                        !Inflate(packed, inner + 8, whole) || whole.size() < inner + 8 ||
                        !MatrixFits(&whole[8], inner, inner, swap, true, 0, &cls))
                        break;
                }
            }
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
        if (big) version = static_cast<uint16_t>((header[124] << 8) | header[125]);
        if ((little || big) && version == 0x0200) {
            scan.version = 73;
            scan.variables = INT_MAX;
            return scan;
        }
        if ((little || big) && version == 0x0100) {
            scan.version = 5;
            scan.variables = ScanVersion5(f.get(), size, big != kHostBig);
            return scan;
        }
    }
    scan.variables = ScanVersion4(f.get(), size);
    scan.version = scan.variables > 0 ? 4 : 0;
    return scan;
}
