// The body of the scanner fuzz targets: any bytes as a file of one kind. The header step
// either passes or ends in one of the kind's texts; when it passes and its samples fit a
// modest budget, the load runs into a target made from the header and ends in "reading
// complete" or "read failed". Anything else aborts.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <string>

#include "files/file_entry.h"
#include "files/file_options.h"

namespace fuzz {

template <class Header, class Load>
int RunOne(const uint8_t* data, size_t size, Header header, Load load,
           std::initializer_list<const char*> texts) {
    const int fd = memfd_create("scanner", 0);
    if (fd < 0) return 0;
    if (write(fd, data, size) != static_cast<ssize_t>(size)) {
        close(fd);
        return 0;
    }
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", fd);
    FileEntry e;
    e.path = path;
    auto known = [&](const std::string& s, std::initializer_list<const char*> list) {
        for (const char* t : list)
            if (s == t) return true;
        return false;
    };
    if (!header(e)) {
        if (!known(e.status, texts)) {
            std::fprintf(stderr, "unexpected header status '%s'\n", e.status.c_str());
            std::abort();
        }
        close(fd);
        return 0;
    }
    // The load model allocates what the header says; past the budget the fuzzer would only
    // measure the allocator.
    const CZrkData& h = e.header;
    CZrkData target;
    target.SetHeader(h.Type(), h.nx, h.ny, h.nz, h.nt, h.nu, h.nv);
    if (target.Bytes() <= (uint64_t{1} << 26) && (target.Bytes() == 0 || target.Allocate())) {
        CZrkData* targets[3] = {&target, nullptr, nullptr};
        const COpenOptions options;
        const int ok = load(options, e, targets);
        if (!known(e.status, {ok ? "reading complete" : "read failed"})) {
            std::fprintf(stderr, "unexpected load status '%s'\n", e.status.c_str());
            std::abort();
        }
        target.FreeData();
    }
    close(fd);
    return 0;
}

}  // namespace fuzz
