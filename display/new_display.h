// The new-display option holders and the logic of their forms: CNew1d, CNew2d, CNewRgb,
// CNewXy. A form fills the fields (array names, channel, Fourier preview, append) and calls
// OnViewNew; the option keys go to the preferences under each holder's comment line.
//
// A display of a whole array (one t, u, v) references the array; an array of several t, u, v
// volumes gives one display per volume, each on a copy named by the name format. Displays
// open through their kind's factory (display_entry.h).
//
//   CNew2d& n = ...;
//   n.names[0] = "wave";
//   n.UpdateStatus(space);     // "output= wave (64,64,1,1) in 1 plots"
//   n.OnViewNew(space);        // one 2d display, or the reason in `status`
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "core/key_reader.h"

class CDataSpace;
class CDisplayEntry;
class CZrkData;

class CNewDisplay {
  public:
    explicit CNewDisplay(uint32_t kind, const char* format) : kind(kind), nameformat(format) {}
    virtual ~CNewDisplay() = default;

    // Steps 1 to 4: check, count and ask, make each display (or append). 1 when at least one
    // display opened or took the data; the reason otherwise stays in `status`.
    int OnViewNew(CDataSpace& space);
    // The "output= ..." line for the current fields.
    virtual std::string UpdateStatus(const CDataSpace& space);

    uint32_t kind;
    std::string nameformat;
    std::string names[3];  // the array (1d, 2d), x and y (xy), r, g, b (rgb)
    int iqmp = 2;
    int ft_x = 0, ft_y = 0;
    int append = 0;
    std::string status;
    std::vector<CDisplayEntry*> opened;

  protected:
    // The arrays named by the fields; false with `status` set when one is missing or unfit.
    virtual bool Check(const CDataSpace& space, CZrkData* found[3]);
    // Volumes (t, u, v) that become displays.
    uint64_t Volumes(CZrkData* const found[3]) const;
    const char* Noun() const;
    int AppendTo(CDataSpace& space, CZrkData* const found[3]);
    virtual void SetLookDefaults() const {}
};

class CNew2d : public CNewDisplay {
  public:
    CNew2d() : CNewDisplay(0x20000, "i%02d") {}
    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;

    std::string palname = "grey";
    unsigned roicolor = 255;
    int scroll_time = 100;
    int radians = 1;
    int units = 0;

  protected:
    void SetLookDefaults() const override;
};

class CNewRgb : public CNewDisplay {
  public:
    CNewRgb() : CNewDisplay(0x80000, "rgb%02d") {}
    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;
    std::string UpdateStatus(const CDataSpace& space) override;

  protected:
    bool Check(const CDataSpace& space, CZrkData* found[3]) override;
};

// What 1d and xy plots share: the lines' and axes' colours, line thickness and marks, the
// window's size and which axes are shown and labelled.
class CNewPlot : public CNewDisplay {
  public:
    using CNewDisplay::CNewDisplay;
    // New plots' looks take the fields as they stand now.
    void UpdateLookDefaults() const { SetLookDefaults(); }

    unsigned linecolor = 0, linecolor2 = 0xff, axiscolor = 0, backcolor = 0xffffff;
    int thick = 1, symbol = 0, symsize = 4;
    int plotsize[2] = {512, 256};
    int axis[4] = {0, 1, 1, 0};  // top, bottom, left, right
    int axis_text[4] = {0, 1, 1, 0};
    int lines_overlayed = 0;
    CFont axisfont;

  protected:
    void SetLookDefaults() const override;
};

class CNew1d : public CNewPlot {
  public:
    // The plots' axes follow these options from the start.
    CNew1d() : CNewPlot(0x10000, "p%02d") { CNew1d::SetLookDefaults(); }
    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;
    std::string UpdateStatus(const CDataSpace& space) override;

    unsigned roicolor = 255, ncolor = 8;
    int scroll_time = 100;

  protected:
    void SetLookDefaults() const override;
};

class CNewXy : public CNewPlot {
  public:
    CNewXy() : CNewPlot(0x40000, "xy%02d") { CNewPlot::SetLookDefaults(); }
    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;

  protected:
    bool Check(const CDataSpace& space, CZrkData* found[3]) override;
};
