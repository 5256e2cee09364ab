#include "files/scanner/pulsegen_file.h"

#include <cstdio>
#include <memory>
#include <new>
#include <vector>

#include "core/data_cursor.h"
#include "core/host.h"
#include "files/scanner/scanner_io.h"

namespace {

constexpr uint32_t kDft2 = 0x44465432;
constexpr uint32_t kIpg0 = 0x49504730;

int LoadFailed(FileEntry& entry) {
    entry.status = "read failed";
    Host().Message("read failed");
    return 0;
}

void PutBe32(std::vector<uint8_t>& out, uint32_t v) {
    for (int s = 24; s >= 0; s -= 8) out.push_back(static_cast<uint8_t>(v >> s));
}

}  // namespace

int ReadPulsegenHeader(FileEntry& entry) {
    entry.failed = 1;
    CScannerFile file(entry.path);
    if (!file.IsOpen()) return OpenFailed(entry);
    uint8_t head[96];
    if (!file.Read(0, head, 64)) {
        entry.status = "read failed";
        return 0;
    }
    const CByteView words{head, sizeof head, true};
    res_t res[6] = {0, 1, 1, 1, 1, 1};
    int type;
    if (words.U32(0) == kDft2) {
        if (!file.Read(64, head + 64, 32)) {
            entry.status = "read failed";
            return 0;
        }
        type = TYPE_CI2;
        res[0] = words.U16(64 + 2);
        entry.dataOffset = 96;
    } else if (words.U32(0) == kIpg0) {
        type = TYPE_I2;
        res[0] = ResOf(words.S32(4) / 2 - 34);
        entry.dataOffset = 64;
    } else {
        entry.status = "unknown file type";
        return 0;
    }
    ResetScannerHeader(entry, type, res);
    entry.byteSwap = 1;
    entry.failed = 0;
    return 1;
}

int LoadPulsegen(const COpenOptions& dialog, FileEntry& entry, CZrkData* const targets[3]) {
    (void)dialog;
    CZrkData* target = targets[0];
    if (!TargetFits(entry, target)) return LoadFailed(entry);
    CScannerFile file(entry.path);
    const CZrkData& h = entry.header;
    char* out = target->Address(0, 0, entry.dest[0], entry.dest[1], entry.dest[2], entry.dest[3]);
    const uint64_t n = h.nx;
    if (h.Type() == TYPE_I2) {
        if (!file.Read(static_cast<uint64_t>(entry.dataOffset), out, 2 * n))
            return LoadFailed(entry);
        SwapUnits(out, 2 * n, 2);
    } else {
        // The q parts start at 608 whatever the count.
        std::unique_ptr<uint16_t[]> parts(new (std::nothrow) uint16_t[2 * n + 1]);
        if (!parts) return LoadFailed(entry);
        if (!file.Read(96, parts.get(), 2 * n) || !file.Read(608, parts.get() + n, 2 * n))
            return LoadFailed(entry);
        auto* iq = reinterpret_cast<uint16_t*>(out);
        for (uint64_t k = 0; k < n; ++k) {
            iq[2 * k] = Swap16(parts[k]);
            iq[2 * k + 1] = Swap16(parts[n + k]);
        }
    }
    target->CopyMm(h);
    entry.status = "reading complete";
    return 1;
}

int SavePulsegen(const std::string& path, const CZrkData* data, int part, std::string& status) {
    if (!data || !data->Data()) {
        status = "can not find data";
        Host().Message(status);
        return 0;
    }
    if (part < 0 || part >= 4) {
        status = "select i/q/mag/phase";
        Host().Message(status);
        return 0;
    }
    const uint64_t n = data->Count();
    const CDataCursor<double> values(data, part);
    const ElementTypeInfo* i2 = TypeInfo(TYPE_I2);
    bool wide = false;
    for (uint64_t k = 0; k < n && !wide; ++k) {
        const double v = values.Get(k);
        wide = v < i2->range_min || v > i2->range_max;
    }
    if (wide && !Host().AskYesNo("data range is larger than +/-32767!\n\nsave anyway?")) {
        status = "file not saved";
        return 0;
    }
    std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
    if (!file) {
        status = "file create failed";
        return 0;
    }
    const uint64_t m = n + (n & 1);
    if (2 * m + 68 >= 0x80000000u) {
        file.reset();
        std::remove(path.c_str());
        status = "too many points for file";
        return 0;
    }
    const uint32_t bytes = static_cast<uint32_t>(2 * m + 68);
    std::vector<uint8_t> out;
    bool ok = true;
    auto flush = [&] {
        ok = ok && std::fwrite(out.data(), 1, out.size(), file.get()) == out.size();
        out.clear();
    };
    const uint32_t header[16] = {kIpg0, bytes, 1, bytes};
    uint32_t sum = 0;
    for (uint32_t w : header) {
        PutBe32(out, w);
        sum += w;
    }
    // Points go two to a 32-bit word, and the words enter the sum.
    for (uint64_t k = 0; k < m; k += 2) {
        const auto first = static_cast<uint16_t>(TruncToInt64(values.Get(k)));
        const auto second =
            k + 1 < n ? static_cast<uint16_t>(TruncToInt64(values.Get(k + 1))) : uint16_t{0};
        const uint32_t word = uint32_t{first} << 16 | second;
        PutBe32(out, word);
        sum += word;
        if (out.size() >= (1u << 20)) flush();
    }
    PutBe32(out, ~sum);
    flush();
    if (!ok || std::fclose(file.release()) != 0) {
        status = "write failed";
        return 0;
    }
    return 1;
}

int SavePulsegenRequest(const CSaveRequest& request) {
    std::string ignored;
    std::string& status = request.status ? *request.status : ignored;
    const CZrkData* data = request.arrays.empty() ? nullptr : request.arrays[0];
    return SavePulsegen(request.path, data, request.options ? request.options->iqmp : 2, status);
}
