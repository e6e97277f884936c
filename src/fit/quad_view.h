#pragma once

#include <cstdint>

#include "fit/t_vals.h"
#include "fit/view.h"
#include "fit/window.h"

/// Points `first` to `first` + `count` - 1 of a window, on a closed one past its end, with their curve parameters. Borrows
/// the window.
class CFQuadRange {
 public:
    CFQuadRange(const CFWindow& window, std::int32_t first, std::int32_t count);

    std::int32_t First() const { return first_; }
    std::int32_t Count() const { return count_; }
    CFPoint Point(std::int32_t j) const { return {xs_[j], ys_[j]}; }
    bool IsEven() const { return even_; }  // its parameters are, whatever its points
    float Parameter(std::int32_t j) const { return even_ ? EvenParameter(j, count_) : parameters_[j]; }

 private:
    std::int32_t first_, count_;
    const float *xs_, *ys_;
    bool even_;
    CFTVals parameters_;  // none where they are even
};

/// How far the neighbourhood of one point of a window reaches: as many points on either side as the half-width says, but no
/// more than half of the chain and none past an end of an open window. Indices of the window; the point counts on both sides.
struct CFNeighbourhood {
    /// @throws int  kBrokenInvariant when `k` is outside the window
    CFNeighbourhood(const CFWindow& window, std::int32_t k, std::int32_t half_width);

    std::int32_t first, centre;
    std::int32_t left_count, right_count;
};

/// The neighbourhood of one point of a window as one range. Borrows the window.
class CF1QuadView : public CFView {
 public:
    CF1QuadView(const CFWindow& window, std::int32_t k, std::int32_t half_width)
        : CF1QuadView(window, CFNeighbourhood(window, k, half_width)) {}

    const CFQuadRange& Range() const { return range_; }
    std::int32_t Centre() const { return centre_; }  // position of the point in the range

 private:
    CF1QuadView(const CFWindow& window, const CFNeighbourhood& near)
        : CFView(kView1Quad), centre_(near.left_count - 1), range_(window, near.first, near.left_count + near.right_count - 1) {}

    std::int32_t centre_;
    CFQuadRange range_;
};

/// The neighbourhood as two ranges: the left one ends and the right one starts with the point. Borrows the window.
class CF2QuadView : public CFView {
 public:
    CF2QuadView(const CFWindow& window, std::int32_t k, std::int32_t half_width)
        : CF2QuadView(window, CFNeighbourhood(window, k, half_width)) {}

    const CFQuadRange& Left() const { return left_; }
    const CFQuadRange& Right() const { return right_; }

 private:
    CF2QuadView(const CFWindow& window, const CFNeighbourhood& near)
        : CFView(kView2Quad), left_(window, near.first, near.left_count), right_(window, near.centre, near.right_count) {}

    CFQuadRange left_, right_;
};
