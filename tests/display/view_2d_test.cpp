// The image view in a running main window: the picture it holds, the rgb view, the scroll
// timer, zoom, the clipboard, redraws after equations, closing, and the mouse.
#include <QAction>
#include <QClipboard>
#include <QLabel>
#include <QMimeData>
#include <QTest>
#include <cstring>

#include "display/binary_copy.h"
#include "display/qt/mdi_doc.h"
#include "tests/display/gui_fixture.h"

namespace {

class View2dTest : public DisplayGuiTest {
  protected:
    CZrkData* Ramp(const char* name, res_t nx = 256, res_t ny = 4, bool down = false) {
        CZrkData* a = space_.NewData(TYPE_R4, nx, ny, 1, 1, 1, 1, name);
        auto* f = static_cast<float*>(a->Data());
        for (res_t y = 0; y < ny; ++y)
            for (res_t x = 0; x < nx; ++x)
                f[y * nx + x] = float(down ? 255 - x % 256 : x % 256) + y * 0;
        return a;
    }
    static void Trigger(CView2d* view, const char* name) {
        QAction* a = view->Frame()->findChild<QAction*>(name);
        ASSERT_NE(a, nullptr) << name;
        a->trigger();
    }
};

TEST_F(View2dTest, PictureHoldsThePaletteColourOfEachIndexRowZeroOnTop) {
    CZrkData* a = Ramp("a");
    static_cast<float*>(a->Data())[256 * 3 + 7] = 200;  // row 3 differs
    CView2d* view = Open("a");
    ASSERT_NE(view, nullptr);
    const QImage& image = view->Picture();
    ASSERT_EQ(image.format(), QImage::Format_Indexed8);
    EXPECT_EQ(image.width(), 256);
    for (int x = 0; x < 256; x += 9) EXPECT_EQ(image.pixel(x, 0), qRgb(x, x, x)) << x;
    EXPECT_EQ(image.pixel(7, 3), qRgb(200, 200, 200));
    Trigger(view, "cursor_15");  // refresh
    EXPECT_EQ(view->Frame()->StatusLine()->text(), " min,max= 0.000, 255.000");
    Trigger(view, "palette_jet");
    EXPECT_EQ(view->Picture().pixel(128, 1), qRgb(131, 255, 128));
    Trigger(view, "bitmap_3");
    EXPECT_EQ(view->Picture().format(), QImage::Format_RGB32);
    EXPECT_EQ(view->Picture().pixel(128, 1), qRgb(131, 255, 128));

    Ramp("narrow", 3, 2);
    CView2d* narrow = Open("narrow");
    const QImage& small = narrow->Picture();
    EXPECT_EQ(small.bytesPerLine(), 4);
    EXPECT_EQ(small.constScanLine(1)[3], 0);
    EXPECT_EQ(small.pixel(2, 1), qRgb(2, 2, 2));

    // The picture writers' frame: the same indices and the palette.
    const uint64_t page[4] = {0, 0, 0, 0};
    CFrame f;
    ASSERT_EQ(narrow->Doc().RenderFrame(page, f), 1);
    EXPECT_EQ(f.bits, 8);
    EXPECT_EQ(f.pixels[2], 2);
    EXPECT_EQ(f.palette[2][1], 2);
}

TEST_F(View2dTest, RgbViewHoldsTheThreeGreyIndices) {
    Ramp("r");
    Ramp("g", 256, 4, true);
    CZrkData* b = Ramp("b");
    std::memset(b->Data(), 0, b->Bytes());
    CView2d* view = Open("r", LOOK_RGB, "g", "b");
    ASSERT_NE(view, nullptr);
    for (int x = 0; x < 256; x += 15) EXPECT_EQ(view->Picture().pixel(x, 2), qRgb(x, 255 - x, 0));
    const uint64_t page[4] = {0, 0, 0, 0};
    CFrame f;
    ASSERT_EQ(view->Doc().RenderFrame(page, f), 1);
    EXPECT_EQ(f.bits, 32);
}

TEST_F(View2dTest, ScrollMenuRunsTheTimerAndStepsPlanes) {
    CZrkData* a = space_.NewData(TYPE_R4, 4, 4, 3, 1, 1, 1, "stack");
    std::memset(a->Data(), 0, a->Bytes());
    CView2d* view = Open("stack");
    Trigger(view, "scroll_100ms");
    EXPECT_TRUE(view->Timer().isActive());
    EXPECT_EQ(view->Timer().interval(), 100);
    Trigger(view, "scroll_500ms");
    EXPECT_TRUE(view->Timer().isActive());
    EXPECT_EQ(view->Timer().interval(), 500);
    Trigger(view, "scroll_stop");
    EXPECT_FALSE(view->Timer().isActive());
    Trigger(view, "scroll_next");
    Trigger(view, "scroll_next");
    EXPECT_EQ(view->page[0], 2u);
    EXPECT_EQ(view->Doc().page_z, 2);
    // A workspace sets the page on the document after the view is made.
    static_cast<float*>(a->Data())[16] = 300;
    view->Doc().page_z = 1;
    view->Draw();
    EXPECT_EQ(view->Picture().pixel(0, 0), qRgb(255, 255, 255));
    EXPECT_EQ(view->page[0], 1u);
    EXPECT_TRUE(view->Frame()->StatusLine()->text().startsWith("stack i/q:[2]"));
}

TEST_F(View2dTest, ZoomMenuAndAPaintFarIn) {
    Ramp("a", 512, 512);
    CView2d* view = Open("a");
    Trigger(view, "zoom_200");
    EXPECT_EQ(view->ZoomPlane().zoom[0], 200);
    for (int i = 0; i < 8; ++i) Trigger(view, "zoom_in");
    EXPECT_EQ(view->ZoomPlane().zoom[1], 6400);
    view->resize(300, 300);
    view->Pan(1000, 1000);
    const QImage shot = view->grab().toImage();
    EXPECT_EQ(shot.width(), 300);
    // Pixel (x, y) of the plane covers 64 x 64 screen pixels; pan 1000 starts inside x = 15.
    EXPECT_EQ(shot.pixel(10, 10), qRgb(15, 15, 15));
    EXPECT_EQ(shot.pixel(200, 10), qRgb(18, 18, 18));
}

TEST_F(View2dTest, CopyGivesThePictureAndTheArray) {
    CZrkData* a = Ramp("a", 16, 8);
    CView2d* view = Open("a");
    Trigger(view, "zoom_200");
    Trigger(view, "image_copy");
    EXPECT_EQ(view->Frame()->StatusLine()->text(), "24 bit copy complete");
    const QMimeData* mime = QApplication::clipboard()->mimeData();
    ASSERT_NE(mime, nullptr);
    ASSERT_TRUE(mime->hasImage());
    const QImage image = qvariant_cast<QImage>(mime->imageData());
    EXPECT_EQ(image.width(), 32);
    const QByteArray bytes = mime->data(kBinaryCopyMime);
    CDataSpace other;
    CZrkData* back = BinaryPaste(std::string(bytes.constData(), bytes.size()), other);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(std::memcmp(back->Data(), a->Data(), a->Bytes()), 0);

    Ramp("big", 2048, 2048);
    CView2d* big = Open("big");
    big->SetZoom(6400);
    Trigger(big, "image_copy");
    EXPECT_EQ(big->Frame()->StatusLine()->text(), "copy failed");
    EXPECT_EQ(view->CopyPalToRgb().format(), QImage::Format_RGB888);
}

TEST_F(View2dTest, EquationsRedrawOnlyTheirDisplaysAndFreeCloses) {
    Type("a = {1, 2, 3, 4}");
    Type("b = {5, 6, 7, 8}");
    CView2d* va = Open("a");
    CView2d* vb = Open("b");
    ASSERT_TRUE(va && vb);
    va->Picture();
    vb->Picture();
    const int ra = va->Renders(), rb = vb->Renders();
    Type("a = a * 2");
    va->Picture();
    vb->Picture();
    EXPECT_EQ(va->Renders(), ra + 1);
    EXPECT_EQ(vb->Renders(), rb);
    EXPECT_EQ(Windows(), 2);
    Type("free(a)");
    EXPECT_EQ(Windows(), 1);
    EXPECT_EQ(GlobalWindowSpace().Count(), 1);
}

TEST_F(View2dTest, DeleteDataAndCloseTakesTheArrayToo) {
    Ramp("a", 8, 8);
    Ramp("b", 8, 8);
    CView2d* view = Open("a");
    Open("b");
    Trigger(view, "image_delete_close");
    QApplication::processEvents();
    EXPECT_EQ(space_.FindData("a"), nullptr);
    EXPECT_EQ(Windows(), 1);
    CView2d* vb =
        qobject_cast<CView2d*>(static_cast<CFrame2d*>(frame_->Mdi()->subWindowList()[0])->View());
    Trigger(vb, "image_save_close");
    QApplication::processEvents();
    EXPECT_NE(space_.FindData("b"), nullptr);
    EXPECT_EQ(Windows(), 0);
}

TEST_F(View2dTest, MouseSetsWindowAndLevelAndPans) {
    Ramp("a", 64, 64);
    CView2d* view = Open("a");
    view->resize(128, 128);
    view->Look().palplane.datamin = 0;
    view->Look().palplane.datamax = 200;
    Trigger(view, "cursor_1");
    QTest::mousePress(view, Qt::LeftButton, {}, QPoint(10, 10));
    QMouseEvent move(QEvent::MouseMove, QPointF(30, 10), view->mapToGlobal(QPointF(30, 10)),
                     Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(view, &move);
    QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(30, 10));
    // 20 pixels at 0.5% of a range of 200.
    EXPECT_FLOAT_EQ(view->Look().palplane.window, 256 + 20);
    EXPECT_TRUE(view->Frame()->StatusLine()->text().startsWith(" window=276.000"));

    QTest::mousePress(view, Qt::MiddleButton, {}, QPoint(50, 50));
    QMouseEvent pan(QEvent::MouseMove, QPointF(40, 45), view->mapToGlobal(QPointF(40, 45)),
                    Qt::NoButton, Qt::MiddleButton, {});
    QApplication::sendEvent(view, &pan);
    QTest::mouseRelease(view, Qt::MiddleButton, {}, QPoint(40, 45));
    EXPECT_EQ(view->ZoomPlane().pan[0], 10);
    EXPECT_EQ(view->ZoomPlane().pan[1], 5);
}

}  // namespace
