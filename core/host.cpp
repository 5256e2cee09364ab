#include "core/host.h"

namespace {
CHost g_quiet_host;
CHost* g_host = &g_quiet_host;
}  // namespace

CHost& Host() { return *g_host; }

CHost* SetHost(CHost* host) {
    CHost* previous = g_host;
    g_host = host ? host : &g_quiet_host;
    return previous == &g_quiet_host ? nullptr : previous;
}

namespace {
// Constant-initialised: the crash path may ask for it first, from a signal handler.
const std::string g_no_history;
}  // namespace

const std::string& CHost::HistoryText() const { return g_no_history; }
