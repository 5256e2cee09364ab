// The option blocks of the wave inversion. A block fixes everything a user chooses for one
// run: acquisition, mask, unwrapping, filters, outputs and their name formats, and the
// estimators' settings. CMuOptions keeps a list of named blocks; index 0 is built in and
// always there, the others come from the `mu_estimation_options` section of the preferences.
//
// Every keyed field is described once, in MuOptionBlock::VisitKeys, in the order in which
// the section reader tries a key; reset, read, write and compare all walk that one list.
//
//   CMuOptions options;
//   options.ScanfOptions(reader);          // the reader stands on "mu_estimation_options"
//   MuOptionBlock work;
//   work.Copy(*options.Get(1));
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

class CKeyReader;
class CZrkData;

// One of `prefilter=`, `midfilter=`, `postfilter=`. Types: -1 none, 2 Gaussian LP,
// 3 Gaussian HP, 4 Gaussian BP, 5 Butterworth LP, 6 Butterworth HP, 7 Butterworth BP. The
// cut-offs are in cycles per field of view in x.
struct MuFilterRecord {
    int filter_type = -1;
    int filter_res[3] = {5, 5, 5};
    float filter_cut[2] = {2.5f, 40.0f};
    int filter_order = 4;

    void Reset() { *this = MuFilterRecord(); }
};

// What a key's visitor gets. A reset value of kKeep leaves the field as it is.
struct MuKeyVisitor {
    static constexpr double kKeep = 1e300;
    virtual ~MuKeyVisitor() = default;
    virtual void Ints(const char* key, int* v, int n, const double* reset) = 0;
    virtual void Floats(const char* key, float* v, int n, const double* reset) = 0;
    // reset null: keep.
    virtual void Text(const char* key, std::string* v, const char* reset) = 0;
    // A fixed field of `size` bytes, the text cut to size - 1.
    virtual void Chars(const char* key, char* v, int size, const char* reset) = 0;
    // A switch with its record, `prefilter=` and the like.
    virtual void Filter(const char* key, int* on, MuFilterRecord* record) = 0;
};

class MuOptionBlock {
  public:
    MuOptionBlock() { Reset(); }

    // Every default of the key table, the name "default"; the run-time fields stay.
    void Reset();
    // Member-wise, strings and filter records included.
    void Copy(const MuOptionBlock& other) { *this = other; }
    // Every keyed field equal, floats bit for bit.
    bool SameKeys(const MuOptionBlock& other) const;
    // Tries the reader's token against every key in order; 1 when one took it. Filter
    // switches read their record up to `end_filter`; `ended` is set when `end_mu` ended a
    // record.
    int ReadKey(CKeyReader& reader, bool* ended);
    // Every key, one per line, in table order, floats "%.9g".
    void Print(FILE* file) const;

    void VisitKeys(MuKeyVisitor& v);

