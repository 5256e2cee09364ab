// The seed corpus of the DICOM and NIfTI fuzz targets: small sample files of the Debian
// packages, each of another transfer syntax or type, and files nibabel writes here. Each
// must open whole before it seeds.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "files/dicom_reader.h"
#include "files/nifti_reader.h"
#include "tests/files/med_fixture.h"
#include "tests/peer.h"

namespace {

const std::string kDicom = "/usr/lib/python3/dist-packages/pydicom/data/test_files/";
const std::string kNifti = "/usr/lib/python3/dist-packages/nibabel/tests/data/";

void Seed(const std::string& from, const std::filesystem::path& to, med::HeaderStep header,
          med::LoadStep load) {
    const med::Opened o = med::Open(from, header, load);
    ASSERT_EQ(o.load, 1) << from << ": " << o.entry.status;
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing);
}

}  // namespace

TEST(MedCorpus, SeedsOpenWhole) {
    if (med::Samples(kDicom).empty() || med::Samples(kNifti).empty())
        GTEST_SKIP() << "python3-pydicom or python3-nibabel is not installed";
    const std::filesystem::path root = QUELMOR_CORPUS_DIR;
    std::filesystem::create_directories(root / "dicom");
    std::filesystem::create_directories(root / "nifti");
    for (const char* f :
         {"MR_small.dcm", "MR_small_RLE.dcm", "MR_small_expb.dcm", "MR_small_jpeg_ls_lossless.dcm",
          "SC_rgb_jpeg_dcmtk.dcm", "SC_rgb_jpeg_gdcm.dcm", "SC_rgb_small_odd.dcm", "image_dfl.dcm",
          "JPGExtended.dcm", "rtdose_rle_1frame.dcm", "rtdose_expb_1frame.dcm"})
        Seed(kDicom + f, root / "dicom" / f, &DicomHeader, &DicomLoad);

    med::TempDir dir;
    const std::string d = dir.Path().string();
    ASSERT_TRUE(peer::Peer().RunText(
        "import nibabel as nib\n"
        "a = np.arange(3 * 4 * 2 * 2).reshape(3, 4, 2, 2)\n"
        "for t in ['int16', 'float32', 'complex64', 'uint8']:\n"
        "    img = nib.Nifti1Image(a.astype(t), np.eye(4))\n"
        "    nib.save(img, '" +
        d +
        "/' + t + '.nii')\n"
        "scaled = nib.Nifti1Image(a.astype('int16'), np.eye(4))\n"
        "scaled.header.set_slope_inter(0.5, 10)\n"
        "nib.save(scaled, '" +
        d +
        "/scaled.nii')\n"
        "nib.save(nib.Nifti2Image(a.astype('int32'), np.eye(4)), '" +
        d +
        "/two.nii')\n"
        "nib.save(nib.Nifti1Image(a.astype('uint16'), np.eye(4)), '" +
        d +
        "/packed.nii.gz')\n"
        "rgb = np.zeros((3, 4, 2), dtype=[('R', 'u1'), ('G', 'u1'), ('B', 'u1')])\n"
        "nib.save(nib.Nifti1Image(rgb, np.eye(4)), '" +
        d + "/rgb.nii')\n"));
    for (const char* f : {"int16.nii", "float32.nii", "complex64.nii", "uint8.nii", "scaled.nii",
                          "two.nii", "packed.nii.gz", "rgb.nii"})
        Seed(d + "/" + f, root / "nifti" / f, &NiftiHeader, &NiftiLoad);
    for (const char* f : {"standard.nii.gz", "row_major.dconn.nii"})
        Seed(kNifti + f, root / "nifti" / f, &NiftiHeader, &NiftiLoad);
}
