#include "eval/equation_form.h"

#include "core/data_space.h"
#include "core/host.h"
#include "core/zrk_data.h"
#include "eval/equation_bar.h"

int FormEquEval(CDataSpace& space, const std::string& text, const CEquationFormOptions& options) {
    Host().Trace("FormEquEval");
    if (!options.this_name.empty()) {
        // An alias for this run only: the evaluator drops linked records when it ends.
        CZrkData* target = space.FindData(options.this_name.c_str());
        CZrkData* alias = target ? space.NewData("this") : nullptr;
        if (alias) alias->link = target;
    }
    const int status = EquationBarEval(space, text);
    if (status == 0 && options.update_range)
        for (int i = 0; i < space.Count(); ++i)
            if (CZrkData* record = space.GetData(i); record && record->changed)
                record->update_range = 1;
    return status;
}
