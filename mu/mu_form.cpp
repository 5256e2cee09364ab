#include "mu/mu_form.h"

#include <cmath>
#include <cstdlib>
#include <new>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/host.h"
#include "core/number_format.h"
#include "core/zrk_data.h"
#include "wave/chain.h"
#include "wave/mem.h"
#include "wave/wsum.h"

namespace {

MuSlotMaker g_slot_makers[MU_SLOT_COUNT] = {};

// Copies the keyed fields of `from`, keeping the data the pages chose.
void TakeOptions(MuOptionBlock* block, const MuOptionBlock& from) {
    MuOptionBlock keep = *block;
    block->Copy(from);
    block->mag_data = keep.mag_data;
    block->mag_name = keep.mag_name;
    block->mag_nx = keep.mag_nx, block->mag_ny = keep.mag_ny;
    block->nslices = keep.nslices, block->noff = keep.noff, block->ndim = keep.ndim;
    block->mask_name = keep.mask_name;
    for (int a = 0; a < 3; ++a)
        block->phase_data[a] = keep.phase_data[a], block->phase_name[a] = keep.phase_name[a];
}

// Evenly spread directions on the half sphere (a golden-angle spiral), for the sphere loop.
void SpherePoint(int i, int n, float v[3]) {
    double z = 1.0 - (i + 0.5) / n;
    double r = std::sqrt(std::max(0.0, 1.0 - z * z));
    double phi = i * 2.399963229728653;
    v[0] = float(r * std::cos(phi));
    v[1] = float(r * std::sin(phi));
    v[2] = float(z);
}

}  // namespace

void RegisterMuSlotPage(MuSlot slot, MuSlotMaker maker) { g_slot_makers[slot] = maker; }

CMuForm::CMuForm(CDataSpace& a_space, CMuOptions& a_options)
    : space(a_space), options(a_options), driver_(std::make_unique<CMuDriver>(a_space)) {
    block.Copy(*options.Get(0));
    CreatePage(PAGE_DATA);
    for (int s = 0; s < MU_SLOT_COUNT; ++s)
        if (g_slot_makers[s]) slots_[s] = g_slot_makers[s](*this);
}

CMuForm::~CMuForm() { Host().Trace("CMuForm::~CMuForm"); }

std::vector<std::string> CMuForm::OptionNames() const {
    std::vector<std::string> names;
    for (int i = 0; i < options.Count(); ++i) names.push_back(options.Get(i)->name);
    return names;
}

CPageMu* CMuForm::Page(int i) const {
    switch (i) {
        case PAGE_DATA:
            return data_.get();
        case PAGE_PARAMS:
            return params_.get();
        case PAGE_MASK:
            return mask_.get();
        case PAGE_WRAP:
            return wrap_.get();
        case PAGE_FILTER:
            return filter_.get();
        case PAGE_OUTPUT:
            return output_.get();
        case PAGE_LFE:
            return lfe_.get();
        default:
            return nullptr;
    }
}

void CMuForm::CreatePage(int page) {
    CPageMu* made = nullptr;
    switch (page) {
        case PAGE_DATA:
            made = (data_ = std::make_unique<CPageMuData>(*this)).get();
            break;
        case PAGE_PARAMS:
            made = (params_ = std::make_unique<CPageMuParams>(*this)).get();
            break;
        case PAGE_MASK:
            made = (mask_ = std::make_unique<CPageMuMask>(*this)).get();
            break;
        case PAGE_WRAP:
            made = (wrap_ = std::make_unique<CPageMuWrap>(*this)).get();
            break;
        case PAGE_FILTER:
            made = (filter_ = std::make_unique<CPageMuFilter>(*this)).get();
            break;
        case PAGE_OUTPUT:
            made = (output_ = std::make_unique<CPageMuOutput>(*this)).get();
            break;
        case PAGE_LFE:
            made = (lfe_ = std::make_unique<CPageMuLfe>(*this)).get();
            break;
        default:
            return;
    }
    made->Bind();
    created_ = page + 1;
    active_ = page;
}

