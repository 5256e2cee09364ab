#include "files/binary_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cinttypes>
#include <cstring>
#include <limits>
#include <vector>

#include "core/host.h"
#include "files/atomic_file.h"
#include "files/save_values.h"

namespace {

constexpr uint64_t kNoFit = std::numeric_limits<uint64_t>::max();

// a * b + c, or kNoFit past 64 bits.
uint64_t MulAdd(uint64_t a, uint64_t b, uint64_t c) {
    unsigned __int128 r = static_cast<unsigned __int128>(a) * b + c;
    return r > kNoFit - 1 ? kNoFit : static_cast<uint64_t>(r);
}

struct CLayout {
    uint64_t n[6] = {};
    uint64_t stride[6] = {};  // file bytes from one unit of direction k to the next
    uint64_t a[6] = {};       // a1 ... a6: bytes of one unit of the next direction up
    uint64_t end = 0;         // first byte behind the last sample; kNoFit when absurd
    int elem = 0;
};

CLayout Layout(const FileEntry& entry) {
    CLayout l;
    const CZrkData& h = entry.header;
    h.GetRes(l.n);
    l.elem = h.ElementBytes();
    uint64_t unit = static_cast<uint64_t>(l.elem);
    for (int k = 0; k < 6; ++k) {
        l.stride[k] =
            k == 0 ? MulAdd(1, unit, entry.skip[0]) : MulAdd(1, l.a[k - 1], entry.skip[k]);
        l.a[k] = MulAdd(l.stride[k], l.n[k], 0);
    }
    // The last sample's offset plus its bytes: trailing skips need not be in the file.
    uint64_t last = static_cast<uint64_t>(entry.dataOffset);
    for (int k = 0; k < 6 && last != kNoFit; ++k)
        last = l.n[k] == 0 ? kNoFit : MulAdd(l.n[k] - 1, l.stride[k], last);
    l.end = last == kNoFit ? kNoFit : MulAdd(1, last, unit);
    return l;
}

int64_t FileSize(const std::string& path) {
    struct stat st = {};
    if (stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return -1;
    return static_cast<int64_t>(st.st_size);
}

void Swap(char* p, uint64_t bytes, int size) {
    if (size < 2) return;
    for (uint64_t k = 0; k + static_cast<uint64_t>(size) <= bytes; k += static_cast<uint64_t>(size))
        std::reverse(p + k, p + k + size);
}

// Reads at file offsets through a buffer of its own, so runs of a few bytes with skips
// between them cost no system call each; long runs go straight to their target.
class CPositionalReader {
  public:
    explicit CPositionalReader(int fd) : fd_(fd) {}

    bool Read(uint64_t offset, char* out, uint64_t n) {
        constexpr size_t kBuffer = 1 << 20;
        if (n >= kBuffer / 2) return Direct(offset, out, n);
        // Only runs of a few bytes need the buffer.
        if (buffer_.empty()) buffer_.resize(kBuffer);
        if (offset < start_ || offset + n > start_ + filled_) {
            start_ = offset;
            filled_ = 0;
            while (filled_ < buffer_.size()) {
                const ssize_t got = pread(fd_, buffer_.data() + filled_, buffer_.size() - filled_,
                                          static_cast<off_t>(start_ + filled_));
                if (got < 0 && errno == EINTR) continue;
                if (got <= 0) break;
                filled_ += static_cast<uint64_t>(got);
            }
            if (n > filled_) return false;
        }
        std::memcpy(out, buffer_.data() + (offset - start_), n);
        return true;
    }

  private:
    bool Direct(uint64_t offset, char* out, uint64_t n) {
        while (n > 0) {
            const ssize_t got = pread(fd_, out, std::min<uint64_t>(n, uint64_t{1} << 30),
                                      static_cast<off_t>(offset));
            if (got < 0 && errno == EINTR) continue;
            if (got <= 0) return false;
            out += got;
            offset += static_cast<uint64_t>(got);
            n -= static_cast<uint64_t>(got);
        }
        return true;
    }

    int fd_;
    std::vector<char> buffer_;
    uint64_t start_ = 0;
    uint64_t filled_ = 0;
};

// The samples of `entry` into `target` at entry.dest, in runs as long as both the file and
// the target keep them together.
bool ReadSamples(int fd, const FileEntry& entry, const CLayout& l, CZrkData& target) {
    res_t tn[6];
    target.GetRes(tn);
    // Directions 0 .. merged-1 travel as one run.
    int merged = 0;
    while (merged < 6 && entry.skip[merged] == 0 &&
           (merged == 0 || tn[merged - 1] == l.n[merged - 1]))
        ++merged;
    uint64_t run = 1;
    for (int k = 0; k < merged; ++k) run *= l.n[k];
    const uint64_t run_bytes = run * static_cast<uint64_t>(l.elem);
    const uint64_t base[6] = {0, 0, entry.dest[0], entry.dest[1], entry.dest[2], entry.dest[3]};
    CPositionalReader in(fd);
    uint64_t idx[6] = {};
    for (;;) {
        uint64_t offset = static_cast<uint64_t>(entry.dataOffset);
        uint64_t element = 0;
        for (int k = 5; k >= 0; --k) {
            offset += idx[k] * l.stride[k];
            element = element * tn[k] + base[k] + idx[k];
        }
        char* out = static_cast<char*>(target.Data()) + element * static_cast<uint64_t>(l.elem);
        if (!in.Read(offset, out, run_bytes)) return false;
        if (entry.byteSwap) Swap(out, run_bytes, target.ComponentBytes());
        int k = merged;
        while (k < 6 && ++idx[k] == l.n[k]) idx[k++] = 0;
        if (k == 6) return true;
    }
}

}  // namespace

uint64_t TypedCount(const std::string& text) {
    const char* p = text.c_str();
    while (*p == ' ' || *p == '\t') ++p;
    int64_t v = 0;
    const auto [end, ec] = std::from_chars(p, p + std::strlen(p), v);
    (void)end;
    return ec == std::errc() && v > 0 ? static_cast<uint64_t>(v) : 0;
}

void HeaderFromOptions(const COpenOptions& options, FileEntry& entry) {
    const std::string* res[6] = {&options.res4d[0], &options.res4d[1],  &options.res4d[2],
                                 &options.res4d[3], &options.res_uv[0], &options.res_uv[1]};
    const std::string* skip[6] = {&options.skip4d[0], &options.skip4d[1],  &options.skip4d[2],
                                  &options.skip4d[3], &options.skip_uv[0], &options.skip_uv[1]};
    res_t n[6];
    for (int k = 0; k < 6; ++k) {
        n[k] = TypedCount(*res[k]);
        entry.skip[k] = TypedCount(*skip[k]);
    }
    entry.header.SetHeader(IsValidType(options.datatype) ? options.datatype : TYPE_NULL, n[0], n[1],
                           n[2], n[3], n[4], n[5]);
    entry.header.SetMm(1, 1, 1, 1, 1, 1);
    const uint64_t offset = TypedCount(options.offset);
    entry.dataOffset = static_cast<int32_t>(std::min<uint64_t>(offset, INT32_MAX));
    entry.byteSwap = options.swap ? 1 : 0;
}

std::string BinarySizeLine(const FileEntry& entry, bool* fits) {
    if (fits) *fits = false;
    const int64_t size = FileSize(entry.path);
    if (size < 0 || access(entry.path.c_str(), R_OK) != 0) return "unable to access file";
    const CLayout l = Layout(entry);
    for (uint64_t a : l.a)
        if (a == 0 || a == kNoFit) return "resolutions don't make sense";
    if (l.elem == 0) return "resolutions don't make sense";
    const int64_t h = entry.dataOffset;
    auto s = [](uint64_t v) { return static_cast<int64_t>(std::min<uint64_t>(v, INT64_MAX)); };
    char text[256];
    std::snprintf(text, sizeof text,
                  "file size:%" PRId64 "  data size:%" PRId64 "\n%" PRId64 " x lines; %" PRId64
                  " xy planes; %" PRId64 " xyz cubes",
                  size, s(MulAdd(1, l.a[5], static_cast<uint64_t>(h))), (size - h) / s(l.a[0]),
                  (size - h) / s(l.a[1]), (size - h) / s(l.a[2]));
    if (fits) *fits = l.end != kNoFit && l.end <= static_cast<uint64_t>(size);
    return text;
}

int ReadBinaryHeader(const COpenOptions& options, FileEntry& entry) {
    HeaderFromOptions(options, entry);
    if (!IsValidType(entry.header.Type())) {
        entry.status = "invalid data type";
        return 0;
    }
    // dataOffset is 32 bits wide; a larger header would be read from the wrong place.
    if (TypedCount(options.offset) > INT32_MAX) {
        entry.status = "header offset too large";
        return 0;
    }
    bool fits = false;
    entry.status = BinarySizeLine(entry, &fits);
    return fits ? 1 : 0;
}

int LoadBinary(const COpenOptions& options, FileEntry& entry, CZrkData* const targets[3]) {
    (void)options;
    entry.status = "read failed";
    CZrkData* target = targets[0];
    const CLayout l = Layout(entry);
    const int64_t size = FileSize(entry.path);
    if (!target || !EntryFitsTarget(entry, *target) || l.end == kNoFit || size < 0 ||
        l.end > static_cast<uint64_t>(size))
        return 0;
    const int fd = open(entry.path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return 0;
    const bool ok = ReadSamples(fd, entry, l, *target);
    close(fd);
    if (!ok) return 0;
    entry.status = "reading complete";
    return 1;
}

int SaveBinary(const CSaveRequest& request) {
    std::string ignored;
    std::string& status = request.status ? *request.status : ignored;
    const CZrkData* a = request.arrays.empty() ? nullptr : request.arrays[0];
    if (!a || !a->Data()) {
        status = "can not find data";
        return 0;
    }
    const CSaveOptions& o = *request.options;
    if (!IsValidType(o.dtype)) {
        status = "invalid data type";
        return 0;
    }
    const CSaveValues values(a, o.iqmp, IsComplexType(o.dtype));
    const int per = values.PerElement();
    const uint64_t count = a->Count();
    constexpr size_t kBlock = 4096;
    std::vector<double> buf(kBlock * 2);
    // Values outside the output type would wrap; the user decides.
    if (o.dtype % 10 != TYPE_R8) {
        const ElementTypeInfo* info = TypeInfo(o.dtype);
        bool clip = false;
        for (uint64_t k = 0; k < count && !clip; k += kBlock) {
            const size_t n = static_cast<size_t>(std::min<uint64_t>(kBlock, count - k));
            values.Read(k, n, buf.data());
            for (size_t j = 0; j < n * static_cast<size_t>(per); ++j)
                clip = clip || buf[j] < info->range_min || buf[j] > info->range_max;
        }
        if (clip && !Host().AskYesNo("data range to large to fit in output type!\n\nsave anyway?"))
            return 0;
    }
    CAtomicFile file(request.path);
    if (!file.Create() || !file.Stream()) {
        status = "file create failed";
        return 0;
    }
    // One block at a time through a record of the output type, so the conversion is the
    // cursor's; pairs into a real type go as two values an element.
    const int out_type = IsComplexType(o.dtype) || per == 1 ? o.dtype : o.dtype % 10;
    const size_t out_per = IsComplexType(out_type) ? 1 : static_cast<size_t>(per);
    CZrkData block;
    block.SetHeader(out_type, kBlock * out_per, 1, 1, 1, 1, 1);
    if (!block.Allocate()) {
        status = "alloc failed";
        return 0;
    }
    CDataCursor<double> out(&block);
    bool ok = true;
    for (uint64_t k = 0; k < count && ok; k += kBlock) {
        const size_t n = static_cast<size_t>(std::min<uint64_t>(kBlock, count - k));
        values.Read(k, n, buf.data());
        if (IsComplexType(out_type))
            out.SetIQBlock(buf.data(), 0, n);
        else
            out.SetIBlock(buf.data(), 0, n * out_per);
        const uint64_t bytes = n * out_per * static_cast<uint64_t>(block.ElementBytes());
        if (o.swap) Swap(static_cast<char*>(block.Data()), bytes, block.ComponentBytes());
        ok = std::fwrite(block.Data(), 1, bytes, file.Stream()) == bytes;
    }
    block.FreeData();
    if (!ok || !file.Commit()) {
        status = "write failed";
        return 0;
    }
    return 1;
}
