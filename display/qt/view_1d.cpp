#include "display/qt/view_1d.h"

#include <QApplication>
#include <QClipboard>
#include <QColorDialog>
#include <QInputDialog>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <cmath>

#include "core/data_space.h"
#include "core/host.h"
#include "display/binary_copy.h"
#include "display/qt/mdi_doc.h"
#include "display/qt/mdi_frame.h"

namespace {

QColor Rgb(int c) { return QColor(c & 0xff, (c >> 8) & 0xff, (c >> 16) & 0xff); }
int Word(const QColor& c) { return c.red() | c.green() << 8 | c.blue() << 16; }

QFont FontOf(const CFont& f) {
    QFont font(QString::fromUtf8(f.name));
    font.setPixelSize(std::clamp(std::abs(f.height), 6, 72));
    font.setWeight(static_cast<QFont::Weight>(std::clamp(f.weight, 100, 900)));
    font.setItalic(f.italic != 0);
    return font;
}

// The polyline of `x`, `y` in runs between NaN marks.
void Polyline(QPainter& p, const std::vector<double>& x, const std::vector<double>& y) {
    QPolygonF run;
    auto flush = [&] {
        if (run.size() == 1) p.drawPoint(run[0]);
        if (run.size() > 1) p.drawPolyline(run);
        run.clear();
    };
    for (size_t i = 0; i < x.size(); ++i) {
        if (std::isnan(x[i]) || std::isnan(y[i])) {
            flush();
            continue;
        }
        run << QPointF(x[i], y[i]);
    }
    flush();
}

// The mark of a symbol value at (x, y), `s` pixels across: 1 square, 2 circle, 3 triangle,
// 4 plus, 5 cross, 6 diamond, 7 filled square, 8 filled circle.
void Symbol(QPainter& p, int symbol, double x, double y, double s, const QColor& color) {
    const double h = s / 2;
    p.setBrush(symbol >= 7 ? QBrush(color) : Qt::NoBrush);
    switch (symbol) {
        case 1:
        case 7:
            p.drawRect(QRectF(x - h, y - h, s, s));
            break;
        case 2:
        case 8:
            p.drawEllipse(QPointF(x, y), h, h);
            break;
        case 3:
            p.drawPolygon(
                QPolygonF({QPointF(x, y - h), QPointF(x + h, y + h), QPointF(x - h, y + h)}));
            break;
        case 4:
            p.drawLine(QPointF(x - h, y), QPointF(x + h, y));
            p.drawLine(QPointF(x, y - h), QPointF(x, y + h));
            break;
        case 5:
            p.drawLine(QPointF(x - h, y - h), QPointF(x + h, y + h));
            p.drawLine(QPointF(x - h, y + h), QPointF(x + h, y - h));
            break;
        default:
            p.drawPolygon(QPolygonF(
                {QPointF(x, y - h), QPointF(x + h, y), QPointF(x, y + h), QPointF(x - h, y)}));
            break;
    }
    p.setBrush(Qt::NoBrush);
}

}  // namespace

CView1d::CView1d(CMdiDoc& doc, CDataSpace& space, const C1d& options, const CNewPlot* defaults,
                 QWidget* parent)
    : QWidget(parent), CPlotView(doc, options, defaults), space_(space) {
    setObjectName("view_1d");
    setMouseTracking(true);
    setFocusPolicy(Qt::ClickFocus);
    setMinimumSize(64, 48);
    connect(&timer_, &QTimer::timeout, this, [this] {
        if (!detached_) OnTimer();
    });
}

void CView1d::Detach() {
    timer_.stop();
    scroll_running = false;
    detached_ = true;
}

bool CView1d::StartTimer(int period) {
    timer_.start(period);
    return timer_.isActive();
}

bool CView1d::StopTimer() {
    timer_.stop();
    return true;
}

void CView1d::Redraw() {
    stale_ = true;
    if (!detached_) update();
}

void CView1d::Stale() {
    stale_ = true;
    update();
}

void CView1d::ShowStatus(const std::string& text) {
    if (status_line_) status_line_->setText(QString::fromStdString(text));
    Host().Status(text);
}

CMdiFrame* CView1d::Frame() const {
    QWidget* w = parentWidget();
    while (w && !qobject_cast<CMdiFrame*>(w)) w = w->parentWidget();
    return qobject_cast<CMdiFrame*>(w);
}

