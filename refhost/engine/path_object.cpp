#include "refhost/engine/path_object.h"

#include <cmath>
#include <memory>

#include "refhost/engine/engine_error.h"

namespace refhost {
namespace {

std::atomic<int> g_live{0};

M_Vector2T<float> MapPoint(const PIVMatrix& matrix, M_Vector2T<float> point) {
    const Point mapped = Map(matrix, point);
    const M_Vector2T<float> narrow = {static_cast<float>(mapped.x), static_cast<float>(mapped.y)};
    if (!std::isfinite(narrow.x) || !std::isfinite(narrow.y)) throw EngineError{&kErrorNotFinite};
    return narrow;
}

}  // namespace

GRXPath* NewPathObject(const PathView& view, const PIVMatrix& matrix) {
    CheckOperators(view);
    auto path = std::make_unique<GRXPath>();
    path->operators.assign(view.operators.begin(), view.operators.end());
    path->points.reserve(view.points.size());
    for (const auto& point : view.points) path->points.push_back(MapPoint(matrix, point));
    ++g_live;
    return path.release();
}

int LivePathObjects() { return g_live; }

void AddReference(GRXPath* path) { path->references.fetch_add(1, std::memory_order_relaxed); }

void ReleaseReference(GRXPath* path) {
    if (path->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    delete path;
    --g_live;
}

}  // namespace refhost
