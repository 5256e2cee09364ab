#include "files/nifti_reader.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>

#include <nifti2_io.h>

#include "core/element_type.h"
#include "core/zrk_data.h"
#include "core/zrk_error.h"
#include "files/entry_block.h"
#include "files/nifti_orientation.h"

namespace {

struct NiftiFree {
    void operator()(nifti_image* nim) const { nifti_image_free(nim); }
};
using NiftiPtr = std::unique_ptr<nifti_image, NiftiFree>;

struct ZnzClose {
    void operator()(znzptr* f) const {
        znzFile file = f;
        znzclose(file);
    }
};

int Failed(FileEntry& e, const std::string& text) {
    e.status = text;
    e.failed = 1;
    return 0;
}

// The stored type of a NIfTI datatype as an array type; TYPE_NULL for a type without one.
// RGB is n1 per colour; 128-bit floats are widened to r8.
int StoredType(int datatype) {
    switch (datatype) {
        case DT_INT8:
            return TYPE_I1;
        case DT_UINT8:
            return TYPE_N1;
        case DT_INT16:
            return TYPE_I2;
        case DT_UINT16:
            return TYPE_N2;
        case DT_INT32:
            return TYPE_I4;
        case DT_UINT32:
            return TYPE_N4;
        case DT_INT64:
            return TYPE_I8;
        case DT_UINT64:
            return TYPE_N8;
        case DT_FLOAT32:
            return TYPE_R4;
        case DT_FLOAT64:
            return TYPE_R8;
        case DT_FLOAT128:
            return TYPE_R8;
        case DT_COMPLEX64:
            return TYPE_CR4;
        case DT_COMPLEX128:
            return TYPE_CR8;
        case DT_COMPLEX256:
            return TYPE_CR8;
        case DT_RGB24:
            return TYPE_N1;
        case DT_RGBA32:
            return TYPE_N1;
        default:
            return TYPE_NULL;
    }
}

bool IsRgb(int datatype) { return datatype == DT_RGB24 || datatype == DT_RGBA32; }

// What the samples become: slope and intercept, or none.
struct Scaling {
    bool on = false;
    double slope = 1.0, inter = 0.0;
};

Scaling ScalingOf(const nifti_image& nim) {
    Scaling s;
    if (IsRgb(nim.datatype) || !std::isfinite(nim.scl_slope) || nim.scl_slope == 0.0) return s;
    s.slope = nim.scl_slope;
    s.inter = std::isfinite(nim.scl_inter) ? nim.scl_inter : 0.0;
    s.on = !(s.slope == 1.0 && s.inter == 0.0);
    return s;
}

int ArrayType(const nifti_image& nim) {
    const int stored = StoredType(nim.datatype);
    if (!ScalingOf(nim).on || stored == TYPE_NULL) return stored;
    return IsComplexType(stored) ? TYPE_CR4 : TYPE_R4;
}

uint64_t PhysicalMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES), size = sysconf(_SC_PAGE_SIZE);
    return pages > 0 && size > 0 ? static_cast<uint64_t>(pages) * static_cast<uint64_t>(size)
                                 : uint64_t{1} << 32;
}

// Header and extensions of a gzipped file above this are not believed.
constexpr double kMaxHeaderBytes = 64 << 20;

void Init() {
    static const bool quiet = [] {
        nifti_set_debug_level(0);
        return true;
    }();
    (void)quiet;
}

