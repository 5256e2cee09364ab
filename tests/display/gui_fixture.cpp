#include "tests/display/gui_fixture.h"

CView2d* DisplayGuiTest::Open(const char* name, uint32_t kind, const char* g, const char* b) {
    CDisplayRequest r;
    r.kind = kind;
    r.data[0] = space_.FindData(name);
    if (g) r.data[1] = space_.FindData(g);
    if (b) r.data[2] = space_.FindData(b);
    CLook look(kind);
    for (int k = 0; k < 4; ++k)
        if (CPlane* p = look.Plane(k)) p->window = 256, p->level = 128;
    r.look = &look;
    r.name = name;
    CDisplayEntry* e = DisplayWindow(kind)(r);
    if (!e) return nullptr;
    auto* doc = static_cast<CMdiDoc*>(e);
    return qobject_cast<CView2d*>(doc->Frame()->View());
}