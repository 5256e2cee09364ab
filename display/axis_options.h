// CAxisOptions: the axis options of one plot kind (1d or xy), set apart from the display
// options because they are fine detail: major and minor tick spacing and lengths, labels
// left out between shown ones, grid, label format, the scale and offset of the values shown
// and the line thickness, once for the x axes (kinds 1, 3) and once for the y axes (2, 4).
// New looks of the kind take them; Apply gives them to a look that is open already.
//
//   CAxisOptions& o = Global1d().axes_1d;
//   o.axis[0].tick = 10;           // x ticks every 10
//   o.Normalize();
//   o.UpdateLookDefaults();        // CLook(LOOK_1D) now starts with it
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

class CKeyReader;
class CLook;
struct GAxis;

// The options of one direction. Spacing 0 lets the plot choose the major ticks and leaves
// out the minor ones.
struct CAxisStyle {
    float tick = 0.0f;
    float minortick = 0.0f;
    int ticklen = 6;
    int mticklen = 3;
    int skipinter = 0;
    int grid = 0;
    int thick = 1;
    float tickscale = 1.0f;
    float tickoff = 0.0f;
    std::string tickformat = "default";
};

class CAxisOptions {
  public:
    // `kind`: LOOK_1D or LOOK_XY; the keys start with "1d_" or "xy_".
    explicit CAxisOptions(uint32_t kind) : kind(kind) {}

    // One key of the preferences; 1 when it was one of ours.
    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;
    // Brings hand-edited values into range: negative or non-finite spacings to 0, a scale
    // of 0 to 1, lengths and thickness to what a plot can draw.
    void Normalize();
    // The fields of the axis record's direction into it.
    void Apply(GAxis& axis) const;
    void Apply(CLook& look) const;
    // New looks of the kind start with the fields as they stand now.
    void UpdateLookDefaults() const;

    uint32_t kind;
    CAxisStyle axis[2];  // x, y
};
