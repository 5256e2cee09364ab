#include "core/data_cursor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "tests/core/owned_record.h"

namespace {

template <class S>
S Stored(const CZrkData& d, size_t k) {
    S v;
    std::memcpy(&v, static_cast<const char*>(d.data) + k * sizeof(S), sizeof v);
    return v;
}

}  // namespace

TEST(DataCursor, FloatToIntegerTruncatesAndKeepsLowBits) {
    const double nan = std::nan("");
    struct Case {
        int type;
        double value;
        int64_t want;
    } cases[] = {
        {TYPE_N1, 300.7, 44},        {TYPE_N1, -1.0, 255},       {TYPE_N2, -1.0, 65535},
        {TYPE_I1, 200.0, -56},       {TYPE_I1, -2.9, -2},        {TYPE_I2, 70000.9, 4464},
        {TYPE_I4, 3e9, -1294967296}, {TYPE_N4, 3e9, 3000000000}, {TYPE_I8, -7.99, -7},
        {TYPE_I8, 1e30, INT64_MIN},  {TYPE_I8, nan, INT64_MIN},  {TYPE_I4, nan, 0},
        {TYPE_I2, -1e30, 0},         {TYPE_N1, 255.99, 255},
    };
    for (const Case& c : cases) {
        Owned d(c.type, 1);
        // Stored by the float flavour, read back by the 64-bit integer one.
        CDataCursor<float>(&d).SetI(static_cast<float>(c.value), 0);
        int64_t got;
        CDataCursor<int64_t>(&d).GetI(got, 0);
        EXPECT_EQ(got, c.want) << TypeName(c.type) << " " << c.value;
    }
}

TEST(DataCursor, UnsignedSixtyFourBitRules) {
    Owned d(TYPE_N8, 3);
    CDataCursor<float> f(&d);
    f.SetI(1.5e19f, 0);  // above 2^63: subtract, truncate, set the top bit
    f.SetI(-1.0f, 1);
    f.SetI(1e30f, 2);
    EXPECT_EQ(Stored<uint64_t>(d, 0), static_cast<uint64_t>(1.5e19f));
    EXPECT_EQ(Stored<uint64_t>(d, 1), UINT64_MAX);
    EXPECT_EQ(Stored<uint64_t>(d, 2), uint64_t{1} << 63);

    CDataCursor<uint64_t> u(&d);
    uint64_t v;
    u.GetI(v, 0);
    EXPECT_EQ(v, static_cast<uint64_t>(1.5e19f));
    float back;
    f.GetI(back, 0);  // integer to float adds 2^64 above the signed range
    EXPECT_FLOAT_EQ(back, 1.5e19f);

    Owned r(TYPE_R8, 1);
    CDataCursor<uint64_t> ur(&r);
    ur.SetI(UINT64_MAX, 0);
    EXPECT_DOUBLE_EQ(Stored<double>(r, 0), 18446744073709551616.0);
    static_cast<double*>(r.data)[0] = 1.8e19;
    ur.GetI(v, 0);
    EXPECT_EQ(v, 18000000000000000000ull);
}

TEST(DataCursor, IqmpReadings) {
    Owned c(TYPE_CR4, 2);
    float* s = static_cast<float*>(c.data);
    s[0] = 3, s[1] = -4, s[2] = -1, s[3] = 0;
    CDataCursor<float> cur(&c);
    EXPECT_EQ(cur.Get(0), 3.0f);
    cur.SetIqmp(1);
    EXPECT_EQ(cur.Get(0), -4.0f);
    cur.SetIqmp(2);
    EXPECT_EQ(cur.Get(0), 5.0f);
    cur.SetIqmp(3);
    EXPECT_FLOAT_EQ(cur.Get(0), std::atan2(-4.0f, 3.0f));
    EXPECT_FLOAT_EQ(cur.Get(1), static_cast<float>(M_PI));

    Owned r(TYPE_I2, 1);
    static_cast<int16_t*>(r.data)[0] = -7;
    for (int iqmp = 0; iqmp < 4; ++iqmp) {
        const float want[4] = {-7, 0, 7, 0};
        CDataCursor<float> rc(&r, iqmp);
        EXPECT_EQ(rc.Get(0), want[iqmp]) << iqmp;
        CDataCursor<int32_t> ri(&r, iqmp);
        EXPECT_EQ(ri.Get(0), static_cast<int32_t>(want[iqmp])) << iqmp;
    }

    Owned n(TYPE_N8, 1);
    static_cast<uint64_t*>(n.data)[0] = UINT64_MAX;
    EXPECT_EQ(CDataCursor<uint64_t>(&n, 2).Get(0), UINT64_MAX);  // unsigned: the value

    Owned ci(TYPE_CI2, 1);
    static_cast<int16_t*>(ci.data)[0] = 3;
    static_cast<int16_t*>(ci.data)[1] = 3;
    EXPECT_EQ(CDataCursor<int32_t>(&ci, 2).Get(0), 4);  // 4.24 truncated
    EXPECT_EQ(CDataCursor<int32_t>(&ci, 3).Get(0), 0);  // 0.785 truncated
}

