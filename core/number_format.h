// Number texts of the reports, the desktop and the status bar.
//
// FormatFloat(v, "default"): "0" for zero; integers below 1e4 with "%.0f"; "%.3f" from 1 to
// 1e4, "%.4f" from 0.01 to 1, "%.6f" from 0.001 to 0.01; outside that a mantissa below 1000
// in "%.3f" with the suffix "e3", "e6", ... or "e-3", "e-6", ... down to "e-18"; "+inf",
// "-inf" and "nan". Any other format name that is one printf float conversion (such as a
// format built with "%%.%df" to fix the decimals) is used as it stands; anything else falls
// back to "default".
//
// FormatLong(v, "long_default"): "0"; "%d" below 10000 in size; then the value divided by
// 1000, 1e6, ... in "%.3f" with the suffix "e3", "e6", ... . Other names go to FormatFloat.
#pragma once

#include <cstdint>
#include <string>

std::string FormatFloat(double value, const char* format);
std::string FormatLong(int64_t value, const char* format);
