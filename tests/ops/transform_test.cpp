// Transforms, windows, kernels and interp: against NumPy and SciPy run for real, through the
// equation language, and their sizes, texts and edge cases.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/host.h"
#include "core/zrk_error.h"
#include "eval/function_table.h"
#include "ops/ft_options.h"
#include "ops/interp.h"
#include "ops/transform.h"
#include "ops/window.h"
#include "tests/eval/eval_fixture.h"
#include "tests/ops/op_test_util.h"
#include "tests/peer.h"

namespace {

using cfloat = std::complex<float>;

// The elements of a record as complex numbers (q = 0 for a real one).
std::vector<cfloat> Complex(const CZrkData* a) {
    std::vector<cfloat> out(a->Count());
    CDataCursor<float> c(a);
    for (uint64_t k = 0; k < out.size(); ++k) {
        float pair[2];
        c.GetIQ(pair, k);
        out[k] = {pair[0], pair[1]};
    }
    return out;
}

CZrkData* Random(CDataSpace& s, const char* name, int type, std::vector<res_t> shape,
                 std::mt19937& g) {
    shape.resize(6, 1);
    CZrkData* a = s.NewData(type, shape[0], shape[1], shape[2], shape[3], shape[4], shape[5], name);
    std::uniform_real_distribution<float> u(-100, 100);
    CDataCursor<float> c(a);
    for (uint64_t k = 0; k < a->Count(); ++k) {
        const float pair[2] = {std::round(u(g)), u(g)};
        c.SetIQ(pair, k);
    }
    return a;
}

class Transform : public EvalTest {
  protected:
    bool Logged(const std::string& line) const {
        return std::find(host.history.begin(), host.history.end(), line) != host.history.end();
    }
};

struct Case {
    std::string line;                // op and arguments as transform_check.py reads them
    std::function<CZrkData*()> run;  // our result
    std::vector<res_t> shape;        // filled in by the run
    std::vector<cfloat> values;
};

// Every operator against the Python references. Inputs mix sizes of every radix, a real
// integer input and lines that need padding; the language runs the general and variant
// forms, the operators are also called directly.
TEST_F(Transform, MatchesNumpyAndScipy) {
    CDataSpace& gs = GlobalDataSpace();
    std::mt19937 g(4711);
    CZrkData* a = Random(gs, "a", TYPE_CR4, {12, 10, 7, 3}, g);
    CZrkData* b = Random(gs, "b", TYPE_CR4, {100, 6, 5}, g);
    CZrkData* c = Random(gs, "c", TYPE_I2, {9, 8, 3}, g);
    CZrkData* p = Random(gs, "p", TYPE_CR4, {40, 24, 3}, g);
    CZrkData* r = Random(gs, "r", TYPE_R4, {7, 5, 4, 3}, g);
    CDataSpace temp;

    std::vector<Case> cases;
    auto add = [&](std::string line, std::function<CZrkData*()> run) {
        cases.push_back({std::move(line), std::move(run), {}, {}});
    };
    auto lang = [&](std::string line, std::string equation) {
        add(std::move(line), [this, equation] {
            EXPECT_EQ(Report("result_ = " + equation), "") << equation;
            return Find("result_");
        });
    };
    for (int d = 0; d < 4; ++d) {
        const std::string l(1, "xyzt"[d]);
        for (int inv = 0; inv < 2; ++inv) {
            const std::string flags = " 1 " + std::to_string(inv) + " 0";
            add("mrft a " + l + flags, [&, d, inv] { return Mrft(temp, d, a, 1, inv, 0); });
            add("mrft a " + l + " 0 " + std::to_string(inv) + " 1",
                [&, d, inv] { return Mrft(temp, d, a, 0, inv, 1); });
        }
    }
    for (int d = 0; d < 3; ++d) {
        const std::string l(1, "xyz"[d]);
        add("ft b " + l + " 0 0 0", [&, d] { return Ft(temp, d, b, 0, 0, 0); });
        add("ft b " + l + " 1 1 1", [&, d] { return Ft(temp, d, b, 1, 1, 1); });
        add("ft c " + l + " 1 0 1", [&, d] { return Ft(temp, d, c, 1, 0, 1); });
        add("mrft c " + l + " 0 1 0", [&, d] { return Mrft(temp, d, c, 0, 1, 0); });
    }
    lang("ft b xz 0 0 0", "ft(\"xz\", b, 0, 0, 0)");
    lang("ft b xz 0 0 0", "ft(\"13\", b, 0, 0, 0)");
    lang("ft b xyz 1 0 1", "ft(\"zyx\", b, 1, 0, 1)");
    lang("mrft a xyzt 0 1 0", "mrft(\"xyzt\", a, 0, 1, 0)");
    lang("ft c y 1 1 0", "fty(c, 1, -1, 0)");
    // Centres above, below and at half the line, with and without padding, every ramp.
    for (int64_t center : {28, 12, 20, 0, 40})
        for (int64_t filter = 0; filter <= 4; ++filter)
            for (int64_t options : {0, 1, 5, 6, 7}) {
                add("pnft p x " + std::to_string(center) + " " + std::to_string(filter) + " " +
                        std::to_string(options),
                    [&, center, filter, options] {
                        return Pnft(temp, 0, p, center, filter, options);
                    });
            }
    lang("pnft p y 17 3 5", "pnfty(p, 17, 3, 5)");
    lang("pnft p y 7 2 7", "pnft(\"y\", p, 7, 2, 7)");
    const struct {
        const char* name;
        int window;
    } kinds[] = {{"bart", FT_WINDOW_BARTLETT},
                 {"black", FT_WINDOW_BLACKMAN},
                 {"hann", FT_WINDOW_HANNING},
                 {"hamm", FT_WINDOW_HAMMING}};
    for (const auto& k : kinds) {
        const std::string n = k.name;
        add("window r " + n, [&, k] {
            CZrkData* copy = r->Duplicate();
            temp.AddToList(copy, "");
            ApplyWindow(copy, k.window);
            return copy;
        });
        for (const char* dirs : {"xy", "z", "xzu", "t"})
            for (const char* cutoff : {"0.6", "0.25", "1", "0"})
                for (int lo : {0, 1})
                    for (int points : {27, 8, 1})
                        lang("kernel " + n + " " + dirs + " " + cutoff + " " +
                                 std::to_string(points) + " " + std::to_string(lo),
                             n + "(\"" + dirs + "\", " + cutoff + ", " + std::to_string(points) +
                                 ", " + std::to_string(lo) + ")");
    }
    lang("interp r x 13", "interp(\"x\", r, 13)");
    lang("interp r yt 9", "interp(\"yt\", r, 9)");
    lang("interp r z 2", "interp(\"z\", r, 2)");
    lang("interp r xz 1", "interp(\"xz\", r, 1)");
    lang("interp a xy 5", "interp(\"xy\", a, 5)");
    lang("interp c zx 6", "interp(\"zx\", c, 6)");

    for (Case& k : cases) {
        const CZrkData* out = k.run();
        ASSERT_NE(out, nullptr) << k.line;
        k.shape = Shape(out);
        k.values = Complex(out);
    }

    peer::Peer py;
    for (const CZrkData* in : {a, b, c, p, r}) py.Put(in->name, in);
    std::vector<std::string> ids;
    for (const Case& k : cases) ids.push_back(py.Case(k.line));
    ASSERT_TRUE(py.Run("ops/transform_check.py"));

    for (size_t k = 0; k < cases.size(); ++k) {
        const Case& cs = cases[k];
        SCOPED_TRACE(cs.line);
        const peer::Array want = py.Get(ids[k]);
        ASSERT_EQ(cs.shape, want.Shape6());
        std::vector<cfloat> ref;
        for (const std::complex<double> v : want.Complex())
            ref.emplace_back(static_cast<float>(v.real()), static_cast<float>(v.imag()));
        ASSERT_EQ(ref.size(), cs.values.size());
        // Single precision, relative to the largest magnitude of the result.
        float scale = 0;
        for (cfloat v : ref) scale = std::max(scale, std::abs(v));
        const float tol = 2e-6f * scale * std::log2(float(std::max<size_t>(ref.size(), 2))) + 1e-6f;
        size_t bad = 0;
        for (size_t i = 0; i < ref.size(); ++i)
            if (!(std::abs(cs.values[i] - ref[i]) <= tol) && bad++ < 3)
                ADD_FAILURE() << "element " << i << ": " << cs.values[i] << " want " << ref[i];
        EXPECT_EQ(bad, 0u);
    }
}

// Sizes and sides of padded lines: power of two, an odd excess to the high side, and the
// centre of k-space landing at half the padded size.
TEST(FtOptions, PadSizeAndSides) {
    const struct {
        uint64_t n;
        int32_t pad;
        int64_t center;
        uint64_t size, left, right;
        int64_t overlap;
    } rows[] = {
        {100, 1, 0, 128, 14, 14, 0},  {101, 1, 0, 128, 13, 14, 0}, {128, 1, 0, 128, 0, 0, 0},
        {5, 1, 0, 8, 1, 2, 0},        {1, 1, 0, 1, 0, 0, 0},       {100, 0, 0, 100, 0, 0, 0},
        {96, 1, 64, 128, 0, 32, 64},  {96, 1, 32, 128, 32, 0, 64}, {96, 1, 48, 128, 16, 16, 96},
        {40, 1, 28, 64, 4, 20, 24},   {40, 1, 12, 64, 20, 4, 24},  {96, 0, 64, 96, 0, 0, 64},
        {96, 1, 96, 256, 32, 128, 0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(testing::Message() << r.n << " pad " << r.pad << " center " << r.center);
        CFtOptions o;
        o.pad = r.pad;
        o.center = r.center;
        const uint64_t size = o.PadSize(r.n);
        uint64_t left = 99, right = 99;
        o.PadSides(r.n, size, &left, &right);
        EXPECT_EQ(size, r.size);
        EXPECT_EQ(left, r.left);
        EXPECT_EQ(right, r.right);
        EXPECT_EQ(o.overlap, r.overlap);
    }
}

// The falling ramp of data on the low side is the mirror of the rising one, for every window;
// without a symmetric part only the two fills remain.
TEST(FtOptions, HomodyneWeightsMirror) {
    for (int window = 0; window <= 4; ++window)
        for (int64_t overlap : {0, 8, 24}) {
            SCOPED_TRACE(testing::Message() << "window " << window << " overlap " << overlap);
            CFtOptions o;
            o.window = window;
            o.overlap = overlap;
            std::vector<float> up = o.HomodyneFilter(64, true);
            const std::vector<float> down = o.HomodyneFilter(64, false);
            ASSERT_EQ(up.size(), 64u);
            const uint64_t l = (64 - overlap) / 2;
            EXPECT_EQ(up.front(), 2.0f);
            EXPECT_EQ(up.back(), 0.0f);
            EXPECT_EQ(up[l - 1], 2.0f);
            for (uint64_t k = 1; k < up.size(); ++k) EXPECT_LE(up[k], up[k - 1] + 1e-6f) << k;
            if (window == FT_WINDOW_NONE) {
                // No ramp: the symmetric part keeps the fill before it.
                for (uint64_t k = l; k < l + overlap; ++k) {
                    EXPECT_EQ(up[k], 2.0f) << k;
                    EXPECT_EQ(down[k], 0.0f) << k;
                }
                continue;
            }
            std::reverse(up.begin(), up.end());
            for (uint64_t k = 0; k < up.size(); ++k) EXPECT_NEAR(up[k], down[k], 1e-6f) << k;
        }
}

TEST(Ft, HundredPointsPadToPowerOfTwoWithFourteenZerosEachSide) {
    CDataSpace s;
    CZrkData* ones = Array(s, TYPE_I2, {100, 2}, std::vector<double>(200, 1.0));
    CZrkData* f = Ft(s, 0, ones, 0, 0, 0);
    EXPECT_EQ(f->type, TYPE_CR4);
    EXPECT_EQ(Shape(f), (std::vector<res_t>{128, 2, 1, 1, 1, 1}));
    // Back without padding or scaling: 128 times the padded line.
    const std::vector<cfloat> back = Complex(Mrft(s, 0, f, 0, 1, 0));
    ASSERT_EQ(back.size(), 256u);
    for (uint64_t k = 0; k < 256; ++k) {
        const uint64_t x = k % 128;
        const float want = x < 14 || x >= 114 ? 0.0f : 128.0f;
        EXPECT_NEAR(back[k].real(), want, 2e-3f) << k;
        EXPECT_NEAR(back[k].imag(), 0.0f, 2e-3f) << k;
    }
}

// Data mirrored about its centre: the padded, weighted lines are mirrors, so the forward
// transform of one is the unscaled inverse of the other times exp(2 pi i m / size).
TEST(Pnft, CenterAboveHalfMirrorsCenterBelow) {
    CDataSpace s;
    std::mt19937 g(99);
    CZrkData* x = Random(s, "", TYPE_CR4, {40, 3}, g);
    CZrkData* flipped = s.NewData(TYPE_CR4, 40, 3, 1, 1, 1, 1, "");
    const auto* src = static_cast<const cfloat*>(x->data);
    auto* dst = static_cast<cfloat*>(flipped->data);
    for (int y = 0; y < 3; ++y)
        for (int i = 0; i < 40; ++i) dst[y * 40 + i] = src[y * 40 + 39 - i];
    for (int64_t window = 1; window <= 4; ++window)
        for (int64_t center : {28, 33}) {
            SCOPED_TRACE(testing::Message() << "window " << window << " center " << center);
            const CZrkData* inv = Pnft(s, 0, x, center, window, 4 | 2);
            const CZrkData* fwd = Pnft(s, 0, flipped, 40 - center, window, 4);
            ASSERT_EQ(Shape(inv), Shape(fwd));
            const uint64_t size = inv->nx;
            const std::vector<cfloat> a = Complex(inv), b = Complex(fwd);
            float scale = 0;
            for (cfloat v : a) scale = std::max(scale, std::abs(v));
            for (uint64_t k = 0; k < a.size(); ++k) {
                const double phase = 2 * M_PI * double(k % size) / double(size);
                const cfloat want = a[k] * cfloat(float(std::cos(phase)), float(std::sin(phase)));
                EXPECT_LE(std::abs(b[k] - want), 1e-5f * scale) << k;
            }
        }
}

TEST(Kernel, OnePointIsOneWeight) {
    CDataSpace s;
    for (int window = 1; window <= 4; ++window)
        for (bool lo : {false, true})
            for (const char* dirs : {"x", "xyz", "tv"}) {
                const CZrkData* k = Kernel(s, window, Text(s, dirs), 0.4, 1, lo);
                EXPECT_EQ(k->type, TYPE_R4);
                EXPECT_EQ(Shape(k), (std::vector<res_t>(6, 1)));
                EXPECT_EQ(Values(k), std::vector<float>{1.0f}) << dirs;
            }
}

TEST(Kernel, CutoffOutsideZeroToOneIsRefused) {
    CDataSpace s;
    CHeadlessHost host;
    CScopedHost scoped(host);
    for (double c : {-0.01, 1.01, 5.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
        try {
            Kernel(s, FT_WINDOW_HAMMING, Text(s, "xy"), c, 9, true);
            ADD_FAILURE() << c;
        } catch (const ZrkError& e) {
            EXPECT_STREQ(e.what(), "cutoff must be between 0 and 1") << c;
        }
    }
    EXPECT_EQ(err_func, "hamm()");
    EXPECT_EQ(host.history.back(), "error caught: Hamm:\r\n");
}

// Non-finite samples travel through the arithmetic: no crash, and lines without them stay
// finite.
TEST(NonFinite, SamplesStayInTheirLines) {
    CDataSpace s;
    CZrkData* a = Array(s, TYPE_R4, {8, 4});
    float* p = static_cast<float*>(a->data);
    p[1 * 8 + 2] = std::numeric_limits<float>::quiet_NaN();
    p[3 * 8 + 5] = std::numeric_limits<float>::infinity();
    auto finite_rows = [](const CZrkData* r) {
        std::vector<int> rows;
        const std::vector<cfloat> v = Complex(r);
        for (uint64_t y = 0; y < r->ny; ++y) {
            bool ok = true;
            for (uint64_t x = 0; x < r->nx; ++x)
                ok = ok && std::isfinite(v[y * r->nx + x].real()) &&
                     std::isfinite(v[y * r->nx + x].imag());
            rows.push_back(ok);
        }
        return rows;
    };
    const std::vector<int> want{1, 0, 1, 0};
    EXPECT_EQ(finite_rows(Ft(s, 0, a, 1, 0, 1)), want);
    EXPECT_EQ(finite_rows(Mrft(s, 0, a, 0, 1, 0)), want);
    EXPECT_EQ(finite_rows(Pnft(s, 0, a, 5, 4, 7)), want);
    EXPECT_EQ(finite_rows(InterpDir(s, 0, a, 13)), want);
    CZrkData* w = a->Duplicate();
    s.AddToList(w, "");
    ApplyWindow(w, FT_WINDOW_HANNING);
    EXPECT_EQ(finite_rows(w), want);
    EXPECT_NO_THROW(Ft(s, 1, a, 0, 1, 0));
    EXPECT_NO_THROW(InterpDir(s, 1, a, 3));
}

TEST_F(Transform, VariantsAreTheGeneralCall) {
    ASSERT_EQ(Report("d0 = rampx(0,7,8); d1 = reshape(rampx(1,48,48),4,3,2,2);"), "");
    const struct {
        const char* by_name;
        const char* by_argument;
    } pairs[] = {
        {"ftz(d1,1,-1,0)", "ft(\"z\",d1,1,-1,0)"},
        {"ftx(d0,0,0,1)", "ft(\"x\",d0,0,0,1)"},
        {"ftt(d1,0,1,0)", "ft(\"4\",d1,0,1,0)"},
        {"ftz(ftx(d1,0,0,0),0,0,0)", "ft(\"xz\",d1,0,0,0)"},
        {"ftz(ftx(d1,0,0,0),0,0,0)", "ft(\"zx\",d1,0,0,0)"},
        {"ftz(ftx(d1,0,0,0),0,0,0)", "ft(\"13\",d1,0,0,0)"},
        {"mrfty(d1,1,0,1)", "mrft(\"y\",d1,1,0,1)"},
        {"mrftt(mrfty(d1,0,1,0),0,1,0)", "mrft(\"ty\",d1,0,1,0)"},
        {"pnftx(d0,6,3,5)", "pnft(\"x\",d0,6,3,5)"},
        {"pnfty(d1,2,1,4)", "pnft(\"y\",d1,2,1,4)"},
        {"interp(\"y\",interp(\"x\",d1,7),5)", "interp(\"xy\",d1,5)"},
    };
    for (const auto& p : pairs) {
        ASSERT_EQ(Report(std::string("a = ") + p.by_name + "; b = " + p.by_argument + ";"), "")
            << p.by_argument;
        if (std::string(p.by_argument).rfind("interp", 0) == 0) continue;
        EXPECT_EQ(Find("a")->HeaderText(), Find("b")->HeaderText()) << p.by_argument;
        EXPECT_EQ(EvalTest::Values(Find("a")), EvalTest::Values(Find("b"))) << p.by_argument;
    }
    // interp: one resolution for every direction named.
    EXPECT_EQ(Shape(Find("b")), (std::vector<res_t>{5, 5, 2, 2, 1, 1}));
    EXPECT_EQ(FunctionIndex("ftu"), -1);
}

TEST_F(Transform, Reports) {
    ASSERT_EQ(Report("d0 = rampx(0,7,8);"), "");
    const struct {
        const char* line;
        const char* report;
        const char* caught;  // history line, or null
    } rows[] = {
        {"a = ft(\"q\",d0,0,0,0);", "ft() returned 'direction invalid'", nullptr},
        {"a = mrft(\"w\",d0,0,0,0);", "mrft() returned 'direction invalid'", nullptr},
        {"a = pnft(\"u\",d0,0,0,0);", "pnft() returned 'direction invalid'", nullptr},
        {"a = interp(\"q\",d0,4);", "interp() returned 'direction invalid'", nullptr},
        {"a = black(\"q\",.5,5,1);", "black() returned 'direction invalid'",
         "error caught: Black:\r\n"},
        {"a = interp(\"x\",d0,0);", "interp('x') returned 'resolution must be positive'",
         "error caught: InterpX:\r\n"},
        {"a = interp(\"zy\",d0,-2);", "interp('y') returned 'resolution must be positive'",
         "error caught: InterpY:\r\n"},
        {"a = bart(\"x\",.5,0,1);", "bart() returned 'resolution must be positive'", nullptr},
        {"a = bart(\"xy\",1.5,5,1);", "bart() returned 'cutoff must be between 0 and 1'",
         "error caught: Bart:\r\n"},
        {"a = hann(\"x\",-0.1,5,0);", "hann() returned 'cutoff must be between 0 and 1'", nullptr},
        {"a = pnftx(d0,9,1,4);", "pnft('x') returned 'center must be between 0 and n'",
         "error caught: PnftX:\r\n"},
        {"a = ftx(new_name,0,0,0);", "CallFunction() returned 'null input data set'", nullptr},
        {"a = ft(\"x\",d0,0,0);", "CallFunction() returned 'argument number mismatch'", nullptr},
        {"a = ftx(d0,0,0);", "CallFunction() returned 'argument number mismatch'", nullptr},
        {"a = hamm(\"x\",.5,5);", "CallFunction() returned 'argument number mismatch'", nullptr},
    };
    for (const auto& r : rows) {
        host.history.clear();
        EXPECT_EQ(Report(r.line), r.report) << r.line;
        if (r.caught) {
            EXPECT_TRUE(Logged(r.caught)) << r.line;
        }
    }
}

}  // namespace
