#pragma once

#include <cstddef>
#include <cstdint>

#include "base/export.h"
#include "host/geometry_records.h"

// The host's 2-D graphics engine as its procedures look from outside. Every one of them is looked up by name.

enum PIVPointType : std::uint32_t {
    kPIVMove = 0,
    kPIVLine = 1,
    kPIVCurve = 2,  // three consecutive entries: first control point, second control point, end point
    kPIVClose = 3,  // its point repeats the subpath's first point
};

struct GRXPath;       // an engine path, reference counted
struct NUBContainer;  // an engine object reached through its signature, reference counted; painters are such
struct NUBProgressObject;

/// What a failed engine procedure returns; null is success. The engine owns it and keeps it, texts included, until the
/// process ends.
struct NUBErrorObject {
    const char* component;
    std::int32_t identifier;
    const char* message;
};

/// One run of a painter's row: samples up to `end` (exclusive) from where the run before ended.
struct PIVRun {
    std::uint32_t kind;  // PIVRunKind; any other value writes nothing
    std::int32_t end;
};
enum PIVRunKind : std::uint32_t { kPIVRunEmpty = 0, kPIVRunFull = 1, kPIVRunPartial = 2 };

struct PIVRasterPainterInfo;

/// The runs of row `y`, in increasing x, starting at or before the box's left edge and reaching its right edge.
/// Borrowed until the next call on the same painter, as is the row's part of the coverage raster.
using PIVRowProc = const PIVRun* (*)(void* context, std::int32_t y, const PIVRasterPainterInfo* info, void* line);

/// A painter's 8-bit coverage raster and row function. The coverage of pixel (x, y) of a partial run is
/// base[(y - top) * row_bytes + (x - left)], valid once the row function was called for row y.
struct PIVRasterPainterInfo {
    const std::uint8_t* base;
    std::int64_t row_bytes;
    PIVRowProc row;
    void* context;
};

/// Address of a procedure of the engine, or null when it has none of that name.
using NUBAddressProc = void* (*)(const char* interface_name, const char* method, const char* procedure);

/// The entry point of the host's component binding.
VRL_HOST_API int HOB_GetNUBAddressProc(NUBAddressProc* proc);

// Looked up as interface / method / procedure name, see host/engine_binding.cpp.
using NUBGetUnregisterCountAddrProc = std::int32_t* (*)();
using NUBReallocProc = void* (*)(void* block, std::size_t bytes);  // null block allocates; null result: no memory
using NUBFreeProc = void (*)(void* block);
using NUBContainerCountProc = void (*)(NUBContainer* container);
using NUBContainerGetSignatureProc = const char* (*)(NUBContainer* container);

/// A matrix handed to the engine: a, b, c, d, tx, ty mapping (x, y) to (a x + c y + tx, b x + d y + ty).
struct PIVMatrix {
    float a, b, c, d, tx, ty;
};
inline constexpr PIVMatrix kPIVIdentity = {1, 0, 0, 1, 0, 0};

/// Device rectangle of a painter: the box, then the horizontal extent of its raster.
struct PIVDeviceRect {
    std::int32_t left, top, right, bottom, raster_left, raster_right;
};

using GRXNewPathProc = const NUBErrorObject* (*)(GRXPath** out, std::int32_t entries, const M_Vector2T<float>* points,
                                                 const PIVPointType* operators, const PIVMatrix* matrix, std::uint32_t flags,
                                                 double, void* dictionary);
using GRXPathCountProc = void (*)(GRXPath* path);
/// The arrays stay valid while the path lives.
using GRXPathGetDataProc = const NUBErrorObject* (*)(GRXPath* path, std::int32_t* entries, const M_Vector2T<float>** points,
                                                     const PIVPointType** operators);
using GRXPathTransformProc = const NUBErrorObject* (*)(GRXPath** out, GRXPath* path, float a, float b, float c, float d, float tx,
                                                       float ty);
/// A new painter, one reference held by the caller. `fill_rule` 1: nonzero winding.
using TAVNewFillProc = const NUBErrorObject* (*)(NUBContainer** out, std::int32_t entries, const M_Vector2T<float>* points,
                                                 const PIVPointType* operators, std::int32_t fill_rule, std::int32_t quality,
                                                 const PIVMatrix* matrix, const PIVDeviceRect* device);
using PIVGetInfoProc = const NUBErrorObject* (*)(NUBContainer* painter, const PIVRasterPainterInfo** info);

/// Receives an outline segment by segment, see HOB_PathCollector::Callback.
using GRXOffsetCallback = void (*)(float x1, float y1, float x2, float y2, float x3, float y3, PIVPointType op, void* refcon);
/// Sends the outline of the filled path, grown by `distance`, to `callback`. `join` is 0 miter, 1 round, 2 bevel.
using GRXOffsetPathProc = const NUBErrorObject* (*)(GRXOffsetCallback callback, void*, void* refcon, std::int32_t entries,
                                                    const M_Vector2T<float>* points, const PIVPointType* operators, std::int32_t,
                                                    float distance, std::int32_t, std::uint32_t join, float miter_limit,
                                                    std::int32_t, std::int32_t, std::int32_t, std::int32_t, float, std::int32_t,
                                                    NUBProgressObject* progress, float);
using NUBNewNullProgressProc = NUBProgressObject* (*)();
using NUBProgressReleaseProc = void (*)(NUBProgressObject* progress);
