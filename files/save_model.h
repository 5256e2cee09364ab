// CSaveModel: the logic of the save dialog. A row of the type list picks the writer; a
// name list holds the arrays (or, for pictures and movies, the displays) with a tick each.
// One OK saves the first ticked one, unticks it and moves the next up, so several are saved
// by pressing OK until the list ends, into file names made from one "%d" specifier and the
// running count ("d%02d" when nothing else is typed). The MAT row saves every ticked array
// into one file, the workspace row the whole workspace.
//
//   CSaveModel save(options, space, windows);
//   save.options.ftype = 0;
//   save.Fill();                       // the names of the row's list
//   save.Tick("a", true);
//   save.file_name = "/data/a.raw";
//   save.Save();                       // status "file saved"
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "files/file_options.h"

class CDataSpace;
class CDisplayEntry;
class CWindowSpace;
class CZrkData;

struct CSaveFileType {
    int row;
    const char* filter;
};

// The six rows of the save dialog's type list, 0 to 5.
const std::vector<CSaveFileType>& SaveFileTypes();

class CSaveModel {
  public:
    struct CItem {
        std::string name;
        bool ticked = false;
    };

    CSaveModel(CSaveOptions& options, CDataSpace& space, CWindowSpace& windows);

    // Lists the arrays, or the displays for the picture and movie rows, those whose select
    // bits meet `tick_mask` ticked.
    void Fill();
    void Tick(const std::string& name, bool on);
    // The first ticked name, with " ..." behind it when two or more remain.
    std::string ListText() const;
    // Offers "d%02d" for an empty file name when several are ticked.
    void DefaultFileName();

    // One OK; 1 when the dialog closes (save_stay= off and nothing left to save).
    int Save();

    // What the row's writer takes: the first ticked array (every ticked one for MAT), or
    // the first ticked display.
    std::vector<CZrkData*> Arrays() const;
    CDisplayEntry* Display() const;

    CSaveOptions& options;
    CDataSpace& space;
    CWindowSpace& windows;
    std::vector<CItem> items;
    uint32_t tick_mask = 0;  // the selection of the desktop, say
    std::string file_name;
    std::string status;
    int saved = 0;  // the count of the "%d" specifier

  private:
    int Ticked() const;
    bool ByList() const { return options.ftype >= 0 && options.ftype <= 3; }
};
