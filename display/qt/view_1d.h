// CView1d: the 1d plot view. DrawBitmap paints the plot into an off-screen QImage in the
// order background, grid, axes, lines, overlay (x range, legend, text, arrows), cursor; the
// picture is kept until something changes. Every decision (rows, ranges, ticks, the border,
// the mouse) is CPlotView's; this class is paint, events, dialogs and the clipboard.
#pragma once

#include <QImage>
#include <QTimer>
#include <QWidget>

#include "display/plot_view.h"

class CDataSpace;
class CMdiDoc;
class CMdiFrame;
class QLabel;
class QPainter;

class CView1d : public QWidget, public CPlotView {
    Q_OBJECT
  public:
    CView1d(CMdiDoc& doc, CDataSpace& space, const C1d& options, const CNewPlot* defaults,
            QWidget* parent = nullptr);

    // Paints the whole plot into `image` at its size.
    void DrawBitmap(QImage& image);
    // The picture at the view's size, drawn first when stale.
    const QImage& Picture();

    // Menu choices of the cursor modes and of pan; the picture follows.
    void OnCursorMode(int mode);
    void OnPanMode();
    void OnEditXrange();
    void OnChannel(int iqmp);
    void OnAxisLockToggle();
    void OnBackground();
    void OnRoiColor();
    void OnCopy();
    // A second view of the same arrays with a copy of the look.
    void OnDuplicate();
    void OnFileSave();
    // Asks for an array and cats it (dir 0 x, 1 y, 2 z; before or after).
    void OnCatAsk(int dir, bool before, const char* what);

    void Detach();
    void SetStatusLine(QLabel* line) { status_line_ = line; }
    CMdiFrame* Frame() const;
    CDataSpace& Space() const { return space_; }
    QTimer& Timer() { return timer_; }
    // Pictures drawn so far.
    int Renders() const { return renders_; }

  signals:
    // The save dialog on this array is wanted.
    void saveRequested(CZrkData* array);

  protected:
    bool StartTimer(int period) override;
    bool StopTimer() override;
    void Redraw() override;
    void ShowStatus(const std::string& text) override;

    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

  private:
    void RepaintGrid(QPainter& p, const std::vector<CAxisMarks>& marks);
    void RepaintAxis(QPainter& p, const std::vector<CAxisMarks>& marks);
    void RepaintLines(QPainter& p);
    void DrawOverlay(QPainter& p);
    void ShowCursor(QPainter& p);
    // Marks the picture stale (the look or the cursor changed) and repaints.
    void Stale();

    CDataSpace& space_;
    QTimer timer_;
    QImage image_;
    bool stale_ = true;
    QLabel* status_line_ = nullptr;
    bool detached_ = false;
    int renders_ = 0;
};
