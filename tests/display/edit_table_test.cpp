// The spreadsheet's logic: cell texts of the page shown, exact edit texts, edits with undo,
// refused text, and opening through the factory.
#include "display/edit_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "core/host.h"
#include "display/display_entry.h"

namespace {

struct CTestDoc : CDisplayEntry {
    explicit CTestDoc(CZrkData* a) : CDisplayEntry(CLook(LOOK_SPREADSHEET)) { data[0] = a; }
};

class CTestTable : public CEditTable {
  public:
    using CEditTable::CEditTable;
    std::vector<std::string> shown;
    int redraws = 0;

  protected:
    bool StartTimer(int) override { return true; }
    bool StopTimer() override { return true; }
    void Redraw() override { ++redraws; }
    void ShowStatus(const std::string& text) override { shown.push_back(text); }
};

class EditTableTest : public ::testing::Test {
  protected:
    CZrkData* Make(int type, res_t nx, res_t ny, res_t nz, const char* name) {
        CZrkData* a = space_.NewData(type, nx, ny, nz, 1, 1, 1, name);
        std::memset(a->Data(), 0, a->Bytes());
        return a;
    }
    std::string Bytes(const CZrkData* a) {
        return std::string(static_cast<const char*>(a->Data()), a->Bytes());
    }
    CDataSpace space_;
    CHeadlessHost host_;
    CScopedHost scoped_{host_};
};

TEST_F(EditTableTest, CellsShowThePageInTheNumberFormat) {
    CZrkData* a = Make(TYPE_R4, 3, 2, 2, "a");
    auto* f = static_cast<float*>(a->Data());
    // Plane z 1 starts at 6; (x, y) is y * 3 + x within a plane.
    f[1] = 2.5f;
    f[6 + 1 * 3 + 2] = 12345;
    f[6 + 0] = -0.001234f;
    f[6 + 2] = 0.25f;
    CTestDoc doc(a);
    CTestTable t(doc);
    EXPECT_EQ(t.Columns(), 3u);
    EXPECT_EQ(t.Rows(), 2u);
    EXPECT_EQ(t.Text(1, 0), "2.500");
    EXPECT_EQ(t.Text(0, 0), "0");
    t.OnScrollZ();
    t.OnScrollNext();
    EXPECT_EQ(t.CurrentPlane(), 1u);
    EXPECT_EQ(t.redraws, 1);
    EXPECT_EQ(t.Text(2, 1), "12.345e3");
    EXPECT_EQ(t.Text(0, 0), "-0.001234");
    EXPECT_EQ(t.Text(2, 0), "0.2500");
    // Outside the plane: nothing.
    EXPECT_EQ(t.Text(3, 0), "");
    EXPECT_EQ(t.EditText(0, 2), "");

    // Integers in the long format; complex as "i, q".
    CZrkData* n = Make(TYPE_I4, 2, 1, 1, "n");
    static_cast<int32_t*>(n->Data())[0] = -7;
    static_cast<int32_t*>(n->Data())[1] = 1234567;
    CTestDoc ndoc(n);
    CTestTable nt(ndoc);
    EXPECT_EQ(nt.Text(0, 0), "-7");
    EXPECT_EQ(nt.Text(1, 0), "1.235e6");
    EXPECT_EQ(nt.EditText(1, 0), "1234567");
    CZrkData* c = Make(TYPE_CR4, 2, 1, 1, "c");
    static_cast<std::complex<float>*>(c->Data())[1] = {1.5f, -2};
    CTestDoc cdoc(c);
    CTestTable ct(cdoc);
    EXPECT_EQ(ct.Text(1, 0), "1.500, -2");
    EXPECT_EQ(ct.Text(0, 0), "0, 0");
}

// What the editor starts from gives the very sample back, for every float and integer width.
TEST_F(EditTableTest, EditTextRoundTripsExactly) {
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> u(-1e6, 1e6);
    CZrkData* r4 = Make(TYPE_R4, 50, 1, 1, "r4");
    CZrkData* r8 = Make(TYPE_R8, 50, 1, 1, "r8");
    CZrkData* i8 = Make(TYPE_I8, 2, 1, 1, "i8");
    CZrkData* n8 = Make(TYPE_N8, 1, 1, 1, "n8");
    for (int k = 0; k < 50; ++k) {
        const double v = u(rng) * std::pow(10.0, k % 13 - 6);
        static_cast<float*>(r4->Data())[k] = static_cast<float>(v);
        static_cast<double*>(r8->Data())[k] = v;
    }
    static_cast<int64_t*>(i8->Data())[0] = 9007199254740993;  // 2^53 + 1: no double holds it
    static_cast<int64_t*>(i8->Data())[1] = INT64_MIN;
    static_cast<uint64_t*>(n8->Data())[0] = UINT64_MAX;
    for (CZrkData* a : {r4, r8, i8, n8}) {
        CTestDoc doc(a);
        CTestTable t(doc);
        const std::string before = Bytes(a);
        for (res_t x = 0; x < a->nx; ++x) ASSERT_TRUE(t.SetText(x, 0, t.EditText(x, 0))) << x;
        EXPECT_EQ(Bytes(a), before) << a->name;
    }
}

TEST_F(EditTableTest, AnEditSetsOneSampleWithUndo) {
    CZrkData* a = Make(TYPE_R4, 4, 3, 2, "a");
    for (uint64_t k = 0; k < a->Count(); ++k) static_cast<float*>(a->Data())[k] = float(k);
    const std::string before = Bytes(a);
    CTestDoc doc(a);
    CTestTable t(doc);
    t.page[0] = 1;  // z 1
    a->changed = 0;
    ASSERT_TRUE(t.SetText(2, 1, " -3.25 "));
    // Element (2, 1, 1) and no other.
    std::string want = before;
    const float v = -3.25f;
    std::memcpy(&want[((1 * 3 + 1) * 4 + 2) * sizeof(float)], &v, sizeof v);
    EXPECT_EQ(Bytes(a), want);
    EXPECT_EQ(a->changed, 1);
    EXPECT_EQ(a->undo_text, "undo edit");
    EXPECT_EQ(host_.refreshes, 1);
    EXPECT_EQ(t.shown.back(), "a[2][1][1]= -3.250");
    t.OnUndo();
    EXPECT_EQ(Bytes(a), before);
    EXPECT_EQ(host_.refreshes, 2);

    // Complex: "i, q", "i q", or a real value alone.
    CZrkData* c = Make(TYPE_CR8, 3, 1, 1, "c");
    CTestDoc cdoc(c);
    CTestTable ct(cdoc);
    ASSERT_TRUE(ct.SetText(0, 0, "1.5, -2"));
    ASSERT_TRUE(ct.SetText(1, 0, "4 5e-1"));
    ASSERT_TRUE(ct.SetText(2, 0, "3"));
    const auto* z = static_cast<const std::complex<double>*>(c->Data());
    EXPECT_EQ(z[0], std::complex<double>(1.5, -2));
    EXPECT_EQ(z[1], std::complex<double>(4, 0.5));
    EXPECT_EQ(z[2], std::complex<double>(3, 0));
}

// Refused text leaves the array, its undo and its flags as they were and says why.
TEST_F(EditTableTest, BadTextIsRefused) {
    CZrkData* r = Make(TYPE_R4, 2, 2, 1, "r");
    CZrkData* n1 = Make(TYPE_N1, 2, 1, 1, "n1");
    CZrkData* i2 = Make(TYPE_I2, 2, 1, 1, "i2");
    CZrkData* c = Make(TYPE_CI4, 2, 1, 1, "c");
    struct Case {
        CZrkData* a;
        const char* text;
        const char* why;
    };
    const Case cases[] = {
        {r, "7x", "not a number: 7x"},
        {r, "", "not a number: "},
        {r, "1, 2", "not a number: 1, 2"},
        {r, "1e39", "1e39 is out of range of r4"},
        {n1, "256", "256 is out of range of n1"},
        {n1, "-1", "-1 is out of range of n1"},
        {i2, "2.5", "2.5 is not a whole number"},
        {i2, "40000", "40000 is out of range of i2"},
        {i2, "3 4", "not a number: 3 4"},
        {c, "1, 2, 3", "not a number: 1, 2, 3"},
        {c, "a, 2", "not a number: a"},
        {c, "1, 2.5", "2.5 is not a whole number"},
    };
    for (const Case& k : cases) {
        CTestDoc doc(k.a);
        CTestTable t(doc);
        const std::string before = Bytes(k.a);
        k.a->changed = 0;
        EXPECT_FALSE(t.SetText(1, 0, k.text)) << k.text;
        ASSERT_FALSE(t.shown.empty());
        EXPECT_EQ(t.shown.back(), k.why);
        EXPECT_EQ(Bytes(k.a), before) << k.text;
        EXPECT_FALSE(k.a->HasUndo()) << k.text;
        EXPECT_EQ(k.a->changed, 0) << k.text;
    }
    // A cell outside the plane.
    CTestDoc doc(r);
    CTestTable t(doc);
    EXPECT_FALSE(t.SetText(2, 0, "1"));
    EXPECT_EQ(host_.refreshes, 0);
}

CDisplayRequest g_request;
CDisplayEntry* Recording(const CDisplayRequest& r) {
    g_request = r;
    static CTestDoc doc(nullptr);
    return &doc;
}

TEST_F(EditTableTest, OpensThroughTheSpreadsheetFactory) {
    const DisplayWindowHook previous = SetDisplayWindow(LOOK_SPREADSHEET, nullptr);
    CZrkData* a = Make(TYPE_R4, 2, 2, 1, "a");
    EXPECT_EQ(OpenEditDisplay(space_, "a"), "NewDisplay error");
    EXPECT_EQ(OpenEditDisplay(space_, "none"), "data not found");
    SetDisplayWindow(LOOK_SPREADSHEET, Recording);
    EXPECT_EQ(OpenEditDisplay(space_, "a"), "edit data");
    EXPECT_EQ(g_request.kind, uint32_t(LOOK_SPREADSHEET));
    EXPECT_EQ(g_request.data[0], a);
    EXPECT_EQ(DisplayWindow(LOOK_SPREADSHEET), &Recording);
    SetDisplayWindow(LOOK_SPREADSHEET, previous);
}

}  // namespace
