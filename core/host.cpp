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

const std::string& CHost::HistoryText() const {
    static const std::string empty;
    return empty;
}
