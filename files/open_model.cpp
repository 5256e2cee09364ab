#include "files/open_model.h"

#include <algorithm>

#include "core/host.h"
#include "files/file_dispatch.h"
#include "files/file_kinds.h"
#include "files/load_model.h"
#include "files/zrk_file.h"

const std::vector<COpenFileType>& OpenFileTypes() {
    static const std::vector<COpenFileType> types = {
        {1, "dicom file (*.dcm)", "*.dcm;*.*"},  {2, "nifti image file (*.nii)", "*.nii;*.*"},
        {3, "binary file (*.*)", "*.*"},         {4, "text file (*.*)", "*.*"},
        {5, "matlab file (*.mat)", "*.mat;*.*"}, {6, "zarnik file (*.zrk)", "*.zrk;*.*"},
    };
    return types;
}

COpenModel::COpenModel(COpenOptions& a_options, CDataSpace& a_space, std::string& a_folder)
    : options(a_options), space(a_space), folder(a_folder) {}

void COpenModel::Open() {
    Host().Trace("COpenModel::Open");
    if (options.filetype > 6) options.filetype = 6;
    if (options.filetype < 1) options.filetype = 3;
}

void COpenModel::Select(const std::string& path) {
    entry = FileEntry();
    info.clear();
    title.clear();
    if (path.empty()) return;
    entry.path = path;
    entry.code = options.filetype;
    ReadHeader(options, entry);
    ShowInfo(*this, entry);
}

void COpenModel::SetFileType(int code) {
    options.filetype = code;
    Select(entry.path);
}

int COpenModel::Ok(const std::vector<std::string>& paths) {
    Host().Trace("COpenModel::Ok");
    if (paths.empty()) return 0;
    std::vector<std::string> sorted = paths;
    std::sort(sorted.begin(), sorted.end());
    std::vector<FileEntry> entries(sorted.size());
    for (size_t k = 0; k < sorted.size(); ++k) {
        entries[k].path = sorted[k];
        entries[k].code = options.filetype;
    }
    const size_t slash = sorted[0].find_last_of('/');
    if (slash != std::string::npos) folder = sorted[0].substr(0, slash == 0 ? 1 : slash);

    bool good = true;
    const CFileReader* reader = FindReader(options.filetype);
    if (options.filetype == 6) {
        good = LoadAll(&status, entries.data(), static_cast<int>(entries.size())) == 0;
    } else if (reader && reader->load_space) {
        CLoadModel each(options, space, entries);
        each.LoadAllIndividually();
        good = each.failure.empty();
        status = good ? "read success" : each.failure;
    } else {
        CLoadModel load(options, space, entries);
        if (run_load)
            run_load(load);
        else
            load.LoadAllIndividually();
        good = load.failure.empty();
        status = !good ? load.failure : load.exited ? "read exit" : "read success";
    }
    Host().RefreshDisplays();
    return good && !options.stay ? 1 : 0;
}
