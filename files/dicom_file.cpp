#include "files/dicom_file.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <mutex>

// clang-format off
#include "dcmtk/config/osconfig.h"
#include "dcmtk/dcmdata/dccodec.h"
#include "dcmtk/dcmdata/dctk.h"
#include "dcmtk/dcmdata/dcrledrg.h"
#include "dcmtk/dcmjpeg/djdecode.h"
#include "dcmtk/dcmjpls/djdecode.h"
#include "dcmtk/oflog/oflog.h"
// clang-format on

void InitDicomLibrary() {
    static std::once_flag once;
    std::call_once(once, [] {
        OFLog::configure(OFLogger::ERROR_LOG_LEVEL);
        DcmRLEDecoderRegistration::registerCodecs();
        DJDecoderRegistration::registerCodecs(EDC_photometricInterpretation, EUC_never,
                                              EPC_colorByPixel);
        DJLSDecoderRegistration::registerCodecs(EJLSUC_never, EJLSPC_colorByPixel);
    });
}

namespace {

bool Fail(DicomRecord& r, const std::string& text) {
    r.error = 1;
    r.errorText = text;
    return false;
}

std::string Text(DcmDataset* ds, const DcmTagKey& tag) {
    OFString s;
    if (ds->findAndGetOFStringArray(tag, s).bad()) return "";
    std::string out(s.c_str());
    while (!out.empty() && out.back() == ' ') out.pop_back();
    return out;
}

int32_t Number(DcmDataset* ds, const DcmTagKey& tag) {
    const std::string s = Text(ds, tag);
    return static_cast<int32_t>(std::strtol(s.c_str(), nullptr, 10));
}

// A positive finite value of a decimal string element, or `fallback`.
float Positive(DcmDataset* ds, const DcmTagKey& tag, unsigned long pos, float fallback) {
    Float64 v = 0;
    if (ds->findAndGetFloat64(tag, v, pos).bad() || !(v > 0) || v > 1e30) return fallback;
    return static_cast<float>(v);
}

// The tile count of a mosaic, whatever VR the private element came with.
int MosaicCount(DcmDataset* ds) {
    DcmElement* e = nullptr;
    if (ds->findAndGetElement(DcmTagKey(0x0019, 0x100A), e).bad() || !e) return 0;
    Uint16 v = 0;
    if (e->getUint16(v).good()) return v;
    Uint8* bytes = nullptr;
    if (e->getLength() >= 2 && e->getUint8Array(bytes).good() && bytes)
        return bytes[0] | bytes[1] << 8;
    return 0;
}

bool IsMosaic(DcmDataset* ds) {
    const std::string type = Text(ds, DCM_ImageType);
    return type.find("MOSAIC") != std::string::npos;
}

uint64_t PhysicalMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES), size = sysconf(_SC_PAGE_SIZE);
    return pages > 0 && size > 0 ? static_cast<uint64_t>(pages) * static_cast<uint64_t>(size)
                                 : uint64_t{1} << 32;
}

}  // namespace

CDicomFile::CDicomFile() = default;

// Full-range YBR to RGB with the coefficients of ITU-R BT.601, rounded and clipped.
void CDicomFile::ToRgb(const DicomRecord& r) {
    if (owned_.empty() || owned_.data() != pixels_) owned_.assign(pixels_, pixels_ + pixel_bytes_);
    const uint64_t pixels = owned_.size() / 3;
    const uint64_t plane = static_cast<uint64_t>(r.rows) * r.columns;
    auto clip = [](double v) {
        return static_cast<uint8_t>(std::lround(std::min(255.0, std::max(0.0, v))));
    };
    for (uint64_t k = 0; k < pixels; ++k) {
        // Planar data: frame by frame, three planes a frame.
        const uint64_t frame = k / plane, at = k % plane;
        uint8_t* p[3];
        for (int c = 0; c < 3; ++c)
            p[c] = r.planar ? &owned_[(frame * 3 + c) * plane + at] : &owned_[3 * k + c];
        const double y = *p[0], cb = *p[1] - 128.0, cr = *p[2] - 128.0;
        *p[0] = clip(y + 1.402 * cr);
        *p[1] = clip(y - 0.344136 * cb - 0.714136 * cr);
        *p[2] = clip(y + 1.772 * cb);
    }
    pixels_ = owned_.data();
}

CDicomFile::~CDicomFile() = default;

