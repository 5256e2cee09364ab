// Stages whose own files have not landed yet. Each reports on the run log and fails, so a
// run that needs one stops with a clear line instead of a silent success. A stage's real
// definition replaces its line here.
#include "wave/messages.h"
#include "wave/stages.h"

namespace {

int unavailable(const char* name) {
    std::string text = wave_fmt("%s: not available in this build.\n", name);
    wave_warn(WF_CHAIN, text.c_str(), text.c_str());
    return 1;
}

}  // namespace

int mf_2d(wave_params*, float*, uint8_t*, uint8_t*) { return unavailable("mf_2d"); }
int mf_2d_XYZ(wave_params*, float*, uint8_t*) { return unavailable("mf_2d_XYZ"); }
int mf_3d(wave_params*, float*, uint8_t*, uint8_t*) { return unavailable("mf_3d"); }
int mf_3d_XYZ(wave_params*, float*, uint8_t*) { return unavailable("mf_3d_XYZ"); }