TEST(DataCursor, SetIKeepsQAndSetIQOnRealDropsQ) {
    Owned c(TYPE_CI4, 1);
    CDataCursor<int32_t> cur(&c);
    const int32_t pair[2] = {5, 6};
    cur.SetIQ(pair, 0);
    cur.SetI(9, 0);
    int32_t got[2];
    cur.GetIQ(got, 0);
    EXPECT_EQ(got[0], 9);
    EXPECT_EQ(got[1], 6);

    Owned r(TYPE_R8, 2);
    CDataCursor<float> rc(&r);
    const float fp[2] = {1.5f, 2.5f};
    rc.SetIQ(fp, 0);
    EXPECT_EQ(Stored<double>(r, 0), 1.5);
    EXPECT_EQ(Stored<double>(r, 1), 0.0);  // the neighbour is untouched
    float fq[2];
    rc.GetIQ(fq, 0);
    EXPECT_EQ(fq[1], 0.0f);
}

TEST(DataCursor, SeekFormsAndSequentialAccess) {
    Owned d(TYPE_I4, 4, 3, 2);
    CDataCursor<int32_t> cur(&d);
    for (int k = 0; k < 24; ++k) cur.SetI(k);
    EXPECT_EQ(cur.Tell(), 24u);
    auto next = [&] {
        int32_t v;
        cur.GetI(v);
        return v;
    };
    cur.Seek(5);
    EXPECT_EQ(next(), 5);
    EXPECT_EQ(next(), 6);
    cur.Seek(1, 2);
    EXPECT_EQ(next(), 9);
    cur.Seek(3, 1, 1);
    EXPECT_EQ(next(), 19);
    cur.Seek(2, 0, 1, 0, 0, 0);
    EXPECT_EQ(next(), 14);
    cur.SeekWrapped(5, 4, 3, 1, 1, 1);
    EXPECT_EQ(next(), 1 + 4 + 12);
    cur.SeekClamped(10, 10);
    EXPECT_EQ(next(), 11);
    cur.Seek(0, 0);
    cur.NextPlane();
    EXPECT_EQ(next(), 12);
    int32_t pair[2];
    cur.Seek(7);
    cur.GetIQ(pair);
    EXPECT_EQ(pair[0], 7);
    EXPECT_EQ(pair[1], 0);
    const int32_t w[2] = {-1, -2};
    cur.SetIQ(w);
    EXPECT_EQ(cur.Tell(), 9u);
    EXPECT_EQ(Stored<int32_t>(d, 8), -1);
    EXPECT_EQ(cur.Get(), 9);
}

TEST(DataCursor, WithoutSamplesDoesNothing) {
    CDataCursor<float> none(nullptr);
    EXPECT_EQ(none.Type(), -1);
    EXPECT_EQ(none.Get(3), 0.0f);
    none.SetI(1.0f, 3);
    none.Seek(1, 2);
    none.NextPlane();
    float block[4] = {1, 1, 1, 1};
    none.GetIBlock(block, 0, 4);
    EXPECT_EQ(block[3], 0.0f);

    CZrkData header;
    header.SetHeader(TYPE_R4, 4, 4, 1, 1, 1, 1);  // typed, but no samples
    CDataCursor<int64_t> cur(&header);
    cur.SetI(5, 2);
    int64_t v = 9;
    cur.GetI(v, 2);
    EXPECT_EQ(v, 0);
}

