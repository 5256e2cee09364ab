#include "app/mu_files.h"

#include <nifti2_io.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/window_space.h"
#include "core/zrk_data.h"
#include "files/file_kinds.h"
#include "files/guess_code.h"
#include "files/load_model.h"
#include "files/open_model.h"
#include "files/zrk_file.h"

namespace {

struct NiftiFree {
    void operator()(nifti_image* n) const { nifti_image_free(n); }
};
using NiftiPtr = std::unique_ptr<nifti_image, NiftiFree>;

bool EndsWith(const std::string& s, const char* tail) {
    size_t n = std::strlen(tail);
    return s.size() >= n && s.compare(s.size() - n, n, tail) == 0;
}

template <class T>
void Convert(const void* in, float* out, size_t n, double slope, double inter) {
    const T* v = static_cast<const T*>(in);
    for (size_t i = 0; i < n; ++i) out[i] = float(double(v[i]) * slope + inter);
}

CZrkData* ReadNifti(CDataSpace& space, const std::string& path, const char* name, MuGeometry* g,
                    std::string* error) {
    nifti_set_debug_level(0);
    NiftiPtr n(nifti_image_read(path.c_str(), 1));
    if (!n || !n->data) {
        *error = "cannot read NIfTI file: " + path;
        return nullptr;
    }
    res_t dims[6] = {1, 1, 1, 1, 1, 1};
    for (int d = 0; d < 6 && d < n->ndim; ++d) dims[d] = res_t(std::max<int64_t>(n->dim[d + 1], 1));
    if (n->ndim > 6 && n->nw > 1) {
        *error = "more than six dimensions: " + path;
        return nullptr;
    }
    bool complex = n->datatype == NIFTI_TYPE_COMPLEX64 || n->datatype == NIFTI_TYPE_COMPLEX128;
    space.DelData(name);
    CZrkData* a = space.NewData(complex ? TYPE_CR4 : TYPE_R4, dims[0], dims[1], dims[2], dims[3],
                                dims[4], dims[5], name);
    if (!a || !a->data) {
        *error = "out of memory";
        return nullptr;
    }
    size_t count = size_t(n->nvox);
    double slope = n->scl_slope != 0.0 && std::isfinite(n->scl_slope) ? n->scl_slope : 1.0;
    double inter = std::isfinite(n->scl_inter) ? n->scl_inter : 0.0;
    if (slope == 1.0 && n->scl_slope == 0.0) inter = 0.0;
    auto* out = static_cast<float*>(a->data);
    switch (n->datatype) {
        case NIFTI_TYPE_UINT8:
            Convert<uint8_t>(n->data, out, count, slope, inter);
            break;
        case NIFTI_TYPE_INT8:
            Convert<int8_t>(n->data, out, count, slope, inter);
            break;
        case NIFTI_TYPE_INT16:
            Convert<int16_t>(n->data, out, count, slope, inter);
            break;
        case NIFTI_TYPE_UINT16:
            Convert<uint16_t>(n->data, out, count, slope, inter);
            break;
        case NIFTI_TYPE_INT32:
            Convert<int32_t>(n->data, out, count, slope, inter);
            break;
        case NIFTI_TYPE_UINT32:
            Convert<uint32_t>(n->data, out, count, slope, inter);
            break;
        case NIFTI_TYPE_FLOAT32:
            Convert<float>(n->data, out, count, slope, inter);
            break;
        case NIFTI_TYPE_FLOAT64:
            Convert<double>(n->data, out, count, slope, inter);
            break;
        case NIFTI_TYPE_COMPLEX64:
            Convert<float>(n->data, out, 2 * count, 1.0, 0.0);
            break;
        case NIFTI_TYPE_COMPLEX128:
            Convert<double>(n->data, out, 2 * count, 1.0, 0.0);
            break;
        default:
            space.DelData(name);
            *error = "unsupported NIfTI data type: " + path;
            return nullptr;
    }
    a->SetMm(float(n->dx), float(n->dy), float(n->dz), 1, 1, 1);
    // NIfTI keeps millimetres unless told otherwise.
    double unit = n->xyz_units == NIFTI_UNITS_METER    ? 1000.0
                  : n->xyz_units == NIFTI_UNITS_MICRON ? 1e-3
                                                       : 1.0;
    for (int d = 0; d < 3; ++d) a->mm[d] = float(n->pixdim[d + 1] * unit);
    if (g) {
        *g = MuGeometry();
        g->oriented = n->qform_code > 0 || n->sform_code > 0;
        g->qform_code = n->qform_code, g->sform_code = n->sform_code;
        g->quatern[0] = n->quatern_b, g->quatern[1] = n->quatern_c, g->quatern[2] = n->quatern_d;
        g->qoffset[0] = n->qoffset_x, g->qoffset[1] = n->qoffset_y, g->qoffset[2] = n->qoffset_z;
        g->qfac = n->qfac < 0 ? -1.0 : 1.0;
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 4; ++c) g->srow[r][c] = n->sto_xyz.m[r][c];
        for (int d = 0; d < 3; ++d) g->spacing[d] = a->mm[d];
    }
    return a;
}

