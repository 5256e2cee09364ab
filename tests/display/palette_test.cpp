// Palettes: the built-in tables at their sample rows and between them, channel masks, arrays
// of both shapes, and palette files of each size rule.
#include "display/pal.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "core/host.h"

namespace {

std::string WriteFile(const std::string& name, const std::vector<uint8_t>& bytes) {
    const std::string path = ::testing::TempDir() + name;
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return path;
}

// Bytes 0, 1, 2 ... cycling through 251 values, so no plane repeats another.
std::vector<uint8_t> Counting(size_t n) {
    std::vector<uint8_t> v(n);
    for (size_t i = 0; i < n; ++i) v[i] = static_cast<uint8_t>(i % 251);
    return v;
}

TEST(Palette, SampleRowsComeOutExactlyAndBetweenThemLinearly) {
    struct Row {
        const char* name;
        int at;
        int rgb[3];
    };
    for (const Row& r :
         {Row{"jet", 128, {131, 255, 128}}, Row{"jet", 255, {128, 0, 0}},
          Row{"awave", 96, {247, 0, 0}}, Row{"aaasmo", 32, {91, 0, 99}},
          Row{"spectrum", 224, {255, 155, 0}}, Row{"thallium", 0, {0, 0, 4}},
          Row{"black body yellow", 96, {255, 33, 0}}, Row{"black body red", 96, {255, 0, 33}},
          Row{"black body green", 96, {0, 255, 33}}, Row{"black body blue", 96, {0, 33, 255}},
          Row{"grey", 77, {77, 77, 77}},
          // halfway between jet's rows at 0 (0,0,131) and 32 (0,4,255)
          Row{"jet", 16, {0, 2, 193}}}) {
        CPal p(7);
        p.SetByName(r.name, nullptr);
        for (int c = 0; c < 3; ++c)
            EXPECT_EQ(p.entries[r.at][c], r.rgb[c]) << r.name << " " << r.at;
    }
    CPal red(1);
    red.SetByName("jet", nullptr);
    EXPECT_EQ(red.entries[128][0], 131);
    EXPECT_EQ(red.entries[128][1], 0);
    EXPECT_EQ(red.entries[128][2], 0);
    CPal unknown(7);
    unknown.SetByName("no such table", nullptr);
    EXPECT_EQ(unknown.index, 0);
}

TEST(Palette, ArraysOfBothShapesAndNoOther) {
    CDataSpace space;
    CZrkData* planar = space.NewData(TYPE_N1, 256, 3, 1, 1, 1, 1, "planar");
    CZrkData* inter = space.NewData(TYPE_N1, 3, 256, 1, 1, 1, 1, "inter");
    CZrkData* odd = space.NewData(TYPE_N1, 256, 4, 1, 1, 1, 1, "odd");
    auto* p = static_cast<uint8_t*>(planar->Data());
    auto* q = static_cast<uint8_t*>(inter->Data());
    for (int i = 0; i < 768; ++i) p[i] = q[i] = static_cast<uint8_t>(i * 7);
    CPal a(7), b(7);
    ASSERT_EQ(a.SetFromArray(planar), 1);
    EXPECT_EQ(a.entries[10][0], p[10]);
    EXPECT_EQ(a.entries[10][1], p[266]);
    EXPECT_EQ(a.entries[10][2], p[522]);
    b.SetByName("inter", &space);
    EXPECT_STREQ(b.source, "inter");
    EXPECT_EQ(b.entries[10][0], q[30]);
    EXPECT_EQ(b.entries[10][2], q[32]);
    b.SetByName("jet", nullptr);
    EXPECT_EQ(b.SetFromArray(odd), 0);
    EXPECT_EQ(b.index, 9);
    EXPECT_FALSE(b.IsArray());
}

TEST(Palette, FilesBySize) {
    CDataSpace space;
    space.SetUnique();
    CHeadlessHost host;
    CScopedHost scoped(host);
    auto load = [&](const std::string& path) {
        CPal p(7);
        return std::make_pair(p.LoadFile(path, space), p);
    };
    auto plane = [&](const std::string& name) {
        const CZrkData* a = space.FindData(name.c_str());
        EXPECT_NE(a, nullptr) << name;
        EXPECT_EQ(a ? a->Type() : -1, TYPE_N1);
        return a ? std::vector<uint8_t>(static_cast<uint8_t*>(a->Data()),
                                        static_cast<uint8_t*>(a->Data()) + 768)
                 : std::vector<uint8_t>(768);
    };

    std::string text;
    for (int i = 0; i < 256; ++i) {
        char line[16];
        std::snprintf(line, sizeof line, "%3d %3d %3d\n", i, 255 - i, i / 2);
        text += line;
    }
    ASSERT_EQ(text.size(), 3072u);
    auto [name_text, pal_text] = load(WriteFile("lut_text.pal", {text.begin(), text.end()}));
    EXPECT_EQ(name_text, "lut_text");
    const std::vector<uint8_t> t = plane("lut_text");
    EXPECT_EQ(t[5], 5);
    EXPECT_EQ(t[256 + 5], 250);
    EXPECT_EQ(t[512 + 9], 4);
    EXPECT_EQ(pal_text.entries[5][1], 250);

    const std::vector<uint8_t> bytes = Counting(768);
    load(WriteFile("planar.lut", bytes));
    EXPECT_EQ(plane("planar"), bytes);

    auto [name_act, pal_act] = load(WriteFile("swatch.act", bytes));
    const std::vector<uint8_t> act = plane("swatch");
    for (int i = 0; i < 256; i += 15)
        for (int c = 0; c < 3; ++c) EXPECT_EQ(act[i + 256 * c], bytes[3 * i + c]);
    EXPECT_EQ(pal_act.entries[7][2], bytes[23]);

    const std::vector<uint8_t> b800 = Counting(800);
    load(WriteFile("header800.bin", b800));
    const std::vector<uint8_t> h800 = plane("header800");
    for (int i = 0; i < 544; ++i) ASSERT_EQ(h800[i], b800[256 + i]);
    for (int i = 544; i < 768; ++i) ASSERT_EQ(h800[i], 0);

    const std::vector<uint8_t> b769 = Counting(769);
    load(WriteFile("header769.bin", b769));
    const std::vector<uint8_t> h769 = plane("header769");
    EXPECT_EQ(h769[0], b769[256]);
    EXPECT_EQ(h769[512], b769[768]);
    EXPECT_EQ(h769[513], 0);

    const int before = space.Count();
    EXPECT_EQ(load(WriteFile("short.bin", Counting(100))).first, "");
    EXPECT_EQ(space.Count(), before);
    EXPECT_TRUE(host.messages.empty());
    EXPECT_EQ(load("/nonexistent/palette.act").first, "");
    ASSERT_EQ(host.messages.size(), 1u);
    EXPECT_EQ(host.messages[0], "can not open file");
}

}  // namespace
