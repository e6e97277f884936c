#pragma once

#include "base/point.h"

/// Base of the Bezier records.
class CFBezier {
 public:
    virtual ~CFBezier() = default;

 protected:
    CFBezier() = default;
    CFBezier(const CFBezier&) = default;
    CFBezier& operator=(const CFBezier&) = default;
};

/// A quadratic curve over t from 0 to 1.
class CFBezier2 : public CFBezier {
 public:
    CFBezier2() = default;
    CFBezier2(CFPoint p0, CFPoint p1, CFPoint p2) : x{p0.x, p1.x, p2.x}, y{p0.y, p1.y, p2.y} {}

    CFPoint Control(int i) const { return {x[i], y[i]}; }
    CFPoint At(float t) const;
    CFPoint DerivativeAt(float t) const;

    float x[3] = {}, y[3] = {};
};

/// A cubic curve over t from 0 to 1.
class CFBezier3 : public CFBezier {
 public:
    CFBezier3() = default;
    CFBezier3(CFPoint p0, CFPoint p1, CFPoint p2, CFPoint p3) : x{p0.x, p1.x, p2.x, p3.x}, y{p0.y, p1.y, p2.y, p3.y} {}

    CFPoint Control(int i) const { return {x[i], y[i]}; }
    CFPoint At(float t) const;
    CFPoint DerivativeAt(float t) const;
    CFPoint SecondDerivativeAt(float t) const;

    float x[4] = {}, y[4] = {};
};

inline CFPoint CFBezier2::At(float t) const {
    const float s = 1.0F - t;
    return Control(0) * (s * s) + Control(1) * (2.0F * t * s) + Control(2) * (t * t);
}

inline CFPoint CFBezier2::DerivativeAt(float t) const {
    return Control(0) * (-2.0F * (1.0F - t)) + Control(1) * (2.0F * (1.0F - 2.0F * t)) + Control(2) * (2.0F * t);
}

inline CFPoint CFBezier3::At(float t) const {
    const float s = 1.0F - t;
    return Control(0) * (s * s * s) + Control(1) * (3.0F * t * s * s) + Control(2) * (3.0F * t * t * s) +
           Control(3) * (t * t * t);
}

inline CFPoint CFBezier3::DerivativeAt(float t) const {
    const float s = 1.0F - t;
    return (Control(1) - Control(0)) * (3.0F * s * s) + (Control(2) - Control(1)) * (6.0F * s * t) +
           (Control(3) - Control(2)) * (3.0F * t * t);
}

inline CFPoint CFBezier3::SecondDerivativeAt(float t) const {
    const CFPoint bend_start = Control(2) - Control(1) * 2.0F + Control(0);
    const CFPoint bend_end = Control(3) - Control(2) * 2.0F + Control(1);
    return bend_start * (6.0F * (1.0F - t)) + bend_end * (6.0F * t);
}
