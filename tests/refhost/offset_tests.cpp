#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "refhost/engine/engine_error.h"
#include "refhost/engine/offset.h"
#include "tests/support/offset_distance.h"
#include "tests/support/outlines.h"

namespace refhost {
namespace {

using namespace support;
using support::Outline;
constexpr auto kRound = OffsetJoin::kRound;

std::vector<CurveContour> Round(const Outline& path, double distance) { return OffsetOutline(path.View(), distance, kRound, 1); }

std::size_t VertexCount(const std::vector<CurveContour>& contours) {
    std::size_t count = 0;
    for (const CurveContour& contour : contours) count += contour.segments.size();
    return count;
}

double Area(const std::vector<CurveContour>& contours) {
    double doubled = 0;
    for (const SegmentField::Segment& s : Chords(contours, 0.001)) doubled += s.from.x * s.to.y - s.to.x * s.from.y;
    return 0.5 * doubled;
}

Outline Square(double left, double top, double side) {
    return Polygon({{left, top}, {left + side, top}, {left + side, top + side}, {left, top + side}});
}

TEST(Offset, StaysWithinTwoHundredthsOfTheTrueOffset) {
    const std::vector<std::pair<const char*, Outline>> shapes = {{"circle", Circle(100, 100, 80)},
                                                                 {"rounded rectangle", RoundedRectangle(0, 0, 200, 100, 20)},
                                                                 {"letter", Letter()},
                                                                 {"letter reversed", Letter().Reversed()},
                                                                 {"blob", Blob(50, 100, 3)},
                                                                 {"star", Star(12, 100, 20)},
                                                                 {"spikes", Star(40, 150, 140)},
                                                                 {"cusps", CuspsAndLoops()},
                                                                 {"scribble", Scribble(40, 200, 7)},
                                                                 {"traced", Traced(400, 9)}};
    for (const auto& [name, path] : shapes) {
        for (const double distance : {0.01, 3.0, 25.0, 300.0, -0.3, -3.0, -25.0}) {
            const OffsetErrors errors = MeasureOffset(path.View(), distance, Round(path, distance));
            EXPECT_LE(errors.stray, 0.02) << name << ' ' << distance;
            EXPECT_LE(errors.missing, 0.05) << name << ' ' << distance;
            EXPECT_EQ(errors.wrong_windings, 0) << name << ' ' << distance;
        }
    }
}

// The speed of a parallel is almost nothing beside its cusps: crossings there were once put where an even speed would have had
// them.
TEST(Offset, CrossingsBesideCuspsAreInPlace) {
    const Outline path = Traced(1000, 13);
    EXPECT_LE(MeasureOffset(path.View(), 5, Round(path, 5)).stray, 0.02);
}

// Where curves touch at the tip of a wedge thinner than the working tolerance, the tip's place is open. Paths made of wild curves
// on whole coordinates have such tips; hardly any others do.
TEST(Offset, RandomPathsAreRightExceptForWedgesWithoutWidth) {
    constexpr unsigned kPaths = 150;
    unsigned inexact = 0;
    for (unsigned seed = 0; seed < kPaths; ++seed) {
        std::mt19937 random(seed);
        const Outline path = RandomPath(random);
        const double size = std::exp(std::uniform_real_distribution<double>(std::log(0.01), std::log(120.0))(random));
        const double distance = random() % 2 == 0 ? size : -size;
        const OffsetErrors errors = MeasureOffset(path.View(), distance, Round(path, distance));
        if (errors.stray > 0.05 || errors.missing > 0.1) ++inexact;
    }
    EXPECT_LE(inexact, kPaths / 50);
}

TEST(Offset, TenThousandRandomPathsNeverOverlapThemselves) {
    for (unsigned seed = 0; seed < 10000; ++seed) {
        std::mt19937 random(seed);
        const Outline path = RandomPath(random);
        const double size = std::exp(std::uniform_real_distribution<double>(std::log(0.01), std::log(300.0))(random));
        const double distance = random() % 2 == 0 ? size : -size;
        const auto join = static_cast<OffsetJoin>(random() % 3);
        ASSERT_EQ(CountOverlaps(OffsetOutline(path.View(), distance, join, 4)), 0) << "seed " << seed;
    }
}

/// The largest distance of a point on one of the outlines from the other one.
double Apart(const std::vector<CurveContour>& a, const std::vector<CurveContour>& b) {
    const SegmentField one(Chords(a, 0.005)), other(Chords(b, 0.005));
    double apart = 0;
    for (const auto& [from, to] : {std::pair(&one, &other), std::pair(&other, &one)}) {
        for (const SegmentField::Segment& s : from->Segments())
            apart = std::max({apart, to->NearestDistance(s.from), to->NearestDistance(Lerp(s.from, s.to, 0.5))});
    }
    return apart;
}

// Sides that cover each other enclose nothing, however single precision rounds their points. Some of these were taken for spikes
// or slits at every third angle, and grown by the whole distance.
TEST(Offset, PartsWithoutWidthDecideNothing) {
    using Draw = std::function<void(Outline&)>;
    const auto square = [](const Draw& draw) {
        Outline path;
        path.Move(-64, -64);
        draw(path);
        return path.Line(64, -64).Line(64, 64).Line(-64, 64).Close();
    };
    const Outline plain = square([](Outline&) {});
    const Outline hole = Square(-64, -64, 128).Append(Square(-32, -32, 64).Reversed());
    const Outline pair = Square(-64, -64, 64).Append(Square(32, 0, 64));
    const std::tuple<const char*, Outline, Outline> cases[] = {
        {"handles beyond the end", square([](Outline& p) { p.Curve(100, -64, 140, -64, 64, -64); }), plain},
        {"handles behind the start", square([](Outline& p) { p.Curve(-100, -64, -90, -64, 64, -64); }), plain},
        {"handles beyond both", square([](Outline& p) { p.Curve(-104, -64, 104, -64, 64, -64); }), plain},
        {"out and back in one", square([](Outline& p) { p.Line(64, -64).Curve(96, -96, 88, -88, 64, -64); }), plain},
        {"in and back in one", square([](Outline& p) { p.Line(0, -64).Curve(16, 16, 8, -24, 0, -64); }), plain},
        {"line out", square([](Outline& p) { p.Line(0, -64).Line(9, -96).Line(3, -74.66666).Line(0, -64); }), plain},
        {"bent line in",
         square([](Outline& p) { p.Line(0, -64).Line(8, -32).Line(-8, 0).Line(4, -24).Line(8, -32).Line(2, -56).Line(0, -64); }),
         plain},
        {"curve out, back in halves", square([](Outline& p) {
             p.Line(64, -64)
                 .Curve(72, -64, 96, -80, 104, -104)
                 .Curve(100, -92, 92, -82, 84, -75)
                 .Curve(76, -68, 68, -64, 64, -64);
         }),
         plain},
        {"cut to a hole", square([](Outline& p) {
             p.Line(-32, -64).Line(-32, -32).Line(-32, 32).Line(32, 32).Line(32, -32).Line(-32, -32).Line(-32, -43).Line(-32,
                                                                                                                         -64);
         }),
         hole},
        {"squares along one line", Polygon({{-64, -64}, {0, -64}, {0, 0}, {96, 0}, {96, 64}, {32, 64}, {32, 0}, {-64, 0}}),
         pair}};
    for (const auto& [name, with, without] : cases) {
        for (int i = 0; i < 60; ++i) {
            for (const double distance : {-5.0, -0.5, 5.0}) {
                const auto join = static_cast<OffsetJoin>(i % 3);
                const auto offset = [&](const Outline& path) {
                    return OffsetOutline(path.Turned(0.1051 * i, 300, 10 * i * i).View(), distance, join, 4);
                };
                ASSERT_LE(Apart(offset(with), offset(without)), 0.05) << name << ", angle " << i << ", by " << distance;
            }
        }
    }
}

TEST(Offset, SmoothOutlinesKeepFewVertices) {
    EXPECT_LE(VertexCount(Round(Circle(0, 0, 100), -50)), 8U);
    EXPECT_LE(VertexCount(Round(Circle(0, 0, 100), 50)), 8U);
    EXPECT_LE(VertexCount(Round(Blob(200, 200, 5), 5)), 300U);
    EXPECT_LE(VertexCount(Round(Blob(200, 200, 5), -5)), 300U);
    for (const double distance : {-30.0, -10.0, 10.0, 100.0}) {
        EXPECT_LE(VertexCount(Round(RoundedRectangle(0, 0, 300, 200, 20), distance)), 16U) << distance;
    }
}

/// Vertices between straight segments of one direction, and segments without length.
std::size_t IdleVertices(const std::vector<CurveContour>& contours) {
    std::size_t idle = 0;
    for (const CurveContour& contour : contours) {
        const std::size_t count = contour.segments.size();
        for (std::size_t i = 0; i < count; ++i) {
            const CurveSegment& here = contour.segments[i];
            const CurveSegment& next = contour.segments[(i + 1) % count];
            const Point before = contour.segments[(i + count - 1) % count].end;
            const Point in = here.end - before, out = next.end - here.end, chord = next.end - before;
            idle += std::max({Length(in), Distance(before, here.control1), Distance(before, here.control2)}) < 1e-4;
            idle += here.straight && next.straight && Dot(in, out) > 0 && std::abs(Cross(in, chord)) < 1e-4 * Length(chord);
        }
    }
    return idle;
}

TEST(Offset, NoVertexCarriesNothing) {
    const Outline plain = Polygon({{-64, -32}, {64, -32}, {64, 32}, {-64, 32}});
    const Outline divided = Polygon(
        {{0, -32}, {0, -32}, {21.33333, -32}, {64, -32}, {64, 7}, {64, 32}, {-64, 32}, {-64, -32}, {-63.9999, -32}, {-7, -32}});
    for (int i = 0; i < 60; ++i) {
        for (const Outline& path : {plain, divided}) {
            const Outline turned = path.Turned(0.1051 * i, 300, 10 * i);
            const auto count = [&](double distance, OffsetJoin join) {
                return VertexCount(OffsetOutline(turned.View(), distance, join, 4));
            };
            EXPECT_EQ(count(7, OffsetJoin::kMiter), 4U) << i;
            EXPECT_EQ(count(7, OffsetJoin::kBevel), 8U) << i;
            EXPECT_EQ(count(7, kRound), 8U) << i;
            for (const double distance : {0.0, -7.0}) EXPECT_EQ(count(distance, kRound), 4U) << i;
        }
    }
    for (unsigned seed = 0; seed < 2000; ++seed) {
        std::mt19937 random(seed);
        const Outline path = RandomPath(random);
        const double distance = std::uniform_real_distribution<double>(-30, 30)(random);
        ASSERT_EQ(IdleVertices(OffsetOutline(path.View(), distance, static_cast<OffsetJoin>(random() % 3), 4)), 0U) << seed;
    }
}

// A side that bends a little at each of its vertices loses most of them, and stays in place all the same.
TEST(Offset, LongRowsOfAlmostStraightSidesDoNotDrift) {
    constexpr int kSides = 20000;
    constexpr double kRadius = 500;
    std::vector<Point> corners;
    for (int i = 0; i < kSides; ++i) {
        const double angle = 2 * std::acos(-1.0) * i / kSides;
        corners.push_back({kRadius * std::cos(angle), kRadius * std::sin(angle)});
    }
    const std::vector<CurveContour> result = OffsetOutline(Polygon(corners).View(), 0, kRound, 1);
    EXPECT_LE(VertexCount(result), kSides / 4U);
    for (const SegmentField::Segment& s : Chords(result, 0.001)) {
        ASSERT_NEAR(Length(s.from), kRadius, 0.001);
        ASSERT_NEAR(Length(Lerp(s.from, s.to, 0.5)), kRadius, 0.001);
    }
}

// Steps of a few pieces' length got nowhere on an outline that has nothing to lose on them: this took half a minute.
TEST(Offset, FineSmoothOutlinesGoFarAtOnce) {
    const Outline circle = StarPolygon(100000, 1, 100);
    for (const double distance : {50.0, -50.0}) {
        const std::vector<CurveContour> result = Round(circle, distance);
        ASSERT_EQ(result.size(), 1U);
        EXPECT_LE(VertexCount(result), 100000U);
        double farthest = 0;
        for (const CurveSegment& s : result.front().segments)
            farthest = std::max(farthest, std::abs(std::hypot(s.end.x, s.end.y) - 100 - distance));
        EXPECT_LE(farthest, 0.02);
    }
}

TEST(Offset, JoinsOfASquareHaveTheAreasOfGeometry) {
    const Outline square = Square(10, 20, 100);
    const auto area = [&](double distance, OffsetJoin join, double limit) {
        return Area(OffsetOutline(square.View(), distance, join, limit));
    };
    const double cross = 100 * 100 + 4 * 100 * 7;
    EXPECT_NEAR(area(7, kRound, 1), cross + std::acos(-1.0) * 49, 0.5);
    EXPECT_NEAR(area(7, OffsetJoin::kBevel, 1), cross + 2 * 49, 0.1);
    EXPECT_NEAR(area(7, OffsetJoin::kMiter, 4), 114 * 114, 0.1);
    EXPECT_NEAR(area(7, OffsetJoin::kMiter, 1.4), cross + 2 * 49, 0.1) << "a right angle needs the square root of two";
    for (const OffsetJoin join : {OffsetJoin::kMiter, kRound, OffsetJoin::kBevel}) {
        EXPECT_NEAR(area(-7, join, 4), 86 * 86, 0.1) << "corners stay sharp when shrinking";
        EXPECT_TRUE(OffsetOutline(square.View(), -51, join, 4).empty());
    }
}

// Corners turned inwards are the ones that shrinking has to join.
TEST(Offset, JoinsApplyToInwardCornersWhenShrinking) {
    const Outline frame = Square(0, 0, 100).Append(Square(30, 30, 40).Reversed());
    const double outer = 90 * 90;
    EXPECT_NEAR(Area(OffsetOutline(frame.View(), -5, OffsetJoin::kMiter, 4)), outer - 50 * 50, 0.1);
    EXPECT_NEAR(Area(OffsetOutline(frame.View(), -5, OffsetJoin::kBevel, 4)), outer - (50 * 50 - 4 * 12.5), 0.1);
    EXPECT_NEAR(Area(Round(frame, -5)), outer - (40 * 40 + 4 * 40 * 5 + std::acos(-1.0) * 25), 0.5);
    EXPECT_NEAR(Area(Round(frame, 19)) - Area(Round(Square(0, 0, 100), 19)), -4, 0.1) << "a hole two pixels wide is left";
    EXPECT_EQ(Round(frame, 21).size(), 1U) << "the hole has closed";
}

TEST(Offset, SplitsAtNecksAndCountsNestedContours) {
    const Outline dumbbell = Polygon(
        {{0, 0}, {40, 0}, {40, 18}, {60, 18}, {60, 0}, {100, 0}, {100, 40}, {60, 40}, {60, 22}, {40, 22}, {40, 40}, {0, 40}});
    EXPECT_EQ(Round(dumbbell, -1).size(), 1U);
    EXPECT_EQ(Round(dumbbell, -3).size(), 2U);
    const Outline nested = Square(0, 0, 100).Append(Square(20, 20, 60).Reversed()).Append(Square(40, 40, 20));
    for (const double distance : {0.0, 3.0, -3.0}) {
        const std::vector<CurveContour> result = Round(nested, distance);
        ASSERT_EQ(result.size(), 3U);
        int holes = 0;
        for (const CurveContour& contour : result) holes += Area({contour}) < 0;
        EXPECT_EQ(holes, 1);
    }
}

// Shrinking undoes growing except that bays closed on the way stay closed: never less than the region, never more than its
// closing.
TEST(Offset, GrowingThenShrinkingLosesNoArea) {
    for (const Outline& path : {Letter(), Star(12, 100, 20), Blob(50, 100, 3)}) {
        const double before = Area(Round(path, 0));
        Outline grown;
        for (const CurveContour& contour : Round(path, 6)) {
            grown.Move(contour.start.x, contour.start.y);
            for (const CurveSegment& s : contour.segments)
                grown.Curve(s.control1.x, s.control1.y, s.control2.x, s.control2.y, s.end.x, s.end.y);
            grown.Close();
        }
        const std::vector<CurveContour> closed = Round(grown, -6);
        EXPECT_GE(Area(closed), before - 1);
        const FilledRegion region(path.View());
        for (const SegmentField::Segment& s : Chords(closed, 0.01)) {
            EXPECT_GE(region.SignedDistance(s.from), -0.03);
            EXPECT_LE(region.SignedDistance(s.from), 6);
        }
    }
}

TEST(Offset, OpenSubpathsAreClosedAndDirectionDoesNotMatter) {
    Outline open;
    open.Move(0, 0).Line(100, 0).Line(100, 100).Line(0, 100);
    EXPECT_NEAR(Area(OffsetOutline(open.View(), 10, OffsetJoin::kMiter, 4)), 14400, 0.1);
    EXPECT_NEAR(Area(OffsetOutline(Square(0, 0, 100).Reversed().View(), 10, OffsetJoin::kMiter, 4)), 14400, 0.1);
    EXPECT_NEAR(Area(OffsetOutline(Square(0, 0, 100).View(), 0, kRound, 1)), 10000, 1e-6);
}

TEST(Offset, RegionsWithoutAreaGrowToNothing) {
    Outline point, twice, line, hairpin;
    point.Move(5, 5);
    twice.Move(5, 5).Line(5, 5).Curve(5, 5, 5, 5, 5, 5).Close();
    line.Move(0, 0).Line(50, 20).Close();
    hairpin.Move(0, 0).Curve(30, 0, 60, 0, 90, 0).Line(45, 0).Close();
    for (const Outline& path : {Outline(), point, twice, line, hairpin}) {
        for (const double distance : {-2.0, 0.0, 2.0}) EXPECT_TRUE(Round(path, distance).empty());
    }
}

const NUBErrorObject* ErrorOf(const Outline& path, double distance, double miter_limit = 4) {
    try {
        OffsetOutline(path.View(), distance, OffsetJoin::kMiter, miter_limit);
    } catch (const EngineError& error) {
        return error.error;
    }
    return nullptr;
}

TEST(Offset, HostileInputEndsInAClearError) {
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInf = std::numeric_limits<double>::infinity();
    const Outline square = Square(0, 0, 10);
    for (const double bad : {kNan, kInf, -kInf}) {
        EXPECT_EQ(ErrorOf(Polygon({{0, 0}, {bad, 0}, {5, 5}}), 1), &kErrorNotFinite);
        EXPECT_EQ(ErrorOf(square, bad), &kErrorNotFinite);
        EXPECT_EQ(ErrorOf(square, 1, bad), &kErrorNotFinite);
    }
    EXPECT_EQ(ErrorOf(Polygon({{0, 0}, {1e30, 0}, {5, 5}}), 1), &kErrorBadArgument);
    EXPECT_EQ(ErrorOf(square, 1e30), &kErrorBadArgument);
    EXPECT_EQ(ErrorOf(square, 1, 1e300), nullptr);

    Outline headless, cut_short, mixed;
    headless.Line(1, 1);
    cut_short.Move(0, 0).Curve(1, 1, 2, 2, 3, 3);
    cut_short.points.pop_back();
    cut_short.operators.pop_back();
    mixed.Move(0, 0).Curve(1, 1, 2, 2, 3, 3);
    mixed.operators[2] = kPIVLine;
    for (const Outline& path : {headless, cut_short, mixed}) EXPECT_EQ(ErrorOf(path, 1), &kErrorBadPath);
}

// The grid follows the size of the drawing: precision falls with it, shape and scale do not.
TEST(Offset, HugeAndFarAwayOutlinesKeepTheirShape) {
    for (const double scale : {1e4, 1e6, 1e8}) {
        const double side = 10 * scale;
        const double grown = side + 2 * scale;
        EXPECT_NEAR(Area(OffsetOutline(Square(0, 0, side).View(), scale, OffsetJoin::kMiter, 4)) / (grown * grown), 1, 1e-5)
            << scale;
    }
    const double round = Area(Round(Circle(1 << 20, 1 << 20, 64), 10)) / (std::acos(-1.0) * 74 * 74);
    EXPECT_NEAR(round, 1, 1e-3);
}

// One corner a million pixels away must not make a fine outline slow or coarse beyond its share.
TEST(Offset, AFarCornerDoesNotHang) {
    Outline path = Traced(3000, 2);
    path.Append(Polygon({{900000, 900000}, {900010, 900000}, {900000, 900010}}));
    EXPECT_GE(VertexCount(Round(path, 3)), 500U);
}

}  // namespace
}  // namespace refhost
