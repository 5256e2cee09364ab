// The NIfTI reader and writer against nibabel: the samples python3-nibabel ships (both
// versions, both byte orders, gzipped, scaled, 6-D), files nibabel writes here, what our
// writer produces read back by nibabel, and damaged files.
#include "files/nifti_reader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "core/element_type.h"
#include "files/nifti_orientation.h"
#include "files/nifti_writer.h"
#include "tests/files/med_fixture.h"
#include "tests/peer.h"

namespace {

const std::string kFolder = "/usr/lib/python3/dist-packages/nibabel/tests/data/";

class Nifti : public ::testing::Test {
  protected:
    void SetUp() override {
        if (med::Samples(kFolder).empty()) GTEST_SKIP() << "python3-nibabel is not installed";
    }
    static med::Opened Open(const std::string& path, const std::string& name = "a") {
        return med::Open(path, &NiftiHeader, &NiftiLoad, COpenOptions{}, name);
    }
};

// A record with values that differ element to element, in every type.
med::Array Ramp(int type, std::initializer_list<res_t> sizes) {
    med::Array a(new CZrkData);
    res_t n[6] = {1, 1, 1, 1, 1, 1};
    int k = 0;
    for (res_t v : sizes) n[k++] = v;
    a->SetHeader(type, n[0], n[1], n[2], n[3], n[4], n[5]);
    a->SetMm(0.5f, 0.75f, 2.5f, 3.0f, 1.5f, 4.0f);
    a->SetName("ramp");
    a->Allocate();
    unsigned char* b = static_cast<unsigned char*>(a->Data());
    const int comp = a->ComponentBytes();
    for (uint64_t i = 0; i < a->Bytes() / comp; ++i) {
        // Small whole numbers in every component type, signed where it can be.
        const int64_t v = static_cast<int64_t>(i * 37 % 101) - (type % 10 < 4 ? 50 : 0);
        if (IsFloatType(type)) {
            if (comp == 4) {
                const float f = static_cast<float>(v) * 0.25f;
                std::memcpy(b + i * comp, &f, 4);
            } else {
                const double d = static_cast<double>(v) * 0.25;
                std::memcpy(b + i * comp, &d, 8);
            }
        } else {
            std::memcpy(b + i * comp, &v, comp);  // little-endian: the low bytes
        }
    }
    return a;
}

}  // namespace

TEST_F(Nifti, SamplesMatchNibabel) {
    struct Case {
        const char* file;
        int type;
        std::vector<res_t> sizes;
    };
    const std::vector<Case> cases = {
        {"anatomical.nii", TYPE_I2, {33, 41, 25, 1, 1, 1}},
        {"reoriented_anat_moved.nii", TYPE_R4, {21, 26, 22, 1, 1, 1}},
        {"functional.nii", TYPE_R4, {17, 21, 3, 20, 1, 1}},
        {"example4d.nii.gz", TYPE_I2, {128, 96, 24, 2, 1, 1}},
        {"example_nifti2.nii.gz", TYPE_I2, {32, 20, 12, 2, 1, 1}},
        {"standard.nii.gz", TYPE_N1, {4, 5, 7, 1, 1, 1}},
        {"row_major.dconn.nii", TYPE_R4, {1, 1, 1, 1, 10, 10}},
    };
    peer::Peer p;
    std::vector<std::string> ids;
    std::string list;
    for (const Case& c : cases) {
        ids.push_back(p.Case(std::string("data ") + kFolder + c.file));
        list += std::string("'") + kFolder + c.file + "',";
    }
    ASSERT_TRUE(p.Run("files/nifti_reader.py"));
    // The steps of the header's own dimensions, six numbers a file, 1 beyond them.
    const std::vector<double> zooms = peer::Values(
        "import nibabel as nib\n"
        "for f in [" +
        list +
        "]:\n"
        "    z = list(nib.Nifti2Image.from_filename(f).header.get_zooms()\n"
        "             if f.endswith('dconn.nii') else nib.load(f).header.get_zooms())\n"
        "    print(*(z + [1] * 6)[:6])\n");
    ASSERT_EQ(zooms.size(), 6 * cases.size());
    for (size_t k = 0; k < cases.size(); ++k) {
        const Case& c = cases[k];
        SCOPED_TRACE(c.file);
        const med::Opened o = Open(kFolder + c.file);
        ASSERT_EQ(o.header, 1) << o.entry.status;
        ASSERT_EQ(o.load, 1) << o.entry.status;
        EXPECT_EQ(o.entry.status, "read complete");
        const CZrkData& a = *o.arrays[0];
        EXPECT_EQ(a.type, c.type);
        for (int d = 0; d < 6; ++d) {
            EXPECT_EQ(a.Res(d), c.sizes[d]) << "direction " << d;
            if (c.sizes[d] > 1) {
                EXPECT_FLOAT_EQ(a.mm[d], zooms[6 * k + d]) << "direction " << d;
            }
        }
        const peer::Array got = peer::FromRecord(&a), want = p.Get(ids[k]);
        if (a.type == TYPE_R4 && want.dtype == "float64")
            EXPECT_TRUE(peer::Near(got, want, 1e-6));  // scaled: nibabel works in doubles
        else
            EXPECT_TRUE(peer::Same(got, want));
    }
}

