#pragma once

#include <cstdint>

enum CFViewKind : std::int32_t { kView1Quad = 0, kView2Quad = 1, kView1Curve = 2 };

/// The points of one range of a window with their curve parameters, as a curve is fitted to them.
class CFView {
 public:
    virtual ~CFView() = default;
    CFViewKind Kind() const { return kind_; }

 protected:
    explicit CFView(CFViewKind kind) : kind_(kind) {}

 private:
    CFViewKind kind_;
};
