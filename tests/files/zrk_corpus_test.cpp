// The seed corpus of the fuzz targets: twenty small workspaces, each of another type and
// display, and the look blocks cut out of them. Each must read back whole before it seeds.
#include <gtest/gtest.h>

#include <string>

#include "tests/files/workspace_fixture.h"

namespace {

class ZrkCorpus : public ws::WorkspaceTest {};

const uint32_t kKinds[4] = {KIND_1D, KIND_2D, KIND_XY, KIND_RGB};

}  // namespace

TEST_F(ZrkCorpus, TwentySeedsReadBack) {
    const std::filesystem::path root = QUELMOR_CORPUS_DIR;
    std::filesystem::create_directories(root / "zrk");
    std::filesystem::create_directories(root / "look");
    for (int k = 0; k < 20; ++k) {
        ws::ClearSpaces();
        host_.history_text.clear();
        for (int h = 0; h < k % 3; ++h) Host().History("line " + std::to_string(h) + "\r\n");
        const std::string name = k % 2 ? "a" : "a b";
        CZrkData* a = ws::RandomArray(name.c_str(), k, {2, 1 + k % 3, 1, k % 5 == 0 ? 2 : 1}, k);
        CZrkData* b = ws::RandomArray("b", (k * 7) % TYPE_COUNT, {3}, 100 + k);
        const uint32_t kind = kKinds[k % 4];
        CDisplayEntry* w = ws::AddWindow(kind, a, kind == KIND_XY ? b : nullptr,
                                         kind == KIND_RGB && k % 8 == 3 ? b : nullptr, "w00");
        w->caption = k % 3 ? "caption " + std::to_string(k) : "two\nlines";
        if (kind == KIND_1D || kind == KIND_XY) {
            w->look.AddLine().color = k;
            if (k % 2) w->look.AddArrow();
            if (k % 3) std::snprintf(w->look.AddText().str, 128, "text %d", k);
        }
        const std::string seed = (root / "zrk" / ("seed" + std::to_string(k) + ".zrk")).string();
        ASSERT_EQ(CZrkFile(seed).Write(), 1);
        const std::string bytes = ws::Slurp(seed);

        ws::ClearSpaces();
        CZrkFile back(seed);
        ASSERT_EQ(back.Read(), 0) << seed << ": " << back.status;
        EXPECT_EQ(GlobalDataSpace().Count(), 2) << seed;
        EXPECT_EQ(GlobalWindowSpace().Count(), 1) << seed;

        const size_t look = bytes.find("look= \n"), end = bytes.find("endlook \n");
        ASSERT_NE(look, std::string::npos);
        const std::string body =
            std::string(1, static_cast<char>(k % 4)) + bytes.substr(look + 7, end + 9 - look - 7);
        ws::Spit((root / "look" / ("seed" + std::to_string(k) + ".txt")).string(), body);
    }
}
