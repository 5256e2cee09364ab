#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "core/zrk_data.h"
#include "shell/desktop.h"
#include "shell/desktop_commands.h"

namespace {

class DesktopTest : public ::testing::Test {
  protected:
    void SetUp() override {
        space_.InitReservedData();
        space_.SetUnique();
    }
    CZrkData* Make(const char* name, int type = TYPE_R4, res_t nx = 1, res_t ny = 1, res_t nz = 1,
                   res_t nt = 1) {
        CZrkData* r = space_.NewData(type, nx, ny, nz, nt, 1, 1, name);
        if (r && r->Data()) std::memset(r->Data(), 0, r->Bytes());
        return r;
    }
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const CDesktopRow& row : desk_.Rows(space_)) names.push_back(row.name);
        return names;
    }

    CDataSpace space_;
    CDesktop desk_;
};

TEST_F(DesktopTest, ListHidesScratchRecordsAndMarksReservedOnes) {
    Make("a", TYPE_R4, 2, 3, 4, 5)->caption = "phase";
    Make("roi_mask");
    Make("hist_nbins", TYPE_I4);
    Make("view1.window");
    Make("pi");
    Make("b", TYPE_CI2, 7);
    const std::vector<CDesktopRow> rows = desk_.Rows(space_);
    ASSERT_EQ(Names(), (std::vector<std::string>{"a", "b", "pi"}));
    EXPECT_EQ(rows[0].size, "2x3x4x5");
    EXPECT_EQ(rows[0].type, "r4");
    EXPECT_EQ(rows[0].caption, "phase");
    EXPECT_FALSE(rows[0].reserved);
    EXPECT_EQ(rows[1].size, "7x1x1x1");
    EXPECT_EQ(rows[1].type, "complex i2");
    EXPECT_TRUE(rows[2].reserved);
    // A hidden record is still in the data space, where an equation finds it.
    EXPECT_NE(space_.FindData("roi_mask"), nullptr);

    desk_.desktop_details = 0;
    const std::vector<CDesktopRow> plain = desk_.Rows(space_);
    EXPECT_EQ(plain[0].size, "");
    EXPECT_EQ(plain[0].type, "");
}

TEST_F(DesktopTest, ByteLineCountsDataAndUndoInBothLayouts) {
    Make("a", TYPE_R4, 10);               // 40 bytes
    CZrkData* b = Make("b", TYPE_R8, 4);  // 32 bytes
    CZrkData* next = new CZrkData;
    next->SetHeader(TYPE_I2, 3, 1, 1, 1, 1, 1);
    next->AllocateOrThrow();
    b->NewUndo("equation", next);  // b now 6 bytes, 32 in undo
    delete next;
    EXPECT_EQ(desk_.ByteLine(space_), "data space 46; undo space 32; total bytes 78");
    desk_.desktop_bytes = 0;
    EXPECT_EQ(desk_.ByteLine(space_), "data space 46; undo space 32; total space 78");

    space_.ClearSel(kDesktopSelect);
    EXPECT_EQ(FreeUndoBuffers(space_), "1 undo buffers freed");
    EXPECT_EQ(desk_.ByteLine(space_), "data space 46; undo space 0; total space 46");
}

TEST_F(DesktopTest, FreeDataSparesReservedRecords) {
    Make("a")->select = kDesktopSelect;
    Make("b");
    Make("e")->select = kDesktopSelect;
    EXPECT_EQ(FreeSelectedData(space_), "1 freed");
    EXPECT_EQ(space_.FindData("a"), nullptr);
    EXPECT_NE(space_.FindData("b"), nullptr);
    EXPECT_NE(space_.FindData("e"), nullptr);
}

TEST_F(DesktopTest, DeclareConstantsReplaceWhatWasThere) {
    Make("pi", TYPE_I2, 9);
    EXPECT_EQ(DeclareConstant(space_, "pi", 3.14159265358979), "pi declared");
    EXPECT_EQ(DeclareConstant(space_, "e", 2.71828182845905), "e declared");
    const CZrkData* pi = space_.FindData("pi");
    ASSERT_NE(pi, nullptr);
    EXPECT_EQ(pi->Type(), TYPE_R4);
    EXPECT_EQ(pi->Count(), 1u);
    EXPECT_FLOAT_EQ(*static_cast<const float*>(pi->Data()), 3.14159265f);
    EXPECT_FLOAT_EQ(*static_cast<const float*>(space_.FindData("e")->Data()), 2.7182818f);
    EXPECT_EQ(space_.Count(), 2);
}

TEST_F(DesktopTest, DuplicateMakesDeepCopiesUnderUniqueNames) {
    CZrkData* a = Make("a", TYPE_R4, 3);
    static_cast<float*>(a->Data())[2] = 5.0f;
    a->select = kDesktopSelect;
    EXPECT_EQ(DuplicateSelected(space_), "1 duplicated");
    CZrkData* copy = space_.FindData("a.");
    ASSERT_NE(copy, nullptr);
    a = space_.FindData("a");
    EXPECT_NE(copy->Data(), a->Data());
    EXPECT_EQ(static_cast<float*>(copy->Data())[2], 5.0f);
    EXPECT_EQ(copy->select & kDesktopSelect, 0u);
}

}  // namespace
