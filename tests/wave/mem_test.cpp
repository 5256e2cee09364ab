#include <gtest/gtest.h>

#include <new>

#include "wave/mem.h"

TEST(AllocationTable, FreeByAddressLevelsAndPermanence) {
    float *a = nullptr, *b = nullptr, *c = nullptr, *stray = nullptr;
    mem_allocate(&a, sizeof(float), 4, 1);  // permanent
    int level = mem_next_level();
    EXPECT_EQ(level, 1);
    mem_allocate(&b, sizeof(float), 4, 0);
    mem_allocate(&c, sizeof(float), 4, 0);
    EXPECT_EQ(mem_count(), 3);

    float local = 0;
    stray = &local;
    EXPECT_EQ(mem_free(&stray, 0), 0);  // not in the table: left alone
    EXPECT_EQ(stray, &local);

    float* moved = c;  // identity is the address, not the holder
    EXPECT_EQ(mem_free(&moved, 0), 1);
    EXPECT_EQ(moved, nullptr);
    EXPECT_EQ(mem_count(), 2);

    EXPECT_EQ(mem_free(&a, 0), 0);  // permanent without force
    EXPECT_EQ(mem_free_level(level, 0), 1);
    EXPECT_EQ(b, nullptr);
    EXPECT_EQ(mem_free_all(0), 0);  // only the permanent block is left
    EXPECT_NE(a, nullptr);
    EXPECT_EQ(mem_free_all(1), 1);
    EXPECT_EQ(a, nullptr);
    EXPECT_EQ(mem_count(), 0);
    EXPECT_EQ(mem_next_level(), 0);
}

TEST(AllocationTable, GrowsPastFiftyEntries) {
    std::vector<float*> blocks(120, nullptr);
    for (float*& p : blocks) mem_allocate(&p, sizeof(float), 1, 0);
    EXPECT_EQ(mem_count(), 120);
    EXPECT_EQ(mem_free_all(0), 120);
    for (float* p : blocks) EXPECT_EQ(p, nullptr);
}

TEST(AllocationTable, ExhaustedMemoryFreesTheTableAndThrows) {
    float *a = nullptr, *b = nullptr;
    mem_allocate(&a, sizeof(float), 8, 0);
    mem_fail_after(0);
    EXPECT_THROW(mem_allocate(&b, sizeof(float), 8, 0), std::bad_alloc);
    mem_fail_after(-1);
    EXPECT_EQ(a, nullptr);
    EXPECT_EQ(b, nullptr);
    EXPECT_EQ(mem_count(), 0);
}
