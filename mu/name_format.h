// Output names from formats. A format may hold "%s" for the form's base name, put in as plain
// text, and one integer field for the form's count: "%s_mu%02d" with "liver" and 1 gives
// liver_mu01. Any other conversion is refused before it can reach printf, and the result
// must be a valid data name.
#pragma once

#include <string>

// The name, or "" with `error` set to "invalid name format: %s" or "invalid output name: %s".
std::string FormatOutputName(const std::string& format, const std::string& base, int count,
                             std::string* error);
