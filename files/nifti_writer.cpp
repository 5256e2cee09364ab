#include "files/nifti_writer.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include <nifti2_io.h>

#include "core/block_io.h"
#include "core/element_type.h"
#include "core/zrk_data.h"
#include "files/atomic_file.h"
#include "files/nifti_orientation.h"

namespace {

struct NiftiFree {
    void operator()(nifti_image* nim) const { nifti_image_free(nim); }
};

int DataType(int type) {
    switch (type) {
        case TYPE_I1:
            return DT_INT8;
        case TYPE_I2:
            return DT_INT16;
        case TYPE_I4:
            return DT_INT32;
        case TYPE_I8:
            return DT_INT64;
        case TYPE_N1:
            return DT_UINT8;
        case TYPE_N2:
            return DT_UINT16;
        case TYPE_N4:
            return DT_UINT32;
        case TYPE_N8:
            return DT_UINT64;
        case TYPE_R4:
            return DT_FLOAT32;
        case TYPE_R8:
            return DT_FLOAT64;
        case TYPE_CR8:
            return DT_COMPLEX128;
        default:
            return DT_COMPLEX64;  // complex r4 and the complex integers
    }
}

bool WriteAll(znzFile file, const void* data, uint64_t bytes) {
    const char* p = static_cast<const char*>(data);
    for (uint64_t done = 0; done < bytes;) {
        const size_t chunk = static_cast<size_t>(std::min<uint64_t>(bytes - done, 1 << 30));
        if (znzwrite(p + done, 1, chunk, file) != chunk) return false;
        done += chunk;
    }
    return true;
}

// The samples, as stored or, for complex integers, as complex r4 block by block.
bool WriteSamples(znzFile file, const CZrkData& a) {
    if (!IsComplexType(a.type) || a.type == TYPE_CR4 || a.type == TYPE_CR8)
        return WriteAll(file, a.Data(), a.Bytes());
    CBlockReader<float> in(&a, 2);
    std::vector<float> buf(2 * kBlockElements);
    const uint64_t count = a.Count();
    for (uint64_t k = 0; k < count; k += kBlockElements) {
        const size_t n = static_cast<size_t>(std::min<uint64_t>(kBlockElements, count - k));
        if (!WriteAll(file, in.Read(k, n, buf.data()), n * 2 * sizeof(float))) return false;
    }
    return true;
}

}  // namespace

int WriteNifti(const CZrkData& a, const std::string& path, std::string& status) {
    if (!a.Data() || !IsValidType(a.type)) {
        status = "can not find data";
        return 0;
    }
    res_t n[6];
    a.GetRes(n);
    int64_t dims[8] = {1, 1, 1, 1, 1, 1, 1, 1};
    for (int k = 0; k < 6; ++k) {
        // The header keeps sizes in 16 bits.
        if (n[k] > 32767) {
            status = "array too large for nifti-1";
            return 0;
        }
        dims[k + 1] = static_cast<int64_t>(n[k]);
        if (n[k] > 1) dims[0] = k + 1;
    }
    std::unique_ptr<nifti_image, NiftiFree> nim(nifti_make_new_nim(dims, DataType(a.type), 0));
    if (!nim) {
        status = "file create failed";
        return 0;
    }
    nim->nifti_type = NIFTI_FTYPE_NIFTI1_1;
    nim->xyz_units = NIFTI_UNITS_MM;
    for (int k = 0; k < 6; ++k) nim->pixdim[k + 1] = a.mm[k];
    nim->dx = a.mm[0], nim->dy = a.mm[1], nim->dz = a.mm[2];
    nim->dt = a.mm[3], nim->du = a.mm[4], nim->dv = a.mm[5];
    nim->scl_slope = 1.0;
    nim->scl_inter = 0.0;
    nim->qform_code = nim->sform_code = 0;
    nim->qfac = 1.0;
    CNiftiOrientation o;
    if (FindNiftiOrientation(a.name, o)) {
        nim->qform_code = o.qform_code;
        nim->sform_code = o.sform_code;
        nim->quatern_b = o.quatern[0];
        nim->quatern_c = o.quatern[1];
        nim->quatern_d = o.quatern[2];
        nim->qoffset_x = o.qoffset[0];
        nim->qoffset_y = o.qoffset[1];
        nim->qoffset_z = o.qoffset[2];
        nim->qfac = o.qfac;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 4; ++j) nim->sto_xyz.m[i][j] = o.srow[i][j];
    }
    nifti_1_header hdr;
    if (nifti_convert_nim2n1hdr(nim.get(), &hdr) != 0) {
        status = "file create failed";
        return 0;
    }
    hdr.pixdim[0] = static_cast<float>(nim->qfac);
    hdr.vox_offset = 352.0f;
    std::memcpy(hdr.magic, "n+1\0", 4);

    const bool gz = path.size() > 3 && path.compare(path.size() - 3, 3, ".gz") == 0;
    CAtomicFile out(path);
    if (!out.Create()) {
        status = "file create failed";
        return 0;
    }
    znzFile file = znzopen(out.TempPath().c_str(), "wb", gz);
    if (znz_isnull(file)) {
        status = "file create failed";
        return 0;
    }
    const char extender[4] = {0, 0, 0, 0};
    bool ok = znzwrite(&hdr, 1, sizeof hdr, file) == sizeof hdr &&
              znzwrite(extender, 1, 4, file) == 4 && WriteSamples(file, a);
    ok = znzclose(file) == 0 && ok;
    if (!ok || !out.Commit()) {
        status = "write failed";
        return 0;
    }
    return 1;
}

int SaveNifti(const CSaveRequest& request) {
    std::string local;
    std::string& status = request.status ? *request.status : local;
    if (request.arrays.size() != 1 || !request.arrays[0]) {
        status = "can not find data";
        return 0;
    }
    return WriteNifti(*request.arrays[0], request.path, status);
}
