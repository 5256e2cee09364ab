// MAT files against scipy.io: SciPy's own sample files read as loadmat reads them, every
// array we save read back by loadmat, and hostile files answered with a text.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "files/atomic_file.h"
#include "files/mat_file.h"
#include "tests/peer.h"

namespace {

namespace fs = std::filesystem;

const std::string kData = "/usr/lib/python3/dist-packages/scipy/io/matlab/tests/data/";

// loadmat's view of a file: the arrays we take (real or complex numbers of the classes we
// map, one to six dimensions, not empty) in file order, each written to the peer folder
// under its position, their names printed one a line.
const char* kLoadmat = R"(
import scipy.io as sio
def wanted(v):
    return (isinstance(v, np.ndarray) and v.dtype.kind in 'fciub' and 0 < v.ndim <= 6
            and v.size > 0 and v.dtype.itemsize <= (16 if v.dtype.kind == 'c' else 8)
            and v.dtype.name not in ('int64', 'uint64'))
def dump(path, tag='v'):
    # mat_dtype gives the class's type but drops imaginary parts, so complex arrays come
    # from the plain read.
    m = sio.loadmat(path, mat_dtype=True)
    plain = sio.loadmat(path)
    names = [k for k, v in m.items() if not k.startswith('__') and wanted(v)]
    for n, k in enumerate(names):
        v = plain[k] if plain[k].dtype.kind == 'c' else m[k]
        v = v.astype(v.dtype.newbyteorder('=')) if v.dtype.kind != 'b' else v.astype(np.uint8)
        peer.save(FOLDER, '%s%d' % (tag, n), v)
        print(tag, k)
)";

// "f3_" and the like, built without operator+ on a literal (which GCC 12 misreads).
std::string Tagged(const char* prefix, int n, const char* suffix = "") {
    char text[64];
    std::snprintf(text, sizeof text, "%s%d%s", prefix, n, suffix);
    return text;
}

// The names dump() printed for `tag`.
std::vector<std::string> Names(const std::string& output, const std::string& tag) {
    std::vector<std::string> out;
    size_t at = 0;
    while (at < output.size()) {
        size_t end = output.find('\n', at);
        if (end == std::string::npos) end = output.size();
        const std::string line = output.substr(at, end - at);
        if (line.rfind(tag + " ", 0) == 0) out.push_back(line.substr(tag.size() + 1));
        at = end + 1;
    }
    return out;
}

struct Loaded {
    int header = 0, load = 0;
    FileEntry entry;
};

Loaded Load(const std::string& path, CDataSpace& space, int swapxy = 0) {
    COpenOptions options;
    options.swapxy = swapxy;
    Loaded r;
    r.entry.path = path;
    r.header = ReadMatHeader(options, r.entry);
    if (r.header) r.load = LoadMatFile(options, r.entry, space);
    return r;
}

// The arrays of `space` against what dump() gave for `tag`: same names in the same order,
// same values; same element type too unless `values_only` (version 4 keeps no class).
void ExpectLikeLoadmat(CDataSpace& space, const peer::Peer& p, const std::string& tag,
                       bool values_only) {
    const std::vector<std::string> names = Names(p.Output(), tag);
    ASSERT_EQ(space.Count(), static_cast<int>(names.size())) << tag;
    for (size_t n = 0; n < names.size(); ++n) {
        const CZrkData* a = space.FindData(names[n].c_str());
        ASSERT_NE(a, nullptr) << tag << ": no " << names[n];
        EXPECT_EQ(space.GetData(static_cast<int>(n)), a) << tag << ": order";
        const peer::Array want = p.Get(tag + Tagged("", static_cast<int>(n)));
        if (values_only)
            EXPECT_TRUE(peer::Near(peer::FromRecord(a), want, 0)) << tag << " " << names[n];
        else
            EXPECT_TRUE(peer::Same(peer::FromRecord(a), want)) << tag << " " << names[n];
    }
}

std::string Slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), {});
}

