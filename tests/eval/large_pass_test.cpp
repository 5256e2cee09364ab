// Equations on arrays large enough that their passes are shared among the cores: the same
// bytes on one thread and on several, NumPy's values, and temporaries that carry results
// without touching named arrays.
#include <omp.h>

#include <string>
#include <vector>

#include "core/math_errors.h"
#include "tests/eval/eval_fixture.h"
#include "tests/peer.h"

namespace {

// Past the sharing threshold, and not a whole number of blocks.
constexpr res_t kNx = 613, kNy = 500;

class LargePassTest : public EvalTest {
  protected:
    void SetUp() override {
        EvalTest::SetUp();
        threads_ = omp_get_max_threads();
        // values with fractions, negatives and zeros, in every type the cases use
        ASSERT_EQ(Run("x = rampx(-7.25,11.5," + std::to_string(kNx) + "); y = rampy(-3,4," +
                      std::to_string(kNy) + "); a = x * y; b = x - y * 0.5; z = (cr4)a + " +
                      "iq(b,a); n = (i2)(a * 100); m = (n1)b; d = (r8)a / 3;"),
                  0)
            << ErrorText();
    }
    void TearDown() override {
        omp_set_num_threads(threads_);
        EvalTest::TearDown();
    }
    // The bytes of `name` after running the line with `threads` threads.
    std::string BytesWith(int threads, const std::string& line) {
        omp_set_num_threads(threads);
        if (Run(line)) return "error: " + ErrorText();
        const CZrkData* r = Find("out");
        return r->HeaderText() + std::string(static_cast<const char*>(r->Data()), r->Bytes());
    }
    int threads_ = 1;
};

TEST_F(LargePassTest, OneThreadAndManyGiveTheSameBytes) {
    const char* cases[] = {
        "out = a * 2 + 1",
        "out = 1 + a * 2",
        "out = ((a*2+1)*3+4)*5",
        "out = sqrt(a*a + b*b)",
        "out = z * z - z / (z + 1)",
        "out = (n << 3) ^ (n & 255)",
        "out = m * 3 % 7",
        "out = d * d + a",
        "out = a > b ? a : b",
        "out = -b + !m",
        "out = ([613][500][3])2.5",
        "out = ([613][500])z[5]",
        "out = (i2)b + (n1)a",
        "out = log(a) + cos(b)",
        "out = fill('y', a, 3, 400, 7)",
        "out = strip('x', a, 10, 20, -1)",
        "out = stripr(a, 100.5, 200.5, 2)",
        "out = eye('xy', 700)",
        "out = rampx(0, 1, 400000)",
    };
    omp_set_num_threads(2);
    ASSERT_GE(omp_get_max_threads(), 2);
    for (const char* line : cases) {
        SCOPED_TRACE(line);
        EXPECT_EQ(BytesWith(1, line), BytesWith(2, line));
    }
}

TEST_F(LargePassTest, SharedPassesMatchNumpy) {
    peer::Peer p;
    p.Put("a", Find("a"));
    p.Put("b", Find("b"));
    p.Put("z", Find("z"));
    ASSERT_EQ(Run("o1 = a * 2 + 1; o2 = sqrt(a*a + b*b); o3 = z * z + 1; o4 = a > b ? a : b;"), 0)
        << ErrorText();
    ASSERT_TRUE(
        p.RunText("a, b, z = (peer.load(FOLDER, n) for n in 'abz')\n"
                  "f = np.float32\n"
                  "peer.save(FOLDER, 'o1', a * f(2) + f(1))\n"
                  "peer.save(FOLDER, 'o2', np.sqrt(a * a + b * b))\n"
                  "peer.save(FOLDER, 'o3', z * z + np.complex64(1))\n"
                  "peer.save(FOLDER, 'o4', np.where(a > b, a, b))\n"));
    for (const char* name : {"o1", "o2", "o3", "o4"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(peer::Near(peer::FromRecord(Find(name)), p.Get(name), 1e-6));
    }
}

// Fills write each element of the fresh result once, the value or the source's, in parts
// shared among the cores.
TEST_F(LargePassTest, FillsMatchNumpy) {
    peer::Peer p;
    p.Put("a", Find("a"));
    ASSERT_EQ(Run("f1 = fill('y', a, 3, 400, 7); f2 = strip('x', a, 10, 20, -1); "
                  "f3 = fillr(a, 100.5, 200.5, 0); f4 = stripr(a, 100.5, 200.5, 2); "
                  "f5 = fill('x', a, 600, 612, 1);"),
              0)
        << ErrorText();
    ASSERT_TRUE(
        p.RunText("a = peer.load(FOLDER, 'a')\n"
                  "f = np.float32\n"
                  "f1 = a.copy(); f1[:, 3:401] = 7\n"
                  "f2 = np.full_like(a, -1); f2[10:21, :] = a[10:21, :]\n"
                  "x, y = np.ogrid[0:a.shape[0], 0:a.shape[1]]\n"
                  "c = (np.array(a.shape[:2]) - 1) / 2\n"
                  "r = np.sqrt((y - c[1])**2 + (x - c[0])**2).astype(f)\n"
                  "ring = ((r >= 100.5) & (r <= 200.5)).reshape(a.shape)\n"
                  "f5 = a.copy(); f5[600:613, :] = 1\n"
                  "peer.save(FOLDER, 'f1', f1)\n"
                  "peer.save(FOLDER, 'f2', f2)\n"
                  "peer.save(FOLDER, 'f3', np.where(ring, f(0), a))\n"
                  "peer.save(FOLDER, 'f4', np.where(ring, a, f(2)))\n"
                  "peer.save(FOLDER, 'f5', f5)\n"));
    for (const char* name : {"f1", "f2", "f3", "f4", "f5"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(peer::Same(peer::FromRecord(Find(name)), p.Get(name)));
    }
}

// Steps with a scalar on a large float result run in one pass; each element still meets
// every step in float, so NumPy's float32 chain gives the same bits.
TEST_F(LargePassTest, ScalarStepsInOnePassMatchNumpyBitForBit) {
    peer::Peer p;
    p.Put("a", Find("a"));
    p.Put("z", Find("z"));
    p.Put("d", Find("d"));
    ASSERT_EQ(Run("c1 = ((a*2+1)*3+4)*5; c2 = 2 - a / 3 * 7; c3 = ((z*2+1)*3)/2 - 1; "
                  "c4 = d * 3 - 1; c5 = (a * 2) + (a * 3 + 1); c6 = a * 2 + a++;"),
              0)
        << ErrorText();
    ASSERT_TRUE(
        p.RunText("a, z, d = (peer.load(FOLDER, n) for n in 'azd')\n"
                  "f, c = np.float32, np.complex64\n"
                  "peer.save(FOLDER, 'c1', ((a*f(2)+f(1))*f(3)+f(4))*f(5))\n"
                  "peer.save(FOLDER, 'c2', f(2) - a / f(3) * f(7))\n"
                  "peer.save(FOLDER, 'c3', ((z*c(2)+c(1))*c(3))/c(2) - c(1))\n"
                  "peer.save(FOLDER, 'c4', d * 3.0 - 1.0)\n"
                  "peer.save(FOLDER, 'c5', (a*f(2)) + (a*f(3)+f(1)))\n"
                  "peer.save(FOLDER, 'c6', a*f(2) + (a+f(1)))\n"));
    for (const char* name : {"c1", "c2", "c4", "c5", "c6"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(peer::Same(peer::FromRecord(Find(name)), p.Get(name)));
    }
    // complex division is ours, not NumPy's scaled form
    EXPECT_TRUE(peer::Near(peer::FromRecord(Find("c3")), p.Get("c3"), 1e-6));
}

// A step that changes the type ends the chain; the steps after it start a new one.
TEST_F(LargePassTest, ScalarStepsAcrossTypesEqualOneStatementEach) {
    EXPECT_EQ(BytesWith(2, "out = ((a * 2 + 1) * (r8)0.5 + 1) * 3"),
              BytesWith(2, "t = a * 2; t = t + 1; t = t * (r8)0.5; t = t + 1; out = t * 3;"));
    EXPECT_EQ(BytesWith(2, "out = (n * 2.5 + 1) * 3"),
              BytesWith(2, "t = n * 2.5; t = t + 1; out = t * 3;"));
    EXPECT_EQ(BytesWith(2, "out = 3 - (z + 2) * 2"),
              BytesWith(2, "t = z + 2; t = t * 2; out = 3 - t;"));
}

TEST_F(LargePassTest, TemporariesCarryResultsAndNamedArraysStay) {
    const std::string a_before = BytesWith(2, "out = a");
    const std::string b_before = BytesWith(2, "out = b");
    // the right operand a temporary, the left a named array
    EXPECT_EQ(BytesWith(2, "out = b + a * 2"), BytesWith(2, "t = a * 2; out = b + t;"));
    EXPECT_EQ(BytesWith(2, "out = a"), a_before);
    EXPECT_EQ(BytesWith(2, "out = b"), b_before);
    // a failing equation leaves what it had not yet assigned as it was
    EXPECT_EQ(Run("b = (a * 2) + (b * 3) + nothing_here"), 1);
    EXPECT_EQ(BytesWith(2, "out = b"), b_before);
}

TEST_F(LargePassTest, RemainderOfATemporaryCountsItsErrorsLikeThatOfAnArray) {
    ClearMathErrors();
    const std::string named = BytesWith(2, "out = a % 0");
    const int counted = MathErrorTotal();
    ClearMathErrors();
    EXPECT_EQ(BytesWith(2, "out = (a * 1) % 0"), named);
    EXPECT_EQ(MathErrorTotal(), counted);
    EXPECT_EQ(counted, static_cast<int>(kNx * kNy));
}

}  // namespace
