#include "files/open_model.h"

#include <algorithm>
#include <cmath>

#include "core/data_cursor.h"
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

bool COpenModel::Preview(CZrkData& plane) {
    const CFileReader* reader = FindReader(entry.code);
    if (entry.failed || entry.path.empty() || !reader || !reader->load) return false;
    // The same entry cut to its first plane: the reader skips nothing it would not skip.
    FileEntry first = entry;
    const CZrkData& h = entry.header;
    first.header.SetHeader(h.Type(), h.nx, h.ny, 1, 1, 1, 1);
    for (uint64_t& d : first.dest) d = 0;
    CZrkData planes[3];
    CZrkData* targets[3] = {};
    bool made = true;
    for (int k = 0; k < (entry.isRgb ? 3 : 1); ++k) {
        planes[k].CopyHeaderFrom(first.header);
        made = made && planes[k].Allocate();
        targets[k] = &planes[k];
    }
    bool ok = false;
    if (made) {
        try {
            ok = reader->load(options, first, targets) == 1;
        } catch (...) {
        }
    }
    for (int k = 1; k < 3; ++k) planes[k].FreeData();
    if (!ok) {
        planes[0].FreeData();
        return false;
    }
    plane.FreeData();
    plane = planes[0];
    return true;
}

std::vector<uint8_t> COpenModel::PreviewLevels(const CZrkData& plane) {
    const uint64_t n = plane.CountXY();
    std::vector<float> v(n);
    if (!plane.Data() || n == 0) return {};
    CDataCursor<float> in(&plane, plane.IsComplex() ? 2 : 0);
    in.GetBlock(v.data(), 0, n);
    float lo = 0, hi = 0;
    bool any = false;
    for (float x : v) {
        if (!std::isfinite(x)) continue;
        lo = any ? std::min(lo, x) : x;
        hi = any ? std::max(hi, x) : x;
        any = true;
    }
    std::vector<uint8_t> grey(n, 0);
    const double span = hi > lo ? static_cast<double>(hi) - lo : 1.0;
    for (uint64_t k = 0; k < n; ++k)
        if (std::isfinite(v[k]))
            grey[k] =
                static_cast<uint8_t>(std::lround((v[k] - static_cast<double>(lo)) / span * 255));
    return grey;
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
        good = LoadAll(&status, entries.data(), static_cast<int>(entries.size()), &space) == 0;
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
    opened = good ? sorted : std::vector<std::string>{};
    Host().RefreshDisplays();
    return good && !options.stay ? 1 : 0;
}
