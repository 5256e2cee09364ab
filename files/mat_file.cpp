#include "files/mat_file.h"

#include <matio.h>
#include <sys/stat.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "core/element_type.h"
#include "core/zrk_data.h"
#include "files/atomic_file.h"
#include "files/mat_scan.h"

namespace {

// matio would print its complaints on stderr; the status texts say what went wrong instead.
void Silent(int level, char* message) {
    (void)level;
    (void)message;
}

void QuietLog() {
    static const bool done = [] {
        Mat_LogInitFunc("quelmor", &Silent);
        return true;
    }();
    (void)done;
}

struct MatCloser {
    void operator()(mat_t* mat) const { Mat_Close(mat); }
};
struct VarFreer {
    void operator()(matvar_t* var) const { Mat_VarFree(var); }
};
using MatPtr = std::unique_ptr<mat_t, MatCloser>;
using VarPtr = std::unique_ptr<matvar_t, VarFreer>;

// The element type of a MAT class, -1 for the classes passed by.
int TypeOfClass(matio_classes c, bool complex) {
    int real = -1;
    switch (c) {
        case MAT_C_DOUBLE:
            real = TYPE_R8;
            break;
        case MAT_C_SINGLE:
            real = TYPE_R4;
            break;
        case MAT_C_INT8:
            real = TYPE_I1;
            break;
        case MAT_C_UINT8:
            real = TYPE_N1;
            break;
        case MAT_C_INT16:
            real = TYPE_I2;
            break;
        case MAT_C_UINT16:
            real = TYPE_N2;
            break;
        case MAT_C_INT32:
            real = TYPE_I4;
            break;
        case MAT_C_UINT32:
            real = TYPE_N4;
            break;
        default:
            return -1;
    }
    return complex ? real + 10 : real;
}

uint64_t FileSize(const std::string& path) {
    struct stat st = {};
    return stat(path.c_str(), &st) == 0 ? static_cast<uint64_t>(st.st_size) : 0;
}

// zlib never packs more than 1032 bytes into one, and the smallest stored element is a
// byte: no honest variable holds more elements than this.
constexpr uint64_t kInflateRatio = 1032;

// What a variable would become: its type and six sizes, or type -1 when it is passed by.
struct MatShape {
    int type = -1;
    res_t res[6] = {1, 1, 1, 1, 1, 1};
    uint64_t count = 0;
};

MatShape ShapeOf(const matvar_t* var, uint64_t element_limit) {
    MatShape s;
    if (!var->name || !var->name[0] || var->rank < 1 || var->rank > 6 || !var->dims) return s;
    const int type = TypeOfClass(var->class_type, var->isComplex != 0);
    if (type < 0) return s;
    uint64_t count = 1;
    for (int k = 0; k < var->rank; ++k) {
        // Each size goes to matio's reader as an int.
        if (var->dims[k] == 0 || var->dims[k] > static_cast<size_t>(INT_MAX)) return s;
        if (__builtin_mul_overflow(count, static_cast<uint64_t>(var->dims[k]), &count)) return s;
        s.res[k] = var->dims[k];
    }
    if (count > element_limit) return s;
    s.count = count;
    s.type = type;
    return s;
}

uint64_t ElementLimit(mat_t* mat, const matvar_t* var, uint64_t file_size) {
    const bool packed =
        Mat_GetVersion(mat) == MAT_FT_MAT73 || var->compression != MAT_COMPRESSION_NONE;
    return packed ? file_size * kInflateRatio : file_size;
}

std::string TitleOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// Moves `count` elements of `bytes` each from MAT order to the record's, with x and y
// exchanged when `swap` is set: element (i, j, rest) of the file lands at (j, i, rest).
void Place(char* out, const char* in, const MatShape& s, int bytes, int out_stride, bool swap) {
    const uint64_t nx = s.res[0], ny = s.res[1];
    const uint64_t plane = nx * ny, planes = s.count / plane;
    if (!swap) {
        for (uint64_t k = 0; k < s.count; ++k)
            std::memcpy(out + k * out_stride, in + k * bytes, bytes);
        return;
    }
    for (uint64_t p = 0; p < planes; ++p) {
        const char* src = in + p * plane * bytes;
        char* dst = out + p * plane * out_stride;
        for (uint64_t j = 0; j < ny; ++j)
            for (uint64_t i = 0; i < nx; ++i)
                std::memcpy(dst + (i * ny + j) * out_stride, src + (j * nx + i) * bytes, bytes);
    }
}

// Reads the samples of `var` into `a`, whose header is already that of `s`.
bool ReadSamples(mat_t* mat, matvar_t* var, const MatShape& s, bool swap, CZrkData* a) {
    int start[6] = {0}, stride[6] = {1, 1, 1, 1, 1, 1}, edge[6];
    for (int k = 0; k < var->rank; ++k) edge[k] = static_cast<int>(var->dims[k]);
    const int comp = a->ComponentBytes();
    if (!var->isComplex && !swap)
        return Mat_VarReadData(mat, var, a->data, start, stride, edge) == 0;
    if (!var->isComplex) {
        std::vector<char> in(s.count * comp);
        if (Mat_VarReadData(mat, var, in.data(), start, stride, edge) != 0) return false;
        Place(static_cast<char*>(a->data), in.data(), s, comp, comp, true);
        return true;
    }
    // Complex parts come in two buffers; the record interleaves them.
    std::vector<char> re(s.count * comp), im(s.count * comp);
    mat_complex_split_t split = {re.data(), im.data()};
    if (Mat_VarReadData(mat, var, &split, start, stride, edge) != 0) return false;
    char* out = static_cast<char*>(a->data);
    Place(out, re.data(), s, comp, 2 * comp, swap);
    Place(out + comp, im.data(), s, comp, 2 * comp, swap);
    return true;
}

// A file that is no MAT file is not handed to matio at all; `scan` says how many variable
// headers matio may read.
MatPtr OpenForReading(const std::string& path, CMatScan& scan) {
    QuietLog();
    scan = ScanMatFile(path);
    if (scan.version == 0) return nullptr;
    return MatPtr(Mat_Open(path.c_str(), MAT_ACC_RDONLY));
}

// The variables' headers in file order, no more than the scan found sound. All are taken
// before any data is read: a data read moves matio's file position, which the walk over
// the headers goes on from.
std::vector<VarPtr> Variables(mat_t* mat, const CMatScan& scan) {
    std::vector<VarPtr> vars;
    while (static_cast<int>(vars.size()) < scan.variables) {
        matvar_t* var = Mat_VarReadNextInfo(mat);
        if (!var) break;
        vars.emplace_back(var);
    }
    return vars;
}

}  // namespace

