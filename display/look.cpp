#include "display/look.h"

#include <cstdio>
#include <cstring>

#include "core/host.h"

namespace {

// Loops over the keys of one record until `end`; `offer` tries the current token.
template <class Offer>
void KeyLoop(CKeyReader& in, const char* end, Offer offer) {
    for (;;) {
        in.Next();
        if (in.IsKey(end)) return;
        offer();
    }
}

void PutFont(CTextSink& out, const CFont& font) {
    char line[CTextSink::kLine];
    out.Put(line, FontLine(line, sizeof line, font));
}

// "%xi %s": a hexadecimal colour with a literal i, then the text to the end of the line.
void PutColouredText(CTextSink& out, const char* key, unsigned colour, const char* text) {
    out.Format("%s %xi ", key, colour);
    out.Put(text, strnlen(text, 127));
    out.Put("\n", 1);
}

int ReadColouredText(CKeyReader& in, const char* key, unsigned* colour, char* text, size_t size) {
    unsigned c = 0;
    if (!in.Hex(key, &c)) return 0;
    *colour = c;  // strtoul stops at the i
    std::snprintf(text, size, "%s", in.RestOfLine().c_str());
    return 1;
}

int ReadCount(CKeyReader& in, const char* key, int* count) { return in.Int(key, count); }

}  // namespace

CPlane& CPlane::operator=(const CPlane& other) {
    if (this == &other) return *this;
    iqmp = other.iqmp;
    window = other.window, level = other.level;
    datamin = other.datamin, datamax = other.datamax;
    inv = other.inv, wscale = other.wscale, nonlin = other.nonlin, wlcycles = other.wlcycles;
    zoom[0] = other.zoom[0], zoom[1] = other.zoom[1];
    pan[0] = other.pan[0], pan[1] = other.pan[1];
    palette_word = other.palette_word;
    palette = other.palette ? std::make_unique<CPal>(*other.palette) : nullptr;
    return *this;
}

void CPlane::SetPalette(uint32_t mode, const char* name, const CDataSpace* space) {
    palette = std::make_unique<CPal>(mode);
    palette->SetByName(name, space);
    palette_word = mode;
}

void CPlane::Write(CTextSink& out, const char* name, const CDataSpace* space) const {
    out.Format("%s=\n", name);
    out.Format("zoom= %f %f\n", zoom[0], zoom[1]);
    out.Format("pan= %d %d\n", pan[0], pan[1]);
    out.Format("iqmp= %d %d\n", iqmp, static_cast<int>(palette_word));
    if (palette) {
        out.Text("palname= ");
        out.Text(palette->FileName(space));
        out.Put("\n", 1);
    }
    out.Format("window= %f\n", window);
    out.Format("level= %f\n", level);
    out.Format("datamin= %f\n", datamin);
    out.Format("datamax= %f\n", datamax);
    out.Format("inv= %d\n", inv);
    out.Format("wscale= %d\n", wscale);
    out.Format("nonlin= %f\n", nonlin);
    out.Format("wlcycles= %d\n", wlcycles);
    out.Text("endplane\n");
}

int CPlane::ReadWinLev(CKeyReader& in) {
    return in.Float("window=", &window) || in.Float("level=", &level) ||
           in.Float("datamin=", &datamin) || in.Float("datamax=", &datamax) ||
           in.Int("inv=", &inv) || in.Int("wscale=", &wscale) || in.Float("nonlin=", &nonlin) ||
           in.Int("wlcycles=", &wlcycles);
}

void CPlane::Read(CKeyReader& in, const CDataSpace* space) {
    std::string palname;
    bool named = false;
    int word = static_cast<int>(palette_word);
    KeyLoop(in, "endplane", [&] {
        if (in.Float2("zoom=", &zoom[0], &zoom[1]) || in.Int2("pan=", &pan[0], &pan[1]) ||
            in.Int2("iqmp=", &iqmp, &word) || ReadWinLev(in))
            return;
        if (in.String("palname=", &palname)) named = true;
    });
    palette_word = static_cast<uint32_t>(word);
    if (named) SetPalette(palette_word ? palette_word : 7, palname.c_str(), space);
}

void GAxis::Reset() {
    show = 1, enable = 1;
    ax_range[0] = 0.0f, ax_range[1] = 1.0f;
    showtick = 1;
    tick = 0.0f;
    ticklen[0] = 6, ticklen[1] = 0;
    showmtick = 0;
    minortick = 0.0f;
    mticklen[0] = 3, mticklen[1] = 0;
    ax_thick = 1, tk_thick = 1;
    skipinter = 0;
    label = 1;
    grid = 0, textat = 0;
    crossat = 0.0f, tickoff = 0.0f;
    tickscale = 1.0f;
    std::snprintf(tickformat, sizeof tickformat, "default");
    font = CFont{};
    color = 0;
}

