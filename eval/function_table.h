// The function table: every built-in function of the equation language is one row. The
// lexer finds names in it (longest prefix), CallFunction checks the argument count and
// dispatches, and the function browser lists the rows that carry help.
//
// Adding functions. Rows live with their operators (ops/..._rows.cpp) as declarations: one
// declaration is a row with its place in the browser's order, followed by the hidden variant
// rows of a direction family (ops/op_rows.h writes them). Start-up registers all of them by
// one call (InstallFunctions in ops/function_rows.h); the table sorts by place, each row
// followed by its variants, and refuses a name or a place that is taken.
//
//   static const char* const kHelpFlip[] = {
//       "flip data",                                              // title
//       "\"xyzt\"", "direction of operation; choose multiple",   // argument pairs...
//       "data", "input data array", nullptr,                     // ...ending with null
//       "out = flip('x',data)", nullptr};                        // example lines, null
//
// A handler's shape: set err_func to the function's text with its direction ("cat('x')",
// "log10()"), make the result on `temp`, call the operator, catch what it raises. RunHandler
// does the catching; DirectionCall does the dispatch of a general function to its variants.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "core/data_space.h"
#include "core/directions.h"
#include "core/report.h"
#include "core/zrk_data.h"

// Makes the call's result on `temp` into *result. `args` are the call's arguments in order
// (all with samples), `nargs` their count within the row's limits. 0 on success, 1 after
// setting err_msg.
using FuncHandler = int (*)(CZrkData** result, CDataSpace& temp, CZrkData** args, int nargs);

// Which list of variants the browser offers for a general function.
enum FuncFamily : int64_t {
    FAMILY_PLAIN = 0,
    FAMILY_XYZT = 1,    // "general xyzt", "x direction" ... "t direction"
    FAMILY_XYZTRS = 2,  // the same plus "radial plane", "spherical volume"
    FAMILY_PAIRS = 3,   // "xy direction", "xz direction", ...
    FAMILY_DIMS = 4,    // "1d" ... "4d"
};

struct CFuncRow {
    char name[24];
    FuncHandler handler;
    int32_t min_args;
    int32_t max_args;
    int64_t family;
    // The help record, or null for a variant, which is hidden in the browser.
    const char* const* help;
};

// A variant row of a declaration: the name, or null for the declared name with the
// direction letter of its position; it takes one argument fewer than the declared row.
struct CFuncVariant {
    const char* name;
    FuncHandler handler;
};

// One declaration of the table.
struct CFuncDecl {
    const char* name;
    FuncHandler handler;
    int32_t min_args;
    int32_t max_args;
    int64_t family;
    const char* const* help;
    // The browser's order: rows sort by place.
    int place;
    std::vector<CFuncVariant> variants;
};

// Adds declarations to the table. Raises std::logic_error, naming it, for a name that is
// taken, a place that is taken or a name that does not fit a row.
void RegisterFunctions(const std::vector<CFuncDecl>& decls);

// The rows in table order. Stable for the life of the program once registration is done.
const std::vector<const CFuncRow*>& FunctionTable();
int FunctionCount();
// The row at `index`, null beyond the table.
const CFuncRow* FunctionRow(int index);
// Length of the longest function name that is a prefix of `text`, 0 when none; its index.
int FindFunction(const char* text, int* index);
// The index of the row named exactly `name`, -1 when there is none.
int FunctionIndex(const char* name);
// A help record taken apart.
struct CFuncHelp {
    const char* title = "";
    std::vector<std::pair<const char*, const char*>> arguments;
    std::vector<const char*> lines;
};
CFuncHelp ReadHelp(const char* const* help);

// The browser's variant list of a family, ending with null; null for a plain function.
const char* const* FamilyVariants(int64_t family);

// Runs a handler's body: err_func = `func_text` first; a raised text goes to err_msg and,
// when `caught` is not null, "error caught: <caught>:" to the history; anything else is
// "unknown error". Returns the body's status or 1.
template <class F>
int RunHandler(const std::string& func_text, const char* caught, F&& body) {
    if (!caught) return Reported({.func = func_text.c_str()}, 1, body);
    return Reported({.func = func_text.c_str(), .lines = {CaughtLine(caught)}}, 1, body);
}

// A general function: args[0] is the direction string, the rest go to the variants, one per
// direction in the order x ... v (null where a family has no variant). Choose multiple
// feeds each variant's result to the next as its first argument; choose one calls the
// first match only. A string without a direction raises `no_direction`.
int DirectionCall(const FuncHandler variants[6], bool choose_multiple, const char* no_direction,
                  CZrkData** result, CDataSpace& temp, CZrkData** args, int nargs);

// The result of a handler that hands back a new record on `temp`.
inline int Deliver(CZrkData** result, CZrkData* record) {
    *result = record;
    return 0;
}