TEST_F(Nifti, HeaderStepSaysHeaderSuccess) {
    FileEntry e;
    e.path = kFolder + "example_nifti2.nii.gz";
    ASSERT_EQ(NiftiHeader(COpenOptions{}, e), 1);
    EXPECT_EQ(e.status, "header success");
    EXPECT_EQ(e.header.Data(), nullptr);
    // functional.nii scales by 0.0754 and 3100.76; the entry carries them.
    FileEntry f;
    f.path = kFolder + "functional.nii";
    ASSERT_EQ(NiftiHeader(COpenOptions{}, f), 1);
    EXPECT_NEAR(f.rescaleSlope, 0.0754, 1e-4);
    EXPECT_NEAR(f.rescaleIntercept, 3100.76, 1e-2);
}

TEST_F(Nifti, LoadsIntoItsPlaceInAStack) {
    // A 3-D file twice into one array of t = 2, the second place first: each volume lands
    // where dest says, and only the first load gives the array its steps.
    const med::Opened one = Open(kFolder + "standard.nii.gz");
    ASSERT_EQ(one.load, 1) << one.entry.status;
    CZrkData stack;
    stack.SetHeader(TYPE_N1, 4, 5, 7, 2, 1, 1);
    ASSERT_TRUE(stack.Allocate());
    FileEntry e;
    e.path = kFolder + "standard.nii.gz";
    ASSERT_EQ(NiftiHeader(COpenOptions{}, e), 1);
    CZrkData* targets[3] = {&stack, nullptr, nullptr};
    e.dest[1] = 1;
    EXPECT_EQ(NiftiLoad(COpenOptions{}, e, targets), 1) << e.status;
    EXPECT_FLOAT_EQ(stack.mm[1], 1.0f);
    e.dest[1] = 0;
    EXPECT_EQ(NiftiLoad(COpenOptions{}, e, targets), 1) << e.status;
    EXPECT_FLOAT_EQ(stack.mm[1], 3.0f);
    const std::string volume(static_cast<const char*>(one.arrays[0]->Data()), 140);
    const char* s = static_cast<const char*>(stack.Data());
    EXPECT_EQ(std::string(s, 140), volume);
    EXPECT_EQ(std::string(s + 140, 140), volume);
    e.dest[1] = 2;
    EXPECT_EQ(NiftiLoad(COpenOptions{}, e, targets), 0);
    EXPECT_EQ(e.status, "target does not fit the file");
    stack.FreeData();
}

