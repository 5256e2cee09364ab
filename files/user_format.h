// printf formats typed by the user (the text writer's number format, the name format of
// the load dialog, "%d" in a file name): checked before use, since a wrong conversion would
// read a value that was never passed.
//
//   CountConversions("file%02d.txt", "di")   // 1
//   CountConversions("%s", "di")             // -1
//   FormatCount("file%02d.txt", 3)           // "file03.txt"
#pragma once

#include <string>

// How many conversions with a letter of `kinds` the format holds; -1 when it holds any
// other, a '*', a length modifier, a width or precision above three digits, or ends
// inside one. "%%" counts for nothing.
int CountConversions(const std::string& format, const char* kinds);

// The format with its integer conversions (at most one) filled with `n`; the format itself
// when it has none, empty when it is not such a format.
std::string FormatCount(const std::string& format, int n);
