#include "core/window_space.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "core/host.h"
#include "core/zrk_data.h"

namespace {

// Records the order in which windows are closed.
struct Recorded : CWindowEntry {
    Recorded(const char* n, uint32_t k, CZrkData* d, std::vector<std::string>* closed)
        : closed_(closed) {
        std::snprintf(name, sizeof name, "%s", n);
        kind = k;
        data[0] = d;
    }
    void Close() override { closed_->push_back(name); }
    std::vector<std::string>* closed_;
};

struct Throwing : CWindowEntry {
    void Close() override { throw std::runtime_error("window gone"); }
};

}  // namespace

TEST(WindowSpace, DisplayMaskUnitesTheRoles) {
    CWindowSpace w;
    CZrkData a, b, c, shown_nowhere;
    auto add = [&](const char* name, uint32_t kind, CZrkData* d0, CZrkData* d1, CZrkData* d2) {
        CWindowEntry* e = w.NewData(name);
        e->kind = kind;
        e->data[0] = d0, e->data[1] = d1, e->data[2] = d2;
    };
    add("p", KIND_1D, &a, nullptr, nullptr);
    add("i", KIND_2D, &b, nullptr, nullptr);
    add("x", KIND_XY, &a, &b, nullptr);
    add("c", KIND_RGB, &c, &a, &b);
    add("s", KIND_SCATTER, &c, nullptr, nullptr);
    EXPECT_EQ(w.DisplayMask(&a), 2u | 8u | 64u);
    EXPECT_EQ(w.DisplayMask(&b), 4u | 16u | 128u);
    EXPECT_EQ(w.DisplayMask(&c), 32u | 0x100u);
    EXPECT_EQ(w.DisplayMask(&shown_nowhere), 1u);
    EXPECT_EQ(w.DisplayMask(nullptr), 0u);
}

TEST(WindowSpace, DelAllImagesClosesMatchingWindowsLastFirst) {
    CWindowSpace w;
    CZrkData a, b;
    std::vector<std::string> closed;
    w.NewData(std::make_unique<Recorded>("w1", KIND_2D, &a, &closed));
    w.NewData(std::make_unique<Recorded>("w2", KIND_1D, &a, &closed));
    w.NewData(std::make_unique<Recorded>("w3", KIND_2D, &b, &closed));
    w.NewData(std::make_unique<Recorded>("w4", KIND_2D, &a, &closed));
    w.DelAllImages(&a, KIND_2D | KIND_RGB);
    EXPECT_EQ(closed, (std::vector<std::string>{"w4", "w1"}));
    EXPECT_EQ(w.Count(), 2);
    EXPECT_NE(w.FindByName("w2"), nullptr);
    EXPECT_EQ(w.FindByName("w1"), nullptr);
}

TEST(WindowSpace, NamesSelectionAndPositions) {
    CWindowSpace w;
    EXPECT_STREQ(w.NewData("view")->name, "view");
    CWindowEntry* second = w.NewData("view");
    EXPECT_STREQ(second->name, "view.");
    EXPECT_EQ(w.Get(1), second);
    EXPECT_EQ(w.Get(2), nullptr);
    second->select = 3;
    EXPECT_EQ(w.GetSelCount(2), 1);
    EXPECT_EQ(w.GetSel(2, 0), second);
    w.ClearSel(2);
    EXPECT_EQ(second->select, 1u);
    EXPECT_EQ(w.IsDataValid(second), 1);
    EXPECT_EQ(w.DelData(second), 1);
    EXPECT_EQ(w.IsDataValid(second), 0);
    EXPECT_EQ(w.NewData(std::unique_ptr<CWindowEntry>()), nullptr);
}

TEST(WindowSpace, EscapingFailureGoesToTheFlakyPath) {
    CHeadlessHost host;
    CScopedHost scope(host);
    CWindowSpace w;
    CZrkData a;
    auto e = std::make_unique<Throwing>();
    e->kind = KIND_2D;
    e->data[0] = &a;
    w.NewData(std::move(e));
    w.DelAllImages(&a, KIND_2D);  // must not propagate
    ASSERT_EQ(host.flaky.size(), 1u);
    EXPECT_EQ(host.flaky[0], "window gone");
    EXPECT_EQ(host.trace, "CWindowSpace::DelAllImages");
}