bool CDicomFile::Open(const std::string& path, DicomRecord& r) {
    InitDicomLibrary();
    r = DicomRecord{};
    pixels_ = nullptr;
    pixel_bytes_ = 0;
    owned_.clear();
    file_ = std::make_unique<DcmFileFormat>();
    const OFCondition loaded = file_->loadFile(path.c_str());
    if (loaded.bad()) return Fail(r, std::string("not a readable dicom file: ") + loaded.text());
    DcmDataset* ds = file_->getDataset();

    Uint16 rows = 0, columns = 0, samples = 1, bits = 0, repr = 0, planar = 0;
    if (ds->findAndGetUint16(DCM_Rows, rows).bad() ||
        ds->findAndGetUint16(DCM_Columns, columns).bad() || rows == 0 || columns == 0)
        return Fail(r, "no image in file");
    ds->findAndGetUint16(DCM_SamplesPerPixel, samples);
    ds->findAndGetUint16(DCM_BitsAllocated, bits);
    ds->findAndGetUint16(DCM_PixelRepresentation, repr);
    ds->findAndGetUint16(DCM_PlanarConfiguration, planar);
    if (samples != 1 && samples != 3) return Fail(r, "unsupported samples per pixel");
    if (bits != 1 && bits != 8 && bits != 16 && bits != 32)
        return Fail(r, "unsupported bits allocated");
    if (bits == 1 && samples != 1) return Fail(r, "unsupported bits allocated");
    Sint32 frames = 1;
    if (ds->tagExistsWithValue(DCM_NumberOfFrames)) {
        if (ds->findAndGetSint32(DCM_NumberOfFrames, frames).bad() || frames < 1)
            return Fail(r, "bad number of frames");
    }

    DcmElement* pixel = nullptr;
    if (ds->findAndGetElement(DCM_PixelData, pixel).bad() || !pixel)
        return Fail(r, "no pixel data");
    const E_TransferSyntax xfer = ds->getOriginalXfer();
    const DcmXfer xfer_info(xfer);
    // Colour comes as RGB, or as full-range YBR that is turned into RGB here; subsampled YBR
    // only inside JPEG, whose decoder turns it into RGB itself.
    const std::string photometric = Text(ds, DCM_PhotometricInterpretation);
    if (samples == 3 && photometric != "RGB" && !(photometric == "YBR_FULL" && bits == 8) &&
        !(photometric.rfind("YBR", 0) == 0 && xfer_info.isEncapsulated() &&
          xfer != EXS_RLELossless))
        return Fail(r, "unsupported photometric interpretation: " + photometric);
    big_endian_ = xfer_info.getByteOrder() == EBO_BigEndian;
    const uint64_t pixels = static_cast<uint64_t>(rows) * columns * static_cast<uint64_t>(frames);
    const uint64_t stored = bits == 1 ? (pixels + 7) / 8 : pixels * samples * (bits / 8);
    if (xfer_info.isEncapsulated()) {
        // The data are decoded only at load; what can be checked now: a decoder exists,
        // every frame starts a fragment of its own, and the result would fit in memory.
        if (!DcmCodecList::canChangeCoding(xfer, EXS_LittleEndianExplicit))
            return Fail(r, std::string("no decoder for ") + xfer_info.getXferName());
        // A pixel element under another VR is not a pixel data element to DCMTK.
        auto* data = dynamic_cast<DcmPixelData*>(pixel);
        DcmPixelSequence* seq = nullptr;
        if (!data || data->getEncapsulatedRepresentation(xfer, nullptr, seq).bad() || !seq)
            return Fail(r, "no pixel data");
        if (seq->card() < 2 || seq->card() - 1 < static_cast<unsigned long>(frames))
            return Fail(r, "pixel data shorter than rows x columns x frames");
        if (stored > PhysicalMemory()) return Fail(r, "image larger than memory");
    } else if (pixel->getLength() < stored) {
        return Fail(r, "pixel data shorter than rows x columns x frames");
    }

    r.rows = rows;
    r.columns = columns;
    r.samples = samples;
    r.planar = samples == 3 ? planar : 0;
    r.frames = frames;
    r.x = columns;
    r.y = rows;
    r.z = frames;
    r.isSigned = repr == 1 && samples == 1;
    r.sampleBytes = bits <= 8 ? 1 : bits / 8;
    r.isRgb = samples == 3;
    r.imageBytes = pixels * samples * r.sampleBytes;
    if (ds->tagExistsWithValue(DCM_RescaleSlope)) {
        Float64 v = 1;
        if (ds->findAndGetFloat64(DCM_RescaleSlope, v).good() && std::isfinite(v))
            r.rescaleSlope = static_cast<float>(v);
    }
    if (ds->tagExistsWithValue(DCM_RescaleIntercept)) {
        Float64 v = 0;
        if (ds->findAndGetFloat64(DCM_RescaleIntercept, v).good() && std::isfinite(v))
            r.rescaleIntercept = static_cast<float>(v);
    }
    r.exam = Number(ds, DCM_StudyID);
    r.series = Number(ds, DCM_SeriesNumber);
    r.image = Number(ds, DCM_InstanceNumber);
    r.text1 = Text(ds, DCM_Modality);
    r.text2 = Text(ds, DCM_SeriesDescription);
    if (r.text2.empty()) r.text2 = Text(ds, DCM_StudyDescription);
    // Pixel Spacing is row spacing then column spacing: x steps along a row.
    r.step[0] = Positive(ds, DCM_PixelSpacing, 1, 1.0f);
    r.step[1] = Positive(ds, DCM_PixelSpacing, 0, 1.0f);
    r.step[2] =
        Positive(ds, DCM_SpacingBetweenSlices, 0, Positive(ds, DCM_SliceThickness, 0, 1.0f));

    if (samples == 1 && frames == 1 && IsMosaic(ds)) {
        uint16_t matrix[4] = {};
        for (unsigned long k = 0; k < 4; ++k) {
            Uint16 v = 0;
            if (ds->findAndGetUint16(DCM_AcquisitionMatrix, v, k).good()) matrix[k] = v;
        }
        const int tiles = MosaicCount(ds);
        if (tiles > 0 && MosaicLayoutOf(columns, rows, tiles, matrix, r.mosaic)) {
            r.x = r.mosaic.tileX;
            r.y = r.mosaic.tileY;
            r.z = tiles;
        }
    }
    return true;
}