void CView1d::DrawBitmap(QImage& image) {
    ++renders_;
    QPainter p(&image);
    p.fillRect(image.rect(), Rgb(Look().screen.bg));
    if (detached_) return;
    const GAxis* first = nullptr;
    for (const GAxis& a : Look().axes)
        if (a.show && !first) first = &a;
    const QFont font = FontOf(first ? first->font : CFont{});
    p.setFont(font);
    const QFontMetrics fm(font);
    CTextMetrics metrics;
    metrics.width = [&fm](const std::string& s) {
        return fm.horizontalAdvance(QString::fromStdString(s));
    };
    metrics.height = fm.height();
    if (!Layout(image.width(), image.height(), metrics)) return;
    const std::vector<CAxisMarks> marks = AxisMarks(metrics);
    RepaintGrid(p, marks);
    RepaintAxis(p, marks);
    RepaintLines(p);
    DrawOverlay(p);
    ShowCursor(p);
}

void CView1d::RepaintGrid(QPainter& p, const std::vector<CAxisMarks>& marks) {
    const QRectF plot(PlotLeft(), PlotTop(), PlotWidth() - 1, PlotHeight() - 1);
    for (const CAxisMarks& m : marks) {
        if (!m.axis->grid) continue;
        p.setPen(QPen(QColor(200, 200, 200), 1, Qt::DotLine));
        const bool x = m.axis->kind == 1 || m.axis->kind == 3;
        for (double v : m.major)
            x ? p.drawLine(QPointF(v, plot.top()), QPointF(v, plot.bottom()))
              : p.drawLine(QPointF(plot.left(), v), QPointF(plot.right(), v));
    }
}

void CView1d::RepaintAxis(QPainter& p, const std::vector<CAxisMarks>& marks) {
    const double x0 = PlotLeft(), x1 = PlotLeft() + PlotWidth() - 1;
    const double y0 = PlotTop(), y1 = PlotTop() + PlotHeight() - 1;
    for (const CAxisMarks& m : marks) {
        const GAxis& a = *m.axis;
        const QColor color = Rgb(a.color);
        const bool x = a.kind == 1 || a.kind == 3;
        // Outward: down for the bottom axis, left for the left one, and so on.
        const double out = a.kind == 1 || a.kind == 4 ? 1 : -1;
        p.setFont(FontOf(a.font));
        const QFontMetrics fm(p.font());
        p.setPen(QPen(color, std::max(1, a.ax_thick)));
        x ? p.drawLine(QPointF(x0, m.at), QPointF(x1, m.at))
          : p.drawLine(QPointF(m.at, y0), QPointF(m.at, y1));
        auto ticks = [&](const std::vector<double>& at, const int len[2]) {
            p.setPen(QPen(color, std::max(1, a.tk_thick)));
            for (double v : at) {
                const double a0 = m.at + out * len[0], a1 = m.at - out * len[1];
                x ? p.drawLine(QPointF(v, a0), QPointF(v, a1))
                  : p.drawLine(QPointF(a0, v), QPointF(a1, v));
            }
        };
        if (a.showtick) ticks(m.major, a.ticklen);
        if (a.showmtick) ticks(m.minor, a.mticklen);
        p.setPen(color);
        const double gap = (a.showtick ? std::max(0, a.ticklen[0]) : 0) + 2;
        for (size_t k = 0; k < m.labels.size(); ++k) {
            if (m.labels[k].empty()) continue;
            const QString text = QString::fromStdString(m.labels[k]);
            const double w = fm.horizontalAdvance(text), h = fm.height();
            QRectF box;
            switch (a.kind) {
                case 1:
                    box = QRectF(m.major[k] - w / 2, m.at + gap, w, h);
                    break;
                case 3:
                    box = QRectF(m.major[k] - w / 2, m.at - gap - h, w, h);
                    break;
                case 2:
                    box = QRectF(m.at - gap - w - 2, m.major[k] - h / 2, w, h);
                    break;
                default:
                    box = QRectF(m.at + gap + 2, m.major[k] - h / 2, w, h);
                    break;
            }
            p.drawText(box, Qt::AlignCenter, text);
        }
    }
}

