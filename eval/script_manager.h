// CScript: the script manager's options and its logic, without a widget. The manager lists
// the files of the current script folder (the script space the language calls them from),
// keeps five recent folders, and makes, starts the editor on, duplicates and deletes script
// files. Every command leaves the script space re-read from the disk, so a script made or
// changed here is callable at once.
//
//   CScript manager;
//   manager.StartFolder(GlobalScriptSpace(), paths.script);   // preferences, else the default
//   for (const CScriptRow& row : manager.Rows(GlobalScriptSpace())) ...
//   std::string status = manager.NewScript(GlobalScriptSpace());
//
// Commands return the status text for the form: empty on success, else what went wrong.
// Nothing is deleted without the host's yes to "this deletes files from the disk\ndelete".
#pragma once

#include <cstdio>
#include <string>
#include <vector>

class CKeyReader;
class CScriptSpace;
struct CScriptEntry;

struct CScriptRow {
    std::string name;
    // In the unit of script_bytes; empty without details.
    std::string size;
    std::string first_line;
};

// The size units of the list: script_bytes.
enum ScriptSizeUnit { SCRIPT_BYTES = 0, SCRIPT_KBYTES = 1, SCRIPT_MBYTES = 2 };

class CScript {
  public:
    static constexpr int kMaxPaths = 5;
    static constexpr size_t kMaxPath = 260;
    // The last two entries of the folder list.
    static constexpr const char* kBrowse = "browse ...";
    static constexpr const char* kNone = "---none---";
    static constexpr const char* kDeleteQuestion = "this deletes files from the disk\ndelete";

    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;

    // The folder at start-up: the selected remembered folder when it still exists, else
    // `fallback`. The list is read from it.
    void StartFolder(CScriptSpace& space, const std::string& fallback);
    // Makes `folder` current and first of the remembered ones, and reads its list. A folder
    // that does not exist is refused with a text and changes nothing.
    std::string SetFolder(CScriptSpace& space, const std::string& folder);
    // "---none---": no current folder, so no script is callable.
    void SetNoFolder(CScriptSpace& space);
    // The folder combo: the remembered folders, then kBrowse and kNone.
    std::vector<std::string> FolderEntries() const;
    // The combo index of the space's folder: kNone's when there is none, -1 when it is not
    // among the remembered ones.
    int FolderIndex(const CScriptSpace& space) const;

    // The list as shown, in the order of the script space.
    std::vector<CScriptRow> Rows(CScriptSpace& space) const;
    // "bytes", "kbytes" or "mbytes": the title of the size column.
    const char* SizeUnit() const;
    std::string SizeText(uint64_t bytes) const;
    // Steps the unit bytes -> kbytes -> mbytes -> bytes.
    void NextSizeUnit();

    // Re-reads the current folder; a folder that vanished empties the list with a text.
    std::string Refresh(CScriptSpace& space) const;
    // An empty file ".new" (made unique with more ".new") in the current folder, which is
    // created if need be.
    std::string NewScript(CScriptSpace& space) const;
    // A copy of `name` under name + ".dup", made unique the same way.
    std::string Duplicate(CScriptSpace& space, const std::string& name) const;
    // Asks kDeleteQuestion once for all `names`; on yes removes the files.
    std::string Delete(CScriptSpace& space, const std::vector<std::string>& names) const;
    // The program and the arguments that open `name` in the configured editor; the editor
    // setting may carry arguments of its own ("gedit --new-window").
    std::vector<std::string> EditCommand(const CScriptSpace& space, const std::string& name) const;

    int view_script = 0;
    int script_loc[4] = {0, 0, 0, 0};
    int script_minimized = 0;
    int script_details = 1;
    int script_bytes = SCRIPT_BYTES;
    int script_iqmp = 0;
    int script_npath = 0;
    // Index of the current folder among the remembered ones; -1 for none.
    int script_selpath = -1;
    std::string script_path[kMaxPaths];
    std::string script_script_editor = "xdg-open";

  private:
    void Remember(const std::string& path);
    static std::string FreeName(const CScriptSpace& space, const std::string& name,
                                const char* tail);
};
