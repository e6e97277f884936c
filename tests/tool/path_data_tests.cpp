#include <gmock/gmock.h>

#include <cmath>
#include <numbers>

#include "tests/tool/outline_text.h"
#include "tool/outline_measure.h"
#include "tool/path_data.h"

namespace vrltool {
namespace {

TEST(PathData, CommandsBecomeLinesAndCubics) {
    const struct {
        const char* data;
        const char* expected;
    } cases[] = {
        {"", ""},
        {"M1 2", ""},
        {"M1 2Z", ""},
        {"M1 2 L3 4", "M1,2 L3,4"},
        {"M1,2 3,4 5,6", "M1,2 L3,4 L5,6"},
        {"m1 2 3 4 5 6", "M1,2 L4,6 L9,12"},
        {"M1.5.5-3e2+4", "M1.5,0.5 L-300,4"},
        {"M0 0L.5.25.125e1-.5E-0", "M0,0 L0.5,0.25 L1.25,-0.5"},
        {"M1 1h2v3H0V0h0", "M1,1 L3,1 L3,4 L0,4 L0,0 L0,0"},
        {"M0 0C1 2 3 4 5 6s2 1 3 3", "M0,0 C1,2 3,4 5,6 C7,8 7,7 8,9"},
        {"M1 1S2 2 3 3", "M1,1 C1,1 2,2 3,3"},
        {"M1 1Q1 4 4 4S5 5 6 6", "M1,1 C1,3 2,4 4,4 C4,4 5,5 6,6"},  // only a cubic is mirrored by S
        {"M0 0Q3 0 3 3T6 6t3 0", "M0,0 C2,0 3,1 3,3 C3,5 4,6 6,6 C8,6 9,6 9,6"},
        {"M3 0C0 0 0 0 0 3T3 3", "M3,0 C0,0 0,0 0,3 C0,3 1,3 3,3"},  // and only a quadratic by T
        {"M0 0L4 0L4 4Z", "M0,0 L4,0 L4,4 Z"},
        {"M0 0L4 0L4 4L0 0Z", "M0,0 L4,0 L4,4 Z"},                                 // no second vertex at the start
        {"M0 0L4 0C4 4 0 4 0 0z", "M0,0 L4,0 C4,4 0,4 0,0 Z"},                     // and the curve there keeps both handles
        {"m.1 .1l.2 0l-.1 .2l-.1-.2z", "M0.1,0.1 L0.3,0.1 L0.2,0.3 Z"},            // not even with rounded sums
        {"M0 0L4 0L4 4L0 0", "M0,0 L4,0 L4,4 L0,0"},                               // but an open one keeps it
        {"M5 5L6 5L6 6Zl1 0zm1 1l1 1", "M5,5 L6,5 L6,6 Z M5,5 L6,5 Z M6,6 L7,7"},  // Z goes back to the start
        {"M5 5L6 5M1 1L2 2", "M5,5 L6,5 M1,1 L2,2"},
        {"M0 0A0 5 0 0 1 9 9a5 5 0 1 1 0 0", "M0,0 L9,9"},  // no radius: a line; no distance: nothing
    };
    for (const auto& c : cases) EXPECT_EQ(PathText(ParsePathData(c.data)), c.expected) << c.data;
}

TEST(PathData, ComplaintsNameOffsetAndFinding) {
    const struct {
        const char* data;
        const char* expected;
    } cases[] = {
        {"L1 2", "offset 0: expected a moveto command, M or m, found \"L1 2\""},
        {"M1", "offset 2: expected a number, found the end"},
        {"M1 2 L3 x", "offset 8: expected a number, found \"x\""},
        {"M1 2,,3 4", "offset 5: expected a number, found \",3 4\""},
        {"M,1 2", "offset 1: expected a number, found \",1 2\""},
        {"M1 2,", "offset 5: expected a number, found the end"},
        {"M1 2Z5", "offset 5: expected a command letter, found \"5\""},
        {"M1 2 B3 4", "offset 5: expected a command letter, found \"B3 4\""},
        {"M1 2A1 1 0 2 0 3 3", "offset 11: expected a flag, 0 or 1, found \"2 0 3 3\""},
        {"M1 --2", "offset 3: expected a number, found \"--2\""},
        {"M1 inf", "offset 3: expected a number, found \"inf\""},
        {"M1 -nan", "offset 3: expected a number, found \"-nan\""},
        {"M1 1e999", "offset 3: expected a finite number, found \"1e999\""},
    };
    for (const auto& c : cases) EXPECT_EQ(FailureOf([&] { ParsePathData(c.data); }), c.expected) << c.data;
    EXPECT_EQ(PathText(ParsePathData("M1e-999 1L2 2")), "M0,1 L2,2");  // too small is no error
}

TEST(PathData, ArcFlagsChooseAmongTheFourArcs) {
    // A chord of 60 on circles of radius 50: their centres are 40 above and below its middle (30, 0).
    const struct {
        const char* data;
        M_FloatRect bounds;
    } cases[] = {
        {"M0 0A50 50 0 0 1 60 0", {0, -10, 60, 0}},     {"M0 0A50 50 0 0 0 60 0", {0, 0, 60, 10}},
        {"M0 0A50 50 0 1 1 60 0", {-20, -90, 80, 0}},   {"M0 0A50 50 0 1 0 60 0", {-20, 0, 80, 90}},
        {"M0 0a50-50 0 0160 0", {0, -10, 60, 0}},        // flags need no separators; a radius has no sign
        {"M0 0A1 1 0 0 1 100 0", {0, -50, 100, 0}},      // too small a radius grows until it reaches
        {"M0 0A1e20 1e20 0 0 1 100 0", {0, 0, 100, 0}},  // a huge one is straight, to the last digit
    };
    for (const auto& c : cases) {
        const M_FloatRect b = TightBounds(ParsePathData(c.data).at(0));
        EXPECT_THAT((std::vector{b.left, b.top, b.right, b.bottom}),
                    testing::Pointwise(testing::DoubleNear(4e-4), {c.bounds.left, c.bounds.top, c.bounds.right, c.bounds.bottom}))
            << c.data;
    }
}

TEST(PathData, ArcsStayOnTheEllipse) {
    // Centre (0, 0), semi-axes 200 and 80, turned by 30 degrees; from angle 0 to angle 250 of the untilted circle.
    constexpr double kRx = 200, kRy = 80, kTilt = std::numbers::pi / 6, kEnd = 250 * std::numbers::pi / 180;
    const auto on_ellipse = [&](double angle) {
        const double x = kRx * std::cos(angle), y = kRy * std::sin(angle);
        return Point{x * std::cos(kTilt) - y * std::sin(kTilt), x * std::sin(kTilt) + y * std::cos(kTilt)};
    };
    const Point from = on_ellipse(0), to = on_ellipse(kEnd);
    char data[200];
    std::snprintf(data, sizeof data, "M%.17g,%.17g A200 80 30 1 1 %.17g,%.17g", from.x, from.y, to.x, to.y);
    const Outline arc = ParsePathData(data).at(0);

    double largest = 0;
    for (std::size_t i = 1; i < arc.vertices.size(); ++i) {
        const Vertex& a = arc.vertices[i - 1];
        const Vertex& b = arc.vertices[i];
        for (double t = 0; t <= 1; t += 1.0 / 64) {
            const double s = 1 - t, w[] = {s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t};
            const double x = w[0] * a.anchor.x + w[1] * a.out.x + w[2] * b.in.x + w[3] * b.anchor.x;
            const double y = w[0] * a.anchor.y + w[1] * a.out.y + w[2] * b.in.y + w[3] * b.anchor.y;
            const double u = (x * std::cos(kTilt) + y * std::sin(kTilt)) / kRx;
            const double v = (y * std::cos(kTilt) - x * std::sin(kTilt)) / kRy;
            largest = std::max(largest, std::abs(std::hypot(u, v) - 1));
        }
    }
    EXPECT_LT(largest, 5e-6);
    EXPECT_EQ(arc.vertices.back().anchor, to);
    // The sector swept from the centre, plus the triangle between the centre and the closing chord.
    const double triangle = (to.x * from.y - to.y * from.x) / 2;
    EXPECT_NEAR(SignedArea(arc), kRx * kRy * kEnd / 2 + triangle, 0.5);
}

TEST(OutlineMeasure, BoundsAndAreaFollowTheCurves) {
    const auto measure = [](const char* data) {
        const Outline outline = ParsePathData(data).at(0);
        const M_FloatRect b = TightBounds(outline);
        return std::vector{b.left, b.top, b.right, b.bottom, SignedArea(outline)};
    };
    const auto near = [](double step, std::vector<double> values) {
        return testing::Pointwise(testing::DoubleNear(step), values);
    };
    EXPECT_THAT(measure("M0 0H10V5H0Z"), near(0, {0, 0, 10, 5, 50}));
    EXPECT_THAT(measure("M0 0V5H10V0"), near(0, {0, 0, 10, 5, -50}));  // open: closed by a line; and the other way round
    EXPECT_THAT(measure("M5 0A5 5 0 1 1 5 10A5 5 0 1 1 5 0Z"), near(1e-3, {0, 0, 10, 10, 25 * std::numbers::pi}));
    // x = 18 t^2 - 12 t^3 and y = 12 t (1 - t): the peak is 3, and y dx integrates to 432 / 30.
    EXPECT_THAT(measure("M0 0C0 4 6 4 6 0"), near(1e-12, {0, 0, 6, 3, -14.4}));
    EXPECT_THAT(measure("M0 0C40 0-30 0 10 0"), near(1e-5, {-2.833495, 0, 12.833495, 0, 0}));  // turns back twice on a line
}

}  // namespace
}  // namespace vrltool
