// Raw files of every revision row against what make_scanner.py wrote into them (see
// scanner_fixture.h: no scanner sample exists in Debian, so the generator is the reference).
#include <gtest/gtest.h>

#include <bit>
#include <cstdio>
#include <filesystem>
#include <limits>

#include "files/scanner/raw_header.h"
#include "files/scanner/raw_load.h"
#include "tests/files/scanner/scanner_fixture.h"

namespace {

using scan::CTarget;
using scan::Expected;

class RawFile : public scan::ScannerTest {
  protected:
    // The load of `name` with the baselines radio group as given; the target is checked
    // against the generator's array `want`.
    void LoadAndCompare(const scan::CFile& f, int add, int subtract, const std::string& want) {
        FileEntry e = scan::Entry(f.name);
        ASSERT_EQ(ReadRawHeader(e, nullptr), 1) << f.name << ": " << e.status;
        e.addBaseline = add;
        e.subtractBaseline = subtract;
        CTarget t(e);
        ASSERT_EQ(LoadRaw(options_, e, t.targets), 1) << f.name << ": " << e.status;
        EXPECT_EQ(e.status, "reading complete");
        EXPECT_TRUE(peer::Same(peer::FromRecord(&t.data), Expected(want, e.header)))
            << f.name << " add " << add << " subtract " << subtract;
    }
};

TEST_F(RawFile, EveryRevisionRowGivesTheGeneratorsHeader) {
    const auto files = scan::OfKind("raw");
    ASSERT_GE(files.size(), 26u);
    for (const scan::CFile* f : files) {
        SCOPED_TRACE(f->name);
        FileEntry e = scan::Entry(f->name);
        e.skip[2] = 7;
        e.hasBitmap = 1;
        host_.history.clear();
        ASSERT_EQ(ReadRawHeader(e, nullptr), 1) << e.status;
        EXPECT_EQ(e.failed, 0);
        EXPECT_EQ(e.status, std::to_string(f->Int("baselines")) + " baselines");
        ASSERT_EQ(host_.history.size(), 1u);
        EXPECT_EQ(host_.history[0], f->Text("log") + " pool size " + f->Text("pool") + "\r\n");
        EXPECT_EQ(e.dataOffset, f->Int("pool"));
        EXPECT_EQ(e.byteSwap, f->Int("swap"));
        EXPECT_EQ(e.volumeFlag, f->Int("volume"));
        EXPECT_EQ(e.baselines, f->Int("baselines"));
        EXPECT_EQ(e.echoes, f->Int("t"));
        EXPECT_EQ(e.receivers, f->Int("u"));
        const CZrkData& h = e.header;
        EXPECT_EQ(h.Type(), f->Text("type") == "ci2" ? TYPE_CI2 : TYPE_CI4);
        const res_t want[6] = {res_t(f->Int("x")), res_t(f->Int("y")), res_t(f->Int("z")),
                               res_t(f->Int("t")), res_t(f->Int("u")), 1};
        res_t got[6];
        h.GetRes(got);
        for (int k = 0; k < 6; ++k) EXPECT_EQ(got[k], want[k]) << "direction " << k;
        EXPECT_TRUE(scan::BitsEqual(h.mm[0], f->Bits("sx"))) << h.mm[0];
        EXPECT_TRUE(scan::BitsEqual(h.mm[1], f->Bits("sy"))) << h.mm[1];
        EXPECT_TRUE(scan::BitsEqual(h.mm[2], f->Bits("sz"))) << h.mm[2];
        EXPECT_EQ(h.mm[3], 1.0f);
        EXPECT_EQ(e.exam, f->Int("exam"));
        EXPECT_EQ(e.series, f->Int("series"));
        EXPECT_EQ(e.image, f->Int("image"));
        EXPECT_EQ(e.skip[2], 0u);
        EXPECT_EQ(e.hasBitmap, 0);
    }
}

TEST_F(RawFile, LoadsMatchNumPyWithEveryBaselineChoice) {
    for (const scan::CFile* f : scan::OfKind("raw")) {
        if (f->name == "raw_27_pool_only") continue;
        const bool corrected = f->Int("baselines") > 0;
        const std::string plain = f->name + "_plain";
        LoadAndCompare(*f, 0, 0, plain);
        LoadAndCompare(*f, 1, 0, corrected ? f->name + "_add" : plain);
        LoadAndCompare(*f, 0, 1, corrected ? f->name + "_subtract" : plain);
        // Subtraction wins when both are on.
        LoadAndCompare(*f, 1, 1, corrected ? f->name + "_subtract" : plain);
    }
}

TEST_F(RawFile, OtherFirstWordsAreNoRevision) {
    for (const scan::CFile* f : scan::OfKind("raw_rejected")) {
        FileEntry e = scan::Entry(f->name);
        EXPECT_EQ(ReadRawHeader(e, nullptr), 0) << f->name;
        EXPECT_EQ(e.status, "not raw header rev 5.2, 7, 8, 9, 11, 14, 15, 16, 20, 24, 26, 28");
        EXPECT_EQ(e.failed, 1);
        EXPECT_TRUE(host_.history.empty());
    }
    FileEntry missing = scan::Entry("no such file");
    EXPECT_EQ(ReadRawHeader(missing, nullptr), 0);
    EXPECT_EQ(missing.status, "can't open file '" + missing.path + "' for reading");
    EXPECT_EQ(missing.failed, 1);
}

TEST_F(RawFile, RevisionBounds) {
    struct Case {
        float value;
        bool big;
        const char* rev;  // null: rejected
    };
    const float inf = std::numeric_limits<float>::infinity();
    const Case cases[] = {
        {5.2f, true, "5x"},
        {5.2f, false, nullptr},
        {6.5f, true, nullptr},
        {6.5f, false, nullptr},
        {7.0f, true, "7x"},
        {7.5f, false, nullptr},
        {8.999f, true, "8x"},
        {9.0f, false, "9x"},
        {9.0f, true, nullptr},
        {10.0f, false, nullptr},
        {11.5f, false, "11x"},
        {14.99f, false, "14x"},
        {15.0f, false, "15"},
        {16.0f, false, "16x"},
        {17.0f, false, nullptr},
        {20.5f, false, "20"},
        {24.0f, false, "24x"},
        {25.0f, false, nullptr},
        {26.0f, false, "26x"},
        {27.999f, false, "27"},
        {28.0f, false, "28"},
        {28.0019f, false, "28"},
        {28.0021f, false, "28.002"},
        // The single nearest 28.002 lies above it: compared in double, it is 28.002.
        {28.002f, false, "28.002"},
        {28.99f, false, "28.002"},
        {29.0f, false, nullptr},
        {std::numeric_limits<float>::quiet_NaN(), false, nullptr},
        {inf, false, nullptr},
        {-inf, true, nullptr},
        {-5.5f, true, nullptr},
    };
    for (const Case& c : cases) {
        uint32_t w = std::bit_cast<uint32_t>(c.value);
        if (c.big) w = __builtin_bswap32(w);
        uint8_t first[4];
        std::memcpy(first, &w, 4);
        const CRawRevision* rev = FindRawRevision(first);
        if (c.rev) {
            ASSERT_NE(rev, nullptr) << c.value << (c.big ? " big" : " little");
            EXPECT_STREQ(rev->name, c.rev) << c.value;
        } else {
            EXPECT_EQ(rev, nullptr) << c.value << " taken as " << rev->name;
        }
    }
}

TEST_F(RawFile, APoolSizedFilePassesTheHeaderAndFailsTheLoad) {
    FileEntry e = scan::Entry("raw_27_pool_only");
    ASSERT_EQ(ReadRawHeader(e, nullptr), 1);
    CTarget t(e);
    EXPECT_EQ(LoadRaw(options_, e, t.targets), 0);
    EXPECT_EQ(e.status, "read failed");
}

TEST_F(RawFile, YResolutionOneHoldsOnlyBaselineLines) {
    FileEntry e = scan::Entry("raw_8x_y1");
    ASSERT_EQ(ReadRawHeader(e, nullptr), 1);
    EXPECT_EQ(e.header.ny, 0u);
    CTarget t(e);
    ASSERT_EQ(LoadRaw(options_, e, t.targets), 1) << e.status;
    // Each block's baseline line is in the file; one byte less and the load fails.
    const std::string cut = ::testing::TempDir() + "raw_8x_y1_cut";
    const std::string bytes = scan::Slurp(e.path);
    scan::Spit(cut, bytes.substr(0, bytes.size() - 1));
    e.path = cut;
    EXPECT_EQ(LoadRaw(options_, e, t.targets), 0);
    EXPECT_EQ(e.status, "read failed");
    std::filesystem::remove(cut);
}

// Two files of the same sizes stacked along u (their z and t are above 1): the second lands
// at dest after the first, and nothing outside the two is written.
TEST_F(RawFile, StackedFilesLandAtTheirDestination) {
    FileEntry a = scan::Entry("raw_5x"), b = scan::Entry("raw_9x");
    ASSERT_EQ(ReadRawHeader(a, nullptr), 1);
    ASSERT_EQ(ReadRawHeader(b, nullptr), 1);
    ASSERT_TRUE(a.header.SameRes(b.header));
    const res_t stack[4] = {a.header.nz, a.header.nt, a.header.nu + b.header.nu, 1};
    CTarget t(a, stack);
    b.dest[2] = a.header.nu;
    ASSERT_EQ(LoadRaw(options_, a, t.targets), 1);
    ASSERT_EQ(LoadRaw(options_, b, t.targets), 1);
    const uint64_t half = t.data.CountXYZT() * t.data.ElementBytes() * a.header.nu;
    const std::string got(static_cast<const char*>(t.data.Data()), t.data.Bytes());
    EXPECT_EQ(got.substr(0, half), scan::Slurp(scan::Path("raw_5x_plain.bin")));
    EXPECT_EQ(got.substr(half), scan::Slurp(scan::Path("raw_9x_plain.bin")));

    // An offset inside a larger target along every direction: z 1, t 2, u 1, v 1.
    FileEntry c = scan::Entry("raw_24x_i4");
    ASSERT_EQ(ReadRawHeader(c, nullptr), 1);
    const res_t big[4] = {c.header.nz + 2, c.header.nt + 3, c.header.nu + 1, 2};
    CTarget u(c, big);
    const uint64_t dest[4] = {1, 2, 1, 1};
    std::copy(dest, dest + 4, c.dest);
    ASSERT_EQ(LoadRaw(options_, c, u.targets), 1);
    const peer::Array want = Expected("raw_24x_i4_plain", c.header);
    const uint64_t line = c.header.BytesPerPlane();
    uint64_t checked = 0;
    for (res_t v = 0; v < u.data.nv; ++v)
        for (res_t r = 0; r < u.data.nu; ++r)
            for (res_t e = 0; e < u.data.nt; ++e)
                for (res_t z = 0; z < u.data.nz; ++z) {
                    const std::string plane(u.data.Address(0, 0, z, e, r, v), line);
                    const bool inside = v == 1 && r >= 1 && r < 1 + c.header.nu && e >= 2 &&
                                        e < 2 + c.header.nt && z >= 1 && z < 1 + c.header.nz;
                    if (!inside) {
                        EXPECT_EQ(plane, std::string(line, '\x5A'));
                        continue;
                    }
                    const uint64_t k = (((r - 1) * c.header.nt + (e - 2)) * c.header.nz + z - 1);
                    EXPECT_EQ(plane, want.bytes.substr(k * line, line)) << z << e << r;
                    ++checked;
                }
    EXPECT_EQ(checked, c.header.nz * c.header.nt * c.header.nu);
}

TEST_F(RawFile, PreviewIsTheFirstPlaneAfterTheBaselineLine) {
    FileEntry e = scan::Entry("raw_7x_long");
    CZrkData preview;
    ASSERT_EQ(ReadRawHeader(e, &preview), 1);
    ASSERT_NE(preview.Data(), nullptr);
    EXPECT_EQ(preview.Type(), e.header.Type());
    EXPECT_EQ(preview.nx, e.header.nx);
    EXPECT_EQ(preview.ny, e.header.ny);
    const std::string want = scan::Slurp(scan::Path("raw_7x_long_plain.bin"));
    EXPECT_EQ(std::string(static_cast<const char*>(preview.Data()), preview.Bytes()),
              want.substr(0, preview.Bytes()));
    preview.FreeData();
    FileEntry pool_only = scan::Entry("raw_27_pool_only");
    ASSERT_EQ(ReadRawHeader(pool_only, &preview), 1);
    EXPECT_EQ(preview.Data(), nullptr);
}

}  // namespace
