// The image view's logic: zoom, read-out, profiles, angle, and the edits with their undo.
#include "display/image_view.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "core/data_space.h"
#include "core/host.h"
#include "tests/display/view_test_util.h"

namespace {

class ImageViewTest : public ::testing::Test {
  protected:
    // x ramp: a[x][y] = x + 100 * y, 16 x 8 x 2.
    CZrkData* Ramp() {
        CZrkData* a = space_.NewData(TYPE_R4, 16, 8, 2, 1, 1, 1, "a");
        auto* f = static_cast<float*>(a->Data());
        for (int z = 0; z < 2; ++z)
            for (int y = 0; y < 8; ++y)
                for (int x = 0; x < 16; ++x) f[(z * 8 + y) * 16 + x] = x + 100.0f * y + 1000.0f * z;
        return a;
    }
    const float* Samples(const char* name) {
        const CZrkData* r = space_.FindData(name);
        return r ? static_cast<const float*>(r->Data()) : nullptr;
    }

    CDataSpace space_;
    CHeadlessHost host_;
    CScopedHost scoped_{host_};
    C2d options_;
    CZrkData* a_ = Ramp();
    CTestDoc doc_{LOOK_2D, a_};
    CTestView view_{doc_, options_, space_};
};

TEST_F(ImageViewTest, ZoomStepsStayWithinTheirEnds) {
    float* zoom = doc_.look.palplane.zoom;
    view_.OnZoom400();
    EXPECT_EQ(zoom[0], 400);
    for (int i = 0; i < 10; ++i) view_.OnZoomIn();
    EXPECT_EQ(zoom[0], 6400);
    EXPECT_EQ(zoom[1], 6400);
    view_.OnZoom25();
    for (int i = 0; i < 10; ++i) view_.OnZoomOut();
    EXPECT_EQ(zoom[0], 1);

    view_.zoom_mode = 1;
    view_.SizeFrame(320, 100);
    EXPECT_EQ(zoom[0], 2000);
    EXPECT_EQ(zoom[1], 1);
    view_.zoom_mode = 3;
    view_.SizeFrame(32, 80);
    EXPECT_EQ(zoom[0], 200);
    EXPECT_EQ(zoom[1], 1000);
    view_.zoom_mode = 4;  // keeps the 1 : 5 aspect
    view_.SizeFrame(64, 800);
    EXPECT_EQ(zoom[0], 400);
    EXPECT_EQ(zoom[1], 2000);

    view_.SetZoom(200);
    view_.Pan(10, 4);
    int x, y;
    EXPECT_TRUE(view_.ToData(0, 0, x, y));
    EXPECT_EQ(x, 5);
    EXPECT_EQ(y, 2);
    EXPECT_FALSE(view_.ToData(100, 0, x, y));
}

TEST_F(ImageViewTest, ReadOutNamesThePixelAndItsValue) {
    view_.page[0] = 1;
    EXPECT_EQ(view_.OverlayInfo(3, 2), " a[3][2][1] = 1203.000");
    EXPECT_EQ(view_.OverlayInfo(16, 0), "");
    CZrkData* c = space_.NewData(TYPE_CR4, 1, 1, 1, 1, 1, 1, "c");
    static_cast<float*>(c->Data())[0] = 0;
    static_cast<float*>(c->Data())[1] = 2;
    CTestDoc doc(LOOK_2D, c);
    CTestView v(doc, options_, space_);
    EXPECT_EQ(v.OverlayInfo(0, 0), " c[0][0] = 2.000, 1.571 radians");
    doc.look.radians = 0;
    EXPECT_EQ(v.OverlayInfo(0, 0), " c[0][0] = 2.000, 90.000 degrees");

    a_->mm[0] = 0.5f, a_->mm[1] = 2;
    view_.cursor_mode = CImageView::CURSOR_PROFILE;
    view_.SetProfile(space_, 0, 0, 6, 2);
    EXPECT_EQ(view_.OverlayInfo(0, 0), " a[0][0][1] = 1000.000, |d|= 5.000");
}

TEST_F(ImageViewTest, ProfilesFollowTheLineAndAverageItsWidth) {
    view_.SetProfile(space_, 2, 3, 12, 3);
    std::vector<float> line;
    ASSERT_EQ(view_.LoadProfile(space_, 0, line), 1);
    ASSERT_EQ(line.size(), 11u);
    for (int i = 0; i < 11; ++i) EXPECT_FLOAT_EQ(line[i], 2 + i + 300.0f);
    options_.profile_width = 3;
    ASSERT_EQ(view_.LoadProfile(space_, 0, line), 1);
    for (int i = 0; i < 11; ++i) EXPECT_FLOAT_EQ(line[i], 2 + i + 300.0f);  // rows 2, 3, 4
    view_.SetProfile(space_, 2, 0, 12, 0);
    ASSERT_EQ(view_.LoadProfile(space_, 0, line), 1);
    // Rows -1 (clamped to 0), 0 and 1.
    EXPECT_FLOAT_EQ(line[0], 2 + 100.0f / 3);
    options_.profile_width = 1;
    view_.SetProfile(space_, -5, 1, 30, 1);
    ASSERT_EQ(view_.LoadProfile(space_, 1, line), 1);
    EXPECT_FLOAT_EQ(line.front(), 1100);
    EXPECT_FLOAT_EQ(line.back(), 1115);
    view_.SetProfile(space_, 4, 4, 4, 4);
    EXPECT_EQ(view_.LoadProfile(space_, 0, line), 0);
    EXPECT_EQ(host_.status.back(), "invalid profile");
}

TEST_F(ImageViewTest, PlotsAndAppendsOfProfiles) {
    view_.SetProfile(space_, 0, 1, 3, 1);
    ASSERT_EQ(view_.PlotProfile(space_), 1);
    const CZrkData* p = space_.FindData("a_p00");
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->nx, 4u);
    EXPECT_EQ(Samples("a_p00")[3], 103);
    EXPECT_EQ(host_.history.back(), " a profile (0,1)-(3,1) = 4 in a_p00\r\n");
    EXPECT_EQ(host_.status.back(), "display failed");
    view_.SetProfile(space_, 0, 2, 3, 2);
    ASSERT_EQ(view_.AppendLastProfile(space_), 1);
    EXPECT_EQ(p->ny, 2u);
    EXPECT_EQ(Samples("a_p00")[7], 203);
    view_.SetProfile(space_, 0, 2, 5, 2);
    EXPECT_EQ(view_.AppendLastProfile(space_), 0);
    EXPECT_EQ(host_.status.back(), "profile has changed length");
    EXPECT_EQ(view_.AppendProfile(space_, "gone"), 0);
    EXPECT_EQ(host_.status.back(), "previous profile no longer exists");

