// CFrame2d: the child frame of an image display, with the view's menus: zoom, cursor, scroll,
// palette and image. Every action carries an objectName ("zoom_200", "cursor_1",
// "scroll_all", "palette_jet", "image_copy" ...).
#pragma once

#include "display/qt/mdi_frame.h"

class CView2d;

class CFrame2d : public CMdiFrame {
    Q_OBJECT
  public:
    CFrame2d(CMdiDoc* doc, CView2d* view);

  private:
    void BuildMenus(CView2d* view);
};