void CView1d::RepaintLines(QPainter& p) {
    p.save();
    p.setClipRect(QRect(PlotLeft(), PlotTop(), PlotWidth(), PlotHeight()));
    for (const CSeriesPath& path : Paths()) {
        const CLine& line = *path.line;
        const QColor color = Rgb(line.color);
        if (!path.err0.empty()) {
            p.setPen(QPen(Rgb(line.err_color), 1));
            const double wing = line.err_wings;
            for (size_t i = 0; i < path.x.size(); ++i) {
                if (std::isnan(path.x[i])) continue;
                if (path.err_x) {
                    p.drawLine(QPointF(path.err0[i], path.y[i]), QPointF(path.err1[i], path.y[i]));
                    if (wing > 0)
                        for (double e : {path.err0[i], path.err1[i]})
                            p.drawLine(QPointF(e, path.y[i] - wing), QPointF(e, path.y[i] + wing));
                } else {
                    p.drawLine(QPointF(path.x[i], path.err0[i]), QPointF(path.x[i], path.err1[i]));
                    if (wing > 0)
                        for (double e : {path.err0[i], path.err1[i]})
                            p.drawLine(QPointF(path.x[i] - wing, e), QPointF(path.x[i] + wing, e));
                }
            }
        }
        p.setPen(QPen(color, std::max(1, line.thick)));
        if (line.line || path.decimated) Polyline(p, path.x, path.y);
        if (line.symbol && !path.decimated)
            for (size_t i = 0; i < path.x.size(); ++i)
                if (!std::isnan(path.x[i]))
                    Symbol(p, line.symbol, path.x[i], path.y[i], std::max(2, line.symsize), color);
    }
    p.restore();
}

void CView1d::DrawOverlay(QPainter& p) {
    const CLook& look = Look();
    const QRect plot(PlotLeft(), PlotTop(), PlotWidth(), PlotHeight());
    double r0, r1;
    if (RoiColumns(&r0, &r1)) {
        QColor band = Rgb(look.roi_color);
        band.setAlpha(40);
        const double a = std::clamp(r0, double(plot.left()), double(plot.right()));
        const double b = std::clamp(r1, double(plot.left()), double(plot.right()));
        p.fillRect(QRectF(a, plot.top(), b - a, plot.height()), band);
        p.setPen(QPen(Rgb(look.roi_color), 1));
        for (double v : {r0, r1})
            if (v >= plot.left() && v <= plot.right())
                p.drawLine(QPointF(v, plot.top()), QPointF(v, plot.bottom()));
    }
    if (look.legend.legend && !look.lines.empty()) {
        const QFont font = FontOf(look.legend.font);
        p.setFont(font);
        const QFontMetrics fm(font);
        const double llen = std::clamp<double>(look.legend.llen, 0, 400);
        const size_t n = std::min(look.lines.size(), RowCount());
        double widest = 0;
        auto caption = [&](size_t k) {
            return look.lines[k].text[0] ? QString::fromUtf8(look.lines[k].text)
                                         : QString("row %1").arg(k);
        };
        for (size_t k = 0; k < n; ++k)
            widest = std::max<double>(widest, fm.horizontalAdvance(caption(k)));
        const double step = fm.height() + look.legend.space[1];
        // The position is a fraction of the plot from its top left corner.
        const double x = plot.left() + 6 + look.legend.pos[0] * plot.width();
        const double y = plot.top() + 6 + look.legend.pos[1] * plot.height();
        const QRectF box(x, y, llen + widest + 18 + look.legend.space[0], step * n + 6);
        p.fillRect(box, Rgb(look.screen.bg));
        p.setPen(QPen(QColor(128, 128, 128), 1));
        p.drawRect(box);
        for (size_t k = 0; k < n; ++k) {
            const CLine& line = look.lines[k];
            const double cy = y + 3 + step * k + step / 2;
            p.setPen(QPen(Rgb(line.color), std::max(1, line.thick)));
            p.drawLine(QPointF(x + 4, cy), QPointF(x + 4 + llen, cy));
            if (line.symbol)
                Symbol(p, line.symbol, x + 4 + llen / 2, cy, std::max(2, line.symsize),
                       Rgb(line.color));
            p.setPen(Rgb(line.text_color));
            p.drawText(QRectF(x + 10 + llen, cy - step / 2, widest + 4, step),
                       Qt::AlignLeft | Qt::AlignVCenter, caption(k));
        }
    }
    for (const CText& t : look.text) {
        p.setFont(FontOf(t.font));
        p.setPen(Rgb(t.color));
        p.save();
        p.translate(XPixel(t.pos[0]), YPixel(t.pos[1]));
        if (t.hv) p.rotate(-90);
        p.drawText(QPointF(0, 0), QString::fromUtf8(t.str));
        p.restore();
    }
    for (const CArrow& a : look.arrows) {
        p.setPen(QPen(Rgb(a.color), std::max(1, a.thick)));
        const QPointF s(XPixel(a.start[0]), YPixel(a.start[1])),
            e(XPixel(a.end[0]), YPixel(a.end[1]));
        p.drawLine(s, e);
        auto head = [&](QPointF tip, QPointF from) {
            const double angle = std::atan2(tip.y() - from.y(), tip.x() - from.x());
            for (double side : {-0.4, 0.4})
                p.drawLine(tip,
                           tip - QPointF(std::cos(angle + side), std::sin(angle + side)) * a.size);
        };
        if (a.arrow0) head(s, e);
        if (a.arrow1) head(e, s);
    }
}

