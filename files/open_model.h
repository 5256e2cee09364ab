// COpenModel: the logic of the open dialog. The file types of its filter list, the header
// step of the selection on every change of file or type, and OK: the selected files become
// entries sorted by path, the folder is remembered, and then code 6 reads workspaces
// (LoadAll), a kind that makes its own arrays (MAT) reads each file, and any other kind goes
// to the load dialog, which `run_load` shows (without one, every file loads on its own).
//
//   COpenModel open(options, space, folder);
//   open.Open();                       // a stored code above 6 becomes 6
//   open.Select("/data/a.raw");        // info, title and the entry's status
//   open.Ok({"/data/a.raw"});          // "read success", "read exit" or the entry's status
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "files/file_entry.h"
#include "files/file_options.h"

class CDataSpace;
class CLoadModel;

struct COpenFileType {
    int code;
    const char* filter;
    const char* pattern;
};

// The six rows of the filter list, codes 1 to 6 in order.
const std::vector<COpenFileType>& OpenFileTypes();

class COpenModel {
  public:
    COpenModel(COpenOptions& options, CDataSpace& space, std::string& folder);

    void Open();
    // The header step of `path` as the current type; empty clears the info.
    void Select(const std::string& path);
    void SetFileType(int code);
    // Loads the selection; 1 when the dialog closes (open_stay= off and the load went well).
    int Ok(const std::vector<std::string>& paths);
    // The first plane of the selection (the red one of an RGB file) into `plane`, which
    // this allocates and the caller frees; false when the file gives none.
    bool Preview(CZrkData& plane);
    // A plane as grey levels, x fastest, its lowest value 0 and its highest 255 (magnitude
    // of a complex plane; NaN as 0).
    static std::vector<uint8_t> PreviewLevels(const CZrkData& plane);

    COpenOptions& options;
    CDataSpace& space;
    std::string& folder;
    std::function<void(CLoadModel&)> run_load;
    FileEntry entry;                  // the selection
    std::string info;                 // the info line
    std::string title;                // the preview title of a binary file
    std::string status;               // the result of OK
    std::vector<std::string> opened;  // the files the last OK read, for the recent list
};
