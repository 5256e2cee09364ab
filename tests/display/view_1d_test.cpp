// The plot views in a running main window: the picture DrawBitmap paints, the factories
// (profiles, histograms, the new-display form's 1d and xy kinds), redraws after equations,
// the mouse, the menus, duplicate, copy and closing.
#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QTest>
#include <cmath>
#include <cstring>

#include "display/qt/doc_1d.h"
#include "display/qt/form_new.h"
#include "display/qt/frame_1d.h"
#include "display/qt/view_1d.h"
#include "display/qt/view_xy.h"
#include "tests/display/gui_fixture.h"

namespace {

class View1dTest : public DisplayGuiTest {
  protected:
    CZrkData* Row(const char* name, const std::vector<float>& v, res_t ny = 1) {
        CZrkData* a = space_.NewData(TYPE_R4, v.size() / ny, ny, 1, 1, 1, 1, name);
        std::memcpy(a->Data(), v.data(), v.size() * sizeof(float));
        return a;
    }
    // The plot of `y` (against `x` in an xy plot) through the factory of `kind`.
    CView1d* Plot(const char* y, uint32_t kind = LOOK_1D, const char* x = nullptr) {
        CDisplayRequest r;
        r.kind = kind;
        r.data[0] = space_.FindData(kind == LOOK_XY ? x : y);
        r.data[1] = kind == LOOK_XY ? space_.FindData(y) : nullptr;
        CLook look(kind);
        r.look = &look;
        r.name = y;
        CDisplayEntry* e = DisplayWindow(kind)(r);
        if (!e) return nullptr;
        auto* view = qobject_cast<CView1d*>(static_cast<CMdiDoc*>(e)->Frame()->View());
        view->resize(400, 300);
        return view;
    }
    // The plot views in the area, in the order they opened.
    QList<CView1d*> Plots() const {
        QList<CView1d*> out;
        for (QMdiSubWindow* w : frame_->Mdi()->subWindowList())
            if (auto* f = qobject_cast<CFrame1d*>(w)) out << qobject_cast<CView1d*>(f->View());
        return out;
    }
    static void Trigger(CView1d* view, const char* name) {
        QAction* a = view->Frame()->findChild<QAction*>(name);
        ASSERT_NE(a, nullptr) << name;
        a->trigger();
    }
};

TEST_F(View1dTest, ALineFromCornerToCornerMeetsThePlotsCornersInThePicture) {
    Row("a", {0, 1});
    CView1d* view = Plot("a");
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->objectName(), "view_1d");
    const QImage& image = view->Picture();
    ASSERT_EQ(image.size(), QSize(400, 300));
    const int l = view->PlotLeft(), t = view->PlotTop();
    const int r = l + view->PlotWidth() - 1, b = t + view->PlotHeight() - 1;
    // The line is black (the first line colour) on white; its ends are the plot's corners.
    EXPECT_EQ(image.pixel(l, b), qRgb(0, 0, 0));
    EXPECT_EQ(image.pixel(r, t), qRgb(0, 0, 0));
    EXPECT_EQ(image.pixel((l + r) / 2, (t + b) / 2), qRgb(0, 0, 0));
    // Away from line and axes the background shows; the corner above the line is white.
    EXPECT_EQ(image.pixel(l + 20, t + 5), qRgb(255, 255, 255));
    EXPECT_EQ(image.pixel(2, 2), qRgb(255, 255, 255));
    // The line record's colour (0x00BBGGRR) is what is drawn.
    view->Look().lines[0].color = 0xff0000;
    view->Draw();
    EXPECT_EQ(view->Picture().pixel(l, b), qRgb(0, 0, 255));
    // The picture writers get the same picture.
    const uint64_t page[4] = {0, 0, 0, 0};
    CFrame f;
    ASSERT_EQ(view->Doc().RenderFrame(page, f), 1);
    EXPECT_EQ(f.bits, 32);
    EXPECT_EQ(f.width, 400);
}

