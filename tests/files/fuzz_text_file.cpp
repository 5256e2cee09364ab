// Fuzz target: the text reader on any text. The first 6 bytes choose sizes, type and the
// line rule, the rest is the file. The load ends in one of its two texts.
#include <cstdlib>

#include "files/text_file.h"
#include "tests/files/fuzz_memfd.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 6) return 0;
    COpenOptions options;
    for (int k = 0; k < 4; ++k) options.res4d[k] = std::to_string(data[k] % 6);
    options.datatype = data[4] % TYPE_COUNT;
    options.perline = data[5] & 1;
    CMemFile file(data + 6, size - 6);
    if (!file.Ok()) return 0;
    FileEntry entry;
    entry.path = file.Path();
    if (!ReadTextHeader(options, entry)) return 0;
    CZrkData target;
    target.CopyHeaderFrom(entry.header);
    if (!target.Allocate()) return 0;
    CZrkData* targets[3] = {&target, nullptr, nullptr};
    const int ok = LoadText(options, entry, targets);
    if (entry.status != (ok ? "reading complete" : "read failed")) std::abort();
    target.FreeData();
    return 0;
}
