// Rows of clip and thresh: the value range of a data set, component by component.
#include <vector>

#include "ops/function_rows.h"
#include "ops/op_rows.h"
#include "ops/structural_base.h"
#include "ops/threshold.h"

namespace {

int EvalClip(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return RunHandler("clip()", "eval_clip", [&] {
        return Deliver(result, Clip(temp, args[0], FloatArg(args[1]), FloatArg(args[2])));
    });
}

int EvalThresh(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return RunHandler("thresh()", "eval_thresh", [&] {
        return Deliver(result,
                       Thresh(temp, args[0], FloatArg(args[1]), FloatArg(args[2]), args[3]));
    });
}

const char* const kHelpClip[] = {"clip i and q data",
                                 "data",
                                 "input data array",
                                 "low",
                                 "lowest value kept",
                                 "high",
                                 "highest value kept",
                                 nullptr,
                                 "out = clip(data,0,255)",
                                 "i and q are each held to [low, high] on their own",
                                 "type and dimensions are kept; NaN stays NaN",
                                 "integer data use the whole numbers inside [low, high]",
                                 "low must not be above high",
                                 "SEE ALSO: thresh",
                                 nullptr};
const char* const kHelpThresh[] = {"threshhold i and q data",
                                   "data",
                                   "input data array",
                                   "low",
                                   "lowest value kept",
                                   "high",
                                   "highest value kept",
                                   "value",
                                   "value for i or q outside [low, high]",
                                   nullptr,
                                   "out = thresh(data,-3,3,0)",
                                   "i and q are each tested on their own",
                                   "value is cast to the type of data",
                                   "type and dimensions are kept; NaN stays NaN",
                                   "SEE ALSO: clip",
                                   nullptr};

}  // namespace

std::vector<CFuncDecl> ThresholdRows() {
    return {
        Handler("clip", EvalClip, {.args = 3, .help = kHelpClip, .place = 740}),
        Handler("thresh", EvalThresh, {.args = 4, .help = kHelpThresh, .place = 2480}),
    };
}
