// The DICOM reader against pydicom on the samples python3-pydicom ships: every transfer
// syntax DCMTK decodes, colour, 1-bit, multi-frame and scaled files, the identification
// numbers and steps, mosaics written here with pydicom, and damaged files.
#include "files/dicom_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "core/element_type.h"
#include "tests/files/med_fixture.h"
#include "tests/peer.h"

namespace {

const std::string kFolder = "/usr/lib/python3/dist-packages/pydicom/data/test_files/";

class DicomReader : public ::testing::Test {
  protected:
    void SetUp() override {
        if (med::Samples(kFolder).empty()) GTEST_SKIP() << "python3-pydicom is not installed";
    }
    static med::Opened Open(const std::string& path, int scale = 0) {
        COpenOptions o;
        o.dicom_scale = scale;
        return med::Open(path, &DicomHeader, &DicomLoad, o);
    }
};

struct Case {
    const char* file;
    const char* op;    // what pydicom answers with, see dicom_reader.py
    const char* like;  // the file pydicom reads instead, when it cannot decode `file`
    int scale;
    int type;
    res_t z;
};

}  // namespace

TEST_F(DicomReader, EveryTransferSyntaxMatchesPydicom) {
    const std::vector<Case> cases = {
        {"MR_small.dcm", "pixels", nullptr, 0, TYPE_I2, 1},
        {"MR_small_implicit.dcm", "pixels", nullptr, 0, TYPE_I2, 1},
        {"MR_small_bigendian.dcm", "pixels", nullptr, 0, TYPE_I2, 1},
        {"MR_small_expb.dcm", "pixels", nullptr, 0, TYPE_I2, 1},
        {"MR_small_RLE.dcm", "pixels", nullptr, 0, TYPE_I2, 1},
        {"MR_small_jpeg_ls_lossless.dcm", "pixels", "MR_small.dcm", 0, TYPE_I2, 1},
        {"image_dfl.dcm", "pixels", nullptr, 0, TYPE_N1, 1},
        {"CT_small.dcm", "pixels", nullptr, 0, TYPE_I2, 1},
        {"CT_small.dcm", "scaled", nullptr, 1, TYPE_R4, 1},
        {"rtdose.dcm", "pixels", nullptr, 0, TYPE_N4, 15},
        {"rtdose_expb.dcm", "pixels", nullptr, 0, TYPE_N4, 15},
        {"rtdose_rle.dcm", "pixels", nullptr, 0, TYPE_N4, 15},
        {"liver_1frame.dcm", "pixels", nullptr, 0, TYPE_N1, 1},
        {"dicomdirtests/77654033/CR1/6154", "scaled", nullptr, 1, TYPE_R4, 1},
        {"dicomdirtests/77654033/CR1/6154", "pixels", nullptr, 0, TYPE_N2, 1},
    };
    peer::Peer p;
    std::vector<std::string> ids;
    for (const Case& c : cases)
        ids.push_back(p.Case(std::string(c.op) + " " + kFolder + (c.like ? c.like : c.file)));
    ASSERT_TRUE(p.Run("files/dicom_reader.py"));
    for (size_t k = 0; k < cases.size(); ++k) {
        const Case& c = cases[k];
        SCOPED_TRACE(c.file);
        const med::Opened o = Open(kFolder + c.file, c.scale);
        ASSERT_EQ(o.header, 1) << o.entry.status;
        ASSERT_EQ(o.load, 1) << o.entry.status;
        EXPECT_EQ(o.entry.status, "read complete");
        EXPECT_EQ(o.entry.header.type, c.type);
        EXPECT_EQ(o.entry.header.nz, c.z);
        const peer::Array got = peer::FromRecord(o.arrays[0].get()), want = p.Get(ids[k]);
        if (c.scale)
            EXPECT_TRUE(peer::Near(got, want, 1e-6));
        else
            EXPECT_TRUE(peer::Same(got, want));
    }
}

