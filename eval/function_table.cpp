#include "eval/function_table.h"

#include <algorithm>
#include <cstring>
#include <map>

#include "core/host.h"
#include "core/zrk_error.h"

namespace {

// The browser's order of the 251 rows: each general function followed by its variants.
const std::vector<const char*> kLayout = {
    "=", "-", "+", "*", "/", "*xy", "/xy", "iqdiv", "iqmul", "cast", "tile", "i", "q", "mag",
    "mag2", "phase", "iq", "mp", "cexp", "conj", "malloc", "free", "finite", "fabs", "exp", "pow",
    "log10", "log2", "log", "sqrt", "cos", "sin", "tan", "acos", "asin", "atan", "atan2", "cosh",
    "sinh", "tanh", "j0", "j1", "y0", "y1", "bart", "black", "cat", "catx", "caty", "catz", "catt",
    "catm", "catmx", "catmy", "catmz", "catmt", "catmd", "catmdx", "catmdy", "catmdz", "catmdt",
    "cconv", "ccorr", "ccorr1d", "ccorr1dx", "ccorr1dy", "ccorr1dz", "ccorrt", "chop", "chopx",
    "chopy", "chopz", "chopt", "clip", "cmedian", "conv", "corr", "corr1d", "corr1dx", "corr1dy",
    "corr1dz", "corr1dt", "cross", "crossx", "crossy", "crossz", "crosst", "cssd", "cssdx",
    "cssdy", "cssdz", "cssdt", "cut", "cutx", "cuty", "cutz", "cutt", "crop1d", "crop2d", "delta",
    "deltax", "deltay", "deltaz", "deltat", "dot", "dotx", "doty", "dotz", "dott", "dilate",
    "erode", "eflip", "esort", "eye", "fill", "fillx", "filly", "fillz", "fillt", "fillr", "fills",
    "fill1d", "fill2d", "fillinf", "flip", "flipx", "flipy", "flipz", "flipt", "ft", "ftx", "fty",
    "ftz", "ftt", "get_rgb", "hann", "hamm", "integrate", "integratex", "integratey", "integratez",
    "integratet", "interp", "line", "linex", "liney", "linez", "linet", "mean", "max", "min",
    "mip", "mipx", "mipy", "mipz", "mipt", "minv", "maxndx", "median", "minndx", "mrft", "mrftx",
    "mrfty", "mrftz", "mrftt", "noise", "pad", "padx", "pady", "padz", "padt", "padsim", "padsimx",
    "padsimy", "padsimz", "padsimt", "permute", "pnft", "pnftx", "pnfty", "pnftz", "pnftt",
    "points2d", "printf", "proj", "projx", "projy", "projz", "projt", "ramp", "rampx", "rampy",
    "rampz", "rampt", "rampu", "rampv", "rand", "reshape", "rotxy", "rotmxy", "gather", "scatter",
    "set1droi", "set2droi", "shape", "shift", "shiftx", "shifty", "shiftz", "shiftt", "sort",
    "select", "squeeze", "srand", "sd", "ssd", "ssdx", "ssdy", "ssdz", "ssdt", "step", "stepx",
    "stepy", "stepz", "stept", "strip", "stripx", "stripy", "stripz", "stript", "stripr", "strips",
    "strip1d", "strip2d", "stuff1d", "stuff1dx", "stuff1dy", "stuff1dz", "stuff1dt", "stuff1du",
    "stuff1dv", "sumsqr", "sumsqrx", "sumsqry", "sumsqrz", "sumsqrt", "swapb", "thresh", "diag",
    "trans", "wrap1d",
};

struct CRegistry {
    std::vector<const CFuncRow*> rows;
    std::vector<const CFuncRow*> table;
    bool dirty = true;
};

CRegistry& Registry() {
    static CRegistry registry;
    return registry;
}

const CRegistry& Built() {
    CRegistry& r = Registry();
    if (r.dirty) {
        std::map<std::string, size_t> place;
        for (size_t k = 0; k < kLayout.size(); ++k) place.emplace(kLayout[k], k);
        auto key = [&](const CFuncRow* row) {
            const auto it = place.find(row->name);
            return std::pair{it == place.end() ? kLayout.size() : it->second, std::string(row->name)};
        };
        r.table = r.rows;
        std::stable_sort(r.table.begin(), r.table.end(),
                         [&](const CFuncRow* a, const CFuncRow* b) { return key(a) < key(b); });
        r.dirty = false;
    }
    return r;
}

const char* const kVariantsXyzt[] = {"general xyzt", "x direction", "y direction",
                                     "z direction",  "t direction", nullptr};
const char* const kVariantsXyztrs[] = {"general xyztrs", "x direction",  "y direction",
                                       "z direction",    "t direction",  "radial plane",
                                       "spherical volume", nullptr};
// "zt direction" stands twice, as the browser has always shown it.
const char* const kVariantsPairs[] = {"general xyzt", "xy direction", "xz direction",
                                      "zt direction", "yz direction", "yt direction",
                                      "zt direction", nullptr};
const char* const kVariantsDims[] = {"1d", "2d", "3d", "4d", nullptr};

}  // namespace

void CFunctionRows::Register(const CFuncRow* rows, size_t count) {
    CRegistry& r = Registry();
    for (size_t k = 0; k < count; ++k) r.rows.push_back(rows + k);
    r.dirty = true;
}

const std::vector<const CFuncRow*>& FunctionTable() { return Built().table; }

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

const std::vector<const char*>& FunctionLayout() { return kLayout; }

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
        case FAMILY_XYZT: return kVariantsXyzt;
        case FAMILY_XYZTRS: return kVariantsXyztrs;
        case FAMILY_PAIRS: return kVariantsPairs;
        case FAMILY_DIMS: return kVariantsDims;
        default: return nullptr;
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
