// cross and dot against NumPy for the real and complex working types, the mixed promotions
// and every direction of a 4-D array.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "core/block_io.h"
#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/element_type.h"
#include "ops/vector_product.h"
#include "tests/peer.h"

namespace {

struct Types {
    int a, b, result;
};

// i and q interleaved (q = 0 for real records).
std::vector<float> Pairs(const CZrkData* r) {
    std::vector<float> out(r->Count() * 2);
    CBlockReader<float> reader(r, 2);
    const float* p = reader.Read(0, r->Count(), out.data());
    return std::vector<float>(p, p + out.size());
}

CZrkData* Random(CDataSpace& s, int type, const res_t res[4], std::mt19937& g) {
    CZrkData* a = s.NewData(type, res[0], res[1], res[2], res[3], 1, 1, "");
    std::uniform_real_distribution<float> u(-10, 10);
    CDataCursor<float> c(a);
    for (uint64_t k = 0; k < a->Count(); ++k) {
        const float pair[2] = {std::round(u(g) * 8) / 8, std::round(u(g) * 8) / 8};
        c.SetIQ(pair, k);
    }
    return a;
}

// The array as NumPy complex values, shaped with x last.
std::string AsNumpy(const char* name, const CZrkData* a) {
    const std::vector<float> v = Pairs(a);
    return "v = np.array(" + peer::Literal(v.data(), v.size()) + ")\n" + name +
           " = (v[0::2] + 1j * v[1::2]).reshape(" + std::to_string(a->nt) + ", " +
           std::to_string(a->nz) + ", " + std::to_string(a->ny) + ", " + std::to_string(a->nx) +
           ")\n";
}

class VectorProducts : public ::testing::TestWithParam<Types> {};

TEST_P(VectorProducts, CrossAndDotMatchNumpyInEveryDirection) {
    const Types types = GetParam();
    std::mt19937 g(types.a * 31 + types.b);
    CDataSpace s, t;
    std::vector<float> got;
    std::string script;
    for (int dir = 0; dir < 4; ++dir) {
        res_t res[4] = {4, 2, 5, 2};
        res[dir] = 3;
        const CZrkData* a = Random(s, types.a, res, g);
        const CZrkData* b = Random(s, types.b, res, g);
        const std::string axis = std::to_string(3 - dir);
        script += AsNumpy("a", a) + AsNumpy("b", b) + "for r in (np.cross(a, b, axis=" + axis +
                  "), np.sum(a * b, axis=" + axis +
                  ")):\n    for x in r.ravel(): print(x.real, x.imag)\n";
        for (const CZrkData* r : {Cross(t, dir, a, b), Dot(t, dir, a, b)}) {
            ASSERT_NE(r, nullptr);
            EXPECT_EQ(r->type, types.result);
            const std::vector<float> v = Pairs(r);
            got.insert(got.end(), v.begin(), v.end());
        }
    }
    const std::vector<double> ref = peer::Values(script);
    ASSERT_EQ(got.size(), ref.size());
    for (size_t k = 0; k < got.size(); ++k)
        ASSERT_NEAR(got[k], ref[k], 1e-5 * (1 + std::abs(ref[k]))) << "number " << k;
}

INSTANTIATE_TEST_SUITE_P(
    Types, VectorProducts,
    ::testing::Values(Types{TYPE_R4, TYPE_R4, TYPE_R4}, Types{TYPE_R8, TYPE_R8, TYPE_R8},
                      Types{TYPE_CR4, TYPE_CR4, TYPE_CR4}, Types{TYPE_CR8, TYPE_CR8, TYPE_CR8},
                      Types{TYPE_I2, TYPE_CR4, TYPE_CR4}, Types{TYPE_R8, TYPE_CI2, TYPE_CR8}),
    [](const auto& info) {
        std::string name = std::string(TypeName(info.param.a)) + "_" + TypeName(info.param.b);
        std::replace(name.begin(), name.end(), ' ', '_');
        return name;
    });

}  // namespace