TEST_F(DicomReader, ColourFilesGiveThreeArrays) {
    // The JPEG lossless file holds the pixels of the RLE one; the baseline files are YBR and
    // are compared after pydicom's conversion, within the rounding of the two conversions.
    // ybr.dcm is SC_rgb_small_odd.dcm turned into uncompressed full-range YBR by pydicom.
    med::TempDir dir;
    ASSERT_TRUE(
        peer::Peer().RunText("import pydicom\n"
                             "from pydicom.pixel_data_handlers.util import convert_color_space\n"
                             "ds = pydicom.dcmread('" +
                             kFolder +
                             "SC_rgb_small_odd.dcm')\n"
                             "ybr = convert_color_space(ds.pixel_array, 'RGB', 'YBR_FULL')\n"
                             "ds.PixelData = ybr.tobytes() + b'\\0'\n"
                             "ds.PhotometricInterpretation = 'YBR_FULL'\n"
                             "ds.save_as('" +
                             dir.Path().string() + "/ybr.dcm')\n"));
    struct Colour {
        std::string file, like;
        int type;
        res_t z;
        double tol;
    };
    const std::string small = kFolder + "SC_rgb_small_odd.dcm";
    const std::vector<Colour> cases = {
        {kFolder + "SC_rgb_rle.dcm", kFolder + "SC_rgb_rle.dcm", TYPE_N1, 1, 0},
        {small, small, TYPE_N1, 1, 0},
        {kFolder + "ExplVR_BigEnd.dcm", kFolder + "ExplVR_BigEnd.dcm", TYPE_N1, 1, 0},
        {kFolder + "SC_rgb_jpeg_gdcm.dcm", kFolder + "SC_rgb_rle.dcm", TYPE_N1, 1, 0},
        {kFolder + "SC_rgb_rle_2frame.dcm", kFolder + "SC_rgb_rle_2frame.dcm", TYPE_N1, 2, 0},
        {kFolder + "SC_rgb_rle_16bit_2frame.dcm", kFolder + "SC_rgb_rle_16bit_2frame.dcm", TYPE_N2,
         2, 0},
        {kFolder + "SC_rgb_rle_32bit_2frame.dcm", kFolder + "SC_rgb_rle_32bit_2frame.dcm", TYPE_N4,
         2, 0},
        {kFolder + "SC_rgb_jpeg_dcmtk.dcm", kFolder + "SC_rgb_jpeg_dcmtk.dcm", TYPE_N1, 1,
         2.0 / 255},
        {kFolder + "SC_rgb_dcmtk_+eb+cy+np.dcm", kFolder + "SC_rgb_dcmtk_+eb+cy+np.dcm", TYPE_N1, 1,
         2.0 / 255},
        {dir / "ybr.dcm", small, TYPE_N1, 1, 2.0 / 255},
    };
    peer::Peer p;
    std::vector<std::string> ids;
    for (const Colour& c : cases)
        for (int ch = 0; ch < 3; ++ch)
            ids.push_back(p.Case("rgb " + c.like + " " + std::to_string(ch)));
    ASSERT_TRUE(p.Run("files/dicom_reader.py"));
    for (size_t k = 0; k < cases.size(); ++k) {
        const Colour& c = cases[k];
        SCOPED_TRACE(c.file);
        const med::Opened o = Open(c.file, 1);  // colour is never scaled
        ASSERT_EQ(o.load, 1) << o.entry.status;
        ASSERT_EQ(o.arrays.size(), 3u);
        EXPECT_EQ(o.entry.isRgb, 1);
        EXPECT_EQ(o.entry.header.nz, c.z);
        for (int ch = 0; ch < 3; ++ch) {
            EXPECT_EQ(o.arrays[ch]->type, c.type);
            const peer::Array got = peer::FromRecord(o.arrays[ch].get());
            const peer::Array want = p.Get(ids[3 * k + ch]);
            if (c.tol > 0)
                EXPECT_TRUE(peer::Near(got, want, c.tol)) << "channel " << ch;
            else
                EXPECT_TRUE(peer::Same(got, want)) << "channel " << ch;
        }
    }
}

TEST_F(DicomReader, TwelveBitJpegDecodes) {
    // pydicom has no decoder for this one here: its header says what must come out.
    const med::Opened o = Open(kFolder + "JPGExtended.dcm");
    ASSERT_EQ(o.load, 1) << o.entry.status;
    const CZrkData& a = *o.arrays[0];
    EXPECT_EQ(a.type, TYPE_N2);
    EXPECT_EQ(a.nx, 256u);
    EXPECT_EQ(a.ny, 1024u);
    const auto* v = static_cast<const uint16_t*>(a.Data());
    uint16_t hi = 0;
    for (uint64_t k = 0; k < a.Count(); ++k) hi = std::max(hi, v[k]);
    EXPECT_GT(hi, 0);
    EXPECT_LT(hi, 4096);
}

