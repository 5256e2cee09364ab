// The binary reader and writer against NumPy: every type in both byte orders written by us
// and read by NumPy, then read back by us; layouts with header bytes and skips written by
// NumPy and read by us; the size line; conversion to another type with its clip question;
// and saves that fail or die half-way leaving the old file whole.
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <cmath>
#include <thread>

#include "files/binary_file.h"
#include "tests/files/open_save_fixture.h"
#include "tests/peer.h"

namespace files_test {
namespace {

class BinaryFile : public OpenSaveTest {
  protected:
    void Layout(const std::string& res, int type, int swap, const std::string& skips = "0 0 0 0",
                const std::string& offset = "0") {
        std::istringstream r(res), s(skips);
        for (std::string& v : open_.res4d) r >> v;
        for (std::string& v : open_.skip4d) s >> v;
        open_.datatype = type;
        open_.swap = swap;
        open_.offset = offset;
    }
    std::string Bytes(const CZrkData* a) const {
        return std::string(static_cast<const char*>(a->Data()), a->Bytes());
    }
};

TEST_F(BinaryFile, EveryTypeInBothByteOrdersRoundTripsAndNumPyReadsIt) {
    peer::Peer p;
    struct Case {
        std::string id, path, bytes;
    };
    // The range table asks about every negative i8; the answer is yes.
    host_.answer = true;
    std::vector<Case> cases;
    for (int type = 0; type < TYPE_COUNT; ++type) {
        for (int swap = 0; swap < 2; ++swap) {
            const std::string name = "t" + std::to_string(type) + "s" + std::to_string(swap);
            CZrkData* a = Ramp(name.c_str(), type, 5, 3, 2, 2);
            save_.dtype = type;
            save_.swap = swap;
            const std::string path = Path(name + ".raw");
            ASSERT_EQ(Save(name, path, 0), "file saved") << name;
            const std::string line = std::string("read ") + peer::DType(type % 10) + " " +
                                     std::to_string(swap) + " " +
                                     std::to_string(a->Count() * a->Components()) + " " + path;
            cases.push_back({p.Case(line), path, Bytes(a)});
            space_.DelData(a);

            // Back through the open and load models.
            Layout("5 3 2 2", type, swap);
            ASSERT_EQ(Open({path}, 3), "read success") << name;
            const CZrkData* back = space_.FindData((name).c_str());
            ASSERT_NE(back, nullptr) << name;
            EXPECT_EQ(back->Type(), type);
            EXPECT_EQ(Bytes(back), cases.back().bytes) << name;
            space_.DelData(name.c_str());
        }
    }
    ASSERT_TRUE(p.Run("files/raw_layout.py"));
    for (const Case& c : cases) EXPECT_EQ(p.Get(c.id).bytes, c.bytes) << c.path;
}

TEST_F(BinaryFile, ReadsHeaderBytesSkipsAndByteOrderThatNumPyWrote) {
    struct Layout6 {
        const char* dtype;
        int type, big;
        const char* res;
        int offset;
        const char* skips;
    };
    const Layout6 layouts[] = {
        {"int16", TYPE_I2, 0, "7 5 3 2", 0, "0 0 0 0"},
        {"int16", TYPE_I2, 1, "7 5 3 2", 128, "0 0 0 0"},
        {"float32", TYPE_R4, 1, "4 3 2 1", 11, "2 0 0 0"},
        {"uint8", TYPE_N1, 0, "6 4 2 3", 3, "0 5 0 1"},
        {"float64", TYPE_R8, 0, "3 3 3 2", 0, "0 0 17 0"},
        {"int32", TYPE_I4, 1, "5 2 2 2", 7, "1 2 3 4"},
    };
    peer::Peer p;
    std::vector<std::string> ids;
    for (size_t k = 0; k < std::size(layouts); ++k) {
        const Layout6& l = layouts[k];
        ids.push_back(p.Case(std::string("write ") + l.dtype + " " + std::to_string(l.big) + " " +
                             l.res + " " + std::to_string(l.offset) + " " + l.skips + " " +
                             Path("layout" + std::to_string(k) + ".raw")));
    }
    ASSERT_TRUE(p.Run("files/raw_layout.py"));
    for (size_t k = 0; k < std::size(layouts); ++k) {
        const Layout6& l = layouts[k];
        Layout(l.res, l.type, l.big, l.skips, std::to_string(l.offset));
        const std::string name = "layout" + std::to_string(k);
        ASSERT_EQ(Open({Path(name + ".raw")}, 3), "read success") << name;
        const CZrkData* a = space_.FindData(name.c_str());
        ASSERT_NE(a, nullptr);
        EXPECT_TRUE(peer::Same(peer::FromRecord(a), p.Get(ids[k]))) << name;
    }
}

TEST_F(BinaryFile, SizeLineAndTitleOfTheOpenDialog) {
    Spit(Path("f.raw"), std::string(100, 'x'));
    Layout("4 3 2 1", TYPE_I2, 0, "1 2 0 0", "10");
    open_.filetype = 3;
    COpenModel open(open_, space_, folder_);
    open.Select(Path("f.raw"));
    // a1 = (1 + 2) 4 = 12, a2 = (2 + 12) 3 = 42, a3 = 84: 94 bytes of data behind 10 of header.
    EXPECT_EQ(open.info, "file size:100  data size:94\n7 x lines; 2 xy planes; 1 xyz cubes");
    EXPECT_EQ(open.title, "i2 (4,3,2,1)");
    EXPECT_EQ(open.entry.status, open.info);
    EXPECT_EQ(open.entry.failed, 0);

    const std::pair<const char*, const char*> nonsense[] = {{"4 0 2 1", "a resolution of 0"},
                                                            {"abc 3 2 1", "text"},
                                                            {"-5 3 2 1", "negative"},
                                                            {"4 3 2", "missing t"}};
    for (const auto& [res, what] : nonsense) {
        Layout(res, TYPE_I2, 0);
        if (std::string(what) == "missing t") open_.res4d[3] = "";
        open.Select(Path("f.raw"));
        EXPECT_EQ(open.info, "resolutions don't make sense") << what;
        EXPECT_EQ(open.entry.failed, 1) << what;
    }
    open.Select(Path("missing.raw"));
    EXPECT_EQ(open.info, "unable to access file");
    Layout("4 3 2 1", TYPE_I2, 0, "0 0 0 0", "3000000000");
    open.Select(Path("f.raw"));
    EXPECT_EQ(open.info, "header offset too large");
}

TEST_F(BinaryFile, PreviewIsTheFirstPlaneInGreyLevels) {
    // Two planes of 3 x 2 n2 behind 4 header bytes, the second all 9s.
    const uint16_t v[16] = {0, 0, 10, 20, 30, 40, 50, 60, 9, 9, 9, 9, 9, 9};
    Spit(Path("p.raw"), std::string(reinterpret_cast<const char*>(v), sizeof v));
    Layout("3 2 2 1", TYPE_N2, 0, "0 0 0 0", "4");
    open_.filetype = 3;
    COpenModel open(open_, space_, folder_);
    open.Select(Path("p.raw"));
    CZrkData plane;
    ASSERT_TRUE(open.Preview(plane));
    EXPECT_EQ(plane.ResText(), "[3][2]");
    EXPECT_EQ(COpenModel::PreviewLevels(plane), (std::vector<uint8_t>{0, 51, 102, 153, 204, 255}));
    plane.FreeData();
    EXPECT_EQ(space_.Count(), 0);
    open.Select(Path("missing.raw"));
    EXPECT_FALSE(open.Preview(plane));
}

TEST_F(BinaryFile, DataBeyondTheFileIsRefusedBeforeAnythingIsMade) {
    Spit(Path("short.raw"), std::string(40, '\1'));
    const char* too_big[] = {"5 5 1 1", "100000 100000 100000 100000", "4294967296 4294967296 2 1"};
    for (const char* res : too_big) {
        Layout(res, TYPE_R4, 0);
        const std::string status = Open({Path("short.raw")}, 3);
        EXPECT_NE(status, "read success") << res;
        EXPECT_EQ(space_.Count(), 0) << res;
    }
    // Exactly the bytes needed, trailing skips not among them.
    Layout("2 5 1 1", TYPE_R4, 0, "0 0 9 9", "0");
    EXPECT_EQ(Open({Path("short.raw")}, 3), "read success");
    EXPECT_EQ(space_.Count(), 1);
}

TEST_F(BinaryFile, ConversionToTheSavedTypeAsksBeforeValuesWrap) {
    CZrkData* a = space_.NewData(TYPE_R4, 5, 1, 1, 1, 1, 1, "a");
    const float v[5] = {1.7f, -2.5f, 40000.0f, -40000.5f, 300.0f};
    std::copy(v, v + 5, static_cast<float*>(a->Data()));
    save_.dtype = TYPE_I2;
    host_.answer = false;
    EXPECT_EQ(Save("a", Path("no.raw"), 0), "file not saved");
    ASSERT_EQ(host_.questions.size(), 1u);
    EXPECT_EQ(host_.questions[0], "data range to large to fit in output type!\n\nsave anyway?");
    EXPECT_FALSE(std::filesystem::exists(Path("no.raw")));

    host_.answer = true;
    ASSERT_EQ(Save("a", Path("yes.raw"), 0), "file saved");
    const std::vector<double> want =
        peer::Values("v = np.array(" + peer::Literal(v, 5) +
                     ", dtype=np.float32)\nprint(*v.astype(np.int64).astype(np.int16))\n"
                     "got = np.fromfile('" +
                     Path("yes.raw") + "', dtype='<i2')\nprint(*got)\n");
    ASSERT_EQ(want.size(), 10u);
    for (int k = 0; k < 5; ++k) EXPECT_EQ(want[k], want[5 + k]) << k;

    // Parts of a complex array: magnitude alone, magnitude and phase as pairs.
    CZrkData* c = space_.NewData(TYPE_CR4, 4, 1, 1, 1, 1, 1, "c");
    const float iq[8] = {3, 4, -1, 0, 0, -2, 0.5f, 0.25f};
    std::copy(iq, iq + 8, static_cast<float*>(c->Data()));
    save_.dtype = TYPE_R8;
    save_.iqmp = 2;
    ASSERT_EQ(Save("c", Path("mag.raw"), 0), "file saved");
    save_.dtype = TYPE_R4;
    save_.iqmp = 5;
    ASSERT_EQ(Save("c", Path("polar.raw"), 0), "file saved");
    const std::vector<double> check =
        peer::Values("iq = np.array(" + peer::Literal(iq, 8) +
                     ", dtype=np.float32)\n"
                     "c = iq[0::2].astype(np.complex64) + 1j * iq[1::2]\n"
                     "m = np.fromfile('" +
                     Path("mag.raw") +
                     "', dtype='<f8')\n"
                     "p = np.fromfile('" +
                     Path("polar.raw") +
                     "', dtype='<f4')\n"
                     "print(np.abs(m - np.abs(c)).max(), np.abs(p[0::2] - np.abs(c)).max(),\n"
                     "      np.abs(p[1::2] - np.angle(c)).max(), m.size, p.size)\n");
    ASSERT_EQ(check.size(), 5u);
    EXPECT_LT(check[0], 1e-6);
    EXPECT_LT(check[1], 1e-6);
    EXPECT_LT(check[2], 1e-6);
    EXPECT_EQ(check[3], 4);
    EXPECT_EQ(check[4], 8);
}

TEST_F(BinaryFile, FailedAndKilledSavesLeaveTheOldFileWhole) {
    Ramp("a", TYPE_R4, 16, 16);
    save_.dtype = TYPE_R4;
    EXPECT_EQ(Save("a", Path("no/such/folder/a.raw"), 0), "file create failed");
    EXPECT_EQ(Save("nothing", Path("x.raw"), 0), "can not find data");

    const std::string target = Path("big.raw");
    const std::string old(1 << 20, 'o');
    Spit(target, old);
    CZrkData* big = space_.NewData(TYPE_R4, 1024, 1024, 8, 1, 1, 1, "big");
    std::fill_n(static_cast<float*>(big->Data()), big->Count(), 2.0f);
    const std::string fresh = std::string(static_cast<const char*>(big->Data()), big->Bytes());
    save_.dtype = TYPE_R4;
    host_.answer = true;
    // Children killed at several moments of the save: the target is the old file or the new,
    // never anything between.
    bool saw_old = false;
    for (int delay_ms : {0, 2, 5, 10, 20, 40, 80}) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            Save("big", target, 0);
            _exit(0);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(delay_ms));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        const std::string now = Slurp(target);
        EXPECT_TRUE(now == old || now == fresh) << delay_ms << " ms: " << now.size() << " bytes";
        saw_old = saw_old || now == old;
        Spit(target, old);
    }
    EXPECT_TRUE(saw_old);
    ASSERT_EQ(Save("big", target, 0), "file saved");
    EXPECT_EQ(Slurp(target), fresh);
}

}  // namespace
}  // namespace files_test
