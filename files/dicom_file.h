// One DICOM file through DCMTK. Open reads the dataset (pixel data stays on disk until it is
// needed) and fills the record the open dialog works from; ReadImage decodes the pixels from
// any transfer syntax a registered decoder handles (JPEG, JPEG-LS, RLE, deflate).
//
// The pixels come out as stored samples in native byte order, frames one after another,
// the colour samples of a pixel side by side (planar 0) or as whole colour planes (planar 1);
// 1-bit images are widened to one byte per pixel, full-range YBR colour becomes RGB. A mosaic image
// reports its tiles in `mosaic`, and the caller cuts them into slices.
//
//   CDicomFile f;
//   DicomRecord r;
//   if (f.Open(path, r) && f.ReadImage(r)) ... f.Pixels(), r.imageBytes
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "files/dicom_mosaic.h"

class DcmFileFormat;

// What the dialog learns about a file. x, y, z are the sizes the user gets: z counts the
// frames, or the tiles of a mosaic.
struct DicomRecord {
    int32_t x = 0, y = 0, z = 0;
    int32_t isSigned = 0;
    int32_t sampleBytes = 0;  // 1, 2 or 4
    uint64_t imageBytes = 0;  // bytes of the decoded pixel data, all frames and samples
    float rescaleIntercept = 0.0f;
    float rescaleSlope = 1.0f;
    int32_t exam = 0, series = 0, image = 0;
    int32_t isRgb = 0;
    int32_t frames = 0;
    int32_t error = 0;
    std::string text1, text2, errorText;

    // Layout of the decoded pixels.
    int32_t rows = 0, columns = 0;  // of one stored frame
    int32_t samples = 1;            // samples per pixel, 1 or 3
    int32_t planar = 0;             // 1: colour planes one after another
    CMosaicLayout mosaic;           // tiles == 0 when the image is not cut
    float step[3] = {1.0f, 1.0f, 1.0f};
};

class CDicomFile {
  public:
    CDicomFile();
    ~CDicomFile();
    CDicomFile(const CDicomFile&) = delete;
    CDicomFile& operator=(const CDicomFile&) = delete;

    // Fills `record`; false with record.error and record.errorText on failure. Every size is
    // checked against the stored pixel data here, before anyone allocates for it.
    bool Open(const std::string& path, DicomRecord& record);
    // Decodes the pixels. When the decoded bytes differ from record.imageBytes the record
    // says "image size does not match requested size" and false comes back, but Pixels()
    // still holds what was decoded, PixelBytes() long.
    bool ReadImage(DicomRecord& record);

    const uint8_t* Pixels() const { return pixels_; }
    uint64_t PixelBytes() const { return pixel_bytes_; }

  private:
    void ToRgb(const DicomRecord& r);

    std::unique_ptr<DcmFileFormat> file_;
    bool big_endian_ = false;
    const uint8_t* pixels_ = nullptr;
    uint64_t pixel_bytes_ = 0;
    std::vector<uint8_t> owned_;  // widened 1-bit or reordered 32-bit samples
};

// Registers DCMTK's decoders and holds its log to errors; safe to call more than once.
void InitDicomLibrary();
