#pragma once

#include <atomic>
#include <vector>

#include "refhost/engine/path_view.h"

/// An engine path: its entries never change after it is made. Every point is finite and the operators make a path:
/// curves come in threes, and nothing is drawn before the first move.
struct GRXPath {
    std::atomic<int> references{1};
    std::vector<M_Vector2T<float>> points;
    std::vector<PIVPointType> operators;

    refhost::PathView View() const { return {points, operators}; }
};

namespace refhost {

/// A path of `view` with every point mapped; the caller owns the one reference.
/// @throws EngineError     the operators make no path, or a mapped coordinate is not finite
/// @throws std::bad_alloc
GRXPath* NewPathObject(const PathView& view, const PIVMatrix& matrix);

/// Engine paths alive in the process.
int LivePathObjects();

void AddReference(GRXPath* path);
/// Deletes the path with its last reference.
void ReleaseReference(GRXPath* path);

}  // namespace refhost
