// CSaveAviModel: the fields of the movie dialog (CSaveAvi) and their checks, without a
// toolkit. It edits copies and writes them to the AVI and save options only on Apply, so a
// cancelled dialog changes nothing.
//
//   const res_t pages[4] = {data->nz, data->nt, data->nu, data->nv};
//   CSaveAviModel m(AviOptions(), save_options, pages);
//   m.SetLast(0, 4);            // z pages 0 ... 4
//   if (m.Check().empty()) m.Apply();
#pragma once

#include <cstdint>
#include <string>

#include "core/zrk_data.h"
#include "files/avi_options.h"
#include "files/file_options.h"

class CSaveAviModel {
  public:
    // `pages`: the display's sizes in z, t, u, v (0 counts as 1). The ranges start whole.
    CSaveAviModel(CAviOptions& avi, CSaveOptions& save, const res_t pages[4]);

    int Encoder() const { return encoder_; }
    void SetEncoder(int encoder);
    int Fps() const { return fps_; }
    void SetFps(int fps) { fps_ = fps < 1 ? 1 : fps; }
    int Ppt() const { return ppt_; }
    void SetPpt(int ppt) { ppt_ = ppt < 1 ? 1 : ppt; }

    // Direction 0 ... 3 for z, t, u, v; pages clamp to the display's.
    int64_t Pages(int k) const { return pages_[k]; }
    int64_t First(int k) const { return first_[k]; }
    int64_t Last(int k) const { return last_[k]; }
    void SetFirst(int k, int64_t page);
    void SetLast(int k, int64_t page);

    // Frames the movie will hold; 0 when a range is empty.
    int64_t FrameCount() const;
    // "" when the movie can be written, else why not.
    std::string Check() const;
    void Apply() const;

  private:
    int64_t Clamp(int k, int64_t page) const;

    CAviOptions& avi_;
    CSaveOptions& save_;
    int64_t pages_[4];
    int64_t first_[4];
    int64_t last_[4];
    int encoder_;
    int fps_;
    int ppt_;
};
