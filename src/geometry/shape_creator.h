#pragma once

#include <memory>
#include <utility>

#include "base/errors.h"
#include "host/shape.h"

/// Owns one shape under construction and deletes it unless it is released.
class DY_ShapeCreator {
 public:
    DY_ShapeCreator() = default;
    DY_ShapeCreator(const DY_ShapeCreator&) = delete;
    DY_ShapeCreator& operator=(const DY_ShapeCreator&) = delete;
    virtual ~DY_ShapeCreator() = default;

    /// Starts an empty Bezier shape, open until it is closed, in place of the one held.
    void Begin() {
        shape_ = std::make_unique<DY_Shape>(kShapeTypeBezier, nullptr);
        shape_->flags |= kShapeFlagOpen;
    }
    /// Null when no shape is under construction.
    DY_Shape* Shape() const { return shape_.get(); }
    std::unique_ptr<DY_Shape> Release() { return std::exchange(shape_, nullptr); }

 private:
    std::unique_ptr<DY_Shape> shape_;
};

/// Appends to, or removes the last of, the shape's points.
/// @throws int  the list's status
inline void VRLp_AppendPoint(DY_Shape& shape, WEX_Item point) { ThrowIfFailed(WEX_Insert(&point, -1, shape.GetPoints())); }
inline void VRLp_RemoveLastPoint(DY_Shape& shape) { ThrowIfFailed(WEX_Remove(-1, shape.GetPoints(), 0, 0)); }

inline void VRLp_CloseShape(DY_Shape& shape) { shape.flags &= static_cast<unsigned char>(~kShapeFlagOpen); }