void CMuForm::RemoveLaterPages() {
    for (int p = created_ - 1; p > active_; --p) {
        switch (p) {
            case PAGE_PARAMS:
                params_.reset();
                break;
            case PAGE_MASK:
                mask_.reset();
                break;
            case PAGE_WRAP:
                wrap_.reset();
                break;
            case PAGE_FILTER:
                filter_.reset();
                break;
            case PAGE_OUTPUT:
                output_.reset();
                break;
            case PAGE_LFE:
                lfe_.reset();
                break;
        }
    }
    created_ = active_ + 1;
}

void CMuForm::BindPages() {
    for (int p = 0; p < created_; ++p) Page(p)->Bind();
    for (auto& s : slots_)
        if (s) s->Bind();
}

void CMuForm::UpdatePages() {
    for (int p = 0; p < created_; ++p) Page(p)->Update();
    for (auto& s : slots_)
        if (s) s->Update();
}

void CMuForm::SelectOptions(int i) {
    const MuOptionBlock* from = options.Get(i);
    if (!from) return;
    selected_ = i;
    TakeOptions(&block, *from);
    BindPages();
    status = "options changed";
    Host().Status(status);
}

void CMuForm::RemoveOptions() {
    if (selected_ == 0) {
        BindPages();
        return;
    }
    options.Remove(selected_);
    selected_ = std::max(0, selected_ - 1);
    TakeOptions(&block, *options.Get(selected_));
    BindPages();
    status = "options removed";
    Host().Status(status);
}

void CMuForm::Activate(int page) {
    if (page < 0 || page >= created_) return;
    active_ = page;
    status = StatusTitle();
}

std::string CMuForm::StatusTitle() const {
    char title[128];
    if (block.harmin)
        block.ndim == 3 ? std::snprintf(title, sizeof title, "3d data: %d slices", block.nslices)
                        : std::snprintf(title, sizeof title, "2d data");
    else if (block.ndim == 3)
        std::snprintf(title, sizeof title, "3d data: %d slices, %d offsets", block.nslices,
                      block.noff);
    else
        std::snprintf(title, sizeof title, "2d data: %d offsets", block.noff);
    return block.name + ": " + title + "\nfreq: " + FormatFloat(block.mech_freq, "default") +
           ";  phase range: " + FormatFloat(block.phase_range[0], "default") + " ... " +
           FormatFloat(block.phase_range[1], "default");
}

int CMuForm::Continue() {
    Host().Trace("CMuForm::Continue");
    std::string before = block.mag_name + "|" + block.phase_name[0] + "|" + block.phase_name[1] +
                         "|" + block.phase_name[2];
    UpdatePages();
    std::string after = block.mag_name + "|" + block.phase_name[0] + "|" + block.phase_name[1] +
                        "|" + block.phase_name[2];
    if (before != after && active_ < created_ - 1) RemoveLaterPages();
    if (active_ < created_ - 1) {
        Activate(active_ + 1);
        return 0;
    }
    if (active_ == PAGE_LFE) return lfe_->AnyOutput() ? Run() : 0;
    for (int p = PAGE_DATA; p <= std::min(active_, int(PAGE_OUTPUT)); ++p) {
        if (Page(p)->Check()) {
            Activate(PAGE_DATA);
            status = Page(p)->Status();
            Host().Status(status);
            return 1;
        }
    }
    CreatePage(active_ + 1);
    UpdatePages();
    status = StatusTitle();
    Host().Status(status);
    Host().RefreshDisplays();
    return 0;
}

int CMuForm::Apply() {
    CMuDriver::Installed use(*driver_);
    UpdatePages();
    if (active_ == PAGE_FILTER) {
        int bad = filter_->Apply();
        status = filter_->Status();
        Host().Status(status);
        return bad;
    }
    if (active_ == PAGE_OUTPUT && !output_->AnyOutput() && !block.harmin) return 0;
    return Run();
}

