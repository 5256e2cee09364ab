// CMdiDoc: the document of a display: the window-list entry with the look and the arrays,
// bound to the frame that shows it. The window list owns the document; closing from the core
// (Close) closes the frame, closing the frame takes the document off the list.
#pragma once

#include <QPointer>

#include "display/display_entry.h"
#include "display/qt/mdi_frame.h"

class CDataSpace;

class CMdiDoc : public CDisplayEntry {
  public:
    CMdiDoc(const CLook& look, CDataSpace& space) : CDisplayEntry(look), space_(space) {}
    ~CMdiDoc() override;

    void Close() override;
    void Redraw() override;
    void SetFrame(CMdiFrame* frame) { frame_ = frame; }
    CMdiFrame* Frame() const { return frame_; }
    CDataSpace& Space() const { return space_; }

  private:
    CDataSpace& space_;
    QPointer<CMdiFrame> frame_;
};
