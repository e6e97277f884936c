#include <gmock/gmock.h>

#include <limits>

#include "geometry/collect_shapes.h"
#include "refhost/services/faults.h"
#include "tests/support/shapes.h"
#include "tests/support/thrown_int.h"

using testing::ElementsAre;

namespace {

using Shapes = std::vector<boost::shared_ptr<DY_Shape>>;

}  // namespace

TEST(CollectShapes, EverySubpathBecomesAShapeOfItsKind) {
    Shapes shapes;
    {
        CollectDYShapeFunctor collector(shapes);
        collector.LineTo(9, 9);  // before any move: ignored, like the next two
        collector.CurveTo(9, 9, 9, 9, 9, 9);
        collector.ClosePath();

        collector.MoveTo(0, 0);  // ends on its start
        collector.CurveTo(1, 0, 2, 1, 2, 2);
        collector.CurveTo(1, 2, 0, 1, 0.0003F, 0);
        collector.ClosePath();
        collector.MoveTo(10, 0);  // ends elsewhere: a straight leg back
        collector.LineTo(12, 0);
        collector.ClosePath();
        EXPECT_EQ(shapes.size(), 1U);
        collector.MoveTo(20, 0);  // never closed
        collector.CurveTo(21, 0, 22, 1, 22, 2);
    }
    ASSERT_EQ(shapes.size(), 3U);
    const auto p = [](float x, float y) { return WEX_Item{x, y}; };
    EXPECT_THAT(ItemsOf(*shapes[0]), ElementsAre(p(0, 0), p(1, 0), p(2, 1), p(2, 2), p(1, 2), p(0, 1)));
    EXPECT_THAT(ItemsOf(*shapes[1]), ElementsAre(p(10, 0), p(10, 0), p(12, 0), p(12, 0), p(12, 0), p(10, 0)));
    EXPECT_THAT(ItemsOf(*shapes[2]), ElementsAre(p(20, 0), p(21, 0), p(22, 1), p(22, 2), p(22, 2), p(20, 0)));
    EXPECT_FALSE(shapes[0]->IsOpen());
    EXPECT_FALSE(shapes[1]->IsOpen());
    EXPECT_TRUE(shapes[2]->IsOpen());
    for (const auto& shape : shapes) EXPECT_EQ(shape->type, kShapeTypeBezier);
}

TEST(CollectShapes, CoordinatesAreEqualWithinHalfAThousandthOrAMillionth) {
    const auto same = [](float a, float b) {
        EXPECT_EQ(VRLp_SameCoordinate(a, b), VRLp_SameCoordinate(b, a));
        EXPECT_EQ(VRLp_SameCoordinate(a, b), VRLp_SameCoordinate(-a, -b));
        return VRLp_SameCoordinate(a, b);
    };
    EXPECT_TRUE(same(100.0003F, 100.0F));
    EXPECT_FALSE(same(100.001F, 100.0F));
    EXPECT_TRUE(same(10000.0F, 10000.009F));
    EXPECT_FALSE(same(10000.0F, 10000.02F));
    EXPECT_TRUE(same(-0.0002F, 0.0003F));
    EXPECT_FALSE(same(std::numeric_limits<float>::quiet_NaN(), 1.0F));
}

TEST(CollectShapes, AnExceptionDuringPlaybackStillDeliversTheShapeUnderWay) {
    Shapes shapes;
    const auto interrupted = [&] {
        CollectDYShapeFunctor collector(shapes);
        collector.MoveTo(1, 1);
        collector.LineTo(5, 1);
        throw 12;
    };
    EXPECT_EQ(ThrownInt(interrupted), 12);
    ASSERT_EQ(shapes.size(), 1U);
    EXPECT_EQ((*shapes[0]->GetPoints())->count, 6);

    // A list that refuses the closing leg, at the end or at the next move: the shape comes as far as it got.
    for (const bool moves_on : {false, true}) {
        shapes.clear();
        const auto refused = [&] {
            CollectDYShapeFunctor collector(shapes);
            collector.MoveTo(1, 1);
            collector.LineTo(5, 1);
            refhost::FailHostCall(refhost::HostCall::kListInsert, 2, 55);
            if (moves_on) collector.MoveTo(9, 9);
        };
        EXPECT_EQ(ThrownInt(refused), 55);
        refhost::DisarmFaults();
        ASSERT_EQ(shapes.size(), 1U);
        EXPECT_EQ((*shapes[0]->GetPoints())->count, 5);
        EXPECT_TRUE(shapes[0]->IsOpen());
    }
}