int CMuForm::Validate() {
    struct Entry {
        CPageMu* page;
        int shown;  // the page whose text a failure shows
    };
    const Entry order[] = {{data_.get(), PAGE_DATA},
                           {params_.get(), PAGE_PARAMS},
                           {mask_.get(), PAGE_MASK},
                           {wrap_.get(), PAGE_MASK},
                           {filter_.get(), PAGE_DATA},
                           {output_.get(), PAGE_DATA},
                           {slots_[MU_SLOT_CURL].get(), -1},
                           {slots_[MU_SLOT_DF].get(), -1},
                           {slots_[MU_SLOT_SNR].get(), PAGE_DATA},
                           {slots_[MU_SLOT_PG].get(), -1},
                           {lfe_.get(), PAGE_LFE},
                           {slots_[MU_SLOT_DI].get(), -1},
                           {slots_[MU_SLOT_MATCHED].get(), -1}};
    for (int i = 0; i < int(std::size(order)); ++i) {
        CPageMu* page = order[i].page;
        if (!page) continue;
        if (block.harmin && (page == wrap_.get() || page == output_.get())) continue;
        if (!page->Check()) continue;
        // The text shown is the named page's, a mix-up users know.
        CPageMu* shown = order[i].shown >= 0 && Page(order[i].shown) ? Page(order[i].shown) : page;
        for (int p = 0; p < created_; ++p)
            if (Page(p) == page) active_ = p;
        status = shown->Status();
        Host().Status(status);
        return 1;
    }
    return 0;
}

std::vector<MuOutputTarget*> CMuForm::AllTargets() {
    Targets& t = targets;
    return {&t.mask,    &t.magmask,   &t.interp,   &t.r1i1,     &t.amplitude,
            &t.lfe_est, &t.lfe_stiff, &t.lfe_cert, &t.lfe_imu,  &t.lfe_icert,
            &t.pre[0],  &t.pre[1],    &t.pre[2],   &t.temp_r1i1};
}

void CMuForm::SetPasses(int passes) {
    passes_ = passes;
    for (MuOutputTarget* t : AllTargets()) {
        if (t == &targets.mask || (t >= targets.pre && t < targets.pre + 3)) continue;
        t->passes = passes;
        bool summed = t == &targets.lfe_stiff || t == &targets.lfe_cert ||
                      (many_directions && t == &targets.amplitude);
        t->extra = block.wsum && passes > 1 && summed ? 1 : 0;
    }
}

void CMuForm::SetSlot(int slot) {
    for (MuOutputTarget* t : AllTargets()) t->slot = slot;
}

int CMuForm::Chain(int xyz_flavour) {
    try {
        if (xyz_flavour)
            (record.nz > 1 ? wave_3d_XYZ : wave_2d_XYZ)(&record);
        else
            (record.nz > 1 ? wave_3d_1axis : wave_2d_1axis)(&record);
    } catch (const std::bad_alloc&) {
        Host().History("out of memory\r\n");
        return 1;
    }
    return 0;
}

namespace {

// Volume `v` of a target's array as floats; null when it is not there.
const float* VolumeOf(const MuOutputTarget& t, size_t n, int v, size_t floats_per_sample) {
    if (!t.array || !t.array->data) return nullptr;
    size_t offset = size_t(t.append_offset) / sizeof(float) + n * floats_per_sample * size_t(v);
    if ((offset + n * floats_per_sample) * sizeof(float) > t.array->Bytes()) return nullptr;
    return static_cast<const float*>(t.array->data) + offset;
}

}  // namespace

