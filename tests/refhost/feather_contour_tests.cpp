#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <limits>
#include <memory>
#include <numbers>
#include <random>
#include <string>

#include "host/feather_contour.h"
#include "refhost/engine/path_object.h"
#include "refhost/services/status.h"
#include "refhost/shape/feather_points.h"
#include "tests/support/offset_distance.h"
#include "tests/support/outlines.h"
#include "tests/support/quiet_reports.h"
#include "tests/support/shapes.h"

namespace {

using refhost::FeatherPoint;
using refhost::Point;
using support::Outline;
using Radii = std::vector<FeatherPoint>;

constexpr M_FloatRect kEverywhere = {-1e7, -1e7, 1e7, 1e7};
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// Never stops.
class CountingCanceler final : public DY_FeatherContourCanceler {
 public:
    void Check() const override { ++checks; }
    void ThrowIfCanceled() const override {}

    mutable std::atomic<int> checks{0};
};
const CountingCanceler kCounting;

struct PathReleaser {
    void operator()(GRXPath* path) const { refhost::ReleaseReference(path); }
};
using PathHolder = std::unique_ptr<GRXPath, PathReleaser>;

PathHolder ContourPath(const DY_FeatherContourMaker& maker, double fraction, const M_FloatRect& clip = kEverywhere,
                       DY_ContourResults expected = kContourPath) {
    auto result = static_cast<DY_ContourResults>(-1);
    PathHolder path(maker.MakeGRXPath(static_cast<float>(fraction), 1, &clip, &result));
    EXPECT_EQ(result, expected);
    EXPECT_EQ(path != nullptr, expected == kContourPath);
    return path;
}

/// The shape of a path with one closed subpath.
std::unique_ptr<DY_Shape> ShapeOf(const Outline& path, const Radii& radii, bool open = false) {
    std::vector<WEX_Item> items;
    for (std::size_t i = 0; i < path.points.size(); ++i) {
        if (path.operators[i] == kPIVLine) items.insert(items.end(), {items.back(), path.points[i]});
        if (path.operators[i] != kPIVClose) items.push_back(path.points[i]);
    }
    if (!open && items.back() == items.front()) {
        items.pop_back();
    } else if (!open) {
        items.insert(items.end(), {items.back(), items.front()});
    }
    auto shape = ShapeOfItems(items, open);
    refhost::SetFeatherPoints(*shape, radii);
    return shape;
}

Outline ScaledX(Outline path, double scale) {
    for (auto& point : path.points) point.x = static_cast<float>(static_cast<double>(point.x) * scale);
    return path;
}

/// A contour in the working space, for questions about what it covers.
class Contour {
 public:
    Contour(const DY_FeatherContourMaker& maker, double fraction, double scale_x = 1)
        : Contour(ContourPath(maker, fraction).get(), scale_x) {}
    Contour(const GRXPath* path, double scale_x) {
        if (path != nullptr) lines_ = SegmentField(Chords(ScaledX({path->points, path->operators}, scale_x).View(), 0.001));
    }

    bool Covers(Point p) const { return lines_.Winding(p) != 0; }
    double Distance(Point p) const { return lines_.NearestDistance(p); }
    const std::vector<SegmentField::Segment>& Lines() const { return lines_.Segments(); }

