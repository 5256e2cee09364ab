#include "mu/mu_options.h"

#include <cmath>
#include <cstring>
#include <new>

#include "core/host.h"
#include "core/key_reader.h"

namespace {

constexpr double K = MuKeyVisitor::kKeep;

// Assigns the reset values.
struct ResetVisitor : MuKeyVisitor {
    void Ints(const char*, int* v, int n, const double* r) override {
        for (int i = 0; i < n; ++i)
            if (r[i] != kKeep) v[i] = static_cast<int>(r[i]);
    }
    void Floats(const char*, float* v, int n, const double* r) override {
        for (int i = 0; i < n; ++i)
            if (r[i] != kKeep) v[i] = static_cast<float>(r[i]);
    }
    void Text(const char*, std::string* v, const char* r) override {
        if (r) *v = r;
    }
    void Chars(const char*, char* v, int size, const char* r) override {
        if (r) std::snprintf(v, static_cast<size_t>(size), "%s", r);
    }
    void Filter(const char*, int* on, MuFilterRecord* record) override {
        *on = 0;
        record->Reset();
    }
};

// Reads the filter record's keys up to `end_filter`; `end_mu` ends it too and the block.
bool ReadFilterRecord(CKeyReader& r, MuFilterRecord* f) {
    for (;;) {
        r.Next();
        if (r.IsKey("end_filter")) return false;
        if (r.IsKey("end_mu")) return true;
        if (r.Int("filter_type=", &f->filter_type)) continue;
        if (r.Int("filter_order=", &f->filter_order)) continue;
        if (r.Ints("filter_res=", f->filter_res, 3)) continue;
        r.Float2("filter_cut=", &f->filter_cut[0], &f->filter_cut[1]);
    }
}

// Tries one token against the keys in order; stops at the first that takes it.
struct ReadVisitor : MuKeyVisitor {
    explicit ReadVisitor(CKeyReader& reader) : r(reader) {}
    void Ints(const char* key, int* v, int n, const double*) override {
        if (!taken && r.Ints(key, v, n)) taken = 1;
    }
    void Floats(const char* key, float* v, int n, const double*) override {
        if (taken || !r.IsKey(key)) return;
        taken = 1;
        if (n == 1) r.Float(key, v);
        if (n == 2) r.Float2(key, v, v + 1);
        if (n == 3) r.Float3(key, v, v + 1, v + 2);
    }
    void Text(const char* key, std::string* v, const char*) override {
        if (!taken && r.String(key, v)) taken = 1;
    }
    void Chars(const char* key, char* v, int size, const char*) override {
        if (!taken && r.Chars(key, v, size)) taken = 1;
    }
    void Filter(const char* key, int* on, MuFilterRecord* record) override {
        if (taken || !r.Int(key, on)) return;
        taken = 1;
        ended = ReadFilterRecord(r, record);
    }
    CKeyReader& r;
    int taken = 0;
    bool ended = false;
};

void PrintFloats(FILE* f, const float* v, int n) {
    for (int i = 0; i < n; ++i) std::fprintf(f, " %.9g", static_cast<double>(v[i]));
}

struct PrintVisitor : MuKeyVisitor {
    explicit PrintVisitor(FILE* file) : f(file) {}
    void Ints(const char* key, int* v, int n, const double*) override {
        std::fprintf(f, "%s", key);
        for (int i = 0; i < n; ++i) std::fprintf(f, " %d", v[i]);
        std::fprintf(f, "\n");
    }
    void Floats(const char* key, float* v, int n, const double*) override {
        std::fprintf(f, "%s", key);
        PrintFloats(f, v, n);
        std::fprintf(f, "\n");
    }
    void Text(const char* key, std::string* v, const char*) override {
        std::fprintf(f, "%s %s\n", key, v->c_str());
    }
    void Chars(const char* key, char* v, int, const char*) override {
        std::fprintf(f, "%s %s\n", key, v);
    }
    void Filter(const char* key, int* on, MuFilterRecord* r) override {
        std::fprintf(f, "%s %d\n", key, *on);
        std::fprintf(f, "filter_type= %d\nfilter_order= %d\n", r->filter_type, r->filter_order);
        std::fprintf(f, "filter_res= %d %d %d\nfilter_cut=", r->filter_res[0], r->filter_res[1],
                     r->filter_res[2]);
        PrintFloats(f, r->filter_cut, 2);
        std::fprintf(f, "\nend_filter\n");
    }
    FILE* f;
};

// The keyed fields as bytes, one entry per key, for member-wise comparison.
struct BytesVisitor : MuKeyVisitor {
    void Add(const void* p, size_t n) { out.emplace_back(static_cast<const char*>(p), n); }
    void Ints(const char*, int* v, int n, const double*) override { Add(v, sizeof(int) * n); }
    void Floats(const char*, float* v, int n, const double*) override { Add(v, sizeof(float) * n); }
    void Text(const char*, std::string* v, const char*) override { out.push_back(*v); }
    void Chars(const char*, char* v, int size, const char*) override {
        out.emplace_back(v, strnlen(v, static_cast<size_t>(size)));
    }
    void Filter(const char*, int* on, MuFilterRecord* r) override {
        Add(on, sizeof *on);
        Add(&r->filter_type, sizeof r->filter_type);
        Add(r->filter_res, sizeof r->filter_res);
        Add(r->filter_cut, sizeof r->filter_cut);
        Add(&r->filter_order, sizeof r->filter_order);
    }
    std::vector<std::string> out;
};

}  // namespace

