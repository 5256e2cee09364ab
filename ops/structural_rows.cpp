// The function table rows of the structural operators and their help records. A general
// function takes a direction string and calls its variant for the direction named; the
// variants are rows of their own with the direction in the name (catz(d0,d1) is
// cat("z",d0,d1)). The operators set err_func and log their own failure lines.
#include <string>
#include <vector>

#include "eval/function_table.h"
#include "ops/generators.h"
#include "ops/op_rows.h"
#include "ops/permute.h"
#include "ops/structural_base.h"
#include "ops/structural_fill.h"
#include "ops/structural_join.h"
#include "ops/structural_shape.h"
#include "ops/vector_product.h"

namespace {

struct OpCat {
    static constexpr const char* kGeneral = "cat()";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) { return Cat(t, d, a[0], a[1]); }
};
struct OpCatM {
    static constexpr const char* kGeneral = "catm()";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return CatM(t, d, a[0], a[1], GlobalDataSpace(), false);
    }
};
struct OpCatMd {
    static constexpr const char* kGeneral = "catmd()";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return CatM(t, d, a[0], a[1], GlobalDataSpace(), true);
    }
};
struct OpChop {
    static constexpr const char* kGeneral = "chop()";
    static constexpr bool kMultiple = true;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) { return Chop(t, d, a[0]); }
};
struct OpCross {
    static constexpr const char* kGeneral = "cross()";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return Cross(t, d, a[0], a[1]);
    }
};
struct OpCut {
    static constexpr const char* kGeneral = "cut()";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return Cut(t, d, a[0], IntArg(a[1]), IntArg(a[2]));
    }
};
struct OpDelta {
    static constexpr const char* kGeneral = "delta()";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return Delta(t, d, IntArg(a[0]), IntArg(a[1]));
    }
};
struct OpDot {
    static constexpr const char* kGeneral = "dot()";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) { return Dot(t, d, a[0], a[1]); }
};
struct OpFill {
    static constexpr const char* kGeneral = "fill()";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return Fill(t, d, a[0], IntArg(a[1]), IntArg(a[2]), a[3]);
    }
};
struct OpFlip {
    static constexpr const char* kGeneral = "flip()";
    static constexpr bool kMultiple = true;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) { return Flip(t, d, a[0]); }
};
struct OpLine {
    static constexpr const char* kGeneral = "line()";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return Line(t, d, FloatArg(a[0]), FloatArg(a[1]), IntArg(a[2]));
    }
};
struct OpPad {
    static constexpr const char* kGeneral = "pad()";
    static constexpr bool kMultiple = true;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return Pad(t, d, a[0], IntArg(a[1]));
    }
};
struct OpPadSim {
    static constexpr const char* kGeneral = "padsim()";
    static constexpr bool kMultiple = true;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return PadSim(t, d, a[0], IntArg(a[1]));
    }
};
struct OpRamp {
    static constexpr const char* kGeneral = "ramp()";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return Ramp(t, d, FloatArg(a[0]), FloatArg(a[1]), IntArg(a[2]));
    }
};
struct OpShift {
    static constexpr const char* kGeneral = "shift()";
    static constexpr bool kMultiple = true;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return Shift(t, d, a[0], a[1]);
    }
};
struct OpStep {
    static constexpr const char* kGeneral = "step()";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return Step(t, d, IntArg(a[0]), IntArg(a[1]));
    }
};
struct OpStrip {
    static constexpr const char* kGeneral = "strip()";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return Strip(t, d, a[0], IntArg(a[1]), IntArg(a[2]), a[3]);
    }
};
struct OpStuff1d {
    static constexpr const char* kGeneral = "stuff1d()";
    static constexpr bool kMultiple = false;
    static CZrkData* Run(CDataSpace& t, int d, CZrkData** a, int) {
        return Stuff1d(t, d, a[0], a[1], IntArg(a[2]));
    }
};

// fill and strip also take "r" (radial, in the plane) and "s" (spherical, in the volume).
template <class Op>
int GeneralRadial(CZrkData** result, CDataSpace& temp, CZrkData** args, int nargs,
                  FuncHandler radial, FuncHandler spherical) {
    if (DirectionOf(args[0]) < 0) {
        const std::string text = TextOf(args[0]);
        if (text.find('r') != std::string::npos) return radial(result, temp, args + 1, nargs - 1);
        if (text.find('s') != std::string::npos)
            return spherical(result, temp, args + 1, nargs - 1);
    }
    return Family<Op, 4>::General(result, temp, args, nargs);
}