int ReadMatHeader(const COpenOptions& options, FileEntry& entry) {
    entry.title = TitleOf(entry.path);
    entry.failed = 0;
    CMatScan scan;
    MatPtr mat = OpenForReading(entry.path, scan);
    if (!mat) {
        entry.status = "Error opening file";
        entry.failed = 1;
        return 0;
    }
    const uint64_t file_size = FileSize(entry.path);
    entry.header = CZrkData();  // no sizes until a compatible array shows them
    int total = 0, compatible = 0;
    uint64_t bytes = 0;
    bool first = true;
    for (const VarPtr& var : Variables(mat.get(), scan)) {
        ++total;
        const MatShape s = ShapeOf(var.get(), ElementLimit(mat.get(), var.get(), file_size));
        if (s.type < 0) continue;
        ++compatible;
        bytes += s.count * TypeInfo(s.type)->elem_bytes;
        if (first) {
            const bool swap = options.swapxy != 0;
            entry.header.SetHeader(s.type, swap ? s.res[1] : s.res[0], swap ? s.res[0] : s.res[1],
                                   s.res[2], s.res[3], s.res[4], s.res[5]);
            entry.header.SetMm(1, 1, 1, 1, 1, 1);
            first = false;
        }
    }
    char text[160];
    std::snprintf(text, sizeof text, "%llu bytes in %d out of %d compatible array(s)",
                  static_cast<unsigned long long>(bytes), compatible, total);
    entry.status = text;
    return 1;
}