// The block routines take their own vectorised route; they must agree with the
// element-wise ones for every type, both components and every reading.
template <class W>
void BlocksAgreeWithElements() {
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> dist(-3e4, 3e4);
    for (int type = 0; type < TYPE_COUNT; ++type) {
        const size_t n = 37;
        Owned a(type, n), b(type, n);
        CDataCursor<float> filler(&a);
        for (size_t k = 0; k < n; ++k) {
            const float p[2] = {static_cast<float>(dist(rng)), static_cast<float>(dist(rng))};
            filler.SetIQ(p, k);
        }
        for (int iqmp = 0; iqmp < 4; ++iqmp) {
            CDataCursor<W> cur(&a, iqmp);
            std::vector<W> block(n);
            cur.GetBlock(block.data(), 0, n);
            for (size_t k = 0; k < n; ++k) ASSERT_EQ(block[k], cur.Get(k)) << type << " " << iqmp;
        }
        CDataCursor<W> src(&a), dst(&b);
        std::vector<W> iq(2 * n), i(n);
        src.GetIQBlock(iq.data(), 0, n);
        src.GetIBlock(i.data(), 0, n);
        for (size_t k = 0; k < n; ++k) {
            W pair[2];
            src.GetIQ(pair, k);
            ASSERT_EQ(iq[2 * k], pair[0]) << TypeName(type);
            ASSERT_EQ(iq[2 * k + 1], pair[1]) << TypeName(type);
            ASSERT_EQ(i[k], pair[0]);
        }
        // Writing: the block forms store exactly what the element forms store.
        Owned c(type, n);
        CDataCursor<W> ref(&c);
        dst.SetIQBlock(iq.data(), 0, n);
        for (size_t k = 0; k < n; ++k) ref.SetIQ(&iq[2 * k], k);
        EXPECT_EQ(std::memcmp(c.data, b.data, b.Bytes()), 0) << TypeName(type);
        std::memset(b.data, 0, b.Bytes());
        std::memset(c.data, 0, c.Bytes());
        dst.SetIBlock(i.data(), 0, n);
        for (size_t k = 0; k < n; ++k) ref.SetI(i[k], k);
        EXPECT_EQ(std::memcmp(c.data, b.data, b.Bytes()), 0) << TypeName(type);
    }
}

TEST(DataCursor, BlocksAgreeWithElements) {
    BlocksAgreeWithElements<float>();
    BlocksAgreeWithElements<double>();
    BlocksAgreeWithElements<int32_t>();
    BlocksAgreeWithElements<int64_t>();
    BlocksAgreeWithElements<uint64_t>();
}

TEST(DataCursor, NarrowBlockFallsBackOutsideThe32BitRange) {
    Owned d(TYPE_I2, 4);
    CDataCursor<float> cur(&d);
    const float in[4] = {70000.5f, -1.5f, 5e9f, std::nanf("")};
    cur.SetIBlock(in, 0, 4);
    EXPECT_EQ(Stored<int16_t>(d, 0), static_cast<int16_t>(70000));
    EXPECT_EQ(Stored<int16_t>(d, 1), -1);
    EXPECT_EQ(Stored<int16_t>(d, 2), static_cast<int16_t>(int64_t{5000000000}));
    EXPECT_EQ(Stored<int16_t>(d, 3), 0);
}

TEST(DataCursor, NarrowBlockNearTheTopOfThe32BitRange) {
    Owned r(TYPE_R8, 4);
    double* v = static_cast<double*>(r.data);
    v[0] = 2147483600.7, v[1] = -2147483648.5, v[2] = 2147483647.9, v[3] = 1.0;
    CDataCursor<int32_t> cur(&r);
    int32_t block[4];
    cur.GetIBlock(block, 0, 4);
    const int32_t want[4] = {2147483600, INT32_MIN, INT32_MAX, 1};
    for (int k = 0; k < 4; ++k) EXPECT_EQ(block[k], want[k]) << k;

    Owned d(TYPE_N4, 2);
    const float fin[2] = {2147483520.0f, -2147483648.0f};
    CDataCursor<float>(&d).SetIBlock(fin, 0, 2);
    int64_t got;
    CDataCursor<int64_t>(&d).GetI(got, 0);
    EXPECT_EQ(got, 2147483520);
    CDataCursor<int64_t>(&d).GetI(got, 1);
    EXPECT_EQ(got, 2147483648);
}