TEST_F(Nifti, FilesNibabelWritesReadBack) {
    // Every stored type nibabel writes, big- and little-endian, plain and gzipped; RGB
    // becomes three arrays.
    med::TempDir dir;
    const std::string d = dir.Path().string();
    ASSERT_TRUE(peer::Peer().RunText(
        "import nibabel as nib\n"
        "rng = np.random.default_rng(5)\n"
        "for t in ['int8', 'uint8', 'int16', 'uint16', 'int32', 'uint32', 'int64', 'uint64',\n"
        "          'float32', 'float64', 'complex64', 'complex128']:\n"
        "    a = (rng.random((5, 4, 3, 2)) * 100).astype(t)\n"
        "    for order, ext in [('<', '.nii'), ('>', '.nii.gz')]:\n"
        "        img = nib.Nifti1Image(a, np.eye(4), nib.Nifti1Header(endianness=order))\n"
        "        img.set_data_dtype(t)\n"
        "        img.header.set_zooms((1.5, 2.5, 3.5, 0.5))\n"
        "        nib.save(img, '" +
        d +
        "/' + t + ext)\n"
        "rgb = np.zeros((6, 5, 4), dtype=[('R', 'u1'), ('G', 'u1'), ('B', 'u1')])\n"
        "for k, c in enumerate('RGB'):\n"
        "    rgb[c] = rng.integers(0, 256, (6, 5, 4))\n"
        "nib.save(nib.Nifti1Image(rgb, np.eye(4)), '" +
        d + "/rgb.nii')\n"));
    peer::Peer p;
    std::vector<std::string> files, ids;
    for (const char* t : {"int8", "uint8", "int16", "uint16", "int32", "uint32", "int64", "uint64",
                          "float32", "float64", "complex64", "complex128"})
        for (const char* ext : {".nii", ".nii.gz"}) {
            files.push_back(d + "/" + t + ext);
            ids.push_back(p.Case("raw " + files.back()));
        }
    std::vector<std::string> rgb;
    for (const char* c : {"R", "G", "B"}) rgb.push_back(p.Case("rgb " + d + "/rgb.nii " + c));
    ASSERT_TRUE(p.Run("files/nifti_reader.py"));
    for (size_t k = 0; k < files.size(); ++k) {
        SCOPED_TRACE(files[k]);
        const med::Opened o = Open(files[k]);
        ASSERT_EQ(o.load, 1) << o.entry.status;
        EXPECT_TRUE(peer::Same(peer::FromRecord(o.arrays[0].get()), p.Get(ids[k])));
        EXPECT_FLOAT_EQ(o.arrays[0]->mm[2], 3.5f);
        EXPECT_FLOAT_EQ(o.arrays[0]->mm[3], 0.5f);
    }
    const med::Opened o = Open(d + "/rgb.nii");
    ASSERT_EQ(o.load, 1) << o.entry.status;
    ASSERT_EQ(o.arrays.size(), 3u);
    for (int c = 0; c < 3; ++c)
        EXPECT_TRUE(peer::Same(peer::FromRecord(o.arrays[c].get()), p.Get(rgb[c])));
}

TEST_F(Nifti, WriterRoundTripsThroughNibabel) {
    // Each type, plain and gzipped: nibabel reads the same values, sizes and steps. Complex
    // integers arrive as complex r4.
    med::TempDir dir;
    peer::Peer p;
    struct Written {
        med::Array a;
        std::string path, id;
    };
    std::vector<Written> all;
    std::string list;
    for (int type : {TYPE_I1, TYPE_I2, TYPE_I4, TYPE_I8, TYPE_N1, TYPE_N2, TYPE_N4, TYPE_N8,
                     TYPE_R4, TYPE_R8, TYPE_CR4, TYPE_CR8, TYPE_CI2}) {
        for (const char* ext : {".nii", ".nii.gz"}) {
            Written w{Ramp(type, {6, 5, 1, 3, 1, 2}), dir / ("type" + std::to_string(type) + ext),
                      ""};
            std::string status;
            ASSERT_EQ(WriteNifti(*w.a, w.path, status), 1) << w.path << ": " << status;
            w.id = p.Case("raw " + w.path);
            list += "'" + w.path + "',";
            all.push_back(std::move(w));
        }
    }
    ASSERT_TRUE(p.Run("files/nifti_reader.py"));
    const std::vector<double> zooms = peer::Values(
        "import nibabel as nib\n"
        "for f in [" +
        list +
        "]:\n"
        "    print(*nib.load(f).header.get_zooms())\n");
    ASSERT_EQ(zooms.size(), 6 * all.size());
    for (size_t k = 0; k < all.size(); ++k) {
        SCOPED_TRACE(all[k].path);
        const CZrkData& a = *all[k].a;
        const peer::Array want = p.Get(all[k].id);
        if (a.type == TYPE_CI2) {
            EXPECT_EQ(want.dtype, "complex64");
            EXPECT_TRUE(peer::Near(peer::FromRecord(&a), want, 0));
        } else {
            EXPECT_TRUE(peer::Same(peer::FromRecord(&a), want));
        }
        for (int d = 0; d < 6; ++d) EXPECT_FLOAT_EQ(zooms[6 * k + d], a.mm[d]) << d;
    }
}

