#include "files/scanner/scanner_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>

CScannerFile::CScannerFile(const std::string& path) {
    fd_ = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat st = {};
    if (fd_ >= 0 && (fstat(fd_, &st) != 0 || !S_ISREG(st.st_mode))) {
        close(fd_);
        fd_ = -1;
    }
    if (fd_ >= 0) size_ = static_cast<uint64_t>(st.st_size);
}

CScannerFile::~CScannerFile() {
    if (fd_ >= 0) close(fd_);
}

bool CScannerFile::Read(uint64_t offset, void* out, uint64_t n) const {
    iovec part = {out, n};
    return ReadV(offset, &part, 1);
}

bool CScannerFile::ReadV(uint64_t offset, iovec* parts, int count) const {
    uint64_t total = 0;
    for (int k = 0; k < count; ++k) total = SatAdd(total, parts[k].iov_len);
    // Checked against the size first: a header's claim never turns into a long wait.
    if (fd_ < 0 || offset > size_ || total > size_ - offset) return false;
    int first = 0;
    while (first < count) {
        if (parts[first].iov_len == 0) {
            ++first;
            continue;
        }
        const int n = count - first;
        const ssize_t got = preadv(fd_, parts + first, n, static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        offset += static_cast<uint64_t>(got);
        // Moves past what arrived; a part read in half continues where it stopped.
        uint64_t left = static_cast<uint64_t>(got);
        while (first < count && left >= parts[first].iov_len) left -= parts[first++].iov_len;
        if (left > 0) {
            parts[first].iov_base = static_cast<char*>(parts[first].iov_base) + left;
            parts[first].iov_len -= left;
        }
    }
    return true;
}

uint16_t CByteView::U16(uint64_t offset) const {
    if (!Has(offset, 2)) return 0;
    const uint8_t* p = data + offset;
    return big ? static_cast<uint16_t>(p[0] << 8 | p[1]) : static_cast<uint16_t>(p[1] << 8 | p[0]);
}

uint32_t CByteView::U32(uint64_t offset) const {
    if (!Has(offset, 4)) return 0;
    uint32_t v;
    std::memcpy(&v, data + offset, 4);
    return big ? Swap32(v) : v;
}

float CByteView::F32(uint64_t offset) const { return std::bit_cast<float>(U32(offset)); }

uint16_t Swap16(uint16_t v) { return static_cast<uint16_t>(v << 8 | v >> 8); }
uint32_t Swap32(uint32_t v) { return __builtin_bswap32(v); }

void SwapUnits(void* data, uint64_t bytes, int size) {
    auto* p = static_cast<uint8_t*>(data);
    if (size == 2) {
        for (uint64_t k = 0; k + 2 <= bytes; k += 2) std::swap(p[k], p[k + 1]);
    } else if (size == 4) {
        for (uint64_t k = 0; k + 4 <= bytes; k += 4) {
            uint32_t v;
            std::memcpy(&v, p + k, 4);
            v = Swap32(v);
            std::memcpy(p + k, &v, 4);
        }
    }
}

uint64_t SatMul(uint64_t a, uint64_t b) {
    uint64_t r;
    return __builtin_mul_overflow(a, b, &r) ? ~uint64_t{0} : r;
}

uint64_t SatAdd(uint64_t a, uint64_t b) {
    uint64_t r;
    return __builtin_add_overflow(a, b, &r) ? ~uint64_t{0} : r;
}

int OpenFailed(FileEntry& entry) {
    entry.status = "can't open file '" + entry.path + "' for reading";
    entry.failed = 1;
    return 0;
}

bool TargetFits(const FileEntry& entry, const CZrkData* target) {
    const CZrkData& h = entry.header;
    if (!target || target->Type() != h.Type() || target->nx != h.nx || target->ny != h.ny)
        return false;
    if (h.Count() > 0 && !target->Data()) return false;
    const res_t have[4] = {target->nz, target->nt, target->nu, target->nv};
    const res_t need[4] = {h.nz, h.nt, h.nu, h.nv};
    for (int k = 0; k < 4; ++k)
        if (entry.dest[k] > have[k] || need[k] > have[k] - entry.dest[k]) return false;
    return true;
}

void ResetScannerHeader(FileEntry& entry, int type, const res_t res[6]) {
    entry.header = CZrkData();
    entry.header.SetHeader(type, res[0], res[1], res[2], res[3], res[4], res[5]);
    entry.hasBitmap = 0;
    for (uint64_t& s : entry.skip) s = 0;
}
