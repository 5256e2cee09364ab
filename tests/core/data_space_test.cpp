#include "core/data_space.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "core/host.h"
#include "core/key_reader.h"
#include "core/name_list.h"
#include "core/window_space.h"
#include "core/zrk_error.h"

namespace {

CDataSpace& UniqueSorted(CDataSpace& s) {
    s.SetUnique();
    s.InitReservedData();
    return s;
}

}  // namespace

TEST(DataSpace, NewDataForms) {
    CDataSpace s;
    CZrkData* a = s.NewData(TYPE_R4, 4, 3, 1, 1, 1, 1, "a");
    ASSERT_NE(a, nullptr);
    EXPECT_NE(a->data, nullptr);
    EXPECT_STREQ(a->name, "a");
    EXPECT_EQ(a->Count(), 12u);

    CZrkData* z = s.NewData(TYPE_R4, 4, 0, 1, 1, 1, 1, "z");  // zero resolution: header only
    ASSERT_NE(z, nullptr);
    EXPECT_EQ(z->data, nullptr);
    EXPECT_EQ(s.Count(), 2);

    CZrkData* untyped = s.NewData("u");
    ASSERT_NE(untyped, nullptr);
    EXPECT_EQ(untyped->type, -1);
    CZrkData* nameless = s.NewData();
    ASSERT_NE(nameless, nullptr);
    EXPECT_STREQ(nameless->name, "");

    EXPECT_EQ(s.NewData(z, "t"), nullptr);  // a template with a zero resolution
    EXPECT_EQ(s.NewData(static_cast<const CZrkData*>(nullptr), "t"), nullptr);
    EXPECT_EQ(s.Count(), 4);
    CZrkData* t = s.NewData(a, "t");
    ASSERT_NE(t, nullptr);
    EXPECT_TRUE(t->SameRes(*a));
    EXPECT_EQ(t->type, TYPE_R4);

    // An impossible size is reported by null and leaves the list as it was.
    EXPECT_EQ(s.NewData(TYPE_R8, 1ull << 40, 1ull << 40, 1, 1, 1, 1, "huge"), nullptr);
    EXPECT_EQ(s.Count(), 5);
    EXPECT_EQ(s.NewData(TYPE_R4, 1, 1, 1, 1, 1, 1, nullptr)->name[0], '\0');
}

TEST(DataSpace, UniqueNamesAndSorting) {
    CDataSpace s;
    UniqueSorted(s);
    EXPECT_STREQ(s.NewData("b")->name, "b");
    EXPECT_STREQ(s.NewData("a")->name, "a");
    EXPECT_STREQ(s.NewData("a")->name, "a.");
    EXPECT_STREQ(s.NewData("a")->name, "a..");
    EXPECT_STREQ(s.NewData("B")->name, "B");
    const char* order[] = {"B", "a", "a.", "a..", "b"};
    for (int i = 0; i < 5; ++i) EXPECT_STREQ(s.GetData(i)->name, order[i]);

    const std::string n127(127, 'x');
    EXPECT_EQ(std::string(s.NewData(n127.c_str())->name), n127);
    EXPECT_EQ(std::string(s.NewData(n127.c_str())->name), n127);  // stays a duplicate
    const std::string n126(126, 'y');
    EXPECT_EQ(std::string(s.NewData(n126.c_str())->name), n126);
    EXPECT_EQ(std::string(s.NewData(n126.c_str())->name), n126 + ".");
    const std::string n200(200, 'w');
    EXPECT_EQ(std::string(s.NewData(n200.c_str())->name), std::string(127, 'w'));

    CDataSpace plain;
    CZrkData* first = plain.NewData("a");
    CZrkData* second = plain.NewData("a");
    EXPECT_STREQ(second->name, "a");
    EXPECT_EQ(plain.FindData("a"), first);
    EXPECT_EQ(plain.GetData(1), second);  // unsorted: list order
}