TEST_F(Nifti, SavedMapKeepsTheOrientationOfItsFile) {
    // anatomical.nii read as "anat" and saved: nibabel finds the same affine and codes in the
    // new file, so the two line up in any viewer.
    med::TempDir dir;
    for (const char* file : {"anatomical.nii", "example4d.nii.gz", "standard.nii.gz"}) {
        SCOPED_TRACE(file);
        med::Opened o = Open(kFolder + file, "anat");
        ASSERT_EQ(o.load, 1) << o.entry.status;
        const std::string out = dir / "anat.nii.gz";
        std::string status;
        ASSERT_EQ(WriteNifti(*o.arrays[0], out, status), 1) << status;
        const std::vector<double> same = peer::Values(
            "import nibabel as nib\n"
            "a, b = nib.load('" +
            kFolder + file + "'), nib.load('" + out +
            "')\n"
            "print(int(np.allclose(a.affine, b.affine, atol=1e-4)),\n"
            "      int(a.header['qform_code'] == b.header['qform_code']),\n"
            "      int(a.header['sform_code'] == b.header['sform_code']),\n"
            "      int(np.array_equal(np.asanyarray(a.dataobj), np.asanyarray(b.dataobj))))\n");
        EXPECT_EQ(same, (std::vector<double>{1, 1, 1, 1}));
    }
    ForgetNiftiOrientation("anat");
}

TEST_F(Nifti, FailedSaveLeavesTheOldFile) {
    med::TempDir dir;
    const std::string path = dir / "keep.nii";
    med::Array small = Ramp(TYPE_R4, {4, 4});
    std::string status;
    ASSERT_EQ(WriteNifti(*small, path, status), 1);
    const std::string before = med::Slurp(path);
    // Too large for the 16-bit sizes of the header.
    med::Array wide = Ramp(TYPE_N1, {40000});
    EXPECT_EQ(WriteNifti(*wide, path, status), 0);
    EXPECT_EQ(status, "array too large for nifti-1");
    // A folder that cannot be written.
    const std::string locked = dir / "locked";
    std::filesystem::create_directory(locked);
    chmod(locked.c_str(), 0500);
    if (access(locked.c_str(), W_OK) != 0) {
        EXPECT_EQ(WriteNifti(*small, locked + "/x.nii", status), 0);
        EXPECT_EQ(status, "file create failed");
    }
    chmod(locked.c_str(), 0700);
    EXPECT_EQ(med::Slurp(path), before);
    int files = 0;
    for (const auto& e : std::filesystem::directory_iterator(dir.Path()))
        files += e.is_regular_file();
    EXPECT_EQ(files, 1) << "a temporary file was left behind";
    CSaveRequest two;
    two.path = path;
    two.arrays = {small.get(), small.get()};
    two.status = &status;
    EXPECT_EQ(SaveNifti(two), 0);
    EXPECT_EQ(status, "can not find data");
}

