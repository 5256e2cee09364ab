#include "core/report.h"

#include <new>

std::string err_file;
std::string err_func;
std::string err_msg;
std::string err_at;

std::string ErrorText() {
    std::string out;
    if (!err_file.empty()) out = "in file " + err_file + ": ";
    out += err_func + " returned '" + err_msg + "'";
    if (!err_at.empty()) out += " at: '" + err_at + "'";
    return out;
}

void SetErrFunc(const char* func) { err_func = func; }

int SetError(const char* func, const char* msg) {
    err_func = func;
    err_msg = msg;
    return 1;
}

std::string CaughtLine(const char* name) { return std::string("error caught: ") + name + ":\r\n"; }

void ReportFailure(const CReport& how) {
    const char* text = "unknown error";
    const char* own = "unknown error";  // what the flaky path is told
    bool memory = false;
    try {
        throw;
    } catch (const ZrkError& e) {
        text = own = e.what();
    } catch (const std::bad_alloc&) {
        text = own = "out of memory";
        memory = true;
    } catch (const std::exception& e) {
        own = e.what();
    } catch (...) {
    }
    for (const std::string& line : how.lines) Host().History(line);
    if (how.to & REPORT_ERR_MSG) err_msg = text;
    if (how.to & REPORT_STATUS) Host().Status(text);
    if ((how.to & REPORT_FLAKY) && !memory) Host().Flaky(own);
    if (how.to & REPORT_RETHROW) throw;
}
