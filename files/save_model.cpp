#include "files/save_model.h"

#include <sys/stat.h>

#include "core/data_space.h"
#include "core/host.h"
#include "core/window_space.h"
#include "display/display_entry.h"
#include "files/file_dispatch.h"
#include "files/user_format.h"

const std::vector<CSaveFileType>& SaveFileTypes() {
    static const std::vector<CSaveFileType> rows = {
        {0, "binary file (*.*)"},
        {1, "text file (*.*)"},
        {2, "windows bmp (*.bmp,*.jpg,*.gif,*.png)"},
        {3, "avi (*.avi)"},
        {4, "matlab file (*.mat)"},
        {5, "zarnik file (*.zrk)"},
    };
    return rows;
}

CSaveModel::CSaveModel(CSaveOptions& a_options, CDataSpace& a_space, CWindowSpace& a_windows)
    : options(a_options), space(a_space), windows(a_windows) {}

void CSaveModel::Fill() {
    items.clear();
    saved = 0;
    if (options.ftype == 2 || options.ftype == 3) {
        for (int k = 0; k < windows.Count(); ++k)
            if (dynamic_cast<CDisplayEntry*>(windows.Get(k)))
                items.push_back({windows.Get(k)->name, (windows.Get(k)->select & tick_mask) != 0});
        return;
    }
    for (int k = 0; k < space.Count(); ++k) {
        const CZrkData* a = space.GetData(k);
        if (a && a->Bytes() != 0 && !CDataSpace::IsReservedData(a->name))
            items.push_back({a->name, (a->select & tick_mask) != 0});
    }
}

void CSaveModel::Tick(const std::string& name, bool on) {
    // A tick on an empty list begins a new series.
    if (on && Ticked() == 0) saved = 0;
    for (CItem& item : items)
        if (item.name == name) item.ticked = on;
}

int CSaveModel::Ticked() const {
    int n = 0;
    for (const CItem& item : items) n += item.ticked ? 1 : 0;
    return n;
}

std::string CSaveModel::ListText() const {
    for (const CItem& item : items)
        if (item.ticked) return Ticked() >= 2 ? item.name + " ..." : item.name;
    return "";
}

void CSaveModel::DefaultFileName() {
    if (file_name.empty() && Ticked() > 1) file_name = "d%02d";
}

std::vector<CZrkData*> CSaveModel::Arrays() const {
    std::vector<CZrkData*> out;
    if (options.ftype == 2 || options.ftype == 3) return out;
    for (const CItem& item : items) {
        if (!item.ticked) continue;
        if (CZrkData* a = space.FindData(item.name.c_str())) out.push_back(a);
        if (options.ftype != 4 && !out.empty()) break;
    }
    return out;
}

CDisplayEntry* CSaveModel::Display() const {
    if (options.ftype != 2 && options.ftype != 3) return nullptr;
    for (const CItem& item : items)
        if (item.ticked) return dynamic_cast<CDisplayEntry*>(windows.FindByName(item.name.c_str()));
    return nullptr;
}

int CSaveModel::Save() {
    Host().Trace("CSaveModel::Save");
    std::string path = file_name;
    if (ByList()) {
        // The whole series counts: the last of several still needs its "%d".
        const int series = saved + Ticked();
        const int specifiers = CountConversions(file_name, "diuxXo");
        if (series > 1 && specifiers != 1) {
            status =
                "file name must have a %d format specifier\ne.g. file%02d.txt will give "
                "'file00.txt', 'file01.txt', 'file02.txt',...";
            Host().Message(status);
            return 0;
        }
        if (series <= 1 && specifiers > 0) {
            status = "remove %d format specifier from file name";
            Host().Message(status);
            return 0;
        }
        if (series > 1) path = FormatCount(file_name, saved);
    }
    if (path.empty()) {
        status = "file not saved";
        return 0;
    }
    // A movie gets its extension before the question whether it exists.
    if (options.ftype == 3 && (path.size() < 4 || path.compare(path.size() - 4, 4, ".avi") != 0))
        path += ".avi";
    struct stat st = {};
    if (stat(path.c_str(), &st) == 0 && !Host().AskYesNo("file exists: OVERWRITE?")) {
        status = "file not overwritten";
        return 0;
    }
    status = "file not saved";
    if (!SaveFile(*this, path)) return 0;
    status = "file saved";
    if (!ByList()) return options.stay ? 0 : 1;
    for (CItem& item : items)
        if (item.ticked) {
            item.ticked = false;
            break;
        }
    ++saved;
    return !options.stay && Ticked() == 0 ? 1 : 0;
}