bool CDicomFile::ReadImage(DicomRecord& r) {
    if (!file_) return Fail(r, "no image in file");
    DcmDataset* ds = file_->getDataset();
    const OFCondition decoded = ds->chooseRepresentation(EXS_LittleEndianExplicit, nullptr);
    if (decoded.bad() || !ds->canWriteXfer(EXS_LittleEndianExplicit))
        return Fail(r, std::string("decode failed: ") + decoded.text());
    DcmElement* pixel = nullptr;
    if (ds->findAndGetElement(DCM_PixelData, pixel).bad() || !pixel)
        return Fail(r, "no pixel data");
    Uint16 bits = 0, planar = 0;
    ds->findAndGetUint16(DCM_BitsAllocated, bits);
    // A decoder may hand colour back as planes; the dataset says which.
    if (r.samples == 3 && ds->findAndGetUint16(DCM_PlanarConfiguration, planar).good())
        r.planar = planar;
    const uint64_t length = pixel->getLength();
    const uint8_t* raw = nullptr;
    if (bits > 8) {
        Uint16* words = nullptr;
        if (pixel->getUint16Array(words).good()) raw = reinterpret_cast<const uint8_t*>(words);
    }
    if (!raw) {
        Uint8* bytes = nullptr;
        if (pixel->getUint8Array(bytes).good()) raw = bytes;
    }
    if (!raw && length > 0) return Fail(r, "no pixel data");

    pixels_ = raw;
    pixel_bytes_ = length;
    const uint64_t pixels = static_cast<uint64_t>(r.rows) * r.columns * r.frames;
    if (bits == 1) {
        // Eight pixels a byte, the first in the lowest bit.
        owned_.resize(std::min<uint64_t>(pixels, length * 8));
        for (uint64_t k = 0; k < owned_.size(); ++k) owned_[k] = raw[k >> 3] >> (k & 7) & 1;
        pixels_ = owned_.data();
        pixel_bytes_ = owned_.size();
    } else if (bits == 32 && big_endian_) {
        // Words were put in native order in 16-bit units; the two halves of each sample
        // still stand in the file's order.
        owned_.assign(raw, raw + length - length % 4);
        for (uint64_t k = 0; k + 4 <= owned_.size(); k += 4) {
            uint8_t t[2] = {owned_[k], owned_[k + 1]};
            owned_[k] = owned_[k + 2];
            owned_[k + 1] = owned_[k + 3];
            owned_[k + 2] = t[0];
            owned_[k + 3] = t[1];
        }
        pixels_ = owned_.data();
        pixel_bytes_ = owned_.size();
    }
    if (r.samples == 3 && Text(ds, DCM_PhotometricInterpretation) == "YBR_FULL") ToRgb(r);
    const uint64_t want = pixels * r.samples * r.sampleBytes;
    if (pixel_bytes_ < want || (pixel_bytes_ > want + 1 && bits != 1)) {
        // Odd lengths are padded by one byte; anything else is a mismatch.
        return Fail(r, "image size does not match requested size");
    }
    return true;
}
