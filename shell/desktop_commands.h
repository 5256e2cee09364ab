// The context commands of the data desktop that need no display. Each works on the records
// picked on the desktop (select bit kDesktopSelect) and returns the text for the status bar.
#pragma once

#include <string>

class CDataSpace;

// "free data": deletes the picked records; reserved ones stay.
std::string FreeSelectedData(CDataSpace& space);
// "free undo buffers": drops the undo of the picked records, of all when none is picked.
std::string FreeUndoBuffers(CDataSpace& space);
// "declare pi", "declare e": a one-element r4 record of that name and value, replacing one
// that exists.
std::string DeclareConstant(CDataSpace& space, const char* name, double value);
// "duplicate": a deep copy of each picked record under a unique name derived from its own.
std::string DuplicateSelected(CDataSpace& space);
