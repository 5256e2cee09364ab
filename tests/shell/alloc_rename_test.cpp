#include <gtest/gtest.h>

#include <string>

#include "core/data_space.h"
#include "core/zrk_data.h"
#include "shell/alloc.h"
#include "shell/rename.h"

namespace {

class FormLogicTest : public ::testing::Test {
  protected:
    void SetUp() override {
        space_.InitReservedData();
        space_.SetUnique();
    }
    CDataSpace space_;
};

TEST_F(FormLogicTest, AllocateRunsRowsInOrderAndSkipsEmptyNames) {
    CAlloc alloc;
    alloc.rows[0] = {"mag", 64, 32, 2, 1, TYPE_N2};
    alloc.rows[2] = {"phase", 4, 1, 1, 3, TYPE_CR4};
    alloc.rows[3] = {"mag", 1, 1, 1, 1, TYPE_R4};
    EXPECT_EQ(alloc.Run(space_), "allocate successful");
    EXPECT_EQ(space_.Count(), 3);
    const CZrkData* mag = space_.FindData("mag");
    ASSERT_NE(mag, nullptr);
    EXPECT_EQ(mag->Type(), TYPE_N2);
    EXPECT_EQ(mag->nx, 64u);
    EXPECT_EQ(mag->nz, 2u);
    const CZrkData* phase = space_.FindData("phase");
    ASSERT_NE(phase, nullptr);
    EXPECT_EQ(phase->nt, 3u);
    EXPECT_EQ(static_cast<const float*>(phase->Data())[23], 0.0f);
    EXPECT_NE(space_.FindData("mag."), nullptr);
}

TEST_F(FormLogicTest, AllocateStopsAtTheFirstRowThatFails) {
    const struct {
        const char* what;
        CAllocRow bad;
    } cases[] = {
        {"zero size", {"bad", 0, 1, 1, 1, TYPE_R4}},
        {"negative size", {"bad", 4, -2, 1, 1, TYPE_R4}},
        {"no type", {"bad", 4, 1, 1, 1, 20}},
        {"too large", {"bad", 1LL << 40, 1LL << 40, 1, 1, TYPE_R8}},
    };
    for (const auto& c : cases) {
        CDataSpace space;
        CAlloc alloc;
        alloc.rows[0] = {"first", 2, 1, 1, 1, TYPE_R4};
        alloc.rows[1] = c.bad;
        alloc.rows[2] = {"never", 2, 1, 1, 1, TYPE_R4};
        EXPECT_EQ(alloc.Run(space), "alloc failed") << c.what;
        EXPECT_NE(space.FindData("first"), nullptr) << c.what;
        EXPECT_EQ(space.FindData("bad"), nullptr) << c.what;
        EXPECT_EQ(space.FindData("never"), nullptr) << c.what;
    }
}

TEST_F(FormLogicTest, RenameKeepsSamplesAndUndoAndChecksTheNewName) {
    CZrkData* a = space_.NewData(TYPE_R4, 2, 1, 1, 1, 1, 1, "a");
    CZrkData next;
    next.SetHeader(TYPE_R4, 5, 1, 1, 1, 1, 1);
    next.AllocateOrThrow();
    a->NewUndo("equation", &next);
    void* samples = a->Data();
    space_.NewData(TYPE_R4, 1, 1, 1, 1, 1, 1, "taken");
    space_.NewData(TYPE_R4, 1, 1, 1, 1, 1, 1, "pi");

    CRename rename;
    const struct {
        const char* from;
        std::string to;
        const char* text;
    } refused[] = {
        {"nothere", "x", "no such data"},
        {"pi", "x", "reserved data"},
        {"a", "roi_mask", "reserved data"},
        {"a", "", "invalid name"},
        {"a", "1a", "invalid name"},
        {"a", "a b", "invalid name"},
        {"a", std::string(128, 'n'), "invalid name"},
        {"a", "taken", "name in use"},
    };
    for (const auto& c : refused) EXPECT_EQ(rename.Rename(space_, c.from, c.to), c.text) << c.to;
    EXPECT_EQ(space_.FindData("a"), a);

    EXPECT_EQ(rename.Rename(space_, "a", "z_1.phase"), "rename successful");
    EXPECT_EQ(space_.FindData("a"), nullptr);
    CZrkData* renamed = space_.FindData("z_1.phase");
    ASSERT_EQ(renamed, a);
    EXPECT_EQ(renamed->Data(), samples);
    EXPECT_TRUE(renamed->HasUndo());
    // The sorted list is sorted again.
    EXPECT_STREQ(space_.GetData(space_.Count() - 1)->name, "z_1.phase");
    EXPECT_EQ(rename.old_name, "a");
    EXPECT_EQ(rename.new_name, "z_1.phase");
}

}  // namespace