 private:
    SegmentField lines_{{}};
};

struct NamedPath {
    std::string name;
    Outline path;
};

Outline FirstSubpath(Outline path) {
    for (std::size_t i = 1; i < path.points.size(); ++i) {
        if (path.operators[i] != kPIVMove) continue;
        path.points.resize(i);
        path.operators.resize(i);
    }
    return path;
}

std::vector<NamedPath> Outlines() {
    using namespace support;
    using support::Blob, support::Polygon;
    return {{"blob", Blob(20, 70, 3)},
            {"blob run backwards", Blob(20, 70, 3).Reversed()},
            {"letter", FirstSubpath(Letter())},
            {"traced", Traced(60, 5)},
            {"star", Star(7, 90, 40)},
            {"comb", Polygon({{0, 0}, {90, 0}, {90, 60}, {69, 60}, {69, 23}, {47, 23}, {47, 60}, {30, 60}, {30, 15}, {0, 80}})},
            {"cusps and loops", FirstSubpath(CuspsAndLoops())},
            {"scribble", Scribble(12, 160, 2)},
            {"bow tie", Polygon({{0, 0}, {120, 90}, {120, 0}, {0, 90}})}};
}

std::vector<Point> RandomPoints(const Outline& path, double margin, int count) {
    Point low = {1e9, 1e9}, high = {-1e9, -1e9};
    for (const auto& p : path.points) {
        low = {std::min(low.x, static_cast<double>(p.x)), std::min(low.y, static_cast<double>(p.y))};
        high = {std::max(high.x, static_cast<double>(p.x)), std::max(high.y, static_cast<double>(p.y))};
    }
    std::mt19937 random(11);
    std::uniform_real_distribution<double> x(low.x - margin, high.x + margin), y(low.y - margin, high.y + margin);
    std::vector<Point> points;
    for (int i = 0; i < count; ++i) points.push_back({x(random), y(random)});
    return points;
}

}  // namespace

TEST(FeatherContour, OneRadiusGivesTheExactOffset) {
    struct Case {
        float radius, expansion;
    };
    double scale_x = 1;
    for (const auto& [name, path] : Outlines()) {
        scale_x = 1.5 - scale_x;  // 0.5 and 1 in turns
        const Outline working = ScaledX(path, scale_x);
        const FilledRegion region(working.View());
        const std::vector<Point> probes = RandomPoints(working, 45, 600);
        for (const auto& [radius, expansion] : {Case{40, 0}, Case{-15, 4}}) {
            const auto shape = ShapeOf(path, {{0.4, radius}});
            const DY_FeatherContourMaker maker(shape.get(), static_cast<float>(scale_x), kCounting, expansion);
            for (const double fraction : {0.0, 0.75}) {
                const double distance =
                    static_cast<double>(expansion) + static_cast<double>(radius) * (radius > 0 ? fraction : 1 - fraction);
                SCOPED_TRACE(name + " at " + std::to_string(distance) + ", scale " + std::to_string(scale_x));
                const std::vector<Point> true_offset = region.OffsetPoints(distance);
                const DY_ContourResults expected = true_offset.empty() ? kContourNothing : kContourPath;
                const Contour contour(ContourPath(maker, fraction, kEverywhere, expected).get(), scale_x);
                double missing = 0, misplaced = 0;
                for (const Point p : true_offset) missing = std::max(missing, contour.Distance(p));
                for (const Point p : probes) {
                    const double excess = region.SignedDistance(p) - distance;
                    if (contour.Covers(p) != (excess < 0)) misplaced = std::max(misplaced, std::abs(excess));
                }
                EXPECT_LT(missing, 0.1);
                EXPECT_LT(misplaced, 0.1);
            }
        }
    }
}

// Sides that cover each other enclose nothing: no contour goes round them, however their points are rounded.
TEST(FeatherContour, PartsWithoutWidthDecideNothing) {
    const Outline plain = support::Polygon({{-64, -64}, {64, -64}, {64, 64}, {-64, 64}});
    Outline overshoot, spurs;
    overshoot.Move(-64, -64).Curve(-100, -64, 140, -64, 64, -64).Line(64, 64).Line(-64, 64).Close();
    spurs.Move(-64, -64).Line(0, -64).Line(9, -96).Line(3, -74.66666).Line(0, -64).Line(64, -64).Line(64, 64);
    spurs.Line(8, 64).Line(0, 0).Line(6, 48).Line(8, 64).Line(-64, 64).Close();
    for (int i = 0; i < 60; ++i) {
        const auto contour_at = [&](const Outline& path, float radius) {
            const auto shape = ShapeOf(path.Turned(0.1051 * i, 300, 10 * i * i), {{0, radius}});
            return Contour(DY_FeatherContourMaker(shape.get(), 1, kCounting, 0), radius > 0 ? 1 : 0);
        };
        for (const float radius : {-9.0F, 9.0F}) {
            const Contour expected = contour_at(plain, radius);
            for (const Outline& path : {overshoot, spurs}) {
                const Contour contour = contour_at(path, radius);
                for (const auto& line : contour.Lines()) ASSERT_LE(expected.Distance(line.from), 0.1) << "angle " << i;
                for (const auto& line : expected.Lines()) ASSERT_LE(contour.Distance(line.from), 0.1) << "angle " << i;
            }
        }
    }
}

