// What the open and save tests share: the file kinds installed, a folder of their own, a
// headless host, a data space of the test's own, and loading through the open and load
// models as the dialogs do.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/host.h"
#include "core/window_space.h"
#include "files/file_kinds.h"
#include "files/load_model.h"
#include "files/open_model.h"
#include "files/save_model.h"

namespace files_test {

class OpenSaveTest : public ::testing::Test {
  protected:
    void SetUp() override {
        InstallFileKinds();
        dir_ = std::filesystem::temp_directory_path() /
               ("quelmor_open_save_" + std::to_string(getpid()) + "_" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(dir_);
        space_.SetUnique();
        scope_ = std::make_unique<CScopedHost>(host_);
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    std::string Path(const std::string& name) const { return (dir_ / name).string(); }

    // Opens `paths` as `code` through the open model, loading each file on its own or, with
    // `stack`, as stacks; the open model's status.
    std::string Open(const std::vector<std::string>& paths, int code, bool stack = false) {
        open_.filetype = code;
        COpenModel open(open_, space_, folder_);
        if (stack)
            open.run_load = [](CLoadModel& load) {
                while (!load.Done() && load.failure.empty()) load.LoadInStack();
            };
        open.Ok(paths);
        return open.status;
    }

    // Saves array `name` through the save model's row; the model's status.
    std::string Save(const std::string& name, const std::string& path, int row) {
        save_.ftype = row;
        CSaveModel save(save_, space_, windows_);
        save.Fill();
        save.Tick(name, true);
        save.file_name = path;
        save.Save();
        return save.status;
    }

    // An array of `type` whose every component is a distinct value that fits the type.
    CZrkData* Ramp(const char* name, int type, res_t nx, res_t ny, res_t nz = 1, res_t nt = 1) {
        CZrkData* a = space_.NewData(type, nx, ny, nz, nt, 1, 1, name);
        CDataCursor<double> out(a);
        const bool is_signed = type % 10 < 4 || type % 10 >= 8;
        for (uint64_t k = 0; k < a->Count(); ++k) {
            const double v = static_cast<double>(k % 97) * (is_signed ? -1.25 : 1.0) + 3;
            const double pair[2] = {type % 10 >= 8 ? v : std::trunc(v),
                                    static_cast<double>(k % 13)};
            out.SetIQ(pair, k);
        }
        return a;
    }

    static std::string Slurp(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return std::string((std::istreambuf_iterator<char>(in)), {});
    }
    static void Spit(const std::string& path, const std::string& bytes) {
        std::ofstream(path, std::ios::binary) << bytes;
    }

    std::filesystem::path dir_;
    CDataSpace space_;
    CWindowSpace windows_;
    CHeadlessHost host_;
    std::unique_ptr<CScopedHost> scope_;
    COpenOptions open_;
    CSaveOptions save_;
    std::string folder_;
};

}  // namespace files_test