    ASSERT_EQ(view_.PlotProfileThruZ(space_), 1);
    const CZrkData* z = space_.FindData("a_p01");
    ASSERT_NE(z, nullptr);
    EXPECT_EQ(z->nz, 2u);
    EXPECT_EQ(Samples("a_p01")[6 + 5], 1205);
    EXPECT_EQ(view_.AppendProfile(space_, "a_p01"), 0);
    EXPECT_EQ(host_.status.back(), "can not append to multi-plane plot");

    ASSERT_EQ(view_.PlotThruZ(space_, 3, 1), 1);
    EXPECT_EQ(host_.history.back(), " a[3,1] through plane\r\n");
    EXPECT_EQ(Samples("a_p02")[1], 1103);
    view_.OnScrollT();
    EXPECT_EQ(view_.PlotThruZ(space_, 3, 1), 0);
    EXPECT_EQ(host_.status.back(), "scroll dimension is 1");
}

TEST_F(ImageViewTest, AngleAtTheSecondClick) {
    const float right[6] = {5, 0, 0, 0, 0, 5};
    EXPECT_NEAR(CImageView::Angle(right), M_PI / 2, 1e-9);
    const float same[6] = {1, 1, 1, 1, 4, 7};
    EXPECT_EQ(CImageView::Angle(same), 0.0);
    const float straight[6] = {0, 0, 1, 1, 2, 2};
    EXPECT_NEAR(CImageView::Angle(straight), M_PI, 1e-9);
    doc_.look.radians = 0;
    view_.OnAngle(space_, 4, 0);
    EXPECT_EQ(host_.status.back(), " click left button 3 times to define angle");
    view_.OnAngle(space_, 0, 0);
    view_.OnAngle(space_, 3, 3);
    EXPECT_EQ(host_.status.back(), " angle= 45.000 degrees");
    EXPECT_EQ(space_.FindData("zrk_angle")->Count(), 6u);
}

TEST_F(ImageViewTest, CropTransposeRotateAndCatKeepAnUndo) {
    CZrkData* rect = space_.NewData(TYPE_R4, 4, 1, 1, 1, 1, 1, "roi_rect");
    const float r[4] = {5, 6, 2, 1};
    std::memcpy(rect->Data(), r, sizeof r);
    ASSERT_EQ(view_.OnCrop(space_), 1);
    EXPECT_EQ(a_->nx, 4u);
    EXPECT_EQ(a_->ny, 6u);
    EXPECT_EQ(static_cast<float*>(a_->Data())[0], 102);
    EXPECT_EQ(host_.history.back(), " a crop [2][1] to [5][6]\r\n");
    EXPECT_EQ(host_.status.back(), "crop complete");
    EXPECT_TRUE(a_->HasUndo());
    a_->Undo();
    EXPECT_EQ(a_->nx, 16u);

    ASSERT_EQ(view_.OnTransposeXy(), 1);
    EXPECT_EQ(a_->nx, 8u);
    EXPECT_EQ(static_cast<float*>(a_->Data())[1], 100);
    EXPECT_EQ(host_.status.back(), "transpose complete");
    a_->Undo();
    ASSERT_EQ(view_.OnRotate90(), 1);
    EXPECT_EQ(a_->nx, 8u);
    EXPECT_EQ(a_->ny, 16u);
    a_->Undo();

    CZrkData* b = space_.NewData(TYPE_R4, 16, 2, 2, 1, 1, 1, "b");
    std::memset(b->Data(), 0, b->Bytes());
    ASSERT_EQ(view_.OnCatTop(space_, b), 1);
    EXPECT_EQ(a_->ny, 10u);
    EXPECT_EQ(static_cast<float*>(a_->Data())[2 * 16 + 1], 1);  // a's row 0 below b's two rows
    EXPECT_EQ(host_.status.back(), "cat top complete");
    CZrkData* narrow = space_.NewData(TYPE_R4, 3, 3, 1, 1, 1, 1, "narrow");
    EXPECT_EQ(view_.OnCatRight(space_, narrow), 0);
    EXPECT_EQ(a_->ny, 10u);
}

}  // namespace
