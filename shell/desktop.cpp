#include "shell/desktop.h"

#include <algorithm>
#include <cinttypes>
#include <cstring>

#include "core/data_space.h"
#include "core/key_reader.h"
#include "core/zrk_data.h"

namespace {

constexpr const char* kHidden[] = {
    "binary_copy", "filt_coef",  "zrk_angle", "zrk_line",  "zrk_profile",
    "recycle_bin", "roi_mask",   "roi_draw",  "roi_ellip", "roi_fill",
    "roi_rect",    "roi_binary", "roi_x",     "roi_y",     "hist_nbins",
};

bool EndsWith(const char* text, const char* tail) {
    const size_t n = std::strlen(text), m = std::strlen(tail);
    return n >= m && std::strcmp(text + n - m, tail) == 0;
}

}  // namespace

bool IsHiddenOnDesktop(const char* name) {
    if (!name) return true;
    if (EndsWith(name, ".window")) return true;
    for (const char* hidden : kHidden)
        if (std::strcmp(name, hidden) == 0) return true;
    return false;
}

int CDesktop::ScanfOptions(CKeyReader& reader) {
    if (reader.Int("view_desktop=", &view_desktop)) return 1;
    if (reader.Int("desktop_minimized=", &desktop_minimized)) return 1;
    if (ScanRect(reader, "desktop_loc=", &desktop_loc)) return 1;
    if (reader.Int("desktop_details=", &desktop_details)) return 1;
    if (reader.Int("desktop_bytes=", &desktop_bytes)) return 1;
    if (reader.Int("desktop_iqmp=", &desktop_iqmp)) return 1;
    if (reader.Int("desktop_npath=", &desktop_npath)) {
        desktop_npath = std::clamp(desktop_npath, 0, kMaxPaths);
        return 1;
    }
    if (reader.Int("desktop_selpath=", &desktop_selpath)) return 1;
    for (int i = 0; i < kMaxPaths; ++i) {
        const std::string key = "desktop_path" + std::to_string(i) + "=";
        if (reader.String(key.c_str(), &desktop_path[i])) return 1;
    }
    if (reader.String("desktop_script_editor=", &desktop_script_editor)) return 1;
    return 0;
}

void CDesktop::PrintfOptions(FILE* file) const {
    std::fprintf(file, "\n// desktop options\n");
    std::fprintf(file, "view_desktop= %d\n", view_desktop);
    std::fprintf(file, "desktop_minimized= %d\n", desktop_minimized);
    PrintRect(file, "desktop_loc=", desktop_loc);
    std::fprintf(file, "desktop_details= %d\n", desktop_details);
    std::fprintf(file, "desktop_bytes= %d\n", desktop_bytes);
    std::fprintf(file, "desktop_iqmp= %d\n", desktop_iqmp);
    std::fprintf(file, "desktop_npath= %d\n", desktop_npath);
    std::fprintf(file, "desktop_selpath= %d\n", desktop_selpath);
    for (int i = 0; i < desktop_npath; ++i)
        std::fprintf(file, "desktop_path%d= %s\n", i, desktop_path[i].c_str());
    std::fprintf(file, "desktop_script_editor= %s\n", desktop_script_editor.c_str());
}

std::vector<CDesktopRow> CDesktop::Rows(const CDataSpace& space) const {
    std::vector<CDesktopRow> rows;
    for (int i = 0; i < space.Count(); ++i) {
        CZrkData* record = space.GetData(i);
        if (!record || IsHiddenOnDesktop(record->name)) continue;
        CDesktopRow row;
        row.record = record;
        row.name = record->name;
        row.reserved = CDataSpace::IsReservedData(record->name) != 0;
        if (desktop_details) {
            char size[96];
            std::snprintf(size, sizeof size, "%dx%dx%dx%d", static_cast<int>(record->nx),
                          static_cast<int>(record->ny), static_cast<int>(record->nz),
                          static_cast<int>(record->nt));
            row.size = size;
            row.type = record->TypeName();
            row.caption = record->caption;
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

std::string CDesktop::ByteLine(const CDataSpace& space) const {
    uint64_t data = 0, undo = 0;
    for (int i = 0; i < space.Count(); ++i) {
        const CZrkData* record = space.GetData(i);
        if (!record) continue;
        data += record->Bytes();
        undo += record->UndoBytes();
    }
    char line[160];
    std::snprintf(line, sizeof line,
                  desktop_bytes
                      ? "data space %" PRIu64 "; undo space %" PRIu64 "; total bytes %" PRIu64
                      : "data space %" PRIu64 "; undo space %" PRIu64 "; total space %" PRIu64,
                  data, undo, data + undo);
    return line;
}

void CDesktop::AddPath(const std::string& folder) {
    if (folder.empty()) return;
    std::vector<std::string> paths{folder};
    for (int i = 0; i < desktop_npath; ++i)
        if (desktop_path[i] != folder) paths.push_back(desktop_path[i]);
    desktop_npath = std::min<int>(static_cast<int>(paths.size()), kMaxPaths);
    for (int i = 0; i < desktop_npath; ++i) desktop_path[i] = paths[i];
    desktop_selpath = 0;
}

std::vector<int> CDesktop::ListedKinds() const {
    if (one_kind) return {kind};
    std::vector<int> all;
    for (int k = 0; k < kKinds; ++k) all.push_back(k);
    return all;
}
