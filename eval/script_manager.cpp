#include "eval/script_manager.h"

#include <algorithm>
#include <cinttypes>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/host.h"
#include "core/key_reader.h"
#include "core/script_space.h"

namespace fs = std::filesystem;

namespace {

bool IsFolder(const std::string& path) {
    std::error_code ec;
    return !path.empty() && fs::is_directory(path, ec);
}

bool Exists(const fs::path& path) {
    std::error_code ec;
    return fs::exists(fs::symlink_status(path, ec));
}

// A name of the list, never a way out of the folder.
bool IsPlainName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

fs::path InFolder(const CScriptSpace& space, const std::string& name) {
    return fs::path(space.Directory()) / name;
}

}  // namespace

int CScript::ScanfOptions(CKeyReader& reader) {
    if (reader.Int("view_script=", &view_script)) return 1;
    if (reader.Ints("script_loc=", script_loc, 4)) return 1;
    if (reader.Int("script_minimized=", &script_minimized)) return 1;
    if (reader.Int("script_details=", &script_details)) return 1;
    if (reader.Int("script_bytes=", &script_bytes)) {
        script_bytes = std::clamp(script_bytes, 0, 2);
        return 1;
    }
    if (reader.Int("script_iqmp=", &script_iqmp)) return 1;
    if (reader.Int("script_npath=", &script_npath)) {
        script_npath = std::clamp(script_npath, 0, kMaxPaths);
        return 1;
    }
    if (reader.Int("script_selpath=", &script_selpath)) return 1;
    for (int i = 0; i < kMaxPaths; ++i) {
        const std::string key = "script_path" + std::to_string(i) + "=";
        if (reader.String(key.c_str(), &script_path[i])) {
            if (script_path[i].size() > kMaxPath) script_path[i].resize(kMaxPath);
            return 1;
        }
    }
    if (reader.String("script_script_editor=", &script_script_editor)) return 1;
    return 0;
}

void CScript::PrintfOptions(FILE* file) const {
    std::fprintf(file, "\n// script options\n");
    std::fprintf(file, "view_script= %d\n", view_script);
    std::fprintf(file, "script_loc= %d %d %d %d\n", script_loc[0], script_loc[1], script_loc[2],
                 script_loc[3]);
    std::fprintf(file, "script_minimized= %d\n", script_minimized);
    std::fprintf(file, "script_details= %d\n", script_details);
    std::fprintf(file, "script_bytes= %d\n", script_bytes);
    std::fprintf(file, "script_iqmp= %d\n", script_iqmp);
    std::fprintf(file, "script_npath= %d\n", script_npath);
    std::fprintf(file, "script_selpath= %d\n", script_selpath);
    for (int i = 0; i < script_npath; ++i)
        std::fprintf(file, "script_path%d= %s\n", i, script_path[i].c_str());
    std::fprintf(file, "script_script_editor= %s\n", script_script_editor.c_str());
}

void CScript::StartFolder(CScriptSpace& space, const std::string& fallback) {
    const int n = std::clamp(script_npath, 0, kMaxPaths);
    if (script_selpath >= 0 && script_selpath < n && IsFolder(script_path[script_selpath])) {
        SetFolder(space, script_path[script_selpath]);
        return;
    }
    if (IsFolder(fallback)) {
        SetFolder(space, fallback);
        return;
    }
    // The default folder may not be made yet: the first new script makes it.
    space.SetDirectory(fallback);
    space.Refresh();
    script_selpath = -1;
}

std::string CScript::SetFolder(CScriptSpace& space, const std::string& folder) {
    if (folder.size() > kMaxPath) return "script folder path too long";
    if (!IsFolder(folder)) return "script folder not found: " + folder;
    Remember(folder);
    space.SetDirectory(folder);
    space.Refresh();
    return {};
}

void CScript::SetNoFolder(CScriptSpace& space) {
    space.SetDirectory("");
    space.DelAllImages();
    script_selpath = -1;
}

void CScript::Remember(const std::string& path) {
    std::vector<std::string> paths{path};
    for (int i = 0; i < std::clamp(script_npath, 0, kMaxPaths); ++i)
        if (script_path[i] != path) paths.push_back(script_path[i]);
    script_npath = std::min<int>(static_cast<int>(paths.size()), kMaxPaths);
    for (int i = 0; i < script_npath; ++i) script_path[i] = paths[i];
    script_selpath = 0;
}

