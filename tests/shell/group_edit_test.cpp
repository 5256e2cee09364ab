// The group commands without a toolkit: the scrolls step the views the frame hands over, the
// region edits keep the region object's own failure texts (and its history lines), and an
// array a command does not fit stays while the other selected ones change.
#include "shell/group_edit.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "core/host.h"
#include "core/window_space.h"
#include "tests/display/view_test_util.h"

namespace {

class GroupEditTest : public ::testing::Test {
  protected:
    void SetUp() override {
        for (auto [name, nx] : {std::pair{"ga", 4}, std::pair{"gb", 8}}) {
            CZrkData* a = space_.NewData(TYPE_R4, nx, 2, 3, 1, 1, 1, name);
            auto* f = static_cast<float*>(a->Data());
            for (size_t k = 0; k < a->Count(); ++k) f[k] = float(k + 1);
            auto doc = std::make_unique<CTestDoc>(LOOK_2D, a);
            CTestDoc* d = doc.get();
            std::snprintf(d->name, sizeof d->name, "%s", name);
            windows_.NewData(std::move(doc));
            d->select = 1;
            views_.push_back(std::make_unique<CTestView>(*d, options_, space_));
        }
    }
    void TearDown() override {
        while (GlobalDataSpace().Count() > 0) GlobalDataSpace().DelData(0);
    }
    static void Set(const char* name, const std::vector<float>& v) {
        GlobalDataSpace().DelData(name);
        CZrkData* r = GlobalDataSpace().NewData(TYPE_R4, v.size(), 1, 1, 1, 1, 1, name);
        std::copy(v.begin(), v.end(), static_cast<float*>(r->Data()));
    }
    std::string Run(const char* text, int roi_kind = ROI_RECT) {
        return GroupEdit(space_, windows_, GroupCommandIndex(text), [&](CWindowEntry& w) {
            CGroupView g;
            for (auto& v : views_)
                if (&v->Doc() == &w) g.view = v.get();
            g.roi_kind = roi_kind;
            g.plane = 1;
            return g;
        });
    }

    CDataSpace space_;
    CWindowSpace windows_;
    CHeadlessHost host_;
    CScopedHost scoped_{host_};
    C2d options_;
    std::vector<std::unique_ptr<CTestView>> views_;
};

TEST_F(GroupEditTest, ScrollsStepEverySelectedView) {
    windows_.FindByName("gb")->select = 0;
    EXPECT_EQ(Run("scroll z"), "scroll z: 1 display");
    EXPECT_EQ(views_[0]->page[0], 1u);
    EXPECT_EQ(views_[0]->scroll_mode, 2);
    EXPECT_EQ(views_[1]->page[0], 0u);
    windows_.FindByName("gb")->select = 1;
    EXPECT_EQ(Run("scroll all"), "scroll all: 2 displays");
    EXPECT_EQ(views_[0]->page[0], 2u);
    EXPECT_EQ(views_[1]->page[0], 1u);
    // Without views there is nothing to scroll; arrays are left alone.
    EXPECT_EQ(GroupEdit(space_, windows_, GroupCommandIndex("scroll t")), "scroll t: 0 displays");
    EXPECT_EQ(GroupEdit(space_, windows_, kGroupCommands), "command not available");
    EXPECT_EQ(GroupEdit(space_, windows_, -1), "command not available");
}

TEST_F(GroupEditTest, RegionEditsKeepTheirTextsAndSpareOnlyTheArraysTheyMiss) {
    CZrkData* ga = space_.FindData("ga");
    CZrkData* gb = space_.FindData("gb");
    Set("roi_x", {5, 6});
    EXPECT_EQ(Run("crop 1d"), "1d roi is invalid");
    EXPECT_EQ(ga->Res(0), 4u);
    EXPECT_FALSE(ga->HasUndo());
    ASSERT_EQ(gb->Res(0), 2u);
    EXPECT_FLOAT_EQ(static_cast<float*>(gb->Data())[0], 6.0f);
    // The region object's history line passes through to the host.
    EXPECT_NE(host_.history_text.find("error caught: CRoi::Crop1dRoi:"), std::string::npos);
    gb->Undo();

    // zero 1d: the x range on the plane each view shows (here 1), every row.
    Set("roi_x", {1, 2});
    EXPECT_EQ(Run("zero 1d"), "zero 1d: 2 displays");
    for (CZrkData* a : {ga, gb}) {
        const auto* f = static_cast<const float*>(a->Data());
        for (size_t k = 0; k < a->Count(); ++k) {
            const size_t x = k % a->nx, plane = k / (a->nx * 2);
            ASSERT_FLOAT_EQ(f[k], plane == 1 && x >= 1 && x <= 2 ? 0.0f : float(k + 1)) << k;
        }
        a->Undo();
    }
    GlobalDataSpace().DelData("roi_x");
    EXPECT_EQ(Run("zero 1d"), "1d roi does not exist");
    EXPECT_EQ(Run("zero 2d"), "invalid 2d roi");
    EXPECT_EQ(Run("crop 2d"), "invalid 2d roi");
    // A display without a drawn region uses roi_mask as it stands: none once it is freed.
    GlobalDataSpace().DelData("roi_mask");
    EXPECT_EQ(Run("crop 2d", ROI_2D), "roi_mask does not exist");
    EXPECT_FALSE(ga->HasUndo());
    EXPECT_FALSE(gb->HasUndo());
}

}  // namespace
