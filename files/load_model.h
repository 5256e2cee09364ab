// CLoadModel: the logic of the load dialog. It walks the sorted entries of the open dialog,
// showing one at a time (its header step run on arrival), and loads them one by one or as
// one stack, naming each array by the naming rule of the options:
//   1  the file title;
//   2  "e%ds%03di%03d" with exam, series and image when the array's z is 1, "e%ds%03d"
//      otherwise, for codes 1, 7 and 12 (any other code turns the rule back to 1 for good);
//   3  open_data_format= with the running count, which goes up after each loaded file;
//   4  the typed name.
// RGB files give three arrays, the name with ".r", ".g" and ".b" behind it.
//
//   CLoadModel load(options, space, entries);
//   while (!load.Done()) load.Load1();      // or LoadAllIndividually(), LoadInStack()
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/zrk_data.h"
#include "files/file_entry.h"
#include "files/file_options.h"

class CDataSpace;

// A stack of entries from `first` on: the direction (2 z, 3 t, 4 u, 5 v) from the first
// entry's z, t, u, v, how many entries take part (the first mismatch in x, y, another
// direction, type or RGB ends it) and the summed sizes. `header` runs the header step of
// an entry not read yet and says whether it is usable; an unusable one ends the stack.
struct CStackPlan {
    int direction = 2;
    size_t count = 0;
    res_t res[6] = {};
};
CStackPlan PlanStack(std::vector<FileEntry>& entries, size_t first,
                     const std::function<bool(FileEntry&)>& header);

// The data name of `entry` for an array of `header`'s sizes by the naming rule of the
// options, `count` the running count of rule 3, `typed` the name of rule 4. Rule 2 on a kind
// without exam, series and image numbers turns the options back to rule 1.
std::string DataName(COpenOptions& options, const FileEntry& entry, const CZrkData& header,
                     int count, const std::string& typed);

class CLoadModel {
  public:
    CLoadModel(COpenOptions& options, CDataSpace& space, std::vector<FileEntry>& entries);

    // The entry shown, its header step run; null once the list has ended.
    FileEntry* Current();
    // The data name the current entry would get, for an array of `header`'s sizes.
    std::string Name(const CZrkData& header);

    // Each returns 1 when what it loaded went well.
    int Load1();
    int LoadAllIndividually();
    int Skip();
    int LoadInStack();
    void Quit() { exited = true; }
    bool Done() const { return exited || index >= entries.size(); }

    // For the dispatch: new arrays of `header` under `name` (three for RGB), with its steps;
    // false, with nothing left behind, when one can't be made.
    bool MakeTargets(const FileEntry& entry, const CZrkData& header, const std::string& name,
                     CZrkData* targets[3]);
    void DropTargets(CZrkData* targets[3]);
    // After a good load: the count of rule 3, the history report, the display asked for.
    void Loaded(const FileEntry& entry, CZrkData* const targets[3]);

    COpenOptions& options;
    CDataSpace& space;
    std::vector<FileEntry>& entries;
    size_t index = 0;
    std::string typed_name;  // rule 4
    int count = 0;           // rule 3
    bool exited = false;     // the user quit
    std::string status;      // the last entry's status
    std::string failure;     // the status of the first load that failed; empty when none did
    std::vector<std::string> loaded;  // names of the arrays made, in order

  private:
    bool Header(FileEntry& entry);
    std::vector<bool> read_;
};
