// Fuzz target: any bytes as a MAT file, through the header step and the load as the open
// dialog runs them. Each must end in one of the reader's texts, whatever the input.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/data_space.h"
#include "files/mat_file.h"

namespace {

bool Known(const std::string& s) {
    return s == "reading complete" || s == "read failed" || s == "alloc failed" ||
           s == "Error opening file" || s == "Error closing file";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // matio and HDF5 open files by name: the input gets one in memory.
    const int fd = memfd_create("mat", 0);
    if (fd < 0) return 0;
    if (write(fd, data, size) != static_cast<ssize_t>(size)) {
        close(fd);
        return 0;
    }
    FileEntry entry;
    entry.path = "/proc/self/fd/" + std::to_string(fd);
    for (int swapxy : {0, 1}) {
        COpenOptions options;
        options.swapxy = swapxy;
        CDataSpace space;
        if (ReadMatHeader(options, entry) && !Known(entry.status) &&
            entry.status.find("compatible array(s)") == std::string::npos) {
            std::fprintf(stderr, "unexpected header status '%s'\n", entry.status.c_str());
            std::abort();
        }
        LoadMatFile(options, entry, space);
        if (!Known(entry.status)) {
            std::fprintf(stderr, "unexpected status '%s'\n", entry.status.c_str());
            std::abort();
        }
    }
    close(fd);
    return 0;
}