void Spit(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

class MatFiles : public ::testing::Test {
  protected:
    void SetUp() override { space_.SetUnique(); }
    std::string Temp(const std::string& name) const { return (dir_.Dir() / name).string(); }

    CDataSpace space_;
    peer::Peer dir_;  // a scratch folder of the test's own
};

}  // namespace

TEST_F(MatFiles, SciPySamplesReadAsLoadmatReadsThem) {
    struct Case {
        const char* file;
        const char* reference;  // loadmat cannot read 7.3: its twin in version 7
        bool version4;
    };
    const Case cases[] = {
        {"testdouble_4.2c_SOL2.mat", nullptr, true},  // big-endian version 4
        {"testcomplex_4.2c_SOL2.mat", nullptr, true},
        {"testmulti_4.2c_SOL2.mat", nullptr, true},
        {"test_mat4_le_floats.mat", nullptr, true},
        {"test3dmatrix_6.1_SOL2.mat", nullptr, false},  // big-endian 3-D
        {"testcomplex_6.5.1_GLNX86.mat", nullptr, false},
        {"testmatrix_6.5.1_GLNX86.mat", nullptr, false},
        {"testbool_8_WIN64.mat", nullptr, false},  // logical, as uint8
        {"test_skip_variable.mat", nullptr, false},
        {"big_endian.mat", nullptr, false},  // single; the cell beside it is passed by
        {"testcell_7.4_GLNX86.mat", nullptr, false},
        {"test3dmatrix_7.4_GLNX86.mat", nullptr, false},  // compressed
        {"testmulti_7.4_GLNX86.mat", nullptr, false},
        {"testcomplex_7.4_GLNX86.mat", nullptr, false},
        {"testhdf5_7.4_GLNX86.mat", "testdouble_7.4_GLNX86.mat", false},
    };
    std::string script = kLoadmat;
    int tag = 0;
    for (const Case& c : cases)
        script += "dump('" + kData + (c.reference ? c.reference : c.file) + "', '" +
                  Tagged("f", tag++, "_") + "')\n";
    peer::Peer p;
    ASSERT_TRUE(p.RunText(script));
    tag = 0;
    for (const Case& c : cases) {
        CDataSpace space;
        space.SetUnique();
        const Loaded r = Load(kData + c.file, space);
        ASSERT_EQ(r.header, 1) << c.file << ": " << r.entry.status;
        ASSERT_EQ(r.load, 1) << c.file << ": " << r.entry.status;
        EXPECT_EQ(r.entry.status, "reading complete");
        ExpectLikeLoadmat(space, p, Tagged("f", tag++, "_"), c.version4);
    }
}

TEST_F(MatFiles, HeaderCountsBytesAndCompatibleArrays) {
    // a 3 x 5 and theta 1 x 9 doubles, beside a struct, a text and a cell that are passed by.
    peer::Peer p;
    const std::string path = Temp("mixed.mat");
    ASSERT_TRUE(
        p.RunText("import scipy.io as sio\n"
                  "sio.savemat('" +
                  path +
                  "', {'a': np.ones((3, 5)), "
                  "'s': {'f': 1.0}, 't': 'text', 'c': np.array([[1, 'x']], dtype=object), "
                  "'theta': np.arange(9.0)[None, :]})\n"));
    FileEntry e;
    e.path = path;
    ASSERT_EQ(ReadMatHeader(COpenOptions{}, e), 1);
    EXPECT_EQ(e.status, "192 bytes in 2 out of 5 compatible array(s)");
    EXPECT_EQ(e.title, "mixed.mat");
    EXPECT_EQ(e.header.Type(), TYPE_R8);
    EXPECT_EQ(e.header.nx, 3u);
    EXPECT_EQ(e.header.ny, 5u);
}

