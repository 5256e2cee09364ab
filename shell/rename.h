// CRename: the logic of the rename form. The record keeps its samples and its undo; only the
// name changes, and the sorted list is sorted again.
#pragma once

#include <string>

class CDataSpace;

// A data name: 1 to 127 characters, a letter or '_' first, then letters, digits, '_' or '.'.
bool IsValidDataName(const std::string& name);

class CRename {
  public:
    // "rename successful", or why not: "no such data", "reserved data", "invalid name",
    // "name in use".
    std::string Rename(CDataSpace& space, const std::string& old_name, const std::string& new_name);

    // The last pair, offered again when the form opens.
    std::string old_name;
    std::string new_name;
};