// `from` copied into `space` under `name` as floats (complex stays complex), with its steps.
CZrkData* TakeAsFloat(CDataSpace& space, const CZrkData* from, const char* name, MuGeometry* g,
                      std::string* error) {
    space.DelData(name);
    CZrkData* a = space.NewData(from->IsComplex() ? TYPE_CR4 : TYPE_R4, from->nx, from->ny,
                                from->nz, from->nt, from->nu, from->nv, name);
    if (!a || !a->data) {
        *error = "out of memory";
        return nullptr;
    }
    CDataCursor<float> in(from);
    if (from->IsComplex())
        in.GetIQBlock(static_cast<float*>(a->data), 0, from->Count());
    else
        in.GetIBlock(static_cast<float*>(a->data), 0, from->Count());
    a->CopyMm(*from);
    if (g) {
        *g = MuGeometry();
        for (int d = 0; d < 3; ++d) g->spacing[d] = from->mm[d];
    }
    return a;
}

CZrkData* ReadWorkspace(CDataSpace& space, const std::string& path, const char* name, MuGeometry* g,
                        std::string* error) {
    std::string file = path, wanted;
    size_t colon = path.rfind(".zrk:");
    if (colon != std::string::npos)
        file = path.substr(0, colon + 4), wanted = path.substr(colon + 5);
    CDataSpace read;
    CWindowSpace windows;
    CZrkFile z(file);
    z.space = &read;
    z.windows = &windows;
    if (z.Read()) {
        *error = z.status.empty() ? "cannot read workspace: " + file : z.status;
        return nullptr;
    }
    CZrkData* from =
        wanted.empty() ? (read.Count() ? read.GetData(0) : nullptr) : read.FindData(wanted.c_str());
    if (!from || !from->data) {
        *error = "no such array in " + file + (wanted.empty() ? "" : ": " + wanted);
        return nullptr;
    }
    return TakeAsFloat(space, from, name, g, error);
}

// Any other kind the open dialog reads (DICOM, MAT, scanner files...): its first array, with
// its steps as the spacing and no orientation.
CZrkData* ReadOtherFile(CDataSpace& space, const std::string& path, const char* name, MuGeometry* g,
                        std::string* error) {
    InstallFileKinds();
    COpenOptions options;
    options.filetype = GuessOpenCode(path);
    CDataSpace read;
    std::string folder;
    COpenModel open(options, read, folder);
    open.run_load = [](CLoadModel& load) { load.LoadAllIndividually(); };
    open.Ok({path});
    if (open.status != "read success" || read.Count() == 0) {
        *error = path + ": " + open.status;
        return nullptr;
    }
    return TakeAsFloat(space, read.GetData(0), name, g, error);
}

}  // namespace

