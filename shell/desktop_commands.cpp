#include "shell/desktop_commands.h"

#include <vector>

#include "core/data_space.h"
#include "core/zrk_data.h"
#include "shell/desktop.h"

namespace {

// Positions go stale on every change of a sorted list, so the picks are taken first.
std::vector<CZrkData*> Picked(const CDataSpace& space) {
    std::vector<CZrkData*> picked;
    const int n = space.GetSelCount(kDesktopSelect);
    for (int i = 0; i < n; ++i)
        if (CZrkData* record = space.GetSel(kDesktopSelect, i)) picked.push_back(record);
    return picked;
}

std::string Counted(size_t n, const char* what) { return std::to_string(n) + " " + what; }

}  // namespace

std::string FreeSelectedData(CDataSpace& space) {
    size_t freed = 0;
    for (CZrkData* record : Picked(space)) {
        if (CDataSpace::IsReservedData(record->name)) continue;
        freed += space.DelData(record);
    }
    return Counted(freed, "freed");
}

std::string FreeUndoBuffers(CDataSpace& space) {
    std::vector<CZrkData*> records = Picked(space);
    if (records.empty())
        for (int i = 0; i < space.Count(); ++i) records.push_back(space.GetData(i));
    size_t freed = 0;
    for (CZrkData* record : records) {
        if (!record || !record->HasUndo()) continue;
        record->NoUndo();
        ++freed;
    }
    return Counted(freed, "undo buffers freed");
}

std::string DeclareConstant(CDataSpace& space, const char* name, double value) {
    space.DelData(name);
    CZrkData* record = space.NewData(TYPE_R4, 1, 1, 1, 1, 1, 1, name);
    if (!record) return "alloc failed";
    *static_cast<float*>(record->Data()) = static_cast<float>(value);
    record->changed = 1;
    return std::string(name) + " declared";
}

std::string DuplicateSelected(CDataSpace& space) {
    size_t made = 0;
    for (CZrkData* record : Picked(space)) {
        CZrkData* copy = record->Duplicate();
        if (!copy) return "alloc failed";
        copy->select = 0;
        const std::string name = record->name;
        if (!space.AddToList(copy, name.c_str())) {
            copy->FreeData();
            delete copy;
            return "alloc failed";
        }
        ++made;
    }
    return Counted(made, "duplicated");
}
