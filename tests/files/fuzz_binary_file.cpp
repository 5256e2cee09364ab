// Fuzz target: the binary reader on any file with any layout. The first 16 bytes are the
// options (sizes, type, byte order, skips, header bytes), the rest the file. A header step
// that passes must load without reading or writing outside the file and the array.
#include <cstdlib>
#include <cstring>

#include "files/binary_file.h"
#include "tests/files/fuzz_memfd.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 16) return 0;
    COpenOptions options;
    for (int k = 0; k < 4; ++k) {
        options.res4d[k] = std::to_string(data[k] % 9);
        options.skip4d[k] = std::to_string(data[4 + k] % 5);
    }
    options.res_uv[0] = std::to_string(1 + data[8] % 2);
    options.skip_uv[1] = std::to_string(data[9] % 3);
    options.datatype = data[10] % 21 - 1;
    options.swap = data[11] & 1;
    options.offset = data[12] & 0x80 ? "abc" : std::to_string(data[12] % 64);
    CMemFile file(data + 16, size - 16);
    if (!file.Ok()) return 0;
    FileEntry entry;
    entry.path = file.Path();
    if (!ReadBinaryHeader(options, entry)) return 0;
    // A header step passes only when the file holds the samples.
    if (entry.header.Bytes() > size - 16) std::abort();
    CZrkData target;
    target.CopyHeaderFrom(entry.header);
    if (!target.Allocate()) return 0;
    CZrkData* targets[3] = {&target, nullptr, nullptr};
    if (!LoadBinary(options, entry, targets) || entry.status != "reading complete") std::abort();
    target.FreeData();
    return 0;
}