// The quick insertion after an append gives the exchange sort's order exactly: on sorted
// lists, on lists a rename left out of order, and with names already there.
TEST(DataSpace, SortAfterAppendMatchesTheExchangeSort) {
    std::mt19937 random(7);
    const auto name_of = [](const std::string& n) { return n.c_str(); };
    for (int round = 0; round < 200; ++round) {
        std::vector<std::string> list;
        const int n = static_cast<int>(random() % 12);
        for (int i = 0; i < n; ++i) list.push_back(std::string(1, char('a' + random() % 8)));
        if (round % 3) ExchangeSort(list, name_of);  // else left as it came
        list.push_back(std::string(1, char('a' + random() % 9)));
        std::vector<std::string> expected = list;
        ExchangeSort(expected, name_of);
        SortAppended(list, name_of);
        EXPECT_EQ(list, expected) << "round " << round;
    }
    // Thousands of arrays are listed in order and found at their place.
    CDataSpace s;
    UniqueSorted(s);
    char name[16];
    for (int i = 0; i < 5000; ++i) {
        std::snprintf(name, sizeof name, "a%04d", (i * 7919) % 5000);
        s.NewData(TYPE_R4, 1, 1, 1, 1, 1, 1, name);
    }
    ASSERT_EQ(s.Count(), 5000);
    for (int i = 0; i < 5000; i += 499) {
        std::snprintf(name, sizeof name, "a%04d", i);
        EXPECT_STREQ(s.GetData(i)->name, name);
    }
}

TEST(DataSpace, LinksAreFollowedEverywhere) {
    CDataSpace s;
    CZrkData* target = s.NewData(TYPE_R4, 2, 1, 1, 1, 1, 1, "target");
    CZrkData* mid = s.NewData("mid");
    CZrkData* alias = s.NewData("alias");
    mid->link = target;
    alias->link = mid;  // three steps: alias -> mid -> target
    EXPECT_EQ(s.FindData("alias"), target);
    EXPECT_EQ(s.GetData(2), target);
    EXPECT_EQ(s.FindIndex("alias"), 2);
    CZrkData* found = nullptr;
    EXPECT_EQ(s.GetLongestData("alias+1", &found), 5);
    EXPECT_EQ(found, target);

    s.DelLinks();  // aliases go; the target's samples stay
    EXPECT_EQ(s.Count(), 1);
    EXPECT_EQ(s.GetData(0), target);
    EXPECT_NE(target->data, nullptr);
}

TEST(DataSpace, LookUpsAndDeletion) {
    CDataSpace s;
    UniqueSorted(s);
    CZrkData* a = s.NewData(TYPE_I2, 2, 1, 1, 1, 1, 1, "a");
    CZrkData* ab = s.NewData(TYPE_I2, 3, 1, 1, 1, 1, 1, "ab");
    s.NewData("untyped");

    CZrkData* out = nullptr;
    EXPECT_EQ(s.GetLongestData("abc", &out), 2);
    EXPECT_EQ(out, ab);
    EXPECT_EQ(s.GetLongestData("a+b", &out), 1);
    EXPECT_EQ(out, a);
    EXPECT_EQ(s.GetLongestData("zz", &out), 0);
    EXPECT_EQ(out, nullptr);

    EXPECT_EQ(s.FindData(nullptr), nullptr);
    EXPECT_EQ(s.FindData("nope"), nullptr);
    EXPECT_EQ(s.FindIndex("nope"), 0);
    EXPECT_EQ(s.GetData(3), nullptr);
    EXPECT_EQ(s.GetData(-1), nullptr);
    EXPECT_EQ(s.GetBytes(), 10u);
    EXPECT_EQ(s.GetNonNullCount(), 2);

    EXPECT_EQ(s.DelData("nope"), 0);
    EXPECT_EQ(s.DelData(static_cast<const char*>(nullptr)), 0);
    s.DelData(99);  // out of range: nothing happens
    EXPECT_EQ(s.Count(), 3);
    s.DelUntyped();
    EXPECT_EQ(s.Count(), 2);
    EXPECT_EQ(s.DelData(ab), 1);
    EXPECT_EQ(s.IsDataValid(ab), 0);
    EXPECT_EQ(s.IsDataValid(a), 1);
    EXPECT_EQ(s.DelData("a"), 1);
    EXPECT_EQ(s.Count(), 0);
}

TEST(DataSpace, CheckValidRaisesOnStrangers) {
    CDataSpace s;
    CZrkData* a = s.NewData("a");
    CZrkData stranger;
    EXPECT_NO_THROW(s.CheckValid(a));
    try {
        s.CheckValid(&stranger);
        ADD_FAILURE();
    } catch (const ZrkError& e) {
        EXPECT_STREQ(e.what(), "internal error, invalid data");
    }
}

