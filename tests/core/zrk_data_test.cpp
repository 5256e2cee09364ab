#include "core/zrk_data.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "core/host.h"
#include "core/zrk_error.h"
#include "tests/core/owned_record.h"

namespace {

std::string ErrorOf(void (*f)(CZrkData&), CZrkData& d) {
    try {
        f(d);
    } catch (const ZrkError& e) {
        return e.what();
    }
    return "";
}

}  // namespace

TEST(ZrkData, NewRecordIsEmptyAndUntyped) {
    CZrkData d;
    EXPECT_EQ(d.type, -1);
    EXPECT_EQ(d.nx, 0u);
    EXPECT_EQ(d.nu, 1u);
    EXPECT_EQ(d.flag, 1);
    EXPECT_EQ(d.caption, "default");
    EXPECT_EQ(d.undo_text, "no undo to do");
    EXPECT_EQ(d.Bytes(), 0u);
    EXPECT_EQ(d.Count(), 0u);
    EXPECT_EQ(d.Components(), 0);
    EXPECT_FALSE(d.IsReal());
    EXPECT_FALSE(d.IsComplex());
    EXPECT_STREQ(d.TypeName(), "null");
    EXPECT_EQ(d.HeaderText(), "");
    EXPECT_EQ(d.HeaderNameText(), "");
    EXPECT_EQ(d.Allocate(), nullptr);
    EXPECT_EQ(d.data, nullptr);
    for (float m : d.mm) EXPECT_EQ(m, 1.0f);
}

TEST(ZrkData, SizesAndResolutions) {
    CZrkData d;
    d.SetHeader(TYPE_CR4, 3, 4, 5, 6, 7, 8);
    EXPECT_EQ(d.comp_bytes, 4);
    EXPECT_EQ(d.elem_bytes, 8);
    EXPECT_EQ(d.Count(), 3u * 4 * 5 * 6 * 7 * 8);
    EXPECT_EQ(d.Bytes(), 8u * d.Count());
    EXPECT_EQ(d.CountXYZ(), 60u);
    EXPECT_EQ(d.BytesPerLine(), 24u);
    EXPECT_EQ(d.BytesPerPlane(), 96u);
    EXPECT_EQ(d.BytesPerU(), 8u * 3 * 4 * 5 * 6 * 7);
    EXPECT_EQ(d.Res(6), 1u);
    EXPECT_EQ(d.Res(-1), 1u);
    EXPECT_EQ(d.Res(5), 8u);
    EXPECT_EQ(d.Address(1, 2, 3, 4, 5, 6) - d.Address(0, 0),
              static_cast<ptrdiff_t>(8 * (((((6 * 7 + 5) * 6 + 4) * 5 + 3) * 4 + 2) * 3 + 1)));
    EXPECT_EQ(d.AddressWrapped(4, 5, 5, 6, 7, 8), d.Address(1, 1, 0, 0, 0, 0));
    EXPECT_EQ(d.Offset3dClamped(10, 10, 10), (4u * 4 + 3) * 3 + 2);
}

TEST(ZrkData, AbsurdSizesSaturateAndFailToAllocate) {
    CZrkData d;
    d.SetHeader(TYPE_R8, 1ull << 40, 1ull << 40, 1, 1, 1, 1);
    EXPECT_EQ(d.Bytes(), std::numeric_limits<uint64_t>::max());
    EXPECT_EQ(d.Allocate(), nullptr);
    EXPECT_EQ(ErrorOf([](CZrkData& r) { r.AllocateOrThrow(); }, d), "out of memory");
    d.SetType(-1);
    EXPECT_EQ(ErrorOf([](CZrkData& r) { r.AllocateOrThrow(); }, d), "invalid data type");
}