TEST_F(DicomReader, NumbersStepsAndHeaderText) {
    std::vector<std::string> files = {"MR_small.dcm", "CT_small.dcm", "rtdose.dcm",
                                      "dicomdirtests/77654033/CR1/6154"};
    for (const char* f : {"4467", "4528", "4558", "4588", "4618", "4648", "4678"})
        files.push_back(std::string("dicomdirtests/98892003/MR700/") + f);
    std::string list;
    for (const std::string& f : files) list += "'" + kFolder + f + "',";
    // Leading digits of Study ID, as a number; steps: column spacing, row spacing, slice.
    const std::vector<double> want = peer::Values(
        "import re, pydicom\n"
        "def lead(s):\n"
        "    m = re.match(r'\\s*[-+]?\\d+', str(s or ''))\n"
        "    return int(m.group()) if m else 0\n"
        "for f in [" +
        list +
        "]:\n"
        "    d = pydicom.dcmread(f)\n"
        "    ps = d.get('PixelSpacing') or [1, 1]\n"
        "    dz = d.get('SpacingBetweenSlices') or d.get('SliceThickness') or 1\n"
        "    print(lead(d.get('StudyID')), d.get('SeriesNumber') or 0, d.get('InstanceNumber') or "
        "0,\n"
        "          float(ps[1]), float(ps[0]), float(dz), d.get('RescaleSlope', 1),\n"
        "          d.get('RescaleIntercept', 0))\n");
    ASSERT_EQ(want.size(), files.size() * 8);
    for (size_t k = 0; k < files.size(); ++k) {
        SCOPED_TRACE(files[k]);
        FileEntry e;
        e.path = kFolder + files[k];
        ASSERT_EQ(DicomHeader(COpenOptions{}, e), 1) << e.status;
        const double* w = &want[8 * k];
        EXPECT_EQ(e.exam, w[0]);
        EXPECT_EQ(e.series, w[1]);
        EXPECT_EQ(e.image, w[2]);
        EXPECT_FLOAT_EQ(e.header.mm[0], w[3]);
        EXPECT_FLOAT_EQ(e.header.mm[1], w[4]);
        EXPECT_FLOAT_EQ(e.header.mm[2], w[5]);
        EXPECT_FLOAT_EQ(e.rescaleSlope, w[6]);
        EXPECT_FLOAT_EQ(e.rescaleIntercept, w[7]);
        const std::string numbers = "\nexam " + std::to_string(e.exam) + " series " +
                                    std::to_string(e.series) + " image " + std::to_string(e.image);
        EXPECT_EQ(e.status.substr(e.status.size() - numbers.size()), numbers);
        EXPECT_EQ(e.status.rfind("MR", 0) == 0, k == 0 || k >= 4) << e.status;
    }
}

TEST_F(DicomReader, SeriesFilesMatchPydicomOneByOne) {
    // The seven files of one series, 16 x 16 i2, their instance numbers out of path order.
    const std::string dir = kFolder + "dicomdirtests/98892003/MR700/";
    const std::vector<std::string> files = {"4467", "4528", "4558", "4588", "4618", "4648", "4678"};
    peer::Peer p;
    std::vector<std::string> ids;
    for (const std::string& f : files) ids.push_back(p.Case("pixels " + dir + f));
    ASSERT_TRUE(p.Run("files/dicom_reader.py"));
    for (size_t k = 0; k < files.size(); ++k) {
        SCOPED_TRACE(files[k]);
        const med::Opened o = Open(dir + files[k]);
        ASSERT_EQ(o.load, 1) << o.entry.status;
        EXPECT_EQ(o.entry.exam, 2);
        EXPECT_EQ(o.entry.series, 700);
        EXPECT_TRUE(peer::Same(peer::FromRecord(o.arrays[0].get()), p.Get(ids[k])));
    }
}

TEST_F(DicomReader, LoadsIntoItsPlaceInAStack) {
    // Two files into one array of z = 3 at z = 2 and z = 0: each lands where dest says,
    // the plane between stays as it was.
    med::Opened one = Open(kFolder + "MR_small.dcm");
    ASSERT_EQ(one.load, 1);
    CZrkData stack;
    stack.SetHeader(TYPE_I2, 64, 64, 3, 1, 1, 1);
    ASSERT_TRUE(stack.Allocate());
    std::memset(stack.Data(), 0x5a, stack.Bytes());
    FileEntry e;
    e.path = kFolder + "MR_small_RLE.dcm";
    ASSERT_EQ(DicomHeader(COpenOptions{}, e), 1);
    CZrkData* targets[3] = {&stack, nullptr, nullptr};
    e.dest[0] = 2;
    EXPECT_EQ(DicomLoad(COpenOptions{}, e, targets), 1) << e.status;
    e.dest[0] = 0;
    EXPECT_EQ(DicomLoad(COpenOptions{}, e, targets), 1) << e.status;
    const uint64_t plane = stack.BytesPerPlane();
    const char* s = static_cast<const char*>(stack.Data());
    EXPECT_EQ(std::memcmp(s, one.arrays[0]->Data(), plane), 0);
    EXPECT_EQ(std::memcmp(s + 2 * plane, one.arrays[0]->Data(), plane), 0);
    EXPECT_EQ(std::string(s + plane, plane), std::string(plane, '\x5a'));
    // A place beyond the array, or an array of another size, is refused before any write.
    e.dest[0] = 3;
    EXPECT_EQ(DicomLoad(COpenOptions{}, e, targets), 0);
    EXPECT_EQ(e.status, "target does not fit the file");
    stack.FreeData();
}