int LoadMatFile(const COpenOptions& options, FileEntry& entry, CDataSpace& space) {
    entry.failed = 0;
    CMatScan scan;
    MatPtr mat = OpenForReading(entry.path, scan);
    if (!mat) {
        entry.status = "Error opening file";
        entry.failed = 1;
        return 0;
    }
    const uint64_t file_size = FileSize(entry.path);
    const bool swap = options.swapxy != 0;
    int ok = 1;
    entry.status.clear();
    for (const VarPtr& var : Variables(mat.get(), scan)) {
        const MatShape s = ShapeOf(var.get(), ElementLimit(mat.get(), var.get(), file_size));
        if (s.type < 0) continue;
        const res_t nx = swap ? s.res[1] : s.res[0], ny = swap ? s.res[0] : s.res[1];
        CZrkData* a =
            space.NewData(s.type, nx, ny, s.res[2], s.res[3], s.res[4], s.res[5], var->name);
        if (!a || !a->data) {
            if (a) space.DelData(a);
            entry.status = "alloc failed";
            ok = 0;
            break;
        }
        a->SetMm(1, 1, 1, 1, 1, 1);
        bool read = false;
        try {
            read = ReadSamples(mat.get(), var.get(), s, swap, a);
        } catch (const std::bad_alloc&) {
        }
        if (!read) {
            space.DelData(a);
            entry.status = "read failed";
            ok = 0;
            break;
        }
        a->changed = 1;
    }
    if (Mat_Close(mat.release()) != 0) {
        entry.status = "Error closing file";
        ok = 0;
    }
    if (ok) entry.status = "reading complete";
    entry.failed = ok ? 0 : 1;
    return ok;
}

// ---- writing ------------------------------------------------------------------------------

std::string MatName(const char* name) {
    std::string out;
    for (const char* p = name; *p; ++p) {
        const unsigned char c = static_cast<unsigned char>(*p);
        const bool keep =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        out += keep ? static_cast<char>(c) : '_';
    }
    if (!out.empty() && out[0] >= '0' && out[0] <= '9') out = "num_" + out;
    return out;
}

