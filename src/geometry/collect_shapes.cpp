#include "geometry/collect_shapes.h"

#include <algorithm>
#include <exception>

bool VRLp_SameCoordinate(float a, float b) {
    constexpr float kRelative = 1e-6F;
    constexpr float kAbsolute = 563.0F / 1048576.0F;  // pixels
    float lo = a < b ? a : b;                         // a NaN ends up in one of the two and equals nothing
    float hi = a < b ? b : a;
    if (hi < 0.0F) {
        const float mirrored = -lo;
        lo = -hi;
        hi = mirrored;
    }
    return hi - lo < std::max(kRelative * hi, kAbsolute);
}

CollectDYShapeFunctor::CollectDYShapeFunctor(std::vector<boost::shared_ptr<DY_Shape>>& shapes)
    : shapes_(shapes), exceptions_at_start_(std::uncaught_exceptions()) {}

CollectDYShapeFunctor::~CollectDYShapeFunctor() noexcept(false) {
    try {
        Deliver();
    } catch (...) {
        if (std::uncaught_exceptions() == exceptions_at_start_) throw;
        // The exception that ended the playback goes on.
    }
}

void CollectDYShapeFunctor::MoveTo(float x, float y) {
    Deliver();
    creator_.Begin();
    start_ = last_ = {x, y};
    VRLp_AppendPoint(*creator_.Shape(), start_);
}

void CollectDYShapeFunctor::LineTo(float x, float y) { CurveTo(last_.x, last_.y, x, y, x, y); }

void CollectDYShapeFunctor::CurveTo(float x1, float y1, float x2, float y2, float x3, float y3) {
    DY_Shape* shape = creator_.Shape();
    if (shape == nullptr) return;
    VRLp_AppendPoint(*shape, {x1, y1});
    VRLp_AppendPoint(*shape, {x2, y2});
    VRLp_AppendPoint(*shape, {x3, y3});
    last_ = {x3, y3};
}

void CollectDYShapeFunctor::ClosePath() {
    DY_Shape* shape = creator_.Shape();
    if (shape == nullptr) return;
    if (VRLp_SameCoordinate(last_.x, start_.x) && VRLp_SameCoordinate(last_.y, start_.y)) {
        VRLp_RemoveLastPoint(*shape);  // its arriving control point becomes the first vertex's
    } else {
        AppendClosingLeg(*shape);
    }
    VRLp_CloseShape(*shape);
}

// Whatever becomes of its closing leg, the shape goes to the caller.
void CollectDYShapeFunctor::Deliver() {
    DY_Shape* shape = creator_.Shape();
    if (shape == nullptr) return;
    try {
        if (shape->IsOpen()) AppendClosingLeg(*shape);
    } catch (int) {
        HandOver();
        throw;
    }
    HandOver();
}

void CollectDYShapeFunctor::AppendClosingLeg(DY_Shape& shape) {
    VRLp_AppendPoint(shape, last_);
    VRLp_AppendPoint(shape, start_);
}

void CollectDYShapeFunctor::HandOver() { shapes_.push_back(boost::shared_ptr<DY_Shape>(creator_.Release().release())); }
