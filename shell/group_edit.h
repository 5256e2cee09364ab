// The group commands of a display's context menu: each runs on the array of every display
// picked in the window list (select bit 1). The edits go through the structural operators
// and take the array's undo; a failure leaves that array, puts the operator's text in the
// status, and the other displays still change.
//
//   std::string status = GroupEdit(space, GlobalWindowSpace(), GroupCommandIndex("flip x"));
#pragma once

#include <string>

class CDataSpace;
class CWindowSpace;

inline constexpr int kGroupCommands = 25;
extern const char* const kGroupCommandTexts[kGroupCommands];

// The index of a command's text, -1 for none.
int GroupCommandIndex(const std::string& text);
// Whether this build runs the command: the scrolls, crops and zeros wait for the view's
// scroll modes and regions.
bool GroupCommandAvailable(int command);
// Runs the command on the selected displays' arrays; the status text.
std::string GroupEdit(CDataSpace& space, CWindowSpace& windows, int command);
