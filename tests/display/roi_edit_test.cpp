// Regions drawn with the mouse: the records each mode writes, their undo, and the add modes.
#include "display/roi_edit.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "core/host.h"
#include "display/roi.h"
#include "display/roi_mask.h"

namespace {

class RoiEditTest : public ::testing::Test {
  protected:
    void SetUp() override { Clear(); }
    void TearDown() override { Clear(); }
    static void Clear() {
        while (GlobalDataSpace().Count() > 0) GlobalDataSpace().DelData(0);
    }
    static std::vector<float> Record(const char* name) {
        const CZrkData* r = GlobalDataSpace().FindData(name);
        if (!r || !r->data) return {};
        const auto* v = static_cast<const float*>(r->data);
        return {v, v + r->Count()};
    }
    static std::string MaskBytes() {
        const CZrkData* m = GlobalDataSpace().FindData("roi_mask");
        return std::string(static_cast<const char*>(m->data), m->Bytes());
    }
    CHeadlessHost host;
    CScopedHost scoped{host};
    CRoiEdit edit;
};

TEST_F(RoiEditTest, EachModeWritesItsRecord) {
    EXPECT_STREQ(CRoiEdit::Status(CRoiEdit::MODE_DRAW), " drag left button to draw roi");
    EXPECT_STREQ(CRoiEdit::Status(CRoiEdit::MODE_ADD_ELLIPSE), " drag left button to define roi");
    EXPECT_STREQ(CRoiEdit::Status(1), "");
    EXPECT_FALSE(edit.Press(1, 0, 0));  // window/level: no region

    ASSERT_TRUE(edit.Press(CRoiEdit::MODE_RECT, 3.5f, 4));
    EXPECT_EQ(Record("roi_rect"), (std::vector<float>{3.5f, 4, 3.5f, 4}));
    edit.Move(7, 9);
    EXPECT_EQ(Record("roi_rect"), (std::vector<float>{3.5f, 4, 7, 9}));
    EXPECT_EQ(edit.Release(10, 12, 32, 32), ROI_RECT);
    EXPECT_EQ(Record("roi_rect"), (std::vector<float>{3.5f, 4, 10, 12}));
    EXPECT_FALSE(edit.Dragging());
    // Each change went through the record's undo.
    CZrkData* r = GlobalDataSpace().FindData("roi_rect");
    EXPECT_EQ(r->undo_text, "undo roi");
    r->Undo();
    EXPECT_EQ(Record("roi_rect"), (std::vector<float>{3.5f, 4, 7, 9}));
    EXPECT_GT(host.refreshes, 0);

    edit.Press(CRoiEdit::MODE_X, 2, 5);
    edit.Release(6, 1, 32, 32);
    EXPECT_EQ(Record("roi_x"), (std::vector<float>{2, 6}));
    edit.Press(CRoiEdit::MODE_Y, 2, 5);
    edit.Release(6, 1, 32, 32);
    EXPECT_EQ(Record("roi_y"), (std::vector<float>{5, 1}));

    edit.Press(CRoiEdit::MODE_DRAW, 1, 1);
    edit.Move(9, 1);
    edit.Release(5, 8, 32, 32);
    EXPECT_EQ(Record("roi_draw"), (std::vector<float>{1, 1, 9, 1, 5, 8}));
    // Under 3 points an outline marks nothing.
    edit.Press(CRoiEdit::MODE_DRAW, 1, 1);
    edit.Release(9, 9, 32, 32);
    const CZrkData* m = GetRoiMask(ROI_DRAW, 32, 32);
    EXPECT_EQ(std::string(static_cast<const char*>(m->data), m->Bytes()),
              std::string(32 * 32, '\0'));
}

TEST_F(RoiEditTest, AddOrsIntoTheMaskAndUndoAddTakesItBack) {
    edit.Press(CRoiEdit::MODE_ADD_RECT, 0, 0);
    edit.Release(3, 3, 16, 16);
    edit.Press(CRoiEdit::MODE_ADD_ELLIPSE, 8, 8);
    edit.Release(15, 14, 16, 16);
    const std::string both = MaskBytes();
    GlobalDataSpace().DelData("roi_rect");
    const std::string ellipse = [] {
        const CZrkData* e = GetRoiMask(ROI_ELLIPSE, 16, 16);
        return std::string(static_cast<const char*>(e->data), e->Bytes());
    }();
    for (size_t k = 0; k < both.size(); ++k) {
        const bool rect = k % 16 <= 3 && k / 16 <= 3;
        EXPECT_EQ(both[k], rect || ellipse[k]) << k;
    }
    // The composite shows the union too.
    const auto* c = static_cast<const char*>(TheRoi().Composite().data);
    EXPECT_EQ(std::string(c, 256), both);
    // Rebuild what stood after the adds, then take the last add back.
    CZrkData* mask = GlobalDataSpace().FindData("roi_mask");
    std::memcpy(mask->data, both.data(), both.size());
    mask->NoUndo();
    edit.Press(CRoiEdit::MODE_ADD_X, 5, 0);
    edit.Release(6, 0, 16, 16);
    ASSERT_EQ(edit.UndoAdd(), 1);
    EXPECT_EQ(MaskBytes(), both);
    EXPECT_EQ(std::string(static_cast<const char*>(TheRoi().Composite().data), 256), both);
    EXPECT_EQ(edit.UndoAdd(), 0);  // one level
}

TEST_F(RoiEditTest, SelectAllCoversTheImage) {
    ASSERT_EQ(CRoiEdit::SelectAll(ROI_ELLIPSE, 20, 10), 1);
    EXPECT_EQ(host.status.back(), " select all");
    EXPECT_EQ(Record("roi_rect"), (std::vector<float>{0, 0, 19, 9}));
    CRoiEdit::SelectAll(ROI_X, 20, 10);
    EXPECT_EQ(Record("roi_x"), (std::vector<float>{0, 19}));
    EXPECT_EQ(CRoiEdit::SelectAll(ROI_RECT, 0, 10), 0);
}

}  // namespace