void MuOptionBlock::VisitKeys(MuKeyVisitor& v) {
    auto i1 = [&](const char* k, int* p, double r) { v.Ints(k, p, 1, &r); };
    auto f1 = [&](const char* k, float* p, double r) { v.Floats(k, p, 1, &r); };
    auto in = [&](const char* k, int* p, std::initializer_list<double> r) {
        v.Ints(k, p, static_cast<int>(r.size()), r.begin());
    };
    auto fn = [&](const char* k, float* p, std::initializer_list<double> r) {
        v.Floats(k, p, static_cast<int>(r.size()), r.begin());
    };
    auto s = [&](const char* k, std::string* p, const char* r) { v.Text(k, p, r); };

    s("name=", &name, "default");
    i1("param_default=", &param_default, 1);
    fn("fov=", fov, {0.24, 0.24, 0.1});
    f1("mech_freq=", &mech_freq, 60);
    i1("wedge_on=", &wedge_on, 0);
    v.Chars("wedge_side=", wedge_side, sizeof wedge_side, "left");
    f1("wedge_min=", &wedge_min, K);
    f1("wedge_max=", &wedge_max, 40);
    i1("xyz=", &xyz, 0);
    i1("harmin=", &harmin, 0);
    i1("mag_iqmp=", &mag_iqmp, 0);
    in("pdif_iqmp=", pdif_iqmp, {0, 0, 0});
    i1("harmonic_number=", &harmonic_number, 1);
    i1("background=", &background, 10);
    i1("mask_default=", &mask_default, K);
    s("mask=", &mask, "mask_%02d");
    s("magmask=", &magmask, "mag_%02d");
    i1("mask_out=", &mask_out, 0);
    i1("magmask_out=", &magmask_out, 0);
    i1("smooth_mask=", &smooth_mask, 0);
    i1("use_mask=", &use_mask, 1);
    i1("mask_2d=", &mask_2d, 0);
    i1("mask_regions=", &mask_regions, 0);
    i1("mask_voids=", &mask_voids, 0);
    i1("mask_nregions=", &mask_nregions, 1);
    i1("mask_nvoids=", &mask_nvoids, 0);
    i1("interp_out=", &interp_out, 0);
    i1("ninterp=", &ninterp, 8);
    s("interp=", &interp, "interp%02d");
    i1("interp_mask=", &interp_mask, 1);
    i1("r1i1_out=", &r1i1_out, 0);
    s("r1i1=", &r1i1, "r1i1%02d");
    i1("amplitude_out=", &amplitude_out, 0);
    i1("gradient_type=", &gradient_type, 0);
    i1("gradient_pairs=", &gradient_pairs, 2);
    f1("gradient_amp=", &gradient_amp, 1.76);
    f1("menc=", &menc, 0);
    s("amplitude=", &amplitude, "amp_%02d");
    i1("wsum=", &wsum, 1);
    in("ampweight=", ampweight, {0, 0, 0});
    fn("phase_range=", phase_range, {0, 255});
    i1("wrapage_mask=", &wrapage_mask, 1);
    s("uwpx=", &uwpx, "uw_px%02d");
    s("uwpy=", &uwpy, "uw_py%02d");
    s("uwpz=", &uwpz, "uw_pz%02d");
    i1("uwmethod=", &uwmethod, 0);
    i1("curl_on=", &curl_on, 0);
    i1("curl_kernel=", &curl_kernel, 0);
    s("divergence=", &divergence, "div_%02d");
    s("curl_x=", &curl_x, "curl_x%02d");
    s("curl_y=", &curl_y, "curl_y%02d");
    s("curl_z=", &curl_z, "curl_z%02d");
    i1("lfe_default=", &lfe_default, 1);
    i1("lfe_nbands=", &lfe_nbands, 6);
    in("lfe_nd=", lfe_nd, {0, 1});
    f1("lfe_base_freq=", &lfe_base_freq, 1);
    f1("lfe_octave=", &lfe_octave, 2);
    i1("lfe_noft=", &lfe_noft, 0);
    i1("lfe_complex=", &lfe_complex, 0);
    s("lfe_est=", &lfe_est, "lfe_est%02d");
    s("lfe_cert=", &lfe_cert, "lfe_cert%02d");
    s("lfe_stiff=", &lfe_stiff, "lfe_stiff%02d");
    s("lfe_icert=", &lfe_icert, "lfe_icert%02d");
    s("lfe_imu=", &lfe_imu, "lfe_imu%02d");
    i1("lfe_stiff_out=", &lfe_stiff_out, 1);
    i1("lfe_est_out=", &lfe_est_out, 0);
    i1("lfe_cert_out=", &lfe_cert_out, 0);
    i1("lfe_imu_out=", &lfe_imu_out, 0);
    i1("lfe_icert_out=", &lfe_icert_out, 0);
    i1("pg_2d=", &pg_2d, 1);
    i1("pg_dir_on=", &pg_dir_on, 0);
    f1("pg_dir_angle=", &pg_dir_angle, 0);
    in("pg_win=", pg_win, {5, 5, 5});
    s("pg_stiff=", &pg_stiff, "pg_stiff%02d");
    s("pg_est=", &pg_est, "pg_est%02d");
    s("pg_dir=", &pg_dir, "pg_dir%02d");
    i1("pg_stiff_out=", &pg_stiff_out, 1);
    i1("pg_est_out=", &pg_est_out, 0);
    i1("pg_dir_out=", &pg_dir_out, 0);
    i1("di_default=", &di_default, 1);
    i1("di_aide=", &di_aide, 0);
    i1("di_2d=", &di_2d, 1);
    i1("di_sg_mode=", &di_sg_mode, 0);
    f1("di_regular=", &di_regular, 1e-06);
    in("di_order=", di_order, {3, 3, 3});
    in("di_win=", di_win, {11, 11, 5});
    in("di_invwin=", di_invwin, {11, 11, 5});
    s("di_type=", &di_type, "Romano");
    s("di_stiff=", &di_stiff, "di_stiff%02d");
    s("di_atten=", &di_atten, "di_atten%02d");
    s("di_cmu=", &di_cmu, "di_cmu%02d");
    i1("di_stiff_out=", &di_stiff_out, 1);
    i1("di_atten_out=", &di_atten_out, 0);
    i1("di_cmu_out=", &di_cmu_out, 0);
    in("mmdi_win=", mmdi_win, {11, 11});
    s("mmdi_win_shape=", &mmdi_win_shape, nullptr);
    s("mmdi_stiff=", &mmdi_stiff, "mmdi_stiff%02d");
    s("mmdi_atten=", &mmdi_atten, "mmdi_atten%02d");
    s("mmdi_cmu=", &mmdi_cmu, "mmdi_cmu%02d");
    s("mmdi_signal=", &mmdi_signal, "mmdi_signal_%02d");
    s("mmdi_bpe=", &mmdi_bpe, "mmdi_bpe_%02d");
    s("mmdi_lap_conf=", &mmdi_lap_conf, "mmdi_lap_conf_%02d");
    s("mmdi_di_conf=", &mmdi_di_conf, "mmdi_di_conf_%02d");
    i1("mmdi_stiff_out=", &mmdi_stiff_out, 1);
    i1("mmdi_atten_out=", &mmdi_atten_out, 0);
    i1("mmdi_cmu_out=", &mmdi_cmu_out, 0);
    i1("mmdi_signal_out=", &mmdi_signal_out, 0);
    i1("mmdi_bpe_out=", &mmdi_bpe_out, 0);
    i1("mmdi_lap_conf_out=", &mmdi_lap_conf_out, K);
    i1("mmdi_di_conf_out=", &mmdi_di_conf_out, K);
    i1("mmdi_checker_on=", &mmdi_checker_on, 0);
    f1("mmdi_threshold=", &mmdi_threshold, 0.95);
    i1("mf_default=", &mf_default, 1);
    in("mf_win=", mf_win, {17, 17, K});
    f1("mf_regular=", &mf_regular, 1e-06);
    s("mf_stiff=", &mf_stiff, "mf_stiff%02d");
    s("mf_atten=", &mf_atten, "mf_atten%02d");
    s("mf_cmu=", &mf_cmu, "mf_cmu%02d");
    i1("mf_stiff_out=", &mf_stiff_out, 1);
    i1("mf_atten_out=", &mf_atten_out, 0);
    i1("mf_cmu_out=", &mf_cmu_out, 0);
    i1("dirf_default=", &dirf_default, 1);
    i1("dirf_1d_on=", &dirf_1d_on, 0);
    i1("dirf_1d_dir=", &dirf_1d_dir, 0);
    i1("dirf_1d_forward=", &dirf_1d_forward, 0);
    i1("dirf_2d_on=", &dirf_2d_on, 0);
    i1("dirf_2d_dir=", &dirf_2d_dir, 0);
    i1("dirf_order=", &dirf_order, 4);
    fn("dirf_cut=", dirf_cut, {4, 40});
    f1("dirf_angle=", &dirf_angle, 0);
    i1("dirf_2d_nangle=", &dirf_2d_nangle, 8);
    f1("dirf_2d_ntheta=", &dirf_2d_ntheta, 1);
    i1("dirf_space=", &dirf_space, 1);
    f1("dirf_inc=", &dirf_inc, 90);
    i1("dirf_3d_on=", &dirf_3d_on, 0);
    i1("dirf_3d_nangle=", &dirf_3d_nangle, 1);
    fn("df3d_xyz=", df3d_xyz, {0, 0, 1});
    i1("dirf_out=", &dirf_out, 0);
    i1("dirf_all=", &dirf_all, K);
    s("dirf_format=", &dirf_format, "df%02d");
    i1("dirf_mask=", &dirf_mask, 1);
    i1("gdc_flag=", &gdc_flag, 0);
    i1("ldc_flag=", &ldc_flag, 0);
    i1("ldc_winx=", &ldc_winx, 25);
    i1("ldc_winy=", &ldc_winy, 25);
    s("ldc_format=", &ldc_format, "ldc%02d");
    s("ldcr_format=", &ldcr_format, "ldcr%02d");
    i1("ldc_out=", &ldc_out, 0);
    i1("ldcr_out=", &ldcr_out, 0);
    i1("meanx2_flag=", &meanx2_flag, 0);
    s("meanx2_format=", &meanx2_format, "meanx2%02d");
    i1("meanx2_out=", &meanx2_out, 0);
    i1("pre_out=", &pre_out, 0);
    s("pre_format=", &pre_format, "pre%02d");
    i1("snr_default=", &snr_default, 1);
    i1("snr_mask=", &snr_mask, 0);
    i1("snr_mask_pattern=", &snr_mask_pattern, 0);
    f1("snr_bg_sd=", &snr_bg_sd, 0);
    f1("snr_phase_min=", &snr_phase_min, 0);
    f1("snr_phase_max=", &snr_phase_max, 255);
    f1("snr_threshold=", &snr_threshold, 0);
    i1("snr_xwin=", &snr_xwin, 3);
    i1("snr_ywin=", &snr_ywin, 3);
    i1("snr_zwin=", &snr_zwin, 3);
    i1("snr_bg_xerode=", &snr_bg_xerode, 10);
    i1("snr_bg_yerode=", &snr_bg_yerode, 10);
    i1("snr_bg_zerode=", &snr_bg_zerode, 10);
    i1("snr_maskout=", &snr_maskout, 0);
    i1("snr_magout=", &snr_magout, 0);
    i1("snr_pdout=", &snr_pdout, 0);
    s("snr_maskformat=", &snr_maskformat, "masksnr%02d");
    s("snr_magformat=", &snr_magformat, "magsnr%02d");
    s("snr_pdformat=", &snr_pdformat, "pdsnr%02d");
    v.Filter("prefilter=", &prefilter, &pre_record);
    v.Filter("midfilter=", &midfilter, &mid_record);
    v.Filter("postfilter=", &postfilter, &post_record);
}