// Opens the header, checks it and everything the sizes imply; null with the reason in
// `error`. `bytes` receives the size of the stored samples, `version` 1 or 2 (0 for the
// older format without the magic).
NiftiPtr OpenChecked(const std::string& path, uint64_t& bytes, int& version, std::string& error) {
    Init();
    void* raw = nifti_read_header(path.c_str(), &version, 1);
    if (!raw) {
        error = "not a nifti file";
        return nullptr;
    }
    // The library reads header extensions up to the data offset into memory: that offset
    // must lie inside a single file, and be of header size in a gzipped one.
    // The library indexes its tables by dim[0] unchecked: it must be 1 to 7 and every size
    // it counts at least 1, whether the byte order is told by the header size or by dim[0]
    // (the library uses both). The header comes in the file's byte order.
    double offset = 0;
    bool single = false, dims_ok = true;
    auto check = [&](const auto& h, int expected_size) {
        using T = std::remove_cv_t<std::remove_reference_t<decltype(h.dim[0])>>;
        T dim[8];
        std::memcpy(dim, h.dim, sizeof dim);
        auto size = h.sizeof_hdr;
        auto vox = h.vox_offset;
        const bool swap = size != expected_size;
        if (swap) {
            nifti_swap_Nbytes(8, sizeof(T), dim);
            nifti_swap_Nbytes(1, sizeof vox, &vox);
        }
        dims_ok = dim[0] >= 1 && dim[0] <= 7 && swap == (h.dim[0] < 1 || h.dim[0] > 7);
        for (int k = 1; dims_ok && k <= dim[0]; ++k) dims_ok = dim[k] >= 1;
        offset = static_cast<double>(vox);
        single = h.magic[1] == '+';
    };
    if (version == 2)
        check(*static_cast<const nifti_2_header*>(raw), 540);
    else
        check(*static_cast<const nifti_1_header*>(raw), 348);
    std::free(raw);
    if (!dims_ok) {
        error = "bad nifti dimensions";
        return nullptr;
    }
    const bool gz = nifti_is_gzfile(path.c_str());
    if (!(offset >= 0) || (gz && offset > kMaxHeaderBytes) ||
        (!gz && single && offset > static_cast<double>(nifti_get_filesize(path.c_str())))) {
        error = "nifti data offset beyond the file";
        return nullptr;
    }
    NiftiPtr nim(nifti_image_read(path.c_str(), 0));
    if (!nim) {
        error = "not a nifti file";
        return nullptr;
    }
    if (nim->ndim < 1 || nim->ndim > 7 || (nim->ndim == 7 && nim->nw > 1)) {
        error = "more than six dimensions";
        return nullptr;
    }
    if (StoredType(nim->datatype) == TYPE_NULL) {
        error =
            std::string("unsupported nifti data type ") + nifti_datatype_to_string(nim->datatype);
        return nullptr;
    }
    uint64_t count = 1;
    for (int k = 1; k <= 6; ++k) {
        const int64_t n = k <= nim->ndim ? nim->dim[k] : 1;
        if (n < 1 || __builtin_mul_overflow(count, static_cast<uint64_t>(n), &count)) {
            error = "bad nifti dimensions";
            return nullptr;
        }
    }
    if (__builtin_mul_overflow(count, static_cast<uint64_t>(nim->nbyper), &bytes) ||
        nim->iname_offset < 0 || !nim->iname) {
        error = "bad nifti dimensions";
        return nullptr;
    }
    if (nifti_is_gzfile(nim->iname)) {
        if (bytes > PhysicalMemory()) {
            error = "nifti image larger than memory";
            return nullptr;
        }
    } else {
        const int64_t size = nifti_get_filesize(nim->iname);
        if (size < 0) {
            error = std::string("nifti image file missing: ") + nim->iname;
            return nullptr;
        }
        if (static_cast<uint64_t>(size) < static_cast<uint64_t>(nim->iname_offset) ||
            static_cast<uint64_t>(size) - static_cast<uint64_t>(nim->iname_offset) < bytes) {
            error = "nifti file shorter than its dimensions";
            return nullptr;
        }
    }
    return nim;
}

// The six sizes; directions past ndim are 1 whatever the file holds there.
void Sizes(const nifti_image& nim, res_t n[6]) {
    for (int k = 0; k < 6; ++k) n[k] = k < nim.ndim ? static_cast<res_t>(nim.dim[k + 1]) : 1;
}

float Step(double v) {
    return std::isfinite(v) && v > 0 && v < 1e30 ? static_cast<float>(v) : 1.0f;
}

CNiftiOrientation OrientationOf(const nifti_image& nim) {
    CNiftiOrientation o;
    o.qform_code = nim.qform_code;
    o.sform_code = nim.sform_code;
    o.quatern[0] = nim.quatern_b;
    o.quatern[1] = nim.quatern_c;
    o.quatern[2] = nim.quatern_d;
    o.qoffset[0] = nim.qoffset_x;
    o.qoffset[1] = nim.qoffset_y;
    o.qoffset[2] = nim.qoffset_z;
    o.qfac = nim.qfac < 0 ? -1.0 : 1.0;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 4; ++j) o.srow[i][j] = nim.sto_xyz.m[i][j];
    return o;
}

