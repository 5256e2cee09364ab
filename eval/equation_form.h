// The logic of the equation form beyond the bar's: a record named by the form is seen as
// "this" for the one run, and with "update range" the records the run changed are asked to
// find their display range again. The evaluation itself is the bar's (EquationBarEval), on
// the same data space.
#pragma once

#include <string>

class CDataSpace;

struct CEquationFormOptions {
    bool update_range = false;
    // Empty, or the record that "this" stands for.
    std::string this_name;
};

// 0 on success, 1 on failure with the report in ErrorText().
int FormEquEval(CDataSpace& space, const std::string& text, const CEquationFormOptions& options);
