// Scanner raw files through the open dialog's path: the file kinds find the raw reader by its
// code, and the load model stacks two files, the second at dest after the first. The files
// and the arrays expected of them come from the generator of the scanner tests.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/files/open_save_fixture.h"

namespace {

class ScannerStack : public files_test::OpenSaveTest {
  protected:
    std::string Bytes(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
};

TEST_F(ScannerStack, TwoRawFilesStackAlongVInPathOrder) {
    const std::string folder = Path("scanner");
    const std::string make = "/usr/bin/python3 -B " QUELMOR_SOURCE_DIR
                             "/tests/files/scanner/make_scanner.py " +
                             folder + " >/dev/null";
    ASSERT_EQ(std::system(make.c_str()), 0);
    // z, t and the receivers above 1: the stack runs along v
    EXPECT_EQ(Open({folder + "/raw_27", folder + "/raw_26x"}, 7, true), "read success");
    ASSERT_EQ(space_.Count(), 1);
    const CZrkData* a = space_.GetData(0);
    EXPECT_STREQ(a->name, "raw_26x");
    EXPECT_EQ(a->ResText(), "[6][3][2][2][2][2]");
    const std::string first = Bytes(folder + "/raw_26x_plain.bin");
    const std::string second = Bytes(folder + "/raw_27_plain.bin");
    ASSERT_EQ(first.size() + second.size(), a->Bytes());
    const std::string got(static_cast<const char*>(a->Data()), a->Bytes());
    EXPECT_EQ(got.substr(0, first.size()), first);
    EXPECT_EQ(got.substr(first.size()), second);
}

}  // namespace
