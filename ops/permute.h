// Reordering of directions: permute, trans, rotxy, rotmxy and flip share one cache-blocked
// byte mover, so every element type goes through the same routine.
#pragma once

#include "core/data_space.h"
#include "core/zrk_data.h"

// Writes `in` into `out` (already shaped): output direction k runs along input direction
// perm[k], backwards when rev[k]. Both records have the same elem_bytes.
void PermuteBytes(const CZrkData* in, CZrkData* out, const int perm[6], const bool rev[6]);

// n elements of elem_bytes each from src to dst, in order or backwards.
void CopyElements(const char* src, char* dst, uint64_t n, int elem_bytes, bool reverse);

// flip: order reversed along `dir`.
CZrkData* Flip(CDataSpace& temp, int dir, const CZrkData* a);
// permute("tzyx", d0): the named directions first, in that order, the rest behind them.
CZrkData* Permute(CDataSpace& temp, const CZrkData* order, const CZrkData* a);
// trans("yt", d0): the first two directions named are exchanged.
CZrkData* Trans(CDataSpace& temp, const CZrkData* pair, const CZrkData* a);
// Rotation in the xy plane: output x runs along input y; rotxy reads y backwards, rotmxy x.
CZrkData* RotXy(CDataSpace& temp, const CZrkData* a);
CZrkData* RotMXy(CDataSpace& temp, const CZrkData* a);
