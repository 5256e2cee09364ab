// Fuzz target: the stack plan on any list of entries. Each 4 bytes make one entry (sizes
// from 1 to 3 in x, y and z, t, u, v, a type, RGB, a header that fails). Whatever the list,
// the entries taken must agree with the first outside the stack direction, and the summed
// size must be their sum.
#include <cstdlib>
#include <vector>

#include "files/load_model.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<FileEntry> entries(size / 4);
    std::vector<bool> usable(entries.size());
    for (size_t k = 0; k < entries.size(); ++k) {
        const uint8_t* b = data + 4 * k;
        entries[k].header.SetHeader(b[3] & 1 ? TYPE_I2 : TYPE_R4, 1 + b[0] % 2, 1 + (b[0] >> 1) % 2,
                                    1 + b[1] % 3, 1 + (b[1] >> 2) % 3, 1 + (b[2] % 2),
                                    1 + (b[2] >> 1) % 2);
        entries[k].isRgb = (b[3] >> 1) & 1;
        usable[k] = (b[3] >> 2) % 8 != 0;
    }
    const size_t first = size > 0 ? data[0] % (entries.size() + 1) : 0;
    int calls = 0;
    const CStackPlan plan = PlanStack(entries, first, [&](FileEntry& e) {
        ++calls;
        return static_cast<bool>(usable[static_cast<size_t>(&e - entries.data())]);
    });
    if (first >= entries.size() || !usable[first]) {
        if (plan.count != 0) std::abort();
        return 0;
    }
    if (plan.count == 0 || first + plan.count > entries.size() || plan.direction < 2 ||
        plan.direction > 5)
        std::abort();
    res_t sum = 0;
    res_t head[6];
    entries[first].header.GetRes(head);
    for (size_t k = first; k < first + plan.count; ++k) {
        res_t r[6];
        entries[k].header.GetRes(r);
        for (int j = 0; j < 6; ++j)
            if (j != plan.direction && r[j] != head[j]) std::abort();
        if (!usable[k] || entries[k].header.Type() != entries[first].header.Type()) std::abort();
        sum += r[plan.direction];
    }
    if (sum != plan.res[plan.direction]) std::abort();
    return 0;
}