TEST_F(DicomReader, MosaicOpensAsAVolume) {
    // 13 tiles of 16 x 16 in a 4 x 4 grid, each of its own values, written by pydicom: with
    // the tile count the file is a 16 x 16 x 13 volume equal to the tiles cut out by NumPy;
    // without it, the plain 64 x 64 mosaic.
    med::TempDir dir;
    peer::Peer p;
    const std::string with = dir / "mosaic.dcm", without = dir / "plain.dcm";
    ASSERT_TRUE(p.RunText(
        "import pydicom\n"
        "from pydicom.dataset import Dataset, FileMetaDataset\n"
        "from pydicom.uid import ExplicitVRLittleEndian, generate_uid\n"
        "def write(path, count):\n"
        "    meta = FileMetaDataset()\n"
        "    meta.MediaStorageSOPClassUID = '1.2.840.10008.5.1.4.1.1.4'\n"
        "    meta.MediaStorageSOPInstanceUID = generate_uid()\n"
        "    meta.TransferSyntaxUID = ExplicitVRLittleEndian\n"
        "    ds = Dataset()\n"
        "    ds.file_meta = meta\n"
        "    ds.is_little_endian, ds.is_implicit_VR = True, False\n"
        "    ds.SOPClassUID = meta.MediaStorageSOPClassUID\n"
        "    ds.SOPInstanceUID = meta.MediaStorageSOPInstanceUID\n"
        "    ds.Modality = 'MR'\n"
        "    ds.ImageType = ['ORIGINAL', 'PRIMARY', 'M', 'MOSAIC']\n"
        "    ds.AcquisitionMatrix = [0, 16, 16, 0]\n"
        "    if count:\n"
        "        ds.add_new(0x00190010, 'LO', 'SIEMENS MR HEADER')\n"
        "        ds.add_new(0x0019100A, 'US', count)\n"
        "    ds.Rows, ds.Columns = 64, 64\n"
        "    ds.SamplesPerPixel, ds.PhotometricInterpretation = 1, 'MONOCHROME2'\n"
        "    ds.BitsAllocated, ds.BitsStored, ds.HighBit, ds.PixelRepresentation = 16, 16, 15, 1\n"
        "    ds.PixelSpacing = [2.5, 2.0]\n"
        "    ds.SliceThickness = 4.0\n"
        "    rng = np.random.default_rng(3)\n"
        "    a = rng.integers(-3000, 3000, (64, 64), dtype=np.int16)\n"
        "    ds.PixelData = a.tobytes()\n"
        "    ds.save_as(path, write_like_original=False)\n"
        "write('" +
        with +
        "', 13)\n"
        "write('" +
        without + "', 0)\n"));
    const std::string tiles = p.Case("tiles " + with + " 13");
    const std::string plain = p.Case("pixels " + without);
    ASSERT_TRUE(p.Run("files/dicom_reader.py"));

    const med::Opened m = Open(with);
    ASSERT_EQ(m.load, 1) << m.entry.status;
    const peer::Array want = p.Get(tiles);
    EXPECT_TRUE(peer::Same(peer::FromRecord(m.arrays[0].get()), want));
    EXPECT_FLOAT_EQ(m.entry.header.mm[0], 2.0f);
    EXPECT_FLOAT_EQ(m.entry.header.mm[1], 2.5f);
    EXPECT_FLOAT_EQ(m.entry.header.mm[2], 4.0f);
    // Each tile's sum, as a check that does not depend on the cutting of the reference.
    const auto* v = static_cast<const int16_t*>(m.arrays[0]->Data());
    const auto* w = reinterpret_cast<const int16_t*>(want.bytes.data());
    for (int t = 0; t < 13; ++t) {
        int64_t a = 0, b = 0;
        for (int k = 0; k < 256; ++k) a += v[t * 256 + k], b += w[t * 256 + k];
        EXPECT_EQ(a, b) << "tile " << t;
    }
    const med::Opened q = Open(without);
    ASSERT_EQ(q.load, 1) << q.entry.status;
    EXPECT_TRUE(peer::Same(peer::FromRecord(q.arrays[0].get()), p.Get(plain)));
}

