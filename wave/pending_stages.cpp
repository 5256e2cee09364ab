// Stages whose own files have not landed yet. Each reports on the run log and fails, so a
// run that needs one stops with a clear line instead of a silent success. A stage's real
// definition replaces its line here.
#include <cstring>

#include "wave/messages.h"
#include "wave/stages.h"

namespace {

// The stages still defined in this file; a stage that gets its own file leaves the list.
constexpr const char* kPending[] = {"pg_2d_1axis",   "pg_2d_XYZ",       "pg_3d_1axis",
                                    "pg_3d_XYZ",     "mf_2d",           "mf_2d_XYZ",
                                    "mf_3d",         "mf_3d_XYZ",       "direct_2d_1axis",
                                    "direct_2d_XYZ", "direct_3d_1axis", "direct_3d_XYZ"};

int unavailable(const char* name) {
    std::string text = wave_fmt("%s: not available in this build.\n", name);
    wave_warn(WF_CHAIN, text.c_str(), text.c_str());
    return 1;
}

}  // namespace

bool wave_stage_available(const char* name) {
    for (const char* pending : kPending)
        if (std::strcmp(pending, name) == 0) return false;
    return true;
}

int pg_2d_1axis(wave_params*, float*, uint8_t*, uint8_t*, float**) {
    return unavailable("pg_2d_1axis");
}
int pg_2d_XYZ(wave_params*, float*, uint8_t*) { return unavailable("pg_2d_XYZ"); }
int pg_3d_1axis(wave_params*, float*, uint8_t*, uint8_t*, float**) {
    return unavailable("pg_3d_1axis");
}
int pg_3d_XYZ(wave_params*, float*, uint8_t*) { return unavailable("pg_3d_XYZ"); }

int mf_2d(wave_params*, float*, uint8_t*, uint8_t*) { return unavailable("mf_2d"); }
int mf_2d_XYZ(wave_params*, float*, uint8_t*) { return unavailable("mf_2d_XYZ"); }
int mf_3d(wave_params*, float*, uint8_t*, uint8_t*) { return unavailable("mf_3d"); }
int mf_3d_XYZ(wave_params*, float*, uint8_t*) { return unavailable("mf_3d_XYZ"); }

int direct_2d_1axis(wave_params*, float*, uint8_t*, uint8_t*, float**) {
    return unavailable("direct_2d_1axis");
}
int direct_2d_XYZ(wave_params*, float*, uint8_t*) { return unavailable("direct_2d_XYZ"); }
int direct_3d_1axis(wave_params*, float*, uint8_t*, uint8_t*, float**) {
    return unavailable("direct_3d_1axis");
}
int direct_3d_XYZ(wave_params*, float*, uint8_t*) { return unavailable("direct_3d_XYZ"); }
