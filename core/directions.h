// Directions named in a string argument, as the general functions take them: the letters
// "xyztuv" or the digits "1" ... "6", found anywhere in the string's samples up to its first
// zero, whatever the record's type.
//
//   DirectionsOf(text);   // "13" and "zx" both give bits 0 and 2
//   DirectionOf(text);    // 0, the first of them in direction order
#pragma once

#include <string>

#include "core/zrk_data.h"

// The direction letters, in direction order.
inline constexpr char kDirLetters[] = "xyztuv";
// "X" ... "V", for the names in failure lines.
inline constexpr char kDirCapitals[] = "XYZTUV";

// Bit d set for each direction d named.
unsigned DirectionsOf(const CZrkData* text);
// The first direction named, in direction order; -1 when there is none.
int DirectionOf(const CZrkData* text);
// The text of a string argument (an n1 array), up to its first zero.
std::string TextOf(const CZrkData* text);
