// The registry of file kinds and the guess of a file's kind from its content and name.
#include <stdexcept>

#include "files/guess_code.h"
#include "tests/files/open_save_fixture.h"

namespace files_test {
namespace {

int Nothing(const CSaveRequest&) { return 0; }

class FileKinds : public OpenSaveTest {};

TEST_F(FileKinds, RegistryRefusesDoublesAndMatchesTheLongestExtension) {
    EXPECT_NE(FindReader(3), nullptr);
    EXPECT_NE(FindReader(4), nullptr);
    EXPECT_NE(FindReader(6), nullptr);
    EXPECT_EQ(FindReader(10), nullptr);
    EXPECT_EQ(FindWriter(0), FindWriterByExtension("/data/A.RAW"));
    EXPECT_EQ(FindWriter(1), FindWriterByExtension("x.txt"));
    EXPECT_EQ(FindWriter(5), FindWriterByExtension("w.zrk"));
    EXPECT_EQ(FindWriterByExtension("x.unknown"), nullptr);
    EXPECT_EQ(FindWriterByExtension(".txt"), nullptr);
    EXPECT_THROW(RegisterReader(3, {}), std::logic_error);
    EXPECT_THROW(RegisterWriter({.row = 1, .extensions = ".q1", .write = Nothing}),
                 std::logic_error);
    EXPECT_THROW(RegisterWriter({.row = -1, .extensions = ".TXT", .write = Nothing}),
                 std::logic_error);
    // Registering twice over is harmless.
    InstallFileKinds();
    RegisterWriter({.row = -1, .extensions = ".gz", .write = Nothing});
    RegisterWriter({.row = -1, .extensions = ".test.gz", .write = Nothing});
    EXPECT_EQ(FindWriterByExtension("a.test.gz")->extensions, ".test.gz");
    EXPECT_EQ(FindWriterByExtension("a.b.gz")->extensions, ".gz");
}

TEST_F(FileKinds, GuessByContentThenName) {
    std::string dicom(132, '\0');
    dicom.replace(128, 4, "DICM");
    std::string nifti1(352, '\0');
    nifti1.replace(344, 4, std::string("n+1\0", 4));
    std::string nifti2(16, '\0');
    nifti2.replace(4, 4, std::string("n+2\0", 4));
    const struct {
        const char* name;
        std::string bytes;
        int code;
    } table[] = {
        {"scan.bin", dicom, 1},         {"a.txt", nifti1, 2},
        {"a.raw", nifti2, 2},           {"b.raw", "MATLAB 5.0 MAT-file", 5},
        {"c.raw", "zarnik win99\n", 6}, {"d.nii", "", 2},
        {"e.nii.gz", "\x1f\x8b", 2},    {"f.HDR", "", 2},
        {"g.mat", "\0\0\0\0", 5},       {"h.zrk", "", 6},
        {"i.txt", "1 2 3", 4},          {"j", "1 2 3", 3},
        {"k.dcm", "short", 3},
    };
    for (const auto& row : table) {
        Spit(Path(row.name), row.bytes);
        EXPECT_EQ(GuessOpenCode(Path(row.name)), row.code) << row.name;
    }
    EXPECT_EQ(GuessOpenCode(Path("missing.mat")), 5);
}

}  // namespace
}  // namespace files_test
