// quelmor-mu: the wave inversion from a shell, one subject per process. The option block is
// the built-in one, then the --prefs block, then one flag per key; the sheet runs as
// "continue>>" on its last page (or the output page when no estimate is asked for). History
// lines go to standard output, progress and failures to standard error.
//
//   quelmor-mu --mag F --phase F [--phase-y F --phase-z F] [--prefs F [--block NAME]]
//              [--KEY=VALUE]... [--base S] [--count N] [--out DIR] [-q]
//   quelmor-mu --demo [DIR] [--noise SIGMA]
//   quelmor-mu --wave-direction START,STOP,STEP[,COUNT] --phase F [--mag F] [--prefs F]
//              [--KEY=VALUE]... [-q]
//   quelmor-mu --keys
//   quelmor-mu --write-prefs F [--KEY=VALUE]...
//
// Exit status: 0 done, 1 a page or a file refused (its text on stderr), 2 usage.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <fftw3.h>

#include "app/mu_files.h"
#include "core/data_space.h"
#include "core/host.h"
#include "core/key_reader.h"
#include "core/zrk_data.h"
#include "mu/demo_phantom.h"
#include "mu/mu_driver.h"
#include "mu/mu_form.h"
#include "mu/mu_options.h"
#include "shell/option_table.h"
#include "shell/trace.h"
#include "wave/mask.h"
#include "wave/wave_direction.h"

namespace {

class CConsoleHost : public CHost {
  public:
    explicit CConsoleHost(bool quiet) : quiet_(quiet) {}
    void History(const std::string& line) override {
        std::string text = line;
        while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
        std::printf("%s\n", text.c_str());
        std::fflush(stdout);
        history_ += line;
    }
    const std::string& HistoryText() const override { return history_; }
    void ClearHistory() override { history_.clear(); }
    void Status(const std::string& text) override {
        if (quiet_ || text.empty()) return;
        std::fprintf(stderr, "%s\n", text.c_str());
    }
    void Message(const std::string& text) override { std::fprintf(stderr, "%s\n", text.c_str()); }