void GAxis::Write(CTextSink& out) const {
    out.Format("xyz= %d\n", kind);
    out.Format("show= %d\n", show);
    out.Format("enable= %d\n", enable);
    out.Format("ax_range= %f %f\n", ax_range[0], ax_range[1]);
    out.Format("showtick= %d\n", showtick);
    out.Format("tick= %f\n", tick);
    out.Format("ticklen= %d %d\n", ticklen[0], ticklen[1]);
    out.Format("showmtick= %d\n", showmtick);
    out.Format("minortick= %f\n", minortick);
    out.Format("mticklen= %d %d\n", mticklen[0], mticklen[1]);
    out.Format("ax_thick= %d\n", ax_thick);
    out.Format("tk_thick= %d\n", tk_thick);
    out.Format("skipinter= %d\n", skipinter);
    out.Format("label= %d\n", label);
    out.Format("grid= %d\n", grid);
    out.Format("textat= %d\n", textat);
    out.Format("crossat= %f\n", crossat);
    out.Format("tickoff= %f\n", tickoff);
    out.Format("tickscale= %f\n", tickscale);
    out.Text("tickformat= ");
    out.Put(tickformat, strnlen(tickformat, sizeof tickformat - 1));
    out.Put("\n", 1);
    PutFont(out, font);
    out.Format("color= %i\n", color);
    out.Text("end \n");
}

void GAxis::Read(CKeyReader& in, float* plot_range) {
    KeyLoop(in, "end", [&] {
        if (in.Int("xyz=", &kind) || in.Int("show=", &show) || in.Int("doaxis=", &show) ||
            in.Int("enable=", &enable) || in.Float2("ax_range=", &ax_range[0], &ax_range[1]) ||
            in.Int("showtick=", &showtick) || in.Float("tick=", &tick) ||
            in.Int2("ticklen=", &ticklen[0], &ticklen[1]) || in.Int("showmtick=", &showmtick) ||
            in.Float("minortick=", &minortick) ||
            in.Int2("mticklen=", &mticklen[0], &mticklen[1]) || in.Int("ax_thick=", &ax_thick) ||
            in.Int("tk_thick=", &tk_thick) || in.Int("skipinter=", &skipinter) ||
            in.Int("label=", &label) || in.Int("grid=", &grid) || in.Int("textat=", &textat) ||
            in.Float("crossat=", &crossat) || in.Float("tickoff=", &tickoff) ||
            in.Float("tickscale=", &tickscale) ||
            in.Chars("tickformat=", tickformat, sizeof tickformat) || in.Font("font=", &font) ||
            in.Int("fontsize=", &font.height) || in.Int("color=", &color))
            return;
        float range[2];
        if (in.Float2("plt_range=", &range[0], &range[1]) && plot_range)
            plot_range[0] = range[0], plot_range[1] = range[1];
    });
}

void CLine::Write(CTextSink& out) const {
    PutColouredText(out, "text=", text_color, text);
    out.Format("symbol= %i\n", symbol);
    out.Format("line= %i\n", line);
    out.Format("color= %i\n", color);
    out.Format("thick= %i\n", thick);
    out.Format("symsize= %i\n", symsize);
    out.Format("overlay= %f\n", overlay);
    out.Format("iqmp= %i\n", iqmp);
    out.Format("iqmpy= %i\n", iqmpy);
    out.Format("err_y= %i\n", err_y);
    out.Format("err_wings= %i\n", err_wings);
    out.Format("err_color= %i\n", err_color);
    out.Format("err_xy= %i\n", err_xy);
    out.Text("end \n");
}

void CLine::Read(CKeyReader& in) {
    KeyLoop(in, "end", [&] {
        ReadColouredText(in, "text=", &text_color, text, sizeof text) ||
            in.Int("symbol=", &symbol) || in.Int("line=", &line) || in.Int("color=", &color) ||
            in.Int("thick=", &thick) || in.Int("symsize=", &symsize) ||
            in.Float("overlay=", &overlay) || in.Int("iqmp=", &iqmp) || in.Int("iqmpy=", &iqmpy) ||
            in.Int("err_y=", &err_y) || in.Int("err_wings=", &err_wings) ||
            in.Int("err_color=", &err_color) || in.Int("err_xy=", &err_xy) ||
            in.Font("font=", &font);
    });
}

void CArrow::Write(CTextSink& out) const {
    out.Format("start= %f %f\n", start[0], start[1]);
    out.Format("end= %f %f\n", end[0], end[1]);
    out.Format("arrow0= %i\n", arrow0);
    out.Format("arrow1= %i\n", arrow1);
    out.Format("thick= %i\n", thick);
    out.Format("size= %i\n", size);
    out.Format("color= %i\n", color);
    out.Text("end \n");
}