TEST_F(View1dTest, AnEquationRedrawsThePlotWithItsNewRange) {
    Type("p = {1, 2, 3, 4}");
    CView1d* view = Plot("p");
    ASSERT_NE(view, nullptr);
    view->Picture();
    EXPECT_EQ(view->scale.ymax, 4);
    const int renders = view->Renders();
    Type("p = p + 1");
    view->Picture();
    EXPECT_GT(view->Renders(), renders);
    EXPECT_EQ(view->scale.ymin, 2);
    EXPECT_EQ(view->scale.ymax, 5);
    Type("free(p)");
    EXPECT_EQ(Windows(), 0);
}

TEST_F(View1dTest, ProfilesHistogramsAndTheNewDisplayFormOpenPlots) {
    Type("img = rampx(0, 255, 64) + rampy(0, 3, 64)");
    CView2d* image = Open("img");
    ASSERT_NE(image, nullptr);
    QAction* hist = image->Frame()->findChild<QAction*>("image_hist");
    ASSERT_NE(hist, nullptr);
    hist->trigger();
    ASSERT_EQ(Plots().size(), 1);
    // A histogram plots its counts against the bin positions.
    CView1d* plot = Plots()[0];
    EXPECT_NE(plot->Data(1), nullptr);
    EXPECT_FALSE(plot->Picture().isNull());

    Row("x", {1, 2, 3});
    Row("y", {4, 5, 6});
    CFormNewXy xy(app_->DisplayModules().new_xy, space_, frame_);
    xy.findChild<QComboBox*>("new_name0")->setCurrentText("x");
    xy.findChild<QComboBox*>("new_name1")->setCurrentText("y");
    xy.findChild<QPushButton*>("new_display")->click();
    ASSERT_EQ(Plots().size(), 2);
    EXPECT_EQ(Plots()[1]->objectName(), "view_xy");
    EXPECT_TRUE(qobject_cast<CViewXy*>(Plots()[1]));
    CFormNew1d one(app_->DisplayModules().new_1d, space_, frame_);
    one.findChild<QComboBox*>("new_name0")->setCurrentText("y");
    one.findChild<QPushButton*>("new_display")->click();
    ASSERT_EQ(Plots().size(), 3);
    EXPECT_EQ(Plots()[2]->Data(0), space_.FindData("y"));
}

TEST_F(View1dTest, MouseZoomsAndReadsOut) {
    std::vector<float> v(101);
    for (int i = 0; i <= 100; ++i) v[i] = static_cast<float>(i % 10);
    Row("a", v);
    CView1d* view = Plot("a");
    view->Picture();
    const int y = view->PlotTop() + 10;
    QMouseEvent move(QEvent::MouseMove, QPointF(view->XPixel(30), y),
                     view->mapToGlobal(QPointF(view->XPixel(30), y)), Qt::NoButton, Qt::NoButton,
                     {});
    QApplication::sendEvent(view, &move);
    EXPECT_EQ(view->Frame()->StatusLine()->text(), " a [30] = 0");
    Trigger(view, "cursor_2");
    EXPECT_EQ(view->Frame()->StatusLine()->text(), " drag left button to draw zoom range");
    QTest::mousePress(view, Qt::LeftButton, {}, QPoint(int(view->XPixel(20)), y));
    QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(int(view->XPixel(40)) + 1, y));
    EXPECT_EQ(view->scale.xmin, 20);
    EXPECT_EQ(view->scale.xmax, 40);
    Trigger(view, "cursor_3");  // zoom out
    EXPECT_EQ(view->scale.xmax, 100);
    Trigger(view, "cursor_4");  // rezoom
    EXPECT_EQ(view->scale.xmax, 40);
    // Zoom to one sample is refused.
    QTest::mousePress(view, Qt::LeftButton, {}, QPoint(int(view->XPixel(25)), y));
    QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(int(view->XPixel(25)) + 1, y));
    EXPECT_EQ(view->Frame()->StatusLine()->text(), "zoomed to less than 1 x point");
    Trigger(view, "cursor_5");  // refresh: the whole range
    EXPECT_EQ(view->scale.xmax, 100);
    Trigger(view, "cursor_pan");
    EXPECT_EQ(view->Frame()->StatusLine()->text(), " zoom in 1st");
}

