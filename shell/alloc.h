// CAlloc: the logic of the allocate form: five rows, each a name, x, y, z, t sizes and a
// type. Rows are run in order, a row with an empty name is skipped, and the first row that
// can't be made stops the run. New samples are cleared.
#pragma once

#include <array>
#include <string>

#include "core/element_type.h"

class CDataSpace;

struct CAllocRow {
    std::string name;
    long long nx = 1, ny = 1, nz = 1, nt = 1;
    int type = TYPE_R4;
};

class CAlloc {
  public:
    static constexpr int kRows = 5;

    // "allocate successful" or "alloc failed".
    std::string Run(CDataSpace& space) const;

    std::array<CAllocRow, kRows> rows;
};