TEST_F(MatFiles, SwapXYTransposesEveryPlaneOfRealAndComplexArrays) {
    peer::Peer p;
    const std::string path = Temp("swap.mat");
    ASSERT_TRUE(
        p.RunText("import scipy.io as sio\n"
                  "r = np.arange(24, dtype=np.int16).reshape((2, 3, 4), order='F')\n"
                  "c = (np.arange(30) + 1j * np.arange(30, 60)).astype(np.complex64)"
                  ".reshape((3, 5, 2), order='F')\n"
                  "sio.savemat('" +
                  path +
                  "', {'r': r, 'c': c})\n"
                  "peer.save(FOLDER, 'r', np.swapaxes(r, 0, 1))\n"
                  "peer.save(FOLDER, 'c', np.swapaxes(c, 0, 1))\n"));
    const Loaded r = Load(path, space_, 1);
    ASSERT_EQ(r.load, 1) << r.entry.status;
    EXPECT_EQ(r.entry.header.nx, 3u);  // the header step swaps too
    EXPECT_EQ(r.entry.header.ny, 2u);
    EXPECT_TRUE(peer::Same(peer::FromRecord(space_.FindData("r")), p.Get("r")));
    EXPECT_TRUE(peer::Same(peer::FromRecord(space_.FindData("c")), p.Get("c")));
}

// Every element type and rank, written in versions 4, 6 and 7, reads back through loadmat
// with the same names, shapes and values; version 4 and "all doubles" hold doubles where
// the file can hold nothing else.
TEST_F(MatFiles, EverySavedArrayReadsBackThroughLoadmat) {
    const res_t shapes[5][6] = {{3, 1, 1, 1, 1, 1},
                                {1, 5, 1, 1, 1, 1},
                                {2, 3, 4, 1, 1, 1},
                                {2, 1, 1, 3, 1, 1},
                                {2, 2, 1, 1, 1, 2}};
    std::vector<CZrkData*> arrays;
    for (int type = 0; type < TYPE_COUNT; ++type) {
        const res_t* r = shapes[type % 5];
        const std::string name = Tagged(type % 4 == 0 ? "2 a-" : "b", type);
        CZrkData* a = space_.NewData(type, r[0], r[1], r[2], r[3], r[4], r[5], name.c_str());
        ASSERT_NE(a, nullptr);
        WithComponent(type, [&](auto zero) {
            using T = decltype(zero);
            T* v = static_cast<T*>(a->data);
            for (uint64_t k = 0; k < a->Count() * a->Components(); ++k)
                v[k] = static_cast<T>((k * 37 + type) % 100) - (std::is_signed_v<T> ? 40 : 0);
        });
        arrays.push_back(a);
    }
    // Six files, one loadmat run.
    std::string script = kLoadmat;
    for (int version : {4, 6, 7})
        for (int all_doubles : {0, 1}) {
            CSaveOptions options;
            options.mat_version = version;
            options.all_doubles = all_doubles;
            std::string status;
            const std::string tag = Tagged("v", version * 10 + all_doubles);
            const std::string path = Temp(tag + ".mat");
            ASSERT_EQ(SaveMatFile({path, arrays, nullptr, &options, &status}), 1) << status;
            script += "dump('" + path + "', '" + tag + "_')\n";
        }
    peer::Peer p;
    ASSERT_TRUE(p.RunText(script));

    for (int version : {4, 6, 7}) {
        for (int all_doubles : {0, 1}) {
            const std::string tag = Tagged("v", version * 10 + all_doubles);
            const std::vector<std::string> names = Names(p.Output(), tag + "_");
            // loadmat leaves 64-bit integers out of `wanted`.
            size_t n = 0;
            for (const CZrkData* a : arrays) {
                const int comp = a->Type() % 10;
                const bool doubles =
                    all_doubles || (version == 4 && comp != TYPE_R4 && comp != TYPE_I4 &&
                                    comp != TYPE_I2 && comp != TYPE_N2 && comp != TYPE_N1);
                if (!doubles && (comp == TYPE_I8 || comp == TYPE_N8)) continue;
                ASSERT_LT(n, names.size()) << tag;
                EXPECT_EQ(names[n], MatName(a->name));
                const peer::Array got = p.Get(tag + Tagged("_", static_cast<int>(n)));
                // Version 4 keeps matrices only: x by the rest.
                peer::Array want = peer::FromRecord(a);
                if (version == 4) want.shape = {a->nx, a->Count() / a->nx};
                // loadmat turns version 4 numbers into doubles; elsewhere the class shows.
                // NumPy has no complex integers: those are checked by value, and by class below.
                if (version != 4 && !doubles && a->IsReal()) {
                    EXPECT_TRUE(peer::Same(got, want)) << names[n] << " " << tag;
                }
                EXPECT_TRUE(peer::Near(got, want, 0)) << names[n] << " " << tag;
                if (doubles && version != 4) {
                    EXPECT_EQ(got.dtype, a->IsComplex() ? "complex128" : "float64") << names[n];
                }
                ++n;
            }
            EXPECT_EQ(n, names.size()) << tag;
            // Our own reader gives every class back, complex integers included.
            if (version != 4 && !all_doubles) {
                CDataSpace back;
                ASSERT_EQ(Load(Temp(tag + ".mat"), back).load, 1);
                ASSERT_EQ(back.Count(), static_cast<int>(arrays.size()) - 4);  // 64-bit passed by
                for (const CZrkData* a : arrays) {
                    if (a->Type() % 10 == TYPE_I8 || a->Type() % 10 == TYPE_N8) continue;
                    const CZrkData* b = back.FindData(MatName(a->name).c_str());
                    ASSERT_NE(b, nullptr) << a->name;
                    EXPECT_TRUE(peer::Same(peer::FromRecord(b), peer::FromRecord(a))) << a->name;
                }
            }
        }
    }
}