// One plane of `n` stored values converted into a target plane.
template <class S>
void ConvertPlane(const char* src, uint64_t n, const Scaling& s, int type, char* dst) {
    const S* in = reinterpret_cast<const S*>(src);
    if (type == TYPE_R4) {
        float* out = reinterpret_cast<float*>(dst);
        if (s.on) {
            for (uint64_t k = 0; k < n; ++k)
                out[k] = static_cast<float>(static_cast<double>(in[k]) * s.slope + s.inter);
        } else {
            for (uint64_t k = 0; k < n; ++k) out[k] = static_cast<float>(in[k]);
        }
    } else if (type == TYPE_R8) {
        double* out = reinterpret_cast<double*>(dst);
        for (uint64_t k = 0; k < n; ++k) out[k] = static_cast<double>(in[k]);
    } else {
        std::memcpy(dst, src, n * sizeof(S));
    }
}

// Complex values, parts side by side, into complex r4 (scaled) or complex r8.
template <class S>
void ConvertComplexPlane(const char* src, uint64_t n, const Scaling& s, int type, char* dst) {
    const S* in = reinterpret_cast<const S*>(src);
    if (type == TYPE_CR4) {
        float* out = reinterpret_cast<float*>(dst);
        for (uint64_t k = 0; k < n; ++k) {
            out[2 * k] = static_cast<float>(static_cast<double>(in[2 * k]) * s.slope + s.inter);
            out[2 * k + 1] = static_cast<float>(static_cast<double>(in[2 * k + 1]) * s.slope);
        }
    } else {
        double* out = reinterpret_cast<double*>(dst);
        for (uint64_t k = 0; k < 2 * n; ++k) out[k] = static_cast<double>(in[k]);
    }
}

void ConvertInto(const nifti_image& nim, const char* src, uint64_t n, int type, char* dst) {
    const Scaling s = ScalingOf(nim);
    switch (nim.datatype) {
        case DT_INT8:
            return ConvertPlane<int8_t>(src, n, s, type, dst);
        case DT_UINT8:
            return ConvertPlane<uint8_t>(src, n, s, type, dst);
        case DT_INT16:
            return ConvertPlane<int16_t>(src, n, s, type, dst);
        case DT_UINT16:
            return ConvertPlane<uint16_t>(src, n, s, type, dst);
        case DT_INT32:
            return ConvertPlane<int32_t>(src, n, s, type, dst);
        case DT_UINT32:
            return ConvertPlane<uint32_t>(src, n, s, type, dst);
        case DT_INT64:
            return ConvertPlane<int64_t>(src, n, s, type, dst);
        case DT_UINT64:
            return ConvertPlane<uint64_t>(src, n, s, type, dst);
        case DT_FLOAT32:
            return ConvertPlane<float>(src, n, s, type, dst);
        case DT_FLOAT64:
            return ConvertPlane<double>(src, n, s, type, dst);
        case DT_FLOAT128:
            return ConvertPlane<long double>(src, n, s, type, dst);
        case DT_COMPLEX64:
            return ConvertComplexPlane<float>(src, n, s, type, dst);
        case DT_COMPLEX128:
            return ConvertComplexPlane<double>(src, n, s, type, dst);
        case DT_COMPLEX256:
            return ConvertComplexPlane<long double>(src, n, s, type, dst);
        default:
            Raise("invalid data type");
    }
}

// Reads `bytes` at the image offset into `buffer` and puts them in native byte order.
bool ReadSamples(const nifti_image& nim, char* buffer, uint64_t bytes) {
    std::unique_ptr<znzptr, ZnzClose> file(znzopen(nim.iname, "rb", nifti_is_gzfile(nim.iname)));
    if (!file || znzseek(file.get(), nim.iname_offset, SEEK_SET) < 0) return false;
    for (uint64_t done = 0; done < bytes;) {
        const size_t chunk = static_cast<size_t>(std::min<uint64_t>(bytes - done, 1 << 30));
        if (znzread(buffer + done, 1, chunk, file.get()) != chunk) return false;
        done += chunk;
    }
    int nbyper = 0, swapsize = 0;
    nifti_datatype_sizes(nim.datatype, &nbyper, &swapsize);
    if (nim.byteorder != nifti_short_order() && swapsize > 1)
        nifti_swap_Nbytes(static_cast<int64_t>(bytes / swapsize), swapsize, buffer);
    return true;
}

}  // namespace

