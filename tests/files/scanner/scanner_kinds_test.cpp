// The scanner kinds register themselves in the dispatch. This program links no registry, so
// it records the registrations here and drives the rows it was given.
#include <gtest/gtest.h>

#include <map>
#include <stdexcept>

#include "files/file_kinds.h"
#include "files/scanner/scanner_kinds.h"
#include "tests/files/scanner/scanner_fixture.h"

namespace {

std::map<int, CFileReader>& Readers() {
    static std::map<int, CFileReader> readers;
    return readers;
}

std::vector<CFileWriter>& Writers() {
    static std::vector<CFileWriter> writers;
    return writers;
}

}  // namespace

void RegisterReader(int code, const CFileReader& reader) {
    if (!Readers().emplace(code, reader).second) throw std::logic_error("registered twice");
}

void RegisterWriter(const CFileWriter& writer) { Writers().push_back(writer); }

namespace {

class ScannerKinds : public scan::ScannerTest {};

TEST_F(ScannerKinds, CodesAndTheSaveRowReachTheReaders) {
    RegisterScannerKinds();
    RegisterScannerKinds();  // once only, however often asked
    ASSERT_EQ(Readers().size(), 4u);
    ASSERT_EQ(Writers().size(), 1u);
    EXPECT_EQ(Writers()[0].row, 6);

    // The baselines radio group is taken at each header step; each code reads its own kind.
    const std::pair<int, const char*> files[] = {
        {7, "raw_5x"}, {8, "pulsegen_dft2"}, {9, "plotpulse_plain"}, {12, "image_tail"}};
    options_.baselines[1] = 1;
    options_.baselines[2] = 1;
    for (const auto& [code, name] : files) {
        ASSERT_TRUE(Readers().count(code)) << code;
        const CFileReader& r = Readers()[code];
        ASSERT_TRUE(r.header && r.load) << code;
        EXPECT_EQ(r.load_space, nullptr);
        FileEntry e = scan::Entry(name);
        ASSERT_EQ(r.header(options_, e), 1) << code << ": " << e.status;
        EXPECT_EQ(e.addBaseline, 1);
        EXPECT_EQ(e.subtractBaseline, 1);
        scan::CTarget t(e);
        ASSERT_EQ(r.load(options_, e, t.targets), 1) << code << ": " << e.status;
        const std::string want = code == 7 ? "raw_5x_subtract" : std::string(name) + "_plain";
        EXPECT_TRUE(peer::Same(peer::FromRecord(&t.data), scan::Expected(want, e.header))) << code;
        // Another code's file fails with that code's text.
        FileEntry other = scan::Entry(code == 7 ? "image_tail" : "raw_5x");
        EXPECT_EQ(r.header(options_, other), 0) << code;
    }

    // Row 6 writes the dialog's part of its first array.
    CZrkData a;
    a.SetHeader(TYPE_I2, 4, 1, 1, 1, 1, 1);
    ASSERT_NE(a.Allocate(), nullptr);
    const int16_t v[4] = {1, -2, 3, -4};
    std::memcpy(a.Data(), v, sizeof v);
    CSaveOptions save;
    save.iqmp = 0;
    std::string status;
    const std::string path = ::testing::TempDir() + "row6.ipg";
    CSaveRequest request{path, {&a}, nullptr, &save, &status};
    ASSERT_EQ(Writers()[0].write(request), 1) << status;
    FileEntry back;
    back.path = path;
    ASSERT_EQ(Readers()[8].header(options_, back), 1);
    scan::CTarget t(back);
    ASSERT_EQ(Readers()[8].load(options_, back, t.targets), 1);
    EXPECT_EQ(std::memcmp(t.data.Data(), v, sizeof v), 0);
    a.FreeData();
    request.arrays.clear();
    EXPECT_EQ(Writers()[0].write(request), 0);
    EXPECT_EQ(status, "can not find data");
    std::remove(path.c_str());
}

}  // namespace
