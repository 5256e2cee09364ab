#include "display/pal.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/host.h"

namespace {

constexpr const char* kNames[CPal::kTables] = {"grey",
                                               "awave",
                                               "aaasmo",
                                               "black body yellow",
                                               "black body red",
                                               "black body green",
                                               "black body blue",
                                               "spectrum",
                                               "thallium",
                                               "jet"};

// Rows at 0, 32, ..., 224 and 255 of each table.
using Samples = uint8_t[9][3];
constexpr Samples kAwave = {{255, 255, 0}, {255, 169, 0}, {255, 83, 0},  {247, 0, 0},  {0, 0, 0},
                            {0, 0, 255},   {0, 86, 255},  {0, 172, 255}, {0, 255, 255}};
constexpr Samples kAaasmo = {{0, 0, 0},     {91, 0, 99},  {0, 6, 193},
                             {0, 152, 171}, {31, 229, 0}, {242, 255, 0},
                             {255, 194, 0}, {241, 50, 0}, {255, 0, 0}};
constexpr Samples kBlackBody = {{0, 0, 0},      {96, 0, 0},      {192, 0, 0},
                                {255, 33, 0},   {255, 129, 0},   {255, 225, 0},
                                {255, 255, 66}, {255, 255, 162}, {255, 255, 255}};
constexpr Samples kSpectrum = {{255, 0, 255}, {95, 0, 255},  {0, 65, 255},
                               {0, 225, 255}, {0, 255, 125}, {35, 255, 0},
                               {195, 255, 0}, {255, 155, 0}, {255, 0, 0}};
constexpr Samples kThallium = {{0, 0, 4},      {0, 16, 88},     {6, 46, 204},
                               {30, 158, 254}, {104, 218, 196}, {156, 216, 78},
                               {194, 142, 32}, {220, 44, 6},    {250, 2, 4}};
constexpr Samples kJet = {{0, 0, 131},   {0, 4, 255},     {0, 131, 255},
                          {4, 255, 255}, {131, 255, 128}, {255, 255, 0},
                          {255, 128, 0}, {251, 0, 0},     {128, 0, 0}};

void Interpolate(const Samples& s, uint8_t rgb[CPal::kEntries][3]) {
    for (int k = 0; k < 8; ++k) {
        const int i0 = 32 * k;
        const int i1 = k == 7 ? 255 : i0 + 32;
        for (int i = i0; i <= i1; ++i)
            for (int c = 0; c < 3; ++c) {
                const double f = double(i - i0) / (i1 - i0);
                rgb[i][c] = static_cast<uint8_t>(s[k][c] + f * (s[k + 1][c] - s[k][c]) + 0.5);
            }
    }
}

bool IsPaletteShape(const CZrkData* a) {
    const bool rest = a->nz == 1 && a->nt == 1 && a->nu == 1 && a->nv == 1;
    return a->Data() && rest && ((a->nx == 256 && a->ny == 3) || (a->nx == 3 && a->ny == 256));
}

uint8_t ToByte(float v) { return v >= 255.0f ? 255 : v > 0.0f ? static_cast<uint8_t>(v) : 0; }

}  // namespace

const char* CPal::TableName(int index) {
    return index >= 0 && index < kTables ? kNames[index] : kNames[0];
}

void CPal::TableRgb(int table, uint8_t rgb[kEntries][3]) {
    switch (table) {
        case 1:
            return Interpolate(kAwave, rgb);
        case 2:
            return Interpolate(kAaasmo, rgb);
        case 3:
        case 4:
        case 5:
        case 6: {
            uint8_t base[kEntries][3];
            Interpolate(kBlackBody, base);
            // yellow (r, g, b), red (r, b, g), green (b, r, g), blue (b, g, r)
            static constexpr int kOrder[4][3] = {{0, 1, 2}, {0, 2, 1}, {2, 0, 1}, {2, 1, 0}};
            const int* order = kOrder[table - 3];
            for (int i = 0; i < kEntries; ++i)
                for (int c = 0; c < 3; ++c) rgb[i][c] = base[i][order[c]];
            return;
        }
        case 7:
            return Interpolate(kSpectrum, rgb);
        case 8:
            return Interpolate(kThallium, rgb);
        case 9:
            return Interpolate(kJet, rgb);
        default:
            for (int i = 0; i < kEntries; ++i) rgb[i][0] = rgb[i][1] = rgb[i][2] = uint8_t(i);
    }
}