int EvalFillR(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return FillR(t, a[0], FloatArg(a[1]), FloatArg(a[2]), a[3]); });
}
int EvalFillS(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return FillS(t, a[0], FloatArg(a[1]), FloatArg(a[2]), a[3]); });
}
int EvalStripR(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return StripR(t, a[0], FloatArg(a[1]), FloatArg(a[2]), a[3]); });
}
int EvalStripS(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return StripS(t, a[0], FloatArg(a[1]), FloatArg(a[2]), a[3]); });
}
int EvalFill(CZrkData** r, CDataSpace& t, CZrkData** a, int n) {
    return GeneralRadial<OpFill>(r, t, a, n, EvalFillR, EvalFillS);
}
int EvalStrip(CZrkData** r, CDataSpace& t, CZrkData** a, int n) {
    return GeneralRadial<OpStrip>(r, t, a, n, EvalStripR, EvalStripS);
}

int EvalCrop1d(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Crop1d(t, a[0]); });
}
int EvalCrop2d(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Crop2d(t, a[0]); });
}
int EvalFill1d(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Fill1d(t, a[0], a[1]); });
}
int EvalFill2d(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Fill2d(t, a[0], a[1]); });
}
int EvalStrip1d(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Strip1d(t, a[0], a[1]); });
}
int EvalStrip2d(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Strip2d(t, a[0], a[1]); });
}
int EvalFillInf(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return FillInf(t, a[0], a[1]); });
}
int EvalEFlip(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return EFlip(t, a[0], IntArg(a[1])); });
}
int EvalESort(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return ESort(t, a[0], IntArg(a[1])); });
}
int EvalEye(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Eye(t, a[0], IntArg(a[1])); });
}
int EvalNoise(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Noise(t, a[0], FloatArg(a[1]), a[2]); });
}
int EvalRand(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Rand(t, a[0]); });
}
int EvalSRand(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return SRand(t, IntArg(a[0]), a[1]); });
}
int EvalPermute(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Permute(t, a[0], a[1]); });
}
int EvalTrans(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Trans(t, a[0], a[1]); });
}
int EvalRotXy(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return RotXy(t, a[0]); });
}
int EvalRotMXy(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return RotMXy(t, a[0]); });
}
int EvalPoints2d(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Points2d(t, a[0]); });
}
int EvalSet1dRoi(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Set1dRoi(t, a[0]); });
}
int EvalSet2dRoi(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Set2dRoi(t, a[0], a[1]); });
}
int EvalShape(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Shape(t, a[0], a[1]); });
}
int EvalSelect(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Select(t, a[0], a[1]); });
}
int EvalSqueeze(CZrkData** r, CDataSpace& t, CZrkData** a, int) {
    return Row(r, [&] { return Squeeze(t, a[0]); });
}

int EvalReshape(CZrkData** r, CDataSpace& t, CZrkData** a, int n) {
    return Row(r, [&] {
        int64_t res[6] = {1, 1, 1, 1, 1, 1};
        for (int k = 1; k < n; ++k) res[k - 1] = IntArg(a[k]);
        return Reshape(t, a[0], res);
    });
}

std::vector<const CZrkData*> Indices(CZrkData** a, int n) { return {a + 3, a + n}; }
int EvalGather(CZrkData** r, CDataSpace& t, CZrkData** a, int n) {
    return Row(r, [&] { return Gather(t, a[0], a[1], a[2], Indices(a, n)); });
}
int EvalScatter(CZrkData** r, CDataSpace& t, CZrkData** a, int n) {
    return Row(r, [&] { return Scatter(t, a[0], a[1], a[2], Indices(a, n)); });
}

// Help records: title, argument pairs, null, example lines, null.
const char* const kHelpCat[] = {"concatenate data",
                                "\"xyzt\"",
                                "direction of operation; choose one",
                                "d0",
                                "first data array",
                                "d1",
                                "second data array",
                                nullptr,
                                "c0 = cat('z',d0,d1)",
                                "all other dimensions must match",
                                nullptr};
