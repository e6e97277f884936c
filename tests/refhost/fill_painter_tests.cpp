#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <thread>

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

struct Errors {
    double largest = 0;
    int above_two = 0;  // pixels
};

Errors Compare(const std::vector<std::uint8_t>& coverage, const std::vector<double>& exact) {
    Errors errors;
    for (std::size_t i = 0; i < exact.size(); ++i) {
        const double error = std::abs(coverage[i] - exact[i]);
        errors.largest = std::max(errors.largest, error);
        errors.above_two += error > 2;
    }
    return errors;
}

constexpr M_LRect kBox = {-3, -5, 125, 123};

/// Shapes that stay clear of themselves.
std::vector<std::pair<std::string, Outline>> SimpleOutlines() {
    std::vector<std::pair<std::string, Outline>> outlines = {
        {"blob", support::Blob(60.3, 59.1, 44, 24, 7)},
        {"blob cut by the box", support::Blob(60.3, 59.1, 90, 40, 8)},
        {"traced", support::TracedShape(59.7, 61.2, 48, 300, 9)},
        {"circle", support::Circle(60, 60, 50)},
        {"circle off the grid", support::Circle(61.37, 58.81, 47.6).Reversed()},
        {"circles inside pixels", support::Circle(20.5, 20.5, 0.4)},
        {"rectangle on the grid", support::Rectangle(10, 12, 90, 100)},
        {"rectangle off the grid", support::Rectangle(10.3, 12.6, 90.1, 100.7)},
        {"rectangle inside a row", support::Rectangle(10.3, 12.2, 90.1, 12.6)},
        {"sliver", support::Polygon({{2.2, 3.1}, {118.7, 97.4}, {2.1, 3.4}})},
        {"flat sliver", support::Polygon({{2.2, 30.1}, {118.7, 31.3}, {4, 30.3}})},
        {"upright sliver", support::Polygon({{30.1, 2.2}, {31.3, 118.7}, {30.3, 4}})},
        {"star outline", support::Polygon({{60, 5}, {70, 50}, {115, 60}, {70, 70}, {60, 115}, {50, 70}, {5, 60}, {50, 50}})},
    };
    Outline& dots = outlines[5].second;
    for (int i = 0; i < 40; ++i) dots.Append(support::Circle(5.13 * (i % 20) + 3.2, 3.71 * i + 8.4, 0.07 * i + 0.03));
    Outline ring = support::Circle(60, 60, 50);
    ring.Append(support::Circle(62.2, 57.3, 41.3).Reversed());
    outlines.emplace_back("ring", ring);
    Outline open;
    open.Move(20.5, 20.25);
    open.Line(100.5, 30);
    open.Line(50.25, 90.75);
    outlines.emplace_back("open subpath", open);
    for (const char32_t character : U"&g@") {
        const Outline glyph = support::Glyph(support::kSerifBold, character, 12, 100, 110);
        if (glyph.View().Size() > 0) outlines.emplace_back("glyph", glyph);
    }
    return outlines;
}

std::vector<std::pair<std::string, Outline>> OverlappingOutlines() {
    const auto joined = [](Outline a, const Outline& b) {
        a.Append(b);
        return a;
    };
    const Outline blob = support::Blob(60.3, 59.1, 44, 24, 7);
    const Outline left = support::Polygon({{10.4, 10.2}, {70.3, 10.2}, {55.6, 100.7}, {10.4, 100.7}});
    const Outline right = support::Polygon({{70.3, 10.2}, {110.8, 10.2}, {110.8, 100.7}, {55.6, 100.7}});
    return {
        {"star", support::Star(60.2, 60.7, 55, 5, 2)},
        {"star of eleven", support::Star(60.2, 60.7, 55, 11, 5)},
        {"scribble", support::Scribble(0, 0, 120, 40, 3)},
        {"scribble of few", support::Scribble(0, 0, 120, 9, 4)},
        {"doubled", joined(blob, blob)},
        {"doubled and undone", joined(blob, blob.Reversed())},
        {"overlapping", joined(blob, blob.Shifted(13.3, 9.2))},
        {"overlapping, opposite", joined(blob, blob.Shifted(13.3, 9.2).Reversed())},
        {"abutting", joined(left, right)},
        {"abutting, opposite", joined(left, right.Reversed())},
        {"overlap ends inside a row", joined(support::Rectangle(10, 10, 90, 50.4), support::Rectangle(30, 20, 70, 50.4))},
        {"overlap leaves the box",
         joined(support::Polygon({{90, 20.1}, {140, 20.1}, {140, 20.7}}),
                joined(support::Polygon({{80, 20.1}, {150, 20.1}, {150, 20.9}}), support::Star(50, 70, 40, 5, 2)))},
        {"figure of eight", support::Polygon({{10.3, 10.1}, {100.2, 99.7}, {100.2, 10.1}, {10.3, 99.7}})},
    };
}

TEST(FillPainter, BestQualityIsWithinTwoLevelsOfTheExactArea) {
    for (const auto& [name, outline] : SimpleOutlines()) {
        const std::vector<double> exact = support::ExactCoverage(outline.View(), kBox);
        const Errors best = Compare(Fill(outline, kBox), exact);
        const Errors draft = Compare(Fill(outline, kBox, false), exact);
        if (std::getenv("PRINT"))
            printf("%-28s best %.3f (%d)  draft %.3f (%d)\n", name.c_str(), best.largest, best.above_two, draft.largest,
                   draft.above_two);
        EXPECT_LE(best.largest, 2) << name;
        EXPECT_LE(draft.largest, 7) << name;
    }
}

TEST(FillPainter, BestQualityResolvesOverlaps) {
    for (const auto& [name, outline] : OverlappingOutlines()) {
        const Errors best = Compare(Fill(outline, kBox), support::ExactCoverage(outline.View(), kBox));
        if (std::getenv("PRINT")) printf("%-28s best %.3f (%d)\n", name.c_str(), best.largest, best.above_two);
        EXPECT_LE(best.largest, 2) << name;
    }
}
}  // namespace
