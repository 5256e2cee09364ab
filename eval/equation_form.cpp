#include "eval/equation_form.h"

#include "core/data_space.h"
#include "core/host.h"
#include "eval/equation_bar.h"

int FormEquEval(CDataSpace& space, const std::string& text, const CEquationFormOptions& options) {
    Host().Trace("FormEquEval");
    if (!options.this_name.empty()) {
        // An alias for this run only: the evaluator drops linked records when it ends.
        CZrkData* target = space.FindData(options.this_name.c_str());
        CZrkData* alias = target ? space.NewData("this") : nullptr;
        if (alias) alias->link = target;
    }
    return EquationBarEval(space, text, options.update_range != 0);
}
