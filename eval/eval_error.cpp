#include "eval/eval_error.h"

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

int SetError(const char* func, const char* msg) {
    err_func = func;
    err_msg = msg;
    return 1;
}

void SetErrFunc(const char* func) { err_func = func; }
