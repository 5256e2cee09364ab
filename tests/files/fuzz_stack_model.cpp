// Fuzz target: the stack on any list of entries. Each 4 bytes make one entry (sizes from 1
// to 2 in x and y, 1 to 3 in z and t, 1 to 2 in u and v, a type, RGB, a header that fails).
// Whatever the list, the entries taken must agree with the first outside the stack
// direction and the summed size must be their sum; loaded through the load model by a
// reader that writes each entry's number at its dest, every sample of the stack must hold
// the number of the entry it belongs to.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "files/file_kinds.h"
#include "files/load_model.h"

namespace {

constexpr int kCode = 91;
const uint8_t* g_data = nullptr;

// The entry "/k" from bytes 4k ... 4k + 3.
int Header(const COpenOptions&, FileEntry& e) {
    const size_t k = std::stoul(e.path.substr(1));
    const uint8_t* b = g_data + 4 * k;
    e.header.SetHeader(b[3] & 1 ? TYPE_I2 : TYPE_R4, 1 + b[0] % 2, 1 + (b[0] >> 1) % 2,
                       1 + b[1] % 3, 1 + (b[1] >> 2) % 3, 1 + (b[2] % 2), 1 + (b[2] >> 1) % 2);
    e.isRgb = (b[3] >> 1) & 1;
    return (b[3] >> 2) % 8 != 0;
}

int Load(const COpenOptions&, FileEntry& e, CZrkData* const targets[3]) {
    const double mark = static_cast<double>(std::stoul(e.path.substr(1)) + 1);
    const CZrkData& h = e.header;
    for (int p = 0; p < (e.isRgb ? 3 : 1); ++p) {
        if (!targets[p] || !EntryFitsTarget(e, *targets[p])) std::abort();
        CDataCursor<double> out(targets[p]);
        for (res_t v = 0; v < h.nv; ++v)
            for (res_t u = 0; u < h.nu; ++u)
                for (res_t t = 0; t < h.nt; ++t)
                    for (res_t z = 0; z < h.nz; ++z)
                        for (res_t y = 0; y < h.ny; ++y)
                            for (res_t x = 0; x < h.nx; ++x) {
                                out.Seek(x, y, e.dest[0] + z, e.dest[1] + t, e.dest[2] + u,
                                         e.dest[3] + v);
                                out.SetI(mark);
                            }
    }
    e.status = "reading complete";
    return 1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool registered = [] {
        RegisterReader(kCode, {.header = Header, .load = Load});
        return true;
    }();
    (void)registered;
    g_data = data;
    std::vector<FileEntry> entries(size / 4);
    for (size_t k = 0; k < entries.size(); ++k) {
        char path[32];
        std::snprintf(path, sizeof path, "/%zu", k);
        entries[k].path = path;
        entries[k].code = kCode;
    }
    const size_t first = size > 0 ? data[0] % (entries.size() + 1) : 0;
    COpenOptions options;
    const CStackPlan plan =
        PlanStack(entries, first, [&](FileEntry& e) { return Header(options, e) == 1; });
    if (first >= entries.size() || !Header(options, entries[first])) {
        if (plan.count != 0) std::abort();
        return 0;
    }
    const int d = plan.direction;
    if (plan.count == 0 || first + plan.count > entries.size() || d < 2 || d > 5) std::abort();
    res_t head[6], sum = 0;
    entries[first].header.GetRes(head);
    std::vector<res_t> ends;  // where each entry's part of the stack ends
    for (size_t k = first; k < first + plan.count; ++k) {
        res_t r[6];
        entries[k].header.GetRes(r);
        for (int j = 0; j < 6; ++j)
            if (j != d && r[j] != head[j]) std::abort();
        if (entries[k].header.Type() != entries[first].header.Type()) std::abort();
        sum += r[d];
        ends.push_back(sum);
    }
    if (sum != plan.res[d]) std::abort();

    // The same stack through the load model.
    CDataSpace space;
    space.SetUnique();
    options.name_is_file = 4;
    CLoadModel load(options, space, entries);
    load.typed_name.assign(1, 's');  // g++ 12 warns falsely on assigning "s"
    load.index = first;
    if (load.LoadInStack() != 1) std::abort();
    const CZrkData* a = space.FindData(entries[first].isRgb ? "s.g" : "s");
    if (!a || space.Count() != (entries[first].isRgb ? 3 : 1)) std::abort();
    res_t n[6];
    a->GetRes(n);
    for (int j = 0; j < 6; ++j)
        if (n[j] != plan.res[j]) std::abort();
    CDataCursor<double> in(a);
    const uint64_t per = [&] {
        uint64_t p = 1;
        for (int j = 0; j < d; ++j) p *= n[j];
        return p;
    }();
    for (uint64_t i = 0; i < a->Count(); ++i) {
        const res_t at = (i / per) % n[d];
        size_t owner = 0;
        while (ends[owner] <= at) ++owner;
        if (in.Get(i) != static_cast<double>(first + owner + 1)) std::abort();
    }
    return 0;
}
