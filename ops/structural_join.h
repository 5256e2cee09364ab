// Joining arrays along one direction: cat, catm, catmd and stuff1d.
#pragma once

#include "core/data_space.h"
#include "core/zrk_data.h"

// Raises "y resolutions not compatible" (and so on) for the first direction other than
// `dir` in which a and b differ.
void CheckCompatible(const CZrkData* a, const CZrkData* b, int dir);

// cat: a and b joined along dir, in their common type.
CZrkData* Cat(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* b);
// catm and catmd: every record of `space` whose name lies from first's to last's name
// (byte-wise, both included), joined in name order; catmd then deletes them from `space`.
// A name argument is the record's own name, or for a nameless string its text.
CZrkData* CatM(CDataSpace& temp, int dir, const CZrkData* first, const CZrkData* last,
               CDataSpace& space, bool delete_inputs);
// stuff1d: b written into a copy of a along dir from index i on, as far as a reaches.
CZrkData* Stuff1d(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* b, int64_t i);
