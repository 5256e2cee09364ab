#include <gtest/gtest.h>

#include <string>

#include "shell/history.h"

namespace {

TEST(HistoryTest, FullHistoryGoesToTheClipboardAndKeepsOnlyWhatCameAfter) {
    CHistory history(20);
    std::string clip = "untouched";
    EXPECT_FALSE(history.Append("a = 1\r\n", &clip));
    EXPECT_FALSE(history.Append("b = 2\r\n", &clip));
    EXPECT_EQ(clip, "untouched");
    EXPECT_TRUE(history.Append("c = 3 + 4\r\n", &clip));
    EXPECT_EQ(clip, "a = 1\r\nb = 2\r\n");
    EXPECT_EQ(history.Text(), "c = 3 + 4\r\n");
    // Exactly at the limit still fits.
    EXPECT_FALSE(history.Append("d = 12\r\n", &clip));
    EXPECT_EQ(history.Text().size(), 19u);
}

TEST(HistoryTest, PartialLinesWaitForTheFlush) {
    CHistory history;
    history.Partial("slice 1 ");
    history.Partial("of 3 ");
    EXPECT_EQ(history.Text(), "");
    EXPECT_EQ(history.PartialText(), "slice 1 of 3 ");
    history.Flush("done\r\n", nullptr);
    EXPECT_EQ(history.Text(), "slice 1 of 3 done\r\n");
    EXPECT_EQ(history.PartialText(), "");
}

TEST(HistoryTest, OneLineLongerThanTheLimitKeepsItsTail) {
    CHistory history(8);
    std::string clip;
    history.Append("0123456789\r\n", &clip);
    EXPECT_EQ(history.Text(), "456789\r\n");
}

}  // namespace
