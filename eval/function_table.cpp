#include "eval/function_table.h"

#include <cstring>
#include <deque>
#include <map>
#include <stdexcept>

#include "core/host.h"
#include "core/zrk_error.h"

namespace {

// Rows keep their addresses for the life of the program; the table is sorted by place, each
// declared row followed by its variants.
struct CRegistry {
    std::deque<CFuncRow> rows;
    std::map<std::string, const CFuncRow*> names;
    std::map<std::pair<int, int>, const CFuncRow*> order;  // (place, variant) -> row
    std::vector<const CFuncRow*> table;
};

CRegistry& Registry() {
    static CRegistry registry;
    return registry;
}

const char* const kVariantsXyzt[] = {"general xyzt", "x direction", "y direction",
                                     "z direction",  "t direction", nullptr};
const char* const kVariantsXyztrs[] = {"general xyztrs",   "x direction", "y direction",
                                       "z direction",      "t direction", "radial plane",
                                       "spherical volume", nullptr};
// "zt direction" stands twice, as the browser has always shown it.
const char* const kVariantsPairs[] = {"general xyzt", "xy direction", "xz direction",
                                      "zt direction", "yz direction", "yt direction",
                                      "zt direction", nullptr};
const char* const kVariantsDims[] = {"1d", "2d", "3d", "4d", nullptr};

}  // namespace

void RegisterFunctions(const std::vector<CFuncDecl>& decls) {
    CRegistry& r = Registry();
    auto add = [&r](const std::string& name, int place, int variant, const CFuncRow& row) {
        if (name.size() >= sizeof row.name)
            throw std::logic_error("function name too long: " + name);
        if (r.names.count(name)) throw std::logic_error("function declared twice: " + name);
        if (r.order.count({place, variant}))
            throw std::logic_error("browser place " + std::to_string(place) + " taken: " + name);
        CFuncRow& stored = r.rows.emplace_back(row);
        std::memcpy(stored.name, name.c_str(), name.size() + 1);
        r.names.emplace(name, &stored);
        r.order.emplace(std::pair{place, variant}, &stored);
    };
    for (const CFuncDecl& d : decls) {
        add(d.name, d.place, 0, {{}, d.handler, d.min_args, d.max_args, d.family, d.help});
        for (size_t k = 0; k < d.variants.size(); ++k) {
            const CFuncVariant& v = d.variants[k];
            if (!v.name && k >= 6)
                throw std::logic_error("variant without a name: " + std::string(d.name));
            const std::string name = v.name ? v.name : std::string(d.name) + kDirLetters[k];
            add(name, d.place, static_cast<int>(k) + 1,
                {{}, v.handler, d.min_args - 1, d.max_args - 1, FAMILY_PLAIN, nullptr});
        }
    }
    r.table.clear();
    for (const auto& [key, row] : r.order) r.table.push_back(row);
}

const std::vector<const CFuncRow*>& FunctionTable() { return Registry().table; }

int FunctionCount() { return static_cast<int>(FunctionTable().size()); }

const CFuncRow* FunctionRow(int index) {
    const auto& table = FunctionTable();
    return index >= 0 && index < static_cast<int>(table.size()) ? table[index] : nullptr;
}

int FindFunction(const char* text, int* index) {
    const auto& table = FunctionTable();
    size_t best = 0;
    for (size_t k = 0; k < table.size(); ++k) {
        const size_t len = std::strlen(table[k]->name);
        if (len > best && std::strncmp(text, table[k]->name, len) == 0) {
            best = len;
            if (index) *index = static_cast<int>(k);
        }
    }
    return static_cast<int>(best);
}

int FunctionIndex(const char* name) {
    const auto& table = FunctionTable();
    for (size_t k = 0; k < table.size(); ++k)
        if (std::strcmp(table[k]->name, name) == 0) return static_cast<int>(k);
    return -1;
}

CFuncHelp ReadHelp(const char* const* help) {
    CFuncHelp out;
    if (!help) return out;
    out.title = help[0];
    const char* const* p = help + 1;
    for (; *p; p += 2) out.arguments.emplace_back(p[0], p[1]);
    for (++p; *p; ++p) out.lines.push_back(*p);
    return out;
}

const char* const* FamilyVariants(int64_t family) {
    switch (family) {
        case FAMILY_XYZT:
            return kVariantsXyzt;
        case FAMILY_XYZTRS:
            return kVariantsXyztrs;
        case FAMILY_PAIRS:
            return kVariantsPairs;
        case FAMILY_DIMS:
            return kVariantsDims;
        default:
            return nullptr;
    }
}

int DirectionCall(const FuncHandler variants[6], bool choose_multiple, const char* no_direction,
                  CZrkData** result, CDataSpace& temp, CZrkData** args, int nargs) {
    unsigned found = DirectionsOf(args[0]);
    for (int d = 0; d < 6; ++d)
        if (!variants[d]) found &= ~(1u << d);
    if (!found) {
        err_msg = no_direction;
        return 1;
    }
    std::vector<CZrkData*> rest(args + 1, args + nargs);
    CZrkData* out = nullptr;
    for (int d = 0; d < 6; ++d) {
        if (!(found & (1u << d))) continue;
        if (variants[d](&out, temp, rest.data(), nargs - 1)) return 1;
        if (!choose_multiple) break;
        rest[0] = out;
    }
    *result = out;
    return 0;
}
