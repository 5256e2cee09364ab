// Fuzz target: any text as the inside of a look block. The first byte picks the kind; the
// reader must stop at its end key or at the end of the text, and the look must write again.
#include <cstdint>
#include <cstdio>

#include "display/look.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    static constexpr uint32_t kKinds[5] = {LOOK_1D, LOOK_2D, LOOK_XY, LOOK_RGB, LOOK_SPREADSHEET};
    CLook look(kKinds[data[0] % 5]);
    FILE* f = fmemopen(const_cast<uint8_t*>(data + 1), size - 1, "r");
    if (!f) return 0;
    CKeyReader in(f);
    try {
        look.Read(in, nullptr);
    } catch (const CKeyReader::EndOfFile&) {
    }
    std::fclose(f);
    CStringSink sink;
    look.Write(sink, nullptr);
    return 0;
}