TEST_F(DicomReader, SizeMismatchIsReportedAfterTheRead) {
    // 8320 bytes of pixel data for a 64 x 64 i2 image: the text says so, and the pixels
    // that are there are read all the same.
    peer::Peer p;
    const std::string id = p.Case("pixels " + kFolder + "MR_small_padded.dcm");
    ASSERT_TRUE(p.Run("files/dicom_reader.py"));
    const med::Opened o = Open(kFolder + "MR_small_padded.dcm");
    ASSERT_EQ(o.header, 1) << o.entry.status;
    EXPECT_EQ(o.load, 0);
    EXPECT_EQ(o.entry.status, "image size does not match requested size");
    EXPECT_TRUE(peer::Same(peer::FromRecord(o.arrays[0].get()), p.Get(id)));
}

TEST_F(DicomReader, BadFilesGiveAClearError) {
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"MR_small_jp2klossless.dcm", "no decoder for JPEG 2000"},
        {"MR_truncated.dcm", "not a readable dicom file"},
        {"rtplan_truncated.dcm", ""},
        {"meta_missing_tsyntax.dcm", ""},
        {"rtplan.dcm", "no image in file"},
        {"SC_ybr_full_422_uncompressed.dcm", "unsupported photometric interpretation"},
        {"README.txt", "not a readable dicom file"},
    };
    for (const auto& [file, text] : cases) {
        SCOPED_TRACE(file);
        const med::Opened o = Open(kFolder + file);
        EXPECT_EQ(o.header, 0);
        EXPECT_EQ(o.entry.failed, 1);
        EXPECT_EQ(o.entry.status.rfind(text, 0), 0u) << o.entry.status;
        EXPECT_FALSE(o.entry.status.empty());
        EXPECT_TRUE(o.arrays.empty());
    }
    // Number of Frames "1A" reads as 1 frame, and 15 frames of pixels do not match it.
    const med::Opened bad = Open(kFolder + "badVR.dcm");
    EXPECT_EQ(bad.header, 1) << bad.entry.status;
    EXPECT_EQ(bad.load, 0);
    EXPECT_EQ(bad.entry.status, "image size does not match requested size");
}

TEST_F(DicomReader, AbsurdSizesAreRefusedBeforeAllocation) {
    // Rows, columns and frames far beyond the stored pixels, uncompressed and RLE.
    med::TempDir dir;
    ASSERT_TRUE(
        peer::Peer().RunText("import pydicom\n"
                             "for src, dst, frames in [('MR_small.dcm', 'big.dcm', 1), "
                             "('rtdose_rle.dcm', 'rle.dcm', 100000)]:\n"
                             "    ds = pydicom.dcmread('" +
                             kFolder +
                             "' + src)\n"
                             "    ds.Rows, ds.Columns = 65535, 65535\n"
                             "    ds.NumberOfFrames = frames\n"
                             "    ds.save_as('" +
                             dir.Path().string() + "/' + dst)\n"));
    for (const char* f : {"big.dcm", "rle.dcm"}) {
        FileEntry e;
        e.path = dir / f;
        EXPECT_EQ(DicomHeader(COpenOptions{}, e), 0) << f;
        EXPECT_EQ(e.status, "pixel data shorter than rows x columns x frames") << f;
    }
}

TEST_F(DicomReader, TruncatedAtEveryOffset) {
    // Every prefix of a small RLE file through its header and the start of its fragments,
    // every fifth after: the header step fails with a text, or succeeds and the load then
    // either completes or says why. Nothing may crash.
    med::TempDir dir;
    const std::string whole = med::Slurp(kFolder + "MR_small_RLE.dcm");
    const std::string path = dir / "cut.dcm";
    int opened = 0, tried = 0;
    for (size_t n = 0; n < whole.size(); n += n < 2000 ? 1 : 5, ++tried) {
        med::Spit(path, whole.substr(0, n));
        const med::Opened o = Open(path);
        if (o.header) ++opened;
        ASSERT_FALSE(o.entry.status.empty()) << n;
        if (o.header && !o.load) {
            ASSERT_EQ(o.entry.failed, 1) << n;
        }
    }
    EXPECT_LT(opened, tried);
}
