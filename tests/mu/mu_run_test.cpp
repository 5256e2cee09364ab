#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <string>

#include "mu/mu_form.h"
#include "mu_fixture.h"
#include "tests/peer.h"

namespace {

// The expected outputs of a harmonic run: the mask is the magnitude at or above the
// threshold; the masked magnitude holds the mean of the mask outside it; the displacement is
// the harmonic's amplitude in microns (menc per radian of the range), 0 outside.
constexpr const char* kReference = R"(
mag = peer.load(FOLDER, "mag").astype(np.float64)
r1 = peer.load(FOLDER, "r1")
mask = mag >= 10
lo, hi = np.float32(-3.1415927), np.float32(3.1415927)
scale = 2 * np.pi / (float(hi) - float(lo)) * 3.0
peer.save(FOLDER, "amp", np.where(mask, np.abs(r1) * scale, 0).astype(np.float32))
peer.save(FOLDER, "magout", np.where(mask, mag, mag[mask].mean()).astype(np.float32))
peer.save(FOLDER, "r1i1", r1.astype(np.complex64))
)";

class MuRunTest : public MuFormTest {
  public:
    void Inputs(res_t nz, const char* phase = "r1", float twist = 0.0f) {
        const res_t nx = 20, ny = 16;
        Real("mag", nx, ny, nz, 1, [=](size_t i) {
            size_t x = i % nx, y = (i / nx) % ny;
            return x > 3 && x < 17 && y > 2 && y < 13 ? 80.0f + float(x) : 2.0f + float(i % 3);
        });
        Complex(phase, nx, ny, nz, 1, [=](size_t i) {
            float x = float(i % nx), y = float((i / nx) % ny), z = float(i / (nx * ny));
            float a = 0.3f * x + 0.2f * y + 0.5f * z + twist;
            return std::polar(1.0f + 0.1f * x, a);
        });
    }
    // Data, params (fov, menc, range -pi ... pi) and the output page with its three outputs.
    void Sheet(int xyz) {
        Open(CMuForm::PAGE_PARAMS, "mag", "r1", 1);
        if (xyz) {
            Open(CMuForm::PAGE_DATA, "mag", "r1", 1);
            form->Data()->c.xyz = 1;
            form->Data()->c.phase[1] = "r1y";
            form->Data()->c.phase[2] = "r1z";
            ASSERT_EQ(form->Continue(), 0) << form->status;
        }
        CPageMuParams* p = form->Params();
        p->c.fov[0] = 0.2f, p->c.fov[1] = 0.16f, p->c.fov[2] = 0.04f;
        p->c.menc = 3.0f;
        p->SetPhasePreset(3);
        while (form->ActivePage() < CMuForm::PAGE_OUTPUT)
            ASSERT_EQ(form->Continue(), 0) << form->status;
        form->base_name = "liver";
        form->count = 2;
    }
};

TEST_F(MuRunTest, HarmonicDataThroughTheOutputPage) {
    for (res_t nz : {res_t(1), res_t(4)}) {
        SCOPED_TRACE(nz);
        Inputs(nz);
        Sheet(0);
        CPageMuOutput* out = form->Output();
        out->c.magmask_out = out->c.r1i1_out = out->c.amplitude_out = 1;
        host.history.clear();
        ASSERT_EQ(form->Apply(), 0) << form->status;
        peer::Peer p;
        p.Put("mag", space.FindData("mag"));
        p.Put("r1", space.FindData("r1"));
        ASSERT_TRUE(p.RunText(kReference));
        const char* names[][2] = {{"r1i102", "r1i1"}, {"amp_02", "amp"}, {"mag_02", "magout"}};
        for (auto [ours, theirs] : names) {
            SCOPED_TRACE(ours);
            CZrkData* a = space.FindData(ours);
            ASSERT_NE(a, nullptr) << host.history_text;
            EXPECT_TRUE(peer::Near(peer::FromRecord(a), p.Get(theirs), 2e-6));
            // Millimetres from the field of view.
            EXPECT_FLOAT_EQ(a->mm[0], 10.0f);
            EXPECT_FLOAT_EQ(a->mm[1], 10.0f);
            EXPECT_FLOAT_EQ(a->mm[2], nz > 1 ? 10.0f : 1.0f);
        }
        EXPECT_NE(host.history_text.find("phase complex harmonic\r\nphase:\"r1\"\r\n"),
                  std::string::npos);
        EXPECT_NE(host.history_text.find("r1i1: r1i102\r\n"), std::string::npos);
        EXPECT_NE(host.history_text.find("displacement map in microns: amp_02\r\n"),
                  std::string::npos);
        EXPECT_NE(host.history_text.find("phase range: [-3.14 ... 3.14]\r\n"), std::string::npos);
        EXPECT_EQ(form->status, "");
        for (const char* name : {"r1i102", "amp_02", "mag_02", "quelmor.mask"}) space.DelData(name);
    }
}

