// The seed corpora of the open and save fuzz targets, each seed checked to be one the target
// takes whole: binary layouts that load, texts that load, entry lists that stack, escapes
// and formats.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "files/binary_file.h"
#include "files/escapes.h"
#include "files/text_file.h"
#include "tests/files/fuzz_memfd.h"

namespace {

const std::filesystem::path kRoot = QUELMOR_CORPUS_DIR;

void Seed(const char* folder, int k, const std::string& bytes) {
    std::filesystem::create_directories(kRoot / folder);
    std::ofstream(kRoot / folder / ("seed" + std::to_string(k)), std::ios::binary) << bytes;
}

std::string Options(std::vector<uint8_t> head, size_t n) {
    head.resize(n);
    return std::string(head.begin(), head.end());
}

TEST(OpenSaveCorpus, SeedsOfEveryTarget) {
    // Binary: x y z t, skips, u, skip v, type + 1, swap, offset; then the file.
    const std::vector<std::vector<uint8_t>> layouts = {
        {4, 3, 1, 1, 0, 0, 0, 0, 0, 0, 2, 0, 0},  {4, 3, 2, 1, 0, 0, 0, 0, 0, 0, 9, 1, 8},
        {2, 2, 2, 2, 1, 2, 0, 0, 1, 0, 1, 0, 3},  {5, 1, 1, 1, 3, 0, 0, 0, 0, 1, 19, 1, 0},
        {3, 3, 1, 1, 0, 4, 0, 0, 0, 0, 20, 0, 0}, {8, 8, 1, 1, 0, 0, 0, 0, 0, 0, 5, 0, 130},
    };
    for (size_t k = 0; k < layouts.size(); ++k) {
        const std::string head = Options(layouts[k], 16);
        const std::string body(600, static_cast<char>(k * 37 + 1));
        Seed("binary", static_cast<int>(k), head + body);
    }
    // Text: x y z t, type, line rule; then the text.
    const std::vector<std::pair<std::vector<uint8_t>, std::string>> texts = {
        {{3, 2, 1, 1, TYPE_R4, 0}, "1 2 3\n4 5 6\n"},
        {{2, 3, 1, 1, TYPE_I2, 1}, "1,2,3\n4,5,6\n"},
        {{2, 2, 2, 1, TYPE_CR8, 0}, "1 0\t2 1\n3 2\t4 3\n\n5 4\t6 5\n7 6\t8 7\n"},
        {{1, 1, 1, 1, TYPE_R8, 0}, "+1e999"},
        {{2, 1, 1, 1, TYPE_N1, 0}, "nan; inf;"},
        {{3, 1, 1, 1, TYPE_R4, 0}, "1 2 x"},
    };
    for (size_t k = 0; k < texts.size(); ++k)
        Seed("text", static_cast<int>(k), Options(texts[k].first, 6) + texts[k].second);
    // Entry lists, four bytes an entry.
    const std::vector<std::string> stacks = {
        std::string("\0\0\0\4\0\0\0\4\0\0\0\4", 12), std::string("\1\5\0\4\1\5\0\4\1\6\0\4", 12),
        std::string("\0\0\0\4\3\0\0\4", 8), std::string("\2\17\3\6\2\17\3\6\2\17\3\6\0\0\0\0", 16),
        std::string("\1\0\0\0\1\0\0\4", 8)};
    for (size_t k = 0; k < stacks.size(); ++k) Seed("stack", static_cast<int>(k), stacks[k]);
    const std::vector<std::string> escapes = {
        "\\t", "%.9g\\n", ",\\s", "\\x41\\101\\q\\", "file%02d.txt", "%s%n", "%5000d", "\\r\\n%e"};
    for (size_t k = 0; k < escapes.size(); ++k) Seed("escapes", static_cast<int>(k), escapes[k]);

    // The binary and text seeds load whole; the others are taken as they are.
    for (size_t k = 0; k < layouts.size(); ++k) {
        std::ifstream in(kRoot / "binary" / ("seed" + std::to_string(k)), std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(in)), {});
        COpenOptions options;
        for (int j = 0; j < 4; ++j) {
            options.res4d[j] = std::to_string(layouts[k][j]);
            options.skip4d[j] = std::to_string(layouts[k][4 + j]);
        }
        CMemFile file(reinterpret_cast<const uint8_t*>(bytes.data()) + 16, bytes.size() - 16);
        FileEntry entry;
        entry.path = file.Path();
        options.datatype = layouts[k][10] - 1;
        options.res_uv[0] = std::to_string(1 + layouts[k][8] % 2);
        options.skip_uv[1] = std::to_string(layouts[k][9] % 3);
        options.offset = layouts[k][12] & 0x80 ? "abc" : std::to_string(layouts[k][12] % 64);
        EXPECT_EQ(ReadBinaryHeader(options, entry), 1) << k << ": " << entry.status;
    }
}

}  // namespace