// A circle is passed at even speed, so its contours are polar curves that can be written down: in the working space of aspect 2,
// too.
TEST(FeatherContour, RadiiChangeEvenlyInArcLengthRoundTheSeam) {
    constexpr double kRadius = 80;
    for (const double scale_x : {1.0, 0.5}) {
        for (const bool backwards : {false, true}) {
            const Outline circle = support::Circle(0, 0, kRadius);
            // Angles in quarter turns from the start; the four segments have one each.
            const auto shape =
                ShapeOf(ScaledX(backwards ? circle.Reversed() : circle, 1 / scale_x), {{3.5, 20}, {0.5, -30}, {2, 10}});
            const DY_FeatherContourMaker maker(shape.get(), static_cast<float>(scale_x), kCounting, 2);
            EXPECT_EQ(maker.GetMaxRadius(false), 22);
            EXPECT_EQ(maker.GetMaxRadius(true), -28);
            const auto radius_at = [](double turn) {
                if (turn < 0.5 || turn >= 3.5) return std::lerp(20.0, -30.0, turn < 0.5 ? turn + 0.5 : turn - 3.5);
                return turn < 2 ? std::lerp(-30.0, 10.0, (turn - 0.5) / 1.5) : std::lerp(10.0, 20.0, (turn - 2) / 1.5);
            };
            for (const double fraction : {0.0, 0.25, 0.5, 0.875}) {
                const Contour contour(maker, fraction, scale_x);
                for (int i = 0; i < 400; ++i) {
                    const double turn = (i + 0.5) / 100;
                    const double radius = radius_at(turn);
                    const double inner = std::min(radius, 0.0), outer = std::max(radius, 0.0);
                    const double reach = kRadius + 2 + inner + fraction * (outer - inner);
                    // The circle starts at its top; on screen clockwise, unless backwards.
                    const double angle = (backwards ? -turn : turn) * std::numbers::pi / 2 - std::numbers::pi / 2;
                    const Point direction = {std::cos(angle), std::sin(angle)};
                    EXPECT_TRUE(contour.Covers({(reach - 0.1) * direction.x, (reach - 0.1) * direction.y}))
                        << turn << " " << fraction;
                    EXPECT_FALSE(contour.Covers({(reach + 0.1) * direction.x, (reach + 0.1) * direction.y}))
                        << turn << " " << fraction;
                }
            }
        }
    }
}