CZrkData* ReadInputArray(CDataSpace& space, const std::string& path, const char* name,
                         MuGeometry* geometry, std::string* error) {
    if (EndsWith(path, ".nii") || EndsWith(path, ".nii.gz") || EndsWith(path, ".hdr"))
        return ReadNifti(space, path, name, geometry, error);
    if (EndsWith(path, ".zrk") || path.find(".zrk:") != std::string::npos)
        return ReadWorkspace(space, path, name, geometry, error);
    return ReadOtherFile(space, path, name, geometry, error);
}

int WriteNifti(const CZrkData* a, const MuGeometry& g, const std::string& path,
               std::string* error) {
    int64_t dims[8] = {0,
                       int64_t(a->nx),
                       int64_t(a->ny),
                       int64_t(a->nz),
                       int64_t(a->nt),
                       int64_t(a->nu),
                       int64_t(a->nv),
                       1};
    dims[0] = 6;
    while (dims[0] > 3 && dims[dims[0]] == 1) --dims[0];
    bool complex = a->IsComplex();
    NiftiPtr n(nifti_make_new_nim(dims, complex ? NIFTI_TYPE_COMPLEX64 : NIFTI_TYPE_FLOAT32, 0));
    if (!n) {
        *error = "out of memory";
        return 1;
    }
    CDataCursor<float> in(a);
    n->data = std::calloc(size_t(n->nvox), size_t(n->nbyper));
    if (!n->data) {
        *error = "out of memory";
        return 1;
    }
    if (complex)
        in.GetIQBlock(static_cast<float*>(n->data), 0, a->Count());
    else
        in.GetIBlock(static_cast<float*>(n->data), 0, a->Count());
    n->nifti_type = NIFTI_FTYPE_NIFTI1_1;
    n->xyz_units = NIFTI_UNITS_MM;
    n->time_units = NIFTI_UNITS_SEC;
    for (int d = 0; d < 3; ++d) n->pixdim[d + 1] = g.spacing[d];
    n->dx = g.spacing[0], n->dy = g.spacing[1], n->dz = g.spacing[2];
    if (g.oriented) {
        n->qform_code = g.qform_code, n->sform_code = g.sform_code;
        n->quatern_b = g.quatern[0], n->quatern_c = g.quatern[1], n->quatern_d = g.quatern[2];
        n->qoffset_x = g.qoffset[0], n->qoffset_y = g.qoffset[1], n->qoffset_z = g.qoffset[2];
        n->qfac = g.qfac;
        n->pixdim[0] = g.qfac;
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 4; ++c) n->sto_xyz.m[r][c] = g.srow[r][c];
        n->sto_xyz.m[3][0] = n->sto_xyz.m[3][1] = n->sto_xyz.m[3][2] = 0.0;
        n->sto_xyz.m[3][3] = 1.0;
    }
    std::string dir = std::filesystem::path(path).parent_path().string();
    std::string leaf = std::filesystem::path(path).filename().string();
    std::string temp = (dir.empty() ? "" : dir + "/") + ".writing-" + leaf;
    if (nifti_set_filenames(n.get(), temp.c_str(), 0, 1)) {
        *error = "cannot name output: " + path;
        return 1;
    }
    std::remove(temp.c_str());
    // Deflate by runs only: float maps hardly compress, and the default level took a seventh
    // of a whole run; runs and Huffman codes alone take a quarter of that time for files no
    // larger (the zeros outside the mask are runs). The opened stream is closed here.
    if (znzFile f = nifti_image_write_hdr_img(n.get(), 1, "wb1R")) znzclose(f);
    std::error_code ec;
    if (!std::filesystem::exists(temp, ec) || std::filesystem::file_size(temp, ec) == 0) {
        std::remove(temp.c_str());
        *error = "cannot write: " + path;
        return 1;
    }
    std::filesystem::rename(temp, path, ec);
    if (ec) {
        std::remove(temp.c_str());
        *error = "cannot write: " + path;
        return 1;
    }
    return 0;
}
