#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "refhost/engine/engine_error.h"
#include "refhost/engine/fill_painter.h"
#include "tests/support/exact_coverage.h"
#include "tests/support/outlines.h"

namespace {

using refhost::FillPainter;
using support::Outline;

PIVDeviceRect DeviceOf(const M_LRect& box) { return {box.left, box.top, box.right, box.bottom, box.left, box.right}; }

std::size_t Extent(std::int32_t from, std::int32_t to) { return static_cast<std::size_t>(std::max(to - from, 0)); }

/// One row as 8-bit coverage. Checks the laws of a run list on the way.
std::vector<std::uint8_t> PullRow(const FillPainter& painter, const M_LRect& box, std::int32_t y) {
    const PIVRasterPainterInfo& info = painter.Info();
    std::vector<std::uint8_t> row(Extent(box.left, box.right));
    std::int32_t x = box.left;
    std::uint32_t kind_before = 3;
    for (const PIVRun* run = info.row(info.context, y, &info, row.data()); x < box.right; ++run) {
        EXPECT_LE(run->kind, 2U);
        EXPECT_NE(run->kind, kind_before) << "runs of equal kind are merged";
        EXPECT_GT(run->end, x);
        EXPECT_LE(run->end, box.right);
        if (run->kind > 2 || run->end <= x || run->end > box.right) break;
        for (; x < run->end; ++x) {
            const std::size_t at = Extent(box.left, x);
            row[at] = run->kind == kPIVRunEmpty  ? std::uint8_t{0}
                      : run->kind == kPIVRunFull ? std::uint8_t{255}
                                                 : info.base[(y - box.top) * info.row_bytes + static_cast<std::int64_t>(at)];
            EXPECT_EQ(run->kind == kPIVRunPartial, row[at] != 0 && row[at] != 255);
        }
        kind_before = run->kind;
    }
    return row;
}

std::vector<std::uint8_t> Fill(const Outline& outline, const M_LRect& box, bool best = true,
                               const PIVMatrix& matrix = kPIVIdentity) {
    const FillPainter painter(outline.View(), matrix, DeviceOf(box), best);
    std::vector<std::uint8_t> coverage;
    for (std::int32_t y = box.top; y < box.bottom; ++y) {
        const std::vector<std::uint8_t> row = PullRow(painter, box, y);
        coverage.insert(coverage.end(), row.begin(), row.end());
    }
    return coverage;
}

double LargestError(const std::vector<std::uint8_t>& coverage, const std::vector<double>& exact) {
    double largest = 0;
    for (std::size_t i = 0; i < exact.size(); ++i) largest = std::max(largest, std::abs(coverage[i] - exact[i]));
    return largest;
}

constexpr M_LRect kBox = {-3, -5, 125, 123};

/// Shapes that stay clear of themselves.
std::vector<std::pair<std::string, Outline>> SimpleOutlines() {
    std::vector<std::pair<std::string, Outline>> outlines = {
        {"blob", support::Blob(24, 44, 7).Shifted(60.3, 59.1)},
        {"blob cut by the box", support::Blob(40, 90, 8).Shifted(60.3, 59.1)},
        {"traced", support::RoughBlob(300, 48, 9).Shifted(59.7, 61.2)},
        {"circle", support::Circle(60, 60, 50)},
        {"circle off the grid", support::Circle(61.37, 58.81, 47.6).Reversed()},
        {"letter", support::Letter()},
        {"letter's other corner", support::Letter().Shifted(-95.3, -93.8)},
        {"rectangle on the grid", support::Rectangle(10, 12, 90, 100)},
        {"rectangle off the grid", support::Rectangle(10.3, 12.6, 90.1, 100.7)},
        {"rectangle inside a row", support::Rectangle(10.3, 12.2, 90.1, 12.6)},
        {"sliver", support::Polygon({{2.2, 3.1}, {118.7, 97.4}, {2.1, 3.4}})},
        {"flat sliver", support::Polygon({{2.2, 30.1}, {118.7, 31.3}, {4, 30.3}})},
        {"upright sliver", support::Polygon({{30.1, 2.2}, {31.3, 118.7}, {30.3, 4}})},
        {"star outline", support::Polygon({{60, 5}, {70, 50}, {115, 60}, {70, 70}, {60, 115}, {50, 70}, {5, 60}, {50, 50}})},
        {"circles inside pixels", support::Circle(20.5, 20.5, 0.4)},
    };
    Outline& dots = outlines.back().second;
    for (int i = 0; i < 40; ++i) dots.Append(support::Circle(5.13 * (i % 20) + 3.2, 3.71 * i + 8.4, 0.07 * i + 0.03));
    outlines.emplace_back("ring", support::Circle(60, 60, 50).Append(support::Circle(62.2, 57.3, 41.3).Reversed()));
    outlines.emplace_back("open subpath", Outline().Move(20.5, 20.25).Line(100.5, 30).Line(50.25, 90.75));
    return outlines;
}

std::vector<std::pair<std::string, Outline>> OverlappingOutlines() {
    const auto joined = [](Outline a, const Outline& b) { return a.Append(b); };
    const Outline blob = support::Blob(24, 44, 7).Shifted(60.3, 59.1);
    const Outline left = support::Polygon({{10.4, 10.2}, {70.3, 10.2}, {55.6, 100.7}, {10.4, 100.7}});
    const Outline right = support::Polygon({{70.3, 10.2}, {110.8, 10.2}, {110.8, 100.7}, {55.6, 100.7}});
    return {
        {"star", support::StarPolygon(5, 2, 55).Shifted(60.2, 60.7)},
        {"star of eleven", support::StarPolygon(11, 5, 55).Shifted(60.2, 60.7)},
        {"scribble", support::Scribble(40, 120, 3)},
        {"scribble of few", support::Scribble(9, 120, 4)},
        {"doubled", joined(blob, blob)},
        {"doubled and undone", joined(blob, blob.Reversed())},
        {"overlapping", joined(blob, blob.Shifted(13.3, 9.2))},
        {"overlapping, opposite", joined(blob, blob.Shifted(13.3, 9.2).Reversed())},
        {"abutting", joined(left, right)},
        {"abutting, opposite", joined(left, right.Reversed())},
        {"overlap ends inside a row", joined(support::Rectangle(10, 10, 90, 50.4), support::Rectangle(30, 20, 70, 50.4))},
        {"figure of eight", support::Polygon({{10.3, 10.1}, {100.2, 99.7}, {100.2, 10.1}, {10.3, 99.7}})},
    };
}

/// A smooth curve through points up to `reach` away; long stretches of it pass the box.
Outline WildLoop(double reach, int points, std::mt19937& random) {
    std::uniform_real_distribution<double> along(-reach, reach);
    std::vector<refhost::Point> corners;
    for (int i = 0; i < points; ++i) {
        const double x = along(random);
        corners.push_back({x, along(random)});
    }
    return support::Smooth(corners);
}

/// Lines that cross, touch or run along each other within pixels of a box of 24 pixels.
Outline NastyOutline(std::mt19937& random) {
    const auto number = [&](double low, double high) { return std::uniform_real_distribution<double>(low, high)(random); };
    const auto corners = [&](double left, double top, double right, double bottom, double grid) {
        std::vector<refhost::Point> points(3 + random() % 8);
        for (refhost::Point& point : points)
            point = {std::round(number(left, right) / grid) * grid, std::round(number(top, bottom) / grid) * grid};
        return points;
    };
    constexpr double kFine = 1e-3;
    const double x = number(0, 22);
    const double y = number(0, 22);
    std::vector<refhost::Point> points;
    switch (random() % 5) {
        case 0:
            points = corners(-2, y, 26, y + number(0.05, 2), kFine);
            break;
        case 1:
            points = corners(x, y, x + 2, y + 2, random() % 2 == 0 ? 1 : kFine);
            break;
        case 2:
            points = {{x, y}, {y, x + 1}, {y, x + 1 + number(0.02, 0.5)}, {x, y + number(0.02, 0.5)}};
            break;
        case 3:
            points = corners(0, 0, 24, 24, 0.5);
            break;
        default:
            points = corners(-2, -2, 26, 26, kFine);
    }
    const Outline outline = random() % 4 == 0 ? support::Smooth(points) : support::Polygon(points);
    Outline wound = outline;
    for (auto more = random() % 3; more > 0; --more) wound.Append(random() % 4 == 0 ? outline.Reversed() : outline);
    return random() % 3 == 0 ? wound.Append(NastyOutline(random)) : wound;
}

/// What the painter's constructor refuses with, null when it does not.
const NUBErrorObject* Refusal(const refhost::PathView& path, const PIVMatrix& matrix = kPIVIdentity,
                              const PIVDeviceRect& device = DeviceOf(kBox)) {
    try {
        const FillPainter painter(path, matrix, device, true);
        return nullptr;
    } catch (const refhost::EngineError& error) {
        return error.error;
    }
}

TEST(FillPainter, BestQualityIsWithinTwoLevelsOfTheExactArea) {
    for (const auto& [name, outline] : SimpleOutlines()) {
        const std::vector<double> exact = support::ExactCoverage(outline.View(), kBox);
        EXPECT_LE(LargestError(Fill(outline, kBox), exact), 2) << name;
        EXPECT_LE(LargestError(Fill(outline, kBox, false), exact), 6) << name << ", draft";
    }
}

TEST(FillPainter, BestQualityIsExactWhereThePathOverlapsItself) {
    for (const auto& [name, outline] : OverlappingOutlines())
        EXPECT_LE(LargestError(Fill(outline, kBox), support::ExactCoverage(outline.View(), kBox)), 2) << name;
}

TEST(FillPainter, OverlapsSmallerThanAPixelAreCountedOnce) {
    const M_LRect box = {0, 0, 24, 24};
    std::mt19937 random(1);
    for (int round = 0; round < 240; ++round) {
        const Outline outline = NastyOutline(random);
        EXPECT_LE(LargestError(Fill(outline, box), support::ExactCoverage(outline.View(), box)), 2) << round;
    }
}

TEST(FillPainter, RunningRoundThousandsOfTimesFillsOnce) {
    const Outline square = support::Rectangle(10.5, 10.25, 50.75, 50.5);
    for (const Outline& once : {square, support::Circle(40, 40, 30.3)}) {
        for (const int times : {2048, 4096}) {
            Outline wound;
            for (int i = 0; i < times; ++i) wound.Append(once);
            for (const bool best : {true, false}) EXPECT_TRUE(Fill(wound, kBox, best) == Fill(once, kBox, best)) << times;
        }
    }
}

TEST(FillPainter, RunsAndCoveragesOfASmallRectangle) {
    const FillPainter painter(support::Rectangle(1.5, 1.25, 4, 2).View(), kPIVIdentity, {0, 0, 6, 3, 0, 6}, true);
    const PIVRasterPainterInfo& info = painter.Info();
    const PIVRun* const runs = info.row(info.context, 1, &info, nullptr);
    const std::vector<std::pair<std::uint32_t, std::int32_t>> expected = {
        {kPIVRunEmpty, 1}, {kPIVRunPartial, 4}, {kPIVRunEmpty, 6}};
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(std::pair(runs[i].kind, runs[i].end), expected[i]);
    EXPECT_EQ(PullRow(painter, {0, 0, 6, 3}, 1), (std::vector<std::uint8_t>{0, 96, 191, 191, 0, 0}));
}

TEST(FillPainter, ARowIsTheSameInEveryBandOfRows) {
    std::vector<std::pair<std::string, Outline>> outlines = SimpleOutlines();
    for (auto& outline : OverlappingOutlines()) outlines.push_back(std::move(outline));
    for (const auto& [name, outline] : outlines) {
        for (const bool best : {true, false}) {
            std::vector<std::uint8_t> joined;
            for (const auto& [top, bottom] : {std::pair(kBox.top, 11), {11, 12}, {12, 50}, {50, 51}, {51, kBox.bottom}}) {
                const std::vector<std::uint8_t> band = Fill(outline, {kBox.left, top, kBox.right, bottom}, best);
                joined.insert(joined.end(), band.begin(), band.end());
            }
            EXPECT_TRUE(joined == Fill(outline, kBox, best)) << name;
        }
    }
}

TEST(FillPainter, AWholePixelShiftShiftsTheResult) {
    for (const auto& [name, outline] : OverlappingOutlines()) {
        const M_LRect shifted = {kBox.left + 1017, kBox.top - 5009, kBox.right + 1017, kBox.bottom - 5009};
        EXPECT_TRUE(Fill(outline, shifted, true, {1, 0, 0, 1, 1017, -5009}) == Fill(outline, kBox)) << name;
    }
}

TEST(FillPainter, ABoxCutsItsPartOutOfTheWholeFill) {
    std::mt19937 random(5);
    std::uniform_int_distribution<std::int32_t> edge(-40, 160);
    for (const auto& [name, outline] : SimpleOutlines()) {
        const M_LRect all = {-50, -50, 170, 170};
        const std::vector<std::uint8_t> whole = Fill(outline, all);
        for (int round = 0; round < 20; ++round) {
            const auto [left, right] = std::minmax({edge(random), edge(random)});
            const auto [top, bottom] = std::minmax({edge(random), edge(random)});
            const std::vector<std::uint8_t> part = Fill(outline, {left, top, right, bottom});
            int largest = 0;
            for (std::size_t i = 0; i < part.size(); ++i) {
                const std::size_t y = Extent(all.top, top) + i / Extent(left, right);
                const std::size_t x = Extent(all.left, left) + i % Extent(left, right);
                largest = std::max(largest, std::abs(part[i] - whole[y * Extent(all.left, all.right) + x]));
            }
            EXPECT_LE(largest, 1) << name << ": lines cut at the left edge are rounded there";
        }
    }
}

TEST(FillPainter, RowsThatShowNothingAreOneEmptyRun) {
    const Outline circle = support::Circle(50, 50, 40);
    const auto expect_empty = [&](const M_LRect& box, std::initializer_list<std::int32_t> rows) {
        const FillPainter painter(circle.View(), kPIVIdentity, DeviceOf(box), true);
        const PIVRasterPainterInfo& info = painter.Info();
        for (const std::int32_t y : rows) {
            const PIVRun* const run = info.row(info.context, y, &info, nullptr);
            EXPECT_EQ(run->kind, kPIVRunEmpty);
            EXPECT_EQ(run->end, box.right);
        }
    };
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    expect_empty({0, 20, 100, 80}, {19, 80, -kMost, kMost});
    expect_empty({0, 0, 100, 100}, {0, 9, 90, 99});
    expect_empty({95, 0, 100, 100}, {0, 50});
    expect_empty({-20, 0, 10, 100}, {0, 50});
    expect_empty({60, 0, 60, 100}, {50});
    expect_empty({80, 20, 20, 80}, {50});
    expect_empty({20, 80, 80, 20}, {50, 20, 79});
    expect_empty({-kMost - 1, -kMost - 1, -kMost, kMost}, {0, kMost - 1});
}

TEST(FillPainter, HugeCoordinatesEndFastAndFillWhatTheyShould) {
    constexpr double kHuge = static_cast<double>(std::numeric_limits<float>::max());
    for (const double reach : {1e7, 1e30, kHuge}) {
        const std::vector<std::uint8_t> all = Fill(support::Rectangle(-reach, -reach, reach, reach), kBox);
        EXPECT_TRUE(std::all_of(all.begin(), all.end(), [](std::uint8_t level) { return level == 255; }));
        const std::vector<std::uint8_t> half =
            Fill(support::Polygon({{-reach, -reach}, {reach, -reach}, {reach, reach}}), {0, 0, 100, 100});
        EXPECT_EQ(half[10 * 100 + 12], 255);
        EXPECT_EQ(half[10 * 100 + 8], 0);
        EXPECT_NEAR(half[10 * 100 + 10], 128, 1);
        const PIVMatrix rightwards = {1, 0, 0, 1, static_cast<float>(reach), 50};
        const std::vector<std::uint8_t> side = Fill(support::Circle(0, 0, reach), {-50, 0, 50, 100}, true, rightwards);
        EXPECT_EQ(side[70 * 100 + 40], 0);
        EXPECT_EQ(side[70 * 100 + 60], 255);
    }
    std::mt19937 random(11);
    for (const double reach : {1e3, 1e6, 1e12, 1e30, kHuge / 2})
        for (int round = 0; round < 20; ++round) Fill(WildLoop(reach, 30, random), kBox);
    Fill(support::Scribble(40, 1e30, 1), kBox, true, {1e30F, 1e-30F, -1e30F, 1e30F, 0, 0});
    EXPECT_EQ(Refusal(support::Rectangle(0, 0, 1e7, 50).View(), kPIVIdentity, {0, 0, 10000000, 10, 0, 10000000}),
              &refhost::kErrorBadArgument);
}

TEST(FillPainter, RowsOfVeryManyCrossingsAreSampledFinely) {
    const M_LRect box = {0, 0, 16, 16};
    const Outline star = support::StarPolygon(501, 250, 7).Shifted(8, 8);
    EXPECT_LE(LargestError(Fill(star, box), support::ExactCoverage(star.View(), box)), 6);
    const std::vector<std::uint8_t> dense = Fill(support::StarPolygon(20001, 9001, 7).Shifted(8, 8), box);
    EXPECT_EQ(dense[8 * 16 + 8], 255);
}

TEST(FillPainter, RefusesWhatIsNoPath) {
    const Outline circle = support::Circle(50, 50, 40);
    for (const float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        EXPECT_EQ(Refusal(circle.View(), {1, 0, 0, 1, bad, 0}), &refhost::kErrorNotFinite);
        EXPECT_EQ(Refusal(circle.View(), {1, 0, 0, bad, 0, 0}), &refhost::kErrorNotFinite);
        Outline broken = circle;
        broken.Line(10, static_cast<double>(bad));
        EXPECT_EQ(Refusal(broken.View()), &refhost::kErrorNotFinite);
    }
    const std::vector<M_Vector2T<float>> points(5);
    const auto refusal = [&](const std::vector<PIVPointType>& operators) {
        return Refusal({std::span(points).first(operators.size()), operators});
    };
    for (const PIVPointType first : {kPIVLine, kPIVCurve, kPIVClose})
        EXPECT_EQ(refusal({first, first, first}), &refhost::kErrorBadPath);
    EXPECT_EQ(refusal({kPIVMove, kPIVCurve, kPIVCurve}), &refhost::kErrorBadPath);
    EXPECT_EQ(refusal({kPIVMove, kPIVCurve, kPIVCurve, kPIVLine}), &refhost::kErrorBadPath);
    EXPECT_EQ(refusal({kPIVMove, static_cast<PIVPointType>(4)}), &refhost::kErrorBadPath);
    EXPECT_EQ(Refusal({points, std::span<const PIVPointType>()}), &refhost::kErrorBadPath);
    EXPECT_EQ(refusal({kPIVMove, kPIVCurve, kPIVCurve, kPIVCurve, kPIVClose}), nullptr);
    EXPECT_EQ(refusal({}), nullptr);
}

}  // namespace
