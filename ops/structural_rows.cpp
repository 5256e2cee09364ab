// The function table rows of the structural operators and their help records. A general
// function takes a direction string and calls its variant for the direction named; the
// variants are rows of their own with the direction in the name (catz(d0,d1) is
// cat("z",d0,d1)). The operators set err_func and log their own failure lines.
#include <string>
#include <vector>

#include "eval/function_table.h"
#include "ops/function_rows.h"
#include "ops/generators.h"
#include "ops/op_rows.h"
#include "ops/permute.h"
#include "ops/structural_base.h"
#include "ops/structural_fill.h"
#include "ops/structural_join.h"
#include "ops/structural_shape.h"
#include "ops/vector_product.h"

namespace {

// fill and strip also take "r" (radial, in the plane) and "s" (spherical, in the volume), as
// two more variant rows that the general row reaches when its string names no direction.
template <class General, FuncHandler Radial, FuncHandler Spherical>
int GeneralRadial(CZrkData** result, CDataSpace& temp, CZrkData** args, int nargs) {
    if (DirectionOf(args[0]) < 0) {
        const std::string text = TextOf(args[0]);
        if (text.find('r') != std::string::npos) return Radial(result, temp, args + 1, nargs - 1);
        if (text.find('s') != std::string::npos)
            return Spherical(result, temp, args + 1, nargs - 1);
    }
    return General::General(result, temp, args, nargs);
}

template <RowName Name, auto Body, auto RadialBody, auto SphericalBody>
CFuncDecl RadialDirections(const CRowSpec& spec) {
    CFuncDecl d = Directions<Name, kChooseOne, Body>(spec);
    d.handler = GeneralRadial<CDirections<Name, kChooseOne, Body>, PlainRow<RadialBody>,
                              PlainRow<SphericalBody>>;
    d.variants.push_back({spec.names[4], PlainRow<RadialBody>});
    d.variants.push_back({spec.names[5], PlainRow<SphericalBody>});
    return d;
}

std::vector<const CZrkData*> Indices(CZrkData** a, int n) { return {a + 3, a + n}; }

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

}  // namespace

