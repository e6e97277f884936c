#include <gtest/gtest.h>

#include <stdexcept>

#include "base/errors.h"
#include "fit/window.h"
#include "tests/support/thrown_int.h"

namespace {

/// Points (i, 10 i), so that every coordinate tells its index.
CFSegment Numbered(std::int32_t count, std::int32_t type) {
    CFSegment segment(count, kSpacingGeneral, type);
    for (std::int32_t i = 0; i < count; ++i) segment.SetPoint(i, {static_cast<float>(i), static_cast<float>(10 * i)});
    return segment;
}

bool IsRefused(const auto& call) { return ThrownInt(call) == kBrokenInvariant; }

ts::auto_ptr<CFWindow> WindowOf(const CFSegment& segment, std::int32_t start, std::int32_t end) {
    ts::auto_ptr<CFBound> bound;
    if (start == end) {
        bound = ts::make_auto<CFClosedBound>(segment, start);
    } else {
        bound = ts::make_auto<CFOpenBound>(segment, start, end);
    }
    return ts::make_auto<CFWindow>(segment, std::move(bound));
}

TEST(Segment, IndicesGoRoundClosedChainsOnly) {
    const CFSegment closed = Numbered(10, kChainClosed), open = Numbered(10, kChainOpen);
    EXPECT_EQ(closed.Point(-1), (CFPoint{9, 90}));
    EXPECT_EQ(closed.Point(23), (CFPoint{3, 30}));
    EXPECT_EQ(closed.Point(-20), (CFPoint{0, 0}));
    EXPECT_THROW(open.Point(-1), std::out_of_range);
    EXPECT_THROW(open.Point(10), std::out_of_range);
    CFSegment moved = Numbered(3, kChainClosed);
    moved.SetPoint(2, {7, 8});
    EXPECT_EQ(moved.X()[2 + 3], 7.0F);
    EXPECT_THROW(moved.SetPoint(3, {}), std::out_of_range);
    EXPECT_TRUE(IsRefused([] { CFSegment(0, kSpacingGeneral, kChainOpen); }));
}

TEST(Bound, CoversItsEndsAndIsCutInside) {
    const CFSegment closed = Numbered(10, kChainClosed), open = Numbered(10, kChainOpen);
    const CFOpenBound wrapping(closed, 8, 2), inner(open, 2, 6);
    const CFClosedBound whole(closed, 4);
    EXPECT_EQ(wrapping.Count(), 5);
    EXPECT_EQ(inner.Count(), 5);
    EXPECT_EQ(whole.Count(), 11);
    for (std::int32_t k = -1; k <= 10; ++k) {
        EXPECT_EQ(wrapping.Contains(k), k == 9 || k == 0 || k == 1) << k;
        EXPECT_EQ(inner.Contains(k), 3 <= k && k <= 5) << k;
        EXPECT_EQ(whole.Contains(k), 0 <= k && k < 10 && k != 4) << k;
    }
    ts::auto_ptr<CFBound> first, second;
    whole.Split(first, second, 9);
    EXPECT_EQ(first->Count() + second->Count(), whole.Count() + 1);
    wrapping.Split(first, second, 0);
    std::int32_t start = 0, end = 0;
    second->GetEnds(start, end);
    EXPECT_EQ(first->Count(), 3);
    EXPECT_EQ(start, 0);
    EXPECT_EQ(end, 2);
    EXPECT_TRUE(IsRefused([&] { wrapping.Split(first, second, 5); }));
    EXPECT_TRUE(IsRefused([&] { CFOpenBound(open, 8, 2); }));
    EXPECT_TRUE(IsRefused([&] { CFOpenBound(closed, 3, 3); }));
    EXPECT_TRUE(IsRefused([&] { CFOpenBound(closed, 3, 10); }));
    EXPECT_TRUE(IsRefused([&] { CFClosedBound(open, 0); }));
}

TEST(Window, ReadsItsRangeStraightOn) {
    const CFSegment closed = Numbered(10, kChainClosed);
    const auto wrapping = WindowOf(closed, 8, 2), whole = WindowOf(closed, 7, 7);
    for (std::int32_t j = 0; j < wrapping->Count(); ++j) EXPECT_EQ(wrapping->Point(j), closed.Point(8 + j));
    for (std::int32_t j = 0; j < whole->Count(); ++j) EXPECT_EQ(whole->Point(j), closed.Point(7 + j));
    EXPECT_EQ(whole->Count(), 11);
    EXPECT_EQ(wrapping->LocalIndex(1), 3);

    ts::auto_ptr<CFWindow> first, second;
    wrapping->Split(0, first, second);
    const auto merged = MergeWindows(*first, *second);
    EXPECT_EQ(merged->StartIndex(), 8);
    EXPECT_EQ(merged->Count(), 5);
    whole->Split(1, first, second);
    EXPECT_TRUE(MergeWindows(*first, *second)->IsClosed());
    EXPECT_TRUE(IsRefused([&] { MergeWindows(*wrapping, *second); }));

    const CFSegment other = Numbered(10, kChainClosed);
    EXPECT_TRUE(IsRefused([&] { CFWindow(other, ts::make_auto<CFOpenBound>(closed, 1, 2)); }));
    const CFSegment single = Numbered(1, kChainClosed);
    EXPECT_TRUE(IsRefused([&] { WindowOf(single, 0, 0); }));
}

}  // namespace