int CMuForm::Accumulate(int pass) {
    size_t n = size_t(record.nx) * size_t(record.ny) * size_t(std::max(record.nz, 1));
    const MuOutputTarget& h = targets.r1i1.Active() ? targets.r1i1 : targets.temp_r1i1;
    const float* pair = VolumeOf(h, n, pass, 2);
    if (!pair) return 0;
    try {
        weights.resize(n);
    } catch (const std::bad_alloc&) {
        Host().History("out of memory\r\n");
        return 1;
    }
    for (size_t i = 0; i < n; ++i) weights[i] = std::hypot(pair[2 * i], pair[2 * i + 1]);
    const char* error = ADD_weighted_sum(&wsum_slot[0], weights.data(), nullptr, int(n), 0, 0);
    struct Summed {
        const MuOutputTarget* t;
        int slot, invert;
    } const summed[] = {{&targets.lfe_stiff, 2, 1}, {&targets.lfe_cert, 3, 0}};
    if (many_directions)
        if (const float* amp = VolumeOf(targets.amplitude, n, pass, 1))
            if (!error) error = ADD_weighted_sum(&wsum_slot[1], amp, nullptr, int(n), 0, 0);
    for (const Summed& s : summed) {
        const float* plane = VolumeOf(*s.t, n, pass, 1);
        if (plane && !error)
            error =
                ADD_weighted_sum(&wsum_slot[s.slot], plane, weights.data(), int(n), s.invert, 0);
    }
    if (error) Host().History(std::string(error) + "\r\n");
    return error ? 1 : 0;
}

int CMuForm::Finish(int passes, double a, double) {
    size_t n = size_t(record.nx) * size_t(record.ny) * size_t(std::max(record.nz, 1));
    const char* error = nullptr;
    auto store = [&](MuOutputTarget& t, float* out) {
        if (out && t.Active())
            StorePlaneFloat(space, out, &record, &t, passes, passes + t.extra, nullptr);
        std::free(out);
    };
    if (many_directions && wsum_slot[1]) {
        float* out = nullptr;
        error = CALC_scaled_sum(&wsum_slot[1], &out, float(a), 1);
        store(targets.amplitude, out);
    }
    struct Summed {
        MuOutputTarget* t;
        int slot, invert;
    } const summed[] = {{&targets.lfe_stiff, 2, 1}, {&targets.lfe_cert, 3, 0}};
    for (const Summed& s : summed) {
        if (!wsum_slot[s.slot] || error) continue;
        float* out = nullptr;
        error = CALC_weighted_avg(&wsum_slot[s.slot], wsum_slot[0], &out, int(n), s.invert, 1);
        store(*s.t, out);
    }
    if (error) Host().History(std::string(error) + "\r\n");
    return error ? 1 : 0;
}

void CMuForm::EndRun() {
    // Temporaries have no look; the pre-filter outputs are the data of later runs.
    for (MuOutputTarget* t : AllTargets())
        if (t->Active() && !t->look && !(t >= targets.pre && t < targets.pre + 3))
            space.DelData(t->name.c_str());
    for (uint32_t& slot : wsum_slot) free_sequence(&slot);
    weights.clear();
    weights.shrink_to_fit();
    status.clear();
    Host().Status(status);
    Host().RefreshDisplays();
}

int CMuForm::PlainLoop(int encodings, int xyz_flavour) {
    SetPasses(xyz_flavour ? 1 : encodings);
    for (int e = 0; e < encodings; ++e) {
        if (Host().Interrupted()) return 0;
        record.component = xyz_flavour ? 0 : e;
        record.ncomponents = xyz_flavour ? 3 : encodings;
        record.angle = 0, record.nangles = 1;
        SetSlot(e);
        if (Chain(xyz_flavour)) return 1;
        if (block.wsum && passes_ > 1 && Accumulate(e)) return 1;
    }
    return block.wsum && passes_ > 1 ? Finish(passes_, 1.0, 1.0) : 0;
}

int CMuForm::AngleLoop(int encodings, int xyz_flavour) {
    int n = block.dirf_2d_nangle;
    double step = block.dirf_space ? 360.0 / n : block.dirf_inc;
    many_directions = n > 5 && block.dirf_space;
    SetPasses(n * encodings);
    for (int i = 0; i < n; ++i) {
        double angle = i * step + block.dirf_angle;
        double r = angle * 0.017453292;
        record.dirf_angle = float(angle);
        if (record.nz != 1) {
            float c = float(std::cos(r)), s = float(std::sin(r));
            float* v = record.dirf_vector;
            switch (block.dirf_2d_dir) {
                case 2:
                    v[0] = 0, v[1] = c, v[2] = s;
                    break;  // x off
                case 1:
                    v[0] = c, v[1] = 0, v[2] = s;
                    break;  // y off
                default:
                    v[0] = c, v[1] = s, v[2] = 0;
                    break;
            }
        }
        for (int e = 0; e < encodings; ++e) {
            if (Host().Interrupted()) return 0;
            record.angle = i, record.nangles = n;
            record.component = xyz_flavour ? 0 : e;
            record.ncomponents = xyz_flavour ? 3 : encodings;
            SetSlot(i * encodings + e);
            if (Chain(xyz_flavour)) return 1;
            if (block.wsum && passes_ > 1 && Accumulate(i * encodings + e)) return 1;
        }
    }
    return block.wsum && passes_ > 1 ? Finish(passes_, 4.0 / n, 16.0 / (3.0 * n)) : 0;
}

