// The region side of the image view in a running main window: a drag at 200 % with a pan,
// the outline in the grabbed picture, the add modes and the region entries.
#include <QAction>
#include <QLabel>
#include <QTest>
#include <cstring>

#include "core/host.h"
#include "display/roi_mask.h"
#include "tests/display/gui_fixture.h"

namespace {

class View2dRoiTest : public DisplayGuiTest {
  protected:
    void SetUp() override {
        DisplayGuiTest::SetUp();
        while (GlobalDataSpace().Count() > 0) GlobalDataSpace().DelData(0);
    }
    void TearDown() override {
        while (GlobalDataSpace().Count() > 0) GlobalDataSpace().DelData(0);
        DisplayGuiTest::TearDown();
    }
    CView2d* OpenPlane() {
        CZrkData* a = space_.NewData(TYPE_R4, 64, 64, 1, 1, 1, 1, "a");
        auto* f = static_cast<float*>(a->Data());
        for (int k = 0; k < 64 * 64; ++k) f[k] = static_cast<float>(k % 64 + 64 * (k / 64));
        CView2d* view = Open("a");
        view->resize(200, 200);
        return view;
    }
    static void Trigger(CView2d* view, const char* name) {
        QAction* a = view->Frame()->findChild<QAction*>(name);
        ASSERT_NE(a, nullptr) << name;
        a->trigger();
    }
    static void Drag(CView2d* view, QPoint from, QPoint to) {
        QTest::mousePress(view, Qt::LeftButton, {}, from);
        QMouseEvent move(QEvent::MouseMove, QPointF(to), view->mapToGlobal(QPointF(to)),
                         Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(view, &move);
        QTest::mouseRelease(view, Qt::LeftButton, {}, to);
    }
    static std::vector<float> Record(const char* name) {
        const CZrkData* r = GlobalDataSpace().FindData(name);
        if (!r || !r->data) return {};
        const auto* v = static_cast<const float*>(r->data);
        return {v, v + r->Count()};
    }
};

TEST_F(View2dRoiTest, DragAtTwiceWithAPanStoresDataCornersAndShowsTheOutline) {
    CView2d* view = OpenPlane();
    Trigger(view, "zoom_mode_0");
    Trigger(view, "zoom_200");
    view->Pan(20, 10);
    Trigger(view, "cursor_6");
    EXPECT_EQ(view->Frame()->StatusLine()->text(), " drag left button to define roi");
    // Screen (30, 50) is data ((30 + 20) / 2 - 0.5, (50 + 10) / 2 - 0.5).
    Drag(view, QPoint(30, 50), QPoint(110, 130));
    EXPECT_EQ(Record("roi_rect"), (std::vector<float>{24.5f, 29.5f, 64.5f, 69.5f}));
    view->Look().roi_color = 0x00ff00;  // green, 0xBBGGRR
    const QImage shot = view->grab().toImage();
    // The outline passes through the corners the mouse went through.
    EXPECT_EQ(shot.pixelColor(30, 50), QColor(0, 255, 0));
    EXPECT_EQ(shot.pixelColor(70, 50), QColor(0, 255, 0));
    EXPECT_EQ(shot.pixelColor(30, 90), QColor(0, 255, 0));
    EXPECT_NE(shot.pixelColor(70, 90), QColor(0, 255, 0));

    // Statistics of that rectangle: corners truncated and clamped, x 24 ... 63, y 29 ... 63.
    CHeadlessHost host;
    CScopedHost scoped(host);
    Trigger(view, "roi_stats");
    ASSERT_EQ(host.history.size(), 1u);
    EXPECT_EQ(host.history[0].rfind("[][]a ", 0), 0u);
    EXPECT_NE(host.history[0].find(", 1400\r\n"), std::string::npos) << host.history[0];
}

TEST_F(View2dRoiTest, AddThenUndoAddRestoresTheMask) {
    CView2d* view = OpenPlane();
    Trigger(view, "cursor_6");
    Drag(view, QPoint(4, 4), QPoint(20, 20));
    CZrkData* mask = GetRoiMask(ROI_RECT, 64, 64);
    const std::string before(static_cast<const char*>(mask->data), mask->Bytes());
    Trigger(view, "cursor_11");  // "+ rectangle roi"
    Drag(view, QPoint(30, 30), QPoint(40, 50));
    mask = GlobalDataSpace().FindData("roi_mask");
    const std::string added(static_cast<const char*>(mask->data), mask->Bytes());
    EXPECT_NE(added, before);
    EXPECT_EQ(view->RoiKind(), ROI_2D);
    Trigger(view, "cursor_14");  // "undo add"
    EXPECT_EQ(std::string(static_cast<const char*>(mask->data), mask->Bytes()), before);
}

TEST_F(View2dRoiTest, FillAndUndoFromTheMenu) {
    CView2d* view = OpenPlane();
    CZrkData* a = space_.FindData("a");
    const std::string before(static_cast<const char*>(a->data), a->Bytes());
    Trigger(view, "cursor_7");
    Drag(view, QPoint(10, 10), QPoint(30, 40));
    Trigger(view, "roi_zero_inside");
    const auto* f = static_cast<const float*>(a->data);
    EXPECT_EQ(f[20 * 64 + 20], 0);
    EXPECT_EQ(f[60 * 64 + 60], 60 * 64 + 60);
    Trigger(view, "roi_undo");
    EXPECT_EQ(std::string(static_cast<const char*>(a->data), a->Bytes()), before);
    Trigger(view, "roi_select_all");
    EXPECT_EQ(Record("roi_rect"), (std::vector<float>{0, 0, 63, 63}));
    Trigger(view, "roi_crop");
    EXPECT_EQ(a->nx, 64u);
}

}  // namespace
