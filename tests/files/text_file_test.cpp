// The text reader and writer: round trips of every type along x and along y lines, complex
// pairs, numpy.loadtxt reading what we write, separators of any one character, files that
// hold no numbers, and the escapes of the separator and end of line.
#include <sstream>

#include "files/escapes.h"
#include "files/text_file.h"
#include "files/user_format.h"
#include "tests/files/open_save_fixture.h"
#include "tests/peer.h"

namespace files_test {
namespace {

class TextFile : public OpenSaveTest {
  protected:
    void Layout(const std::string& res, int type, int perline) {
        std::istringstream r(res);
        for (std::string& v : open_.res4d) r >> v;
        open_.datatype = type;
        open_.perline = perline;
    }
    std::string Bytes(const CZrkData* a) const {
        return std::string(static_cast<const char*>(a->Data()), a->Bytes());
    }
};

TEST_F(TextFile, EveryTypeRoundTripsAlongXAndAlongY) {
    save_.txtformat = "%.17g";
    for (int type = 0; type < TYPE_COUNT; ++type) {
        for (int perline = 0; perline < 2; ++perline) {
            const std::string name = "t" + std::to_string(type) + "p" + std::to_string(perline);
            CZrkData* a = Ramp(name.c_str(), type, 4, 3, 2, 2);
            const std::string bytes = Bytes(a);
            save_.perline = perline;
            save_.iqmp = IsComplexType(type) ? 4 : 0;
            ASSERT_EQ(Save(name, Path(name + ".txt"), 1), "file saved") << name;
            space_.DelData(a);
            Layout("4 3 2 2", type, perline);
            ASSERT_EQ(Open({Path(name + ".txt")}, 4), "read success") << name;
            const CZrkData* back = space_.FindData(name.c_str());
            ASSERT_NE(back, nullptr) << name;
            EXPECT_EQ(Bytes(back), bytes) << name;
            space_.DelData(name.c_str());
        }
    }
}

TEST_F(TextFile, LinesEndAsTheRulesSayAndNumPyReadsThem) {
    const float v[12] = {1.5f, -2, 3, 4, 5.25f, 6, 7, 8, 9, 10, 11, -12};
    CZrkData* a = space_.NewData(TYPE_R4, 3, 2, 2, 1, 1, 1, "a");
    std::copy(v, v + 12, static_cast<float*>(a->Data()));
    save_.txtformat = "%g";
    save_.separator = "\\t";
    save_.eol = "\\n";
    ASSERT_EQ(Save("a", Path("x.txt"), 1), "file saved");
    EXPECT_EQ(Slurp(Path("x.txt")), "1.5\t-2\t3\n4\t5.25\t6\n\n7\t8\t9\n10\t11\t-12\n\n");
    save_.perline = 1;
    save_.separator = ",\\s";
    ASSERT_EQ(Save("a", Path("y.txt"), 1), "file saved");
    EXPECT_EQ(Slurp(Path("y.txt")), "1.5, 4\n-2, 5.25\n3, 6\n\n7, 10\n8, 11\n9, -12\n\n");

    peer::Peer p;
    const std::string id = p.Case("text " + Path("x.txt"));
    ASSERT_TRUE(p.Run("files/raw_layout.py"));
    const std::vector<double> got = p.Get(id).Pairs();
    ASSERT_EQ(got.size(), 24u);
    for (int k = 0; k < 12; ++k) EXPECT_EQ(got[2 * k], v[k]) << k;

    save_.txtformat = "%s";
    EXPECT_EQ(Save("a", Path("bad.txt"), 1), "invalid number format");
    EXPECT_FALSE(std::filesystem::exists(Path("bad.txt")));
}

TEST_F(TextFile, AnyOneCharacterSeparatesAndYLinesTranspose) {
    Spit(Path("mixed.txt"), "1,2;3\n4 5\t6");
    Layout("3 2 1 1", TYPE_R8, 0);
    ASSERT_EQ(Open({Path("mixed.txt")}, 4), "read success");
    const double* m = static_cast<const double*>(space_.FindData("mixed")->Data());
    EXPECT_EQ(std::vector<double>(m, m + 6), (std::vector<double>{1, 2, 3, 4, 5, 6}));

    Spit(Path("cols.txt"), "1 2 3\n4 5 6\n");
    Layout("2 3 1 1", TYPE_I4, 1);
    ASSERT_EQ(Open({Path("cols.txt")}, 4), "read success");
    const int32_t* c = static_cast<const int32_t*>(space_.FindData("cols")->Data());
    EXPECT_EQ(std::vector<int32_t>(c, c + 6), (std::vector<int32_t>{1, 4, 2, 5, 3, 6}));

    Spit(Path("pairs.txt"), "1 -1\t2 -2\n+3e1 inf\t1e999 -1e-999\n");
    Layout("2 2 1 1", TYPE_CR8, 0);
    ASSERT_EQ(Open({Path("pairs.txt")}, 4), "read success");
    const double* q = static_cast<const double*>(space_.FindData("pairs")->Data());
    EXPECT_EQ(std::vector<double>(q, q + 8),
              (std::vector<double>{1, -1, 2, -2, 30, HUGE_VAL, HUGE_VAL, -0.0}));
}

TEST_F(TextFile, FilesWithoutEnoughNumbersFailAndLeaveNothing) {
    const std::pair<const char*, const char*> bad[] = {
        {"words.txt", "one two three four five six seven eight"},
        {"short.txt", "1 2 3 4 5"},
        {"broken.txt", "1 2 3 x 5 6 7 8 9 10"},
        {"signs.txt", "1 2 3 +-4 5 6 7 8"},
        {"empty.txt", ""},
    };
    Layout("3 2 1 1", TYPE_R4, 0);
    for (const auto& [name, text] : bad) {
        Spit(Path(name), text);
        EXPECT_NE(Open({Path(name)}, 4), "read success") << name;
        EXPECT_EQ(space_.Count(), 0) << name;
    }
    EXPECT_EQ(Open({Path("empty.txt")}, 4), "file too short for the resolutions");
    EXPECT_EQ(Open({Path("words.txt")}, 4), "read failed");
    EXPECT_EQ(host_.history.back(), "load one failed\r\n");
    EXPECT_EQ(host_.status.back(), "read failed");
}

TEST(Escapes, ExpandAsWritten) {
    const std::pair<const char*, const char*> table[] = {
        {"\\t", "\t"},          {"\\n", "\n"},        {"\\r\\n", "\r\n"}, {"a\\sb", "a b"},
        {"\\\\", "\\"},         {"\\x41\\x4a", "AJ"}, {"\\101", "A"},     {"\\q", "\\q"},
        {"end\\", "end\\"},     {"\\x", "\\x"},       {"\\x4g", "\x04g"}, {"\\1234", "S4"},
        {"\\\"\\'\\?", "\"'?"},
    };
    for (const auto& [in, want] : table) EXPECT_EQ(ExpandEscapes(in), std::string(want)) << in;
    EXPECT_EQ(ExpandEscapes("\\0"), std::string(1, '\0'));
}

TEST(UserFormats, OnlyTheAllowedConversions) {
    const std::pair<const char*, int> table[] = {
        {"file%02d.txt", 1}, {"plain", 0}, {"100%%", 0},   {"%d%d", 2},   {"%s", -1},
        {"%*d", -1},         {"%ld", -1},  {"%5000d", -1}, {"%-3.2d", 1}, {"50%", -1},
    };
    for (const auto& [format, count] : table)
        EXPECT_EQ(CountConversions(format, "diuxXo"), count) << format;
    EXPECT_EQ(FormatCount("file%02d.txt", 3), "file03.txt");
    EXPECT_EQ(FormatCount("%d%d", 3), "");
    EXPECT_EQ(CountConversions("%.9g", "aAeEfFgG"), 1);
}

}  // namespace
}  // namespace files_test