TEST(FeatherContour, PolygonsWorkedByHand) {
    Outline rectangle;  // of curves whose parameter runs evenly
    rectangle.Move(0, 0)
        .Curve(60, 0, 120, 0, 180, 0)
        .Curve(180, 30, 180, 60, 180, 90)
        .Curve(120, 90, 60, 90, 0, 90)
        .Curve(0, 60, 0, 30, 0, 0);
    const auto expect_edge = [](const Contour& contour, Point inside, Point outside) {
        EXPECT_TRUE(contour.Covers(inside)) << inside.x << " " << inside.y;
        EXPECT_FALSE(contour.Covers(outside)) << outside.x << " " << outside.y;
    };
    {  // A tent on the top edge, a step on the right edge, a dent in the bottom edge.
        const auto shape =
            ShapeOf(rectangle, {{0, 0}, {0.5, 40}, {1, 0}, {1.5, 0}, {1.5, 20}, {1.8, 20}, {1.8, 0}, {2, 0}, {2.5, -36}, {3, 0}});
        const DY_FeatherContourMaker maker(shape.get(), 1, kCounting, 0);
        const Contour middle(maker, 0.5);
        expect_edge(middle, {45, -9.99}, {45, -10.01});
        expect_edge(middle, {90, -19.99}, {90, -20.01});
        expect_edge(middle, {135, -9.99}, {135, -10.01});
        expect_edge(middle, {179.9, 40}, {180.1, 40});
        expect_edge(middle, {189.9, 60}, {190.1, 60});
        expect_edge(middle, {189, 45.01}, {189, 44.99});
        expect_edge(middle, {189, 71.99}, {189, 72.01});
        expect_edge(middle, {135, 80.99}, {135, 81.01});
        expect_edge(middle, {90, 71.99}, {90, 72.01});
        expect_edge(Contour(maker, 0), {90, 53.99}, {90, 54.01});
        expect_edge(Contour(maker, 0), {90, 0.01}, {90, -0.01});
    }
    {  // Through 0 within one edge: there the contours meet.
        const auto shape = ShapeOf(rectangle, {{0, -36}, {1, 36}, {2, 0}});
        const DY_FeatherContourMaker maker(shape.get(), 1, kCounting, 0);
        for (const double fraction : {0.1, 0.9}) expect_edge(Contour(maker, fraction), {90, 0.01}, {90, -0.01});
    }
    {  // One radius and an expansion: corners are round outside and sharp inside.
        const auto shape = ShapeOf(rectangle, {{1.5, 30}});
        const DY_FeatherContourMaker maker(shape.get(), 1, kCounting, -10);
        expect_edge(Contour(maker, 0), {10.01, 10.01}, {9.99, 10.01});
        const double diagonal = 20 / std::numbers::sqrt2;
        expect_edge(Contour(maker, 1), {diagonal * -0.99, diagonal * -0.99}, {diagonal * -1.01, diagonal * -1.01});
    }
    {  // Open: constant beyond the points, even along the leg that closes it. Two segments, down the right side.
        const auto shape = ShapeOf(Outline().Move(0, 0).Line(100, 0).Line(100, 100), {{0.5, 20}, {1.5, 40}}, true);
        const DY_FeatherContourMaker maker(shape.get(), 1, kCounting, 0);
        const Contour half(maker, 0.5);
        expect_edge(half, {25, -9.99}, {25, -10.01});
        expect_edge(half, {119.99, 80}, {120.01, 80});
        const double leg = 15 / std::numbers::sqrt2;
        expect_edge(half, {50 - 0.99 * leg, 50 + 0.99 * leg}, {50 - 1.01 * leg, 50 + 1.01 * leg});
    }
    {  // A figure of eight: radii belong to the side they were given on, whichever way that part runs.
        const auto shape =
            ShapeOf(support::Polygon({{0, 0}, {100, 100}, {100, 0}, {0, 100}}), {{1, 10}, {2, 10}, {3, 30}, {4, 30}});
        const DY_FeatherContourMaker maker(shape.get(), 1, kCounting, 0);
        const Contour whole(maker, 1);
        expect_edge(whole, {109.9, 50}, {110.1, 50});
        expect_edge(whole, {-29.9, 50}, {-30.1, 50});
    }
}

// The outline turns straight back at the tip of a needle; which way, only rounding tells.
TEST(FeatherContour, TipsOfNeedlesAreRound) {
    for (int i = 0; i < 24; ++i) {
        const double angle = i * std::numbers::pi / 12 + 0.1;
        const auto turned = [&](double x, double y) -> Point {
            return {x * std::cos(angle) - y * std::sin(angle), x * std::sin(angle) + y * std::cos(angle)};
        };
        // A needle with its tip at the origin, alone or cut out of a block round it.
        for (const bool is_notch : {false, true}) {
            const double foot = is_notch ? 50 : 80;
            const Point start = turned(-foot, -10), end = turned(-foot, 10), handle = turned(-30, 0);
            Outline path;
            path.Move(start.x, start.y)
                .Curve(handle.x, handle.y, handle.x, handle.y, 0, 0)
                .Curve(handle.x, handle.y, handle.x, handle.y, end.x, end.y);
            for (const Point p : {turned(-50, 60), turned(60, 60), turned(60, -60), turned(-50, -60)}) {
                if (is_notch) path.Line(p.x, p.y);
            }
            const auto shape = ShapeOf(path.Line(start.x, start.y).Close(), {});
            const DY_FeatherContourMaker maker(shape.get(), 1, kCounting, is_notch ? -20.0F : 20.0F);
            const Contour contour(maker, 0);
            for (int k = -4; k <= 4; ++k) {
                const double side = k * std::numbers::pi / 9;
                const Point near = turned(19.8 * std::cos(side), 19.8 * std::sin(side));
                const Point far = turned(20.2 * std::cos(side), 20.2 * std::sin(side));
                EXPECT_EQ(contour.Covers(near), !is_notch) << i << " " << k;
                EXPECT_EQ(contour.Covers(far), is_notch) << i << " " << k;
            }
        }
    }
}

