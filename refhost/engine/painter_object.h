#pragma once

#include <atomic>

#include "refhost/engine/fill_painter.h"

/// An engine object that callers reach through its signature: the name its methods are looked up under.
struct NUBContainer {
    NUBContainer(const char* name, const refhost::PathView& path, const PIVMatrix& matrix, const PIVDeviceRect& device,
                 bool best_quality)
        : signature(name), painter(path, matrix, device, best_quality) {}

    std::atomic<int> references{1};
    const char* signature;
    refhost::FillPainter painter;
};

namespace refhost {

inline constexpr const char* kPainterSignature = "PIVRasterPainter";

/// A painter of the fill; the caller owns the one reference.
NUBContainer* NewPainterObject(const PathView& path, const PIVMatrix& matrix, const PIVDeviceRect& device, bool best_quality);

/// Painters alive in the process.
int LivePainterObjects();

/// Deletes the painter with its last reference.
void ReleaseReference(NUBContainer* container);

}  // namespace refhost
