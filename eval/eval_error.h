// The report of the last failed evaluation: four global strings, set by whatever failed.
// Operators set err_func when they begin, so a constant text raised deep inside only has to
// land in err_msg. Main thread only, like the rest of the evaluator.
//
//   err_func = "BinaryOp()"; err_msg = "internal error, data not on stack";
//   ErrorText();   // "BinaryOp() returned 'internal error, data not on stack'"
#pragma once

#include <new>
#include <string>
#include <utility>

#include "core/zrk_error.h"

extern std::string err_file;
extern std::string err_func;
extern std::string err_msg;
extern std::string err_at;

// "in file F: " when err_file is set, then "FUNC returned 'MSG'", then " at: 'AT'".
std::string ErrorText();

// Sets err_func alone; out of line, which also keeps g++ 12 from a false -Wrestrict alarm
// on string assignment inlined into long bodies.
void SetErrFunc(const char* func);

// Sets err_func and err_msg together and returns 1, the failure status.
int SetError(const char* func, const char* msg);

// Runs `body` as an operator does: a raised text goes to err_msg, std::bad_alloc is
// "out of memory", anything else "unknown error". Returns the body's status, or 1.
template <class F>
int CatchErrorsKeepFunc(F&& body) {
    try {
        return body();
    } catch (const ZrkError& e) {
        err_msg = e.what();
    } catch (const std::bad_alloc&) {
        err_msg = "out of memory";
    } catch (...) {
        err_msg = "unknown error";
    }
    return 1;
}

// The same with err_func set first.
template <class F>
int CatchErrors(const char* func, F&& body) {
    err_func = func;
    return CatchErrorsKeepFunc(std::forward<F>(body));
}