const char* const kHelpCatm[] = {"concatenate multiple data",
                                 "\"xyzt\"",
                                 "direction of operation; choose one",
                                 "first",
                                 "first name, lexically",
                                 "last",
                                 "last name, lexically",
                                 nullptr,
                                 "c0 = catm('t',a00,a99)",
                                 "joins every array named from first to last",
                                 nullptr};
const char* const kHelpCatmd[] = {"concatenate multiple data",
                                  "\"xyzt\"",
                                  "direction of operation; choose one",
                                  "first",
                                  "first name, lexically",
                                  "last",
                                  "last name, lexically",
                                  nullptr,
                                  "c0 = catmd('t',a00,a99)",
                                  "as catm, then deletes the arrays joined",
                                  nullptr};
const char* const kHelpChop[] = {"chop data",
                                 "\"xyzt\"",
                                 "direction of operation; choose multiple",
                                 "data",
                                 "input data array",
                                 nullptr,
                                 "out = chop('x',data)",
                                 "odd indices negated: moves the origin of a transform",
                                 nullptr};
const char* const kHelpCross[] = {"cross/vector product",
                                  "\"xyzt\"",
                                  "direction of operation; choose one",
                                  "d0",
                                  "vectors of 3",
                                  "d1",
                                  "vectors of 3",
                                  nullptr,
                                  "c0 = cross('t',d0,d1)",
                                  "arrays b and c must dimension=3 along cross direction",
                                  nullptr};
const char* const kHelpCut[] = {"cut data along x",
                                "\"xyzt\"",
                                "direction of operation; choose one",
                                "data",
                                "input data array",
                                "i",
                                "first index",
                                "j",
                                "last index",
                                nullptr,
                                "out = cut('x',data,10,20)",
                                "NOTE index starts at 0",
                                nullptr};
const char* const kHelpCrop1d[] = {"cut out data using current 1d roi",
                                   "data",
                                   "input data array",
                                   nullptr,
                                   "out = crop1d(data)",
                                   nullptr};
const char* const kHelpCrop2d[] = {"cut out data using current 2d roi",
                                   "data",
                                   "input data array",
                                   nullptr,
                                   "out = crop2d(data)",
                                   nullptr};
const char* const kHelpDelta[] = {"unit delta function",
                                  "\"xyzt\"",
                                  "direction of operation; choose one",
                                  "i",
                                  "index of the one",
                                  "n",
                                  "number of points",
                                  nullptr,
                                  "out = delta('x',5,64)",
                                  "NOTE index starts at 0",
                                  nullptr};
const char* const kHelpDot[] = {"dot/scalar product",
                                "\"xyzt\"",
                                "direction of operation; choose one",
                                "d0",
                                "first data array",
                                "d1",
                                "second data array",
                                nullptr,
                                "c0 = dot('x',d0,d1)",
                                "arrays b and c must have the same dimensions along dot direction",
                                nullptr};
const char* const kHelpEFlip[] = {"epi frequency flip",
                                  "data",
                                  "input data array",
                                  "etl",
                                  "echo train length",
                                  nullptr,
                                  "out = eflip(data,8)",
                                  "assumes standard interleaving",
                                  nullptr};
const char* const kHelpESort[] = {"epi phase sort",
                                  "data",
                                  "input data array",
                                  "etl",
                                  "echo train length",
                                  nullptr,
                                  "out = esort(data,8)",
                                  "sorts time-ordered phase encoding steps, without flip",
                                  nullptr};
const char* const kHelpEye[] = {
    "identity matrix",   "\"xy\"", "two directions", "n", "size", nullptr,
    "out = eye('xy',4)", nullptr};
const char* const kHelpFill[] = {"fill data",
                                 "\"xyztrs\"",
                                 "direction of operation; choose one",
                                 "data",
                                 "input data array",
                                 "i",
                                 "first index",
                                 "j",
                                 "last index",
                                 "value",
                                 "fill value",
                                 nullptr,
                                 "out = fill('y',data,0,9,0)",
                                 "r and s measure radius in pixels from the centre",
                                 nullptr};
const char* const kHelpFill1d[] = {
    "fill data using current 1d roi", "data", "input data array", "value", "fill value", nullptr,
    "out = fill1d(data,0)",           nullptr};
const char* const kHelpFill2d[] = {"fill data inside current 2d roi",
                                   "data",
                                   "input data array",
                                   "value",
                                   "fill value",
                                   nullptr,
                                   "out = fill2d(data,0)",
                                   nullptr};
