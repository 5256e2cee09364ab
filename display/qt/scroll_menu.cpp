#include "display/qt/scroll_menu.h"

#include <QMenu>

#include "display/view_state.h"

void AddScrollMenu(QMenu* menu, CMdiView* view, QObject* context) {
    auto add = [menu, context](const QString& text, const QString& name, auto slot) {
        QAction* a = menu->addAction(text);
        a->setObjectName(name);
        QObject::connect(a, &QAction::triggered, context, slot);
    };
    add("z", "scroll_z", [view] { view->OnScrollZ(); });
    add("t", "scroll_t", [view] { view->OnScrollT(); });
    add("u", "scroll_u", [view] { view->OnScrollU(); });
    add("v", "scroll_v", [view] { view->OnScrollV(); });
    add("all", "scroll_all", [view] { view->OnScrollAll(); });
    menu->addSeparator();
    add("next", "scroll_next", [view] { view->OnScrollNext(); });
    add("prior", "scroll_prior", [view] { view->OnScrollPrior(); });
    add("faster", "scroll_plus", [view] { view->OnScrollPlus(); });
    add("slower", "scroll_minus", [view] { view->OnScrollMinus(); });
    menu->addSeparator();
    static const char* kPeriods[8] = {"50 ms", "100 ms", "200 ms", "500 ms",
                                      "1 s",   "2 s",    "5 s",    "10 s"};
    for (int k = 0; k < 8; ++k) {
        const int period = CMdiView::kPeriods[k];
        add(kPeriods[k], QString("scroll_%1ms").arg(period),
            [view, period] { view->StartScroll(period); });
    }
    add("stop", "scroll_stop", [view] { view->OnStopScroll(); });
}
