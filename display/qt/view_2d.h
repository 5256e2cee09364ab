// CView2d: the 2d image view. The plane is rendered into an off-screen QImage (8-bit indexed
// with the palette, or 32-bit) only when the picture is stale; a paint scales the visible
// part of it by the zoom, then draws the profile, angle and line overlays. The mouse sets
// window and level, draws profiles, angles and lines by the cursor mode; the middle button
// pans. All decisions live in CImageView; this class is paint, events and the clipboard.
#pragma once

#include <QImage>
#include <QTimer>
#include <QWidget>

#include "display/image_view.h"
#include "display/win_lev.h"

class CDataSpace;
class CMdiDoc;
class CMdiFrame;
class QLabel;
class QPainter;

class CView2d : public QWidget, public CImageView, public CWinLevTarget {
    Q_OBJECT
  public:
    CView2d(CMdiDoc& doc, CDataSpace& space, const C2d& options, QWidget* parent = nullptr);

    // The off-screen picture, rendered first when stale.
    const QImage& Picture();
    // The picture in 24-bit form through its palette.
    QImage CopyPalToRgb();
    void OnCopy();
    void OnPrint();
    void OnSaveDataAndClose();
    void OnDeleteDataAndClose();
    void SetCursorMode(int mode);
    void SetBitmapKind(int kind);
    void SetZoomMode(int mode);
    // Sets the palette of the shown plane by name ("grey" ... or an array's name).
    void SetPalette(const QString& name);
    void OnLoadPalette();
    // Stops the timer and forgets the document; the frame is closing.
    void Detach();
    void SetStatusLine(QLabel* line) { status_line_ = line; }
    // The child frame around the view; null before it has one.
    CMdiFrame* Frame() const;
    CDataSpace& Space() const { return space_; }
    QTimer& Timer() { return timer_; }

    // Renders of the off-screen picture so far.
    int Renders() const { return renders_; }

    CLook& TargetLook() override { return Look(); }
    CZrkData* TargetData() override { return Data(0); }
    void TargetRedraw() override { Draw(); }

  signals:
    void activated(CView2d* view);
    // The document is going: nothing may reach it through this view any more.
    void detached(CView2d* view);

  protected:
    bool StartTimer(int period) override;
    bool StopTimer() override;
    void Redraw() override;
    void ShowStatus(const std::string& text) override;
    // The bitmap of the current page; 0 on success.
    virtual int Render(CFrame& frame);

    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

  private:
    void RebuildImage();
    void DrawOverlay(QPainter& painter);
    QPointF ToScreen(float x, float y) const;

    CDataSpace& space_;
    QTimer timer_;
    CFrame bits_;
    QImage image_;
    QLabel* status_line_ = nullptr;
    bool detached_ = false;
    int renders_ = 0;
    int drag_ = 0;  // the button held: 0 none, 1 left, 4 middle
    QPoint last_;
    QPointF press_data_;
};
