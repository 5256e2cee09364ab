// The "1d display..." and "xy display..." forms in a running main window: reached from the
// options menu, letters kept out of colours and numbers, the fields in the holders, the axis
// lock and the looks of new plots, and back from the preferences file.
#include <QAction>
#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <QTimer>
#include <functional>

#include "display/plot_options.h"
#include "display/qt/form_opt_plot.h"
#include "tests/display/plot_gui_util.h"

namespace {

class FormOptPlotTest : public PlotFormTest {
  protected:
    void Run(const char* action, std::function<void(CFormOptPlot*)> fill) {
        QAction* entry = frame_->findChild<QAction*>(action);
        ASSERT_NE(entry, nullptr) << action;
        ASSERT_TRUE(entry->isEnabled()) << action;
        QTimer::singleShot(0, [fill] {
            auto* form = qobject_cast<CFormOptPlot*>(QApplication::activeModalWidget());
            ASSERT_NE(form, nullptr);
            fill(form);
        });
        entry->trigger();
    }
};

TEST_F(FormOptPlotTest, OneDFieldsReachTheOptionsAndNewPlots) {
    CNew1d& holder = app_->DisplayModules().new_1d;
    const int lock = Global1d().axis_lock;
    Run("action_options_1d", [](CFormOptPlot* form) {
        form->findChild<QLineEdit*>("opt1d_linecolor")->setText("ff0000");
        form->findChild<QLineEdit*>("opt1d_backcolor")->setText("not a colour");
        form->findChild<QSpinBox*>("opt1d_thick")->setValue(3);
        form->findChild<QSpinBox*>("opt1d_width")->setValue(300);
        form->findChild<QCheckBox*>("opt1d_axis_top")->setChecked(true);
        form->findChild<QCheckBox*>("opt1d_axis_left_text")->setChecked(false);
        auto* lock_box = form->findChild<QCheckBox*>("opt1d_axis_lock");
        lock_box->setChecked(!lock_box->isChecked());
        form->findChild<QPushButton*>("opt1d_ok")->click();
    });
    EXPECT_EQ(holder.linecolor, 0xff0000u);
    EXPECT_EQ(holder.backcolor, 0xffffffu);  // the bad word kept the colour
    EXPECT_EQ(holder.thick, 3);
    EXPECT_EQ(holder.plotsize[0], 300);
    EXPECT_EQ(Global1d().axis_lock, !lock);
    // A new plot's look: the top axis (kind 3) shown, the left one (kind 2) without labels.
    const CLook look(LOOK_1D);
    EXPECT_EQ(look.axes[2].show, 1);
    EXPECT_EQ(look.axes[1].label, 0);
    EXPECT_EQ(look.screen.bg, 0xffffff);
    Global1d().axis_lock = lock;
}

TEST_F(FormOptPlotTest, XyFieldsRefuseLettersReachNewPlotsAndComeBack) {
    // The xy form has no 1d rows.
    Run("action_options_xy", [](CFormOptPlot* form) {
        EXPECT_EQ(form->findChild<QCheckBox*>("optxy_axis_lock"), nullptr);
        auto* color = form->findChild<QLineEdit*>("optxy_linecolor");
        color->clear();
        QTest::keyClicks(color, "xyz00ff00");  // x, y, z refused
        EXPECT_EQ(color->text(), "00ff00");
        auto* thick = form->findChild<QSpinBox*>("optxy_thick");
        thick->selectAll();
        QTest::keyClicks(thick, "abc");
        EXPECT_EQ(thick->value(), 1);
        thick->setValue(4);
        form->findChild<QSpinBox*>("optxy_symbol")->setValue(2);
        form->findChild<QSpinBox*>("optxy_height")->setValue(200);
        form->findChild<QLineEdit*>("optxy_backcolor")->setText("eeeeee");
        form->findChild<QCheckBox*>("optxy_axis_left_text")->setChecked(false);
        form->findChild<QCheckBox*>("optxy_axis_right")->setChecked(true);
        form->findChild<QPushButton*>("optxy_ok")->click();
    });
    CNewXy& holder = app_->DisplayModules().new_xy;
    EXPECT_EQ(holder.linecolor, 0x00ff00u);
    EXPECT_EQ(holder.thick, 4);
    EXPECT_EQ(holder.symbol, 2);
    EXPECT_EQ(holder.plotsize[1], 200);
    // 1d plots keep their own.
    EXPECT_EQ(app_->DisplayModules().new_1d.thick, 1);
    EXPECT_EQ(CLook(LOOK_1D).axes[1].label, 1);

    // Through the preferences file and back, over values changed in between.
    ASSERT_EQ(app_->WriteOptions(), 0);
    holder.linecolor = 0, holder.thick = 1, holder.symbol = 0, holder.backcolor = 0xffffff;
    holder.axis_text[2] = 1, holder.axis[3] = 0;
    holder.UpdateLookDefaults();
    EXPECT_GT(app_->ReadOptions(), 0);
    EXPECT_EQ(holder.linecolor, 0x00ff00u);
    EXPECT_EQ(holder.thick, 4);
    EXPECT_EQ(holder.symbol, 2);
    EXPECT_EQ(holder.backcolor, 0xeeeeeeu);
    EXPECT_EQ(holder.axis_text[2], 0);
    EXPECT_EQ(holder.axis[3], 1);

    // An xy plot opened now: its line, background, the right axis shown and the left one
    // without labels, the window at the size given.
    Row("x", {0, 1, 2, 3});
    Row("y", {0, 1, 4, 9});
    holder.names[0] = "x";
    holder.names[1] = "y";
    CView1d* view = OpenThrough(holder);
    ASSERT_NE(view, nullptr);
    ASSERT_FALSE(view->Look().lines.empty());
    EXPECT_EQ(view->Look().lines[0].color, 0x00ff00);
    EXPECT_EQ(view->Look().lines[0].thick, 4);
    EXPECT_EQ(view->Look().screen.bg, 0xeeeeee);
    EXPECT_EQ(view->Look().axes[3].show, 1);
    const CAxisMarks left = Marks(view, 2);
    ASSERT_FALSE(left.major.empty());
    for (const std::string& s : left.labels) EXPECT_EQ(s, "");
    const CAxisMarks bottom = Marks(view, 1);
    ASSERT_FALSE(bottom.labels.empty());
    EXPECT_NE(bottom.labels.front(), "");  // the bottom axis keeps its labels
    EXPECT_EQ(view->Picture().pixel(view->width() / 2, 2), QColor(0xee, 0xee, 0xee).rgb());
}

}  // namespace
