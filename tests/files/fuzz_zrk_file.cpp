// Fuzz target: any bytes as a workspace file. The reader must end in one of its texts,
// whatever the input, and leave the spaces consistent enough to be written again.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "core/data_space.h"
#include "core/host.h"
#include "core/window_space.h"
#include "display/display_entry.h"
#include "display/text_sink.h"
#include "files/zrk_file.h"

namespace {

CDisplayEntry* ListEntry(const CDisplayRequest& r) {
    auto e = std::make_unique<CDisplayEntry>(*r.look);
    e->kind = r.kind;
    for (int k = 0; k < 3; ++k) e->data[k] = r.data[k];
    e->caption = r.caption;
    std::snprintf(e->name, sizeof e->name, "%s", r.name.c_str());
    return static_cast<CDisplayEntry*>(GlobalWindowSpace().NewData(std::move(e)));
}

bool Known(const std::string& s) {
    return s == "read complete" || s == "read error" || s == "alloc error" ||
           s == "invalid header" || s == "zarnik load failed";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool ready = [] {
        for (uint32_t kind : {KIND_1D, KIND_2D, KIND_XY, KIND_RGB})
            SetDisplayWindow(kind, &ListEntry);
        return true;
    }();
    (void)ready;
    const int fd = memfd_create("workspace", 0);
    if (fd < 0) return 0;
    if (write(fd, data, size) != static_cast<ssize_t>(size)) {
        close(fd);
        return 0;
    }
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", fd);
    CZrkFile file(path);
    file.Read();
    if (!Known(file.status)) {
        std::fprintf(stderr, "unexpected status '%s'\n", file.status.c_str());
        std::abort();
    }
    // Whatever was read must write out again.
    CStringSink sink;
    WriteWorkspace(sink, GlobalDataSpace(), GlobalWindowSpace(), Host().HistoryText());
    close(fd);
    while (GlobalWindowSpace().Count() > 0) GlobalWindowSpace().DelData(0);
    while (GlobalDataSpace().Count() > 0) GlobalDataSpace().DelData(0);
    return 0;
}
