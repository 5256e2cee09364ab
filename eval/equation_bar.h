// The equation bar's logic, without its widget: one entry of text is evaluated as lines
// against the data space it is given. On failure the report goes to the status area and the
// caller keeps the text for correction; on success the math report is shown, the entry goes
// to the history, the result is marked changed, the status area is cleared and the displays
// of changed arrays are redrawn.
//
//   if (EquationBarEval(space, edit.text()) == 0) edit.clear();
#pragma once

#include <string>

class CDataSpace;

// 0 on success, 1 on failure (the report is in ErrorText() and in the status area). With
// `update_range` the changed records are also marked for a fresh display range.
int EquationBarEval(CDataSpace& space, const std::string& text, bool update_range = false);