const char* const kHelpFillInf[] = {"fillinf",
                                    "data",
                                    "input data array",
                                    "value",
                                    "replaces inf and nan",
                                    nullptr,
                                    "out = fillinf(data,0)",
                                    "i and q are tested apart",
                                    nullptr};
const char* const kHelpFlip[] = {"flip data",
                                 "\"xyzt\"",
                                 "direction of operation; choose multiple",
                                 "data",
                                 "input data array",
                                 nullptr,
                                 "out = flip('x',data)",
                                 nullptr};
const char* const kHelpLine[] = {"generate line along y",
                                 "\"xyzt\"",
                                 "direction of operation; choose one",
                                 "slope",
                                 "slope",
                                 "intercept",
                                 "value at index 0",
                                 "n",
                                 "number of points",
                                 nullptr,
                                 "out = line('y',0.5,1,64)",
                                 nullptr};
const char* const kHelpNoise[] = {"fill array with noise",
                                  "\"gauss\"",
                                  "distribution: gauss or normal, else uniform",
                                  "sd",
                                  "standard deviation",
                                  "list",
                                  "resolutions",
                                  nullptr,
                                  "n0 = noise(\"gauss\",1,{256,256})",
                                  "two calls give the same noise",
                                  nullptr};
const char* const kHelpPad[] = {"zero pad data array",
                                "\"xyzt\"",
                                "direction of operation; choose multiple",
                                "data",
                                "input data array",
                                "n",
                                "new dimension",
                                nullptr,
                                "out = pad('x',data,256)",
                                "high indexes are zero filled",
                                "SEE ALSO: padsim, tile",
                                nullptr};
const char* const kHelpPadSim[] = {"symmetrically zero pad data array",
                                   "\"xyzt\"",
                                   "direction of operation; choose multiple",
                                   "data",
                                   "input data array",
                                   "n",
                                   "new dimension",
                                   nullptr,
                                   "out = padsim('x',data,256)",
                                   "SEE ALSO: pad, tile",
                                   nullptr};
const char* const kHelpPermute[] = {"transpose in multiple directions; choose 2 to 6",
                                    "\"xyztuv\"",
                                    "new order of the directions",
                                    "data",
                                    "input data array",
                                    nullptr,
                                    "out = permute(\"tzyx\",data)",
                                    nullptr};
const char* const kHelpPoints2d[] = {"grab points out of data using current 2d roi",
                                     "data",
                                     "input data array",
                                     nullptr,
                                     "out = points2d(data)",
                                     "result [n][1][z][t]",
                                     nullptr};
const char* const kHelpRamp[] = {"generate 1d ramp",
                                 "\"xyztuv\"",
                                 "direction of operation; choose one",
                                 "a",
                                 "first value",
                                 "b",
                                 "last value",
                                 "n",
                                 "number of points",
                                 nullptr,
                                 "out = ramp('x',0,1,64)",
                                 nullptr};
const char* const kHelpRand[] = {"randomize a complex matrix", "list", "resolutions", nullptr,
                                 "r0 = rand({256,256})",       nullptr};
const char* const kHelpReshape[] = {"reshape matrix",
                                    "data",
                                    "input data array",
                                    "x",
                                    "new x",
                                    "y",
                                    "new y",
                                    "z",
                                    "new z",
                                    "t",
                                    "new t",
                                    nullptr,
                                    "out = reshape(data,64,64,4,4)",
                                    "the tail is dropped when fewer points are asked for",
                                    nullptr};
const char* const kHelpRotXy[] = {
    "rotate data +90 in xy plane", "data", "input data array", nullptr,
    "out = rotxy(data)",           nullptr};
const char* const kHelpRotMXy[] = {"rotate data minus 90 in xy plane",
                                   "data",
                                   "input data array",
                                   nullptr,
                                   "out = rotmxy(data)",
                                   nullptr};
const char* const kHelpGather[] = {"gather data",
                                   "\"xyzt\"",
                                   "directions of the index arrays",
                                   "data",
                                   "input data array",
                                   "init",
                                   "output shape and values",
                                   "ix",
                                   "index arrays, one per direction",
                                   nullptr,
                                   "out = gather('x',data,init,ix)",
                                   nullptr};
