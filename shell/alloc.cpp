#include "shell/alloc.h"

#include <cstring>

#include "core/data_space.h"
#include "core/zrk_data.h"

std::string CAlloc::Run(CDataSpace& space) const {
    for (const CAllocRow& row : rows) {
        if (row.name.empty()) continue;
        if (row.nx < 1 || row.ny < 1 || row.nz < 1 || row.nt < 1 || !IsValidType(row.type))
            return "alloc failed";
        CZrkData* record =
            space.NewData(row.type, row.nx, row.ny, row.nz, row.nt, 1, 1, row.name.c_str());
        if (!record) return "alloc failed";
        std::memset(record->Data(), 0, record->Bytes());
        record->changed = 1;
    }
    return "allocate successful";
}
