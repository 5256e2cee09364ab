// CSaveAvi driven through its objectNames: the encoder, rate and page ranges reach the
// options only through OK, and an empty range is refused in the dialog.
#include <gtest/gtest.h>

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>

#include "files/qt/save_avi.h"
#include "files/save_avi_model.h"
#include "tests/shell/gui_test_app.h"

namespace {

class SaveAviDialog : public ::testing::Test {
  protected:
    void SetUp() override {
        TestApp();
        save_.fps = 0;  // unset: the dialog offers 1
        save_.ppt = 3;
    }
    template <class W>
    W* Find(QWidget& dialog, const char* name) {
        W* w = dialog.findChild<W*>(name);
        EXPECT_NE(w, nullptr) << name;
        return w;
    }

    CAviOptions avi_;
    CSaveOptions save_;
    const res_t pages_[4] = {5, 3, 0, 1};
};

}  // namespace

TEST_F(SaveAviDialog, OkAppliesTheChoicesAndARefusedRangeChangesNothing) {
    CSaveAviModel model(avi_, save_, pages_);
    CSaveAvi dialog(model);
    EXPECT_EQ(Find<QComboBox>(dialog, "avi_encoder")->currentText(), "Motion JPEG");
    EXPECT_EQ(Find<QSpinBox>(dialog, "avi_fps")->value(), 1);
    EXPECT_EQ(Find<QSpinBox>(dialog, "avi_ppt")->value(), 3);
    EXPECT_EQ(Find<QSpinBox>(dialog, "avi_z_last")->maximum(), 4);
    EXPECT_EQ(Find<QSpinBox>(dialog, "avi_u_last")->maximum(), 0);  // a size of 0 is one page
    EXPECT_EQ(Find<QLabel>(dialog, "avi_frames")->text(), "15");

    Find<QComboBox>(dialog, "avi_encoder")->setCurrentIndex(AVI_FFV1);
    Find<QSpinBox>(dialog, "avi_fps")->setValue(12);
    Find<QSpinBox>(dialog, "avi_z_first")->setValue(3);
    Find<QSpinBox>(dialog, "avi_z_last")->setValue(1);
    EXPECT_EQ(Find<QLabel>(dialog, "avi_frames")->text(), "0");
    Find<QPushButton>(dialog, "avi_ok")->click();
    EXPECT_EQ(Find<QLabel>(dialog, "avi_status")->text(), "first z page after last");
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    EXPECT_EQ(avi_.encoder, AVI_MJPEG);
    EXPECT_EQ(save_.fps, 0);

    Find<QSpinBox>(dialog, "avi_z_last")->setValue(4);
    Find<QSpinBox>(dialog, "avi_t_first")->setValue(1);
    EXPECT_EQ(Find<QLabel>(dialog, "avi_frames")->text(), "4");  // z 3, 4 by t 1, 2
    Find<QPushButton>(dialog, "avi_ok")->click();
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(avi_.encoder, AVI_FFV1);
    EXPECT_EQ(avi_.first[0], 3);
    EXPECT_EQ(avi_.last[0], 4);
    EXPECT_EQ(avi_.first[1], 1);
    EXPECT_EQ(avi_.last[1], 2);
    EXPECT_EQ(save_.fps, 12);
    EXPECT_EQ(save_.ppt, 3);
}

TEST_F(SaveAviDialog, CancelLeavesTheOptionsAlone) {
    CSaveAviModel model(avi_, save_, pages_);
    CSaveAvi dialog(model);
    Find<QComboBox>(dialog, "avi_encoder")->setCurrentIndex(AVI_RAW);
    Find<QSpinBox>(dialog, "avi_t_last")->setValue(0);
    Find<QPushButton>(dialog, "avi_cancel")->click();
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    EXPECT_EQ(avi_.encoder, AVI_MJPEG);
    EXPECT_EQ(avi_.last[1], -1);
}
