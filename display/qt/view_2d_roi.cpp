// The region side of CView2d: drawing regions with the mouse, painting them, and the region
// entries, each a call into the toolkit-free CRoi, CRoiEdit and the statistics.
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QColorDialog>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <vector>

#include "core/data_space.h"
#include "display/binary_copy.h"
#include "display/qt/view_2d.h"
#include "display/roi.h"
#include "display/roi_mask.h"
#include "display/roi_stats.h"

namespace {

std::vector<float> Record(const char* name) {
    const CZrkData* r = GlobalDataSpace().FindData(name);
    if (!r || !r->data || r->type != TYPE_R4 || r->nx < 2) return {};
    const auto* v = static_cast<const float*>(r->data);
    return {v, v + r->Count()};
}

QColor RoiColor(int c) { return QColor(c & 0xff, (c >> 8) & 0xff, (c >> 16) & 0xff); }

}  // namespace

QPointF CView2d::DataPoint(QPoint p) const {
    const CPlane& z = ZoomPlane();
    return {(p.x() + z.pan[0]) * 100.0 / z.zoom[0] - 0.5,
            (p.y() + z.pan[1]) * 100.0 / z.zoom[1] - 0.5};
}

uint64_t CView2d::CurrentPlane() const {
    const CZrkData* a = Data(0);
    if (!a) return 0;
    const uint64_t z = std::min<uint64_t>(page[0], a->nz - 1),
                   t = std::min<uint64_t>(page[1], a->nt - 1),
                   u = std::min<uint64_t>(page[2], a->nu - 1),
                   v = std::min<uint64_t>(page[3], a->nv - 1);
    return ((v * a->nu + u) * a->nt + t) * a->nz + z;
}

bool CView2d::RoiPress(float x, float y) {
    if (!roi_edit_.Press(cursor_mode, x, y)) return false;
    update();
    return true;
}

bool CView2d::RoiMove(float x, float y) {
    if (!roi_edit_.Move(x, y)) return false;
    update();
    return true;
}

bool CView2d::RoiRelease(float x, float y) {
    const int mode = cursor_mode;
    const int kind = roi_edit_.Release(x, y, Columns(), Rows());
    if (!kind) return false;
    roi_kind_ = CRoiEdit::IsAdd(mode) ? ROI_2D : kind;
    update();
    return true;
}

void CView2d::OverlayComposite(QPainter& painter) {
    const CZrkData& c = TheRoi().Composite();
    if (!c.data || c.nx != static_cast<res_t>(Columns()) || c.ny != static_cast<res_t>(Rows()))
        return;
    QColor color = RoiColor(Look().roi_color);
    color.setAlpha(90);
    const auto* m = static_cast<const uint8_t*>(c.data);
    const CPlane& p = ZoomPlane();
    const double zx = p.zoom[0] / 100.0, zy = p.zoom[1] / 100.0;
    for (res_t y = 0; y < c.ny; ++y)
        for (res_t x = 0; x < c.nx; ++x)
            if (m[y * c.nx + x])
                painter.fillRect(QRectF(x * zx - p.pan[0], y * zy - p.pan[1], zx, zy), color);
}

void CView2d::DrawRois(QPainter& painter) {
    painter.setPen(QPen(RoiColor(Look().roi_color), 1));
    painter.setBrush(Qt::NoBrush);
    const float w = static_cast<float>(Columns()), h = static_cast<float>(Rows());
    if (const std::vector<float> v = Record("roi_x"); v.size() >= 2)
        for (int k = 0; k < 2; ++k)
            painter.drawLine(ToScreen(v[k], -0.5f), ToScreen(v[k], h - 0.5f));
    if (const std::vector<float> v = Record("roi_y"); v.size() >= 2)
        for (int k = 0; k < 2; ++k)
            painter.drawLine(ToScreen(-0.5f, v[k]), ToScreen(w - 0.5f, v[k]));
    if (const std::vector<float> v = Record("roi_rect"); v.size() >= 4)
        painter.drawRect(QRectF(ToScreen(v[0], v[1]), ToScreen(v[2], v[3])).normalized());
    if (const std::vector<float> v = Record("roi_ellip"); v.size() >= 4)
        painter.drawEllipse(QRectF(ToScreen(v[0], v[1]), ToScreen(v[2], v[3])).normalized());
    if (const std::vector<float> v = Record("roi_draw"); v.size() >= 4) {
        QPolygonF outline;
        for (size_t k = 0; k + 1 < v.size(); k += 2) outline << ToScreen(v[k], v[k + 1]);
        painter.drawPolygon(outline);
    }
}

