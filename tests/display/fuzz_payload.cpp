// Fuzz target: the bytes a user or another program hands the displays. An even first byte
// makes the rest a palette file (the second byte's low bit names it ".act"), an odd one a
// clipboard payload, which must copy out again byte for byte when it is taken.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "core/data_space.h"
#include "display/binary_copy.h"
#include "display/pal.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    CDataSpace space;
    space.SetUnique();
    const std::string rest(reinterpret_cast<const char*>(data + 2), size - 2);
    if (data[0] % 2 == 0) {
        const std::string path = "/tmp/quelmor_fuzz_palette_" + std::to_string(getpid()) +
                                 (data[1] & 1 ? ".act" : ".lut");
        FILE* f = std::fopen(path.c_str(), "wb");
        if (!f) return 0;
        std::fwrite(rest.data(), 1, rest.size(), f);
        std::fclose(f);
        CPal pal(7);
        const std::string name = pal.LoadFile(path, space);
        std::remove(path.c_str());
        if (!name.empty() && !space.FindData(name.c_str())) __builtin_trap();
        return 0;
    }
    if (CZrkData* a = BinaryPaste(rest, space))
        if (BinaryCopy(a).substr(0, 16) != rest.substr(0, 16)) __builtin_trap();
    return 0;
}
