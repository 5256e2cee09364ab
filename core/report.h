// How a failure is reported. The last failure lives in four global strings that the equation
// bar shows; operators set err_func when they begin, so a constant text raised deep inside
// only has to land in err_msg. Every wrapper that catches is a call of Reported, naming where
// the text goes. Main thread only, like the rest of the language.
//
//   err_func = "BinaryOp()"; err_msg = "internal error, data not on stack";
//   ErrorText();   // "BinaryOp() returned 'internal error, data not on stack'"
//
//   int status = Reported({.func = "cast()"}, 1, [&] { ...; return 0; });
//   uint64_t n = Reported({.lines = {CaughtLine("MinMaxXy")}, .to = REPORT_STATUS}, 0, body);
#pragma once

#include <initializer_list>
#include <string>

#include "core/host.h"
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

// "error caught: NAME:\r\n", the history line of a wrapper that caught a failure.
std::string CaughtLine(const char* name);

// Where the text of a failure goes. A raised text is its own; std::bad_alloc is "out of
// memory"; anything else "unknown error".
enum ReportTo : unsigned {
    REPORT_ERR_MSG = 1,  // into err_msg
    REPORT_STATUS = 2,   // to the status bar
    // The host's flaky path, with the exception's own text; memory shortage stays quiet.
    REPORT_FLAKY = 4,
    REPORT_RETHROW = 8,  // after the history lines, the failure goes on to the caller
};

struct CReport {
    const char* trace = nullptr;  // the trace location, set on entry
    const char* func = nullptr;   // err_func, set on entry
    // Written to the history, in order, when the body fails.
    std::initializer_list<std::string> lines = {};
    unsigned to = REPORT_ERR_MSG;
};

// Called inside a handler: reports the failure being handled as `how` says; rethrows it for
// REPORT_RETHROW.
void ReportFailure(const CReport& how);

// Runs `body` and returns its value; on a failure, reports it and returns `failed`.
template <class R, class F>
R Reported(const CReport& how, R failed, F&& body) {
    if (how.trace) Host().Trace(how.trace);
    if (how.func) SetErrFunc(how.func);
    try {
        return body();
    } catch (...) {
        ReportFailure(how);
    }
    return failed;
}

// A guarded public method: the location goes to the trace on entry. Memory shortage quietly
// becomes `fallback`; any other failure that escapes is handed to the host's flaky path.
template <class R, class F>
R Guarded(const char* location, R fallback, F&& body) {
    return Reported({.trace = location, .to = REPORT_FLAKY}, fallback, body);
}