  private:
    bool quiet_;
    std::string history_;
};

int Usage(const char* why) {
    if (why) std::fprintf(stderr, "quelmor-mu: %s\n", why);
    std::fprintf(stderr,
                 "usage: quelmor-mu --mag F --phase F [--phase-y F --phase-z F] [--prefs F "
                 "[--block NAME]]\n"
                 "                  [--KEY=VALUE]... [--base S] [--count N] [--out DIR] [-q]\n"
                 "       quelmor-mu --demo [DIR] [--noise SIGMA]\n"
                 "       quelmor-mu --wave-direction START,STOP,STEP[,COUNT] --phase F [--mag F]\n"
                 "                  [--prefs F [--block NAME]] [--KEY=VALUE]... [-q]\n"
                 "       quelmor-mu --keys\n"
                 "       quelmor-mu --write-prefs F [--KEY=VALUE]...\n");
    return 2;
}

int Fail(const std::string& text) {
    std::fprintf(stderr, "quelmor-mu: %s\n", text.c_str());
    return 1;
}

struct Job {
    std::string mag, phase[3], prefs, block, base, out = ".", write_prefs, demo;
    std::vector<std::string> keys;  // "fov= 0.2 0.2 0.05"
    int count = 1;
    bool quiet = false, list_keys = false, demo_run = false, fov_given = false;
    double noise = 0.0;
    bool direction_run = false;
    wave_range angles;
};

// One key line into the block; false when no key takes it.
bool ApplyKey(MuOptionBlock* block, const std::string& line) {
    std::string text = line + "\n";
    FILE* f = fmemopen(text.data(), text.size(), "r");
    if (!f) return false;
    CKeyReader reader(f);
    int taken = 0;
    try {
        reader.Next();
        bool ended = false;
        taken = block->ReadKey(reader, &ended);
    } catch (const CKeyReader::EndOfFile&) {
        // A filter switch reads its record to the end of the text; what it read stays.
        taken = 1;
    }
    std::fclose(f);
    return taken != 0;
}

// The block of the run: reset, then the --prefs block, then the flags.
int AssembleBlock(const Job& job, CMuOptions* options, bool* fov_given) {
    MuOptionBlock* block = options->Get(0);
    *fov_given = false;
    if (!job.prefs.empty()) {
        if (!std::filesystem::exists(job.prefs))
            return Fail("cannot read preferences: " + job.prefs);
        CMuOptions read;
        COptionTable table;
        table.SetMuEstimationReader([&read](CKeyReader& r) { read.ScanfOptions(r); });
        table.ReadOptions(job.prefs);
        int chosen = read.Count() > 1 ? 1 : 0;
        if (!job.block.empty()) {
            chosen = -1;
            for (int i = 1; i < read.Count(); ++i)
                if (read.Get(i)->name == job.block) chosen = i;
            if (chosen < 0) return Fail("no option block named " + job.block + " in " + job.prefs);
        }
        if (chosen == 0) return Fail("no option block in " + job.prefs);
        block->Copy(*read.Get(chosen));
        MuOptionBlock reset;
        *fov_given = std::memcmp(block->fov, reset.fov, sizeof reset.fov) != 0;
    }
    for (const std::string& key : job.keys) {
        if (!ApplyKey(block, key)) {
            std::string flag = key.substr(0, key.find('=')) + "=";
            return Usage(("unknown option: --" + flag).c_str());
        }
        if (key.compare(0, 5, "fov= ") == 0) *fov_given = true;
    }
    return 0;
}

// Splits a phase file holding the three encodings along u into three arrays.
bool SplitEncodings(CDataSpace& space, CZrkData* phase, std::string names[3]) {
    if (phase->nu != 3 || phase->nv != 1) return false;
    uint64_t per = phase->Bytes() / 3;
    static const char* kNames[] = {"phase_x", "phase_y", "phase_z"};
    for (int a = 0; a < 3; ++a) {
        CZrkData* p =
            space.NewData(phase->type, phase->nx, phase->ny, phase->nz, phase->nt, 1, 1, kNames[a]);
        if (!p || !p->data) return false;
        std::memcpy(p->data, static_cast<const char*>(phase->data) + per * a, per);
        p->CopyMm(*phase);
        names[a] = kNames[a];
    }
    space.DelData(phase->name);
    return true;
}

// The run of one subject; its outputs stay in `space` and are written to job.out.
int RunInversion(const Job& job, CDataSpace& space) {
    CMuOptions options;
    bool fov_given = false;
    if (int bad = AssembleBlock(job, &options, &fov_given)) return bad;
    MuGeometry geometry;
    std::string error;
    CZrkData* mag = ReadInputArray(space, job.mag, "mag", &geometry, &error);
    if (!mag) return Fail(error);
    std::string names[3] = {"phase", "", ""};
    CZrkData* phase = ReadInputArray(space, job.phase[0], "phase", nullptr, &error);
    if (!phase) return Fail(error);
    bool xyz = !job.phase[1].empty() || !job.phase[2].empty();
    if (xyz) {
        for (int a = 1; a < 3; ++a) {
            names[a] = a == 1 ? "phase_y" : "phase_z";
            if (job.phase[a].empty()) return Usage("--phase-y and --phase-z go together");
            if (!ReadInputArray(space, job.phase[a], names[a].c_str(), nullptr, &error))
                return Fail(error);
        }
    } else if (phase->nu == 3) {
        if (!SplitEncodings(space, phase, names)) return Fail("out of memory");
        xyz = true;
        phase = space.FindData(names[0].c_str());
    }
    MuOptionBlock* block = options.Get(0);
    if (xyz) block->xyz = 1;
    if (phase->IsComplex()) block->harmin = 1;
    if (!fov_given)
        for (int d = 0; d < 3; ++d) {
            res_t n = d == 0 ? mag->nx : d == 1 ? mag->ny : mag->nz;
            block->fov[d] = float(double(n) * mag->mm[d] / 1000.0);
        }
    if (!geometry.oriented)
        std::fprintf(stderr, "quelmor-mu: %s has no orientation; outputs keep its spacing only\n",
                     job.mag.c_str());

    CMuForm form(space, options);
    form.base_name = job.base;
    form.count = job.count;
    form.block.noff = block->harmin ? 3 : int(std::max<res_t>(phase->nt, 1));
    CPageMuData* data = form.Data();
    data->c.magnitude = "mag";
    data->c.harmin = block->harmin;
    data->c.xyz = block->xyz;
    for (int a = 0; a < 3; ++a) data->c.phase[a] = names[a];
    while (form.ActivePage() < CMuForm::PAGE_LFE)
        if (form.Continue()) return Fail(form.status);
    int bad;
    if (form.Lfe()->AnyOutput()) {
        bad = form.Continue();
    } else {
        if (!form.Output()->AnyOutput() && !block->harmin)
            return Fail("nothing to do: no output is asked for");
        form.Activate(CMuForm::PAGE_OUTPUT);
        bad = form.Apply();
    }
    if (bad) return Fail(form.status);

    std::error_code ec;
    std::filesystem::create_directories(job.out, ec);
    auto& t = form.targets;
    for (const MuOutputTarget* target :
         {&t.mask, &t.magmask, &t.interp, &t.r1i1, &t.amplitude, &t.lfe_est, &t.lfe_stiff,
          &t.lfe_cert, &t.lfe_imu, &t.lfe_icert}) {
        if (!target->Active()) continue;
        CZrkData* a = space.FindData(target->name.c_str());
        if (!a || !a->data) continue;
        std::string path = job.out + "/" + target->name + ".nii.gz";
        if (WriteNifti(a, geometry, path, &error)) return Fail(error);
    }
    return 0;
}

// The demo phantom's files, in NIfTI with a scanner-like geometry centred on the origin.
int WriteDemoInputs(const CDemoPhantom& ph, const std::string& dir) {
    const CDemoPhantomSpec& s = ph.spec;
    MuGeometry g;
    g.oriented = true;
    g.qform_code = g.sform_code = 1;
    double mm = s.voxel * 1000.0;
    int n[3] = {s.nx, s.ny, s.nz};
    for (int d = 0; d < 3; ++d) {
        g.spacing[d] = mm;
        g.qoffset[d] = -0.5 * (n[d] - 1) * mm;
        g.srow[d][d] = mm;
        g.srow[d][3] = g.qoffset[d];
    }
    std::error_code ec;
    std::filesystem::create_directories(dir, ec);
    struct File {
        const char* name;
        const std::vector<float>* values;
        res_t nt, nu;
    } files[] = {{"demo_mag.nii.gz", &ph.magnitude, 1, 1},
                 {"demo_phase.nii.gz", &ph.phase, res_t(s.noff), res_t(s.ncomp)},
                 {"demo_truth_stiff.nii.gz", &ph.stiffness, 1, 1}};
    for (const File& f : files) {
        CZrkData a;
        a.SetHeader(TYPE_R4, res_t(s.nx), res_t(s.ny), res_t(s.nz), f.nt, f.nu, 1);
        a.data = const_cast<float*>(f.values->data());
        a.SetMm(float(mm), float(mm), float(mm), 1, 1, 1);
        std::string error;
        int bad = WriteNifti(&a, g, dir + "/" + f.name, &error);
        a.data = nullptr;
        if (bad) return Fail(error);
    }
    return 0;
}

int Demo(Job job) {
    std::string dir = job.demo.empty() ? "quelmor-mu-demo" : job.demo;
    CDemoPhantomSpec spec;
    spec.noise = job.noise;
    CDemoPhantom ph = MakeDemoPhantom(spec);
    if (int bad = WriteDemoInputs(ph, dir)) return bad;
    // The phantom's phase is in radians.
    job.keys.insert(job.keys.begin(), "phase_range= -3.1415927 3.1415927");
    job.mag = dir + "/demo_mag.nii.gz";
    job.phase[0] = dir + "/demo_phase.nii.gz";
    job.out = dir;
    CDataSpace space;
    if (int bad = RunInversion(job, space)) return bad;
    CZrkData* stiff = space.FindData("lfe_stiff01");
    if (!stiff || !stiff->data) return Fail("no stiffness map was made");
    // The last volume: the weighted sum over the encodings when there are several.
    size_t n = size_t(spec.nx) * spec.ny * spec.nz;
    size_t volumes = stiff->Count() / n;
    auto* last = static_cast<const float*>(stiff->data) + (volumes - 1) * n;
    std::vector<float> estimate(last, last + n);
    for (int r = 0; r <= int(ph.cylinders.size()); ++r) {
        double truth = RegionMedian(ph.stiffness, ph, r, 3);
        double got = RegionMedian(estimate, ph, r, 3);
        std::printf("region %d: true %.2f kPa, estimated %.2f kPa (%+.1f %%)\n", r, truth, got,
                    100.0 * (got - truth) / truth);
    }
    return 0;
}

// The wave direction table of one phase array: offsets in x, y, z, t (or the complex
// harmonic), masked by the magnitude's threshold when --mag is given and use_mask is on. The
// block gives fov, harmonic_number=, dirf_cut= and dirf_order=; the phase is taken as it
// stands, so it should be unwrapped.
int RunWaveDirection(const Job& job, CDataSpace& space) {
    CMuOptions options;
    bool fov_given = false;
    if (int bad = AssembleBlock(job, &options, &fov_given)) return bad;
    const MuOptionBlock& b = *options.Get(0);
    std::string error;
    CZrkData* phase = ReadInputArray(space, job.phase[0], "phase", nullptr, &error);
    if (!phase) return Fail(error);
    CZrkData* mag = nullptr;
    if (!job.mag.empty() && !(mag = ReadInputArray(space, job.mag, "mag", nullptr, &error)))
        return Fail(error);
    if (mag && mag->Count() < uint64_t(phase->nx) * phase->ny * phase->nz)
        return Fail("the magnitude is smaller than one phase volume");

    wave_params p;
    p.nx = int(phase->nx);
    p.ny = int(phase->ny);
    p.nz = int(phase->nz);
    p.complex_in = phase->IsComplex() ? 1 : 0;
    p.nt = p.complex_in ? 1 : int(phase->nt);
    std::snprintf(p.data_name[0], sizeof p.data_name[0], "%s", phase->name);
    if (mag) std::snprintf(p.mag_name, sizeof p.mag_name, "%s", mag->name);
    for (int d = 0; d < 3; ++d) {
        int n = d == 0 ? p.nx : d == 1 ? p.ny : p.nz;
        p.fov[d] = fov_given ? b.fov[d] : float(double(n) * phase->mm[d] / 1000.0);
    }
    p.harmonic_number = b.harmonic_number;
    p.dirf_cut[0] = b.dirf_cut[0];
    p.dirf_cut[1] = b.dirf_cut[1];
    p.dirf_order = b.dirf_order;
    p.dirf_ncos = 1;

    CMuDriver driver(space);
    CMuDriver::Installed use(driver);
    size_t npix = size_t(p.nx) * p.ny * p.nz;
    std::vector<float> stack(npix * (p.complex_in ? 2 : std::max(p.nt, 1)));
    if (driver.read_phase_stack(&p, stack.data())) return Fail("invalid phase data");
    std::vector<uint8_t> mask;
    if (mag && b.use_mask) {
        std::vector<float> m(npix);
        if (driver.read_max_magnitude(&p, m.data())) return Fail("invalid magnitude data");
        mask.resize(npix);
        mask_from_magnitude(m.data(), mask.data(), p.nx, p.ny, p.nz, float(b.background),
                            b.smooth_mask);
        if (b.mask_regions || b.mask_voids)
            mask_regions(mask.data(), p.nx, p.ny, p.nz, b.mask_regions ? b.mask_nregions : 0,
                         b.mask_voids ? b.mask_nvoids : -1, p.nz > 1 ? b.mask_2d : 0);
    }
    wave_range angles = job.angles;
    std::vector<double> energy;
    if (wave_direction_analysis(stack.data(), mask.empty() ? nullptr : mask.data(), &p, &angles,
                                &energy))
        return 1;
    // One history line per row, as the window's history takes them.
    std::string table = wave_direction_table(angles, energy);
    for (size_t at = 0, end; (end = table.find("\r\n", at)) != std::string::npos; at = end + 2)
        Host().History(table.substr(at, end + 2 - at));
    return 0;
}

int ListKeys() {
    MuOptionBlock reset;
    reset.Print(stdout);
    return 0;
}

int WritePrefs(const Job& job) {
    CMuOptions options;
    bool fov_given;
    if (int bad = AssembleBlock(job, &options, &fov_given)) return bad;
    CMuOptions out;
    out.Add(1);
    out.Get(1)->Copy(*options.Get(0));
    FILE* f = std::fopen(job.write_prefs.c_str(), "w");
    if (!f) return Fail("cannot write " + job.write_prefs);
    out.PrintfOptions(f);
    return std::fclose(f) == 0 ? 0 : Fail("cannot write " + job.write_prefs);
}

}  // namespace

