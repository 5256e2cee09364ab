// Image files in the four header forms, against make_scanner.py (see scanner_fixture.h).
#include <gtest/gtest.h>

#include "files/scanner/image_file.h"
#include "tests/files/scanner/scanner_fixture.h"

namespace {

class ImageFile : public scan::ScannerTest {};

TEST_F(ImageFile, EveryFormGivesTheGeneratorsPlane) {
    const auto files = scan::OfKind("image");
    ASSERT_EQ(files.size(), 6u);
    for (const scan::CFile* f : files) {
        SCOPED_TRACE(f->name);
        FileEntry e = scan::Entry(f->name);
        ASSERT_EQ(ReadImageHeader(e), 1) << e.status;
        EXPECT_EQ(e.status, "exam " + f->Text("exam") + " series " + f->Text("series") + " image " +
                                f->Text("image"));
        EXPECT_EQ(e.failed, 0);
        EXPECT_EQ(e.byteSwap, f->Int("swap"));
        EXPECT_EQ(e.dataOffset, f->Int("offset"));
        const CZrkData& h = e.header;
        EXPECT_EQ(h.Type(), TYPE_I2);
        EXPECT_EQ(h.nx, res_t(f->Int("x")));
        EXPECT_EQ(h.ny, res_t(f->Int("y")));
        EXPECT_EQ(h.nz * h.nt * h.nu * h.nv, 1u);
        EXPECT_TRUE(scan::BitsEqual(h.mm[0], f->Bits("sx"))) << h.mm[0];
        EXPECT_TRUE(scan::BitsEqual(h.mm[1], f->Bits("sy"))) << h.mm[1];
        EXPECT_TRUE(scan::BitsEqual(h.mm[2], f->Bits("sz"))) << h.mm[2];
        EXPECT_EQ(h.mm[3], 1.0f);

        // Loaded into the second plane of a stack of three.
        e.dest[0] = 1;
        const res_t stack[4] = {3, 1, 1, 1};
        scan::CTarget t(e, stack);
        ASSERT_EQ(LoadImage(options_, e, t.targets), 1) << e.status;
        EXPECT_EQ(e.status, "reading complete");
        const uint64_t plane = h.BytesPerPlane();
        const std::string got(static_cast<const char*>(t.data.Data()), t.data.Bytes());
        EXPECT_EQ(got.substr(plane, plane), scan::Slurp(scan::Path(f->name + "_plain.bin")));
        EXPECT_EQ(got.substr(0, plane), std::string(plane, '\x5A'));
        EXPECT_EQ(got.substr(2 * plane), std::string(plane, '\x5A'));
    }
}

TEST_F(ImageFile, UnknownFormsSayWhich) {
    const auto files = scan::OfKind("image_rejected");
    ASSERT_EQ(files.size(), 3u);
    for (const scan::CFile* f : files) {
        FileEntry e = scan::Entry(f->name);
        EXPECT_EQ(ReadImageHeader(e), 0) << f->name;
        EXPECT_EQ(e.status, f->Text("text"));
        EXPECT_EQ(e.failed, 1);
    }
}

}  // namespace
