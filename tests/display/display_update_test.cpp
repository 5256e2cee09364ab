// The walk after an evaluation: only displays of changed arrays redraw, displays of freed or
// deleted arrays close, ranges are refreshed on request, and the flags clear. Also the
// clipboard payload of an array.
#include "display/display_update.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <memory>

#include "core/data_space.h"
#include "core/host.h"
#include "core/window_space.h"
#include "display/binary_copy.h"
#include "tests/display/view_test_util.h"

namespace {

TEST(DisplayUpdate, RedrawsChangedClosesGoneAndClearsFlags) {
    CDataSpace space;
    CWindowSpace windows;
    CZrkData* a = space.NewData(TYPE_R4, 4, 1, 1, 1, 1, 1, "a");
    CZrkData* b = space.NewData(TYPE_R4, 4, 1, 1, 1, 1, 1, "b");
    CZrkData* c = space.NewData(TYPE_R4, 4, 1, 1, 1, 1, 1, "c");
    const float v[4] = {3, std::numeric_limits<float>::quiet_NaN(), -2, 9};
    std::memcpy(a->Data(), v, sizeof v);
    auto* da = static_cast<CTestDoc*>(windows.NewData(std::make_unique<CTestDoc>(LOOK_2D, a)));
    auto* db = static_cast<CTestDoc*>(windows.NewData(std::make_unique<CTestDoc>(LOOK_2D, b)));
    windows.NewData(std::make_unique<CTestDoc>(LOOK_2D, c));
    a->changed = b->changed = c->changed = 0;

    a->changed = 1;
    a->update_range = 1;
    UpdateDisplays(space, windows);
    EXPECT_EQ(da->redraws, 1);
    EXPECT_EQ(db->redraws, 0);
    EXPECT_EQ(da->look.palplane.datamin, -2);
    EXPECT_EQ(da->look.palplane.datamax, 9);
    EXPECT_EQ(a->changed + a->update_range, 0);

    b->shape_changed = 1;
    UpdateDisplays(space, windows);
    EXPECT_EQ(db->redraws, 1);
    EXPECT_EQ(da->redraws, 1);

    b->FreeData();  // what free() leaves
    space.DelData(c);
    UpdateDisplays(space, windows);
    ASSERT_EQ(windows.Count(), 1);
    EXPECT_EQ(windows.Get(0), da);
}

TEST(BinaryCopy, RoundTripAndMalformedPayloads) {
    CDataSpace space;
    space.SetUnique();
    CZrkData* a = space.NewData(TYPE_CR8, 3, 2, 1, 1, 1, 1, "w");
    auto* d = static_cast<double*>(a->Data());
    for (int i = 0; i < 12; ++i) d[i] = i * 1.5;
    a->mm[1] = 0.75f;
    const std::string bytes = BinaryCopy(a);
    CZrkData* b = BinaryPaste(bytes, space);
    ASSERT_NE(b, nullptr);
    EXPECT_STREQ(b->name, "w.");
    EXPECT_EQ(b->Type(), TYPE_CR8);
    EXPECT_EQ(b->ny, 2u);
    EXPECT_EQ(b->mm[1], 0.75f);
    EXPECT_EQ(std::memcmp(b->Data(), a->Data(), a->Bytes()), 0);

    const int count = space.Count();
    EXPECT_EQ(BinaryPaste(bytes.substr(0, bytes.size() - 1), space), nullptr);
    EXPECT_EQ(BinaryPaste(bytes + "x", space), nullptr);
    EXPECT_EQ(BinaryPaste("QMBC", space), nullptr);
    std::string bad_tag = bytes;
    bad_tag[0] = 'X';
    EXPECT_EQ(BinaryPaste(bad_tag, space), nullptr);
    std::string bad_type = bytes;
    bad_type[8] = 99;
    EXPECT_EQ(BinaryPaste(bad_type, space), nullptr);
    EXPECT_EQ(space.Count(), count);
    CZrkData empty;
    EXPECT_EQ(BinaryCopy(&empty), "");
}

}  // namespace
