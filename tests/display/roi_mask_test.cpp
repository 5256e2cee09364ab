// The region mask built from the region records of the global data space.
#include "display/roi_mask.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "core/data_space.h"

namespace {

class RoiMask : public ::testing::Test {
  protected:
    void SetUp() override { Clear(); }
    void TearDown() override { Clear(); }
    static void Clear() {
        while (GlobalDataSpace().Count() > 0) GlobalDataSpace().DelData(0);
    }
    // A region record of r4 numbers.
    static void Set(const char* name, std::vector<float> v) {
        CZrkData* r = GlobalDataSpace().NewData(TYPE_R4, v.size(), 1, 1, 1, 1, 1, name);
        std::memcpy(r->data, v.data(), v.size() * sizeof(float));
    }
    // The mask as rows of '#' and '.', top row first.
    static std::string Picture(const CZrkData* m) {
        std::string out;
        const auto* p = static_cast<const unsigned char*>(m->data);
        for (res_t y = 0; y < m->ny; ++y) {
            for (res_t x = 0; x < m->nx; ++x) out += p[y * m->nx + x] ? '#' : '.';
            out += '\n';
        }
        return out;
    }
};

TEST_F(RoiMask, Shapes) {
    Set("roi_rect", {3, 1, 1, 2});  // corners in either order
    Set("roi_x", {4, 5});
    Set("roi_y", {0, 0});
    Set("roi_ellip", {0, 0, 6, 4});
    const struct {
        int kind;
        const char* picture;
    } rows[] = {
        {ROI_RECT, "......\n.###..\n.###..\n......\n"},
        {ROI_X, "....##\n....##\n....##\n....##\n"},
        {ROI_Y, "######\n......\n......\n......\n"},
        // Bounds limited to the image first: x 0..5, y 0..3, centre (2.5, 1.5); the end
        // rows have a chord of length 0 at 2.5, which rounds to 3.
        {ROI_ELLIPSE, "...#..\n######\n######\n...#..\n"},
        {ROI_DRAW, "......\n......\n......\n......\n"},  // no roi_draw: nothing
        {7, "......\n......\n......\n......\n"},         // a kind without a shape
        {1, "######\n######\n######\n######\n"},         // outside the shape kinds: all
    };
    for (const auto& row : rows)
        EXPECT_EQ(Picture(GetRoiMask(row.kind, 6, 4)), row.picture) << row.kind;
}

TEST_F(RoiMask, OneRowEllipseSetsOneChord) {
    Set("roi_ellip", {1, 2, 4, 2});
    EXPECT_EQ(Picture(GetRoiMask(ROI_ELLIPSE, 6, 4)), "......\n......\n.####.\n......\n");
}

TEST_F(RoiMask, PolygonByTheWindingRule) {
    // A triangle, and a square walked round twice: its winding number is 2, so it stays
    // inside where an even-odd rule would leave it empty.
    Set("roi_draw", {0, 0, 4, 0, 0, 4});
    EXPECT_EQ(Picture(GetRoiMask(ROI_DRAW, 5, 5)), "####.\n###..\n##...\n#....\n.....\n");
    GlobalDataSpace().DelData("roi_draw");
    Set("roi_draw", {1, 1, 4, 1, 4, 4, 1, 4, 1, 1, 4, 1, 4, 4, 1, 4});
    EXPECT_EQ(Picture(GetRoiMask(ROI_DRAW, 5, 5)), ".....\n.###.\n.###.\n.###.\n.....\n");
}

TEST_F(RoiMask, BinaryOldMaskAndUndo) {
    CZrkData* bin = GlobalDataSpace().NewData(TYPE_I2, 3, 2, 1, 1, 1, 1, "roi_binary");
    const int16_t b[] = {0, 5, 0, -1, 0, 0};
    std::memcpy(bin->data, b, sizeof(b));
    CZrkData* m = GetRoiMask(ROI_BINARY, 3, 2);
    EXPECT_EQ(Picture(m), ".#.\n#..\n");
    EXPECT_EQ(m->undo_text, "undo roi");
    // The display kinds keep the mask as it stands, when its size fits.
    EXPECT_EQ(Picture(GetRoiMask(ROI_2D, 3, 2)), ".#.\n#..\n");
    EXPECT_EQ(Picture(GetRoiMask(ROI_RGB, 2, 2)), "##\n##\n");
    // A binary image of another size is left out.
    EXPECT_EQ(Picture(GetRoiMask(ROI_BINARY, 4, 2)), "....\n....\n");
}

}  // namespace