int main(int argc, char** argv) {
    CTrace trace("quelmor-mu");
    // One process plans each transform shape once: measuring the plans took a third of a run
    // and gained less. Estimated plans are also the same from run to run, so the same input
    // gives the same bits; measured ones depend on the timing of the moment.
    fftwf_set_timelimit(0.0);
    Job job;
    bool write_prefs = false;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        auto value = [&](std::string* out) {
            if (i + 1 >= argc) return false;
            *out = argv[++i];
            return true;
        };
        std::string count;
        if (a == "--mag") {
            if (!value(&job.mag)) return Usage("--mag needs a file");
        } else if (a == "--phase") {
            if (!value(&job.phase[0])) return Usage("--phase needs a file");
        } else if (a == "--phase-y") {
            if (!value(&job.phase[1])) return Usage("--phase-y needs a file");
        } else if (a == "--phase-z") {
            if (!value(&job.phase[2])) return Usage("--phase-z needs a file");
        } else if (a == "--prefs") {
            if (!value(&job.prefs)) return Usage("--prefs needs a file");
        } else if (a == "--block") {
            if (!value(&job.block)) return Usage("--block needs a name");
        } else if (a == "--base") {
            if (!value(&job.base)) return Usage("--base needs a text");
        } else if (a == "--count") {
            if (!value(&count)) return Usage("--count needs a number");
            char* end;
            long n = std::strtol(count.c_str(), &end, 10);
            if (*end || n < 0 || n > 999999) return Usage("--count needs a number");
            job.count = int(n);
        } else if (a == "--out") {
            if (!value(&job.out)) return Usage("--out needs a folder");
        } else if (a == "-q") {
            job.quiet = true;
        } else if (a == "--keys") {
            job.list_keys = true;
        } else if (a == "--write-prefs") {
            if (!value(&job.write_prefs)) return Usage("--write-prefs needs a file");
            write_prefs = true;
        } else if (a == "--demo") {
            job.demo_run = true;
            if (i + 1 < argc && argv[i + 1][0] != '-') job.demo = argv[++i];
        } else if (a == "--wave-direction") {
            std::string s;
            if (!value(&s)) return Usage("--wave-direction needs START,STOP,STEP[,COUNT]");
            wave_range& r = job.angles;
            int n = std::sscanf(s.c_str(), "%f,%f,%f,%d", &r.start, &r.stop, &r.step, &r.count);
            if (n < 3) return Usage("--wave-direction needs START,STOP,STEP[,COUNT]");
            job.direction_run = true;
        } else if (a == "--noise") {
            std::string s;
            char* end;
            if (!value(&s)) return Usage("--noise needs a number");
            job.noise = std::strtod(s.c_str(), &end);
            if (*end || !(job.noise >= 0.0)) return Usage("--noise needs a number");
        } else if (a.compare(0, 2, "--") == 0 && a.find('=') != std::string::npos) {
            // --fov=0.2,0.2,0.05 is the line "fov= 0.2 0.2 0.05".
            size_t eq = a.find('=');
            std::string rest = a.substr(eq + 1);
            for (char& c : rest)
                if (c == ',') c = ' ';
            job.keys.push_back(a.substr(2, eq - 1) + " " + rest);
        } else {
            return Usage(("unknown option: " + a).c_str());
        }
    }
    CConsoleHost host(job.quiet);
    CScopedHost scope(host);
    if (job.list_keys) return ListKeys();
    if (write_prefs) return WritePrefs(job);
    if (job.demo_run) return Demo(job);
    CDataSpace space;
    if (job.direction_run) {
        if (job.phase[0].empty()) return Usage("--wave-direction needs --phase");
        return RunWaveDirection(job, space);
    }
    if (job.mag.empty() || job.phase[0].empty()) return Usage("--mag and --phase are needed");
    return RunInversion(job, space);
}
