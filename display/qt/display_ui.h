// CDisplayUi: the displays' part of the main window. It installs the 2d and rgb factories
// (a document, a CFrame2d in the multiple-document area and its view), the 1d and xy ones
// (CDoc1d, CFrame1d, CView1d or CViewXy) and the spreadsheet's (a CFrameEdit around a
// CViewEdit), docks CFormWL and
// binds it to the active image view, adds the "display" menu with the new-display forms and
// gives the main window's option entries their forms (1d and xy display, 1d and xy axis).
// CDisplayModules holds the display options and enters them in their slots of the
// option table.
//
//   CDisplayModules modules;
//   modules.Register(table);
//   CDisplayUi ui(main_window, mdi, space, modules);   // factories live while `ui` does
#pragma once

#include <QObject>
#include <functional>
#include <memory>

#include "display/display_entry.h"
#include "display/new_display.h"

class CAxisOptions;
class CDataSpace;
class CFormWL;
class CMdiDoc;
class CMdiFrame;
class COptionTable;
class CView2d;
class QMainWindow;
class QMdiArea;

struct CDisplayModules {
    // Window/level, the image and plot options and the four new-display holders.
    void Register(COptionTable& table);

    CNew1d new_1d;
    CNew2d new_2d;
    CNewRgb new_rgb;
    CNewXy new_xy;
};

class CDisplayUi : public QObject {
    Q_OBJECT
  public:
    CDisplayUi(QMainWindow& frame, QMdiArea& mdi, CDataSpace& space, CDisplayModules& modules);
    ~CDisplayUi() override;

    // The factory of 2d and rgb displays.
    CDisplayEntry* Open(const CDisplayRequest& request);
    // The factory of 1d and xy plots.
    CDisplayEntry* OpenPlot(const CDisplayRequest& request);
    CFormWL* FormWL() const { return form_; }
    // The factory of spreadsheet displays.
    CDisplayEntry* OpenEdit(const CDisplayRequest& request);

    // What a plot's "save..." calls with its array: the program's save dialog.
    std::function<void(CZrkData*)> save_array;

  private:
    void Activate(CView2d* view);
    // Lists the display and puts its frame in the area under its caption; false (and the
    // frame gone) when the list refuses it.
    bool AddFrame(std::unique_ptr<CMdiDoc> doc, CMdiFrame* frame);
    // The "axis etc" form of one plot kind; on OK the active plot of that kind takes it too.
    void OnAxisOptions(CAxisOptions& options);

    QMainWindow& frame_;
    QMdiArea& mdi_;
    CDataSpace& space_;
    CDisplayModules& modules_;
    CFormWL* form_;
    DisplayWindowHook previous_[4];
    DisplayWindowHook previous_edit_ = nullptr;
};
