// The pages of the wave inversion sheet, as toolkit-free logic. Each page keeps a plain
// record of its controls, named after the option keys it edits, and offers:
//   Bind     controls from the form's working block (on creation and when a block is chosen)
//   Update   controls into the block and the engine record (always first)
//   Check    0, or an error code with the page's status text
//   Report   the history lines of what was chosen
//   Defaults the rest values of its controls
//   Prepare  the page's stage before the run (mask, unwrap, pre-filter, targets)
// A widget only moves values between its controls and this record.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "mu/mu_target.h"

class CMuForm;
class CZrkData;

// The validation bits of the pages.
enum MuPageBit {
    MU_DATA = 1,
    MU_PARAMS = 2,
    MU_MASK = 4,
    MU_WRAP = 8,
    MU_FILTER = 16,
    MU_OUTPUT = 32,
    MU_CURL = 64,
    MU_DF = 128,
    MU_SNR = 256,
    MU_PG = 512,
    MU_LFE = 1024,
    MU_DI = 2048,
    MU_MATCHED = 8192
};

class CPageMu {
  public:
    explicit CPageMu(CMuForm& form) : form_(form) {}
    virtual ~CPageMu() = default;
    CPageMu(const CPageMu&) = delete;
    CPageMu& operator=(const CPageMu&) = delete;

    virtual int Bit() const = 0;
    virtual const char* Title() const = 0;
    // The help page the "help" button starts.
    virtual const char* HelpPage() const = 0;
    virtual void Bind() = 0;
    virtual void Update() = 0;
    virtual int Check() = 0;
    virtual void Report(std::string* out) = 0;
    virtual void Defaults() {}
    virtual int Prepare() { return 0; }

    const std::string& Status() const { return status_; }

  protected:
    int Fail(int code, const std::string& text) {
        status_ = text;
        return code;
    }
    int Pass(const char* text) {
        status_ = text;
        return 0;
    }
    // Makes `t` from a format unless `on` is off (then it is cleared); 1 with the status set
    // to `missing` when an appended array is not there, or to the name error.
    int Target(MuOutputTarget* t, bool on, const std::string& format, const char* palette,
               int apply_mask, const char* missing);

    CMuForm& form_;
    std::string status_;
};

class CPageMuData : public CPageMu {
  public:
    using CPageMu::CPageMu;
    struct Controls {
        std::string magnitude;
        int mag_iqmp = 0;
        int harmin = 0;  // 0 phase time series, 1 complex harmonic
        int xyz = 0;
        std::string phase[3];
        int pdif_iqmp[3] = {};
    } c;

    int Bit() const override { return MU_DATA; }
    const char* Title() const override { return "data"; }
    const char* HelpPage() const override { return "wave_data.htm"; }
    void Bind() override;
    void Update() override;
    int Check() override;
    void Report(std::string* out) override;

  private:
    std::string reported_;
};

class CPageMuParams : public CPageMu {
  public:
    using CPageMu::CPageMu;
    static constexpr int kPresetOther = 6;
    struct Controls {
        int param_default = 1;
        float mech_freq = 60.0f;
        float fov[3] = {0.24f, 0.24f, 0.1f};
        int harmonic_number = 1;
        int phase_preset = 0;  // 0 ... 255, 0 ... 4095, +-pi/2, +-pi, +-3141, +-31415, other
        float phase_range[2] = {0.0f, 255.0f};
        int noff = 8;
        float menc = 0.0f;
        int wsum = 1;
        int ampweight[2] = {};  // "divide" and "suppress"
    } c;

    int Bit() const override { return MU_PARAMS; }
    const char* Title() const override { return "params"; }
    const char* HelpPage() const override { return "wave_parameters.htm"; }
    void Bind() override;
    void Update() override;
    int Check() override;
    void Report(std::string* out) override;
    // Sets the range from a preset; "other" leaves it to the edits.
    void SetPhasePreset(int preset);
    // Whether the range edits are open (only with "other").
    bool RangeEditable() const { return c.phase_preset == kPresetOther; }
    // "load from file": the field of view from the header of a scanner file (a raw
    // acquisition or a reconstructed image), each axis its size times its step. 0 with the
    // reader's text as the status, or 1 with the reader's failure there and the controls kept.
    int LoadFromFile(const std::string& path);

  private:
    // Slices and dimension from the arrays; 0, or the check's failure.
    int Shape(int* slices, int* ndim, int* ncopies);
};

class CPageMuMask : public CPageMu {
  public:
    using CPageMu::CPageMu;
    struct Controls {
        int mask_default = 1;
        int background = 10;
        int use_mask = 1;
        int smooth_mask = 0;
        int mask_2d = 0;
        int mask_regions = 0, mask_voids = 0;
        int mask_nregions = 1, mask_nvoids = 0;
        int mask_out = 0;
        std::string mask = "mask_%02d";
        int amp_threshold = 0;  // the third `ampweight=`
    } c;

