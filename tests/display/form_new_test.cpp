// The new-display form: its status line, a display that opens, and a name that is not there.
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <cstring>

#include "display/qt/form_new.h"
#include "tests/display/gui_fixture.h"

namespace {

class FormNewTest : public DisplayGuiTest {};

TEST_F(FormNewTest, OpensADisplayOrSaysWhyNot) {
    CZrkData* a = space_.NewData(TYPE_R4, 8, 6, 2, 1, 1, 1, "wave");
    std::memset(a->Data(), 0, a->Bytes());
    CFormNew2d form(app_->DisplayModules().new_2d, space_, frame_);
    auto* name = form.findChild<QComboBox*>("new_name0");
    auto* status = form.findChild<QLabel*>("new_status");
    ASSERT_TRUE(name && status);
    EXPECT_EQ(status->text(), "display 2d");
    name->setCurrentText("nothing");
    QTest::mouseClick(form.findChild<QPushButton*>("new_display"), Qt::LeftButton);
    EXPECT_EQ(status->text(), "data not found");
    EXPECT_EQ(Windows(), 0);
    name->setCurrentText("wave");
    EXPECT_EQ(status->text(), "output= wave (8,6,2,1) in 1 plots");
    QTest::mouseClick(form.findChild<QPushButton*>("new_display"), Qt::LeftButton);
    EXPECT_EQ(form.result(), QDialog::Accepted);
    ASSERT_EQ(Windows(), 1);
    EXPECT_EQ(frame_->Mdi()->subWindowList()[0]->windowTitle(), "wave");

    CFormNewRgb rgb(app_->DisplayModules().new_rgb, space_, frame_);
    rgb.findChild<QComboBox*>("new_name0")->setCurrentText("wave");
    rgb.findChild<QComboBox*>("new_name1")->setCurrentText("wave");
    rgb.findChild<QComboBox*>("new_name2")->setCurrentText("");
    EXPECT_EQ(rgb.findChild<QLabel*>("new_status")->text(), "output= (8,6,2,1) in 1 plots");
    QTest::mouseClick(rgb.findChild<QPushButton*>("new_display"), Qt::LeftButton);
    EXPECT_EQ(Windows(), 2);
}

}  // namespace
