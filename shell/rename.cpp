#include "shell/rename.h"

#include <cctype>

#include "core/data_space.h"
#include "core/zrk_data.h"

bool IsValidDataName(const std::string& name) {
    if (name.empty() || name.size() > 127) return false;
    const auto first = static_cast<unsigned char>(name[0]);
    if (!std::isalpha(first) && first != '_') return false;
    for (unsigned char c : name)
        if (!std::isalnum(c) && c != '_' && c != '.') return false;
    return true;
}

std::string CRename::Rename(CDataSpace& space, const std::string& from, const std::string& to) {
    old_name = from;
    new_name = to;
    CZrkData* record = space.FindData(from.c_str());
    if (!record) return "no such data";
    if (CDataSpace::IsReservedData(from.c_str()) || CDataSpace::IsReservedData(to.c_str()))
        return "reserved data";
    if (!IsValidDataName(to)) return "invalid name";
    if (space.FindData(to.c_str())) return "name in use";
    record->SetName(to.c_str());
    space.SortList();
    return "rename successful";
}
