// Escape sequences of the text writer's format, separator and end of line, which are kept
// in the preferences as one line each: \n \r \t \v \f \a \b \\ \" \' \?, \s for a blank (a
// trailing blank would not survive the line), \xHH and up to three octal digits. A
// backslash before anything else, or at the end, stands for itself.
//
//   ExpandEscapes("\\t")       // "\t"
//   ExpandEscapes("x\\s\\x41")  // "x A"
#pragma once

#include <string>

std::string ExpandEscapes(const std::string& text);
