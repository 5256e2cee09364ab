// CMainFrameOptions: what the main frame keeps between runs. The rectangle is left, top,
// right, bottom in screen pixels.
#pragma once

#include <cstdio>
#include <string>

class CKeyReader;

struct CRectOption {
    int left = 0, top = 0, right = 0, bottom = 0;
    bool IsEmpty() const { return right <= left || bottom <= top; }
};

// Reads the three integers after a rectangle key's first one; `reader` stands on the key.
int ScanRect(CKeyReader& reader, const char* key, CRectOption* rect);
void PrintRect(FILE* file, const char* key, const CRectOption& rect);

struct CMainFrameOptions {
    static constexpr int kRecentFiles = 5;

    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;
    // Puts `path` first among the recent files; the oldest beyond five drops off.
    void AddRecent(const std::string& path);

    int view_equation_bar = 1;
    CRectOption main_loc{60, 40, 1340, 900};
    int main_full = 0;
    unsigned custom_colors16[16] = {0xffffff, 0xffffff, 0xffffff, 0xffffff, 0xffffff, 0xffffff,
                                    0xffffff, 0xffffff, 0xffffff, 0xffffff, 0xffffff, 0xffffff,
                                    0xffffff, 0xffffff, 0xffffff, 0xffffff};
    std::string open_directory;
    // The files opened last, newest first; empty slots are unused.
    std::string recent_file[kRecentFiles];
};