TEST_F(MatFiles, NamesAreSanitised) {
    EXPECT_EQ(MatName("2 wave"), "num_2_wave");
    EXPECT_EQ(MatName("lfe_stiff01"), "lfe_stiff01");
    EXPECT_EQ(MatName("a.b[c]"), "a_b_c_");
    EXPECT_EQ(MatName("_9"), "_9");
}

TEST_F(MatFiles, NamesThatMeetAfterSanitisingStayApart) {
    std::vector<CZrkData*> arrays;
    for (const char* name : {"a b", "a_b", "a-b"}) {
        CZrkData* a = space_.NewData(TYPE_I2, 1, 1, 1, 1, 1, 1, name);
        *static_cast<int16_t*>(a->data) = static_cast<int16_t>(arrays.size());
        arrays.push_back(a);
    }
    CSaveOptions options;
    std::string status;
    const std::string path = Temp("names.mat");
    ASSERT_EQ(SaveMatFile({path, arrays, nullptr, &options, &status}), 1) << status;
    const std::vector<double> got =
        peer::Values("import scipy.io as sio\nm = sio.loadmat('" + path +
                     "')\nprint(m['a_b'][0, 0], m['a_b_1'][0, 0], m['a_b_2'][0, 0])\n");
    EXPECT_EQ(got, (std::vector<double>{0, 1, 2}));
}

TEST_F(MatFiles, FailedSavesLeaveTheOldFileWhole) {
    const std::string path = Temp("keep.mat");
    Spit(path, "old contents");
    CZrkData* a = space_.NewData(TYPE_R4, 2, 2, 1, 1, 1, 1, "a");
    CZrkData* empty = space_.NewData("empty");  // no type, no samples
    CSaveOptions options;
    std::string status;
    EXPECT_EQ(SaveMatFile({path, {a, empty}, nullptr, &options, &status}), 0);
    EXPECT_EQ(status, "can not generate matlab array for: empty");
    EXPECT_EQ(Slurp(path), "old contents");

    EXPECT_EQ(SaveMatFile({Temp("no/such/folder.mat"), {a}, nullptr, &options, &status}), 0);
    EXPECT_EQ(status, "Error opening file");
    // Nothing but the kept file remains: no temporary was left behind.
    EXPECT_EQ(std::distance(fs::directory_iterator(dir_.Dir()), fs::directory_iterator()), 1);
}