std::vector<CFuncDecl> StructuralRows() {
    return {
        Directions<"cat", kChooseOne,
                   [](CDataSpace& t, int d, CZrkData** a) { return Cat(t, d, a[0], a[1]); }>(
            {.args = 3, .help = kHelpCat, .place = 470, .family = FAMILY_XYZT, .rows = 4}),
        Directions<"catm", kChooseOne,
                   [](CDataSpace& t, int d, CZrkData** a) {
                       return CatM(t, d, a[0], a[1], GlobalDataSpace(), false);
                   }>(
            {.args = 3, .help = kHelpCatm, .place = 520, .family = FAMILY_XYZT, .rows = 4}),
        Directions<"catmd", kChooseOne,
                   [](CDataSpace& t, int d, CZrkData** a) {
                       return CatM(t, d, a[0], a[1], GlobalDataSpace(), true);
                   }>(
            {.args = 3, .help = kHelpCatmd, .place = 570, .family = FAMILY_XYZT, .rows = 4}),
        Directions<"chop", kChooseMultiple,
                   [](CDataSpace& t, int d, CZrkData** a) { return Chop(t, d, a[0]); }>(
            {.args = 2, .help = kHelpChop, .place = 690, .family = FAMILY_XYZT, .rows = 4}),
        Directions<"cross", kChooseOne,
                   [](CDataSpace& t, int d, CZrkData** a) { return Cross(t, d, a[0], a[1]); }>(
            {.args = 3, .help = kHelpCross, .place = 830, .family = FAMILY_XYZT, .rows = 4}),
        Directions<"cut", kChooseOne,
                   [](CDataSpace& t, int d, CZrkData** a) {
                       return Cut(t, d, a[0], IntArg(a[1]), IntArg(a[2]));
                   }>(
            {.args = 4, .help = kHelpCut, .place = 930, .family = FAMILY_XYZT, .rows = 4}),
        Plain<"crop1d", [](CDataSpace& t, CZrkData** a, int) { return Crop1d(t, a[0]); }>(
            {.args = 1, .help = kHelpCrop1d, .place = 980}),
        Plain<"crop2d", [](CDataSpace& t, CZrkData** a, int) { return Crop2d(t, a[0]); }>(
            {.args = 1, .help = kHelpCrop2d, .place = 990}),
        Directions<"delta", kChooseOne,
                   [](CDataSpace& t, int d, CZrkData** a) {
                       return Delta(t, d, IntArg(a[0]), IntArg(a[1]));
                   }>(
            {.args = 3, .help = kHelpDelta, .place = 1000, .family = FAMILY_XYZT, .rows = 4}),
        Directions<"dot", kChooseOne,
                   [](CDataSpace& t, int d, CZrkData** a) { return Dot(t, d, a[0], a[1]); }>(
            {.args = 3, .help = kHelpDot, .place = 1050, .family = FAMILY_XYZT, .rows = 4}),
        Plain<"eflip",
              [](CDataSpace& t, CZrkData** a, int) { return EFlip(t, a[0], IntArg(a[1])); }>(
            {.args = 2, .help = kHelpEFlip, .place = 1120}),
        Plain<"esort",
              [](CDataSpace& t, CZrkData** a, int) { return ESort(t, a[0], IntArg(a[1])); }>(
            {.args = 2, .help = kHelpESort, .place = 1130}),
        Plain<"eye", [](CDataSpace& t, CZrkData** a, int) { return Eye(t, a[0], IntArg(a[1])); }>(
            {.args = 2, .help = kHelpEye, .place = 1140}),
        RadialDirections<"fill",
                         [](CDataSpace& t, int d, CZrkData** a) {
                             return Fill(t, d, a[0], IntArg(a[1]), IntArg(a[2]), a[3]);
                         },
                         [](CDataSpace& t, CZrkData** a, int) {
                             return FillR(t, a[0], FloatArg(a[1]), FloatArg(a[2]), a[3]);
                         },
                         [](CDataSpace& t, CZrkData** a, int) {
                             return FillS(t, a[0], FloatArg(a[1]), FloatArg(a[2]), a[3]);
                         }>({.args = 5,
                             .help = kHelpFill,
                             .place = 1150,
                             .family = FAMILY_XYZTRS,
                             .rows = 4,
                             .names = {nullptr, nullptr, nullptr, nullptr, "fillr", "fills"}}),
        Plain<"fill1d", [](CDataSpace& t, CZrkData** a, int) { return Fill1d(t, a[0], a[1]); }>(
            {.args = 2, .help = kHelpFill1d, .place = 1220}),
        Plain<"fill2d", [](CDataSpace& t, CZrkData** a, int) { return Fill2d(t, a[0], a[1]); }>(
            {.args = 2, .help = kHelpFill2d, .place = 1230}),
        Plain<"fillinf", [](CDataSpace& t, CZrkData** a, int) { return FillInf(t, a[0], a[1]); }>(
            {.args = 2, .help = kHelpFillInf, .place = 1240}),
        Directions<"flip", kChooseMultiple,
                   [](CDataSpace& t, int d, CZrkData** a) { return Flip(t, d, a[0]); }>(
            {.args = 2, .help = kHelpFlip, .place = 1250, .family = FAMILY_XYZT, .rows = 4}),
        Directions<"line", kChooseOne,
                   [](CDataSpace& t, int d, CZrkData** a) {
                       return Line(t, d, FloatArg(a[0]), FloatArg(a[1]), IntArg(a[2]));
                   }>(
            {.args = 4, .help = kHelpLine, .place = 1440, .family = FAMILY_XYZT, .rows = 4}),
        Plain<"noise", [](CDataSpace& t, CZrkData** a,
                          int) { return Noise(t, a[0], FloatArg(a[1]), a[2]); }>(
            {.args = 3, .help = kHelpNoise, .place = 1660}),
        Directions<"pad", kChooseMultiple,
                   [](CDataSpace& t, int d, CZrkData** a) {
                       return Pad(t, d, a[0], IntArg(a[1]));
                   }>(
            {.args = 3, .help = kHelpPad, .place = 1670, .family = FAMILY_XYZT, .rows = 4}),
        Directions<"padsim", kChooseMultiple,
                   [](CDataSpace& t, int d, CZrkData** a) {
                       return PadSim(t, d, a[0], IntArg(a[1]));
                   }>(
            {.args = 3, .help = kHelpPadSim, .place = 1720, .family = FAMILY_XYZT, .rows = 4}),
        Plain<"permute", [](CDataSpace& t, CZrkData** a, int) { return Permute(t, a[0], a[1]); }>(
            {.args = 2, .help = kHelpPermute, .place = 1770}),
        Plain<"points2d", [](CDataSpace& t, CZrkData** a, int) { return Points2d(t, a[0]); }>(
            {.args = 1, .help = kHelpPoints2d, .place = 1830}),
        Directions<"ramp", DirRule{.reach = 6},
                   [](CDataSpace& t, int d, CZrkData** a) {
                       return Ramp(t, d, FloatArg(a[0]), FloatArg(a[1]), IntArg(a[2]));
                   }>(
            {.args = 4, .help = kHelpRamp, .place = 1900, .family = FAMILY_XYZT, .rows = 6}),
        Plain<"rand", [](CDataSpace& t, CZrkData** a, int) { return Rand(t, a[0]); }>(
            {.args = 1, .help = kHelpRand, .place = 1970}),
        Plain<"reshape",
              [](CDataSpace& t, CZrkData** a, int n) {
                  int64_t res[6] = {1, 1, 1, 1, 1, 1};
                  for (int k = 1; k < n; ++k) res[k - 1] = IntArg(a[k]);
                  return Reshape(t, a[0], res);
              }>(
            {.args = 2, .help = kHelpReshape, .place = 1980, .family = FAMILY_DIMS, .max_args = 7}),
        Plain<"rotxy", [](CDataSpace& t, CZrkData** a, int) { return RotXy(t, a[0]); }>(
            {.args = 1, .help = kHelpRotXy, .place = 1990}),
        Plain<"rotmxy", [](CDataSpace& t, CZrkData** a, int) { return RotMXy(t, a[0]); }>(
            {.args = 1, .help = kHelpRotMXy, .place = 2000}),
        Plain<"gather", [](CDataSpace& t, CZrkData** a,
                           int n) { return Gather(t, a[0], a[1], a[2], Indices(a, n)); }>(
            {.args = 3, .help = kHelpGather, .place = 2010, .max_args = 9}),
        Plain<"scatter", [](CDataSpace& t, CZrkData** a,
                            int n) { return Scatter(t, a[0], a[1], a[2], Indices(a, n)); }>(
            {.args = 3, .help = kHelpScatter, .place = 2020, .max_args = 9}),
        Plain<"set1droi", [](CDataSpace& t, CZrkData** a, int) { return Set1dRoi(t, a[0]); }>(
            {.args = 1, .help = kHelpSet1dRoi, .place = 2030}),
        Plain<"set2droi", [](CDataSpace& t, CZrkData** a, int) { return Set2dRoi(t, a[0], a[1]); }>(
            {.args = 2, .help = kHelpSet2dRoi, .place = 2040}),
        Plain<"shape", [](CDataSpace& t, CZrkData** a, int) { return Shape(t, a[0], a[1]); }>(
            {.args = 2, .help = kHelpShape, .place = 2050}),
        Directions<"shift", kChooseMultiple,
                   [](CDataSpace& t, int d, CZrkData** a) { return Shift(t, d, a[0], a[1]); }>(
            {.args = 3, .help = kHelpShift, .place = 2060, .family = FAMILY_XYZT, .rows = 4}),
        Plain<"select", [](CDataSpace& t, CZrkData** a, int) { return Select(t, a[0], a[1]); }>(
            {.args = 2, .help = kHelpSelect, .place = 2120}),
        Plain<"squeeze", [](CDataSpace& t, CZrkData** a, int) { return Squeeze(t, a[0]); }>(
            {.args = 1, .help = kHelpSqueeze, .place = 2130}),
        Plain<"srand",
              [](CDataSpace& t, CZrkData** a, int) { return SRand(t, IntArg(a[0]), a[1]); }>(
            {.args = 2, .help = kHelpSRand, .place = 2140}),
        Directions<"step", kChooseOne,
                   [](CDataSpace& t, int d, CZrkData** a) {
                       return Step(t, d, IntArg(a[0]), IntArg(a[1]));
                   }>(
            {.args = 3, .help = kHelpStep, .place = 2210, .family = FAMILY_XYZT, .rows = 4}),
        RadialDirections<"strip",
                         [](CDataSpace& t, int d, CZrkData** a) {
                             return Strip(t, d, a[0], IntArg(a[1]), IntArg(a[2]), a[3]);
                         },
                         [](CDataSpace& t, CZrkData** a, int) {
                             return StripR(t, a[0], FloatArg(a[1]), FloatArg(a[2]), a[3]);
                         },
                         [](CDataSpace& t, CZrkData** a, int) {
                             return StripS(t, a[0], FloatArg(a[1]), FloatArg(a[2]), a[3]);
                         }>({.args = 5,
                             .help = kHelpStrip,
                             .place = 2260,
                             .family = FAMILY_XYZTRS,
                             .rows = 4,
                             .names = {nullptr, nullptr, nullptr, nullptr, "stripr", "strips"}}),
        Plain<"strip1d", [](CDataSpace& t, CZrkData** a, int) { return Strip1d(t, a[0], a[1]); }>(
            {.args = 2, .help = kHelpStrip1d, .place = 2330}),
        Plain<"strip2d", [](CDataSpace& t, CZrkData** a, int) { return Strip2d(t, a[0], a[1]); }>(
            {.args = 2, .help = kHelpStrip2d, .place = 2340}),
        Directions<"stuff1d", DirRule{.reach = 6},
                   [](CDataSpace& t, int d, CZrkData** a) {
                       return Stuff1d(t, d, a[0], a[1], IntArg(a[2]));
                   }>(
            {.args = 4, .help = kHelpStuff1d, .place = 2350, .family = FAMILY_XYZT, .rows = 6}),
        Plain<"trans", [](CDataSpace& t, CZrkData** a, int) { return Trans(t, a[0], a[1]); }>(
            {.args = 2, .help = kHelpTrans, .place = 2500, .family = FAMILY_PAIRS}),
    };
}