void CArrow::Read(CKeyReader& in) {
    // "end=" is a key of its own; only the bare "end" closes the record.
    KeyLoop(in, "end", [&] {
        in.Float2("start=", &start[0], &start[1]) || in.Float2("end=", &end[0], &end[1]) ||
            in.Int("arrow0=", &arrow0) || in.Int("arrow1=", &arrow1) || in.Int("thick=", &thick) ||
            in.Int("size=", &size) || in.Int("color=", &color);
    });
}

void CLegend::Write(CTextSink& out) const {
    out.Format("legend= %d\n", legend);
    out.Format("pos= %f %f\n", pos[0], pos[1]);
    out.Format("llen= %f\n", llen);
    PutFont(out, font);
    out.Format("space= %i %i\n", space[0], space[1]);
    out.Text("end \n");
}

void CLegend::Read(CKeyReader& in) {
    if (!in.Int("legend=", &legend)) in.Int("dolegend=", &legend);
    KeyLoop(in, "end", [&] {
        in.Int("dolegend=", &legend) || in.Float2("pos=", &pos[0], &pos[1]) ||
            in.Float("llen=", &llen) || in.Font("font=", &font) ||
            in.Int("fontsize=", &font.height) || in.Int2("space=", &space[0], &space[1]);
    });
}

void CScreen::Write(CTextSink& out) const {
    out.Text("screen=\n");
    out.Format("pix_range= %d %d\n", pix_range[0], pix_range[1]);
    out.Format("usr_xrange= %f %f\n", usr_xrange[0], usr_xrange[1]);
    out.Format("usr_yrange= %f %f\n", usr_yrange[0], usr_yrange[1]);
    out.Format("zoom= %d\n", zoom);
    out.Format("bg= %d\n", bg);
    out.Text("end \n");
}

void CScreen::Read(CKeyReader& in) {
    int clip = 0;
    KeyLoop(in, "end", [&] {
        in.Int2("pix_range=", &pix_range[0], &pix_range[1]) ||
            in.Float2("usr_xrange=", &usr_xrange[0], &usr_xrange[1]) ||
            in.Float2("usr_yrange=", &usr_yrange[0], &usr_yrange[1]) || in.Int("zoom=", &zoom) ||
            in.Int("bg=", &bg) || in.Int("clip=", &clip);
    });
}

void CText::Write(CTextSink& out) const {
    PutColouredText(out, "str=", str_color, str);
    out.Format("pos= %f %f\n", pos[0], pos[1]);
    PutFont(out, font);
    out.Format("color= %i\n", color);
    out.Format("hv= %d\n", hv);
    out.Text("end \n");
}

void CText::Read(CKeyReader& in) {
    KeyLoop(in, "end", [&] {
        ReadColouredText(in, "str=", &str_color, str, sizeof str) ||
            in.Float2("pos=", &pos[0], &pos[1]) || in.Font("font=", &font) ||
            in.Int("fontsize=", &font.height) || in.Int("color=", &color) || in.Int("hv=", &hv);
    });
}

CLookDefaults& LookDefaults(uint32_t kind) {
    static CLookDefaults table[5] = {};
    static bool ready = false;
    if (!ready) {
        ready = true;
        for (CLookDefaults& d : table)
            for (int k = 0; k < 4; ++k) d.axes[k].kind = k + 1;
        table[4].scroll_time = 1000;
    }
    switch (kind & 0x1F0000) {
        case LOOK_1D:
            return table[0];
        case LOOK_2D:
            return table[1];
        case LOOK_XY:
            return table[2];
        case LOOK_RGB:
            return table[3];
        default:
            return table[4];
    }
}

CLook::CLook(uint32_t kind) : flags(kind) {
    const CLookDefaults& d = LookDefaults(kind);
    scroll_time = d.scroll_time;
    roi_color = d.roi_color;
    radians = d.radians;
    units = d.units;
    screen.bg = d.bg;
    if (kind & (LOOK_1D | LOOK_XY)) {
        axes.assign(d.axes, d.axes + 4);
        naxis = 4;
    }
    if (kind & LOOK_2D) palplane.SetPalette(7, d.palname, nullptr);
    if (kind & LOOK_RGB) {
        rplane.SetPalette(1, "", nullptr);
        gplane.SetPalette(2, "", nullptr);
        bplane.SetPalette(4, "", nullptr);
    }
}

CLook::~CLook() { Host().Trace("CLook::~CLook"); }

CLine& CLook::AddLine() { return lines.emplace_back(); }
CArrow& CLook::AddArrow() { return arrows.emplace_back(); }
CText& CLook::AddText() { return text.emplace_back(); }