void MuOptionBlock::Reset() {
    ResetVisitor v;
    VisitKeys(v);
}

bool MuOptionBlock::SameKeys(const MuOptionBlock& other) const {
    BytesVisitor a, b;
    const_cast<MuOptionBlock*>(this)->VisitKeys(a);
    const_cast<MuOptionBlock&>(other).VisitKeys(b);
    return a.out == b.out;
}

int MuOptionBlock::ReadKey(CKeyReader& reader, bool* ended) {
    ReadVisitor v(reader);
    VisitKeys(v);
    *ended = v.ended;
    return v.taken;
}

void MuOptionBlock::Print(FILE* file) const {
    PrintVisitor v(file);
    const_cast<MuOptionBlock*>(this)->VisitKeys(v);
    std::fprintf(file, "end_mu\n");
}

CMuOptions::~CMuOptions() {
    Host().Trace("CMuOptions::~CMuOptions");
    // Blocks 1 to count-1 first, then the list, then the built-in block.
    while (!more_.empty()) more_.pop_back();
}

int CMuOptions::Add(int n) {
    if (n < 0 || n > kMaxAdd) return 0;
    size_t old = more_.size();
    try {
        more_.reserve(old + static_cast<size_t>(n));
        for (int i = 0; i < n; ++i) more_.push_back(std::make_unique<MuOptionBlock>());
    } catch (const std::bad_alloc&) {
        more_.resize(old);
        return 0;
    }
    return Count();
}

