// The function browser's rows, help and variant lists over the whole table.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "eval/function_browser.h"
#include "eval/function_table.h"

namespace {

TEST(FunctionBrowser, ListsEveryRowWithHelpInTableOrder) {
    const CFunctionBrowser browser;
    std::vector<std::string> expected;
    for (const CFuncRow* row : FunctionTable())
        if (row->help) expected.push_back(row->name);
    ASSERT_EQ(browser.Rows().size(), expected.size());
    for (size_t k = 0; k < expected.size(); ++k) EXPECT_EQ(browser.Rows()[k].name, expected[k]);
    // The operators first, as the table has them, and a few titles with their own wording.
    ASSERT_GE(browser.Rows().size(), 7u);
    EXPECT_EQ(browser.Rows()[0].name, "=");
    EXPECT_EQ(browser.Rows()[0].title, "equal: copy type and dimensions as is");
    EXPECT_EQ(browser.Rows()[6].name, "/xy");
    std::map<std::string, std::string> titles;
    for (const CBrowserRow& row : browser.Rows()) titles[row.name] = row.title;
    EXPECT_EQ(titles["black"], "balckman window");
    EXPECT_EQ(titles["thresh"], "threshhold i and q data");
    EXPECT_EQ(titles["clip"], "clip i and q data");
    EXPECT_EQ(titles["pow"], "raise ");
    // Variants stay hidden.
    EXPECT_EQ(titles.count("catx"), 0u);
    EXPECT_EQ(titles.count("ftz"), 0u);
}

int RowOf(const CFunctionBrowser& browser, const char* name) {
    for (size_t k = 0; k < browser.Rows().size(); ++k)
        if (browser.Rows()[k].name == name) return static_cast<int>(k);
    ADD_FAILURE() << name << " not listed";
    return -1;
}

TEST(FunctionBrowser, HelpShowsTitleArgumentsAndLines) {
    const CFunctionBrowser browser;
    EXPECT_EQ(browser.HelpText(RowOf(browser, "tile")),
              "tile: resize data set\n\n"
              "\"xyzt\"\tdirection of operation; choose multiple\n"
              "data\tinput data array\n"
              "x\tnew dimension\n\n"
              "out = tile('t',data,t)\n"
              "array data will be tiled to new dimension [][][][t]\n"
              "SEE ALSO: pad, padsim\n");
    EXPECT_EQ(browser.HelpText(-1), "no function selected");
    EXPECT_EQ(browser.HelpText(static_cast<int>(browser.Rows().size())), "no function selected");
}

TEST(FunctionBrowser, VariantListsFollowTheFamily) {
    const CFunctionBrowser browser;
    EXPECT_TRUE(browser.Variants(RowOf(browser, "clip")).empty());
    const auto ft = browser.Variants(RowOf(browser, "ft"));
    ASSERT_EQ(ft.size(), 5u);
    EXPECT_EQ(ft[0].label, "general xyzt");
    EXPECT_EQ(ft[0].insert, "ft");
    EXPECT_EQ(ft[3].label, "z direction");
    EXPECT_EQ(ft[3].insert, "ftz");
    // A variant not named after its general function.
    const auto ccorr1d = browser.Variants(RowOf(browser, "ccorr1d"));
    ASSERT_EQ(ccorr1d.size(), 5u);
    EXPECT_EQ(ccorr1d[4].insert, "ccorrt");
    const auto fill = browser.Variants(RowOf(browser, "fill"));
    ASSERT_EQ(fill.size(), 7u);
    EXPECT_EQ(fill[0].label, "general xyztrs");
    EXPECT_EQ(fill[5].label, "radial plane");
    EXPECT_EQ(fill[5].insert, "fillr");
    EXPECT_EQ(fill[6].insert, "fills");
    // Lists without variant rows insert the general name; "zt direction" stands twice.
    const auto trans = browser.Variants(RowOf(browser, "trans"));
    ASSERT_EQ(trans.size(), 7u);
    EXPECT_EQ(trans[3].label, "zt direction");
    EXPECT_EQ(trans[6].label, "zt direction");
    for (const auto& v : trans) EXPECT_EQ(v.insert, "trans");
    const auto reshape = browser.Variants(RowOf(browser, "reshape"));
    ASSERT_EQ(reshape.size(), 4u);
    EXPECT_EQ(reshape[0].label, "1d");
    EXPECT_EQ(reshape[3].insert, "reshape");
    EXPECT_TRUE(browser.Variants(-5).empty());
}

}  // namespace