int NiftiHeader(const COpenOptions& options, FileEntry& entry) {
    (void)options;
    entry.failed = 0;
    uint64_t bytes = 0;
    int version = 0;
    std::string error;
    NiftiPtr nim;
    try {
        nim = OpenChecked(entry.path, bytes, version, error);
    } catch (...) {
        return Failed(entry, "unknown error");
    }
    if (!nim) return Failed(entry, error);
    res_t n[6];
    Sizes(*nim, n);
    float step[6];
    for (int k = 0; k < 6; ++k) step[k] = Step(nim->pixdim[k + 1]);
    entry.header.SetHeader(ArrayType(*nim), n[0], n[1], n[2], n[3], n[4], n[5]);
    entry.header.SetMm(step[0], step[1], step[2], step[3], step[4], step[5]);
    entry.isRgb = IsRgb(nim->datatype);
    const Scaling s = ScalingOf(*nim);
    entry.rescaleSlope = static_cast<float>(s.slope);
    entry.rescaleIntercept = static_cast<float>(s.inter);
    entry.exam = entry.series = entry.image = 0;
    entry.baselines = -1;
    entry.byteSwap = nim->byteorder != nifti_short_order();
    entry.dataOffset = static_cast<int32_t>(std::min<int64_t>(nim->iname_offset, INT32_MAX));
    for (uint64_t& k : entry.skip) k = 0;
    entry.status = "header success";
    return 1;
}

int NiftiLoad(const COpenOptions& options, FileEntry& entry, CZrkData* const targets[3]) {
    (void)options;
    try {
        uint64_t bytes = 0;
        int version = 0;
        std::string error;
        NiftiPtr nim = OpenChecked(entry.path, bytes, version, error);
        if (!nim) return Failed(entry, error);
        const int type = ArrayType(*nim);
        const int channels = IsRgb(nim->datatype) ? 3 : 1;
        if (type != entry.header.type || (channels == 3) != (entry.isRgb != 0))
            return Failed(entry, "file changed since its header was read");
        for (int c = 0; c < channels; ++c)
            if (!targets[c]) Raise("target does not fit the file");
        res_t n[6];
        Sizes(*nim, n);
        for (int k = 0; k < 6; ++k)
            if (n[k] != entry.header.Res(k))
                return Failed(entry, "file changed since its header was read");
        const CEntryBlock first(entry, *targets[0]);
        const bool direct = channels == 1 && first.Contiguous() &&
                            type == StoredType(nim->datatype) && nim->datatype != DT_FLOAT128 &&
                            nim->datatype != DT_COMPLEX256;
        if (direct) {
            // The common case: the samples go straight into the array.
            if (!ReadSamples(*nim, first.Plane(0), bytes)) return Failed(entry, "read error");
        } else {
            std::unique_ptr<char[]> buffer(new (std::nothrow) char[bytes]);
            if (!buffer) return Failed(entry, "alloc failed");
            if (!ReadSamples(*nim, buffer.get(), bytes)) return Failed(entry, "read error");
            const uint64_t plane = n[0] * n[1];
            const uint64_t stored_plane = plane * nim->nbyper;
            if (channels == 3) {
                const int width = nim->datatype == DT_RGBA32 ? 4 : 3;
                for (int c = 0; c < 3; ++c) {
                    const CEntryBlock block(entry, *targets[c]);
                    for (uint64_t p = 0; p < block.Planes(); ++p) {
                        const uint8_t* in =
                            reinterpret_cast<const uint8_t*>(buffer.get()) + p * stored_plane;
                        uint8_t* out = reinterpret_cast<uint8_t*>(block.Plane(p));
                        for (uint64_t k = 0; k < plane; ++k) out[k] = in[k * width + c];
                    }
                }
            } else {
                for (uint64_t p = 0; p < first.Planes(); ++p)
                    ConvertInto(*nim, buffer.get() + p * stored_plane, plane, type, first.Plane(p));
            }
        }
        for (int c = 0; c < channels; ++c) {
            targets[c]->changed = 1;
            // The first file of a stack gives the whole array its steps and place.
            if (first.AtOrigin()) {
                targets[c]->CopyMm(entry.header);
                KeepNiftiOrientation(targets[c]->name, OrientationOf(*nim));
            }
        }
        entry.status = "read complete";
        return 1;
    } catch (const ZrkError& e) {
        return Failed(entry, e.what());
    } catch (...) {
        return Failed(entry, "unknown error");
    }
}
