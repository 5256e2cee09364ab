#include "mu/mu_pages.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/host.h"
#include "core/zrk_data.h"
#include "files/file_entry.h"
#include "files/scanner/image_file.h"
#include "files/scanner/raw_header.h"
#include "files/scanner/scanner_io.h"
#include "mu/mu_form.h"
#include "mu/name_format.h"
#include "ops/unwrap/unwrap.h"
#include "wave/chain.h"
#include "wave/mask.h"
#include "wave/stages.h"

namespace {

std::string Printf(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Printf(const char* format, ...) {
    char line[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(line, sizeof line, format, args);
    va_end(args);
    return line;
}

void SetName(char (&out)[128], const std::string& name) {
    std::snprintf(out, sizeof out, "%s", name.c_str());
}

const CZrkData* Usable(CDataSpace& space, const std::string& name) {
    CZrkData* a = name.empty() ? nullptr : space.FindData(name.c_str());
    return a && a->data ? a : nullptr;
}

// The array of that name in the form's space, made there when missing (FindOrNew would make
// it in the global space, which a form over another space never reads).
CZrkData* FindOrMake(CDataSpace& space, const std::string& name) {
    CZrkData* a = space.FindData(name.c_str());
    return a ? a : space.NewData(name.c_str());
}

// The channel letter of an iqmp number.
char Channel(int iqmp) { return "iqmp"[std::clamp(iqmp, 0, 3)]; }

// The name of an output: its format when kept, else the fixed name.
std::string OutputName(CMuForm& form, bool keep, const std::string& format, const char* fixed,
                       std::string* error) {
    if (!keep) return fixed;
    return FormatOutputName(format, form.base_name, form.count, error);
}

}  // namespace

int CPageMu::Target(MuOutputTarget* t, bool on, const std::string& format, const char* palette,
                    int apply_mask, const char* missing) {
    *t = MuOutputTarget();
    if (!on) return 0;
    std::string error;
    if (MakeTarget(t, form_.space, format, form_.base_name, form_.count, form_.append_data != 0,
                   palette, apply_mask, &error)) {
        status_ = error.empty() ? missing : error;
        *t = MuOutputTarget();
        return 1;
    }
    return 0;
}

// ---------------------------------------------------------------------------- data

void CPageMuData::Bind() {
    const MuOptionBlock& b = form_.block;
    c.magnitude = b.mag_name;
    c.mag_iqmp = b.mag_iqmp;
    c.harmin = b.harmin;
    c.xyz = b.xyz;
    for (int a = 0; a < 3; ++a) c.phase[a] = b.phase_name[a], c.pdif_iqmp[a] = b.pdif_iqmp[a];
}

void CPageMuData::Update() {
    MuOptionBlock& b = form_.block;
    wave_params& r = form_.record;
    b.mag_name = c.magnitude;
    b.mag_iqmp = c.mag_iqmp;
    b.harmin = c.harmin;
    b.xyz = c.xyz;
    b.mag_data = form_.space.FindData(c.magnitude.c_str());
    for (int a = 0; a < 3; ++a) {
        b.phase_name[a] = c.phase[a];
        b.pdif_iqmp[a] = c.pdif_iqmp[a];
        b.phase_data[a] = form_.space.FindData(c.phase[a].c_str());
    }
    b.mag_nx = b.mag_data ? int(b.mag_data->nx) : 0;
    b.mag_ny = b.mag_data ? int(b.mag_data->ny) : 0;
    r.xyz = b.xyz;
    r.complex_in = b.harmin;
    // Harmonic data in a real array holds the real and imaginary parts one after the other.
    r.complex_split = b.harmin && b.phase_data[0] && !b.phase_data[0]->IsComplex();
    r.nx = b.mag_nx;
    r.ny = b.mag_ny;
    SetName(r.mag_name, b.mag_name);
    r.mag_index = b.mag_iqmp;
    for (int a = 0; a < 3; ++a) {
        r.data_index[a] = b.pdif_iqmp[a];
        SetName(r.data_name[a], b.phase_name[a]);
    }
}

int CPageMuData::Check() {
    CDataSpace& s = form_.space;
    const CZrkData* mag = Usable(s, c.magnitude);
    if (!mag) return Fail(1, "invalid magnitude data");
    const CZrkData* ph[3] = {Usable(s, c.phase[0]), nullptr, nullptr};
    if (!ph[0]) return Fail(2, "invalid x phase data");
    int axes = c.xyz ? 3 : 1;
    for (int a = 1; a < axes; ++a)
        if (!(ph[a] = Usable(s, c.phase[a]))) return Fail(3, "invalid y phase data");
    for (int a = 0; a < axes; ++a)
        if (ph[a]->nx != mag->nx || ph[a]->ny != mag->ny)
            return Fail(4, "magnitude and phase have incompatible resolutions");
    if (!c.harmin && ph[0]->IsComplex())
        return Fail(5, "for complex r1 i1 data, phase must be complex");
    if (mag->nx > 0x10000 || mag->ny > 0x10000) return Fail(6, "image dimensions too large");
    if (mag->nx == 0 || mag->ny == 0) return Fail(7, "image dimensions too small");
    return Pass("data page valid");
}

void CPageMuData::Report(std::string* out) {
    std::string r = "\r\nQuelmor beta release\r\n";
    r += Printf("magnitude:\"%s\", '%c'\r\n", c.magnitude.c_str(), Channel(c.mag_iqmp));
    static const char* kAxes[] = {"x phase", "y phase", "z phase"};
    r += c.harmin ? "phase complex harmonic\r\n" : "phase time series\r\n";
    for (int a = 0; a < (c.xyz ? 3 : 1); ++a) {
        const char* label = c.xyz ? kAxes[a] : "phase";
        r += c.harmin ? Printf("%s:\"%s\"\r\n", label, c.phase[a].c_str())
                      : Printf("%s:\"%s\", '%c'\r\n", label, c.phase[a].c_str(),
                               Channel(c.pdif_iqmp[a]));
    }
    if (r == reported_) return;
    reported_ = r;
    *out += r;
}

// ---------------------------------------------------------------------------- params

void CPageMuParams::Bind() {
    const MuOptionBlock& b = form_.block;
    c.param_default = b.param_default;
    c.mech_freq = b.mech_freq;
    std::copy(b.fov, b.fov + 3, c.fov);
    c.harmonic_number = b.harmonic_number;
    c.phase_range[0] = b.phase_range[0];
    c.phase_range[1] = b.phase_range[1];
    c.phase_preset = kPresetOther;
    for (int i = 0; i < kPresetOther; ++i) {
        float keep[2] = {c.phase_range[0], c.phase_range[1]};
        SetPhasePreset(i);
        bool same = keep[0] == c.phase_range[0] && keep[1] == c.phase_range[1];
        c.phase_range[0] = keep[0], c.phase_range[1] = keep[1];
        if (same) {
            c.phase_preset = i;
            break;
        }
        c.phase_preset = kPresetOther;
    }
    c.noff = b.noff;
    c.menc = b.menc;
    c.wsum = b.wsum;
    c.ampweight[0] = b.ampweight[0];
    c.ampweight[1] = b.ampweight[1];
}

void CPageMuParams::SetPhasePreset(int preset) {
    static const float kRanges[][2] = {{0.0f, 255.0f},
                                       {0.0f, 4095.0f},
                                       {-1.5707964f, 1.5707964f},
                                       {-3.1415927f, 3.1415927f},
                                       {-3141.0f, 3141.0f},
                                       {-31415.0f, 31415.0f}};
    c.phase_preset = std::clamp(preset, 0, int(kPresetOther));
    if (c.phase_preset == kPresetOther) return;
    c.phase_range[0] = kRanges[c.phase_preset][0];
    c.phase_range[1] = kRanges[c.phase_preset][1];
}

int CPageMuParams::LoadFromFile(const std::string& path) {
    FileEntry e;
    e.path = path;
    // A raw file is told by its first word; anything else is tried as an image file, whose
    // reader names what it does not recognise.
    uint8_t first[4] = {};
    bool raw = false;
    {
        CScannerFile file(path);
        raw = file.IsOpen() && file.Read(0, first, 4) && FindRawRevision(first);
    }
    const int read = raw ? ReadRawHeader(e, nullptr) : ReadImageHeader(e);
    form_.status = e.status;
    if (!read) return Fail(1, e.status);
    const CZrkData& h = e.header;
    const uint64_t size[3] = {h.nx, h.ny, h.nz};
    float fov[3];
    for (int a = 0; a < 3; ++a) fov[a] = float(double(size[a]) * double(h.mm[a]) / 1000.0);
    auto usable = [](float v) { return v > 0.0f && std::isfinite(v); };
    if (!usable(fov[0]) || !usable(fov[1])) {
        form_.status = "field of view must be above 0";
        return Fail(1, form_.status);
    }
    // A file without slices says nothing about z.
    std::copy(fov, fov + (usable(fov[2]) ? 3 : 2), c.fov);
    status_ = e.status;
    return 0;
}

int CPageMuParams::Shape(int* slices, int* ndim, int* ncopies) {
    const MuOptionBlock& b = form_.block;
    const CZrkData* mag = b.mag_data;
    const CZrkData* ph = b.phase_data[0];
    *slices = 0, *ndim = 2, *ncopies = 1;
    if (!mag || !ph) return 0;
    const uint64_t mag_zt = mag->nz * mag->nt, ph_zt = ph->nz * ph->nt;
    if (b.harmin) {
        if (ph->nz >= 2 && ph->nt >= 2) return Fail(1, "too many dimensions");
        *slices = int(std::min<uint64_t>(std::max(ph->nz, ph->nt), 0x7fffffff));
    } else {
        if (c.noff <= 0 || ph_zt < uint64_t(c.noff)) return 0;
        if (ph_zt % uint64_t(c.noff))
            return Fail(1, "phase images are not a multiple of the offsets");
        *slices = int(std::min<uint64_t>(ph_zt / uint64_t(c.noff), 0x7fffffff));
        if (*slices == 0) return 0;
        if (mag_zt % uint64_t(*slices))
            return Fail(1, "magnitude and phase have incompatible resolutions");
        uint64_t nvol = mag_zt / uint64_t(*slices);
        if (nvol < 1) return Fail(1, "magnitude has no time offsets");
        if (mag_zt / nvol != ph_zt / uint64_t(c.noff))
            return Fail(1, "magnitude and phase have incompatible resolutions");
        if (b.xyz)
            for (int a = 1; a < 3; ++a)
                if (b.phase_data[a] && b.phase_data[a]->nz != mag->nz)
                    return Fail(1, "magnitude and phase have incompatible resolutions");
        *ncopies = int(nvol);
    }
    if (*slices > 0 && mag_zt % uint64_t(*slices) == 0)
        *ncopies = int(std::max<uint64_t>(1, mag_zt / uint64_t(*slices)));
    *ndim = mag->ny == 1 ? 1 : *slices > 1 ? 3 : 2;
    return 0;
}

void CPageMuParams::Update() {
    MuOptionBlock& b = form_.block;
    wave_params& r = form_.record;
    b.param_default = c.param_default;
    b.mech_freq = c.mech_freq;
    std::copy(c.fov, c.fov + 3, b.fov);
    b.harmonic_number = c.harmonic_number;
    b.phase_range[0] = c.phase_range[0];
    b.phase_range[1] = c.phase_range[1];
    b.noff = b.harmin ? 3 : c.noff;
    b.menc = c.menc;
    b.wsum = c.wsum;
    b.ampweight[0] = c.ampweight[0];
    b.ampweight[1] = c.ampweight[1];
    int slices, ndim, ncopies;
    std::string keep = status_;
    Shape(&slices, &ndim, &ncopies);
    status_ = keep;
    b.nslices = slices;
    b.ndim = ndim;
    r.nz = std::max(slices, 1);
    r.nt = b.noff;
    r.ncopies = ncopies;
    std::copy(c.fov, c.fov + 3, r.fov);
    r.mech_freq = c.mech_freq;
    r.harmonic_number = c.harmonic_number;
    r.amp_divide = c.ampweight[0];
    r.amp_clip = c.ampweight[1];
    r.menc = c.menc;
    r.phase_min = c.phase_range[0];
    r.phase_max = c.phase_range[1];
}

int CPageMuParams::Check() {
    const MuOptionBlock& b = form_.block;
    int noff = b.harmin ? 3 : c.noff;
    if (noff >= 2 && !b.harmin && (c.harmonic_number < 0 || c.harmonic_number > noff / 2))
        return Fail(1, Printf("'harmonic number' must be between 1 and %d", noff / 2 - 1));
    int slices, ndim, ncopies;
    if (int bad = Shape(&slices, &ndim, &ncopies)) return bad;
    if (noff > 0 || b.harmin) {
        if (slices > 0x10000) return Fail(2, "too many slices");
        if (slices <= 0) return Fail(2, "too few slices");
    }
    if (noff > 0x10000) return Fail(3, "too many phases");
    if (noff <= 0) return Fail(3, "too few phases");
    if (!(c.mech_freq > 0.0f) || !std::isfinite(c.mech_freq))
        return Fail(4, "mechanical frequency must be above 0");
    for (int a = 0; a < (ndim == 3 ? 3 : 2); ++a)
        if (!(c.fov[a] > 0.0f) || !std::isfinite(c.fov[a]))
            return Fail(5, "field of view must be above 0");
    if (!(c.phase_range[0] < c.phase_range[1]))
        return Fail(6, "phase range minimum must be below maximum");
    return Pass("param page valid");
}

void CPageMuParams::Report(std::string* out) {
    *out += Printf("mechanical frequency: %f\r\n", c.mech_freq);
    *out += form_.block.ndim == 3 ? Printf("FOV: %f, %f, %f\r\n", c.fov[0], c.fov[1], c.fov[2])
                                  : Printf("FOV: %f, %f\r\n", c.fov[0], c.fov[1]);
    *out += Printf("harmonic %d was processed\r\n", c.harmonic_number);
    *out += Printf("phase range: [%.2f ... %.2f]\r\n", c.phase_range[0], c.phase_range[1]);
    *out += Printf("phase offsets: %d\r\n", form_.block.noff);
    *out += Printf("menc: %f\r\n", c.menc);
}

// ---------------------------------------------------------------------------- mask

void CPageMuMask::Bind() {
    const MuOptionBlock& b = form_.block;
    c.mask_default = b.mask_default;
    c.background = b.background;
    c.use_mask = b.use_mask;
    c.smooth_mask = b.smooth_mask;
    c.mask_2d = b.mask_2d;
    c.mask_regions = b.mask_regions;
    c.mask_voids = b.mask_voids;
    c.mask_nregions = b.mask_nregions;
    c.mask_nvoids = b.mask_nvoids;
    c.mask_out = b.mask_out;
    c.mask = b.mask;
    c.amp_threshold = b.ampweight[2];
}

void CPageMuMask::Defaults() {
    c.background = 10;
    c.smooth_mask = 0;
    c.mask_2d = 0;
    c.mask_regions = c.mask_voids = 0;
    c.mask_nregions = 1;
    c.mask_nvoids = 0;
    c.amp_threshold = 0;
}

void CPageMuMask::Update() {
    MuOptionBlock& b = form_.block;
    wave_params& r = form_.record;
    b.mask_default = c.mask_default;
    b.background = c.background;
    b.use_mask = c.use_mask;
    b.smooth_mask = c.smooth_mask;
    b.mask_2d = c.mask_2d;
    b.mask_regions = c.mask_regions;
    b.mask_voids = c.mask_voids;
    b.mask_nregions = c.mask_nregions;
    b.mask_nvoids = c.mask_nvoids;
    b.mask_out = c.mask_out;
    b.mask = c.mask;
    b.ampweight[2] = c.amp_threshold;
    r.use_mask = c.use_mask;
    r.background = c.background;
    r.smooth_mask = c.smooth_mask;
    r.mask_nregions = c.mask_regions ? c.mask_nregions : 0;
    r.mask_nvoids = c.mask_voids ? c.mask_nvoids : -1;
    r.mask_2d = b.ndim == 3 ? c.mask_2d : 0;
    r.amp_threshold = float(c.amp_threshold);
}

int CPageMuMask::Check() {
    if (c.mask_out && form_.append_data) {
        std::string error;
        std::string name = FormatOutputName(c.mask, form_.base_name, form_.count, &error);
        if (name.empty()) return Fail(1, error);
        if (!form_.space.FindData(name.c_str())) return Fail(1, "append mask output not found");
    }
    if (form_.block.ndim == 1 && c.smooth_mask) return Fail(2, "can not 'smooth mask' on 1d data");
    if (form_.block.lfe_nd[0] == 1 && c.smooth_mask)
        return Fail(3, "can not 'smooth mask' and perform 1d LFE");
    return Pass("valid mask options");
}

void CPageMuMask::Report(std::string* out) {
    if (!c.use_mask) {
        *out += "no mask used\r\n";
        return;
    }
    if (c.smooth_mask) *out += "mask smoothing turn ON\r\n";
    if (form_.record.mask_2d) *out += "2d mask processing turn ON\r\n";
    *out += Printf("mask threshold: %d\r\n", c.background);
    if (!c.mask_default) *out += Printf("amplitude threshold: %d\r\n", c.amp_threshold);
    if (c.mask_regions) *out += Printf("regions limited to %d\r\n", c.mask_nregions);
    if (c.mask_voids) *out += Printf("voids limited to %d\r\n", c.mask_nvoids);
}

int CPageMuMask::Prepare() {
    wave_params& r = form_.record;
    MuOptionBlock& b = form_.block;
    if (Target(&form_.targets.mask, c.mask_out, c.mask, "grey", 0, "append mask output not found"))
        return 1;
    r.mask_out = form_.targets.mask.Handle();
    // The chain makes its own mask; the array is for the unwrap stage and the saved output.
    const MuOptionBlock& blk = form_.block;
    if (!c.mask_out && !(blk.uwmethod != 0 && blk.wrapage_mask && c.use_mask)) {
        preview.clear();
        return 0;
    }
    std::string error;
    std::string name = OutputName(form_, c.mask_out, c.mask, "quelmor.mask", &error);
    if (name.empty()) return Fail(1, error);
    const size_t plane = size_t(r.nx) * size_t(r.ny), n = plane * size_t(r.nz);
    std::vector<float> mag(n);
    std::vector<uint8_t> bytes(n, 1);
    if (c.use_mask) {
        if (form_.Driver().read_max_magnitude(&r, mag.data()))
            return Fail(1, "invalid magnitude data");
        mask_from_magnitude(mag.data(), bytes.data(), r.nx, r.ny, r.nz, float(r.background),
                            r.smooth_mask);
        if (r.mask_nregions > 0 || r.mask_nvoids >= 0)
            mask_regions(bytes.data(), r.nx, r.ny, r.nz, r.mask_nregions, r.mask_nvoids, r.mask_2d);
    }
    CZrkData* a = FindOrMake(form_.space, name);
    if (!a) return Fail(1, "image alloc failed");
    a->FreeData();
    a->SetHeader(TYPE_N1, res_t(r.nx), res_t(r.ny), res_t(r.nz), 1, 1, 1);
    if (!a->Allocate()) return Fail(1, "image alloc failed");
    std::memcpy(a->data, bytes.data(), n);
    a->changed = 1;
    b.mask_name = name;
    preview.assign(bytes.begin() + ptrdiff_t(plane * size_t(r.nz / 2)),
                   bytes.begin() + ptrdiff_t(plane * size_t(r.nz / 2 + 1)));
    for (uint8_t& v : preview) v = uint8_t(~v);
    return 0;
}

// ---------------------------------------------------------------------------- unwrap

void CPageMuWrap::Bind() {
    const MuOptionBlock& b = form_.block;
    c.uwmethod = b.uwmethod;
    c.wrapage_mask = b.wrapage_mask;
    c.uwpx = b.uwpx, c.uwpy = b.uwpy, c.uwpz = b.uwpz;
}

void CPageMuWrap::Update() {
    MuOptionBlock& b = form_.block;
    b.uwmethod = c.uwmethod;
    b.wrapage_mask = c.wrapage_mask;
    b.uwpx = c.uwpx, b.uwpy = c.uwpy, b.uwpz = c.uwpz;
}

int CPageMuWrap::Check() {
    if (form_.block.harmin && c.uwmethod != 0)
        return Fail(1, "phase unwrap not implemented for temporal harmonic data");
    if (c.uwmethod < 0 || c.uwmethod > 3) return Fail(2, "invalid unwrap method");
    return Pass("valid unwrap options");
}

// The unwrap reports itself as it runs, before its progress; the run's report adds nothing.
void CPageMuWrap::Report(std::string*) {}

// One phase array, slice by slice: masked-out samples go in as the middle of the range and
// come out as 0, so the solver never sees their noise and the chain reads them as nothing.
int CPageMuWrap::UnwrapAxis(const CZrkData* in, int channel, const CZrkData* mask,
                            const std::string& name) {
    const MuOptionBlock& b = form_.block;
    const float low = b.phase_range[0], high = b.phase_range[1];
    const float middle = (low + high) * 0.5f;
    const size_t plane = size_t(in->nx) * size_t(in->ny);
    const size_t planes = plane ? size_t(in->Count() / plane) : 0;
    const size_t slices = mask ? size_t(mask->Count() / plane) : 0;
    if (mask && (mask->nx != in->nx || mask->ny != in->ny || slices == 0))
        return Fail(1, "magnitude and phase have incompatible resolutions");

    CZrkData result;
    result.SetHeader(TYPE_R4, in->nx, in->ny, in->nz, in->nt, in->nu, in->nv);
    result.CopyMm(*in);
    if (planes == 0 || !result.Allocate()) return Fail(1, "image alloc failed");
    auto* out = static_cast<float*>(result.data);
    CUnwrap u;
    u.unwrap_method = c.uwmethod - 1;
    u.low = low;
    u.high = high;
    u.thresh_check = mask != nullptr;
    u.unwrap_thresh = 1;
    CDataCursor<float> read(in, channel);
    std::vector<float> phase(plane), inside(mask ? plane : 0);
    for (size_t k = 0; k < planes; ++k) {
        Host().Status(Printf("\runwrap %zu out of %zu", k + 1, planes));
        read.GetBlock(phase.data(), k * plane, plane);
        if (mask) {
            // The phase stack runs slices fastest, then offsets: plane k is slice k % slices.
            const uint8_t* m = static_cast<const uint8_t*>(mask->data) + (k % slices) * plane;
            for (size_t i = 0; i < plane; ++i) {
                inside[i] = m[i] ? 1.0f : 0.0f;
                if (!m[i]) phase[i] = middle;
            }
        }
        float* o = out + k * plane;
        UnwrapPlanes(u, phase.data(), mask ? inside.data() : nullptr, nullptr, o, int64_t(in->nx),
                     int64_t(in->ny), 1, {});
        if (mask)
            for (size_t i = 0; i < plane; ++i)
                if (inside[i] == 0.0f) o[i] = 0.0f;
        if (Host().Interrupted()) {
            result.FreeData();
            return Fail(1, "user interupt");
        }
    }
    const bool made = form_.space.FindData(name.c_str()) == nullptr;
    CZrkData* target = FindOrMake(form_.space, name);
    if (!target) {
        result.FreeData();
        return Fail(1, "image alloc failed");
    }
    target->NewUndo("unwrap", &result);
    target->CopyMm(*in);
    if (made) form_.Driver().OpenDisplay2d(target, "awave");
    return 0;
}

int CPageMuWrap::Prepare() {
    if (c.uwmethod == 0) return 0;
    MuOptionBlock& b = form_.block;
    wave_params& r = form_.record;
    CDataSpace& s = form_.space;
    static const char* kFixed[] = {"quelmor.unwrap", "quelmor.yunwrap", "quelmor.zunwrap"};
    static const char* kMissing[] = {
        "x phase data not found:", "y phase data not found:", "z phase data not found:"};
    const std::string* formats[] = {&c.uwpx, &c.uwpy, &c.uwpz};
    int axes = b.xyz ? 3 : 1;
    std::string names[3];
    for (int a = 0; a < axes; ++a) {
        std::string error;
        names[a] = OutputName(form_, c.save, *formats[a], kFixed[a], &error);
        if (names[a].empty()) return Fail(1, error);
    }
    std::string from = std::to_string(c.uwmethod) + " " + std::to_string(c.wrapage_mask);
    for (int a = 0; a < axes; ++a) from += " " + b.phase_name[a] + ">" + names[a];
    bool missing = false;
    for (int a = 0; a < axes; ++a) missing |= !s.FindData(names[a].c_str());
    if (from != done_ || missing) {
        const CZrkData* mask = nullptr;
        if (b.use_mask && c.wrapage_mask) mask = s.FindData(b.mask_name.c_str());
        for (int a = 0; a < axes; ++a) {
            CZrkData* in = s.FindData(b.phase_name[a].c_str());
            if (!in || !in->data) return Fail(1, std::string(kMissing[a]) + b.phase_name[a]);
            Host().History(Printf("Unwrap %s to %s by %s:\r\n", b.phase_name[a].c_str(),
                                  names[a].c_str(), kMethods[c.uwmethod]));
            if (int bad = UnwrapAxis(in, b.pdif_iqmp[a], mask, names[a])) return bad;
        }
        done_ = from;
    }
    for (int a = 0; a < axes; ++a) {
        if (!s.FindData(names[a].c_str())) return Fail(1, std::string(kMissing[a]) + names[a]);
        b.phase_name[a] = names[a];
        b.pdif_iqmp[a] = 0;
        SetName(r.data_name[a], names[a]);
        r.data_index[a] = 0;
    }
    return 0;
}

// ---------------------------------------------------------------------------- filter

void CPageMuFilter::Bind() {
    const MuOptionBlock& b = form_.block;
    c.filter = 0;
    for (int i = 0; i < 7; ++i)
        if (b.prefilter && kTypes[i] == b.pre_record.filter_type) c.filter = i;
    std::copy(b.pre_record.filter_res, b.pre_record.filter_res + 3, c.filter_res);
    c.filter_cut[0] = b.pre_record.filter_cut[0];
    c.filter_cut[1] = b.pre_record.filter_cut[1];
    c.filter_order = b.pre_record.filter_order;
    c.pre_out = b.pre_out;
    c.pre_format = b.pre_format;
}

void CPageMuFilter::Update() {
    MuOptionBlock& b = form_.block;
    wave_params& r = form_.record;
    int choice = std::clamp(c.filter, 0, 6);
    b.prefilter = choice != 0;
    b.pre_record.filter_type = kTypes[choice];
    std::copy(c.filter_res, c.filter_res + 3, b.pre_record.filter_res);
    b.pre_record.filter_cut[0] = c.filter_cut[0];
    b.pre_record.filter_cut[1] = c.filter_cut[1];
    b.pre_record.filter_order = c.filter_order;
    b.pre_out = c.pre_out;
    b.pre_format = c.pre_format;
    r.pre_filter.type = kTypes[choice];
    std::copy(c.filter_res, c.filter_res + 3, r.pre_filter.res);
    r.pre_filter.cut[0] = c.filter_cut[0];
    r.pre_filter.cut[1] = c.filter_cut[1];
    r.pre_filter.order = c.filter_order;
}

int CPageMuFilter::Check() {
    if (form_.block.harmin && c.filter != 0)
        return Fail(1, "prefiltering is not compatible with R1I1 data");
    return Pass("valid filter options");
}

void CPageMuFilter::Report(std::string* out) { *out += lines_; }

int CPageMuFilter::Apply() {
    if (c.filter == 0) return Fail(1, "no filter selected");
    done_.clear();
    return Prepare();
}

int CPageMuFilter::Prepare() {
    lines_.clear();
    if (c.filter == 0) return 0;
    MuOptionBlock& b = form_.block;
    wave_params& r = form_.record;
    CDataSpace& s = form_.space;
    bool volume = r.nz > 1;
    static const char* kFixed[] = {"quelmor.pre", "quelmor.pre.y", "quelmor.pre.z"};
    const std::string formats[] = {c.pre_format, b.pre_y_format, b.pre_z_format};
    int axes = b.xyz ? 3 : 1;
    std::string names[3];
    for (int a = 0; a < axes; ++a) {
        std::string error;
        names[a] = OutputName(form_, c.pre_out, formats[a], kFixed[a], &error);
        if (names[a].empty()) return Fail(1, error);
    }
    std::string from = std::to_string(c.filter) +
                       Printf(" %d %d %d %g %g %d", c.filter_res[0], c.filter_res[1],
                              c.filter_res[2], c.filter_cut[0], c.filter_cut[1], c.filter_order);
    for (int a = 0; a < axes; ++a) from += " " + b.phase_name[a] + ">" + names[a];
    bool missing = false;
    for (int a = 0; a < axes; ++a) missing |= !s.FindData(names[a].c_str());
    static const char* kLines[] = {
        "",
        "Gaussian LP filter, passing frequencies below %.1f cycles/FOV(x)\r\n",
        "Gaussian BP filter, Passing frequencies between %.1f and %.1f cycles/FOV(x)\r\n",
        "Gaussian HP filter, Passing frequencies above %.1f cycles/FOV(x)\r\n",
        "Butterworth LP filter, passing frequencies below %.1f cycles/FOV(x)\r\n",
        "Butterworth BP filter, Passing frequencies between %.1f and %.1f cycles/FOV(x)\r\n",
        "Butterworth HP filter, Passing frequencies above %.1f cycles/FOV(x)\r\n"};
    bool band = c.filter == 2 || c.filter == 5;
    bool high = c.filter == 3 || c.filter == 6;
    float first = high ? c.filter_cut[0] : band ? c.filter_cut[0] : c.filter_cut[1];
    lines_ = band ? Printf(kLines[c.filter], c.filter_cut[0], c.filter_cut[1])
                  : Printf(kLines[c.filter], first);
    if (from != done_ || missing) {
        // The chain with only the pre-filter on, storing the filtered offsets.
        for (int a = 0; a < axes; ++a) {
            wave_params only = r;
            only.pre_on = 1;
            only.gdc_flag = only.ldc_flag = 0;
            only.ldc_out = only.ldcr_out = nullptr;
            only.lfe_on = only.pg_on = only.di_on = only.mf_on = only.snr_on = 0;
            only.mask_out = only.magmask_out = only.interp_out = only.r1i1_out = nullptr;
            only.amplitude_out = nullptr;
            only.component = a, only.ncomponents = axes;
            MuOutputTarget* t = &form_.targets.pre[a];
            *t = MuOutputTarget();
            t->name = names[a];
            t->look = c.pre_out ? kMuLookFlag : 0;
            std::snprintf(t->palette, sizeof t->palette, "%s", c.pre_out ? "awave" : "");
            t->passes = only.nt;
            only.meanx2_out = t->Handle();
            (volume ? wave_3d_1axis : wave_2d_1axis)(&only);
        }
        done_ = from;
    }
    for (int a = 0; a < axes; ++a) {
        if (!s.FindData(names[a].c_str()))
            return Fail(1, "pre-filter output not found: " + names[a]);
        b.phase_name[a] = names[a];
        b.pdif_iqmp[a] = 0;
        SetName(r.data_name[a], names[a]);
        r.data_index[a] = 0;
    }
    r.pre_on = 0;
    return 0;
}

// ---------------------------------------------------------------------------- output

void CPageMuOutput::Bind() {
    const MuOptionBlock& b = form_.block;
    c.magmask_out = b.magmask_out, c.magmask = b.magmask;
    c.interp_out = b.interp_out, c.ninterp = b.ninterp, c.interp_mask = b.interp_mask;
    c.interp = b.interp;
    c.r1i1_out = b.r1i1_out, c.r1i1 = b.r1i1;
    c.amplitude_out = b.amplitude_out, c.amplitude = b.amplitude;
    c.gradient_type = b.gradient_type, c.gradient_pairs = b.gradient_pairs;
    c.gradient_amp = b.gradient_amp;
}

void CPageMuOutput::Update() {
    MuOptionBlock& b = form_.block;
    wave_params& r = form_.record;
    b.magmask_out = c.magmask_out, b.magmask = c.magmask;
    b.interp_out = c.interp_out, b.ninterp = c.ninterp, b.interp_mask = c.interp_mask;
    b.interp = c.interp;
    b.r1i1_out = c.r1i1_out, b.r1i1 = c.r1i1;
    b.amplitude_out = c.amplitude_out, b.amplitude = c.amplitude;
    b.gradient_type = c.gradient_type, b.gradient_pairs = c.gradient_pairs;
    b.gradient_amp = c.gradient_amp;
    r.ninterp = c.interp_out ? c.ninterp : 0;
    r.interp_mask = c.interp_mask;
    r.amp_type = c.gradient_type;
    r.gradient_pairs = c.gradient_pairs;
    r.gradient_amp = c.gradient_amp;
}

int CPageMuOutput::Check() {
    CDataSpace& s = form_.space;
    auto absent = [&](bool on, const std::string& format) {
        if (!on || !form_.append_data) return false;
        std::string error;
        std::string name = FormatOutputName(format, form_.base_name, form_.count, &error);
        return name.empty() || !s.FindData(name.c_str());
    };
    if (absent(c.magmask_out, c.magmask)) return Fail(1, "append magnitude output not found");
    if (absent(c.interp_out, c.interp)) return Fail(2, "append interpolation output not found");
    if (absent(c.amplitude_out, c.amplitude))
        return Fail(3, "append displacement output not found");
    return Pass("valid output options");
}

void CPageMuOutput::Report(std::string* out) {
    const auto& t = form_.targets;
    if (t.magmask.Active()) *out += Printf("magnitude mask: %s\r\n", t.magmask.name.c_str());
    if (t.interp.Active())
        *out += Printf("phase interpolation: %s in %d steps\r\n", t.interp.name.c_str(), c.ninterp);
    if (t.r1i1.Active()) *out += Printf("r1i1: %s\r\n", t.r1i1.name.c_str());
    if (t.amplitude.Active())
        *out += Printf("displacement map in microns: %s\r\n", t.amplitude.name.c_str());
}

int CPageMuOutput::Prepare() {
    auto& t = form_.targets;
    wave_params& r = form_.record;
    if (Target(&t.magmask, c.magmask_out, c.magmask, "grey", 0,
               "append magnitude output not found") ||
        Target(&t.interp, c.interp_out, c.interp, "awave", c.interp_mask,
               "append interpolation output not found") ||
        Target(&t.r1i1, c.r1i1_out, c.r1i1, "awave", 0, "append displacement output not found") ||
        Target(&t.amplitude, c.amplitude_out, c.amplitude, "grey", 0,
               "append displacement output not found"))
        return 1;
    r.magmask_out = t.magmask.Handle();
    r.interp_out = t.interp.Handle();
    r.r1i1_out = t.r1i1.Handle();
    r.amplitude_out = t.amplitude.Handle();
    return 0;
}

// ---------------------------------------------------------------------------- lfe

void CPageMuLfe::Bind() {
    const MuOptionBlock& b = form_.block;
    c.lfe_default = b.lfe_default;
    c.dimension = b.lfe_nd[0] ? 0 : b.lfe_nd[1] ? 1 : 2;
    c.soft_1d = b.lfe_nd[0] == 2;
    c.lfe_complex = b.lfe_complex;
    c.octave = 1;
    for (int i = 0; i < 3; ++i)
        if (std::fabs(kOctaves[i] - b.lfe_octave) < 1e-3f) c.octave = i;
    c.lfe_nbands = b.lfe_nbands;
    c.lfe_base_freq = b.lfe_base_freq;
    c.lfe_noft = b.lfe_noft;
    c.lfe_est_out = b.lfe_est_out, c.lfe_stiff_out = b.lfe_stiff_out;
    c.lfe_cert_out = b.lfe_cert_out, c.lfe_imu_out = b.lfe_imu_out;
    c.lfe_icert_out = b.lfe_icert_out;
    c.lfe_est = b.lfe_est, c.lfe_stiff = b.lfe_stiff, c.lfe_cert = b.lfe_cert;
    c.lfe_imu = b.lfe_imu, c.lfe_icert = b.lfe_icert;
    if (c.lfe_default) Defaults();
}

void CPageMuLfe::Defaults() {
    c.lfe_nbands = 6;
    c.lfe_base_freq = 1.0f;
    c.octave = 1;
    c.lfe_complex = 0;
    c.soft_1d = 0;
    c.lfe_noft = 0;
}

void CPageMuLfe::Update() {
    MuOptionBlock& b = form_.block;
    wave_params& r = form_.record;
    if (c.lfe_default) Defaults();
    b.lfe_default = c.lfe_default;
    b.lfe_nd[0] = c.dimension == 0 ? (c.soft_1d ? 2 : 1) : 0;
    b.lfe_nd[1] = c.dimension == 1;
    b.lfe_complex = c.lfe_complex;
    b.lfe_octave = kOctaves[std::clamp(c.octave, 0, 2)];
    b.lfe_nbands = c.lfe_nbands;
    b.lfe_base_freq = c.lfe_base_freq;
    b.lfe_noft = c.lfe_noft;
    b.lfe_est_out = c.lfe_est_out, b.lfe_stiff_out = c.lfe_stiff_out;
    b.lfe_cert_out = c.lfe_cert_out, b.lfe_imu_out = c.lfe_imu_out;
    b.lfe_icert_out = c.lfe_icert_out;
    b.lfe_est = c.lfe_est, b.lfe_stiff = c.lfe_stiff, b.lfe_cert = c.lfe_cert;
    b.lfe_imu = c.lfe_imu, b.lfe_icert = c.lfe_icert;
    // Two offsets hold no more than one.
    if (r.nt == 2) r.nt = 1;
    r.lfe_on = AnyOutput();
    r.lfe_nbands = b.lfe_nbands;
    r.lfe_nd = b.lfe_nd[0];
    r.lfe_base_freq = b.lfe_base_freq;
    r.lfe_octave = b.lfe_octave;
    r.lfe_noft = b.lfe_noft || r.nt == 1;
    r.lfe_complex = b.lfe_complex;
    r.lfe_2d_of_3d = c.dimension == 1 && b.ndim == 3;
    r.lfe_individual = !b.xyz && (c.lfe_imu_out || c.lfe_icert_out);
}

int CPageMuLfe::Check() {
    const MuOptionBlock& b = form_.block;
    CDataSpace& s = form_.space;
    auto absent = [&](bool on, const std::string& format) {
        if (!on || !form_.append_data) return false;
        std::string error;
        std::string name = FormatOutputName(format, form_.base_name, form_.count, &error);
        return name.empty() || !s.FindData(name.c_str());
    };
    if (absent(c.lfe_est_out, c.lfe_est)) return Fail(1, "append estimate output not found");
    if (absent(c.lfe_stiff_out, c.lfe_stiff)) return Fail(2, "append mu output not found");
    if (absent(c.lfe_cert_out, c.lfe_cert)) return Fail(3, "append certainty output not found");
    if (!b.xyz && absent(c.lfe_imu_out, c.lfe_imu))
        return Fail(4, "append individual estimate output not found");
    if (!b.xyz && absent(c.lfe_icert_out, c.lfe_icert))
        return Fail(5, "append individual certainty output not found");
    if (b.ndim == 2 && c.dimension == 2) return Fail(7, "can not do 3d processing on 2d data");
    if (b.ndim == 3 && c.dimension == 0) return Fail(8, "can not do 1d processing on 3d data");
    int noff = b.noff == 2 ? 1 : b.noff;
    bool noft = c.lfe_noft || noff == 1;
    if (noft && b.harmin) return Fail(9, "no time FT and R1I1 data are incompatible");
    if (noft && b.xyz) return Fail(10, "no time FT and XYZ data are incompatible");
    if (c.lfe_nbands < 2 || c.lfe_nbands > 16)
        return Fail(12, "'number of bands' must be between 2 and 16");
    if (!(kOctaves[std::clamp(c.octave, 0, 2)] > 1.0f)) return Fail(13, "'octave' must be above 1");
    if (!(c.lfe_base_freq > 0.0f) || !std::isfinite(c.lfe_base_freq))
        return Fail(14, "'base frequency' must be above 0");
    return Pass("valid lfe options");
}

void CPageMuLfe::Report(std::string* out) {
    static const char* kDims[] = {"LFE 1d processing\r\n", "LFE 2d processing\r\n",
                                  "LFE 3d processing\r\n"};
    *out += kDims[std::clamp(c.dimension, 0, 2)];
    if (c.lfe_complex) *out += "Complex processing\r\n";
    if (form_.record.lfe_noft) *out += "time FT turned off\r\n";
    const auto& t = form_.targets;
    if (t.lfe_stiff.Active())
        *out += Printf("LFE stiffness estimate: %s\r\n", t.lfe_stiff.name.c_str());
    if (t.lfe_est.Active())
        *out += Printf("LFE frequency estimate: %s\r\n", t.lfe_est.name.c_str());
}

int CPageMuLfe::Prepare() {
    auto& t = form_.targets;
    wave_params& r = form_.record;
    const MuOptionBlock& b = form_.block;
    bool xyz = b.xyz != 0;
    if (Target(&t.lfe_est, c.lfe_est_out, c.lfe_est, "grey", 0,
               "append estimate output not found") ||
        Target(&t.lfe_stiff, c.lfe_stiff_out, c.lfe_stiff, "aaasmo", 0,
               "append mu output not found") ||
        Target(&t.lfe_cert, c.lfe_cert_out, c.lfe_cert, "grey", 0,
               "append certainty output not found") ||
        Target(&t.lfe_imu, !xyz && c.lfe_imu_out, c.lfe_imu, "aaasmo", 0,
               "append individual estimate output not found") ||
        Target(&t.lfe_icert, !xyz && c.lfe_icert_out, c.lfe_icert, "grey", 0,
               "append individual certainty output not found"))
        return 1;
    r.lfe_est = t.lfe_est.Handle();
    r.lfe_stiff = t.lfe_stiff.Handle();
    r.lfe_cert = t.lfe_cert.Handle();
    r.lfe_imu = t.lfe_imu.Handle();
    r.lfe_icert = t.lfe_icert.Handle();
    return 0;
}