TEST_F(Nifti, BadFilesGiveAClearError) {
    med::TempDir dir;
    const std::string d = dir.Path().string();
    // A small file of each version, then headers with sizes it cannot hold: beyond the file,
    // overflowing 64 bits, beyond memory once gzipped, more than six dimensions.
    ASSERT_TRUE(peer::Peer().RunText(
        "import gzip, struct, nibabel as nib\n"
        "a = np.arange(4 * 5 * 7, dtype=np.int16).reshape(4, 5, 7)\n"
        "nib.save(nib.Nifti1Image(a, np.eye(4)), '" +
        d +
        "/small.nii')\n"
        "nib.save(nib.Nifti2Image(a, np.eye(4)), '" +
        d +
        "/small2.nii')\n"
        "raw = bytearray(open('" +
        d +
        "/small.nii', 'rb').read())\n"
        "def dims(b, values):\n"
        "    b = bytearray(b)\n"
        "    struct.pack_into('<8h', b, 40, *values)\n"
        "    return bytes(b)\n"
        "open('" +
        d +
        "/beyond.nii', 'wb').write(dims(raw, [3, 400, 500, 700, 1, 1, 1, 1]))\n"
        "open('" +
        d +
        "/overflow.nii', 'wb').write(dims(raw, [7] + [32767] * 7))\n"
        "open('" +
        d +
        "/seven.nii', 'wb').write(dims(raw, [7, 4, 5, 7, 1, 1, 1, 2]))\n"
        "gzip.open('" +
        d +
        "/memory.nii.gz', 'wb').write(dims(raw, [4] + [32767] * 4 + [1] * 3))\n"
        "def offset(b, value):\n"
        "    b = bytearray(b)\n"
        "    struct.pack_into('<f', b, 108, value)\n"
        "    return bytes(b)\n"
        "open('" +
        d +
        "/offset.nii', 'wb').write(offset(raw, 2.0**31))\n"
        "gzip.open('" +
        d +
        "/offset.nii.gz', 'wb').write(offset(raw, 2.0**30))\n"
        "raw2 = bytearray(open('" +
        d +
        "/small2.nii', 'rb').read())\n"
        "struct.pack_into('<8q', raw2, 16, 6, 2**40, 2**40, 2**40, 1, 1, 1, 1)\n"
        "open('" +
        d +
        "/overflow2.nii', 'wb').write(raw2)\n"
        "struct.pack_into('<q', raw2, 16, 9895604649988)\n"
        "open('" +
        d + "/dim0.nii', 'wb').write(raw2)\n"));
    const std::vector<std::pair<std::string, std::string>> cases = {
        {kFolder + "nifti1.hdr", "nifti image file missing: "},
        {kFolder + "nifti2.hdr", "nifti image file missing: "},
        {d + "/beyond.nii", "nifti file shorter than its dimensions"},
        {d + "/overflow.nii", ""},
        {d + "/overflow2.nii", ""},
        {d + "/dim0.nii", ""},
        {d + "/seven.nii", "more than six dimensions"},
        {d + "/offset.nii", "nifti data offset beyond the file"},
        {d + "/offset.nii.gz", "nifti data offset beyond the file"},
        {d + "/memory.nii.gz", "nifti image larger than memory"},
        {kFolder + "analyze.hdr", ""},
        {kFolder + "README.rst", "not a nifti file"},
    };
    for (const auto& [path, text] : cases) {
        SCOPED_TRACE(path);
        const med::Opened o = Open(path);
        EXPECT_EQ(o.header, 0);
        EXPECT_EQ(o.entry.failed, 1);
        EXPECT_FALSE(o.entry.status.empty());
        EXPECT_EQ(o.entry.status.rfind(text, 0), 0u) << o.entry.status;
    }
    // Every prefix of each small file, plain and gzipped: a text, never a crash.
    for (const char* name : {"small.nii", "small2.nii"}) {
        const std::string whole = med::Slurp(d + "/" + name);
        for (size_t n = 0; n < whole.size(); ++n) {
            const std::string cut = d + "/cut.nii";
            med::Spit(cut, whole.substr(0, n));
            const med::Opened o = Open(cut);
            ASSERT_FALSE(o.entry.status.empty()) << n;
            ASSERT_EQ(o.header, 0) << name << " cut at " << n;
        }
    }
}
