// What the DICOM and NIfTI tests share: a file opened as the load model opens it (header
// step, arrays made from the header, load step), the sample folders of the Debian packages,
// and temporary files.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "core/zrk_data.h"
#include "files/file_entry.h"
#include "files/file_options.h"

namespace med {

using HeaderStep = int (*)(const COpenOptions&, FileEntry&);
using LoadStep = int (*)(const COpenOptions&, FileEntry&, CZrkData* const[3]);

struct FreeArray {
    void operator()(CZrkData* a) const {
        a->FreeData();
        delete a;
    }
};
using Array = std::unique_ptr<CZrkData, FreeArray>;

struct Opened {
    FileEntry entry;
    int header = 0;
    int load = 0;
    std::vector<Array> arrays;  // one, or r, g, b
};

// Runs the header step and, when it succeeds, the load step into fresh arrays named
// `name` (".r", ".g", ".b" behind it for colour).
inline Opened Open(const std::string& path, HeaderStep header, LoadStep load,
                   const COpenOptions& options = {}, const std::string& name = "a") {
    Opened o;
    o.entry.path = path;
    o.header = header(options, o.entry);
    if (!o.header) return o;
    CZrkData* targets[3] = {};
    const int count = o.entry.isRgb ? 3 : 1;
    for (int c = 0; c < count; ++c) {
        o.arrays.emplace_back(new CZrkData);
        CZrkData* a = o.arrays.back().get();
        a->CopyHeaderFrom(o.entry.header);
        a->SetName((count == 3 ? name + '.' + "rgb"[c] : name).c_str());
        if (!a->Allocate()) {
            ADD_FAILURE() << "no memory for " << path;
            return o;
        }
        targets[c] = a;
    }
    o.load = load(options, o.entry, targets);
    return o;
}

// The folder of a Debian package's samples; the test skips when the package is absent.
inline std::string Samples(const std::string& folder) {
    return std::filesystem::is_directory(folder) ? folder : std::string();
}

inline std::string Slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

inline void Spit(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

// A folder of its own under the system's temporary folder, removed with the object.
class TempDir {
  public:
    TempDir() {
        char name[] = "/tmp/quelmor_med_XXXXXX";
        if (mkdtemp(name)) dir_ = name;
    }
    ~TempDir() {
        std::error_code ec;
        if (!dir_.empty()) std::filesystem::remove_all(dir_, ec);
    }
    std::string operator/(const std::string& name) const { return (dir_ / name).string(); }
    const std::filesystem::path& Path() const { return dir_; }

  private:
    std::filesystem::path dir_;
};

}  // namespace med
