// A DICOM series through the open dialog's path: the file kinds, the load model's naming and
// its stack, against pydicom's pixel arrays of the same files.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "files/file_dispatch.h"
#include "tests/files/open_save_fixture.h"
#include "tests/peer.h"

namespace {

const std::string kTestFiles = "/usr/lib/python3/dist-packages/pydicom/data/test_files/";
const std::string kSeries = kTestFiles + "dicomdirtests/98892003/MR700";

class DicomSeries : public files_test::OpenSaveTest {
  protected:
    static std::vector<std::string> SeriesPaths() {
        std::vector<std::string> paths;
        for (const auto& f : std::filesystem::directory_iterator(kSeries))
            paths.push_back(f.path().string());
        std::sort(paths.begin(), paths.end());
        return paths;
    }
};

TEST_F(DicomSeries, FilesAreNamedByExamSeriesAndImageAndStackInPathOrder) {
    if (!std::filesystem::exists(kSeries)) GTEST_SKIP() << "pydicom's test files are missing";
    const std::vector<std::string> paths = SeriesPaths();
    ASSERT_EQ(paths.size(), 7u);
    peer::Peer p;
    std::string list;
    for (const std::string& path : paths) list += "'" + path + "',";
    ASSERT_TRUE(
        p.RunText("import pydicom\n"
                  "ds = [pydicom.dcmread(f) for f in [" +
                  list +
                  "]]\n"
                  "peer.save(FOLDER, 'stack', np.stack([d.pixel_array for d in ds]).T)\n"
                  "for k, d in enumerate(ds):\n"
                  "    peer.save(FOLDER, 'e%ds%03di%03d' % (int(d.StudyID), "
                  "int(d.SeriesNumber), int(d.InstanceNumber)), d.pixel_array.T)\n"
                  "print(' '.join('e%ds%03di%03d' % (int(d.StudyID), "
                  "int(d.SeriesNumber), int(d.InstanceNumber)) for d in ds))\n"));
    const std::string want_names = p.Output().substr(0, p.Output().find('\n'));

    // one by one, rule 2: each file under its numbers
    open_.name_is_file = 2;
    EXPECT_EQ(Open(paths, 1), "read success");
    std::string names;
    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        FileEntry e;
        e.path = path;
        e.code = 1;
        ASSERT_EQ(ReadHeader(open_, e), 1) << e.status;
        char name[64];
        std::snprintf(name, sizeof name, "e%ds%03di%03d", e.exam, e.series, e.image);
        names += (names.empty() ? "" : " ") + std::string(name);
        const CZrkData* a = space_.FindData(name);
        ASSERT_NE(a, nullptr);
        EXPECT_TRUE(peer::Same(peer::FromRecord(a), p.Get(name)));
    }
    EXPECT_EQ(names, want_names);

    // as one stack along z, in path order
    while (space_.Count() > 0) space_.DelData(0);
    EXPECT_EQ(Open(paths, 1, true), "read success");
    ASSERT_EQ(space_.Count(), 1);
    EXPECT_EQ(space_.GetData(0)->ResText(), "[16][16][7]");
    EXPECT_TRUE(peer::Same(peer::FromRecord(space_.GetData(0)), p.Get("stack")));

    // a file of another size ends the stack: it becomes a stack of its own
    while (space_.Count() > 0) space_.DelData(0);
    std::vector<std::string> more = paths;
    more.push_back(kTestFiles + "MR_small.dcm");
    std::sort(more.begin(), more.end());
    EXPECT_EQ(Open(more, 1, true), "read success");
    ASSERT_EQ(space_.Count(), 2);
    std::vector<std::string> sizes;
    for (int k = 0; k < space_.Count(); ++k) sizes.push_back(space_.GetData(k)->ResText());
    std::sort(sizes.begin(), sizes.end());
    EXPECT_EQ(sizes, (std::vector<std::string>{"[16][16][7]", "[64][64]"}));
}

}  // namespace