TEST_F(View1dTest, XRangeDrawnAndItsStatistics) {
    Row("a", {5, 1, 7, 3, 9, 2});
    CView1d* view = Plot("a");
    view->Picture();
    Trigger(view, "cursor_1");
    const int y = view->PlotTop() + 10;
    QTest::mousePress(view, Qt::LeftButton, {}, QPoint(int(view->XPixel(1)), y));
    QMouseEvent move(QEvent::MouseMove, QPointF(view->XPixel(3), y),
                     view->mapToGlobal(QPointF(view->XPixel(3), y)), Qt::NoButton, Qt::LeftButton,
                     {});
    QApplication::sendEvent(view, &move);
    QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(int(view->XPixel(3)), y));
    const CZrkData* roi = GlobalDataSpace().FindData("roi_x");
    ASSERT_NE(roi, nullptr);
    const float* r = static_cast<const float*>(roi->data);
    EXPECT_NEAR(r[0], 1, 0.01);
    EXPECT_NEAR(r[1], 3, 0.01);
    // The range shows in roi_color (red) in the picture.
    const QImage& image = view->Picture();
    const int column = int(std::lround(view->XPixel(r[0])));
    EXPECT_EQ(image.pixel(column, view->PlotTop() + 3), qRgb(255, 0, 0));
    Trigger(view, "roi_minmax");
    EXPECT_EQ(view->Frame()->StatusLine()->text(), " min=1; max=7; n=3");
    Trigger(view, "roi_std");
    EXPECT_TRUE(view->Frame()->StatusLine()->text().startsWith(" mean=3.667; sd=2.494"));
}

TEST_F(View1dTest, MenusChangeTheLookAndTheArray) {
    Row("a", {1, -2, 3, -4, 5, -6}, 2);
    CView1d* view = Plot("a");
    view->Picture();
    EXPECT_EQ(view->RowCount(), 2u);
    // The pipe tool is not there: its entry is disabled.
    QAction* pipe = view->Frame()->findChild<QAction*>("data_pipe_now");
    ASSERT_NE(pipe, nullptr);
    EXPECT_FALSE(pipe->isEnabled());
    Trigger(view, "plot_axis_lock");
    EXPECT_EQ(view->axis_lock, 1);
    Trigger(view, "plot_mag");
    EXPECT_EQ(view->Look().lines[1].iqmp, 2);
    Trigger(view, "data_transpose_xy");
    EXPECT_EQ(view->Data(0)->nx, 2u);
    EXPECT_EQ(view->Frame()->StatusLine()->text(), "transpose complete");
    view->Picture();
    EXPECT_EQ(view->RowCount(), 3u);
    // Duplicate: a second plot of the same array with its own copy of the look.
    view->Look().screen.bg = 0x00ff00;
    view->Draw();
    Trigger(view, "plot_duplicate");
    ASSERT_EQ(Plots().size(), 2);
    CView1d* twin = Plots()[1];
    EXPECT_EQ(twin->Data(0), view->Data(0));
    EXPECT_EQ(twin->Look().screen.bg, 0x00ff00);
    EXPECT_NE(&twin->Look(), &view->Look());
    // Copy: the picture on the clipboard.
    Trigger(view, "plot_copy");
    const QImage copied = QApplication::clipboard()->image();
    EXPECT_EQ(copied.size(), view->Picture().size());
    EXPECT_EQ(copied.pixel(2, 2), qRgb(0, 255, 0));
    // Save asks the program's save dialog for this array.
    CZrkData* asked = nullptr;
    app_->DisplayUi()->save_array = [&](CZrkData* a) { asked = a; };
    Trigger(view, "data_save");
    EXPECT_EQ(asked, view->Data(0));
    Type("free(a)");
    EXPECT_EQ(Windows(), 0);
}

}  // namespace
