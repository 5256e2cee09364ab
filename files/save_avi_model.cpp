#include "files/save_avi_model.h"

CSaveAviModel::CSaveAviModel(CAviOptions& avi, CSaveOptions& save, const res_t pages[4])
    : avi_(avi), save_(save), encoder_(avi.encoder) {
    for (int k = 0; k < 4; ++k) {
        pages_[k] = pages[k] ? static_cast<int64_t>(pages[k]) : 1;
        first_[k] = 0;
        last_[k] = pages_[k] - 1;
    }
    SetEncoder(avi.encoder);
    SetFps(save.fps);
    SetPpt(save.ppt);
}

void CSaveAviModel::SetEncoder(int encoder) {
    encoder_ = encoder >= 0 && encoder < AVI_ENCODER_COUNT ? encoder : AVI_MJPEG;
}

int64_t CSaveAviModel::Clamp(int k, int64_t page) const {
    return page < 0 ? 0 : page >= pages_[k] ? pages_[k] - 1 : page;
}

void CSaveAviModel::SetFirst(int k, int64_t page) { first_[k] = Clamp(k, page); }
void CSaveAviModel::SetLast(int k, int64_t page) { last_[k] = Clamp(k, page); }

int64_t CSaveAviModel::FrameCount() const {
    int64_t n = 1;
    for (int k = 0; k < 4; ++k) n *= last_[k] >= first_[k] ? last_[k] - first_[k] + 1 : 0;
    return n;
}

std::string CSaveAviModel::Check() const {
    static const char* const kNames[4] = {"z", "t", "u", "v"};
    for (int k = 0; k < 4; ++k)
        if (first_[k] > last_[k]) return std::string("first ") + kNames[k] + " page after last";
    return "";
}

void CSaveAviModel::Apply() const {
    avi_.encoder = encoder_;
    for (int k = 0; k < 4; ++k) avi_.first[k] = first_[k], avi_.last[k] = last_[k];
    save_.fps = fps_;
    save_.ppt = ppt_;
}