TEST_F(MuRunTest, AppendDataKeepsTheOldPlanes) {
    Inputs(1);
    Sheet(0);
    form->Output()->c.r1i1_out = 1;
    ASSERT_EQ(form->Apply(), 0) << form->status;
    std::vector<float> first = Floats("r1i102");
    ASSERT_EQ(first.size(), 2u * 20 * 16);
    Inputs(1, "r1", 1.0f);
    form->append_data = 1;
    ASSERT_EQ(form->Apply(), 0) << form->status;
    std::vector<float> both = Floats("r1i102");
    ASSERT_EQ(both.size(), 2 * first.size());
    EXPECT_TRUE(std::equal(first.begin(), first.end(), both.begin()));
    auto* r1 = static_cast<const float*>(space.FindData("r1")->data);
    EXPECT_TRUE(std::equal(r1, r1 + first.size(), both.begin() + ptrdiff_t(first.size())));
    EXPECT_EQ(space.FindData("r1i102")->nz, 2u);
    // A name that is not there stops at the page's own text: harmonic data skip the output
    // page's check, its stage refuses.
    form->Output()->c.r1i1_out = 0;
    form->Output()->c.amplitude_out = 1;
    EXPECT_EQ(form->Apply(), 1);
    EXPECT_EQ(form->status, "append displacement output not found");
    EXPECT_EQ(space.FindData("amp_02"), nullptr);
}

// Watches the data space while the engine stores.
class Watch : public CMuDriver {
  public:
    using CMuDriver::CMuDriver;
    int store_image(const float* buf, wave_params* p, int kind, float** temp, wave_output out,
                    int index, int total) override {
        held += Space().FindData(kMuTempR1i1) != nullptr;
        ++stores;
        return CMuDriver::store_image(buf, p, kind, temp, out, index, total);
    }
    int held = 0, stores = 0;
};

TEST_F(MuRunTest, ThreeEncodingsHoldTheTemporaryHarmonicDuringTheRunOnly) {
    Inputs(1, "r1");
    Inputs(1, "r1y", 0.5f);
    Inputs(1, "r1z", 1.5f);
    Sheet(1);
    form->Output()->c.amplitude_out = 1;
    auto watch = std::make_unique<Watch>(space);
    Watch* w = watch.get();
    form->SetDriver(std::move(watch));
    ASSERT_EQ(form->Apply(), 0) << form->status;
    // Made at the first pass's harmonic store, after its displacement; there for the others.
    EXPECT_EQ(w->stores, 3);
    EXPECT_EQ(w->held, 2);
    EXPECT_EQ(space.FindData(kMuTempR1i1), nullptr);
    // One displacement map per encoding, each from its own axis.
    CZrkData* amp = space.FindData("amp_02");
    ASSERT_NE(amp, nullptr);
    EXPECT_EQ(amp->nz, 3u);
    auto* a = static_cast<const float*>(amp->data);
    size_t inside = 10 + 20 * 8;
    EXPECT_NEAR(a[inside], 3.0 * (1.0 + 0.1 * 10), 1e-4);
    EXPECT_FLOAT_EQ(a[inside], a[inside + 320]);
    EXPECT_FLOAT_EQ(a[inside], a[inside + 640]);
}

// Records the displays a run asks for.
class Displays : public CMuDriver {
  public:
    using CMuDriver::CMuDriver;
    void OpenDisplay2d(CZrkData* record, const char* palette) override {
        opened.push_back(std::string(record->name) + " " + palette);
    }
    std::vector<std::string> opened;
};

// What each method must give. Quality guided honours the mask as skimage's unwrapper does:
// skimage's result, moved by the whole cycles that bring it nearest ours (where the result
// sits in cycles is each unwrapper's own choice). The other two see the mid-range fill;
// minimum discontinuity finds cuts through the region that shorten the jumps at its edge
// worth making, so those two must only move each sample by whole cycles ("agree" tells
// where they meet skimage). 0 outside the mask for all.
constexpr const char* kUnwrapReference = R"(
from skimage.restoration import unwrap_phase
ph = peer.load(FOLDER, "ph").astype(np.float64)
nx, ny = ph.shape[0], ph.shape[1]
ph = ph.reshape(nx, ny, -1)
ours = peer.load(FOLDER, "ours").astype(np.float64).reshape(nx, ny, -1)
mask = peer.load(FOLDER, "mag").reshape(nx, ny) >= 10
want = np.zeros(ph.shape)
agree = []
for t in range(ph.shape[2]):
    wrapped = np.angle(np.exp(1j * ph[:, :, t]))
    sk = unwrap_phase(np.ma.masked_array(wrapped, mask=~mask)).filled(0)
    sk += 2 * np.pi * np.round(np.median((ours[:, :, t] - sk)[mask]) / (2 * np.pi))
    agree.append(np.mean(np.abs(ours[:, :, t] - sk)[mask] < 1e-3))
    cycles = ph[:, :, t] + 2 * np.pi * np.round((ours[:, :, t] - ph[:, :, t]) / (2 * np.pi))
    want[:, :, t] = np.where(mask, sk if METHOD == 1 else cycles, 0)
