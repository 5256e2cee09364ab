#include "files/entry_block.h"

CEntryBlock::CEntryBlock(const FileEntry& entry, const CZrkData& target) : target_(target) {
    entry.header.GetRes(size_);
    for (int k = 0; k < 4; ++k) dest_[k] = entry.dest[k];
    res_t room[6];
    target.GetRes(room);
    bool fits = target.Data() && target.type == entry.header.type && size_[0] == room[0] &&
                size_[1] == room[1];
    for (int k = 2; k < 6 && fits; ++k)
        fits = dest_[k - 2] <= room[k] && size_[k] <= room[k] - dest_[k - 2];
    if (!fits) Raise("target does not fit the file");
    planes_ = size_[2] * size_[3] * size_[4] * size_[5];
    plane_bytes_ = target.BytesPerPlane();
    // One run when, above the first direction where the block is narrower than the target,
    // the block is a single plane thick.
    contiguous_ = true;
    int k = 2;
    while (k < 6 && size_[k] == room[k]) ++k;
    for (int j = k + 1; j < 6; ++j) contiguous_ = contiguous_ && size_[j] == 1;
}

char* CEntryBlock::Plane(uint64_t p) const {
    res_t at[4];
    for (int k = 0; k < 4; ++k) {
        at[k] = dest_[k] + p % size_[k + 2];
        p /= size_[k + 2];
    }
    return target_.Address(0, 0, at[0], at[1], at[2], at[3]);
}
