// The window/level panel bound to the active image view.
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <cstring>

#include "display/image_options.h"
#include "display/qt/form_wl.h"
#include "tests/display/gui_fixture.h"

namespace {

class FormWLTest : public DisplayGuiTest {
  protected:
    CView2d* OpenRamp() {
        CZrkData* a = space_.NewData(TYPE_R4, 256, 2, 1, 1, 1, 1, "a");
        auto* f = static_cast<float*>(a->Data());
        for (int i = 0; i < 512; ++i) f[i] = float(i % 256);
        return Open("a");
    }
    CFormWL* Form() { return app_->DisplayUi()->FormWL(); }
    template <class T>
    T* Field(const char* name) {
        T* w = Form()->findChild<T*>(name);
        EXPECT_NE(w, nullptr) << name;
        return w;
    }
};

TEST_F(FormWLTest, FollowsTheActiveViewAndWritesEditsBack) {
    CView2d* view = OpenRamp();
    EXPECT_EQ(Form()->Target(), view);
    EXPECT_EQ(Field<QLineEdit>("wl_window")->text(), "256");
    auto* window = Field<QLineEdit>("wl_window");
    window->setText("64");
    emit window->editingFinished();
    EXPECT_EQ(view->Look().palplane.window, 64);
    // The window now spans 96 ... 160.
    EXPECT_EQ(view->Picture().pixel(90, 0), qRgb(0, 0, 0));
    EXPECT_EQ(view->Picture().pixel(100, 0), qRgb(16, 16, 16));
    EXPECT_EQ(view->Picture().pixel(150, 0), qRgb(216, 216, 216));
    Field<QComboBox>("wl_scale")->setCurrentIndex(1);
    EXPECT_EQ(view->Look().palplane.wscale, 1);
    EXPECT_GE(view->Look().palplane.nonlin, 2.0f);
}

TEST_F(FormWLTest, LockedWindowAndLevelReachTheChosenImages) {
    CView2d* a = OpenRamp();
    CZrkData* b = space_.NewData(TYPE_R4, 4, 4, 1, 1, 1, 1, "b");
    std::memset(b->Data(), 0, b->Bytes());
    CView2d* vb = Open("b");
    space_.NewData(TYPE_R4, 4, 4, 1, 1, 1, 1, "c");
    CView2d* vc = Open("c");
    vb->Doc().select = 1;
    Form()->SetTarget(a);
    Global2d().lock_wl = 1;
    auto* window = Field<QLineEdit>("wl_window");
    window->setText("12");
    emit window->editingFinished();
    Global2d().lock_wl = 0;
    EXPECT_EQ(a->Look().palplane.window, 12);
    EXPECT_EQ(vb->Look().palplane.window, 12);
    EXPECT_EQ(vc->Look().palplane.window, 256);
}

TEST_F(FormWLTest, PicturesOfEachPlotKind) {
    CView2d* view = OpenRamp();
    view->SetPalette("jet");
    Form()->SetTarget(view);
    auto* plot = Field<QComboBox>("wl_plot");
    ASSERT_EQ(plot->count(), 5);
    plot->setCurrentIndex(4);
    const QImage bar = Form()->PlotPicture(240, 200);
    // The top of the vertical bar is the last entry of the palette, the bottom the first.
    EXPECT_EQ(bar.pixel(120, 20), qRgb(128, 0, 0));
    EXPECT_EQ(bar.pixel(120, 179), qRgb(0, 0, 131));
    EXPECT_FALSE(Field<QLabel>("wl_picture")->pixmap().isNull());
    plot->setCurrentIndex(2);
    const QImage lut = Form()->PlotPicture(240, 200);
    int blue = 0;
    for (int y = 0; y < lut.height(); ++y)
        for (int x = 0; x < lut.width(); ++x) blue += lut.pixel(x, y) == qRgb(0, 0, 255);
    EXPECT_GT(blue, 100);
    plot->setCurrentIndex(0);
    EXPECT_EQ(Form()->PlotPicture(40, 40).pixel(20, 20), qRgb(255, 255, 255));
}

TEST_F(FormWLTest, CopyAndPasteButtons) {
    CView2d* view = OpenRamp();
    QTest::mouseClick(Field<QPushButton>("wl_paste"), Qt::LeftButton);
    EXPECT_EQ(frame_->StatusText(0), "no window and level to paste");
    QTest::mouseClick(Field<QPushButton>("wl_copy"), Qt::LeftButton);
    EXPECT_EQ(frame_->StatusText(0), "window/level and pal copied");
    view->Look().palplane.window = 3;
    QTest::mouseClick(Field<QPushButton>("wl_paste"), Qt::LeftButton);
    EXPECT_EQ(frame_->StatusText(0), "paste complete");
    EXPECT_EQ(view->Look().palplane.window, 256);
}

}  // namespace
