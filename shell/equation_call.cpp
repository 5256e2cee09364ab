#include "shell/equation_call.h"

#include "core/data_space.h"
#include "core/host.h"
#include "core/zrk_data.h"
#include "eval/eval.h"
#include "eval/eval_error.h"
#include "eval/math_errors.h"

CEquationOutcome EvaluateEquation(const std::string& text, const CEquationOptions& options) {
    Host().Trace("EvaluateEquation");
    CDataSpace& space = GlobalDataSpace();
    if (!options.this_name.empty()) {
        // An alias for this run only: the evaluator drops linked records when it ends.
        CZrkData* target = space.FindData(options.this_name.c_str());
        CZrkData* alias = target ? space.NewData("this") : nullptr;
        if (alias) alias->link = target;
    }
    CEquationOutcome outcome;
    CEvalLines ev;
    if (ev.Eval(&outcome.result, nullptr, text.c_str(), nullptr)) {
        outcome.report = ErrorText();
        outcome.result = nullptr;
        return outcome;
    }
    outcome.ok = true;
    MathErrorReport();
    Host().History(text + "\r\n");
    if (outcome.result) {
        outcome.result->changed = 1;
        if (options.update_range) outcome.result->update_range = 1;
    }
    return outcome;
}