    int Bit() const override { return MU_MASK; }
    const char* Title() const override { return "mask"; }
    const char* HelpPage() const override { return "wave_parameters.htm"; }
    void Bind() override;
    void Update() override;
    int Check() override;
    void Report(std::string* out) override;
    void Defaults() override;
    // Builds the mask array the unwrap stage reads or the output keeps, and its preview.
    int Prepare() override;
    // A threshold spin moves the threshold by one per step.
    void Spin(int steps) { c.background += steps; }

    // The middle slice of the mask, each byte inverted, as the page shows it.
    std::vector<uint8_t> preview;
};

class CPageMuWrap : public CPageMu {
  public:
    using CPageMu::CPageMu;
    static constexpr const char* kMethods[] = {"no unwrapping", "quality guided",
                                               "minimum discontinuity", "graph cut"};
    struct Controls {
        int uwmethod = 0;
        int wrapage_mask = 1;
        int save = 0;  // keep the outputs under their formats
        std::string uwpx = "uw_px%02d", uwpy = "uw_py%02d", uwpz = "uw_pz%02d";
    } c;

    int Bit() const override { return MU_WRAP; }
    const char* Title() const override { return "unwrap"; }
    const char* HelpPage() const override { return "wave_unwrap.htm"; }
    void Bind() override;
    void Update() override;
    int Check() override;
    void Report(std::string* out) override;
    int Prepare() override;

  private:
    int UnwrapAxis(const CZrkData* in, int channel, const CZrkData* mask, const std::string& name);

    std::string done_;  // what the last unwrap was made from
};

class CPageMuFilter : public CPageMu {
  public:
    using CPageMu::CPageMu;
    static constexpr const char* kChoices[] = {"no filter", "gauss LP",  "gauss BP", "gauss HP",
                                               "butter LP", "butter BP", "butter HP"};
    static constexpr int kTypes[] = {-1, 2, 4, 3, 5, 7, 6};
    struct Controls {
        int filter = 0;  // index into kChoices
        int filter_res[3] = {5, 5, 5};
        float filter_cut[2] = {2.5f, 40.0f};
        int filter_order = 4;
        int pre_out = 0;
        std::string pre_format = "pre%02d";
    } c;

    int Bit() const override { return MU_FILTER; }
    const char* Title() const override { return "filter"; }
    const char* HelpPage() const override { return "wave_filters.htm"; }
    void Bind() override;
    void Update() override;
    int Check() override;
    void Report(std::string* out) override;
    int Prepare() override;
    // The "apply" button: the pre-filter alone.
    int Apply();

  private:
    std::string done_;
    std::string lines_;
};

class CPageMuOutput : public CPageMu {
  public:
    using CPageMu::CPageMu;
    static constexpr const char* kGradients[] = {"rect", "sin"};
    struct Controls {
        int magmask_out = 0;
        std::string magmask = "mag_%02d";
        int interp_out = 0, ninterp = 8, interp_mask = 1;
        std::string interp = "interp%02d";
        int r1i1_out = 0;
        std::string r1i1 = "r1i1%02d";
        int amplitude_out = 0;
        std::string amplitude = "amp_%02d";
        int gradient_type = 0, gradient_pairs = 2;
        float gradient_amp = 1.76f;
    } c;

    int Bit() const override { return MU_OUTPUT; }
    const char* Title() const override { return "output"; }
    const char* HelpPage() const override { return "wave_parameters.htm"; }
    void Bind() override;
    void Update() override;
    int Check() override;
    void Report(std::string* out) override;
    int Prepare() override;
    bool AnyOutput() const {
        return c.magmask_out || c.interp_out || c.r1i1_out || c.amplitude_out;
    }
};

class CPageMuLfe : public CPageMu {
  public:
    using CPageMu::CPageMu;
    static constexpr float kOctaves[] = {1.4142135f, 2.0f, 4.0f};
    struct Controls {
        int lfe_default = 1;
        int dimension = 1;  // radio: 0 "1d", 1 "2d", 2 "3d"
        int soft_1d = 0;
        int lfe_complex = 0;
        int octave = 1;  // index into kOctaves
        int lfe_nbands = 6;
        float lfe_base_freq = 1.0f;
        int lfe_noft = 0;
        int lfe_est_out = 0, lfe_stiff_out = 1, lfe_cert_out = 0, lfe_imu_out = 0,
            lfe_icert_out = 0;
        std::string lfe_est = "lfe_est%02d", lfe_stiff = "lfe_stiff%02d", lfe_cert = "lfe_cert%02d",
                    lfe_imu = "lfe_imu%02d", lfe_icert = "lfe_icert%02d";
    } c;

    int Bit() const override { return MU_LFE; }
    const char* Title() const override { return "lfe"; }
    const char* HelpPage() const override { return "wave_lfe.htm"; }
    void Bind() override;
    void Update() override;
    int Check() override;
    void Report(std::string* out) override;
    void Defaults() override;
    int Prepare() override;
    bool AnyOutput() const {
        return c.lfe_est_out || c.lfe_stiff_out || c.lfe_cert_out || c.lfe_imu_out ||
               c.lfe_icert_out;
    }
};
