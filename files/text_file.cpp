#include "files/text_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "core/data_cursor.h"
#include "files/atomic_file.h"
#include "files/binary_file.h"
#include "files/escapes.h"
#include "files/save_values.h"
#include "files/user_format.h"

namespace {

// No number is longer than this; a longer token is not a number.
constexpr size_t kToken = 512;

struct FileCloser {
    void operator()(FILE* f) const { std::fclose(f); }
};
using FilePtr = std::unique_ptr<FILE, FileCloser>;

}  // namespace

bool CNumberScanner::Fill() {
    if (eof_) return end_ > at_;
    std::memmove(buffer_, buffer_ + at_, end_ - at_);
    end_ -= at_;
    at_ = 0;
    const size_t got = std::fread(buffer_ + end_, 1, sizeof buffer_ - end_, file_);
    if (got == 0) eof_ = true;
    end_ += got;
    return end_ > at_;
}

bool CNumberScanner::Next(double* value) {
    for (;;) {
        while (at_ < end_ && std::isspace(static_cast<unsigned char>(buffer_[at_]))) ++at_;
        if (at_ < end_) break;
        if (!Fill()) return false;
    }
    if (end_ - at_ < kToken && !eof_) Fill();
    const char* p = buffer_ + at_;
    const char* end = buffer_ + end_;
    // from_chars, unlike the C library, never looks at the locale.
    const bool plus = *p == '+';
    if (plus) ++p;
    if (p < end && *p == '-' && plus) return false;
    const auto [stop, ec] = std::from_chars(p, end, *value);
    if (ec == std::errc::result_out_of_range) {
        // As the C library does: an overflow is an infinity, an underflow zero.
        const char* e = std::find_if(p, stop, [](char c) { return c == 'e' || c == 'E'; });
        const bool tiny = e + 1 < stop && e[1] == '-';
        const double magnitude = tiny ? 0.0 : HUGE_VAL;
        *value = *p == '-' ? -magnitude : magnitude;
    } else if (ec != std::errc()) {
        return false;
    }
    at_ = static_cast<size_t>(stop - buffer_);
    // The separator: whatever one character stands behind the number.
    if (at_ < end_ || Fill()) ++at_;
    return true;
}

int ReadTextHeader(const COpenOptions& options, FileEntry& entry) {
    HeaderFromOptions(options, entry);
    const CZrkData& h = entry.header;
    entry.header.SetHeader(h.Type(), h.nx, h.ny, h.nz, h.nt, 1, 1);
    entry.baselines = -1;
    if (!IsValidType(h.Type())) {
        entry.status = "invalid data type";
        return 0;
    }
    struct stat st = {};
    if (stat(entry.path.c_str(), &st) != 0 || !S_ISREG(st.st_mode) ||
        access(entry.path.c_str(), R_OK) != 0) {
        entry.status = "unable to access file";
        return 0;
    }
    if (h.Count() == 0) {
        entry.status = "resolutions don't make sense";
        return 0;
    }
    // Each number takes a digit and a separator, so a file too short for the resolutions is
    // told before anything is made for it.
    const unsigned __int128 numbers =
        static_cast<unsigned __int128>(h.Count()) * (h.IsComplex() ? 2 : 1);
    if (numbers * 2 > static_cast<unsigned __int128>(st.st_size) + 1) {
        entry.status = "file too short for the resolutions";
        return 0;
    }
    entry.status = "";
    return 1;
}

int LoadText(const COpenOptions& options, FileEntry& entry, CZrkData* const targets[3]) {
    entry.status = "read failed";
    CZrkData* target = targets[0];
    if (!target || !EntryFitsTarget(entry, *target)) return 0;
    FilePtr f(std::fopen(entry.path.c_str(), "r"));
    if (!f) return 0;
    const CZrkData& h = entry.header;
    const int per = h.IsComplex() ? 2 : 1;
    const uint64_t nx = h.nx, ny = h.ny;
    std::vector<double> plane(nx * ny * static_cast<uint64_t>(per));
    std::vector<double> line(nx * static_cast<uint64_t>(per));
    CDataCursor<double> out(target);
    CNumberScanner scan(f.get());
    for (res_t t = 0; t < h.nt; ++t) {
        for (res_t z = 0; z < h.nz; ++z) {
            for (double& v : plane)
                if (!scan.Next(&v)) return 0;
            for (res_t y = 0; y < ny; ++y) {
                const double* row = plane.data() + y * nx * static_cast<uint64_t>(per);
                // "1 y line": y runs fastest in the file.
                if (options.perline == 1) {
                    for (res_t x = 0; x < nx; ++x)
                        for (int c = 0; c < per; ++c)
                            line[x * per + c] = plane[(x * ny + y) * per + c];
                    row = line.data();
                }
                const uint64_t at = static_cast<uint64_t>(
                    (target->Address(0, y, entry.dest[0] + z, entry.dest[1] + t, entry.dest[2],
                                     entry.dest[3]) -
                     static_cast<char*>(target->Data())) /
                    target->ElementBytes());
                if (per == 2)
                    out.SetIQBlock(row, at, nx);
                else
                    out.SetIBlock(row, at, nx);
            }
        }
    }
    entry.status = "reading complete";
    return 1;
}

int SaveText(const CSaveRequest& request) {
    std::string ignored;
    std::string& status = request.status ? *request.status : ignored;
    const CZrkData* a = request.arrays.empty() ? nullptr : request.arrays[0];
    if (!a || !a->Data()) {
        status = "can not find data";
        return 0;
    }
    const CSaveOptions& o = *request.options;
    const std::string format = ExpandEscapes(o.txtformat);
    if (CountConversions(format, "aAeEfFgG") != 1) {
        status = "invalid number format";
        return 0;
    }
    const std::string separator = ExpandEscapes(o.separator), eol = ExpandEscapes(o.eol);
    CAtomicFile file(request.path);
    if (!file.Create() || !file.Stream()) {
        status = "file create failed";
        return 0;
    }
    FILE* out = file.Stream();
    const CSaveValues values(a, o.iqmp, false);
    const int per = values.PerElement();
    const bool by_y = o.perline == 1;
    const uint64_t inner = by_y ? a->ny : a->nx, outer = by_y ? a->nx : a->ny;
    const uint64_t planes = a->nz * a->nt * a->nu * a->nv;
    std::vector<double> row(a->nx * static_cast<uint64_t>(per));
    std::vector<double> plane;
    if (by_y) plane.resize(a->CountXY() * static_cast<uint64_t>(per));
    for (uint64_t p = 0; p < planes; ++p) {
        const uint64_t first = p * a->CountXY();
        if (by_y) values.Read(first, a->CountXY(), plane.data());
        for (uint64_t j = 0; j < outer; ++j) {
            if (!by_y) values.Read(first + j * a->nx, a->nx, row.data());
            for (uint64_t i = 0; i < inner; ++i) {
                const double* v = by_y ? &plane[(i * a->nx + j) * per] : &row[i * per];
                for (int c = 0; c < per; ++c) {
                    std::fprintf(out, format.c_str(), v[c]);
                    const bool last = i + 1 == inner && c + 1 == per;
                    std::fputs(last ? eol.c_str() : separator.c_str(), out);
                }
            }
        }
        std::fputs(eol.c_str(), out);
    }
    if (!file.Commit()) {
        status = "write failed";
        return 0;
    }
    return 1;
}