    // Keyed fields, named after their keys.
    std::string name;
    int param_default, wedge_on, xyz, harmin, mag_iqmp, pdif_iqmp[3], harmonic_number;
    float fov[3], mech_freq, wedge_min = 0.0f, wedge_max;
    char wedge_side[9];
    int background, mask_default = 0, mask_out, magmask_out, smooth_mask, use_mask, mask_2d;
    int mask_regions, mask_voids, mask_nregions, mask_nvoids;
    std::string mask, magmask;
    int interp_out, ninterp, interp_mask, r1i1_out, amplitude_out, gradient_type, gradient_pairs;
    std::string interp, r1i1, amplitude;
    float gradient_amp, menc;
    int wsum, ampweight[3];
    float phase_range[2];
    int wrapage_mask, uwmethod, curl_on, curl_kernel;
    std::string uwpx, uwpy, uwpz, divergence, curl_x, curl_y, curl_z;
    int lfe_default, lfe_nbands, lfe_nd[2], lfe_noft, lfe_complex;
    float lfe_base_freq, lfe_octave;
    std::string lfe_est, lfe_cert, lfe_stiff, lfe_icert, lfe_imu;
    int lfe_stiff_out, lfe_est_out, lfe_cert_out, lfe_imu_out, lfe_icert_out;
    int pg_2d, pg_dir_on, pg_win[3];
    float pg_dir_angle;
    std::string pg_stiff, pg_est, pg_dir;
    int pg_stiff_out, pg_est_out, pg_dir_out;
    int di_default, di_aide, di_2d, di_sg_mode, di_order[3], di_win[3], di_invwin[3];
    float di_regular;
    std::string di_type, di_stiff, di_atten, di_cmu;
    int di_stiff_out, di_atten_out, di_cmu_out;
    int mmdi_win[2];
    std::string mmdi_win_shape, mmdi_stiff, mmdi_atten, mmdi_cmu, mmdi_signal, mmdi_bpe,
        mmdi_lap_conf, mmdi_di_conf;
    int mmdi_stiff_out, mmdi_atten_out, mmdi_cmu_out, mmdi_signal_out, mmdi_bpe_out;
    int mmdi_lap_conf_out = 0, mmdi_di_conf_out = 0, mmdi_checker_on;
    float mmdi_threshold;
    int mf_default, mf_win[3] = {17, 17, 0};
    float mf_regular;
    std::string mf_stiff, mf_atten, mf_cmu;
    int mf_stiff_out, mf_atten_out, mf_cmu_out;
    int dirf_default, dirf_1d_on, dirf_1d_dir, dirf_1d_forward, dirf_2d_on, dirf_2d_dir, dirf_order;
    float dirf_cut[2], dirf_angle, dirf_2d_ntheta, dirf_inc, df3d_xyz[3];
    int dirf_2d_nangle, dirf_space, dirf_3d_on, dirf_3d_nangle, dirf_out, dirf_all = 0, dirf_mask;
    std::string dirf_format;
    int gdc_flag, ldc_flag, ldc_winx, ldc_winy, ldc_out, ldcr_out, meanx2_flag, meanx2_out;
    std::string ldc_format, ldcr_format, meanx2_format;
    int pre_out;
    std::string pre_format;
    int snr_default, snr_mask, snr_mask_pattern;
    float snr_bg_sd, snr_phase_min, snr_phase_max, snr_threshold;
    int snr_xwin, snr_ywin, snr_zwin, snr_bg_xerode, snr_bg_yerode, snr_bg_zerode;
    int snr_maskout, snr_magout, snr_pdout;
    std::string snr_maskformat, snr_magformat, snr_pdformat;
    int prefilter, midfilter, postfilter;
    MuFilterRecord pre_record, mid_record, post_record;

    // Run-time fields, set by the pages; no key.
    CZrkData* mag_data = nullptr;
    CZrkData* phase_data[3] = {};
    int mag_nx = 0, mag_ny = 0;
    int nslices = 0;
    int noff = 8;
    int ndim = 2;
    std::string mag_name;
    // What the chain really reads; the unwrap and filter stages put their outputs here.
    std::string phase_name[3];
    std::string mask_name;
    // The y and z names of the pre-filter outputs and their switches.
    std::string pre_y_format = "pre%02dy", pre_z_format = "pre%02dz";
    int pre_y_out = 0, pre_z_out = 0;
};

class CMuOptions {
  public:
    // The most blocks a section may add; a larger count is a failed add.
    static constexpr int kMaxAdd = 1024;

    CMuOptions() = default;
    ~CMuOptions();
    CMuOptions(const CMuOptions&) = delete;
    CMuOptions& operator=(const CMuOptions&) = delete;

    int Count() const { return 1 + static_cast<int>(more_.size()); }
    // Grows the list by n reset blocks; the new count, or 0 when n is out of range or memory
    // fails (the list is then as it was).
    int Add(int n);
    // Removes block i (i at least 1); 0 when nothing was removed.
    int Remove(int i);
    // Null out of range.
    MuOptionBlock* Get(int i);
    const MuOptionBlock* Get(int i) const;

    // The section reader; the reader stands on "mu_estimation_options". End of file
    // propagates to the preferences loop; blocks already read stay.
    void ScanfOptions(CKeyReader& reader);
    // The section writer: blocks 1 to count-1, nothing when there are none.
    void PrintfOptions(FILE* file) const;

  private:
    MuOptionBlock first_;
    std::vector<std::unique_ptr<MuOptionBlock>> more_;
};
