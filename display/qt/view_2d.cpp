#include "display/qt/view_2d.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <cmath>

#include "core/data_space.h"
#include "core/host.h"
#include "display/binary_copy.h"
#include "display/display_update.h"
#include "display/image_bits.h"
#include "display/qt/mdi_doc.h"
#include "display/qt/mdi_frame.h"

namespace {

// The largest picture the clipboard is given, in bytes of 24-bit pixels.
constexpr double kMaxCopyBytes = 512.0 * 1024 * 1024;

std::vector<float> OverlayPoints(const CDataSpace& space, const char* name) {
    std::vector<float> p;
    const CZrkData* r = space.FindData(name);
    if (!r || !r->Data() || r->Type() != TYPE_R4) return p;
    const auto* f = static_cast<const float*>(r->Data());
    p.assign(f, f + r->Count());
    return p;
}

}  // namespace

CView2d::CView2d(CMdiDoc& doc, CDataSpace& space, const C2d& options, QWidget* parent)
    : QWidget(parent), CImageView(doc, options, space), space_(space) {
    setObjectName("view_2d");
    setMouseTracking(true);
    setFocusPolicy(Qt::ClickFocus);
    setMinimumSize(16, 16);
    connect(&timer_, &QTimer::timeout, this, [this] {
        if (!detached_) OnTimer();
    });
}

void CView2d::Detach() {
    timer_.stop();
    scroll_running = false;
    if (detached_) return;
    detached_ = true;
    emit detached(this);
}

bool CView2d::StartTimer(int period) {
    timer_.start(period);
    return timer_.isActive();
}

bool CView2d::StopTimer() {
    timer_.stop();
    return true;
}

void CView2d::Redraw() {
    if (!detached_) update();
}

void CView2d::ShowStatus(const std::string& text) {
    if (status_line_) status_line_->setText(QString::fromStdString(text));
    Host().Status(text);
}

int CView2d::Render(CFrame& frame) {
    const int bits = bitmap_kind == 3 ? 32 : 8;
    return ImageBits(&space_, Data(0), Look().palplane, page, bits, frame);
}

void CView2d::RebuildImage() {
    dirty = false;
    ++renders_;
    image_ = QImage();
    if (detached_) return;
    // z and t as the document has them (a workspace sets them after the view is made).
    page[0] = static_cast<uint64_t>(std::max(0, Doc().page_z));
    page[1] = static_cast<uint64_t>(std::max(0, Doc().page_t));
    const CZrkData* a = Data(0);
    if (Render(bits_) != 0) {
        if (a && a->Data() && a->Count()) ShowStatus("sorry, can not allocate bitmap!");
        return;
    }
    if (bits_.bits == 8) {
        image_ = QImage(bits_.pixels.data(), bits_.width, bits_.height, bits_.stride,
                        QImage::Format_Indexed8);
        QList<QRgb> table(256);
        for (int i = 0; i < 256; ++i)
            table[i] = qRgb(bits_.palette[i][0], bits_.palette[i][1], bits_.palette[i][2]);
        image_.setColorTable(table);
    } else {
        image_ = QImage(bits_.pixels.data(), bits_.width, bits_.height, bits_.stride,
                        QImage::Format_RGB32);
    }
}

const QImage& CView2d::Picture() {
    if (dirty) RebuildImage();
    return image_;
}

QImage CView2d::CopyPalToRgb() { return Picture().convertToFormat(QImage::Format_RGB888); }

QPointF CView2d::ToScreen(float x, float y) const {
    const CPlane& p = ZoomPlane();
    return {(x + 0.5) * p.zoom[0] / 100.0 - p.pan[0], (y + 0.5) * p.zoom[1] / 100.0 - p.pan[1]};
}