// Every contour holds all that are further in, and reaches no further than the distances have grown: no spikes, gaps or jumps.
TEST(FeatherContour, ContoursGrowSteadily) {
    std::mt19937 random(5);
    for (const auto& [name, path] : Outlines()) {
        for (const int kind : {0, 1, 2}) {
            SCOPED_TRACE(name + " " + std::to_string(kind));
            std::uniform_real_distribution<float> radius(kind == 1 ? 0.0F : -35.0F, kind == 2 ? 0.0F : 35.0F);
            std::uniform_real_distribution<double> position(0, static_cast<double>(path.VertexCount()));
            Radii radii;
            for (int i = 0; i < 6; ++i) radii.push_back({position(random), radius(random)});
            const auto shape = ShapeOf(path, radii);
            const DY_FeatherContourMaker maker(shape.get(), 1, kCounting, 0);
            const double span = static_cast<double>(maker.GetMaxRadius(false) - maker.GetMaxRadius(true));
            const std::vector<Point> probes = RandomPoints(path, 40, 1000);
            double last_fraction = 0;
            std::vector<bool> last(probes.size(), false);
            std::unique_ptr<Contour> smaller;
            for (const double fraction : {0.0, 0.02, 0.04, 0.3, 0.5, 0.52, 0.54, 0.8, 0.98, 1.0}) {
                DY_ContourResults result;
                const PathHolder ring(maker.MakeGRXPath(static_cast<float>(fraction), 1, &kEverywhere, &result));
                auto larger = std::make_unique<Contour>(ring.get(), 1);
                for (std::size_t i = 0; i < probes.size(); ++i) {
                    const bool is_covered = larger->Covers(probes[i]);
                    if (last[i] && !is_covered) {
                        EXPECT_LT(larger->Distance(probes[i]), 0.15);
                    }
                    if (smaller && is_covered && !last[i]) {
                        // What is swept inwards may begin as an island, then only the larger contour has an edge near it.
                        const double distance =
                            std::min(smaller->Distance(probes[i]), kind == 1 ? kEverywhere.right : larger->Distance(probes[i]));
                        EXPECT_LT(distance, (fraction - last_fraction) * span + 0.15);
                    }
                    last[i] = is_covered;
                }
                last_fraction = fraction;
                smaller = std::move(larger);
            }
        }
    }
}

TEST(FeatherContour, ResultsTellWhatAClipSees) {
    const auto shape = ShapeOf(
        support::Polygon({{0, 0}, {200, 0}, {200, 100}, {120, 100}, {120, 60}, {80, 60}, {80, 100}, {0, 100}}), {{0.5, 30}});
    const DY_FeatherContourMaker maker(shape.get(), 0.5F, kCounting, 0);
    struct Case {
        M_FloatRect clip;  // of the working space: the shape is 100 wide there
        double fraction;
        DY_ContourResults expected;
    };
    const std::vector<Case> cases = {
        {{-1, -1, 101, 101}, 0, kContourPath},         {{2, 2, 38, 98}, 0, kContourAll},
        {{45, 65, 55, 200}, 0, kContourNothing},       {{45, 65, 55, 90}, 0.75, kContourPath},  // edges inside the filled bay
        {{107, 5, 110, 95}, 0.2, kContourNothing},     {{105, 5, 110, 95}, 0.9, kContourAll},
        {{-26, -26, -22, -22}, 0.99, kContourNothing},  // in the box of a corner but not in its sector
        {{10, 10, 9, 20}, 0.5, kContourNothing},       {{10, 10, static_cast<double>(kNaN), 20}, 0.5, kContourNothing}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.clip.left) + " " + std::to_string(c.clip.top) + " at " + std::to_string(c.fraction));
        ContourPath(maker, c.fraction, c.clip, c.expected);
    }
    EXPECT_EQ(maker.GetMaxRadius(false), 30);
    EXPECT_EQ(maker.GetMaxRadius(true), 0);

    for (const int items : {0, 1, 3}) {
        const auto tiny = ShapeOfItems(std::vector<WEX_Item>(static_cast<std::size_t>(items), {5, 5}));
        refhost::SetFeatherPoints(*tiny, {{0, 10}});
        const DY_FeatherContourMaker nothing(tiny.get(), 1, kCounting, 3);
        ContourPath(nothing, 0.5, kEverywhere, kContourNothing);
        EXPECT_EQ(nothing.GetMaxRadius(false), 13);
    }
}

