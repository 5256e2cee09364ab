// The colours of a palette as an array, so a palette can be edited by equations and set back
// by name: n1, 256 x 3, the red, green and blue entries as rows 0, 1 and 2 (the planar form a
// palette array is read in).
#pragma once

class CDataSpace;
class CWindowSpace;
class CZrkData;

// `which` is either an array shown in a 2d display (that display's palette) or a string
// naming a built-in table ("grey" ... "jet") or a palette array of `space`. Raises "unknown
// palette" for any other string.
CZrkData* PaletteRgb(CDataSpace& temp, const CZrkData* which, const CDataSpace& space,
                     const CWindowSpace& windows);
