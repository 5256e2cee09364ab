// Pulsegen and plotpulse files against make_scanner.py (see scanner_fixture.h); saved
// pulsegen files are checked by the generator's own parser.
#include <gtest/gtest.h>

#include <bit>
#include <filesystem>

#include "files/scanner/plotpulse_file.h"
#include "files/scanner/pulsegen_file.h"
#include "tests/files/scanner/scanner_fixture.h"

namespace {

class PulseFile : public scan::ScannerTest {};

TEST_F(PulseFile, PulsegenFilesGiveTheGeneratorsPoints) {
    for (const scan::CFile* f : scan::OfKind("pulsegen")) {
        SCOPED_TRACE(f->name);
        FileEntry e = scan::Entry(f->name);
        ASSERT_EQ(ReadPulsegenHeader(e), 1) << e.status;
        EXPECT_EQ(e.header.Type(), f->Text("type") == "ci2" ? TYPE_CI2 : TYPE_I2);
        EXPECT_EQ(e.header.nx, res_t(f->Int("x")));
        EXPECT_EQ(e.header.ny * e.header.nz * e.header.nt * e.header.nu * e.header.nv, 1u);
        EXPECT_EQ(e.dataOffset, f->Int("offset"));
        EXPECT_EQ(e.byteSwap, 1);
        scan::CTarget t(e);
        ASSERT_EQ(LoadPulsegen(options_, e, t.targets), 1) << e.status;
        EXPECT_EQ(e.status, "reading complete");
        EXPECT_TRUE(
            peer::Same(peer::FromRecord(&t.data), scan::Expected(f->name + "_plain", e.header)));
    }
    FileEntry unknown = scan::Entry("pulsegen_unknown");
    EXPECT_EQ(ReadPulsegenHeader(unknown), 0);
    EXPECT_EQ(unknown.status, "unknown file type");
    EXPECT_EQ(unknown.failed, 1);

    // A count past the file's end: the header stands, the load fails with its message box.
    FileEntry huge = scan::Entry("pulsegen_dft2_huge");
    ASSERT_EQ(ReadPulsegenHeader(huge), 1);
    EXPECT_EQ(huge.header.nx, 65535u);
    scan::CTarget t(huge);
    EXPECT_EQ(LoadPulsegen(options_, huge, t.targets), 0);
    EXPECT_EQ(huge.status, "read failed");
    EXPECT_EQ(host_.messages, std::vector<std::string>{"read failed"});
}

// Save, check with the generator's parser, read back: odd counts gain one 0.
TEST_F(PulseFile, SavedPulsegenFilesParseAndReadBack) {
    for (uint64_t n : {9u, 12u, 1u}) {
        SCOPED_TRACE(n);
        CZrkData a;
        a.SetHeader(TYPE_CI2, n, 1, 1, 1, 1, 1);
        ASSERT_NE(a.Allocate(), nullptr);
        auto* iq = static_cast<int16_t*>(a.Data());
        for (uint64_t k = 0; k < 2 * n; ++k)
            iq[k] = static_cast<int16_t>((k * 7919 + 13) % 65536 - 32768);
        const std::string path = ::testing::TempDir() + "saved.ipg";
        std::string status;
        // part argument 1 saves the q components
        ASSERT_EQ(SavePulsegen(path, &a, 1, status), 1) << status;
        EXPECT_TRUE(host_.questions.empty());

        peer::Peer p;
        ASSERT_TRUE(p.Run("files/scanner/make_scanner.py", "parse " + path));
        const peer::Array points = p.Get("points");
        const uint64_t m = n + (n & 1);
        ASSERT_EQ(points.shape[0], m);
        std::vector<int16_t> want(m, 0);
        for (uint64_t k = 0; k < n; ++k) want[k] = iq[2 * k + 1];
        EXPECT_EQ(points.bytes, std::string(reinterpret_cast<const char*>(want.data()), 2 * m));

        FileEntry e;
        e.path = path;
        ASSERT_EQ(ReadPulsegenHeader(e), 1);
        ASSERT_EQ(e.header.nx, m);
        scan::CTarget t(e);
        ASSERT_EQ(LoadPulsegen(options_, e, t.targets), 1);
        EXPECT_EQ(std::string(static_cast<const char*>(t.data.Data()), 2 * m), points.bytes);
        a.FreeData();
        std::filesystem::remove(path);
    }
}

TEST_F(PulseFile, SaveRefusals) {
    CZrkData a;
    a.SetHeader(TYPE_R4, 3, 1, 1, 1, 1, 1);
    ASSERT_NE(a.Allocate(), nullptr);
    auto* v = static_cast<float*>(a.Data());
    v[0] = 1.5f, v[1] = 40000.0f, v[2] = -7.9f;
    const std::string path = ::testing::TempDir() + "refused.ipg";
    std::filesystem::remove(path);
    std::string status;
    EXPECT_EQ(SavePulsegen(path, nullptr, 0, status), 0);
    EXPECT_EQ(status, "can not find data");
    EXPECT_EQ(SavePulsegen(path, &a, 4, status), 0);
    EXPECT_EQ(status, "select i/q/mag/phase");
    EXPECT_EQ(host_.messages,
              (std::vector<std::string>{"can not find data", "select i/q/mag/phase"}));
    // Out of 16 bits: "no" leaves no file, "yes" writes the low 16 bits.
    host_.answer = false;
    EXPECT_EQ(SavePulsegen(path, &a, 0, status), 0);
    EXPECT_EQ(host_.questions,
              std::vector<std::string>{"data range is larger than +/-32767!\n\nsave anyway?"});
    EXPECT_FALSE(std::filesystem::exists(path));
    host_.answer = true;
    ASSERT_EQ(SavePulsegen(path, &a, 0, status), 1);
    peer::Peer p;
    ASSERT_TRUE(p.Run("files/scanner/make_scanner.py", "parse " + path));
    const std::vector<int16_t> want = {1, static_cast<int16_t>(40000 - 65536), -7, 0};
    EXPECT_EQ(p.Get("points").bytes, std::string(reinterpret_cast<const char*>(want.data()), 8));
    EXPECT_EQ(SavePulsegen("/nonexistent/folder/x.ipg", &a, 0, status), 0);
    EXPECT_EQ(status, "file create failed");
    a.FreeData();
    std::filesystem::remove(path);
}

TEST_F(PulseFile, PlotpulseExpandsAsTheGeneratorDoes) {
    const scan::CFile& f = scan::Find("plotpulse_plain");
    FileEntry e = scan::Entry(f.name);
    ASSERT_EQ(ReadPlotpulseHeader(e), 1) << e.status;
    const CZrkData& h = e.header;
    EXPECT_EQ(h.Type(), TYPE_I2);
    EXPECT_EQ(h.nx, res_t(f.Int("x")));
    EXPECT_EQ(h.ny, 7u);
    EXPECT_EQ(h.nz, res_t(f.Int("z")));
    EXPECT_EQ(h.nt * h.nu * h.nv, 1u);
    EXPECT_EQ(std::bit_cast<uint32_t>(h.mm[0]), 0x360637BDu);
    for (int k = 1; k < 6; ++k) EXPECT_EQ(h.mm[k], 1.0f);
    scan::CTarget t(e);
    ASSERT_EQ(LoadPlotpulse(options_, e, t.targets), 1) << e.status;
    EXPECT_EQ(e.status, "reading complete");
    EXPECT_TRUE(peer::Same(peer::FromRecord(&t.data), scan::Expected(f.name + "_plain", h)));
}

// Blocks that end before any sample make planes of no samples, and load as such.
TEST_F(PulseFile, PlotpulseOfEmptyBlocks) {
    const scan::CFile& f = scan::Find("plotpulse_empty_blocks");
    FileEntry e = scan::Entry(f.name);
    ASSERT_EQ(ReadPlotpulseHeader(e), 1) << e.status;
    EXPECT_EQ(e.header.nx, 0u);
    EXPECT_EQ(e.header.nz, res_t(f.Int("z")));
    scan::CTarget t(e);
    EXPECT_EQ(LoadPlotpulse(options_, e, t.targets), 1);
    EXPECT_EQ(e.status, "reading complete");
}

TEST_F(PulseFile, PlotpulseFailures) {
    for (const scan::CFile* f : scan::OfKind("plotpulse_rejected")) {
        FileEntry e = scan::Entry(f->name);
        EXPECT_EQ(ReadPlotpulseHeader(e), 0) << f->name;
        EXPECT_EQ(e.status, "invalid header") << f->name;
        EXPECT_EQ(e.failed, 1);
    }
    // "PD/P" reads its header little-endian at 333, and its samples as the plain form, which
    // it is not; a run behind the last block end would pass the array.
    for (const scan::CFile* f : scan::OfKind("plotpulse_unloadable")) {
        FileEntry e = scan::Entry(f->name);
        ASSERT_EQ(ReadPlotpulseHeader(e), 1) << f->name << ": " << e.status;
        EXPECT_EQ(e.header.nx, res_t(f->Int("x"))) << f->name;
        EXPECT_EQ(e.header.nz, res_t(f->Int("z"))) << f->name;
        scan::CTarget t(e);
        EXPECT_EQ(LoadPlotpulse(options_, e, t.targets), 0) << f->name;
        EXPECT_EQ(e.status, "read failed");
    }
}

}  // namespace
