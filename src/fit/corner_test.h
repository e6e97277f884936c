#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "fit/anchor_set.h"
#include "fit/window.h"

/// Decides which points of a chain are corners. Afterwards the anchor set holds the corners, runs of neighbours reduced to
/// the strongest one, and an anchor at either end of an open chain; a closed chain without corners gets one smooth anchor.
class CFCornerTest {
 public:
    /// `angle`: turn in degrees beyond which a point is a corner; `half_width`: points looked at on either side.
    /// @throws int  kBrokenInvariant when `half_width` is below 1
    CFCornerTest(float angle, std::int32_t half_width);
    virtual ~CFCornerTest() = default;
    /// Tests only `candidates`, chain indices in increasing order.
    /// @throws int  kBrokenInvariant for an empty window or a candidate outside it
    virtual void TestCandidates(const CFWindow& window, std::span<const std::int32_t> candidates, CFAnchorSet& anchors) const = 0;
    /// Tests every point of the window that has neighbours on both sides.
    virtual void TestAll(const CFWindow& window, CFAnchorSet& anchors) const = 0;

 protected:
    /// Adds point `i` to the anchors when the turn there, if there is one to compare, is a corner.
    void AddIfCorner(std::int32_t i, std::optional<float> cosine, CFAnchorSet& anchors) const;
    std::int32_t HalfWidth() const { return half_width_; }

 private:
    float threshold_;  // the cosine above which a point is a corner
    std::int32_t half_width_;
};

/// Compares the mean directions to the neighbours on both sides.
class CFLinTest : public CFCornerTest {
 public:
    using CFCornerTest::CFCornerTest;
    void TestCandidates(const CFWindow& window, std::span<const std::int32_t> candidates, CFAnchorSet& anchors) const override;
    void TestAll(const CFWindow& window, CFAnchorSet& anchors) const override;
};

/// Compares the end tangents of two quadratics, one fitted to either side, that meet at the point.
class CFQuadTest : public CFCornerTest {
 public:
    using CFCornerTest::CFCornerTest;
    void TestCandidates(const CFWindow& window, std::span<const std::int32_t> candidates, CFAnchorSet& anchors) const override;
    void TestAll(const CFWindow& window, CFAnchorSet& anchors) const override;
};