std::vector<std::string> CScript::FolderEntries() const {
    std::vector<std::string> entries(script_path,
                                     script_path + std::clamp(script_npath, 0, kMaxPaths));
    entries.emplace_back(kBrowse);
    entries.emplace_back(kNone);
    return entries;
}

int CScript::FolderIndex(const CScriptSpace& space) const {
    const int n = std::clamp(script_npath, 0, kMaxPaths);
    if (space.Directory().empty()) return n + 1;
    for (int i = 0; i < n; ++i)
        if (script_path[i] == space.Directory()) return i;
    return -1;
}

std::vector<CScriptRow> CScript::Rows(CScriptSpace& space) const {
    std::vector<CScriptRow> rows;
    for (int i = 0; i < space.Count(); ++i) {
        const CScriptEntry* e = space.Get(i);
        CScriptRow row{e->name, {}, {}};
        if (script_details) {
            row.size = SizeText(e->bytes);
            row.first_line = e->first_line;
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

const char* CScript::SizeUnit() const {
    switch (script_bytes) {
        case SCRIPT_KBYTES:
            return "kbytes";
        case SCRIPT_MBYTES:
            return "mbytes";
        default:
            return "bytes";
    }
}

std::string CScript::SizeText(uint64_t bytes) const {
    char text[48];
    switch (script_bytes) {
        case SCRIPT_KBYTES:
            std::snprintf(text, sizeof text, "%.1f", bytes / 1024.0);
            break;
        case SCRIPT_MBYTES:
            std::snprintf(text, sizeof text, "%.2f", bytes / (1024.0 * 1024.0));
            break;
        default:
            std::snprintf(text, sizeof text, "%" PRIu64, bytes);
    }
    return text;
}

void CScript::NextSizeUnit() { script_bytes = (std::clamp(script_bytes, 0, 2) + 1) % 3; }

std::string CScript::Refresh(CScriptSpace& space) const {
    if (!space.Directory().empty() && !IsFolder(space.Directory())) {
        space.DelAllImages();
        return "script folder not found: " + space.Directory();
    }
    space.Refresh();
    return {};
}

std::string CScript::FreeName(const CScriptSpace& space, const std::string& name,
                              const char* tail) {
    std::string out = name + tail;
    for (int i = 0; i < 20 && Exists(InFolder(space, out)); ++i) out += tail;
    return Exists(InFolder(space, out)) ? std::string() : out;
}

std::string CScript::NewScript(CScriptSpace& space) const {
    if (space.Directory().empty()) return "no script folder";
    std::error_code ec;
    fs::create_directories(space.Directory(), ec);
    const std::string name = FreeName(space, "", ".new");
    if (name.empty()) return "too many new scripts";
    std::ofstream out(InFolder(space, name));
    if (!out) return "can not create script file " + name;
    out.close();
    const std::string status = Refresh(space);
    return status.empty() ? "new script " + name : status;
}

std::string CScript::Duplicate(CScriptSpace& space, const std::string& name) const {
    if (!IsPlainName(name)) return "no script selected";
    const fs::path from = InFolder(space, name);
    std::error_code ec;
    if (!fs::is_regular_file(from, ec)) return name + " is not a script file";
    const std::string copy = FreeName(space, name, ".dup");
    if (copy.empty()) return "too many copies of " + name;
    if (!fs::copy_file(from, InFolder(space, copy), ec) || ec)
        return "can not copy script file " + name;
    const std::string status = Refresh(space);
    return status.empty() ? "copied to " + copy : status;
}

std::string CScript::Delete(CScriptSpace& space, const std::vector<std::string>& names) const {
    if (names.empty()) return "no script selected";
    for (const std::string& name : names)
        if (!IsPlainName(name)) return "no script selected";
    if (!Host().AskYesNo(kDeleteQuestion)) return {};
    std::string failed;
    for (const std::string& name : names) {
        std::error_code ec;
        if (!fs::remove(InFolder(space, name), ec) || ec)
            failed += (failed.empty() ? "" : ", ") + name;
    }
    const std::string status = Refresh(space);
    if (!failed.empty()) return "could not delete " + failed;
    return status;
}

std::vector<std::string> CScript::EditCommand(const CScriptSpace& space,
                                              const std::string& name) const {
    std::vector<std::string> command;
    std::istringstream words(script_script_editor);
    for (std::string word; words >> word;) command.push_back(word);
    if (command.empty()) command.emplace_back("xdg-open");
    command.push_back(InFolder(space, name).string());
    return command;
}