// A save killed at any moment leaves either the old file or the new one, whole.
TEST_F(MatFiles, ASaveKilledAtAnyMomentLeavesAWholeFile) {
    const std::string path = Temp("killed.mat");
    Spit(path, "old contents");
    CZrkData* a = space_.NewData(TYPE_R4, 1024, 1024, 2, 1, 1, 1, "a");
    float* v = static_cast<float*>(a->data);
    for (uint64_t k = 0; k < a->Count(); ++k) v[k] = static_cast<float>(k % 1013) * 0.5f;
    CSaveOptions options;  // version 7: compressing takes a while
    int old_seen = 0, new_seen = 0;
    // The last save runs to its end.
    for (int delay_us : {0, 2000, 10000, 30000, 60000, 120000, -1}) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            std::string status;
            _exit(SaveMatFile({path, {a}, nullptr, &options, &status}) ? 0 : 1);
        }
        if (delay_us >= 0) {
            usleep(delay_us);
            kill(child, SIGKILL);
        }
        int wstatus = 0;
        waitpid(child, &wstatus, 0);
        if (Slurp(path) == "old contents") {
            ++old_seen;
            continue;
        }
        CDataSpace back;
        const Loaded r = Load(path, back);
        ASSERT_EQ(r.load, 1) << "killed after " << delay_us << " us: " << r.entry.status;
        ASSERT_NE(back.FindData("a"), nullptr);
        EXPECT_TRUE(peer::Same(peer::FromRecord(back.FindData("a")), peer::FromRecord(a)));
        ++new_seen;
        Spit(path, "old contents");
    }
    EXPECT_GT(old_seen, 0);  // the kill came in time at least once
    EXPECT_GT(new_seen, 0);
}

TEST_F(MatFiles, AtomicFileReplacesOnlyOnCommitAndKeepsPermissions) {
    const std::string path = Temp("target");
    Spit(path, "old");
    chmod(path.c_str(), 0640);
    {
        CAtomicFile file(path);
        ASSERT_TRUE(file.Create());
        Spit(file.TempPath(), "abandoned");
    }
    EXPECT_EQ(Slurp(path), "old");
    {
        CAtomicFile file(path);
        ASSERT_TRUE(file.Create());
        EXPECT_EQ(file.TempPath().rfind(dir_.Dir().string(), 0), 0u);  // same folder
        Spit(file.TempPath(), "new");
        ASSERT_TRUE(file.Commit());
    }
    EXPECT_EQ(Slurp(path), "new");
    struct stat st = {};
    ASSERT_EQ(stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0640u);
    EXPECT_EQ(std::distance(fs::directory_iterator(dir_.Dir()), fs::directory_iterator()), 1);
}

// ---- hostile files --------------------------------------------------------------------------

namespace {

const char* const kTexts[] = {"reading complete", "read failed", "alloc failed",
                              "Error opening file", "Error closing file"};

bool Known(const std::string& status) {
    for (const char* t : kTexts)
        if (status == t) return true;
    return false;
}

// A version 5 file of one variable of class `cls` (6 double, 1 cell) with the given
// dimensions and no data to speak of.
std::string Mat5Header(const std::vector<int32_t>& dims, uint32_t cls = 6) {
    std::string f(116, ' ');
    f.replace(0, 10, "MATLAB 5.0");
    f += std::string(8, '\0');
    f += '\0', f += 0x01, f += 'I', f += 'M';
    auto put32 = [&](std::string& s, uint32_t v) { s.append(reinterpret_cast<char*>(&v), 4); };
    std::string body;
    put32(body, 6), put32(body, 8), put32(body, cls), put32(body, 0);  // array flags
    put32(body, 5), put32(body, 4 * static_cast<uint32_t>(dims.size()));
    for (int32_t d : dims) put32(body, static_cast<uint32_t>(d));
    if (dims.size() % 2) put32(body, 0);
    put32(body, 1), put32(body, 1), body += "a", body.append(7, '\0');  // name "a"
    put32(body, 9), put32(body, 8), body.append(8, '\0');               // one double
    put32(f, 14), put32(f, static_cast<uint32_t>(body.size()));
    return f + body;
}

}  // namespace

