#include <gmock/gmock.h>

#include "geometry/mask_path.h"
#include "geometry/shape_to_path.h"
#include "host/nub_error.h"
#include "refhost/engine/binding.h"
#include "tests/support/shapes.h"

using testing::ElementsAre;

namespace {

std::vector<PIVPointType> OperatorsOf(const CPIVBezierPath& path) { return {path.operators_begin, path.operator_cursor}; }
std::vector<WEX_Item> PointsOf(const CPIVBezierPath& path) { return {path.points_begin, path.point_cursor}; }

}  // namespace

TEST(ShapeToPath, EverySegmentBecomesACubicAndOnlyClosedShapesClose) {
    const auto m = kPIVMove;
    const auto c = kPIVCurve;
    const auto z = kPIVClose;
    const std::vector<WEX_Item> items = {{0, 0}, {1, -1}, {4, -1}, {5, 0}, {5, 2}, {0, 2}};
    {
        CPIVBezierPath path;
        VRLp_ShapeToPath(*ShapeOfItems(items), path, true);
        EXPECT_THAT(OperatorsOf(path), ElementsAre(m, c, c, c, c, c, c, z));
        EXPECT_THAT(PointsOf(path), ElementsAre(items[0], items[1], items[2], items[3], items[4], items[5], items[0], items[0]));
    }
    {  // open: neither a closing segment, not even with its leg in the list, nor a close
        CPIVBezierPath path;
        VRLp_ShapeToPath(*ShapeOfItems(items, true), path, true);
        EXPECT_THAT(OperatorsOf(path), ElementsAre(m, c, c, c));
        EXPECT_EQ(PointsOf(path).back(), items[3]);
    }
    {  // closed by its flag, but its list ends at a vertex
        CPIVBezierPath path;
        VRLp_ShapeToPath(*ShapeOfItems(std::span(items).first(4)), path, true);
        EXPECT_THAT(OperatorsOf(path), ElementsAre(m, c, c, c, z));
    }
    {
        CPIVBezierPath path;
        VRLp_ShapeToPath(*ShapeOfItems(std::span(items).first(3)), path, true);  // one vertex
        EXPECT_THAT(PointsOf(path), ElementsAre(items[0], items[1], items[2], items[0], items[0]));
    }
    CPIVBezierPath path;
    VRLp_ShapeToPath(*ShapeOfItems({}), path, true);
    EXPECT_EQ(path.EntryCount(), 0);
}

TEST(BezierPath, MovesToTheHeapAtSixtyFourEntriesAndKeepsWhatItHeld) {
    const int objects = refhost::LiveEngineObjects();
    {
        CPIVBezierPath path;
        EXPECT_THROW(path.LineTo({1, 1}), NUB_T_MT::CNUBError);
        EXPECT_THROW(path.CurveTo({1, 1}, {1, 1}, {1, 1}), NUB_T_MT::CNUBError);
        path.ClosePath();
        EXPECT_EQ(path.EntryCount(), 0);

        path.MoveTo({-1, -2});
        const auto curve = [&](int i) { path.CurveTo({float(i), 0}, {float(i), 1}, {float(i), 2}); };
        for (int i = 0; i < 20; ++i) curve(i);
        EXPECT_EQ(path.EntryCount(), 61);
        EXPECT_EQ(path.heap_points, nullptr);
        for (int i = 20; i < 21; ++i) curve(i);
        EXPECT_EQ(path.capacity, 128U);
        EXPECT_EQ(path.heap_points_size, 256U);
        for (int i = 21; i < 1000; ++i) curve(i);
        path.ClosePath();
        path.ClosePath();
        ASSERT_EQ(path.EntryCount(), 3002);
        for (int i = 0; i < 1000; ++i) ASSERT_EQ(path.points_begin[3 * i + 3], (WEX_Item{float(i), 2}));
        EXPECT_EQ(PointsOf(path).back(), (WEX_Item{-1, -2}));

        CPIVBezierPath lines;
        lines.MoveTo({0, 0});
        for (int i = 0; i < 62; ++i) lines.LineTo({1, 1});
        EXPECT_EQ(lines.heap_points, nullptr);
        lines.LineTo({1, 1});
        EXPECT_EQ(lines.capacity, 128U);  // 2 * 63 + 2
    }
    EXPECT_EQ(refhost::LiveEngineObjects(), objects);
    EXPECT_THROW(CheckedBlockSize(~std::uint64_t{0} / 2, sizeof(WEX_Item)), QELException);
}

TEST(MaskPath, BoundsHoldControlPointsAndTheTransformMovesTheShape) {
    const auto shape = ShapeOfItems(std::vector<WEX_Item>{{0, 0}, {0, -10}, {4, -10}, {4, 0}, {4, 0}, {0, 0}});
    CGRXPath path;
    VRLp_PathBounds bounds = {};
    VRLp_MakeMaskPath(*shape, true, 5e-13, 1, nullptr, path, bounds);  // as good as no expansion
    EXPECT_EQ(bounds.top, -10);
    EXPECT_EQ(bounds.right, 4);

    const M_Matrix3 moved = {{{2, 0, 0}, {0, 1, 0}, {100, 50, 1}}};
    VRLp_MakeMaskPath(*shape, true, 0, 1, &moved, path, bounds);
    EXPECT_EQ(bounds.left, 100);
    EXPECT_EQ(bounds.top, 40);
    EXPECT_EQ(bounds.right, 108);
    EXPECT_EQ(bounds.bottom, 50);
    EXPECT_EQ(ItemsOf(*shape)[1], (WEX_Item{0, -10}));  // the caller's shape stays

    VRLp_MakeMaskPath(*ShapeOfItems({}), true, 0, 1, &moved, path, bounds);
    EXPECT_EQ(path.Data().points.size(), 0U);
    EXPECT_EQ(bounds.right, 0);
}
