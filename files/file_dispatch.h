// The steps of the open, load and save dialogs, dispatched over the registered file kinds
// (file_kinds.h) by open code or save row. A code or row nobody registered answers
// "unknown file type"; a reader's or writer's exception becomes the entry's status and
// marks it failed, and never leaves these functions.
#pragma once

#include <string>

#include "files/file_entry.h"
#include "files/file_options.h"

class CLoadModel;
class COpenModel;
class CSaveModel;

// The header step of `entry` as code entry.code: baselines copied from the options, the
// file title filled in, sizes and status from the reader. 1 when the file is usable.
int ReadHeader(const COpenOptions& dialog, FileEntry& entry);

// The info line and preview title of the open dialog for its current entry: the reader's
// status (for code 3 the size line of BinarySizeLine) and for code 3 the title
// "%s (%d,%d,%d,%d)" with the type and x, y, z, t.
void ShowInfo(COpenModel& dialog, const FileEntry& entry);

// Loads `entry` under the load dialog's data name as one or three new arrays; 1 on success.
int LoadOne(CLoadModel& dialog, FileEntry& entry);

// Saves what the save dialog has selected to `path` through the writer of its row; 1 on
// success, the writer's text in the dialog's status either way.
int SaveFile(CSaveModel& dialog, const std::string& path);

// The file name without its folder and last extension.
std::string FileTitle(const std::string& path);