void CView2d::CalcRoi() { ::CalcRoi(Data(0), CurrentPlane(), roi_kind_, ZoomPlane().iqmp); }
void CView2d::CalcRoiAll() { ::CalcRoiAll(Data(0), roi_kind_, ZoomPlane().iqmp); }
void CView2d::CalcRoiZAll() { ::CalcRoiZAll(Data(0), CurrentPlane(), roi_kind_, ZoomPlane().iqmp); }

void CView2d::OnRoiCrop() {
    if (TheRoi().Crop2dRoi(Data(0), roi_kind_)) SizeFrame(width(), height());
    Draw();
}

void CView2d::OnRoiFill(bool all) {
    all ? TheRoi().Fill2dRoiAll(Data(0), roi_kind_)
        : TheRoi().Fill2dRoi(Data(0), CurrentPlane(), roi_kind_);
    Draw();
}

void CView2d::OnRoiKeep(bool all) {
    all ? TheRoi().Keep2dRoiAll(Data(0), roi_kind_)
        : TheRoi().Keep2dRoi(Data(0), CurrentPlane(), roi_kind_);
    Draw();
}

void CView2d::OnZeroInside() {
    TheRoi().OnZeroInside(Data(0), CurrentPlane(), roi_kind_);
    Draw();
}

void CView2d::OnZeroOutside() {
    TheRoi().OnZeroOutside(Data(0), CurrentPlane(), roi_kind_);
    Draw();
}

void CView2d::OnRoiPaste() {
    const QMimeData* mime = QApplication::clipboard()->mimeData();
    const QByteArray bytes = mime ? mime->data(kBinaryCopyMime) : QByteArray();
    TheRoi().OnPaste(Data(0), CurrentPlane(), roi_kind_,
                     std::string(bytes.constData(), static_cast<size_t>(bytes.size())));
    Draw();
}

void CView2d::OnRoiUndo() {
    if (TheRoi().Undo(Data(0))) SizeFrame(width(), height());
    Draw();
}

void CView2d::OnRoiSelectAll() {
    if (CRoiEdit::SelectAll(roi_kind_, Columns(), Rows())) {
        if (roi_kind_ != ROI_X && roi_kind_ != ROI_Y) roi_kind_ = ROI_RECT;
        ShowStatus(" select all");
    }
    update();
}

void CView2d::OnSelRoiColor() {
    const QColor c = QColorDialog::getColor(RoiColor(Look().roi_color), this, "roi color");
    if (!c.isValid()) return;
    Look().roi_color = c.red() | c.green() << 8 | c.blue() << 16;
    update();
}

void AddRoiMenu(QMenu* menu, CView2d* view) {
    auto add = [menu, view](const char* text, const char* name, auto slot) {
        QAction* a = menu->addAction(text);
        a->setObjectName(name);
        QObject::connect(a, &QAction::triggered, view, slot);
    };
    add("statistics", "roi_stats", [view] { view->CalcRoi(); });
    add("statistics all planes", "roi_stats_all", [view] { view->CalcRoiAll(); });
    add("statistics each z", "roi_stats_z", [view] { view->CalcRoiZAll(); });
    menu->addSeparator();
    add("crop", "roi_crop", [view] { view->OnRoiCrop(); });
    add("fill inside", "roi_fill", [view] { view->OnRoiFill(false); });
    add("fill inside all planes", "roi_fill_all", [view] { view->OnRoiFill(true); });
    add("fill outside", "roi_keep", [view] { view->OnRoiKeep(false); });
    add("fill outside all planes", "roi_keep_all", [view] { view->OnRoiKeep(true); });
    add("zero inside", "roi_zero_inside", [view] { view->OnZeroInside(); });
    add("zero outside", "roi_zero_outside", [view] { view->OnZeroOutside(); });
    add("paste", "roi_paste", [view] { view->OnRoiPaste(); });
    add("undo", "roi_undo", [view] { view->OnRoiUndo(); });
    menu->addSeparator();
    add("select all", "roi_select_all", [view] { view->OnRoiSelectAll(); });
    add("roi color...", "roi_color", [view] { view->OnSelRoiColor(); });
}
