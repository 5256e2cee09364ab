// The program started as a user starts it, offscreen, for the display widget tests: a frame
// with its display layer over a data space of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <memory>
#include <string>

#include "core/data_space.h"
#include "core/window_space.h"
#include "display/qt/display_ui.h"
#include "display/qt/frame_2d.h"
#include "display/qt/mdi_doc.h"
#include "display/qt/view_2d.h"
#include "eval/qt/bar_equ.h"
#include "shell/qt/main_frame.h"
#include "shell/qt/qt_host.h"
#include "shell/qt/zarnik_app.h"
#include "tests/shell/gui_test_app.h"

class DisplayGuiTest : public ::testing::Test {
  protected:
    void SetUp() override {
        // Fixed text metrics for every widget of the run (read when the application starts).
        qputenv("QT_FONT_DPI", "96");
        TestApp();
        prefs_ = ::testing::TempDir() + "quelmor_display_gui.txt";
        std::remove(prefs_.c_str());
        app_ = std::make_unique<CZarnikApp>(space_);
        CStartOptions start;
        start.show_about = false;
        start.preferences = prefs_;
        ASSERT_TRUE(app_->InitInstance(start));
        app_->QtHost()->SetAutoAnswer(true);
        frame_ = app_->Frame();
        frame_->resize(1000, 700);
    }
    void TearDown() override {
        app_->Frame()->SetClosingForScript(true);
        app_.reset();
        std::remove(prefs_.c_str());
        EXPECT_EQ(GlobalWindowSpace().Count(), 0);
    }
    void Type(const char* line) {
        frame_->EquationBar()->Edit()->setText(line);
        frame_->EquationBar()->OnEquEval();
    }
    // The view of the display of `name`, opened through the 2d (or rgb) factory.
    CView2d* Open(const char* name, uint32_t kind = LOOK_2D, const char* g = nullptr,
                  const char* b = nullptr);
    int Windows() const { return static_cast<int>(frame_->Mdi()->subWindowList().size()); }

    CDataSpace space_;
    std::string prefs_;
    std::unique_ptr<CZarnikApp> app_;
    CMainFrame* frame_ = nullptr;
};