namespace {

struct MatClass {
    matio_classes cls;
    matio_types type;
};

MatClass ClassOf(int component_type) {
    switch (component_type) {
        case TYPE_I1:
            return {MAT_C_INT8, MAT_T_INT8};
        case TYPE_I2:
            return {MAT_C_INT16, MAT_T_INT16};
        case TYPE_I4:
            return {MAT_C_INT32, MAT_T_INT32};
        case TYPE_I8:
            return {MAT_C_INT64, MAT_T_INT64};
        case TYPE_N1:
            return {MAT_C_UINT8, MAT_T_UINT8};
        case TYPE_N2:
            return {MAT_C_UINT16, MAT_T_UINT16};
        case TYPE_N4:
            return {MAT_C_UINT32, MAT_T_UINT32};
        case TYPE_N8:
            return {MAT_C_UINT64, MAT_T_UINT64};
        case TYPE_R4:
            return {MAT_C_SINGLE, MAT_T_SINGLE};
        default:
            return {MAT_C_DOUBLE, MAT_T_DOUBLE};
    }
}

// Version 4 knows doubles, singles and a few integers; matio writes no others there.
bool Version4Has(int component_type) {
    return component_type == TYPE_R8 || component_type == TYPE_R4 || component_type == TYPE_I4 ||
           component_type == TYPE_I2 || component_type == TYPE_N2 || component_type == TYPE_N1;
}

// The parts of `a` as MAT wants them: one buffer, or real and imaginary apart; in its own
// component type or as doubles.
struct MatBuffers {
    std::vector<char> re, im;
};

MatBuffers Split(const CZrkData* a, bool doubles) {
    MatBuffers b;
    const uint64_t n = a->Count();
    const bool complex = a->IsComplex();
    WithComponent(a->Type(), [&](auto zero) {
        using T = decltype(zero);
        const T* in = static_cast<const T*>(a->data);
        const size_t out_bytes = doubles ? sizeof(double) : sizeof(T);
        b.re.resize(n * out_bytes);
        if (complex) b.im.resize(n * out_bytes);
        const int step = complex ? 2 : 1;
        auto put = [&](std::vector<char>& out, int part) {
            if (doubles) {
                double* o = reinterpret_cast<double*>(out.data());
                for (uint64_t k = 0; k < n; ++k) o[k] = static_cast<double>(in[k * step + part]);
            } else {
                T* o = reinterpret_cast<T*>(out.data());
                for (uint64_t k = 0; k < n; ++k) o[k] = in[k * step + part];
            }
        };
        put(b.re, 0);
        if (complex) put(b.im, 1);
    });
    return b;
}

bool WriteArray(mat_t* mat, const CZrkData* a, const std::string& name, bool all_doubles,
                int version) {
    if (!a->data || !IsValidType(a->Type())) return false;
    const int component = a->Type() % 10;
    const bool doubles = all_doubles || (version == 4 && !Version4Has(component));
    const MatClass mc = doubles ? MatClass{MAT_C_DOUBLE, MAT_T_DOUBLE} : ClassOf(component);
    res_t res[6];
    a->GetRes(res);
    // The rank ends at the last size above 1 and is at least 2, as MAT shapes are.
    int rank = 2;
    for (int k = 5; k >= 2; --k)
        if (res[k] > 1) {
            rank = k + 1;
            break;
        }
    size_t dims[6];
    for (int k = 0; k < 6; ++k) dims[k] = res[k];
    // Version 4 holds matrices only: x by everything else, every value kept.
    if (version == 4 && rank > 2) {
        dims[1] = a->Count() / (res[0] ? res[0] : 1);
        rank = 2;
    }
    if (name.empty()) return false;
    // A record that is already as MAT stores it is handed over without a copy.
    MatBuffers b;
    mat_complex_split_t split = {nullptr, nullptr};
    void* data = a->data;
    if (a->IsComplex() || doubles) {
        b = Split(a, doubles);
        split = {b.re.data(), b.im.data()};
        data = a->IsComplex() ? static_cast<void*>(&split) : b.re.data();
    }
    VarPtr var{Mat_VarCreate(name.c_str(), mc.cls, mc.type, rank, dims, data,
                             MAT_F_DONT_COPY_DATA | (a->IsComplex() ? MAT_F_COMPLEX : 0))};
    if (!var) return false;
    const matio_compression z = version == 7 ? MAT_COMPRESSION_ZLIB : MAT_COMPRESSION_NONE;
    return Mat_VarWrite(mat, var.get(), z) == 0;
}

}  // namespace

int SaveMatFile(const CSaveRequest& request) {
    std::string scratch;
    std::string& status = request.status ? *request.status : scratch;
    const int version = request.options ? request.options->mat_version : 7;
    const bool all_doubles = request.options && request.options->all_doubles;
    QuietLog();
    CAtomicFile file(request.path);
    if (!file.Create()) {
        status = "Error opening file";
        return 0;
    }
    mat_t* mat = Mat_CreateVer(file.TempPath().c_str(), "MATLAB 5.0 MAT-file, Created by: Quelmor",
                               version == 4 ? MAT_FT_MAT4 : MAT_FT_MAT5);
    if (!mat) {
        status = "Error opening file";
        return 0;
    }
    std::set<std::string> taken;
    for (const CZrkData* a : request.arrays) {
        bool ok = false;
        try {
            // "a b" and "a_b" both become a_b: the second is written as a_b_1, not over it.
            std::string name = a ? MatName(a->name) : "";
            for (int n = 1; taken.count(name); ++n)
                name = MatName(a->name) + "_" + std::to_string(n);
            taken.insert(name);
            ok = a && WriteArray(mat, a, name, all_doubles, version);
        } catch (const std::exception&) {
        }
        if (!ok) {
            Mat_Close(mat);
            status = std::string("can not generate matlab array for: ") + (a ? a->name : "");
            return 0;
        }
    }
    if (Mat_Close(mat) != 0 || !file.Commit()) {
        status = "Error closing file";
        return 0;
    }
    return 1;
}
