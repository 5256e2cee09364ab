// The "1d axis etc .." and "xy axis etc .." forms in a running main window: reached from the
// options menu, letters kept out of the number fields, the values in the axis options, the
// looks of new plots and the plot at hand, and back from the preferences file.
#include <QAction>
#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <QTimer>
#include <functional>

#include "display/plot_options.h"
#include "display/qt/form_axis.h"
#include "tests/display/plot_gui_util.h"

namespace {

class FormAxisTest : public PlotFormTest {
  protected:
    void TearDown() override {
        // The axis options live as long as the process; the next test starts from scratch.
        for (CAxisOptions* o : {&Global1d().axes_1d, &Global1d().axes_xy}) {
            *o = CAxisOptions(o->kind);
            o->UpdateLookDefaults();
        }
        PlotFormTest::TearDown();
    }
    // Triggers the menu entry `action`; `fill` works on the form while it runs.
    void Run(const char* action, std::function<void(CFormAxis*)> fill) {
        QAction* entry = frame_->findChild<QAction*>(action);
        ASSERT_NE(entry, nullptr) << action;
        ASSERT_TRUE(entry->isEnabled()) << action;
        QTimer::singleShot(0, [fill] {
            auto* form = qobject_cast<CFormAxis*>(QApplication::activeModalWidget());
            ASSERT_NE(form, nullptr);
            fill(form);
        });
        entry->trigger();
    }
    template <class T>
    static T* Field(CFormAxis* form, const char* name) {
        T* w = form->findChild<T*>(name);
        EXPECT_NE(w, nullptr) << name;
        return w;
    }
};

TEST_F(FormAxisTest, OneDValuesReachNewPlotsAndComeBackFromThePreferences) {
    Run("action_axis_1d", [](CFormAxis* form) {
        auto* tick = Field<QLineEdit>(form, "axis1d_x_tick");
        tick->clear();
        QTest::keyClicks(tick, "abc");
        EXPECT_EQ(tick->text(), "");  // letters refused
        QTest::keyClicks(tick, "2.5");
        EXPECT_EQ(tick->text(), "2.5");
        auto* skip = Field<QSpinBox>(form, "axis1d_y_skipinter");
        skip->selectAll();
        QTest::keyClicks(skip, "x");
        EXPECT_EQ(skip->value(), 0);
        Field<QLineEdit>(form, "axis1d_x_tickformat")->setText("%.1f");
        Field<QLineEdit>(form, "axis1d_y_tickscale")->setText("100");
        Field<QCheckBox>(form, "axis1d_y_grid")->setChecked(true);
        Field<QSpinBox>(form, "axis1d_x_thick")->setValue(3);
        Field<QPushButton>(form, "axis1d_ok")->click();
    });
    const CAxisStyle& x = Global1d().axes_1d.axis[0];
    const CAxisStyle& y = Global1d().axes_1d.axis[1];
    EXPECT_FLOAT_EQ(x.tick, 2.5f);
    EXPECT_EQ(x.tickformat, "%.1f");
    EXPECT_EQ(x.thick, 3);
    EXPECT_FLOAT_EQ(y.tickscale, 100.0f);
    EXPECT_EQ(y.grid, 1);
    // Only the 1d kind changed.
    EXPECT_EQ(CLook(LOOK_XY).axes[0].tick, 0.0f);

    // Through the preferences file and back, over values changed in between.
    ASSERT_EQ(app_->WriteOptions(), 0);
    Global1d().axes_1d = CAxisOptions(LOOK_1D);
    Global1d().axes_1d.UpdateLookDefaults();
    EXPECT_GT(app_->ReadOptions(), 0);
    EXPECT_FLOAT_EQ(x.tick, 2.5f);
    EXPECT_EQ(x.tickformat, "%.1f");
    EXPECT_FLOAT_EQ(y.tickscale, 100.0f);
    EXPECT_EQ(y.grid, 1);

    // A plot opened now: x ticks every 2.5 in the format typed, y values shown times 100.
    Row("a", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    CNew1d& holder = app_->DisplayModules().new_1d;
    holder.names[0] = "a";
    CView1d* view = OpenThrough(holder);
    ASSERT_NE(view, nullptr);
    const CAxisMarks bottom = Marks(view, 1);
    ASSERT_GE(bottom.labels.size(), 5u);
    EXPECT_EQ(bottom.labels[0], "0.0");
    EXPECT_EQ(bottom.labels[1], "2.5");
    EXPECT_EQ(bottom.labels[4], "10.0");
    EXPECT_EQ(view->Look().axes[1].grid, 1);
    EXPECT_EQ(view->Look().axes[0].ax_thick, 3);
    const CAxisMarks left = Marks(view, 2);
    ASSERT_FALSE(left.labels.empty());
    EXPECT_EQ(left.labels.back(), "1000");  // 10 shown times 100

    // Again with the plot active: it takes the new spacing at once.
    frame_->Mdi()->setActiveSubWindow(qobject_cast<QMdiSubWindow*>(view->Frame()));
    Run("action_axis_1d", [](CFormAxis* form) {
        Field<QLineEdit>(form, "axis1d_x_tick")->setText("5");
        Field<QPushButton>(form, "axis1d_ok")->click();
    });
    EXPECT_FLOAT_EQ(view->Look().axes[0].tick, 5.0f);
    EXPECT_EQ(Marks(view, 1).labels, (std::vector<std::string>{"0.0", "5.0", "10.0"}));
}

TEST_F(FormAxisTest, XyFormKeepsItsOwnKindAndCancelChangesNothing) {
    Run("action_axis_xy", [](CFormAxis* form) {
        Field<QLineEdit>(form, "axisxy_y_tick")->setText("0.25");
        Field<QCheckBox>(form, "axisxy_x_grid")->setChecked(true);
        Field<QPushButton>(form, "axisxy_ok")->click();
    });
    EXPECT_FLOAT_EQ(Global1d().axes_xy.axis[1].tick, 0.25f);
    EXPECT_EQ(CLook(LOOK_XY).axes[1].tick, 0.25f);
    EXPECT_EQ(CLook(LOOK_XY).axes[0].grid, 1);
    EXPECT_EQ(CLook(LOOK_1D).axes[1].tick, 0.0f);
    Run("action_axis_xy", [](CFormAxis* form) {
        Field<QLineEdit>(form, "axisxy_y_tick")->setText("7");
        Field<QPushButton>(form, "axisxy_cancel")->click();
    });
    EXPECT_FLOAT_EQ(Global1d().axes_xy.axis[1].tick, 0.25f);
    // An xy plot opened afterwards carries the spacing.
    Row("x", {0, 1, 2});
    Row("y", {0, 0.5f, 1});
    CNewXy& holder = app_->DisplayModules().new_xy;
    holder.names[0] = "x";
    holder.names[1] = "y";
    CView1d* view = OpenThrough(holder);
    ASSERT_NE(view, nullptr);
    EXPECT_FLOAT_EQ(view->Look().axes[1].tick, 0.25f);
    EXPECT_EQ(Marks(view, 2).major.size(), 5u);  // 0, 0.25, ... 1
}

}  // namespace
