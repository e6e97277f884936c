#pragma once

#include <boost/shared_ptr.hpp>
#include <vector>

#include "geometry/shape_creator.h"
#include "host/path_bridge.h"
#include "host/shape.h"

/// True when `a` and `b` are equal as outline coordinates: closer than a millionth of the larger one, or than about half
/// a thousandth of a pixel.
bool VRLp_SameCoordinate(float a, float b);

/// Turns every subpath played to it into a new shape at the end of `shapes`: closed by ClosePath, open without it, then
/// with a straight leg back to its start. Straight segments carry control points on their anchors.
/// The last shape is delivered by the destructor, also when an exception ends the playback; a shape whose delivery fails
/// comes as far as it got.
class CollectDYShapeFunctor : public HOB_OutlinePlayer {
 public:
    explicit CollectDYShapeFunctor(std::vector<boost::shared_ptr<DY_Shape>>& shapes);
    ~CollectDYShapeFunctor() noexcept(false) override;

    // All throw int, the host list's status, or std::bad_alloc. Without a MoveTo before, the other three do nothing.
    void MoveTo(float x, float y) override;
    void LineTo(float x, float y) override;
    void CurveTo(float x1, float y1, float x2, float y2, float x3, float y3) override;
    void ClosePath() override;

 private:
    void Deliver();
    void AppendClosingLeg(DY_Shape& shape);
    void HandOver();

    DY_ShapeCreator creator_;
    WEX_Item start_ = {};
    WEX_Item last_ = {};
    std::vector<boost::shared_ptr<DY_Shape>>& shapes_;
    int exceptions_at_start_;  // in flight when the functor was made
};