TEST(ZrkData, FoldingMovesResolutionsOnly) {
    struct Case {
        void (CZrkData::*fold)();
        res_t want[6];
    } cases[] = {
        {&CZrkData::FoldXY, {6, 4, 5, 6, 7, 1}},
        {&CZrkData::FoldXYZ, {24, 5, 6, 7, 1, 1}},
        {&CZrkData::FoldXYZT, {120, 6, 7, 1, 1, 1}},
        {&CZrkData::FoldXYZTU, {720, 7, 1, 1, 1, 1}},
        {&CZrkData::FoldXYZTUV, {5040, 1, 1, 1, 1, 1}},
        {&CZrkData::FoldYZTUV, {2, 2520, 1, 1, 1, 1}},
        {&CZrkData::FoldZTUV, {2, 3, 840, 1, 1, 1}},
        {&CZrkData::FoldTUV, {2, 3, 4, 210, 1, 1}},
        {&CZrkData::FoldUV, {2, 3, 4, 5, 42, 1}},
    };
    for (const Case& c : cases) {
        Owned d(TYPE_I2, 2, 3, 4, 5, 6, 7);
        void* samples = d.data;
        (d.*c.fold)();
        res_t got[6];
        d.GetRes(got);
        for (int i = 0; i < 6; ++i) EXPECT_EQ(got[i], c.want[i]) << "direction " << i;
        EXPECT_EQ(d.data, samples);
        EXPECT_EQ(d.Count(), 5040u);
    }
}

TEST(ZrkData, HeaderOnlyChangesNeverTouchSamples) {
    Owned big(TYPE_R4, 1024, 1024, 16);  // 64 MB
    void* samples = big.data;
    static_cast<float*>(samples)[12345] = 7.5f;

    big.FoldXYZ();
    EXPECT_EQ(big.data, samples);
    big.MakeReal();
    EXPECT_EQ(big.data, samples);
    EXPECT_EQ(big.type, TYPE_R4);

    CZrkData view;
    view.CopyHeader(big);
    EXPECT_EQ(view.data, samples);
    EXPECT_EQ(view.undo_data, nullptr);
    EXPECT_EQ(view.undo_text, "");

    auto* fresh = new CZrkData;
    fresh->SetHeader(TYPE_R4, 8, 1, 1, 1, 1, 1);
    fresh->AllocateOrThrow();
    void* fresh_samples = fresh->data;
    big.NewUndo("fill", fresh);
    EXPECT_EQ(big.data, fresh_samples);
    EXPECT_EQ(big.undo_data, samples);
    EXPECT_EQ(fresh->data, nullptr);
    delete fresh;
    big.Undo();
    EXPECT_EQ(big.data, samples);
    EXPECT_EQ(static_cast<float*>(big.data)[12345], 7.5f);
}

TEST(ZrkData, TypeChanges) {
    struct Case {
        int from;
        void (CZrkData::*op)();
        int want;
    } cases[] = {
        {TYPE_I2, &CZrkData::MakeComplex, TYPE_CI2}, {TYPE_CI2, &CZrkData::MakeComplex, TYPE_CI2},
        {TYPE_CR8, &CZrkData::MakeReal, TYPE_R8},    {TYPE_I1, &CZrkData::MakeFloat, TYPE_R4},
        {TYPE_R8, &CZrkData::MakeFloat, TYPE_R8},    {TYPE_CR8, &CZrkData::MakeFloat, TYPE_CR8},
        {TYPE_CN1, &CZrkData::MakeFloat, TYPE_CR4},  {TYPE_N1, &CZrkData::MakeSigned, TYPE_I1},
        {TYPE_CN4, &CZrkData::MakeSigned, TYPE_CI4}, {TYPE_N8, &CZrkData::MakeSigned, TYPE_N8},
        {TYPE_CN8, &CZrkData::MakeSigned, TYPE_CN8}, {TYPE_R4, &CZrkData::MakeSigned, TYPE_R4},
    };
    for (const Case& c : cases) {
        CZrkData d;
        d.SetType(c.from);
        (d.*c.op)();
        EXPECT_EQ(d.type, c.want) << TypeName(c.from);
        EXPECT_EQ(d.elem_bytes, TypeInfo(c.want)->elem_bytes);
    }
}