void CLook::RemoveLine(int index) {
    if (index >= 0 && index < static_cast<int>(lines.size())) lines.erase(lines.begin() + index);
}
void CLook::RemoveArrow(int index) {
    if (index >= 0 && index < static_cast<int>(arrows.size())) arrows.erase(arrows.begin() + index);
}
void CLook::RemoveText(int index) {
    if (index >= 0 && index < static_cast<int>(text.size())) text.erase(text.begin() + index);
}

CPlane* CLook::Plane(int index) {
    return const_cast<CPlane*>(static_cast<const CLook*>(this)->Plane(index));
}

const CPlane* CLook::Plane(int index) const {
    switch (index) {
        case 0:
            return &palplane;
        case 1:
            return &rplane;
        case 2:
            return &gplane;
        case 3:
            return &bplane;
        default:
            return nullptr;
    }
}

void CLook::Write(CTextSink& out, const CDataSpace* space) const {
    out.Text("look= \n");
    out.Format("radians= %i\n", radians);
    out.Format("scroll_time= %i\n", scroll_time);
    out.Format("roi_color= %i\n", roi_color);
    out.Format("units= %i\n", units);
    if (flags & LOOK_2D) palplane.Write(out, "palplane", space);
    if (flags & LOOK_RGB) {
        rplane.Write(out, "rplane", space);
        gplane.Write(out, "gplane", space);
        bplane.Write(out, "bplane", space);
    }
    out.Format("arrows= %i\n", static_cast<int>(arrows.size()));
    for (const CArrow& a : arrows) a.Write(out);
    out.Format("text= %i\n", static_cast<int>(text.size()));
    for (const CText& t : text) t.Write(out);
    legend.Write(out);
    if (!lines.empty()) {
        out.Format("lines= %i\n", static_cast<int>(lines.size()));
        for (const CLine& l : lines) l.Write(out);
    }
    screen.Write(out);
    out.Format("naxis= %d\n", static_cast<int>(axes.size()));
    for (const GAxis& a : axes) a.Write(out);
    out.Text("endlook \n");
}

int CLook::Read(CKeyReader& in, const CDataSpace* space) {
    // The look-level palette keys of old files, applied once the block is through.
    int pal_mode = 0;
    std::string pal_name;
    bool old_palette = false;
    int count = 0;
    for (;;) {
        in.Next();
        if (in.IsKey("endlook")) break;
        if (in.IsKey("legend=") || in.IsKey("dolegend=")) {
            legend.Read(in);
        } else if (in.IsKey("xaxis=") || in.IsKey("yaxis=")) {
            const size_t k = in.IsKey("xaxis=") ? 0 : 1;
            if (axes.size() <= k) axes.resize(k + 1);
            axes[k].kind = static_cast<int>(k) + 1;
            axes[k].Read(in, k == 0 ? screen.usr_xrange : screen.usr_yrange);
            naxis = static_cast<int>(axes.size());
        } else if (in.IsKey("screen=")) {
            screen.Read(in);
        } else if (ReadCount(in, "naxis=", &count)) {
            if (count < 0 || count > kMaxAxes) return 0;
            axes.resize(static_cast<size_t>(count));
            naxis = count;
            for (GAxis& a : axes) a.Read(in, nullptr);
        } else if (ReadCount(in, "arrows=", &count)) {
            if (count < 0 || count > kMaxItems) return 0;
            if (count > 0) arrows.resize(static_cast<size_t>(count));
            for (int k = 0; k < count; ++k) arrows[static_cast<size_t>(k)].Read(in);
        } else if (ReadCount(in, "lines=", &count)) {
            if (count < 0 || count > kMaxItems) return 0;
            if (count > 0) lines.resize(static_cast<size_t>(count));
            for (int k = 0; k < count; ++k) lines[static_cast<size_t>(k)].Read(in);
        } else if (ReadCount(in, "text=", &count)) {
            if (count < 0 || count > kMaxItems) return 0;
            if (count > 0) text.resize(static_cast<size_t>(count));
            for (int k = 0; k < count; ++k) text[static_cast<size_t>(k)].Read(in);
        } else if (in.IsKey("palplane=")) {
            palplane.Read(in, space);
        } else if (in.IsKey("rplane=")) {
            rplane.Read(in, space);
        } else if (in.IsKey("gplane=")) {
            gplane.Read(in, space);
        } else if (in.IsKey("bplane=")) {
            bplane.Read(in, space);
        } else if (in.Int("scroll_time=", &scroll_time) || in.Int("radians=", &radians) ||
                   in.Int("roi_color=", &roi_color) || in.Int("units=", &units)) {
        } else if (in.Int("pal=", &pal_mode)) {
            old_palette = true;
        } else if (in.String("palname=", &pal_name) || in.String("pal_data=", &pal_name)) {
            old_palette = true;
        }
    }
    if (old_palette)
        palplane.SetPalette(pal_mode > 0 ? static_cast<uint32_t>(pal_mode) : 7, pal_name.c_str(),
                            space);
    return 1;
}