const char* const kHelpScatter[] = {"scatter data",
                                    "\"xyzt\"",
                                    "directions of the index arrays",
                                    "data",
                                    "input data array",
                                    "init",
                                    "output shape and values",
                                    "ix",
                                    "index arrays, one per direction",
                                    nullptr,
                                    "out = scatter('x',data,init,ix)",
                                    nullptr};
const char* const kHelpSet1dRoi[] = {"set 1d roi x range", "data", "low and high", nullptr,
                                     "set1droi({10,20})",  nullptr};
const char* const kHelpSet2dRoi[] = {"set roi to free hand draw with points from d0",
                                     "\"type\"",
                                     "x, y, rect, ellip or draw",
                                     "d0",
                                     "points (x, y), one per line",
                                     nullptr,
                                     "set2droi(\"rect\",{{10,10},{20,30}})",
                                     nullptr};
const char* const kHelpShape[] = {"shape matrix",
                                  "data",
                                  "input data array",
                                  "list",
                                  "new resolutions",
                                  nullptr,
                                  "out = shape(data,{64,64,16})",
                                  nullptr};
const char* const kHelpShift[] = {"shift data",
                                  "\"xyzt\"",
                                  "direction of operation; choose multiple",
                                  "data",
                                  "input data array",
                                  "n",
                                  "shift, or an array of shifts per line",
                                  nullptr,
                                  "out = shift('x',data,10)",
                                  "circular",
                                  nullptr};
const char* const kHelpSelect[] = {"select data based on mask",
                                   "mask",
                                   "mask of the plane",
                                   "data",
                                   "input data array",
                                   nullptr,
                                   "s0 = select(mask,d0)",
                                   "s0[][1][12] = select(mask[256][256], d0[256][256][12])",
                                   nullptr};
const char* const kHelpSqueeze[] = {"remove dimensions of 1", "data", "input data array", nullptr,
                                    "out = squeeze(data)",    nullptr};
const char* const kHelpSRand[] = {"randomize a complex matrix",
                                  "seed",
                                  "seed of the generator",
                                  "list",
                                  "resolutions",
                                  nullptr,
                                  "s0=srand(10023,{256,256,2,2})",
                                  nullptr};
const char* const kHelpStep[] = {"unit step function",
                                 "\"xyzt\"",
                                 "direction of operation; choose one",
                                 "i",
                                 "first index of one",
                                 "n",
                                 "number of points",
                                 nullptr,
                                 "out = step('x',32,64)",
                                 nullptr};
const char* const kHelpStrip[] = {"save data in the strip, fill the rest",
                                  "\"xyztrs\"",
                                  "direction of operation; choose one",
                                  "data",
                                  "input data array",
                                  "i",
                                  "first index",
                                  "j",
                                  "last index",
                                  "value",
                                  "fill value",
                                  nullptr,
                                  "out = strip('x',data,10,20,0)",
                                  nullptr};
const char* const kHelpStrip1d[] = {"save data inside 1d roi fill the rest",
                                    "data",
                                    "input data array",
                                    "value",
                                    "fill value",
                                    nullptr,
                                    "out = strip1d(data,0)",
                                    nullptr};
const char* const kHelpStrip2d[] = {"save data inside 2d roi fill the rest",
                                    "data",
                                    "input data array",
                                    "value",
                                    "fill value",
                                    nullptr,
                                    "out = strip2d(data,0)",
                                    nullptr};
const char* const kHelpStuff1d[] = {"stuff one data set into another one direction",
                                    "\"xyztuv\"",
                                    "direction of operation; choose one",
                                    "d0",
                                    "data array",
                                    "d1",
                                    "data to write",
                                    "i",
                                    "first index",
                                    nullptr,
                                    "out = stuff1d('x',d0,d1,10)",
                                    nullptr};
const char* const kHelpTrans[] = {
    "transpose data",   "\"xy\"", "the two directions exchanged", "data",
    "input data array", nullptr,  "out = trans(\"yt\",data)",     nullptr};

