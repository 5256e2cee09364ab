// CLook: the whole appearance of one display: its kind, planes with window, level and
// palette, axes, legend, screen geometry, text, lines and arrows. A look is made with a kind
// from that kind's defaults, copied deeply when a display opens from another, and written to
// and read from a workspace as a block of key lines between "look= " and "endlook ".
//
// Writing never touches the heap (the crash path writes looks from a signal handler); the
// records hold fixed character fields for that reason.
//
//   CLook look(KIND_1D);                 // four axes of kinds 1 to 4
//   look.AddLine().color = 0xff0000;
//   CStringSink s;
//   look.Write(s, &space);               // "look= \n" ... "endlook \n"
//   CLook back(KIND_1D);
//   back.Read(reader, &space);           // reader's token was "look="
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "core/key_reader.h"
#include "display/pal.h"
#include "display/text_sink.h"

class CDataSpace;

// Kinds of look, the same bits as the window entries'.
enum : uint32_t {
    LOOK_1D = 0x10000,
    LOOK_2D = 0x20000,
    LOOK_XY = 0x40000,
    LOOK_RGB = 0x80000,
    LOOK_SPREADSHEET = 0x100000,
};

// One displayed plane: part shown, window and level, zoom, pan and palette.
struct CPlane {
    CPlane() = default;
    CPlane(const CPlane& other) { *this = other; }
    CPlane& operator=(const CPlane& other);

    void Write(CTextSink& out, const char* name, const CDataSpace* space) const;
    // Reads to "endplane"; the palette is set by name when "palname=" came.
    void Read(CKeyReader& in, const CDataSpace* space);
    // The eight window/level keys; 1 when the token was one of them.
    int ReadWinLev(CKeyReader& in);
    // Gives the plane a palette of `mode` set by `name` (no name: table 0).
    void SetPalette(uint32_t mode, const char* name, const CDataSpace* space);

    int iqmp = 2;
    float window = 1.0f;
    float level = 0.5f;
    float datamin = 0.0f;
    float datamax = 1.0f;
    int inv = 0;
    int wscale = 0;
    float nonlin = 1.0f;
    int wlcycles = 1;
    float zoom[2] = {100.0f, 100.0f};
    int pan[2] = {0, 0};
    // The palette word: the palette's channel mask, 0 without one.
    uint32_t palette_word = 0;
    std::unique_ptr<CPal> palette;
};

struct GAxis {
    GAxis() { Reset(); }
    void Reset();
    void Write(CTextSink& out) const;
    // Reads to "end", the old keys of "xaxis=" and "yaxis=" blocks too; their "plt_range=" goes
    // to `plot_range` when given.
    void Read(CKeyReader& in, float* plot_range);

    int kind = 0;  // 1 and 3 are x axes, 2 and 4 y axes
    int show, enable;
    float ax_range[2];
    int showtick;
    float tick;
    int ticklen[2];
    int showmtick;
    float minortick;
    int mticklen[2];
    int ax_thick, tk_thick;
    int skipinter;
    int label;
    int grid;
    int textat;
    float crossat;
    float tickoff;
    float tickscale;
    char tickformat[128];
    CFont font;
    int color;
};

// One plotted series.
struct CLine {
    void Write(CTextSink& out) const;
    void Read(CKeyReader& in);

    unsigned text_color = 0;
    char text[128] = {};
    int symbol = 0;
    int line = 1;
    int color = 0;
    int thick = 1;
    int symsize = 4;
    float overlay = 0.0f;
    int iqmp = 0;
    int iqmpy = 0;
    int err_y = 0;
    int err_wings = 0;
    int err_color = 0;
    int err_xy = 0;
    CFont font;
};

struct CArrow {
    void Write(CTextSink& out) const;
    void Read(CKeyReader& in);

    float start[2] = {0, 0};
    float end[2] = {0, 0};
    int arrow0 = 0, arrow1 = 1;
    int thick = 1;
    int size = 8;
    int color = 0;
};

struct CLegend {
    void Write(CTextSink& out) const;
    // Reads to "end"; the token was "legend=" or the old "dolegend=".
    void Read(CKeyReader& in);

    int legend = 0;
    float pos[2] = {0, 0};
    float llen = 20.0f;
    CFont font;
    int space[2] = {0, 0};
};

struct CScreen {
    void Write(CTextSink& out) const;
    void Read(CKeyReader& in);

    int pix_range[2] = {512, 512};
    float usr_xrange[2] = {0, 1};
    float usr_yrange[2] = {0, 1};
    int zoom = 100;
    int bg = 0xffffff;
};

struct CText {
    void Write(CTextSink& out) const;
    void Read(CKeyReader& in);

    unsigned str_color = 0;
    char str[128] = {};
    float pos[2] = {0, 0};
    CFont font;
    int color = 0;
    int hv = 0;
};

// What a new look of one kind starts with; the display options fill these.
struct CLookDefaults {
    int scroll_time = 100;
    int roi_color = 255;
    int radians = 1;
    int units = 0;
    int bg = 0xffffff;
    GAxis axes[4];
    char palname[64] = "grey";
};

// The defaults of `kind` (a LOOK_ bit), changed in place by the display options.
CLookDefaults& LookDefaults(uint32_t kind);

class CLook {
  public:
    // Counts above these give up the look that reads them.
    static constexpr int kMaxAxes = 64;
    static constexpr int kMaxItems = 10000;

    explicit CLook(uint32_t kind);
    CLook(const CLook& other) = default;
    CLook& operator=(const CLook& other) = default;
    ~CLook();

    CLine& AddLine();
    void RemoveLine(int index);
    CArrow& AddArrow();
    void RemoveArrow(int index);
    CText& AddText();
    void RemoveText(int index);
    // 0 palplane, 1 to 3 the r, g, b planes; null otherwise.
    CPlane* Plane(int index);
    const CPlane* Plane(int index) const;

    // "look= \n" to "endlook \n". `space` tells whether an array palette still exists.
    void Write(CTextSink& out, const CDataSpace* space) const;
    // Reads to "endlook"; the token was "look=". Returns 0 when a count gave the look up (its
    // fields so far stay); the end of the file throws the reader's EndOfFile.
    int Read(CKeyReader& in, const CDataSpace* space);

    uint32_t flags;
    std::vector<GAxis> axes;
    CScreen screen;
    std::vector<CArrow> arrows;
    std::vector<CText> text;
    std::vector<CLine> lines;
    int naxis = 0;
    int scroll_time;
    int roi_color;
    int radians;
    int units;
    CLegend legend;
    CPlane palplane;
    CPlane rplane, gplane, bplane;
};
