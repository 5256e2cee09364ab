#include "files/nifti_orientation.h"

#include <map>

namespace {

// Only the main thread reads and saves files.
std::map<std::string, CNiftiOrientation>& Orientations() {
    static std::map<std::string, CNiftiOrientation> list;
    return list;
}

}  // namespace

void KeepNiftiOrientation(const std::string& name, const CNiftiOrientation& orientation) {
    Orientations()[name] = orientation;
}

bool FindNiftiOrientation(const std::string& name, CNiftiOrientation& orientation) {
    const auto it = Orientations().find(name);
    if (it == Orientations().end()) return false;
    orientation = it->second;
    return true;
}

void ForgetNiftiOrientation(const std::string& name) { Orientations().erase(name); }