int CMuForm::SphereLoop(int encodings) {
    int n = block.dirf_3d_nangle;
    many_directions = n > 19;
    SetPasses(n * encodings);
    for (int i = 0; i < n; ++i) {
        SpherePoint(i, n, record.dirf_vector);
        for (int e = 0; e < encodings; ++e) {
            if (Host().Interrupted()) return 0;
            record.angle = i, record.nangles = n;
            record.component = e, record.ncomponents = encodings;
            SetSlot(i * encodings + e);
            if (Chain(0)) return 1;
            if (block.wsum && passes_ > 1 && Accumulate(i * encodings + e)) return 1;
        }
    }
    return block.wsum && passes_ > 1 ? Finish(passes_, 6.0 / n, 10.0 / n) : 0;
}

int CMuForm::Run() {
    Host().Trace("CMuForm::Run");
    CMuDriver::Installed use(*driver_);
    // 1: the controls, over the rest values of the record.
    record = wave_params();
    targets = Targets();
    many_directions = 0;
    UpdatePages();
    // 2
    if (Validate()) return 1;
    // 3
    if (block.noff == 1) record.lfe_noft = 1;
    // 4: every page's stage, in the order of the chain.
    CPageMu* const prepare[] = {mask_.get(),
                                wrap_.get(),
                                filter_.get(),
                                output_.get(),
                                slots_[MU_SLOT_CURL].get(),
                                slots_[MU_SLOT_DF].get(),
                                slots_[MU_SLOT_SNR].get(),
                                slots_[MU_SLOT_PG].get(),
                                lfe_.get(),
                                slots_[MU_SLOT_DI].get(),
                                slots_[MU_SLOT_MATCHED].get()};
    for (CPageMu* page : prepare) {
        if (page && page->Prepare()) {
            EndRun();
            status = page->Status();
            Host().Status(status);
            return 1;
        }
    }
    std::string report;
    for (int p = 0; p < created_; ++p) Page(p)->Report(&report);
    for (auto& s : slots_)
        if (s) s->Report(&report);
    for (size_t at = 0; at < report.size();) {
        size_t end = report.find("\r\n", at);
        end = end == std::string::npos ? report.size() : end + 2;
        Host().History(report.substr(at, end - at));
        at = end;
    }
    // 5
    Host().RefreshDisplays();
    bool angles = block.ndim >= 2 && block.dirf_2d_on && block.dirf_2d_nangle >= 2;
    bool sphere = !angles && block.ndim == 3 && block.dirf_3d_on && block.dirf_3d_nangle >= 2;
    if (block.wsum && !targets.r1i1.Active() && (angles || sphere || block.xyz)) {
        targets.temp_r1i1 = MuOutputTarget();
        targets.temp_r1i1.name = kMuTempR1i1;
        record.r1i1_out = targets.temp_r1i1.Handle();
    }
    // 6: the engine counts waves per metre, the sheet cycles per field of view.
    record.lfe_base_freq = block.lfe_base_freq / record.fov[0];
    int encodings = block.xyz ? 3 : 1;
    int xyz_flavour = block.xyz && block.di_aide;
    if (xyz_flavour) encodings = 1;
    // 7
    int bad = angles   ? AngleLoop(encodings, xyz_flavour)
              : sphere ? SphereLoop(encodings)
                       : PlainLoop(encodings, xyz_flavour);
    // 8
    EndRun();
    return bad;
}