void CView1d::ShowCursor(QPainter& p) {
    double x, y;
    if (!CursorPixel(&x, &y)) return;
    p.setPen(QPen(Rgb(Look().roi_color), 1));
    p.drawLine(QPointF(x - 5, y), QPointF(x + 5, y));
    p.drawLine(QPointF(x, y - 5), QPointF(x, y + 5));
}

const QImage& CView1d::Picture() {
    const QSize size(std::max(16, width()), std::max(16, height()));
    if (stale_ || dirty || image_.size() != size) {
        stale_ = false;
        image_ = QImage(size, QImage::Format_RGB32);
        DrawBitmap(image_);
    }
    return image_;
}

void CView1d::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.drawImage(0, 0, Picture());
    double band[4];
    if (DragBand(band)) {
        painter.setPen(QPen(Qt::black, 1, Qt::DashLine));
        if (IsXy())
            painter.drawRect(
                QRectF(QPointF(band[0], band[1]), QPointF(band[2], band[3])).normalized());
        else
            painter.drawRect(
                QRectF(QPointF(band[0], PlotTop()), QPointF(band[2], PlotTop() + PlotHeight() - 1))
                    .normalized());
    }
}

void CView1d::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    stale_ = true;
}

void CView1d::mousePressEvent(QMouseEvent* event) {
    if (detached_ || event->button() != Qt::LeftButton) return;
    const QPointF at = event->position();
    if (Press(cursor_mode, at.x(), at.y())) Stale();
}

void CView1d::mouseMoveEvent(QMouseEvent* event) {
    if (detached_) return;
    const QPointF at = event->position();
    if (Move(at.x(), at.y())) Stale();
}

void CView1d::mouseReleaseEvent(QMouseEvent* event) {
    if (detached_ || event->button() != Qt::LeftButton) return;
    const QPointF at = event->position();
    if (Release(at.x(), at.y())) Stale();
}

void CView1d::OnCursorMode(int mode) {
    SetCursorMode(mode);
    Stale();
}

void CView1d::OnPanMode() { OnPan(); }

void CView1d::OnEditXrange() {
    bool ok = false;
    const QString text = QInputDialog::getText(this, "x range", "x range", QLineEdit::Normal,
                                               QString::fromStdString(XrangeText()), &ok);
    if (ok && CPlotView::OnEditXrange(text.toStdString())) Stale();
}

void CView1d::OnChannel(int iqmp) { SetChannel(iqmp); }

void CView1d::OnAxisLockToggle() {
    OnAxisLock();
    ShowStatus(axis_lock ? " y axis locked" : " y axis follows zoom");
}

void CView1d::OnBackground() {
    const QColor c = QColorDialog::getColor(Rgb(Look().screen.bg), this, "background");
    if (!c.isValid()) return;
    Look().screen.bg = Word(c);
    Stale();
}

void CView1d::OnRoiColor() {
    const QColor c = QColorDialog::getColor(Rgb(Look().roi_color), this, "roi color");
    if (!c.isValid()) return;
    Look().roi_color = Word(c);
    Stale();
}

void CView1d::OnCopy() {
    const QImage& image = Picture();
    auto* mime = new QMimeData;
    mime->setImageData(image.convertToFormat(QImage::Format_RGB888));
    const std::string bytes = BinaryCopy(Data(0));
    if (!bytes.empty()) mime->setData(kBinaryCopyMime, QByteArray(bytes.data(), int(bytes.size())));
    QApplication::clipboard()->setMimeData(mime);
    ShowStatus("24 bit copy complete");
}

void CView1d::OnDuplicate() {
    DisplayWindowHook hook = DisplayWindow(Look().flags & 0x1F0000);
    CDisplayRequest request;
    request.kind = Look().flags & 0x1F0000;
    for (int k = 0; k < 3; ++k) request.data[k] = Data(k);
    const CLook look = Look();
    request.look = &look;
    request.caption = Doc().caption;
    request.name = Doc().name;
    if (!hook || !hook(request)) ShowStatus("display failed");
}

void CView1d::OnFileSave() {
    if (Data(0)) emit saveRequested(Data(0));
}

void CView1d::OnCatAsk(int dir, bool before, const char* what) {
    QStringList names;
    for (int i = 0; i < space_.Count(); ++i)
        if (const CZrkData* a = space_.GetData(i); a && a->Data()) names << a->name;
    bool ok = false;
    const QString name = QInputDialog::getItem(this, what, "array", names, 0, false, &ok);
    const CZrkData* b = ok ? space_.FindData(name.toUtf8().constData()) : nullptr;
    if (b) OnCat(b, dir, before, what);
}
