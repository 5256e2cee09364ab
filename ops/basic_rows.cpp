// Rows of the operators (for the browser's help), element products, casts and tiling,
// allocation, tests and byte order, and printing.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "core/data_cursor.h"
#include "core/elementwise.h"
#include "core/host.h"
#include "core/zrk_error.h"
#include "eval/matrix_hook.h"
#include "ops/function_rows.h"
#include "ops/op_rows.h"

namespace {

uint64_t ScalarU64(const CZrkData* a) {
    uint64_t v = 0;
    CDataCursor<uint64_t>(a).GetI(v, 0);
    return v;
}

// A type argument: a string such as "complex r4" read by TypeFromText, or a type number.
int TypeArgument(const CZrkData* a) {
    if (a->Type() == TYPE_N1 && a->Count() > 1) {
        const std::string text(static_cast<const char*>(a->Data()), a->Count());
        return TypeFromText(text.c_str());
    }
    return static_cast<int>(ScalarU64(a));
}

int Binary(const char* text, int op, CZrkData** result, CDataSpace& temp, CZrkData** args) {
    return RunHandler(text, nullptr,
                      [&] { return Deliver(result, BinaryOperation(temp, op, args[0], args[1])); });
}

int EvalEqual(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return RunHandler("=", nullptr, [&] {
        return Deliver(result, ConvertRecord(temp, args[1], args[1]->Type()));
    });
}
int EvalMinus(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Binary("-", OP_SUB, r, t, a);
}
int EvalPlus(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Binary("+", OP_ADD, r, t, a);
}
int EvalStar(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Binary("*", OP_MUL, r, t, a);
}
int EvalDivide(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Binary("/", OP_DIV, r, t, a);
}
int EvalIqmul(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Binary("iqmul()", OP_IQMUL, r, t, a);
}
int EvalIqdiv(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Binary("iqdiv()", OP_IQDIV, r, t, a);
}

int Matrix(const char* text, bool divide, CZrkData** result, CDataSpace& temp, CZrkData** args) {
    return RunHandler(text, nullptr, [&] {
        const MatrixOperator op = InstalledMatrixOperator();
        if (!op) Raise("matrix operators not available");
        return Deliver(result, op(temp, args[0], args[1], 0, 1, divide));
    });
}
int EvalMatrixMul(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Matrix("CEval::EvalMatrixMul", false, r, t, a);
}
int EvalMatrixDiv(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Matrix("CEval::EvalMatrixDiv", true, r, t, a);
}

int EvalCast(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return RunHandler("cast()", nullptr, [&] {
        const int type = TypeArgument(args[0]);
        if (!IsValidType(type)) Raise("invalid data type");
        return Deliver(result, ConvertRecord(temp, args[1], type));
    });
}

// tilex ... tilev: data tiled to a new resolution along one direction.
CZrkData* TileAlong(CDataSpace& temp, int dir, CZrkData** args) {
    static const char* const kText[] = {"tile('x')", "tile('y')", "tile('z')",
                                        "tile('t')", "tile('u')", "tile('v')"};
    static const char* const kCaught[] = {"eval_tilex", "eval_tiley", "eval_tilez",
                                          "eval_tilet", "eval_tileu", "eval_tilev"};
    // the failure lines stand as the wrapper has always written them
    static const char* const kFailed[] = {"tile('x') failed\r\n", "tile('y') failed\r\n",
                                          "tile('z') failed\r\n", "stuff1d('v') failed\r\n",
                                          "tile('u') failed\r\n", "tile('v') failed\r\n"};
    return Reported({.func = kText[dir],
                     .lines = {CaughtLine(kCaught[dir]), kFailed[dir]},
                     .to = REPORT_RETHROW},
                    static_cast<CZrkData*>(nullptr), [&] {
                        const uint64_t n = ScalarU64(args[1]);
                        if (n < 1 || n > (uint64_t{1} << 40)) Raise("resolution must be positive");
                        res_t res[6];
                        args[0]->GetRes(res);
                        res[dir] = n;
                        return TileTo(temp, args[0], res);
                    });
}

int EvalMalloc(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return RunHandler("malloc()", "eval_malloc", [&] {
        const int type = TypeArgument(args[0]);
        if (!IsValidType(type)) Raise("invalid data type");
        res_t res[6] = {1, 1, 1, 1, 1, 1};
        for (int d = 0; d < 4; ++d) {
            res[d] = ScalarU64(args[d + 1]);
            if (res[d] < 1 || res[d] > (uint64_t{1} << 40)) Raise("resolution must be positive");
        }
        CZrkData* out = NewTemp(temp, type, res);
        // a new array starts as zeros here, so that what the user sees is reproducible
        std::memset(out->Data(), 0, out->Bytes());
        return Deliver(result, out);
    });
}

int EvalFree(CZrkData** result, CDataSpace&, CZrkData** args, int) {
    return RunHandler("free()", nullptr, [&] {
        CZrkData* a = args[0];
        a->FreeData();
        a->nx = a->ny = a->nz = a->nt = 0;
        a->changed = 1;
        return Deliver(result, a);
    });
}

int EvalFinite(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return RunHandler("finite()", nullptr, [&] {
        const int comps = args[0]->IsComplex() ? 2 : 1;
        return Deliver(result, MapFloat(temp, args[0], comps == 2 ? TYPE_CN1 : TYPE_N1, comps,
                                        comps, [comps](auto* y, const auto* x, size_t n) {
                                            for (size_t j = 0; j < n * comps; ++j)
                                                y[j] = std::isfinite(x[j]) ? 1 : 0;
                                        }));
    });
}

int EvalSwapb(CZrkData** result, CDataSpace& temp, CZrkData** args, int) {
    return RunHandler("swapb()", nullptr, [&] {
        CZrkData* out = ConvertRecord(temp, args[0], args[0]->Type());
        const int width = out->ComponentBytes();
        auto* p = static_cast<unsigned char*>(out->Data());
        const uint64_t n = out->Bytes();
        for (uint64_t k = 0; k + width <= n; k += width)
            for (int lo = 0, hi = width - 1; lo < hi; ++lo, --hi) std::swap(p[k + lo], p[k + hi]);
        return Deliver(result, out);
    });
}

// One conversion of a user's format: flags, width, precision and a letter of "diouxXeEfgG".
// Anything else would let the text read arguments that are not there.
int CheckFormat(const std::string& format, char* letter) {
    int conversions = 0;
    for (size_t k = 0; k < format.size(); ++k) {
        if (format[k] != '%') continue;
        if (k + 1 < format.size() && format[k + 1] == '%') {
            ++k;
            continue;
        }
        size_t j = k + 1;
        while (j < format.size() && std::strchr("-+ #0123456789.", format[j])) ++j;
        if (j >= format.size() || !std::strchr("diouxXeEfgG", format[j])) return -1;
        *letter = format[j];
        ++conversions;
        k = j;
    }
    return conversions;
}

std::string FormatOne(const std::string& format, char letter, double v) {
    char buf[512];
    if (std::strchr("diouxX", letter)) {
        std::string f = format;
        f.insert(f.find(letter, f.find('%')), "ll");
        std::snprintf(buf, sizeof buf, f.c_str(), static_cast<long long>(TruncToInt64(v)));
    } else {
        std::snprintf(buf, sizeof buf, format.c_str(), v);
    }
    return buf;
}

int EvalPrintf(CZrkData** result, CDataSpace&, CZrkData** args, int) {
    return RunHandler("printf()", "eval_printf", [&] {
        const CZrkData* f = args[0];
        const std::string format(static_cast<const char*>(f->Data()),
                                 strnlen(static_cast<const char*>(f->Data()), f->Bytes()));
        char letter = 'g';
        const int conversions = CheckFormat(format, &letter);
        if (conversions != 1 || format.size() > 200) Raise("invalid format");
        CZrkData* data = args[1];
        const int comps = data->IsComplex() ? 2 : 1;
        CBlockReader<double> reader(data, comps);
        std::vector<double> buf(kBlockElements * comps);
        for (uint64_t k = 0; k < data->Count(); k += kBlockElements) {
            const size_t n =
                static_cast<size_t>(std::min<uint64_t>(kBlockElements, data->Count() - k));
            const double* x = reader.Read(k, n, buf.data());
            for (size_t j = 0; j < n; ++j) {
                std::string line = FormatOne(format, letter, x[j * comps]);
                if (comps == 2)
                    line.append(" ").append(FormatOne(format, letter, x[j * comps + 1]));
                line.append("\r\n");
                Host().History(line);
            }
        }
        return Deliver(result, data);
    });
}

const char* const kHelpEqual[] = {"equal: copy type and dimensions as is",
                                  "a",
                                  "destination",
                                  "b",
                                  "source",
                                  nullptr,
                                  "a = b",
                                  nullptr};
const char* const kHelpMinus[] = {"complex subtraction",
                                  "a",
                                  "first operand",
                                  "b",
                                  "second operand",
                                  nullptr,
                                  "c = a - b",
                                  "the smaller operand is tiled to the larger",
                                  nullptr};
const char* const kHelpPlus[] = {"complex addition",
                                 "a",
                                 "first operand",
                                 "b",
                                 "second operand",
                                 nullptr,
                                 "c = a + b",
                                 "the smaller operand is tiled to the larger",
                                 nullptr};
const char* const kHelpStar[] = {"complex multiplication", "a",     "first operand", "b",
                                 "second operand",         nullptr, "c = a * b",     nullptr};
const char* const kHelpDivide[] = {"complex division", "a",     "numerator", "b",
                                   "denominator",      nullptr, "c = a / b", nullptr};
const char* const kHelpMatMul[] = {"complex matrix multiplication",
                                   "a",
                                   "left matrix",
                                   "b",
                                   "right matrix",
                                   nullptr,
                                   "c = a *xy b",
                                   "any two directions: *xz, *yt, ...",
                                   nullptr};
const char* const kHelpMatDiv[] = {"complex matrix division",
                                   "a",
                                   "left matrix",
                                   "b",
                                   "right matrix",
                                   nullptr,
                                   "c = a /xy b",
                                   "d1 must be a square matrix",
                                   "all other dimensions will be processed",
                                   nullptr};
const char* const kHelpIqdiv[] = {"element divide of data sets",
                                  "a",
                                  "numerator",
                                  "b",
                                  "denominator",
                                  nullptr,
                                  "c = iqdiv(a,b)",
                                  "i by i and q by q",
                                  nullptr};
const char* const kHelpIqmul[] = {"element multiply of data sets",
                                  "a",
                                  "first operand",
                                  "b",
                                  "second operand",
                                  nullptr,
                                  "c = iqmul(a,b)",
                                  "i times i and q times q",
                                  nullptr};
const char* const kHelpCast[] = {"cast data type",
                                 "\"type\"",
                                 "new data type, as \"complex r4\"",
                                 "data",
                                 "input data array",
                                 nullptr,
                                 "out = cast(\"r8\",data)",
                                 "same as out = (r8)data",
                                 nullptr};
const char* const kHelpTile[] = {"tile: resize data set",
                                 "\"xyzt\"",
                                 "direction of operation; choose multiple",
                                 "data",
                                 "input data array",
                                 "x",
                                 "new dimension",
                                 nullptr,
                                 "out = tile('t',data,t)",
                                 "array data will be tiled to new dimension [][][][t]",
                                 "SEE ALSO: pad, padsim",
                                 nullptr};
const char* const kHelpMalloc[] = {"allocate data",
                                   "\"type\"",
                                   "data type, as \"r4\"",
                                   "x",
                                   "x resolution",
                                   "y",
                                   "y resolution",
                                   "z",
                                   "z resolution",
                                   "t",
                                   "t resolution",
                                   nullptr,
                                   "d0 = malloc(\"r4\",256,256,1,1)",
                                   "the new array is all zeros",
                                   nullptr};
const char* const kHelpFree[] = {"free data array",
                                 "data",
                                 "data array to empty",
                                 nullptr,
                                 "free(d0)",
                                 "the record stays, without samples",
                                 nullptr};
const char* const kHelpFinite[] = {
    "test data for INF and NAN", "data", "input data array", nullptr, "out = finite(data)",
    "1 where finite, else 0",    nullptr};
const char* const kHelpSwapb[] = {"swap bytes",
                                  "data",
                                  "input data array",
                                  nullptr,
                                  "out = swapb(data)",
                                  "reverses the bytes of each component",
                                  nullptr};
const char* const kHelpPrintf[] = {"printout data",
                                   "\"format\"",
                                   "one number format, as \"%g\"",
                                   "data",
                                   "input data array",
                                   nullptr,
                                   "printf(\"%8.3f\",d0)",
                                   "one history line per element",
                                   nullptr};

}  // namespace