void CView2d::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(64, 64, 64));
    const QImage& image = Picture();
    if (image.isNull()) return;
    const CPlane& p = ZoomPlane();
    const double zx = p.zoom[0] / 100.0, zy = p.zoom[1] / 100.0;
    // Only the part of the plane inside the view is scaled: at 6400 % a plane is far larger
    // than any screen.
    const int x0 = std::clamp(static_cast<int>(std::floor(p.pan[0] / zx)), 0, image.width());
    const int y0 = std::clamp(static_cast<int>(std::floor(p.pan[1] / zy)), 0, image.height());
    const int x1 =
        std::clamp(static_cast<int>(std::ceil((p.pan[0] + width()) / zx)), 0, image.width());
    const int y1 =
        std::clamp(static_cast<int>(std::ceil((p.pan[1] + height()) / zy)), 0, image.height());
    if (x1 > x0 && y1 > y0) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform,
                              bitmap_kind == 1 || bitmap_kind == 2);
        const QRectF target(x0 * zx - p.pan[0], y0 * zy - p.pan[1], (x1 - x0) * zx, (y1 - y0) * zy);
        if (bitmap_kind == 1 || bitmap_kind == 2) {
            // Anti-alias: the part is first smoothed up by 2 or 4, then put on the surface.
            const int f = bitmap_kind == 1 ? 2 : 4;
            const QImage part = image.copy(x0, y0, x1 - x0, y1 - y0)
                                    .convertToFormat(QImage::Format_RGB32)
                                    .scaled((x1 - x0) * f, (y1 - y0) * f, Qt::IgnoreAspectRatio,
                                            Qt::SmoothTransformation);
            painter.drawImage(target, part);
        } else {
            painter.drawImage(target, image, QRectF(x0, y0, x1 - x0, y1 - y0));
        }
    }
    DrawOverlay(painter);
}

void CView2d::DrawOverlay(QPainter& painter) {
    const int c = Look().roi_color;
    painter.setPen(QPen(QColor(c & 0xff, (c >> 8) & 0xff, (c >> 16) & 0xff), 1));
    painter.setRenderHint(QPainter::Antialiasing, false);
    auto polyline = [&](const std::vector<float>& pts) {
        for (size_t i = 0; i + 3 < pts.size(); i += 2)
            painter.drawLine(ToScreen(pts[i], pts[i + 1]), ToScreen(pts[i + 2], pts[i + 3]));
    };
    polyline(OverlayPoints(space_, "zrk_profile"));
    polyline(OverlayPoints(space_, "zrk_angle"));
    polyline(OverlayPoints(space_, "zrk_line"));
}

void CView2d::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (!detached_) SizeFrame(width(), height());
}

void CView2d::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    emit activated(this);
}

void CView2d::mousePressEvent(QMouseEvent* event) {
    if (detached_) return;
    last_ = event->position().toPoint();
    int x = 0, y = 0;
    ToData(last_.x(), last_.y(), x, y);
    const CPlane& p = ZoomPlane();
    const float fx = (last_.x() + p.pan[0]) * 100.0f / p.zoom[0] - 0.5f;
    const float fy = (last_.y() + p.pan[1]) * 100.0f / p.zoom[1] - 0.5f;
    press_data_ = QPointF(fx, fy);
    if (event->button() == Qt::MiddleButton) {
        drag_ = 4;
        return;
    }
    if (event->button() != Qt::LeftButton) return;
    drag_ = 1;
    emit activated(this);
    switch (cursor_mode) {
        case CURSOR_WINLEV:
            GlobalWinLev().Take(*this, &space_);
            break;
        case CURSOR_ANGLE:
            OnAngle(space_, fx, fy);
            update();
            break;
        case CURSOR_LINE:
        case CURSOR_END_LINE:
            OnLinePoint(space_, fx, fy, false);
            update();
            break;
        default:
            break;
    }
}

void CView2d::mouseMoveEvent(QMouseEvent* event) {
    if (detached_) return;
    const QPoint at = event->position().toPoint();
    const QPoint d = at - last_;
    last_ = at;
    int x = 0, y = 0;
    const bool inside = ToData(at.x(), at.y(), x, y);
    mouse_x = x;
    mouse_y = y;
    if (drag_ == 4) {
        Pan(-d.x(), -d.y());
        return;
    }
    if (drag_ == 1 && cursor_mode == CURSOR_WINLEV) {
        GWinLev& wl = GlobalWinLev();
        wl.MouseStep(d.x(), -d.y());
        wl.Apply(*this, space_);
        char text[96];
        std::snprintf(text, sizeof text, " window=%.3f level=%.3f", wl.values.window,
                      wl.values.level);
        ShowStatus(text);
        return;
    }
    if (drag_ == 1 && cursor_mode == CURSOR_PROFILE) {
        const CPlane& p = ZoomPlane();
        SetProfile(space_, press_data_.x(), press_data_.y(),
                   (at.x() + p.pan[0]) * 100.0f / p.zoom[0] - 0.5f,
                   (at.y() + p.pan[1]) * 100.0f / p.zoom[1] - 0.5f);
        update();
    }
    if (inside) {
        status = Readout();
        ShowStatus(status);
    }
}

