#include "shell/main_frame_options.h"

#include <cstdlib>
#include <string>

#include "core/key_reader.h"

int ScanRect(CKeyReader& reader, const char* key, CRectOption* rect) {
    int left = 0, top = 0, right = 0, bottom = 0;
    if (!reader.Int2(key, &left, &top)) return 0;
    // The second pair has no key of its own: read it as the following words.
    right = std::atoi(reader.Next().c_str());
    bottom = std::atoi(reader.Next().c_str());
    *rect = {left, top, right, bottom};
    return 1;
}

void PrintRect(FILE* file, const char* key, const CRectOption& rect) {
    std::fprintf(file, "%s %d %d %d %d\n", key, rect.left, rect.top, rect.right, rect.bottom);
}

int CMainFrameOptions::ScanfOptions(CKeyReader& reader) {
    if (reader.Int("view_equation_bar=", &view_equation_bar)) return 1;
    if (ScanRect(reader, "main_loc", &main_loc)) return 1;
    if (reader.Int("main_full", &main_full)) return 1;
    if (reader.Hex("custom_colors16=", &custom_colors16[0])) {
        for (int i = 1; i < 16; ++i)
            custom_colors16[i] = std::strtoul(reader.Next().c_str(), nullptr, 16);
        return 1;
    }
    if (reader.String("open_directory=", &open_directory)) return 1;
    for (int i = 0; i < kRecentFiles; ++i) {
        const std::string key = "recent_file" + std::to_string(i) + "=";
        if (reader.String(key.c_str(), &recent_file[i])) return 1;
    }
    return 0;
}

void CMainFrameOptions::PrintfOptions(FILE* file) const {
    std::fprintf(file, "\n// main frame options\n");
    std::fprintf(file, "view_equation_bar= %d\n", view_equation_bar);
    PrintRect(file, "main_loc", main_loc);
    std::fprintf(file, "main_full %d\n", main_full);
    std::fprintf(file, "custom_colors16=");
    for (unsigned c : custom_colors16) std::fprintf(file, " %x", c);
    std::fprintf(file, "\nopen_directory= %s\n", open_directory.c_str());
    for (int i = 0; i < kRecentFiles; ++i)
        std::fprintf(file, "recent_file%d= %s\n", i, recent_file[i].c_str());
}

void CMainFrameOptions::AddRecent(const std::string& path) {
    if (path.empty()) return;
    // Where the path already stands (or the last slot) its place closes up behind it.
    int at = kRecentFiles - 1;
    for (int i = 0; i < kRecentFiles; ++i)
        if (recent_file[i] == path) {
            at = i;
            break;
        }
    for (int i = at; i > 0; --i) recent_file[i] = recent_file[i - 1];
    recent_file[0] = path;
}