TEST(DataSpace, SelectionAndChanges) {
    CDataSpace s;
    UniqueSorted(s);
    CZrkData* a = s.NewData("a");
    CZrkData* b = s.NewData("b");
    CZrkData* c = s.NewData("c");
    a->select = 1;
    c->select = 1 | 0x200;
    EXPECT_EQ(s.GetSelCount(1), 2);
    EXPECT_EQ(s.GetSel(1, 1), c);
    EXPECT_EQ(s.GetSel(1, 2), nullptr);
    EXPECT_EQ(s.GetSel(0x200, 0), c);

    CWindowEntry* w = GlobalWindowSpace().NewData("win");
    w->kind = KIND_2D;
    w->data[0] = c;
    EXPECT_EQ(s.GetSelCount(1, 4), 1);  // c is shown in a 2d window
    EXPECT_EQ(s.GetSel(1, 4, 0), c);
    EXPECT_EQ(s.GetSelCount(1, 1), 1);  // a is shown nowhere
    EXPECT_EQ(s.GetSel(1, 1, 0), a);
    GlobalWindowSpace().DelData(w);

    s.ClearSel(1);
    EXPECT_EQ(s.GetSelCount(1), 0);
    EXPECT_EQ(c->select, 0x200u);

    EXPECT_EQ(s.AnyChanged(), 0);
    b->changed = 1;
    EXPECT_EQ(s.AnyChanged(), 1);
}

TEST(DataSpace, ReservedNames) {
    for (const char* name : {"pi", "this", "e", "roi_mask", "hist_range", "quelmor.curlz",
                             "binary_copy", "recycle_bin"})
        EXPECT_EQ(CDataSpace::IsReservedData(name), 1) << name;
    for (const char* name : {"pix", "Pi", "", "roi", "quelmor.curl"})
        EXPECT_EQ(CDataSpace::IsNotReserved(name), 1) << name;
    EXPECT_EQ(CDataSpace::IsReservedData(nullptr), 0);
}

TEST(DataSpace, WindowRecords) {
    CDataSpace s;
    CZrkData* level = s.NewData("view1.level");
    CZrkData* window = s.NewData("view1.window");
    CWindowEntry entry;
    std::snprintf(entry.name, sizeof entry.name, "view1");
    EXPECT_EQ(s.FindLevel(&entry), level);
    EXPECT_EQ(s.FindWindow(&entry), window);
    EXPECT_EQ(s.FindLevel(nullptr), nullptr);
}

TEST(DataSpace, EveryOperationLeavesItsTrace) {
    CHeadlessHost host;
    CScopedHost scope(host);
    CDataSpace s;
    s.NewData("a");
    EXPECT_EQ(host.trace, "CDataSpace::NewData");
    s.SetUnique();
    s.NewData("a");
    EXPECT_EQ(host.trace, "CDataSpace::FindData");  // the unique-name look-up came last
    s.GetSelCount(1);
    EXPECT_EQ(host.trace, "CDataSpace::GetSelCount");
    s.DelUntyped();
    EXPECT_EQ(host.trace, "CDataSpace::DelUntyped");
    EXPECT_TRUE(host.flaky.empty());
}

TEST(DataSpace, HistogramOptionsRoundTrip) {
    CDataSpace s;
    UniqueSorted(s);
    FILE* f = std::tmpfile();
    ASSERT_NE(f, nullptr);
    s.PrintfOptions(f);  // nothing to write yet but the heading
    std::fputs("histogram_bins= 64\nunknown_key= 3\nhistogram_range= -1.5 2.25\n", f);
    std::rewind(f);
    CKeyReader reader(f);
    int taken = 0;
    try {
        for (;;) {
            reader.Next();
            taken += s.ScanfOptions(reader);
        }
    } catch (const CKeyReader::EndOfFile&) {
    }
    std::fclose(f);
    EXPECT_EQ(taken, 2);
    CZrkData* bins = s.FindData("hist_nbins");
    ASSERT_NE(bins, nullptr);
    EXPECT_EQ(bins->type, TYPE_I4);
    EXPECT_EQ(*static_cast<int32_t*>(bins->data), 64);
    CZrkData* range = s.FindData("hist_range");
    ASSERT_NE(range, nullptr);
    EXPECT_EQ(range->nx, 2u);
    EXPECT_EQ(static_cast<float*>(range->data)[1], 2.25f);

    char buf[256] = {};
    FILE* out = fmemopen(buf, sizeof buf, "w");
    s.PrintfOptions(out);
    std::fclose(out);
    EXPECT_STREQ(
        buf, "\n//data space options\nhistogram_bins= 64\nhistogram_range= -1.500000 2.250000\n");
}
