// Runs a fuzz target over the files of its corpus once each, so the corpus is a plain test
// under any compiler; `make fuzz` links the same targets with libFuzzer instead.
//
//   fuzz_corpus_zrk_file DIR_OR_FILE...
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    std::vector<std::filesystem::path> files;
    for (int k = 1; k < argc; ++k) {
        if (std::filesystem::is_directory(argv[k])) {
            for (const auto& e : std::filesystem::directory_iterator(argv[k]))
                if (e.is_regular_file()) files.push_back(e.path());
        } else {
            files.push_back(argv[k]);
        }
    }
    if (files.empty()) {
        std::fprintf(stderr, "no corpus files\n");
        return 1;
    }
    for (const auto& path : files) {
        std::ifstream in(path, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(in)), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%zu inputs\n", files.size());
    return 0;
}
