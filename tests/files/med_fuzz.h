// What the DICOM and NIfTI fuzz targets share: the input as a file (a memfd, reached under
// a name with the extension the reader wants), and one open through the header and load
// steps that must end in a text, never in a crash.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/zrk_data.h"
#include "files/file_entry.h"
#include "files/file_options.h"

namespace med {

// Arrays above this are not made: the header step's checks are what is under test, not the
// machine's memory.
constexpr uint64_t kFuzzBytes = uint64_t{64} << 20;

template <class Header, class Load>
void FuzzOne(const uint8_t* data, size_t size, const char* extension, Header header, Load load) {
    const int fd = memfd_create("input", 0);
    if (fd < 0) return;
    if (write(fd, data, size) != static_cast<ssize_t>(size)) {
        close(fd);
        return;
    }
    static const std::string folder = [] {
        char name[] = "/tmp/quelmor_fuzz_XXXXXX";
        return std::string(mkdtemp(name) ? name : "/tmp");
    }();
    const std::string path = folder + "/input" + extension;
    unlink(path.c_str());
    if (symlink(("/proc/self/fd/" + std::to_string(fd)).c_str(), path.c_str()) != 0) {
        close(fd);
        return;
    }
    for (int scale = 0; scale < 2; ++scale) {
        COpenOptions options;
        options.dicom_scale = scale;
        FileEntry entry;
        entry.path = path;
        if (!header(options, entry)) {
            if (entry.status.empty() || !entry.failed) std::abort();
            continue;
        }
        const int count = entry.isRgb ? 3 : 1;
        if (entry.header.Bytes() * count > kFuzzBytes) continue;
        CZrkData arrays[3];
        CZrkData* targets[3] = {};
        for (int c = 0; c < count; ++c) {
            arrays[c].CopyHeaderFrom(entry.header);
            targets[c] = &arrays[c];
            if (!arrays[c].Allocate()) std::abort();
        }
        if (!load(options, entry, targets) && entry.status.empty()) std::abort();
        for (CZrkData& a : arrays) a.FreeData();
    }
    unlink(path.c_str());
    close(fd);
}

}  // namespace med
