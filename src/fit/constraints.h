#pragma once

#include "base/point.h"

/// A condition on one end of a fitted curve; it holds only while it is active.
class CFConstraint {
 public:
    virtual ~CFConstraint() = default;

    bool active = false;
    CFPoint value;

 protected:
    CFConstraint(bool is_active, CFPoint wanted) : active(is_active), value(wanted) {}
    CFConstraint(const CFConstraint&) = default;
    CFConstraint& operator=(const CFConstraint&) = default;
};

/// The curve passes through `value`. Always active.
class CFPointConstraint : public CFConstraint {
 public:
    explicit CFPointConstraint(CFPoint point) : CFConstraint(true, point) {}
};

/// The curve's derivative is parallel to `value`. Active at a smooth end, not at a corner.
class CFTangentConstraint : public CFConstraint {
 public:
    CFTangentConstraint(bool smooth, CFPoint tangent) : CFConstraint(smooth, tangent) {}
};

struct CF1CurveViewConstraints {
    CFPointConstraint start, end;
    CFTangentConstraint start_tangent, end_tangent;
};
