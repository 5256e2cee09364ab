// The one call of the equation bar and the equation form into the equation language: the
// text is run as lines, against the global data space. On success the math error report is
// shown, the text and "\r\n" go to the history and the result is marked changed; on failure
// the report is handed back and nothing else happens.
#pragma once

#include <string>

class CZrkData;

struct CEquationOptions {
    // Ask the displays of the result to find their range again.
    bool update_range = false;
    // A record the equations see as "this" for the one run.
    std::string this_name;
};

struct CEquationOutcome {
    bool ok = false;
    // ErrorText() of a failure.
    std::string report;
    CZrkData* result = nullptr;
};

CEquationOutcome EvaluateEquation(const std::string& text, const CEquationOptions& options = {});
