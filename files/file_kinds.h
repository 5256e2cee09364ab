// The readers and writers of the open and save dialogs, one row per open code or save row.
// Each format's module registers its own rows (InstallFileKinds) so that the dispatch and
// the dialogs link none of the libraries behind them, and a code nobody registered answers
// "unknown file type".
#pragma once

#include <string>
#include <vector>

#include "files/file_entry.h"
#include "files/file_options.h"

class CDataSpace;
class CDisplayEntry;
class CZrkData;

// A reader of one open code.
//  header: fills `entry` (sizes, type, steps, title, exam/series/image, isRgb, status)
//          without reading samples; 1 when the file is usable. Every size is checked against
//          the file before anything is allocated.
//  load:   writes the entry's samples into `targets` (one array; r, g, b when entry.isRgb),
//          which the load model made from the header step (or from the summed stack), at
//          entry.dest[0..3] along z, t, u, v; 1 on success, entry.status set either way.
//  load_space: for kinds that make their own arrays (MAT, workspace); used instead of
//          `load` when set.
struct CFileReader {
    int (*header)(const COpenOptions& options, FileEntry& entry) = nullptr;
    int (*load)(const COpenOptions& options, FileEntry& entry,
                CZrkData* const targets[3]) = nullptr;
    int (*load_space)(const COpenOptions& options, FileEntry& entry, CDataSpace& space) = nullptr;
};

// What one save writes: the arrays (one, or all selected for MAT), or a display for the
// picture and movie rows. `status` receives the writer's text; 1 on success.
struct CSaveRequest {
    std::string path;
    std::vector<CZrkData*> arrays;
    CDisplayEntry* display = nullptr;
    const CSaveOptions* options = nullptr;
    std::string* status = nullptr;
};
using FileWriter = int (*)(const CSaveRequest& request);

// A writer: its save row (-1 when the dialog has no row for it) and the file extensions
// it answers to, as ".mat .MAT", for saves chosen by file name.
struct CFileWriter {
    int row = -1;
    std::string extensions;
    FileWriter write = nullptr;
};

// Registration throws std::logic_error for a code, row or extension already taken.
void RegisterReader(int code, const CFileReader& reader);
void RegisterWriter(const CFileWriter& writer);
// Null when nothing is registered.
const CFileReader* FindReader(int code);
const CFileWriter* FindWriter(int row);
const CFileWriter* FindWriterByExtension(const std::string& path);

// Registers every format linked into the program; safe to call more than once.
void InstallFileKinds();
