// What the workspace tests share: clean global spaces, a headless host, a display factory
// that lists plain entries, and a state that touches every part of the file.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>

#include "core/data_space.h"
#include "core/host.h"
#include "core/window_space.h"
#include "display/display_entry.h"
#include "files/zrk_file.h"

namespace ws {

inline std::string Slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

inline void Spit(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

inline void ClearSpaces() {
    while (GlobalWindowSpace().Count() > 0) GlobalWindowSpace().DelData(0);
    while (GlobalDataSpace().Count() > 0) GlobalDataSpace().DelData(0);
}

// The display factory of the tests: a plain entry in the global window list.
inline CDisplayEntry* ListEntry(const CDisplayRequest& r) {
    auto e = std::make_unique<CDisplayEntry>(*r.look);
    e->kind = r.kind;
    for (int k = 0; k < 3; ++k) e->data[k] = r.data[k];
    e->caption = r.caption;
    // As the displays name themselves: by kind, unless the file gave a name.
    const char* own = r.kind == KIND_1D ? "p00" : r.kind == KIND_XY ? "xy00" : "rgb00";
    std::snprintf(e->name, sizeof e->name, "%s", r.name.empty() ? own : r.name.c_str());
    return static_cast<CDisplayEntry*>(GlobalWindowSpace().NewData(std::move(e)));
}

inline void InstallFactory(DisplayWindowHook hook) {
    for (uint32_t kind : {KIND_1D, KIND_2D, KIND_XY, KIND_RGB}) SetDisplayWindow(kind, hook);
}

// An array of `type` and sizes filled with random bytes, steps from `seed`.
inline CZrkData* RandomArray(const char* name, int type, std::initializer_list<int> res,
                             unsigned seed) {
    res_t r[6] = {1, 1, 1, 1, 1, 1};
    int k = 0;
    for (int v : res) r[k++] = static_cast<res_t>(v);
    CZrkData* a = GlobalDataSpace().NewData(type, r[0], r[1], r[2], r[3], r[4], r[5], name);
    std::mt19937 gen(seed);
    auto* p = static_cast<unsigned char*>(a->Data());
    for (uint64_t i = 0; i < a->Bytes(); ++i) p[i] = static_cast<unsigned char>(gen());
    // Steps are written with six decimals: keep them exact there.
    a->SetMm(0.5f * seed, 1.25f, 2.0f, 0.125f * seed, 3.0f, 1.0f + seed);
    return a;
}

inline CDisplayEntry* AddWindow(uint32_t kind, CZrkData* a, CZrkData* b, CZrkData* c,
                                const char* name) {
    auto e = std::make_unique<CDisplayEntry>(CLook(kind));
    e->data[0] = a, e->data[1] = b, e->data[2] = c;
    std::snprintf(e->name, sizeof e->name, "%s", name);
    return static_cast<CDisplayEntry*>(GlobalWindowSpace().NewData(std::move(e)));
}

class WorkspaceTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ClearSpaces();
        InstallFactory(&ListEntry);
        dir_ = std::filesystem::path(::testing::TempDir()) /
               ("zrk_" + std::to_string(getpid()) + "_" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(dir_);
        std::filesystem::create_directories(dir_);
    }
    void TearDown() override {
        ClearSpaces();
        InstallFactory(nullptr);
        std::filesystem::remove_all(dir_);
    }
    std::string Path(const std::string& name) const { return (dir_ / name).string(); }

    // Every type in a 6-D shape, a name with blanks, and the four kinds of display.
    void BuildState() {
        for (int t = 0; t < TYPE_COUNT; ++t) {
            const std::string name = std::string("t ") + TypeName(t);
            RandomArray(name.c_str(), t, {3, 2, 1 + t % 3, 2, 1, 2}, static_cast<unsigned>(t + 1));
        }
        CZrkData* img = RandomArray("img", TYPE_R4, {8, 6, 3, 2}, 40);
        CZrkData* x = RandomArray("x", TYPE_R8, {16}, 41);
        CZrkData* red = RandomArray("red", TYPE_N1, {4, 4}, 42);
        CZrkData* blue = RandomArray("blue", TYPE_N1, {4, 4}, 43);
        CZrkData* y = RandomArray("y", TYPE_CR4, {16}, 44);
        CZrkData* xa = RandomArray("xa", TYPE_I2, {16}, 46);
        RandomArray("lut", TYPE_N1, {256, 3}, 45);

        CDisplayEntry* w2 = AddWindow(KIND_2D, img, nullptr, nullptr, "i 00\nsecond line");
        w2->caption = "magnitude, slice 3\nechoes summed";
        w2->look.palplane.SetPalette(7, "lut", &GlobalDataSpace());
        w2->look.palplane.window = 120.5f, w2->look.palplane.iqmp = 3;
        w2->page_z = 2, w2->page_t = 1, w2->minimized = 1;
        w2->window_loc = {10, 20, 300, 400};
        CDisplayEntry* rgb = AddWindow(KIND_RGB, red, nullptr, blue, "rgb00");
        rgb->look.gplane.level = 7.0f;
        CDisplayEntry* w1 = AddWindow(KIND_1D, x, nullptr, nullptr, "p00");
        w1->caption = "";
        CLine& line = w1->look.AddLine();
        std::snprintf(line.text, sizeof line.text, "series one");
        line.color = 0x00ff00, line.overlay = 1.5f;
        w1->look.AddArrow().end[0] = 3.0f;
        std::snprintf(w1->look.AddText().str, 128, "note here");
        w1->look.axes[1].ax_range[1] = 9.0f;
        w1->page_z = 4;
        CDisplayEntry* wxy = AddWindow(KIND_XY, xa, y, nullptr, "xy00");
        wxy->look.AddLine().iqmpy = 1;
        wxy->look.axes[0].tick = 0.25f;
        Host().History("a = 1\r\n");
        Host().History(std::string(200, 'h') + "\r\n");
    }

    std::filesystem::path dir_;
    CHeadlessHost host_;
    CScopedHost scoped_{host_};
};

}  // namespace ws
