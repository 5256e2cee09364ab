// Damaged scanner files: every reader answers with its own text and never reads outside its
// buffers (the ASan build runs these), and a load never succeeds on a file that lacks data.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <set>

#include "files/scanner/image_file.h"
#include "files/scanner/plotpulse_file.h"
#include "files/scanner/pulsegen_file.h"
#include "files/scanner/raw_header.h"
#include "files/scanner/raw_load.h"
#include "tests/files/scanner/scanner_fixture.h"

namespace {

using HeaderFn = int (*)(FileEntry&);
using LoadFn = int (*)(const COpenOptions&, FileEntry&, CZrkData* const[3]);

int RawHeader(FileEntry& e) { return ReadRawHeader(e, nullptr); }

class BadInput : public scan::ScannerTest {
  protected:
    // Cuts a copy of `name` at every offset from `from` on (every `step`th below it) and runs
    // the header and, when it passes, the load. Texts must be among `texts`; the load must
    // succeed exactly on the cuts that keep the first `needed` bytes.
    void CutEverywhere(const std::string& name, HeaderFn header, LoadFn load,
                       const std::set<std::string>& texts, size_t needed, size_t from = 0,
                       size_t step = 1) {
        SCOPED_TRACE(name);
        const std::string bytes = scan::Slurp(scan::Path(name));
        ASSERT_FALSE(bytes.empty());
        const std::string path = ::testing::TempDir() + "cut_" + name;
        scan::Spit(path, bytes);
        const int fd = open(path.c_str(), O_WRONLY);
        ASSERT_GE(fd, 0);
        for (size_t cut = bytes.size() + 1; cut-- > 0;) {
            if (cut < from && cut % step != 0) continue;
            ASSERT_EQ(ftruncate(fd, static_cast<off_t>(cut)), 0);
            FileEntry e;
            e.path = path;
            if (!header(e)) {
                EXPECT_TRUE(texts.count(e.status)) << "cut " << cut << ": " << e.status;
                EXPECT_LT(cut, needed) << "the header failed on a whole file";
                continue;
            }
            scan::CTarget t(e);
            ASSERT_TRUE(t.data.Bytes() == 0 || t.data.Data()) << "cut " << cut;
            const int ok = load(options_, e, t.targets);
            EXPECT_EQ(ok, cut >= needed ? 1 : 0) << "cut " << cut << ": " << e.status;
            if (!ok) {
                EXPECT_EQ(e.status, "read failed") << "cut " << cut;
            }
        }
        close(fd);
        unlink(path.c_str());
    }
};

size_t Needed(const std::string& name) {
    const scan::CFile& f = scan::Find(name);
    return static_cast<size_t>(f.Int("offset") + 2 * f.Int("x") * f.Int("y"));
}

TEST_F(BadInput, RawCutAtEveryOffset) {
    const std::string not_raw = "not raw header rev 5.2, 7, 8, 9, 11, 14, 15, 16, 20, 24, 26, 28";
    // Below the pool only every 61st cut: they all end at the same pool read.
    CutEverywhere("raw_5x", RawHeader, LoadRaw, {"read failed", not_raw},
                  static_cast<size_t>(scan::Find("raw_5x").Int("bytes")), 39940, 61);
}

TEST_F(BadInput, ImageCutAtEveryOffset) {
    for (const char* name : {"image_imgf_rev3", "image_c4fd0708", "image_tail"})
        CutEverywhere(name, ReadImageHeader, LoadImage,
                      {"read failed", "unknown header", "unknown rev of 5x header",
                       "unknown rev of 11x header"},
                      Needed(name));
}

TEST_F(BadInput, PulsegenCutAtEveryOffset) {
    // The trailing sum is not needed to read the points.
    CutEverywhere("pulsegen_ipg0_odd", ReadPulsegenHeader, LoadPulsegen, {"read failed"},
                  static_cast<size_t>(64 + 2 * scan::Find("pulsegen_ipg0_odd").Int("x")));
    CutEverywhere("pulsegen_dft2", ReadPulsegenHeader, LoadPulsegen, {"read failed"},
                  static_cast<size_t>(608 + 2 * scan::Find("pulsegen_dft2").Int("x")));
}

// A cut plotpulse file keeps its header while the streams are whole (the ninth length only
// enters the size test) and then loads the whole file's array.
TEST_F(BadInput, PlotpulseCutAtEveryOffset) {
    CutEverywhere("plotpulse_overrun", ReadPlotpulseHeader, LoadPlotpulse, {"invalid header"},
                  ~size_t{0});
    const scan::CFile& f = scan::Find("plotpulse_plain");
    const std::string bytes = scan::Slurp(scan::Path(f.name));
    const std::string want = scan::Slurp(scan::Path(f.name + "_plain.bin"));
    const std::string path = ::testing::TempDir() + "cut_plot";
    for (size_t cut = 0; cut <= bytes.size(); ++cut) {
        scan::Spit(path, bytes.substr(0, cut));
        FileEntry e;
        e.path = path;
        if (!ReadPlotpulseHeader(e)) {
            EXPECT_EQ(e.status, "invalid header");
            continue;
        }
        EXPECT_GE(cut, bytes.size() - 5) << "header passed at " << cut;
        scan::CTarget t(e);
        ASSERT_EQ(LoadPlotpulse(options_, e, t.targets), 1) << cut;
        EXPECT_EQ(std::string(static_cast<const char*>(t.data.Data()), t.data.Bytes()), want);
    }
    unlink(path.c_str());
}

TEST_F(BadInput, RawHeadersWithAbsurdSizes) {
    const std::string bytes = scan::Slurp(scan::Path("raw_5x"));
    struct Patch {
        const char* what;
        size_t at;
        uint16_t value;  // big-endian in the file
    };
    const Patch patches[] = {
        {"y resolution 0", 104, 0},
        {"last receiver below the first", 202, 0xFFF0},
        {"negative echoes", 70, 0xFFFF},
        {"x resolution past the file", 102, 0xFFFF},
        {"slice count past the pool", 68, 0x7FFF},
    };
    const std::string path = ::testing::TempDir() + "patched_raw";
    for (const Patch& p : patches) {
        std::string b = bytes;
        b[p.at] = static_cast<char>(p.value >> 8);
        b[p.at + 1] = static_cast<char>(p.value & 0xFF);
        scan::Spit(path, b);
        FileEntry e;
        e.path = path;
        ASSERT_EQ(ReadRawHeader(e, nullptr), 1) << p.what;
        // The target is as large as the header says or, when that is beyond memory, none.
        CZrkData target;
        target.SetHeader(e.header.Type(), e.header.nx, e.header.ny, e.header.nz, e.header.nt,
                         e.header.nu, 1);
        if (target.Bytes() < (uint64_t{1} << 28)) target.Allocate();
        CZrkData* targets[3] = {&target, nullptr, nullptr};
        const int ok = LoadRaw(options_, e, targets);
        target.FreeData();
        EXPECT_EQ(ok, 0) << p.what;
        EXPECT_EQ(e.status, "read failed") << p.what;
    }
    unlink(path.c_str());
}

}  // namespace
