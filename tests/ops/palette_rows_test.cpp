// get_rgb: a palette's colours as an n1 [256][3] array, from a table name, a palette array
// or a 2d display, in the planar form a palette array is read back in.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "core/window_space.h"
#include "display/display_entry.h"
#include "display/pal.h"
#include "tests/eval/eval_fixture.h"

namespace {

class GetRgbTest : public EvalTest {
  protected:
    void TearDown() override {
        CWindowSpace& w = GlobalWindowSpace();
        while (w.Count() > 0) w.DelData(0);
        EvalTest::TearDown();
    }
    // Red, green, blue of entry i from the planar rows of `a`.
    static void Entry(const CZrkData* a, int i, uint8_t rgb[3]) {
        const auto* p = static_cast<const uint8_t*>(a->Data());
        for (int c = 0; c < 3; ++c) rgb[c] = p[c * CPal::kEntries + i];
    }
};

TEST_F(GetRgbTest, EveryTableComesOutEntryForEntry) {
    for (int t = 0; t < CPal::kTables; ++t) {
        const std::string name = CPal::TableName(t);
        SCOPED_TRACE(name);
        ASSERT_EQ(Run("p = get_rgb(\"" + name + "\")"), 0) << ErrorText();
        const CZrkData* p = Find("p");
        ASSERT_EQ(p->Type(), TYPE_N1);
        ASSERT_EQ(p->nx, 256u);
        ASSERT_EQ(p->ny, 3u);
        uint8_t table[CPal::kEntries][3];
        CPal::TableRgb(t, table);
        for (int i = 0; i < CPal::kEntries; ++i) {
            uint8_t got[3];
            Entry(p, i, got);
            ASSERT_EQ(got[0], table[i][0]) << i;
            ASSERT_EQ(got[1], table[i][1]) << i;
            ASSERT_EQ(got[2], table[i][2]) << i;
        }
    }
}

TEST_F(GetRgbTest, AnEditedPaletteIsSetBackByName) {
    ASSERT_EQ(Run("pa = get_rgb(\"jet\"); pb = (n1)(255 - pa);"), 0) << ErrorText();
    CPal pal(7);
    pal.SetByName("pb", &GlobalDataSpace());
    ASSERT_TRUE(pal.IsArray());
    uint8_t jet[CPal::kEntries][3];
    CPal::TableRgb(9, jet);
    ASSERT_STREQ(CPal::TableName(9), "jet");
    for (int i = 0; i < CPal::kEntries; ++i)
        for (int c = 0; c < 3; ++c) ASSERT_EQ(pal.entries[i][c], 255 - jet[i][c]) << i << c;
    // and the array palette reads back as itself
    ASSERT_EQ(Run("r = get_rgb(\"pb\")"), 0) << ErrorText();
    EXPECT_EQ(Values(Find("r")), Values(Find("pb")));
}

TEST_F(GetRgbTest, DataShownIn2dGivesItsDisplaysPalette) {
    ASSERT_EQ(Run("a = rampx(0, 1, 16)"), 0) << ErrorText();
    CLook look(LOOK_2D);
    auto entry = std::make_unique<CDisplayEntry>(look);
    entry->data[0] = Find("a");
    entry->look.Plane(0)->SetPalette(7, "black body red", &GlobalDataSpace());
    GlobalWindowSpace().NewData(std::move(entry));
    ASSERT_EQ(
        Run("shown = get_rgb(a); red = get_rgb(\"black body red\"); grey = get_rgb(\"grey\");"), 0)
        << ErrorText();
    EXPECT_EQ(Values(Find("shown")), Values(Find("red")));
    EXPECT_NE(Values(Find("shown")), Values(Find("grey")));
    // data no display shows is read as a name
    EXPECT_EQ(Report("b = get_rgb(\"nothing like it\")"), "get_rgb() returned 'unknown palette'");
}

}  // namespace
