#pragma once

#include <cstddef>
#include <cstdint>

#include "base/export.h"
#include "host/geometry_records.h"

// The host's shape model. Status results: 0 is success.

/// Base of host objects whose memory the host tracks.
struct VRL_HOST_API YQ_MemTrackedObject {
    static void* operator new(std::size_t size);
    static void operator delete(void* block) noexcept;
};

/// Head of a list kept by the list service. What follows the count in memory is the host's.
struct WEX_Head {
    std::int32_t count = 0;
};

using WEX_Item = M_Vector2T<float>;  // every list item is a point, in layer pixels

inline constexpr unsigned char kShapeTypeBezier = 2;  // the one type the library renders and creates
inline constexpr unsigned char kShapeFlagOpen = 8;    // set while a shape is built, cleared when it is closed

struct DY_ShapeState;  // the host's own part of a shape

/// A mask outline. Its points are the first vertex, then for every segment the out-handle of the previous vertex, the
/// in-handle of the next one and the next vertex. Closed with k vertices: 3k points, the last two being the handles of
/// the closing segment. Open: 3k - 2, or 3k when it also carries a straight leg back to its first vertex.
class VRL_HOST_API DY_Shape : public YQ_MemTrackedObject {
 public:
    /// An empty closed shape. `rect` may be null.
    DY_Shape(unsigned char type, const M_FloatShortRect* rect);
    DY_Shape(const DY_Shape& other);
    DY_Shape& operator=(const DY_Shape&) = delete;
    virtual ~DY_Shape();
    virtual DY_Shape* Clone() const;  // deep; the caller owns it

    /// Handle of the point list, borrowed: a pointer to the pointer to its head.
    WEX_Head** GetPoints();
    const WEX_Head* const* GetPoints() const;
    void Transform(const M_Matrix3& matrix);  // maps every point
    std::int32_t GetFeatherPtCount(int kind) const;

    bool IsOpen() const { return (flags & kShapeFlagOpen) != 0; }

    unsigned char type;
    unsigned char flags = 0;
    DY_ShapeState* state;  // owned; the host alone knows what it holds
};

/// The vertex at list `index` (a multiple of 3): its anchor, the control point of the segment arriving at it and the
/// control point of the segment leaving it. Where an open outline has no such segment the anchor stands in.
VRL_HOST_API int DY_ShapeGetBezPoints(const DY_Shape* shape, int index, M_Vector2T<float>* anchor, M_Vector2T<float>* arriving,
                                      M_Vector2T<float>* leaving);

/// Makes the outline run in `direction`; 1 is clockwise on screen. The first vertex stays first.
VRL_HOST_API int DY_SetPolyDir(unsigned char direction, DY_Shape* shape);

VRL_HOST_API int WEX_Insert(const WEX_Item* item, int index, WEX_Head** list);  // index -1 appends
VRL_HOST_API int WEX_Remove(int index, WEX_Head** list, int, int);              // index -1 removes the last item
/// Copies the item at `index`.
VRL_HOST_API int WEX_GetItem(const WEX_Head* const* list, int index, WEX_Item* item);
/// Address of an item, borrowed until the list changes.
VRL_HOST_API int WEX_GetConstAddress(const WEX_Head* const* list, int index, const WEX_Item** item);
