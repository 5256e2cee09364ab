// Where one file's samples land in the array made for it, or in the array of a stack of
// files: the entry's block of x, y, z, t, u, v sizes starts at entry.dest along z, t, u, v.
// The target must have the entry's type, its x and y, and room for the block; the check runs before
// any sample moves, so a reader never writes outside the array it was given.
//
//   CEntryBlock block(entry, *target);        // raises "target does not fit the file"
//   if (block.Contiguous()) read straight into block.Plane(0) ...
//   else for each plane p: copy into block.Plane(p)
#pragma once

#include <cstdint>

#include "core/zrk_data.h"
#include "files/file_entry.h"

class CEntryBlock {
  public:
    CEntryBlock(const FileEntry& entry, const CZrkData& target);

    // xy planes of the entry, z fastest, then t, u, v.
    uint64_t Planes() const { return planes_; }
    uint64_t PlaneBytes() const { return plane_bytes_; }
    // True when the whole block is one run of bytes in the target, starting at Plane(0).
    bool Contiguous() const { return contiguous_; }
    // Start of the entry's plane `p` inside the target.
    char* Plane(uint64_t p) const;
    // True for a file loaded alone or first in a stack: it gives the array its steps.
    bool AtOrigin() const { return !(dest_[0] | dest_[1] | dest_[2] | dest_[3]); }

  private:
    const CZrkData& target_;
    res_t size_[6];
    uint64_t dest_[4];
    uint64_t planes_ = 0;
    uint64_t plane_bytes_ = 0;
    bool contiguous_ = false;
};