TEST(ZrkData, UndoIsOneLevelDeep) {
    CHeadlessHost host;
    CScopedHost scope(host);
    Owned a(TYPE_R4, 4);
    static_cast<float*>(a.data)[0] = 1;

    a.NewUndo("self", &a);  // no effect
    EXPECT_FALSE(a.HasUndo());
    EXPECT_EQ(a.changed, 0);

    auto make = [](int type, res_t n, float v) {
        auto* t = new CZrkData;
        t->SetHeader(type, n, 1, 1, 1, 1, 1);
        t->AllocateOrThrow();
        static_cast<float*>(t->data)[0] = v;
        return t;
    };
    CZrkData* second = make(TYPE_R4, 4, 2);
    a.NewUndo("equation", second);
    delete second;
    EXPECT_EQ(a.undo_text, "undo equation");
    EXPECT_EQ(a.changed, 1);
    EXPECT_EQ(a.shape_changed, 0);

    CZrkData* third = make(TYPE_R4, 8, 3);
    a.NewUndo("resize", third);  // discards the undo of the first change
    delete third;
    EXPECT_EQ(a.shape_changed, 1);
    EXPECT_EQ(a.nx, 8u);
    EXPECT_EQ(a.undo_nx, 4u);
    EXPECT_EQ(static_cast<float*>(a.undo_data)[0], 2.0f);
    EXPECT_EQ(a.UndoBytes(), 16u);

    a.Undo();
    EXPECT_EQ(a.nx, 4u);
    EXPECT_EQ(static_cast<float*>(a.data)[0], 2.0f);
    EXPECT_FALSE(a.HasUndo());
    EXPECT_EQ(a.undo_text, "no undo to do");
    a.changed = 0;
    a.Undo();  // nothing to undo: only the text again
    EXPECT_EQ(a.changed, 0);
    EXPECT_EQ(a.nx, 4u);
    ASSERT_EQ(host.undo_tips.size(), 4u);
    EXPECT_EQ(host.undo_tips[0], "undo equation");
    EXPECT_EQ(host.undo_tips[3], "no undo to do");

    CZrkData* fourth = make(TYPE_R4, 4, 4);
    a.NewUndo("x", fourth);
    delete fourth;
    a.NoUndo();
    EXPECT_FALSE(a.HasUndo());
    EXPECT_EQ(a.undo_text, "no undo to do");
    EXPECT_EQ(static_cast<float*>(a.data)[0], 4.0f);
}

TEST(ZrkData, HeaderTexts) {
    struct Case {
        int type;
        res_t r[6];
        const char* header;
        const char* named;
        const char* res;
    } cases[] = {
        {TYPE_R4, {1, 1, 1, 1, 1, 1}, "r4", "r4 a", "[1]"},
        {TYPE_CR4,
         {256, 256, 1, 1, 1, 1},
         "complex r4 [256][256]",
         "complex r4 a[256][256]",
         "[256][256]"},
        {TYPE_I2, {5, 1, 1, 1, 1, 1}, "i2 [5]", "i2 a[5]", "[5]"},
        {TYPE_N1, {1, 1, 3, 1, 1, 1}, "n1 [1][1][3]", "n1 a[1][1][3]", "[1][1][3]"},
        {TYPE_R8,
         {2, 3, 4, 5, 6, 7},
         "r8 [2][3][4][5][6][7]",
         "r8 a[2][3][4][5][6][7]",
         "[2][3][4][5][6][7]"},
        {TYPE_R8,
         {1, 1, 1, 1, 2, 1},
         "r8 [1][1][1][1][2]",
         "r8 a[1][1][1][1][2]",
         "[1][1][1][1][2]"},
    };
    for (const Case& c : cases) {
        CZrkData d;
        d.SetName("a");
        d.SetHeader(c.type, c.r[0], c.r[1], c.r[2], c.r[3], c.r[4], c.r[5]);
        EXPECT_EQ(d.HeaderText(), c.header);
        EXPECT_EQ(d.HeaderNameText(), c.named);
        EXPECT_EQ(d.ResText(), c.res);
    }
}

