// CDesktop: the options and the list logic of the data desktop. The widget asks for the rows
// and the byte line after every command and shows them as they are.
//
// Rows are the records of a data space in list order, less the ones the desktop hides (the
// system's scratch records and the ".window" companions of displays). The other reserved
// names, such as "pi", show as reserved rows that "free data" leaves alone.
//
//   CDesktop desk;
//   for (const CDesktopRow& row : desk.Rows(space)) ...
//   status->setText(desk.ByteLine(space));
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "shell/main_frame_options.h"

class CDataSpace;
class CKeyReader;
class CZrkData;

// The select bit of a record picked on the desktop.
constexpr unsigned kDesktopSelect = 0x1;

struct CDesktopRow {
    CZrkData* record = nullptr;
    std::string name;
    // Details mode only: "%dx%dx%dx%d" of the first four resolutions, the type and caption.
    std::string size;
    std::string type;
    std::string caption;
    bool reserved = false;
};

// True for the records the desktop list never shows.
bool IsHiddenOnDesktop(const char* name);

class CDesktop {
  public:
    static constexpr int kMaxPaths = 5;

    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;

    std::vector<CDesktopRow> Rows(const CDataSpace& space) const;
    // "data space %d; undo space %d; total bytes %d", or "total space" without desktop_bytes.
    std::string ByteLine(const CDataSpace& space) const;
    // Puts `folder` first in the path list, dropping a repeat and the sixth.
    void AddPath(const std::string& folder);

    // The display kinds a double click opens in: "1d", "2d", "rgb", "xy" and their LOOK_ bits.
    static constexpr int kKinds = 4;
    static constexpr const char* kKindNames[kKinds] = {"1d", "2d", "rgb", "xy"};
    static constexpr unsigned kKindBits[kKinds] = {0x10000, 0x20000, 0x80000, 0x40000};
    // The kinds the selector lists: all four, or only the current one.
    std::vector<int> ListedKinds() const;
    // "toggle 1 display type": the next kind, the first after the last.
    void ToggleKind() { kind = (kind + 1) % kKinds; }
    unsigned KindBit() const { return kKindBits[kind]; }

    int view_desktop = 1;
    int desktop_minimized = 0;
    CRectOption desktop_loc;
    int desktop_details = 1;
    int desktop_bytes = 1;
    int desktop_iqmp = 0;
    int desktop_npath = 0;
    int desktop_selpath = 0;
    std::string desktop_path[kMaxPaths];
    std::string desktop_script_editor = "xdg-open";
    // The kind selector: the current kind and whether only it is listed.
    int kind = 1;
    int one_kind = 0;
};
