#include "display/qt/frame_2d.h"

#include <QActionGroup>
#include <QInputDialog>
#include <QMenu>
#include <QMenuBar>

#include "core/data_space.h"
#include "display/qt/scroll_menu.h"
#include "display/qt/view_2d.h"

namespace {

// Arrays a palette can come from: 256 x 3 or 3 x 256.
QStringList PaletteArrays(const CDataSpace& space) {
    QStringList names;
    for (int i = 0; i < space.Count(); ++i) {
        const CZrkData* a = space.GetData(i);
        if (!a || !a->Data() || a->nz * a->nt * a->nu * a->nv != 1) continue;
        if ((a->nx == 256 && a->ny == 3) || (a->nx == 3 && a->ny == 256)) names << a->name;
    }
    return names;
}

}  // namespace

CFrame2d::CFrame2d(CMdiDoc* doc, CView2d* view) : CMdiFrame(doc, view) {
    view->SetStatusLine(StatusLine());
    BuildMenus(view);
}

void CFrame2d::BuildMenus(CView2d* view) {
    auto add = [this](QMenu* menu, const QString& text, const QString& name, auto slot) {
        QAction* a = menu->addAction(text);
        a->setObjectName(name);
        connect(a, &QAction::triggered, this, slot);
        return a;
    };
    QMenu* zoom = Menus()->addMenu("zoom");
    add(zoom, "25%", "zoom_25", [view] { view->OnZoom25(); });
    add(zoom, "50%", "zoom_50", [view] { view->OnZoom50(); });
    add(zoom, "100%", "zoom_100", [view] { view->OnZoom100(); });
    add(zoom, "200%", "zoom_200", [view] { view->OnZoom200(); });
    add(zoom, "400%", "zoom_400", [view] { view->OnZoom400(); });
    add(zoom, "zoom in", "zoom_in", [view] { view->OnZoomIn(); });
    add(zoom, "zoom out", "zoom_out", [view] { view->OnZoomOut(); });
    zoom->addSeparator();
    static const char* kModes[5] = {"as set", "fit width", "fit height", "fit both", "fit aspect"};
    for (int m = 0; m < 5; ++m)
        add(zoom, kModes[m], QString("zoom_mode_%1").arg(m), [view, m] { view->SetZoomMode(m); });
    zoom->addSeparator();
    for (int k = 0; k < 4; ++k)
        add(zoom, CImageView::kBitmapKinds[k], QString("bitmap_%1").arg(k),
            [view, k] { view->SetBitmapKind(k); });

    QMenu* cursor = Menus()->addMenu("cursor");
    auto* modes = new QActionGroup(this);
    for (int m = 0; m < CImageView::kCursorModes; ++m) {
        QAction* a = add(cursor, CImageView::kCursorNames[m], QString("cursor_%1").arg(m),
                         [view, m] { view->SetCursorMode(m); });
        a->setCheckable(true);
        a->setChecked(m == 0);
        modes->addAction(a);
    }

    AddRoiMenu(Menus()->addMenu("roi"), view);

    AddScrollMenu(Menus()->addMenu("scroll"), view, this);

    QMenu* palette = Menus()->addMenu("palette");
    connect(palette, &QMenu::aboutToShow, this, [this, palette, view, add] {
        palette->clear();
        auto table = [&](QMenu* menu, const QString& text, const char* name) {
            add(menu, text, QString("palette_%1").arg(QString(name).replace(' ', '_')),
                [view, name] { view->SetPalette(name); });
        };
        table(palette, "grey", "grey");
        table(palette, "awave", "awave");
        table(palette, "aaasmo", "aaasmo");
        QMenu* body = palette->addMenu("black body");
        table(body, "yellow", "black body yellow");
        table(body, "red", "black body red");
        table(body, "green", "black body green");
        table(body, "blue", "black body blue");
        table(palette, "spectrum", "spectrum");
        table(palette, "thallium", "thallium");
        table(palette, "jet", "jet");
        add(palette, "load from file...", "palette_load", [view] { view->OnLoadPalette(); });
        for (const QString& name : PaletteArrays(view->Space()))
            add(palette, name, "palette_array_" + name, [view, name] { view->SetPalette(name); });
    });
    emit palette->aboutToShow();

    QMenu* image = Menus()->addMenu("image");
    CDataSpace& space = view->Space();
    add(image, "copy", "image_copy", [view] { view->OnCopy(); });
    add(image, "histogram", "image_hist", [view, &space] { view->CalcHist(space); });
    add(image, "histogram all planes", "image_hist_all",
        [view, &space] { view->CalcHistAll(space); });
    add(image, "histogram each z", "image_hist_z", [view, &space] { view->CalcHistZAll(space); });
    add(image, "plot profile", "image_profile", [view, &space] { view->PlotProfile(space); });
    add(image, "plot profile thru z", "image_profile_z",
        [view, &space] { view->PlotProfileThruZ(space); });
    add(image, "append profile", "image_append_profile",
        [view, &space] { view->AppendLastProfile(space); });
    add(image, "crop", "image_crop", [view, &space] { view->OnCrop(space); });
    static const char* kCats[6] = {"cat right",  "cat left",  "cat top",
                                   "cat bottom", "cat front", "cat back"};
    for (int k = 0; k < 6; ++k)
        add(image, kCats[k], QString("image_cat_%1").arg(k), [this, view, &space, k] {
            QStringList names;
            for (int i = 0; i < space.Count(); ++i)
                if (const CZrkData* a = space.GetData(i); a && a->Data()) names << a->name;
            bool ok = false;
            const QString name =
                QInputDialog::getItem(this, kCats[k], "array", names, 0, false, &ok);
            const CZrkData* b = ok ? space.FindData(name.toUtf8().constData()) : nullptr;
            if (!b) return;
            switch (k) {
                case 0:
                    view->OnCatRight(space, b);
                    break;
                case 1:
                    view->OnCatLeft(space, b);
                    break;
                case 2:
                    view->OnCatTop(space, b);
                    break;
                case 3:
                    view->OnCatBottom(space, b);
                    break;
                case 4:
                    view->OnCatFront(space, b);
                    break;
                default:
                    view->OnCatBack(space, b);
                    break;
            }
        });
    add(image, "transpose xy", "image_transpose_xy", [view] { view->OnTransposeXy(); });
    add(image, "transpose xz", "image_transpose_xz", [view] { view->OnTransposeXz(); });
    add(image, "transpose yz", "image_transpose_yz", [view] { view->OnTransposeYz(); });
    add(image, "rotate +90", "image_rotate_90", [view] { view->OnRotate90(); });
    add(image, "rotate -90", "image_rotate_m90", [view] { view->OnRotateM90(); });
    image->addSeparator();
    add(image, "print...", "image_print", [view] { view->OnPrint(); });
    add(image, "save data and close", "image_save_close", [view] { view->OnSaveDataAndClose(); });
    add(image, "delete data and close", "image_delete_close",
        [view] { view->OnDeleteDataAndClose(); });
}
