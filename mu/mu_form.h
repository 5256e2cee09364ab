// CMuForm: the logic of the wave inversion form. It holds the option selector, the base name,
// count and "append data" shared by all pages, the working block, the engine record, one
// target per output, the weighted-sum slots, and the pages. The sheet grows page by page with
// "continue>>"; a run checks the pages, prepares their stages, writes the report to the
// history and drives the chain once per encoding and filter direction.
//
//   CMuForm form(GlobalDataSpace(), options);
//   form.Data()->c.magnitude = "mag"; form.Data()->c.phase[0] = "ph";
//   while (form.ActivePage() != form.Lfe()) if (form.Continue()) break;
//   form.Continue();   // on the lfe page: the run
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "mu/mu_driver.h"
#include "mu/mu_options.h"
#include "mu/mu_pages.h"
#include "wave/wave_params.h"

class CDataSpace;

// The pages an estimator issue adds; null until one registers a maker for its slot.
enum MuSlot {
    MU_SLOT_CURL,
    MU_SLOT_DF,
    MU_SLOT_SNR,
    MU_SLOT_PG,
    MU_SLOT_DI,
    MU_SLOT_MATCHED,
    MU_SLOT_COUNT
};
using MuSlotMaker = std::unique_ptr<CPageMu> (*)(CMuForm& form);
void RegisterMuSlotPage(MuSlot slot, MuSlotMaker maker);

// Name of the harmonic target a weighted sum needs when none was asked for.
inline constexpr const char* kMuTempR1i1 = "_$ZARNIK$_$TEMP$_$DELETE$_$ME$.r1i1";

class CMuForm {
  public:
    // The pages of the sheet in the order continuing creates them.
    enum Page {
        PAGE_DATA,
        PAGE_PARAMS,
        PAGE_MASK,
        PAGE_WRAP,
        PAGE_FILTER,
        PAGE_OUTPUT,
        PAGE_LFE,
        PAGE_COUNT
    };

    CMuForm(CDataSpace& space, CMuOptions& options);
    ~CMuForm();
    CMuForm(const CMuForm&) = delete;
    CMuForm& operator=(const CMuForm&) = delete;

    // Option selector: block i into the working block ("options changed"); "remove" of the
    // selected block (never 0) selects the one before ("options removed"); "save" and
    // "update" do nothing.
    void SelectOptions(int i);
    void RemoveOptions();
    void SaveOptions() {}
    void UpdateOptions() {}
    int Selected() const { return selected_; }
    std::vector<std::string> OptionNames() const;

    // "continue>>" on the active page. 0 when it moved on or ran; 1 when a page failed.
    int Continue();
    // "apply" ("view output" on the output page): the run from the active page.
    int Apply();
    // The run itself, steps one to eight.
    int Run();
    void Activate(int page);
    int ActivePage() const { return active_; }
    int PageCount() const { return created_; }
    // The status line's title: the shape of the data, the option name, frequency, range.
    std::string StatusTitle() const;

    CPageMuData* Data() { return data_.get(); }
    CPageMuParams* Params() { return params_.get(); }
    CPageMuMask* Mask() { return mask_.get(); }
    CPageMuWrap* Wrap() { return wrap_.get(); }
    CPageMuFilter* Filter() { return filter_.get(); }
    CPageMuOutput* Output() { return output_.get(); }
    CPageMuLfe* Lfe() { return lfe_.get(); }
    CPageMu* Page(int i) const;
    CPageMu* Slot(MuSlot s) const { return slots_[s].get(); }

    // Replaces the engine services (a GUI driver opens displays; tests watch the stores).
    void SetDriver(std::unique_ptr<CMuDriver> driver) { driver_ = std::move(driver); }
    CMuDriver& Driver() { return *driver_; }

    CDataSpace& space;
    CMuOptions& options;
    std::string status;
    std::string base_name;
    int count = 1;
    int append_data = 0;
    MuOptionBlock block;
    wave_params record;

    struct Targets {
        MuOutputTarget mask, magmask, interp, r1i1, amplitude;
        MuOutputTarget lfe_est, lfe_stiff, lfe_cert, lfe_imu, lfe_icert;
        MuOutputTarget pre[3];
        MuOutputTarget temp_r1i1;
    } targets;
    // The weighted sum: the weights of one pass and the accumulators (0 holds the weights).
    std::vector<float> weights;
    uint32_t wsum_slot[8] = {};
    int many_directions = 0;

  private:
    void RemoveLaterPages();
    void CreatePage(int page);
    void BindPages();
    void UpdatePages();
    // The validation of step two; 0 or 1 with the page shown.
    int Validate();
    std::vector<MuOutputTarget*> AllTargets();
    void SetPasses(int passes);
    void SetSlot(int slot);
    int Chain(int xyz_flavour);
    int PlainLoop(int encodings, int xyz_flavour);
    int AngleLoop(int encodings, int xyz_flavour);
    int SphereLoop(int encodings);
    int Accumulate(int pass);
    int Finish(int passes, double a, double b);
    void EndRun();

    int selected_ = 0;
    int active_ = PAGE_DATA;
    int created_ = 0;
    int passes_ = 1;
    std::unique_ptr<CMuDriver> driver_;
    std::unique_ptr<CPageMuData> data_;
    std::unique_ptr<CPageMuParams> params_;
    std::unique_ptr<CPageMuMask> mask_;
    std::unique_ptr<CPageMuWrap> wrap_;
    std::unique_ptr<CPageMuFilter> filter_;
    std::unique_ptr<CPageMuOutput> output_;
    std::unique_ptr<CPageMuLfe> lfe_;
    std::unique_ptr<CPageMu> slots_[MU_SLOT_COUNT];
};
