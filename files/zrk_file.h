// CZrkFile: the workspace file (.zrk): the history, every array with its type, sizes, steps
// and raw bytes, and every display with its placement and look, in one file of key lines
// with each array's bytes between them.
//
//   zarnik win99
//   nbytes= 400
//   ncount= 1
//   history= 0
//   end
//   view_data= a
//   typen= 2 r4
//   res6= 10 10 1 1 1 1
//   mm6= 1.000000 1.000000 1.000000 1.000000 1.000000 1.000000
//   data=
//   <400 bytes, x fastest, native order>DPY2D= a
//   ...
//
// Read returns 0 on success and 1 on failure (the reverse of the others; LoadAll relies on
// it); arrays and windows made before a failure stay. Write returns 1 on success.
//
// Saves are atomic: the file is written to a temporary beside the target, synced and renamed
// over it, so a failed or interrupted save leaves the previous workspace whole. The same
// writer, heap-free, serves the crash path from a signal handler.
#pragma once

#include <string>

class CDataSpace;
class CTextSink;
class CWindowSpace;
struct FileEntry;

class CZrkFile {
  public:
    // The crash workspace (SetCrashPath).
    CZrkFile();
    explicit CZrkFile(std::string a_path);

    // The header step: 1 when the file is a workspace, with "%d bytes in %d data sets" (or
    // nothing) in `status`.
    int ReadHeader();
    int Read();
    int Write();

    std::string path;
    std::string status;
    CDataSpace* space;
    CWindowSpace* windows;
};

// Reads each entry's file in turn, copying each status to the dialog's and the entry's, and
// stops at the first failure with that Read result. The arrays go to `space`, or to the
// global data space.
int LoadAll(std::string* dialog, FileEntry* entries, int count, CDataSpace* space = nullptr);

// The start-up offer: when the crash workspace has a header, asks to read it and then asks to
// delete it.
void ReadCrashFile();

void SetCrashPath(const char* path);
const char* CrashPath();

enum WorkspaceWriteResult { WRITE_DONE = 0, WRITE_CREATE_FAILED, WRITE_FAILED };

// The bytes of a workspace file, to any sink. Heap-free when the sink is.
void WriteWorkspace(CTextSink& out, const CDataSpace& space, const CWindowSpace& windows,
                    const std::string& history);

// Writes the workspace of `space`, `windows` and `history` to `path` atomically. Touches no
// heap, stdio stream or lock, so a signal handler may call it. A failure removes the
// temporary and leaves `path` as it was.
WorkspaceWriteResult WriteWorkspaceFile(const char* path, const CDataSpace& space,
                                        const CWindowSpace& windows, const std::string& history);

// The crash hook: the global data and window spaces and the host's history to `path`; 0 when
// written.
int WriteCrashWorkspace(const char* path);
