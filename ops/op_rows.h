// Declarations of function-table rows, one per function or direction family. The name, the
// argument count, the help and the place in the browser stand once; a family's general row
// and its variant rows (the direction letter added to the name, one argument fewer) come out
// of the one declaration.
//
//   Plain<"conv", [](CDataSpace& t, CZrkData** a, int) { return Conv(t, a[0], a[1]); }>(
//       {.args = 2, .help = kHelpConv, .place = 760}),
//   Directions<"flip", kChooseMultiple,
//              [](CDataSpace& t, int d, CZrkData** a) { return Flip(t, d, a[0]); }>(
//       {.args = 2, .help = kHelpFlip, .place = 1250, .family = FAMILY_XYZT, .rows = 4}),
//
// A plain row's body is (temp, args, nargs), a family's (temp, direction, args); both return
// the operator's record, and what they raise is the call's report.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

#include "eval/function_table.h"
#include "ops/structural_base.h"

// A name as a template argument.
template <size_t N>
struct RowName {
    char text[N];
    constexpr RowName(const char (&s)[N]) {
        for (size_t k = 0; k < N; ++k) text[k] = s[k];
    }
};

// How a general function reads its direction string.
struct DirRule {
    bool multiple = false;      // choose multiple: each direction's result feeds the next
    int reach = 4;              // 4 reaches x ... t, 6 x ... v
    bool invalid_first = true;  // "invalid direction" for a string without one, else
                                // "direction invalid"
};
inline constexpr DirRule kChooseOne{};
inline constexpr DirRule kChooseMultiple{.multiple = true};

struct CRowSpec {
    int args;  // the declared row's count; variants take one fewer
    const char* const* help;
    int place;
    int64_t family = FAMILY_PLAIN;  // the browser's variant list
    int rows = 0;                   // variant rows, x on: 4 to t, 6 to v
    int max_args = 0;               // above args: a range of counts
    // Variant rows named otherwise than name and letter, by position.
    const char* names[6] = {};
};

// A row whose handler is written out.
inline CFuncDecl Handler(const char* name, FuncHandler handler, const CRowSpec& spec) {
    return {name,        handler,   spec.args,  std::max(spec.args, spec.max_args),
            spec.family, spec.help, spec.place, {}};
}

template <auto Body>
int PlainRow(CZrkData** result, CDataSpace& temp, CZrkData** args, int nargs) {
    return Reported({}, 1, [&] { return Deliver(result, Body(temp, args, nargs)); });
}

template <RowName Name, auto Body>
CFuncDecl Plain(const CRowSpec& spec) {
    return Handler(Name.text, PlainRow<Body>, spec);
}

template <RowName Name, DirRule Rule, auto Body>
struct CDirections {
    template <int D>
    static int Variant(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
        return Reported({}, 1, [&] { return Deliver(result, Body(temp, D, args)); });
    }
    static constexpr FuncHandler kVariants[6] = {Variant<0>,
                                                 Variant<1>,
                                                 Variant<2>,
                                                 Variant<3>,
                                                 Rule.reach > 4 ? Variant<4> : nullptr,
                                                 Rule.reach > 4 ? Variant<5> : nullptr};
    static int General(CZrkData** result, CDataSpace& temp, CZrkData** args, int nargs) {
        SetErrFunc((std::string(Name.text) + "()").c_str());
        return DirectionCall(kVariants, Rule.multiple,
                             Rule.invalid_first ? "invalid direction" : "direction invalid", result,
                             temp, args, nargs);
    }
};

template <RowName Name, DirRule Rule, auto Body>
CFuncDecl Directions(const CRowSpec& spec) {
    using F = CDirections<Name, Rule, Body>;
    CFuncDecl d = Handler(Name.text, F::General, spec);
    for (int k = 0; k < spec.rows; ++k) d.variants.push_back({spec.names[k], F::kVariants[k]});
    return d;
}