TEST_F(MatFiles, BrokenSampleFilesEndInATextAndLoadNothingWrong) {
    for (const char* file : {"malformed1.mat", "bad_miuint32.mat", "corrupted_zlib_checksum.mat",
                             "corrupted_zlib_data.mat"}) {
        CDataSpace space;
        const Loaded r = Load(kData + file, space);
        EXPECT_TRUE(Known(r.entry.status) || r.header == 1) << file << ": " << r.entry.status;
        if (r.header) {
            EXPECT_TRUE(Known(r.entry.status)) << file << ": " << r.entry.status;
        }
    }
    // A nameless variable can't become an array.
    CDataSpace space;
    EXPECT_EQ(Load(kData + "malformed1.mat", space).entry.status, "reading complete");
    EXPECT_EQ(space.Count(), 0);
}

TEST_F(MatFiles, SizesBeyondSixDimensionsOrTheFileArePassedBy) {
    struct Case {
        std::vector<int32_t> dims;
        const char* status;
    };
    const Case cases[] = {
        {{1, 1}, "8 bytes in 1 out of 1 compatible array(s)"},
        {{1, 1, 1, 1, 1, 1, 1}, "0 bytes in 0 out of 1 compatible array(s)"},  // seven
        {{65536, 65536, 65536}, "0 bytes in 0 out of 1 compatible array(s)"},  // beyond the file
        {{-1, -1}, "0 bytes in 0 out of 1 compatible array(s)"},               // 2^32-1 squared
        {{0, 3}, "0 bytes in 0 out of 1 compatible array(s)"},
    };
    for (const Case& c : cases) {
        const std::string path = Temp("dims.mat");
        Spit(path, Mat5Header(c.dims));
        CDataSpace space;
        const Loaded r = Load(path, space);
        ASSERT_EQ(r.header, 1);
        EXPECT_EQ(r.entry.status, "reading complete") << c.status;
        EXPECT_EQ(space.Count(), c.dims.size() == 2 && c.dims[0] == 1 ? 1 : 0) << c.status;
        FileEntry e;
        e.path = path;
        ReadMatHeader(COpenOptions{}, e);
        EXPECT_EQ(e.status, c.status);
    }
}

// Lengths that matio would allocate before checking them end the walk over the headers.
TEST_F(MatFiles, OverstatedLengthsAreNeverHandedToMatio) {
    const std::string path = Temp("long.mat");
    // Version 4: a name of 2 GB.
    std::string v4;
    for (uint32_t w : {0u, 1u, 1u, 0u, 0x7FFFFFFFu}) v4.append(reinterpret_cast<char*>(&w), 4);
    v4 += std::string("a\0", 2) + std::string(8, '\0');
    Spit(path, v4);
    FileEntry e;
    e.path = path;
    EXPECT_EQ(ReadMatHeader(COpenOptions{}, e), 0);
    EXPECT_EQ(e.status, "Error opening file");
    // Version 5: a cell of 2^32 members with room for none.
    Spit(path, Mat5Header({65536, 65536}, 1));
    EXPECT_EQ(ReadMatHeader(COpenOptions{}, e), 1);
    EXPECT_EQ(e.status, "0 bytes in 0 out of 0 compatible array(s)");
    CDataSpace space;
    EXPECT_EQ(LoadMatFile(COpenOptions{}, e, space), 1);
    EXPECT_EQ(space.Count(), 0);
}

TEST_F(MatFiles, TruncatedFilesNeverCrash) {
    for (const char* file :
         {"testmulti_7.4_GLNX86.mat", "test3dmatrix_6.1_SOL2.mat", "testmulti_4.2c_SOL2.mat"}) {
        const std::string bytes = Slurp(kData + file);
        ASSERT_FALSE(bytes.empty()) << file;
        for (size_t cut = 0; cut < bytes.size(); cut += 3) {
            const std::string path = Temp("cut.mat");
            Spit(path, bytes.substr(0, cut));
            CDataSpace space;
            const Loaded r = Load(path, space);
            EXPECT_TRUE(Known(r.entry.status) || r.header == 1)
                << file << " cut at " << cut << ": " << r.entry.status;
        }
    }
}