int CMuOptions::Remove(int i) {
    if (i < 1 || i >= Count()) return 0;
    more_.erase(more_.begin() + (i - 1));
    return 1;
}

MuOptionBlock* CMuOptions::Get(int i) {
    if (i == 0) return &first_;
    if (i < 0 || i >= Count()) return nullptr;
    return more_[static_cast<size_t>(i - 1)].get();
}

const MuOptionBlock* CMuOptions::Get(int i) const { return const_cast<CMuOptions*>(this)->Get(i); }

void CMuOptions::ScanfOptions(CKeyReader& reader) {
    reader.Next();
    long long n = std::strtoll(reader.Token().c_str(), nullptr, 10);
    if (n <= 0) return;
    int first = Count();
    if (n > kMaxAdd || !Add(static_cast<int>(n))) return;
    for (int b = first; b < Count(); ++b) {
        MuOptionBlock* block = Get(b);
        block->Reset();
        for (;;) {
            reader.Next();
            if (reader.IsKey("end_mu")) break;
            bool ended = false;
            block->ReadKey(reader, &ended);
            if (ended) break;
        }
    }
}

void CMuOptions::PrintfOptions(FILE* file) const {
    if (Count() < 2) return;
    std::fprintf(file, "\n// wave inversion option blocks\nmu_estimation_options\n%d\n",
                 Count() - 1);
    for (int b = 1; b < Count(); ++b) Get(b)->Print(file);
}
