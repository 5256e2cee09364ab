// The spreadsheet display in a running main window: cells of the page shown, an edit typed
// into a cell, refused text, undo, scrolling through planes, refreshes after equations and
// edits, closing.
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <complex>
#include <cstring>

#include "display/edit_table.h"
#include "display/qt/mdi_frame.h"
#include "display/qt/view_edit.h"
#include "tests/display/gui_fixture.h"

namespace {

class ViewEditTest : public DisplayGuiTest {
  protected:
    // The spreadsheet of `name` as the desktop opens it.
    CViewEdit* OpenEdit(const char* name) {
        if (OpenEditDisplay(space_, name) != "edit data") return nullptr;
        QMdiSubWindow* w = frame_->Mdi()->subWindowList().back();
        return w->findChild<CViewEdit*>("view_edit");
    }
    static QString Cell(CViewEdit* view, int x, int y) {
        return view->model()->index(y, x).data().toString();
    }
    // Types `text` into cell (x, y) as a user does: start editing, type, Return.
    static void TypeInto(CViewEdit* view, int x, int y, const char* text) {
        // The editor of an earlier edit goes first, so that the one found is this edit's.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        const QModelIndex index = view->model()->index(y, x);
        view->setCurrentIndex(index);
        view->edit(index);
        auto* editor = view->viewport()->findChild<QLineEdit*>();
        ASSERT_NE(editor, nullptr);
        editor->selectAll();
        QTest::keyClicks(editor, text);
        QTest::keyClick(editor, Qt::Key_Return);
        QApplication::processEvents();
    }
    static CMdiFrame* FrameOf(QWidget* w) {
        while (w && !qobject_cast<CMdiFrame*>(w)) w = w->parentWidget();
        return qobject_cast<CMdiFrame*>(w);
    }
    static void Trigger(CViewEdit* view, const char* name) {
        CMdiFrame* frame = FrameOf(view);
        ASSERT_NE(frame, nullptr);
        QAction* a = frame->findChild<QAction*>(name);
        ASSERT_NE(a, nullptr) << name;
        a->trigger();
    }
    static QString Status(CViewEdit* view) { return FrameOf(view)->StatusLine()->text(); }
};

TEST_F(ViewEditTest, TypedValuesSetSamplesWithUndoAndBadTextIsRefused) {
    CZrkData* made = space_.NewData(TYPE_R4, 3, 2, 1, 1, 1, 1, "e");
    for (int k = 0; k < 6; ++k) static_cast<float*>(made->Data())[k] = float(k);
    CViewEdit* view = OpenEdit("e");
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->model()->columnCount(), 3);
    EXPECT_EQ(view->model()->rowCount(), 2);
    CZrkData* e = space_.FindData("e");
    auto* f = static_cast<float*>(e->Data());
    ASSERT_EQ(f[4], 4.0f);
    EXPECT_EQ(Cell(view, 1, 1), "4");
    // A 2d display of the same array redraws after the edit.
    CView2d* image = Open("e");
    ASSERT_NE(image, nullptr);
    image->Picture();
    const int renders = image->Renders();

    TypeInto(view, 1, 1, "2.25");
    f = static_cast<float*>(space_.FindData("e")->Data());
    EXPECT_EQ(f[4], 2.25f);
    EXPECT_EQ(Cell(view, 1, 1), "2.250");
    EXPECT_EQ(Status(view), "e[1][1]= 2.250");
    image->Picture();
    EXPECT_EQ(image->Renders(), renders + 1);

    TypeInto(view, 0, 0, "two");
    f = static_cast<float*>(e->Data());
    EXPECT_EQ(f[0], 0.0f);
    EXPECT_EQ(Status(view), "not a number: two");
    EXPECT_EQ(Cell(view, 0, 0), "0");

    Trigger(view, "edit_undo");
    EXPECT_EQ(static_cast<float*>(e->Data())[4], 4.0f);
    EXPECT_EQ(Cell(view, 1, 1), "4");
}

TEST_F(ViewEditTest, EquationsAndScrollingShowTheNewCells) {
    CZrkData* a = space_.NewData(TYPE_CR4, 2, 2, 3, 1, 1, 1, "w");
    auto* z = static_cast<std::complex<float>*>(a->Data());
    for (int k = 0; k < 12; ++k) z[k] = {float(k), -0.5f};
    CViewEdit* view = OpenEdit("w");
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(Cell(view, 1, 0), "1, -0.5000");
    Trigger(view, "scroll_z");
    Trigger(view, "scroll_next");
    EXPECT_EQ(Cell(view, 1, 0), "5, -0.5000");
    EXPECT_EQ(Status(view), "w i/q:[1]");
    TypeInto(view, 0, 1, "7, 8");
    EXPECT_EQ(static_cast<std::complex<float>*>(space_.FindData("w")->Data())[6],
              std::complex<float>(7, 8));

    // The equation bar changes the array, and its shape: the table follows.
    Type("w = w * 2");
    EXPECT_EQ(Cell(view, 0, 1), "14, 16");
    Type("w = {1, 2, 3}");
    EXPECT_EQ(view->model()->columnCount(), 3);
    EXPECT_EQ(view->model()->rowCount(), 1);
    EXPECT_EQ(Cell(view, 2, 0), "3");
    // Freeing the array closes its spreadsheet.
    Type("free(w)");
    QApplication::processEvents();
    EXPECT_EQ(Windows(), 0);
}

}  // namespace