std::vector<CFuncDecl> BasicRows() {
    return {
        Handler("=", EvalEqual, {.args = 2, .help = kHelpEqual, .place = 10}),
        Handler("-", EvalMinus, {.args = 2, .help = kHelpMinus, .place = 20}),
        Handler("+", EvalPlus, {.args = 2, .help = kHelpPlus, .place = 30}),
        Handler("*", EvalStar, {.args = 2, .help = kHelpStar, .place = 40}),
        Handler("/", EvalDivide, {.args = 2, .help = kHelpDivide, .place = 50}),
        Handler("*xy", EvalMatrixMul, {.args = 2, .help = kHelpMatMul, .place = 60}),
        Handler("/xy", EvalMatrixDiv, {.args = 2, .help = kHelpMatDiv, .place = 70}),
        Handler("iqdiv", EvalIqdiv, {.args = 2, .help = kHelpIqdiv, .place = 80}),
        Handler("iqmul", EvalIqmul, {.args = 2, .help = kHelpIqmul, .place = 90}),
        Handler("cast", EvalCast, {.args = 2, .help = kHelpCast, .place = 100}),
        Directions<"tile", DirRule{.multiple = true, .reach = 6}, TileAlong>(
            {.args = 3, .help = kHelpTile, .place = 110, .rows = 6}),
        Handler("malloc", EvalMalloc, {.args = 5, .help = kHelpMalloc, .place = 210}),
        Handler("free", EvalFree, {.args = 1, .help = kHelpFree, .place = 220}),
        Handler("finite", EvalFinite, {.args = 1, .help = kHelpFinite, .place = 230}),
        Handler("swapb", EvalSwapb, {.args = 1, .help = kHelpSwapb, .place = 2470}),
        Handler("printf", EvalPrintf, {.args = 2, .help = kHelpPrintf, .place = 1840}),
    };
}
