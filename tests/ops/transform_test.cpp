// Transforms, windows, kernels and interp: against NumPy and SciPy run for real, through the
// equation language, and their sizes, texts and edge cases.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "eval/function_table.h"
#include "ops/ft_options.h"
#include "ops/interp.h"
#include "ops/transform.h"
#include "ops/window.h"
#include "tests/eval/eval_fixture.h"
#include "tests/ops/op_test_util.h"

namespace {

namespace fs = std::filesystem;
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

void Write(const fs::path& dir, const CZrkData* a) {
    const std::vector<cfloat> v = Complex(a);
    std::ofstream(dir / (std::string(a->name) + ".bin"), std::ios::binary)
        .write(reinterpret_cast<const char*>(v.data()),
               static_cast<std::streamsize>(v.size() * sizeof(cfloat)));
    std::ofstream(dir / (std::string(a->name) + ".shape"))
        << a->nx << ' ' << a->ny << ' ' << a->nz << ' ' << a->nt;
}

class Transform : public EvalTest {
  protected:
    std::string Report(const std::string& text) {
        if (!Run(text)) return "";
        const std::string report = ErrorText();
        return report.substr(0, report.find(" at: "));
    }
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

    char pattern[] = "/tmp/quelmor_transform_XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    const fs::path dir = pattern;
    for (const CZrkData* in : {a, b, c, p, r}) Write(dir, in);
    {
        std::ofstream list(dir / "cases.txt");
        for (size_t k = 0; k < cases.size(); ++k) list << k << ' ' << cases[k].line << '\n';
    }
    const std::string command = std::string(QUELMOR_PYTHON) + " " + QUELMOR_TEST_DIR +
                                "/transform_check.py " + dir.string();
    ASSERT_EQ(std::system(command.c_str()), 0) << command;

    for (size_t k = 0; k < cases.size(); ++k) {
        const Case& cs = cases[k];
        SCOPED_TRACE(cs.line);
        const std::string id = std::to_string(k);
        std::vector<res_t> want(6);
        std::ifstream shape(dir / (id + ".shape"));
        for (res_t& v : want) shape >> v;
        ASSERT_EQ(cs.shape, want);
        std::vector<cfloat> ref(cs.values.size());
        std::ifstream(dir / (id + ".bin"), std::ios::binary)
            .read(reinterpret_cast<char*>(ref.data()),
                  static_cast<std::streamsize>(ref.size() * sizeof(cfloat)));
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
    fs::remove_all(dir);
}

}  // namespace