void CView2d::mouseReleaseEvent(QMouseEvent*) { drag_ = 0; }

void CView2d::mouseDoubleClickEvent(QMouseEvent* event) {
    if (cursor_mode != CURSOR_LINE || detached_) return;
    const CPlane& p = ZoomPlane();
    const QPoint at = event->position().toPoint();
    OnLinePoint(space_, (at.x() + p.pan[0]) * 100.0f / p.zoom[0] - 0.5f,
                (at.y() + p.pan[1]) * 100.0f / p.zoom[1] - 0.5f, true);
    update();
}

void CView2d::SetCursorMode(int mode) {
    cursor_mode = std::clamp(mode, 0, kCursorModes - 1);
    angle_clicks = 0;
    if (cursor_mode == CURSOR_ANGLE) ShowStatus(" click left button 3 times to define angle");
    if (cursor_mode == CURSOR_LINE)
        ShowStatus(" click left button define lines; double click to end");
    if (cursor_mode == 15) {  // refresh: the range from the samples as they are now
        CPlane& p = ZoomPlane();
        float lo = 0, hi = 0;
        if (FiniteRange(Data(0), p.iqmp, lo, hi)) p.datamin = lo, p.datamax = hi;
        char text[128];
        std::snprintf(text, sizeof text, " min,max= %.3f, %.3f", p.datamin, p.datamax);
        ShowStatus(text);
        Draw();
    }
}

void CView2d::SetBitmapKind(int kind) {
    bitmap_kind = std::clamp(kind, 0, 3);
    Draw();
}

void CView2d::SetZoomMode(int mode) {
    zoom_mode = std::clamp(mode, 0, 4);
    SizeFrame(width(), height());
}

void CView2d::SetPalette(const QString& name) {
    CPlane& plane = Look().palplane;
    plane.SetPalette(plane.palette_word ? plane.palette_word : 7, name.toUtf8().constData(),
                     &space_);
    Draw();
}

void CView2d::OnLoadPalette() {
    const QString path = QFileDialog::getOpenFileName(this, "load palette", QString(), "*.*");
    if (path.isEmpty()) return;
    CPal pal(7);
    const std::string name = pal.LoadFile(path.toStdString(), space_);
    if (!name.empty()) SetPalette(QString::fromStdString(name));
}

void CView2d::OnCopy() {
    const QImage& image = Picture();
    const CPlane& p = ZoomPlane();
    const double w = std::round(image.width() * p.zoom[0] / 100.0);
    const double h = std::round(image.height() * p.zoom[1] / 100.0);
    QImage shot;
    if (!image.isNull() && w * h * 3 <= kMaxCopyBytes && w >= 1 && h >= 1)
        shot = image.convertToFormat(QImage::Format_RGB888)
                   .scaled(static_cast<int>(w), static_cast<int>(h));
    if (shot.isNull()) {
        ShowStatus("copy failed");
        return;
    }
    auto* mime = new QMimeData;
    mime->setImageData(shot);
    const std::string bytes = BinaryCopy(Data(0));
    if (!bytes.empty()) mime->setData(kBinaryCopyMime, QByteArray(bytes.data(), int(bytes.size())));
    QApplication::clipboard()->setMimeData(mime);
    ShowStatus("24 bit copy complete");
}

void CView2d::OnPrint() {
    QPrinter printer;
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() != QDialog::Accepted) return;
    QPainter painter(&printer);
    const QImage& image = Picture();
    if (image.isNull()) return;
    const QRect page = painter.viewport();
    const QSize size = image.size().scaled(page.size(), Qt::KeepAspectRatio);
    painter.drawImage(QRect(QPoint(0, 0), size), image);
}

CMdiFrame* CView2d::Frame() const {
    QWidget* w = parentWidget();
    while (w && !qobject_cast<CMdiFrame*>(w)) w = w->parentWidget();
    return qobject_cast<CMdiFrame*>(w);
}

void CView2d::OnSaveDataAndClose() {
    if (CMdiFrame* frame = Frame()) frame->close();
    Host().RefreshDisplays();
}

void CView2d::OnDeleteDataAndClose() {
    CZrkData* shown[3] = {Data(0), Data(1), Data(2)};
    CDataSpace& space = space_;
    // The frame takes the document (and this view) with it: nothing of them is used after.
    if (CMdiFrame* frame = Frame()) frame->close();
    for (CZrkData* d : shown)
        if (d && space.IsDataValid(d)) space.DelData(d);
    Host().RefreshDisplays();
}
