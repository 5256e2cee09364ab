#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <numbers>
#include <string>

#include "mu_fixture.h"
#include "tests/peer.h"

namespace {

namespace fs = std::filesystem;

struct Ran {
    int status;
    std::string out, err;
};

Ran RunMu(const std::string& args, const fs::path& dir) {
    std::string out = (dir / "stdout.txt").string(), err = (dir / "stderr.txt").string();
    int s = std::system((std::string(QUELMOR_MU) + " " + args + " >" + out + " 2>" + err).c_str());
    auto slurp = [](const std::string& path) {
        std::string text;
        std::unique_ptr<FILE, int (*)(FILE*)> f(std::fopen(path.c_str(), "r"), std::fclose);
        for (int c; f && (c = std::fgetc(f.get())) != EOF;) text.push_back(char(c));
        return text;
    };
    return {WIFEXITED(s) ? WEXITSTATUS(s) : -1, slurp(out), slurp(err)};
}

// Inputs as a scanner's export: oblique affine, 2.5 x 2.5 x 5 mm, magnitude and the complex
// first harmonic; also as exchange arrays for the run in this process.
constexpr const char* kInputs = R"(
import nibabel as nib
x, y, z = np.meshgrid(np.arange(20), np.arange(16), np.arange(4), indexing="ij")
mag = np.where((x > 3) & (x < 17) & (y > 2) & (y < 13), 80.0 + x, 2.0 + (x + 20 * y) % 3)
r1 = (1 + 0.1 * x) * np.exp(1j * (0.3 * x + 0.2 * y + 0.5 * z))
c, s = np.cos(0.3), np.sin(0.3)
affine = np.array([[2.5 * c, -2.5 * s, 0, -20], [2.5 * s, 2.5 * c, 0, 12], [0, 0, 5, -7],
                   [0, 0, 0, 1]])
for name, data in (("mag", mag.astype(np.float32)), ("r1", r1.astype(np.complex64))):
    img = nib.Nifti1Image(data, affine)
    img.set_qform(affine, 1)
    img.set_sform(affine, 1)
    nib.save(img, f"{FOLDER}/{name}.nii.gz")
    peer.save(FOLDER, name, data)
np.save(f"{FOLDER}/affine.npy", affine)
)";

constexpr const char* kOutputs = R"(
import nibabel as nib
affine = np.load(f"{FOLDER}/affine.npy")
for name in ("r1i102", "amp_02", "mag_02"):
    img = nib.load(f"{FOLDER}/out/{name}.nii.gz")
    assert np.allclose(img.affine, affine, atol=1e-4), (name, img.affine)
    assert np.allclose(img.get_qform(), affine, atol=1e-4), name
    assert img.get_data_dtype() in (np.float32, np.complex64), img.get_data_dtype()
    peer.save(FOLDER, "file_" + name, np.asarray(img.dataobj))
)";

class MuCliTest : public MuFormTest {
  protected:
    void SetUp() override {
        ASSERT_TRUE(p.RunText(kInputs));
        dir = p.Dir();
        common = "--mag " + (dir / "mag.nii.gz").string() + " --phase " +
                 (dir / "r1.nii.gz").string() +
                 " --lfe_stiff_out=0 --r1i1_out=1 --amplitude_out=1 --magmask_out=1 --menc=3"
                 " --phase_range=-3.1415927,3.1415927 --base liver --count 2 -q";
    }
    peer::Peer p;
    fs::path dir;
    std::string common;
};