peer.save(FOLDER, "want", want.reshape(nx, ny, 1, -1).astype(np.float32))
peer.save(FOLDER, "agree", np.array(agree, dtype=np.float32))
)";

TEST_F(MuRunTest, UnwrapStageSolvesTheMaskedPlanesAndZeroesTheRest) {
    const res_t nx = 20, ny = 16, noff = 4;
    Real("mag", nx, ny, 1, 1, [=](size_t i) {
        size_t x = i % nx, y = i / nx;
        return x > 2 && x < 18 && y > 1 && y < 14 ? 90.0f : 1.0f;
    });
    // A ramp of several cycles per plane, wrapped into a range whose middle is not 0, so that
    // the 0 outside the mask tells from the middle; noise outside the mask.
    const double low = -1.0, middle = M_PI - 1.0;
    Real("ph", nx, ny, 1, noff, [&](size_t i) {
        size_t x = i % nx, y = (i / nx) % ny, t = i / (nx * ny);
        double a = 0.9 * double(x) + 0.45 * double(y) + 1.3 * double(t);
        bool inside = x > 2 && x < 18 && y > 1 && y < 14;
        if (!inside) a = 3.0 * std::sin(double(i) * 7.3);
        return float(std::remainder(a - middle, 2 * M_PI) + middle);
    });
    for (int method : {1, 2, 3}) {
        SCOPED_TRACE(method);
        Open(CMuForm::PAGE_PARAMS, "mag", "ph", 0);
        form->Params()->c.noff = int(noff);
        form->Params()->SetPhasePreset(CPageMuParams::kPresetOther);
        form->Params()->c.phase_range[0] = float(low);
        form->Params()->c.phase_range[1] = float(low + 2 * M_PI);
        while (form->ActivePage() < CMuForm::PAGE_OUTPUT)
            ASSERT_EQ(form->Continue(), 0) << form->status;
        auto displays = std::make_unique<Displays>(space);
        Displays* d = displays.get();
        form->SetDriver(std::move(displays));
        form->Wrap()->c.uwmethod = method;
        form->Output()->c.r1i1_out = 1;
        host.history_text.clear();
        host.status.clear();
        ASSERT_EQ(form->Apply(), 0) << form->status;

        CZrkData* out = space.FindData("quelmor.unwrap");
        ASSERT_NE(out, nullptr);
        EXPECT_EQ(out->type, TYPE_R4);
        EXPECT_EQ(out->nt, noff);
        peer::Peer p;
        p.Put("ph", space.FindData("ph"));
        p.Put("mag", space.FindData("mag"));
        p.Put("ours", out);
        ASSERT_TRUE(p.RunText("METHOD = " + std::to_string(method) + kUnwrapReference));
        EXPECT_TRUE(peer::Near(peer::FromRecord(out), p.Get("want"), 1e-5));
        // Graph cut finds skimage's answer too; minimum discontinuity may not (above).
        const std::vector<double> agree = p.Get("agree").Pairs();
        for (size_t k = 0; method != 2 && k < agree.size(); k += 2) EXPECT_EQ(agree[k], 1.0);

        static const char* kBy[] = {"", "quality guided", "minimum discontinuity", "graph cut"};
        EXPECT_NE(host.history_text.find(std::string("Unwrap ph to quelmor.unwrap by ") +
                                         kBy[method] + ":\r\n"),
                  std::string::npos)
            << host.history_text;
        // Once: the run's report does not repeat it.
        EXPECT_EQ(host.history_text.find("Unwrap ph"), host.history_text.rfind("Unwrap ph"));
        for (int k = 1; k <= int(noff); ++k)
            EXPECT_NE(std::find(host.status.begin(), host.status.end(),
                                "\runwrap " + std::to_string(k) + " out of 4"),
                      host.status.end());
        // The chain reads the unwrapped array through its first channel.
        EXPECT_EQ(form->block.phase_name[0], "quelmor.unwrap");
        EXPECT_EQ(form->block.pdif_iqmp[0], 0);
        // A new output opens with the wave palette; one that is there is only refilled.
        EXPECT_EQ(d->opened.front(), "quelmor.unwrap awave");
        ASSERT_EQ(form->Apply(), 0) << form->status;
        EXPECT_EQ(std::count(d->opened.begin(), d->opened.end(), "quelmor.unwrap awave"), 1);
        space.DelData("quelmor.unwrap");
    }
}

}  // namespace
