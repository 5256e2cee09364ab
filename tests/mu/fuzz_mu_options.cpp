// Fuzz target: any bytes as a preferences file holding option blocks. The section reader must
// end without a crash, whatever the input, and what it read must write and read back to the
// same text.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/key_reader.h"
#include "mu/mu_options.h"

namespace {

// Reads a whole preferences text as the option table does: every section it meets.
void ReadAll(const char* data, size_t size, CMuOptions* options) {
    FILE* f = fmemopen(const_cast<char*>(data), size, "r");
    if (!f) return;
    CKeyReader reader(f);
    try {
        for (;;) {
            reader.Next();
            if (reader.IsKey("mu_estimation_options")) options->ScanfOptions(reader);
        }
    } catch (const CKeyReader::EndOfFile&) {
    }
    std::fclose(f);
}

}  // namespace

std::string Written(const CMuOptions& options) {
    char* text = nullptr;
    size_t length = 0;
    FILE* out = open_memstream(&text, &length);
    options.PrintfOptions(out);
    std::fclose(out);
    std::string written(text, length);
    std::free(text);
    return written;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    CMuOptions first;
    ReadAll(reinterpret_cast<const char*>(data), size, &first);
    // What is written reads back to itself: one line per value, nothing lost on the way.
    std::string once = Written(first);
    CMuOptions second;
    if (!once.empty()) ReadAll(once.data(), once.size(), &second);
    if (Written(second) != once) std::abort();
    return 0;
}