TEST_F(MuCliTest, WritesTheInProcessSamplesWithTheInputGeometry) {
    Ran r = RunMu(common + " --out " + (dir / "out").string(), dir);
    ASSERT_EQ(r.status, 0) << r.err;
    // The field of view comes from the magnitude's size and spacing.
    EXPECT_NE(r.out.find("FOV: 0.050000, 0.040000, 0.020000"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("r1i1: r1i102"), std::string::npos);
    ASSERT_TRUE(p.RunText(kOutputs));

    // The same sheet in this process.
    peer::Array mag = p.Get("mag"), r1 = p.Get("r1");
    Real("mag", 20, 16, 4, 1,
         [&](size_t i) { return reinterpret_cast<const float*>(mag.bytes.data())[i]; });
    Complex("r1", 20, 16, 4, 1, [&](size_t i) {
        auto* f = reinterpret_cast<const float*>(r1.bytes.data());
        return std::complex<float>(f[2 * i], f[2 * i + 1]);
    });
    Open(CMuForm::PAGE_PARAMS, "mag", "r1", 1);
    CPageMuParams* params = form->Params();
    params->c.fov[0] = 0.05f, params->c.fov[1] = 0.04f, params->c.fov[2] = 0.02f;
    params->c.menc = 3;
    params->c.phase_range[0] = -3.1415927f, params->c.phase_range[1] = 3.1415927f;
    while (form->ActivePage() < CMuForm::PAGE_OUTPUT) ASSERT_EQ(form->Continue(), 0);
    form->base_name = "liver", form->count = 2;
    CPageMuOutput* out = form->Output();
    out->c.r1i1_out = out->c.amplitude_out = out->c.magmask_out = 1;
    ASSERT_EQ(form->Apply(), 0) << form->status;
    for (const char* name : {"r1i102", "amp_02", "mag_02"}) {
        SCOPED_TRACE(name);
        peer::Array file = p.Get(std::string("file_") + name);
        peer::Array ours = peer::FromRecord(space.FindData(name));
        EXPECT_EQ(file.bytes, ours.bytes);
    }
}

// Any file the open dialog reads serves as input: the same data as MAT files, with the field
// of view given, give the same samples as the NIfTI files.
TEST_F(MuCliTest, ReadsTheKindsTheOpenDialogReads) {
    ASSERT_TRUE(
        p.RunText("import scipy.io\n"
                  "scipy.io.savemat(FOLDER + '/mag.mat', {'mag': peer.load(FOLDER, 'mag')})\n"
                  "scipy.io.savemat(FOLDER + '/r1.mat', {'r1': peer.load(FOLDER, 'r1')})\n"));
    Ran nifti = RunMu(common + " --out " + (dir / "from_nifti").string(), dir);
    ASSERT_EQ(nifti.status, 0) << nifti.err;
    const std::string mat = "--mag " + (dir / "mag.mat").string() + " --phase " +
                            (dir / "r1.mat").string() + common.substr(common.find(" --lfe")) +
                            " --fov=0.05,0.04,0.02";
    Ran r = RunMu(mat + " --out " + (dir / "from_mat").string(), dir);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(
        p.RunText("import nibabel as nib\n"
                  "for n in ('r1i102', 'amp_02', 'mag_02'):\n"
                  "    a = np.asarray(nib.load(f'{FOLDER}/from_nifti/{n}.nii.gz').dataobj)\n"
                  "    b = np.asarray(nib.load(f'{FOLDER}/from_mat/{n}.nii.gz').dataobj)\n"
                  "    assert a.shape == b.shape and np.array_equal(a, b), n\n"));
}

TEST_F(MuCliTest, RefusesBadInputWithoutPartialFiles) {
    fs::path out = dir / "bad";
    struct Case {
        std::string args;
        int status;
        const char* text;
    } cases[] = {
        {common + " --bogus=1", 2, "unknown option: --bogus="},
        {common + " --count", 2, "--count needs a number"},
        {"--mag " + (dir / "missing.nii.gz").string() + " --phase x.nii.gz", 1,
         "cannot read NIfTI file"},
        {"--mag " + (dir / "mag.nii.gz").string() + " --phase " + (dir / "stdout.txt").string(), 1,
         "resolutions don't make sense"},
        {common + " --mech_freq=0", 1, "mechanical frequency must be above 0"},
        {common + " --fov=0.2,0,0.1", 1, "field of view must be above 0"},
        {common + " --prefs " + (dir / "none.txt").string(), 1, "cannot read preferences"},
        {"--mag " + (dir / "mag.nii.gz").string() + " --phase " + (dir / "mag.nii.gz").string() +
             " --lfe_stiff_out=0",
         1, "nothing to do: no output is asked for"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        Ran r = RunMu(c.args + " --out " + out.string(), dir);
        EXPECT_EQ(r.status, c.status);
        EXPECT_NE(r.err.find(c.text), std::string::npos) << r.err;
        EXPECT_TRUE(!fs::exists(out) || fs::is_empty(out));
    }
}

TEST_F(MuCliTest, PreferenceBlocksAndFlags) {
    std::string prefs = (dir / "prefs.txt").string();
    Ran w = RunMu("--write-prefs " + prefs + " --name=liver50 --mech_freq=50 --lfe_nbands=7", dir);
    ASSERT_EQ(w.status, 0) << w.err;
    // The block as written, then a flag over it.
    Ran r = RunMu(
        common + " --prefs " + prefs + " --block liver50 --menc=4 --out " + (dir / "o2").string(),
        dir);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("mechanical frequency: 50.000000"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("menc: 4.000000"), std::string::npos);
    Ran missing = RunMu(common + " --prefs " + prefs + " --block kidney", dir);
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("no option block named kidney"), std::string::npos);
    Ran keys = RunMu("--keys", dir);
    EXPECT_EQ(keys.status, 0);
    EXPECT_NE(keys.out.find("lfe_stiff= lfe_stiff%02d\n"), std::string::npos);
}

TEST_F(MuCliTest, WaveDirectionTableOfTheHarmonic) {
    // A plane wave of 3 and 2 cycles over 50 x 40 mm: its spectrum lies at atan2(2/0.04,
    // 3/0.05) of the grid, which the direction filter reaches at minus that angle, theta =
    // 320.19 degrees. Each sector weights its amplitude by cos(a - theta)^2, so the energies
    // go as cos(a - theta)^4 inside the half-plane and are 0 beyond it.
    ASSERT_TRUE(p.RunText(R"(
import nibabel as nib
x, y, z = np.meshgrid(np.arange(20), np.arange(16), np.arange(4), indexing="ij")
u = np.exp(2j * np.pi * (3 * x / 20 + 2 * y / 16)).astype(np.complex64)
nib.save(nib.Nifti1Image(u, np.diag([2.5, 2.5, 5, 1])), f"{FOLDER}/pw.nii.gz")
)"));
    std::string phase = " --phase " + (dir / "pw.nii.gz").string();
    std::string args = "--wave-direction 0,359,30" + phase + " --dirf_cut=1,8 -q";
    Ran all = RunMu(args, dir);
    ASSERT_EQ(all.status, 0) << all.err;
    EXPECT_EQ(all.out.rfind("  angle  energy  % max \n", 0), 0u) << all.out;
    const double theta = 360.0 - std::atan2(2 / 0.04, 3 / 0.05) * 180.0 / std::numbers::pi;
    auto cos4 = [&](double a) {
        double c = std::cos((a - theta) * std::numbers::pi / 180.0);
        return c > 0 ? c * c * c * c : 0.0;
    };
    int rows = 0;
    double e330 = 0;
    for (size_t at = all.out.find('\n') + 1; at < all.out.size(); at = all.out.find('\n', at) + 1) {
        double angle, energy, share;
        if (std::sscanf(all.out.c_str() + at, "%lf %lf %lf", &angle, &energy, &share) != 3) break;
        EXPECT_DOUBLE_EQ(angle, 30.0 * rows++);
        EXPECT_NEAR(share, 100.0 * cos4(angle) / cos4(330.0), 0.02) << angle;
        if (angle == 330.0) e330 = energy;
    }
    EXPECT_EQ(rows, 12);

    // The magnitude's mask counts fewer pixels; a band-pass without cut-offs is refused.
    Ran masked = RunMu(args + " --mag " + (dir / "mag.nii.gz").string(), dir);
    ASSERT_EQ(masked.status, 0) << masked.err;
    double m330 = -1;
    size_t at = masked.out.find(" 330.00 ");
    ASSERT_NE(at, std::string::npos) << masked.out;
    std::sscanf(masked.out.c_str() + at, "%*f %lf", &m330);
    EXPECT_GT(m330, 0.0);
    EXPECT_LT(m330, 0.9 * e330);
    Ran bad = RunMu("--wave-direction 0,359,30" + phase + " --dirf_cut=0,0 -q", dir);
    EXPECT_EQ(bad.status, 1);
    EXPECT_NE(bad.out.find("filter cut-offs must be above 0"), std::string::npos) << bad.out;
    EXPECT_EQ(RunMu("--wave-direction 0" + phase, dir).status, 2);
    EXPECT_EQ(RunMu("--wave-direction 0,359,30", dir).status, 2);
}

}  // namespace