// While preparing, and before each costly step of a contour.
TEST(FeatherContour, AsksAgainAndAgainWhetherToStop) {
    const auto shape = ShapeOf(support::Star(7, 90, 40), {{0, -20}, {3, 20}});
    const int before = kCounting.checks;
    ContourPath(DY_FeatherContourMaker(shape.get(), 1, kCounting, 0), 0.5);
    EXPECT_GE(kCounting.checks - before, 4);
}

TEST(FeatherContour, HostileNumbersDoNoHarm) {
    const Outline square = support::Polygon({{0, 0}, {100, 0}, {100, 100}, {0, 100}});
    {  // Positions wrap, others are left out: what remains is 10 at the start and 20 halfway round.
        const auto odd =
            ShapeOf(square, {{-4, 10}, {std::numeric_limits<double>::infinity(), 90}, {6, 20}, {1, kNaN}, {2.5, -kInfinity}});
        const auto plain = ShapeOf(square, {{0, 10}, {2, 20}});
        const DY_FeatherContourMaker a(odd.get(), 1, kCounting, 0), b(plain.get(), 1, kCounting, 0);
        for (const double fraction : {0.2, 0.9}) EXPECT_EQ(ContourPath(a, fraction)->points, ContourPath(b, fraction)->points);
        EXPECT_EQ(ContourPath(a, static_cast<double>(kNaN))->points, ContourPath(a, -5)->points);
        EXPECT_EQ(ContourPath(a, 77)->points, ContourPath(a, 1)->points);
    }
    const support::QuietReports quiet;
    int refused = 0;
    std::mt19937 random(3);
    const auto pick = [&](std::initializer_list<float> values) { return values.begin()[random() % values.size()]; };
    for (int i = 0; i < 400; ++i) {
        std::vector<WEX_Item> items(random() % 13);
        const bool wild = i % 4 == 0;
        for (WEX_Item& item : items) {
            item = {pick({0, 1, 50, 50, 50.0001F, 100, -30}), pick({0, 1, 20, 20, 80, 100, -60})};
            if (wild) item.x = pick({0, 50, 1e6F, -3e7F, 3e38F, kNaN, kInfinity});
        }
        const auto shape = ShapeOfItems(items, random() % 2 == 0);
        Radii radii(random() % 5);
        for (FeatherPoint& p : radii)
            p = {static_cast<double>(pick({-1e30F, -1, 0, 0, 0.5F, 1, 2, 3, 1e30F})),
                 pick({-1e4F, -30, -1, 0, 0, 1, 30, 1e4F, 3e38F})};
        refhost::SetFeatherPoints(*shape, radii);
        const float scale = pick({1, 1, 0.5F, 3, -1, 0, 1e-30F, 1e30F, kNaN}), expansion = pick({0, 0, 5, -5, 1e30F, kNaN});
        try {
            const DY_FeatherContourMaker maker(shape.get(), scale, kCounting, expansion);
            for (const float fraction : {0.0F, 0.5F, 1.0F}) {
                DY_ContourResults result;
                const PathHolder path(maker.MakeGRXPath(fraction, 1, &kEverywhere, &result));
                for (std::size_t k = 0; path && k < path->points.size(); ++k) {
                    ASSERT_TRUE(std::isfinite(path->points[k].x) && std::isfinite(path->points[k].y));
                }
            }
        } catch (int status) {
            ASSERT_EQ(status, refhost::kStatusBadArgument);
            ++refused;
        }
    }
    EXPECT_GT(refused, 100);
    EXPECT_LT(refused, 380);
}