const CFuncRow kRows[] = {
    {"cat", Family<OpCat, 4>::General, 3, 3, FAMILY_XYZT, kHelpCat},
    {"catx", V<OpCat>(0), 2, 2, FAMILY_PLAIN, nullptr},
    {"caty", V<OpCat>(1), 2, 2, FAMILY_PLAIN, nullptr},
    {"catz", V<OpCat>(2), 2, 2, FAMILY_PLAIN, nullptr},
    {"catt", V<OpCat>(3), 2, 2, FAMILY_PLAIN, nullptr},
    {"catm", Family<OpCatM, 4>::General, 3, 3, FAMILY_XYZT, kHelpCatm},
    {"catmx", V<OpCatM>(0), 2, 2, FAMILY_PLAIN, nullptr},
    {"catmy", V<OpCatM>(1), 2, 2, FAMILY_PLAIN, nullptr},
    {"catmz", V<OpCatM>(2), 2, 2, FAMILY_PLAIN, nullptr},
    {"catmt", V<OpCatM>(3), 2, 2, FAMILY_PLAIN, nullptr},
    {"catmd", Family<OpCatMd, 4>::General, 3, 3, FAMILY_XYZT, kHelpCatmd},
    {"catmdx", V<OpCatMd>(0), 2, 2, FAMILY_PLAIN, nullptr},
    {"catmdy", V<OpCatMd>(1), 2, 2, FAMILY_PLAIN, nullptr},
    {"catmdz", V<OpCatMd>(2), 2, 2, FAMILY_PLAIN, nullptr},
    {"catmdt", V<OpCatMd>(3), 2, 2, FAMILY_PLAIN, nullptr},
    {"chop", Family<OpChop, 4>::General, 2, 2, FAMILY_XYZT, kHelpChop},
    {"chopx", V<OpChop>(0), 1, 1, FAMILY_PLAIN, nullptr},
    {"chopy", V<OpChop>(1), 1, 1, FAMILY_PLAIN, nullptr},
    {"chopz", V<OpChop>(2), 1, 1, FAMILY_PLAIN, nullptr},
    {"chopt", V<OpChop>(3), 1, 1, FAMILY_PLAIN, nullptr},
    {"cross", Family<OpCross, 4>::General, 3, 3, FAMILY_XYZT, kHelpCross},
    {"crossx", V<OpCross>(0), 2, 2, FAMILY_PLAIN, nullptr},
    {"crossy", V<OpCross>(1), 2, 2, FAMILY_PLAIN, nullptr},
    {"crossz", V<OpCross>(2), 2, 2, FAMILY_PLAIN, nullptr},
    {"crosst", V<OpCross>(3), 2, 2, FAMILY_PLAIN, nullptr},
    {"cut", Family<OpCut, 4>::General, 4, 4, FAMILY_XYZT, kHelpCut},
    {"cutx", V<OpCut>(0), 3, 3, FAMILY_PLAIN, nullptr},
    {"cuty", V<OpCut>(1), 3, 3, FAMILY_PLAIN, nullptr},
    {"cutz", V<OpCut>(2), 3, 3, FAMILY_PLAIN, nullptr},
    {"cutt", V<OpCut>(3), 3, 3, FAMILY_PLAIN, nullptr},
    {"crop1d", EvalCrop1d, 1, 1, FAMILY_PLAIN, kHelpCrop1d},
    {"crop2d", EvalCrop2d, 1, 1, FAMILY_PLAIN, kHelpCrop2d},
    {"delta", Family<OpDelta, 4>::General, 3, 3, FAMILY_XYZT, kHelpDelta},
    {"deltax", V<OpDelta>(0), 2, 2, FAMILY_PLAIN, nullptr},
    {"deltay", V<OpDelta>(1), 2, 2, FAMILY_PLAIN, nullptr},
    {"deltaz", V<OpDelta>(2), 2, 2, FAMILY_PLAIN, nullptr},
    {"deltat", V<OpDelta>(3), 2, 2, FAMILY_PLAIN, nullptr},
    {"dot", Family<OpDot, 4>::General, 3, 3, FAMILY_XYZT, kHelpDot},
    {"dotx", V<OpDot>(0), 2, 2, FAMILY_PLAIN, nullptr},
    {"doty", V<OpDot>(1), 2, 2, FAMILY_PLAIN, nullptr},
    {"dotz", V<OpDot>(2), 2, 2, FAMILY_PLAIN, nullptr},
    {"dott", V<OpDot>(3), 2, 2, FAMILY_PLAIN, nullptr},
    {"eflip", EvalEFlip, 2, 2, FAMILY_PLAIN, kHelpEFlip},
    {"esort", EvalESort, 2, 2, FAMILY_PLAIN, kHelpESort},
    {"eye", EvalEye, 2, 2, FAMILY_PLAIN, kHelpEye},
    {"fill", EvalFill, 5, 5, FAMILY_XYZTRS, kHelpFill},
    {"fillx", V<OpFill>(0), 4, 4, FAMILY_PLAIN, nullptr},
    {"filly", V<OpFill>(1), 4, 4, FAMILY_PLAIN, nullptr},
    {"fillz", V<OpFill>(2), 4, 4, FAMILY_PLAIN, nullptr},
    {"fillt", V<OpFill>(3), 4, 4, FAMILY_PLAIN, nullptr},
    {"fillr", EvalFillR, 4, 4, FAMILY_PLAIN, nullptr},
    {"fills", EvalFillS, 4, 4, FAMILY_PLAIN, nullptr},
    {"fill1d", EvalFill1d, 2, 2, FAMILY_PLAIN, kHelpFill1d},
    {"fill2d", EvalFill2d, 2, 2, FAMILY_PLAIN, kHelpFill2d},
    {"fillinf", EvalFillInf, 2, 2, FAMILY_PLAIN, kHelpFillInf},
    {"flip", Family<OpFlip, 4>::General, 2, 2, FAMILY_XYZT, kHelpFlip},
    {"flipx", V<OpFlip>(0), 1, 1, FAMILY_PLAIN, nullptr},
    {"flipy", V<OpFlip>(1), 1, 1, FAMILY_PLAIN, nullptr},
    {"flipz", V<OpFlip>(2), 1, 1, FAMILY_PLAIN, nullptr},
    {"flipt", V<OpFlip>(3), 1, 1, FAMILY_PLAIN, nullptr},
    {"line", Family<OpLine, 4>::General, 4, 4, FAMILY_XYZT, kHelpLine},
    {"linex", V<OpLine>(0), 3, 3, FAMILY_PLAIN, nullptr},
    {"liney", V<OpLine>(1), 3, 3, FAMILY_PLAIN, nullptr},
    {"linez", V<OpLine>(2), 3, 3, FAMILY_PLAIN, nullptr},
    {"linet", V<OpLine>(3), 3, 3, FAMILY_PLAIN, nullptr},
    {"noise", EvalNoise, 3, 3, FAMILY_PLAIN, kHelpNoise},
    {"pad", Family<OpPad, 4>::General, 3, 3, FAMILY_XYZT, kHelpPad},
    {"padx", V<OpPad>(0), 2, 2, FAMILY_PLAIN, nullptr},
    {"pady", V<OpPad>(1), 2, 2, FAMILY_PLAIN, nullptr},
    {"padz", V<OpPad>(2), 2, 2, FAMILY_PLAIN, nullptr},
    {"padt", V<OpPad>(3), 2, 2, FAMILY_PLAIN, nullptr},
    {"padsim", Family<OpPadSim, 4>::General, 3, 3, FAMILY_XYZT, kHelpPadSim},
    {"padsimx", V<OpPadSim>(0), 2, 2, FAMILY_PLAIN, nullptr},
    {"padsimy", V<OpPadSim>(1), 2, 2, FAMILY_PLAIN, nullptr},
    {"padsimz", V<OpPadSim>(2), 2, 2, FAMILY_PLAIN, nullptr},
    {"padsimt", V<OpPadSim>(3), 2, 2, FAMILY_PLAIN, nullptr},
    {"permute", EvalPermute, 2, 2, FAMILY_PLAIN, kHelpPermute},
    {"points2d", EvalPoints2d, 1, 1, FAMILY_PLAIN, kHelpPoints2d},
    {"ramp", Family<OpRamp, 6>::General, 4, 4, FAMILY_XYZT, kHelpRamp},
    {"rampx", V<OpRamp>(0), 3, 3, FAMILY_PLAIN, nullptr},
    {"rampy", V<OpRamp>(1), 3, 3, FAMILY_PLAIN, nullptr},
    {"rampz", V<OpRamp>(2), 3, 3, FAMILY_PLAIN, nullptr},
    {"rampt", V<OpRamp>(3), 3, 3, FAMILY_PLAIN, nullptr},
    {"rampu", V<OpRamp>(4), 3, 3, FAMILY_PLAIN, nullptr},
    {"rampv", V<OpRamp>(5), 3, 3, FAMILY_PLAIN, nullptr},
    {"rand", EvalRand, 1, 1, FAMILY_PLAIN, kHelpRand},
    {"reshape", EvalReshape, 2, 7, FAMILY_DIMS, kHelpReshape},
    {"rotxy", EvalRotXy, 1, 1, FAMILY_PLAIN, kHelpRotXy},
    {"rotmxy", EvalRotMXy, 1, 1, FAMILY_PLAIN, kHelpRotMXy},
    {"gather", EvalGather, 3, 9, FAMILY_PLAIN, kHelpGather},
    {"scatter", EvalScatter, 3, 9, FAMILY_PLAIN, kHelpScatter},
    {"set1droi", EvalSet1dRoi, 1, 1, FAMILY_PLAIN, kHelpSet1dRoi},
    {"set2droi", EvalSet2dRoi, 2, 2, FAMILY_PLAIN, kHelpSet2dRoi},
    {"shape", EvalShape, 2, 2, FAMILY_PLAIN, kHelpShape},
    {"shift", Family<OpShift, 4>::General, 3, 3, FAMILY_XYZT, kHelpShift},
    {"shiftx", V<OpShift>(0), 2, 2, FAMILY_PLAIN, nullptr},
    {"shifty", V<OpShift>(1), 2, 2, FAMILY_PLAIN, nullptr},
    {"shiftz", V<OpShift>(2), 2, 2, FAMILY_PLAIN, nullptr},
    {"shiftt", V<OpShift>(3), 2, 2, FAMILY_PLAIN, nullptr},
    {"select", EvalSelect, 2, 2, FAMILY_PLAIN, kHelpSelect},
    {"squeeze", EvalSqueeze, 1, 1, FAMILY_PLAIN, kHelpSqueeze},
    {"srand", EvalSRand, 2, 2, FAMILY_PLAIN, kHelpSRand},
    {"step", Family<OpStep, 4>::General, 3, 3, FAMILY_XYZT, kHelpStep},
    {"stepx", V<OpStep>(0), 2, 2, FAMILY_PLAIN, nullptr},
    {"stepy", V<OpStep>(1), 2, 2, FAMILY_PLAIN, nullptr},
    {"stepz", V<OpStep>(2), 2, 2, FAMILY_PLAIN, nullptr},
    {"stept", V<OpStep>(3), 2, 2, FAMILY_PLAIN, nullptr},
    {"strip", EvalStrip, 5, 5, FAMILY_XYZTRS, kHelpStrip},
    {"stripx", V<OpStrip>(0), 4, 4, FAMILY_PLAIN, nullptr},
    {"stripy", V<OpStrip>(1), 4, 4, FAMILY_PLAIN, nullptr},
    {"stripz", V<OpStrip>(2), 4, 4, FAMILY_PLAIN, nullptr},
    {"stript", V<OpStrip>(3), 4, 4, FAMILY_PLAIN, nullptr},
    {"stripr", EvalStripR, 4, 4, FAMILY_PLAIN, nullptr},
    {"strips", EvalStripS, 4, 4, FAMILY_PLAIN, nullptr},
    {"strip1d", EvalStrip1d, 2, 2, FAMILY_PLAIN, kHelpStrip1d},
    {"strip2d", EvalStrip2d, 2, 2, FAMILY_PLAIN, kHelpStrip2d},
    {"stuff1d", Family<OpStuff1d, 6>::General, 4, 4, FAMILY_XYZT, kHelpStuff1d},
    {"stuff1dx", V<OpStuff1d>(0), 3, 3, FAMILY_PLAIN, nullptr},
    {"stuff1dy", V<OpStuff1d>(1), 3, 3, FAMILY_PLAIN, nullptr},
    {"stuff1dz", V<OpStuff1d>(2), 3, 3, FAMILY_PLAIN, nullptr},
    {"stuff1dt", V<OpStuff1d>(3), 3, 3, FAMILY_PLAIN, nullptr},
    {"stuff1du", V<OpStuff1d>(4), 3, 3, FAMILY_PLAIN, nullptr},
    {"stuff1dv", V<OpStuff1d>(5), 3, 3, FAMILY_PLAIN, nullptr},
    {"trans", EvalTrans, 2, 2, FAMILY_PAIRS, kHelpTrans},
};

const CFunctionRows kRegister(kRows);

}  // namespace
