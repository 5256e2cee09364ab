// What the structural operators share: the result record, the three-loop walk, argument
// reading, and the guard that logs a failure to the history before passing it on.
//
// Every operator makes its result on the temporary list it is given, never changes its
// inputs, sets err_func on entry and raises constant texts. Most of them move raw element
// bytes (elem_bytes wide), so one routine serves every element type.
//
//   CZrkData* r = NewResult(temp, a->type, res, a);   // a's steps; "out of memory" if absurd
//   CWalk w(res, dir);                                 // outer x direction x inner
#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>

#include "core/data_space.h"
#include "core/directions.h"
#include "core/report.h"
#include "core/zrk_data.h"

// Sets err_func to "name('x')" for direction `dir`, or "name()" when dir is negative.
void SetOpFunc(const char* name, int dir);

// A new record on `temp` (the evaluator's NewTemp) with the steps of `steps` when given.
// Raises "invalid data type" and "out of memory", the latter also for a size that overflows
// or exceeds physical memory, before anything is asked of the allocator.
CZrkData* NewResult(CDataSpace& temp, int type, const res_t res[6], const CZrkData* steps);
// The size checks of NewResult alone, for operators that plan before they allocate.
void CheckResultSize(int type, const res_t res[6]);

// Results larger than the last-level cache are written past the caches (streaming stores):
// a store that first reads its line would double the memory traffic of a byte mover.
bool StreamsResult(const CZrkData* r);
// memcpy, with streaming stores when `stream`; end a run of them with EndStream.
void CopyBytes(char* dst, const char* src, uint64_t bytes, bool stream);
void EndStream(bool stream);

// Raises "invalid data type" unless `a` has a type and samples (CheckOperand, and a record
// emptied by free keeps its resolutions but not its samples).
void RequireData(const CZrkData* a);

// An array reduced to three loops around one direction, counted in elements.
struct CWalk {
    CWalk(const res_t res[6], int dir);
    uint64_t outer;  // all directions above
    uint64_t n;      // the direction itself
    uint64_t inner;  // all directions below
};

// The first element of a scalar argument, by the cursor's conversion rules.
int64_t IntArg(const CZrkData* a);
double FloatArg(const CZrkData* a);
// Up to six resolutions from a list argument; missing ones are 1. Raises
// "resolution must be positive" for a value below 1.
void ResList(const CZrkData* list, res_t res[6]);

// The first element of `value` cast once to `type`, as elem_bytes of that type in `out`.
void CastValue(const CZrkData* value, int type, unsigned char out[16]);

// `a` itself when it already has `type`, else a converted copy on `temp`.
const CZrkData* AsType(CDataSpace& temp, const CZrkData* a, int type);

// The type of a result made of two inputs: theirs when equal, else the arithmetic promotion.
int CommonType(int a, int b);

// Writes `count` copies of one element of `bytes` bytes from `dst` on.
void FillElements(char* dst, const unsigned char* elem, int bytes, uint64_t count);
// memcpy of a large block shared among the cores, so a fresh result is first touched by all
// of them.
void CopyInParallel(char* dst, const char* src, uint64_t bytes);

// Each line to the history.
void LogLines(std::initializer_list<std::string> lines);

// Runs an operator body; on any failure the lines go to the history and the failure goes on.
template <class F>
CZrkData* LogFailure(std::initializer_list<std::string> lines, F&& body) {
    return Reported({.lines = lines, .to = REPORT_RETHROW}, static_cast<CZrkData*>(nullptr), body);
}

// "error caught: NameX:\r\n" for a direction, "error caught: Name:\r\n" for none.
std::string CaughtLine(const char* name, int dir);
