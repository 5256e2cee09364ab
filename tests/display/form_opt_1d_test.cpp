// The "1d display..." options form in a running main window: reached from the options menu,
// its fields go to the new-display holder, the axis lock and the looks of new plots.
#include <QAction>
#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTimer>

#include "display/plot_options.h"
#include "display/qt/form_opt_1d.h"
#include "tests/display/gui_fixture.h"

namespace {

class FormOpt1dTest : public DisplayGuiTest {};

TEST_F(FormOpt1dTest, FieldsReachTheOptionsAndNewPlots) {
    QAction* entry = frame_->findChild<QAction*>("action_options_1d");
    ASSERT_NE(entry, nullptr);
    EXPECT_TRUE(entry->isEnabled());
    // The entry opens the form; it is filled and confirmed while it runs.
    CNew1d& holder = app_->DisplayModules().new_1d;
    const int lock = Global1d().axis_lock;
    QTimer::singleShot(0, [] {
        auto* form = qobject_cast<CFormOpt1d*>(QApplication::activeModalWidget());
        ASSERT_NE(form, nullptr);
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
    entry->trigger();
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

}  // namespace
