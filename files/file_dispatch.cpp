#include "files/file_dispatch.h"

#include <cstdio>
#include <new>

#include "core/zrk_error.h"
#include "files/file_kinds.h"
#include "files/load_model.h"
#include "files/open_model.h"
#include "files/save_model.h"

namespace {

// Runs a reader's or writer's step; an exception is its status and a failure.
template <class F>
int Guarded(std::string& status, F&& step) {
    try {
        return step();
    } catch (const ZrkError& e) {
        status = e.what();
    } catch (const std::bad_alloc&) {
        status = "alloc failed";
    } catch (...) {
        status = "unknown error";
    }
    return 0;
}

}  // namespace

std::string FileTitle(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    const size_t dot = name.find_last_of('.');
    if (dot != std::string::npos && dot > 0) name.resize(dot);
    return name;
}

int ReadHeader(const COpenOptions& dialog, FileEntry& entry) {
    entry.addBaseline = dialog.baselines[1];
    entry.subtractBaseline = dialog.baselines[2];
    if (entry.title.empty()) entry.title = FileTitle(entry.path);
    const CFileReader* reader = FindReader(entry.code);
    if (!reader || !reader->header) {
        entry.status = "unknown file type";
        entry.failed = 1;
        return 0;
    }
    const int ok = Guarded(entry.status, [&] { return reader->header(dialog, entry); });
    entry.failed = ok ? 0 : 1;
    return ok;
}

void ShowInfo(COpenModel& dialog, const FileEntry& entry) {
    dialog.info = entry.status;
    dialog.title.clear();
    // The binary header step leaves the size line in the status.
    if (entry.code != 3) return;
    const CZrkData& h = entry.header;
    char title[160];
    std::snprintf(title, sizeof title, "%s (%d,%d,%d,%d)", TypeName(h.Type()),
                  static_cast<int>(h.nx), static_cast<int>(h.ny), static_cast<int>(h.nz),
                  static_cast<int>(h.nt));
    dialog.title = title;
}

int LoadOne(CLoadModel& dialog, FileEntry& entry) {
    const CFileReader* reader = FindReader(entry.code);
    if (!reader || (!reader->load && !reader->load_space)) {
        entry.status = "unknown file type";
        entry.failed = 1;
        return 0;
    }
    if (reader->load_space) {
        const int ok = Guarded(
            entry.status, [&] { return reader->load_space(dialog.options, entry, dialog.space); });
        entry.failed = ok ? 0 : 1;
        return ok;
    }
    for (uint64_t& d : entry.dest) d = 0;
    CZrkData* targets[3] = {};
    if (!dialog.MakeTargets(entry, entry.header, dialog.Name(entry.header), targets)) {
        entry.status = "alloc failed";
        entry.failed = 1;
        return 0;
    }
    const int ok =
        Guarded(entry.status, [&] { return reader->load(dialog.options, entry, targets); });
    entry.failed = ok ? 0 : 1;
    if (!ok) {
        dialog.DropTargets(targets);
        return 0;
    }
    dialog.Loaded(entry, targets);
    return 1;
}

int SaveFile(CSaveModel& dialog, const std::string& path) {
    const CFileWriter* writer = FindWriter(dialog.options.ftype);
    if (!writer || !writer->write) {
        dialog.status = "unknown file type";
        return 0;
    }
    CSaveRequest request;
    request.path = path;
    request.arrays = dialog.Arrays();
    request.display = dialog.Display();
    request.options = &dialog.options;
    std::string status;
    request.status = &status;
    const int ok = Guarded(status, [&] { return writer->write(request); });
    if (!status.empty()) dialog.status = status;
    return ok;
}
