#include "eval/equation_bar.h"

#include "core/data_space.h"
#include "core/host.h"
#include "core/math_errors.h"
#include "core/report.h"
#include "eval/eval.h"

int EquationBarEval(CDataSpace& space, const std::string& text, bool update_range) {
    CHost& host = Host();
    host.Status("calculating...");
    CZrkData* result = nullptr;
    int status;
    {
        CEvalLines ev(space);
        status = ev.Eval(&result, nullptr, text.c_str(), nullptr);
        if (status == 0 && result) result->changed = 1;
    }
    if (status) {
        host.Status(ErrorText());
        return 1;
    }
    MathErrorReport();
    host.History(text + "\r\n");
    host.Status("");
    // Marked before the refresh, whose walk over the displays consumes the flags.
    if (update_range)
        for (int i = 0; i < space.Count(); ++i)
            if (CZrkData* record = space.GetData(i); record && record->changed)
                record->update_range = 1;
    host.RefreshDisplays();
    return 0;
}