void CPal::Fill(const uint8_t rgb[kEntries][3]) {
    for (int i = 0; i < kEntries; ++i) {
        for (int c = 0; c < 3; ++c) entries[i][c] = (mode >> c) & 1 ? rgb[i][c] : 0;
        entries[i][3] = 4;
    }
}

void CPal::SetByIndex(int table) {
    index = table >= 0 && table < kTables ? table : 0;
    source[0] = 0;
    uint8_t rgb[kEntries][3];
    TableRgb(index, rgb);
    Fill(rgb);
}

int CPal::SetFromArray(const CZrkData* a) {
    if (!a || !IsPaletteShape(a)) return 0;
    CDataCursor<float> in(a, 0);
    uint8_t rgb[kEntries][3];
    const bool planar = a->nx == static_cast<res_t>(kEntries);
    for (int i = 0; i < kEntries; ++i)
        for (int c = 0; c < 3; ++c)
            rgb[i][c] = ToByte(in.Get(planar ? i + c * kEntries : 3 * i + c));
    Fill(rgb);
    std::snprintf(source, sizeof source, "%s", a->name);
    return 1;
}

void CPal::SetByName(const char* name, const CDataSpace* space) {
    if (!name) name = "";
    for (int i = 0; i < kTables; ++i)
        if (std::strcmp(name, kNames[i]) == 0) return SetByIndex(i);
    const CZrkData* a = space && name[0] ? space->FindData(name) : nullptr;
    SetByIndex(0);
    if (a) SetFromArray(a);
}

const char* CPal::FileName(const CDataSpace* space) const {
    if (IsArray() && space && space->FindData(source)) return source;
    return TableName(index);
}

std::string CPal::LoadFile(const std::string& path, CDataSpace& space) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        Host().Message("can not open file");
        return {};
    }
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)),
                                  std::istreambuf_iterator<char>());
    // Planes: red 0 ... 255, green, blue, as an n1 [256][3] array lays them out.
    uint8_t planes[3 * kEntries] = {};
    const size_t size = bytes.size();
    std::string ext = std::filesystem::path(path).extension().string();
    for (char& ch : ext) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    if (size == 3072) {
        // Text: 256 lines of "%d %d %d".
        const std::string text(bytes.begin(), bytes.end());
        const char* p = text.c_str();
        for (int i = 0; i < kEntries; ++i) {
            int r = 0, g = 0, b = 0, used = 0;
            if (std::sscanf(p, "%d %d %d%n", &r, &g, &b, &used) != 3) break;
            planes[i] = static_cast<uint8_t>(r);
            planes[i + kEntries] = static_cast<uint8_t>(g);
            planes[i + 2 * kEntries] = static_cast<uint8_t>(b);
            p += used;
        }
    } else if (size > 768) {
        // A 256-byte header, then planar; a short tail reads as 0.
        std::copy(bytes.begin() + 256, bytes.begin() + std::min<size_t>(size, 256 + 768), planes);
    } else if (size == 768 && ext == ".ACT") {
        for (int i = 0; i < kEntries; ++i)
            for (int c = 0; c < 3; ++c)
                planes[i + c * kEntries] = static_cast<uint8_t>(bytes[3 * i + c]);
    } else if (size == 768) {
        std::copy(bytes.begin(), bytes.end(), planes);
    } else {
        return {};
    }
    const std::string title = std::filesystem::path(path).stem().string();
    CZrkData* a = space.NewData(TYPE_N1, kEntries, 3, 1, 1, 1, 1, title.c_str());
    if (!a) {
        Host().Message("can not open file");
        return {};
    }
    std::memcpy(a->Data(), planes, sizeof planes);
    a->changed = 1;
    SetFromArray(a);
    Host().RefreshDisplays();
    return a->name;
}