TEST(ZrkData, DuplicateCopiesDeeply) {
    Owned a(TYPE_CI2, 3, 2);
    for (int i = 0; i < 12; ++i) static_cast<int16_t*>(a.data)[i] = static_cast<int16_t>(i - 5);
    a.SetMm(0.5f, 2, 3, 4, 5, 6);
    a.SetName("a");
    CZrkData* b = a.Duplicate();
    ASSERT_NE(b, nullptr);
    EXPECT_NE(b->data, a.data);
    EXPECT_EQ(std::memcmp(b->data, a.data, a.Bytes()), 0);
    EXPECT_EQ(b->mm[0], 0.5f);
    EXPECT_STREQ(b->name, "");
    EXPECT_TRUE(b->SameRes(a));
    b->FreeData();
    delete b;

    CZrkData empty;
    CZrkData* c = empty.Duplicate();
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->data, nullptr);
    delete c;
}

TEST(ZrkData, ResolutionChecksNameTheirDirection) {
    const res_t a[6] = {1, 2, 3, 4, 5, 6};
    const res_t b[6] = {9, 9, 9, 9, 9, 9};
    void (*checks[6])(const res_t*, const res_t*) = {CheckResX, CheckResY, CheckResZ,
                                                     CheckResT, CheckResU, CheckResV};
    const char* texts[6] = {"x resolutions not equal", "y resolutions not equal",
                            "z resolutions not equal", "t resolutions not equal",
                            "u resolutions not equal", "v resolutions not equal"};
    for (int d = 0; d < 6; ++d) {
        EXPECT_NO_THROW(checks[d](a, a));
        try {
            checks[d](a, b);
            ADD_FAILURE() << texts[d];
        } catch (const ZrkError& e) {
            EXPECT_STREQ(e.what(), texts[d]);
        }
    }
}

TEST(ZrkData, WouldClip) {
    Owned f(TYPE_R4, 3);
    float* v = static_cast<float*>(f.data);
    v[0] = 1, v[1] = -5, v[2] = 300;
    EXPECT_EQ(f.WouldClip(0, TYPE_I2), 0);
    EXPECT_EQ(f.WouldClip(0, TYPE_I1), 1);
    EXPECT_EQ(f.WouldClip(0, TYPE_N2), 1);  // -5
    EXPECT_EQ(f.WouldClip(0, TYPE_I8), 1);  // everything is below the kept minimum
    EXPECT_EQ(f.WouldClip(0, TYPE_R8), 0);
    EXPECT_EQ(f.WouldClip(0, TYPE_CR8), 0);
    EXPECT_EQ(f.WouldClip(0, -1), 1);
    v[1] = std::nanf("");
    v[2] = 255;
    EXPECT_EQ(f.WouldClip(0, TYPE_N1), 0);  // NaN passes
    v[0] = std::numeric_limits<float>::infinity();
    EXPECT_EQ(f.WouldClip(0, TYPE_R4), 1);

    Owned c(TYPE_CI2, 2);
    int16_t* s = static_cast<int16_t*>(c.data);
    s[0] = 1, s[1] = 2, s[2] = 3, s[3] = -200;  // q of the second element
    EXPECT_EQ(c.WouldClip(0, TYPE_I1), 1);
    EXPECT_EQ(c.WouldClip(1, TYPE_I2), 0);

    CZrkData untyped;
    EXPECT_EQ(untyped.WouldClip(0, TYPE_R4), 1);
    CZrkData empty;
    empty.SetHeader(TYPE_R4, 0, 1, 1, 1, 1, 1);
    EXPECT_EQ(empty.WouldClip(0, TYPE_N1), 0);
}
