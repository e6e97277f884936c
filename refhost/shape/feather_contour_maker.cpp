#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>

#include "host/feather_contour.h"
#include "host/services.h"
#include "refhost/engine/coincidence.h"
#include "refhost/engine/flat_chain.h"
#include "refhost/engine/path_object.h"
#include "refhost/services/status.h"
#include "refhost/shape/feather_outline.h"

using refhost::FeatherKnot;
using refhost::PlaneBox;
using refhost::Point;
using refhost::Polygons;

namespace {

constexpr double kLargestInput = 1e9;  // pixels

/// The placement in which contours are made: the working space moved to the origin, and scaled down when the grid would not hold
/// it otherwise. Distances are those of the working space, times `scale`.
struct Placement {
    double scale_x;  // from the shape's space to the working space
    Point shift;
    double scale;
    double touch;  // see `TouchDistance`

    Point FromShape(Point p) const { return FromWorkingSpace({p.x * scale_x, p.y}); }
    Point FromWorkingSpace(Point p) const { return {(p.x + shift.x) * scale, (p.y + shift.y) * scale}; }
    M_Vector2T<float> ToShape(Point p) const;
};

}  // namespace

/// The contours of one shape, and how far they reach in the working space. Without an offset there is nothing to draw.
struct DY_FeatherContourState {
    explicit DY_FeatherContourState(const DY_FeatherContourCanceler& borrowed) : canceler(borrowed) {}

    const DY_FeatherContourCanceler& canceler;
    float inner_radius = 0, outer_radius = 0;
    Placement placement{};
    std::optional<refhost::VariableOffset> offset;
};

namespace {

using State = DY_FeatherContourState;

void Prepare(const DY_Shape& shape, double scale_x, float expansion, State& state);
Placement PlacementFor(const std::vector<refhost::Cubic>& curves, double scale_x, double reach);
DY_ContourResults ResultFor(const Polygons& contour, const PlaneBox& clip);
GRXPath* PathOf(const Polygons& contour, const Placement& placement);

}  // namespace

DY_FeatherContourMaker::DY_FeatherContourMaker(DY_Shape* shape, float scale_x, const DY_FeatherContourCanceler& canceler,
                                               float expansion) {
    auto state = std::make_unique<State>(canceler);
    Prepare(*shape, static_cast<double>(scale_x), expansion, *state);
    state_ = state.release();
}

DY_FeatherContourMaker::~DY_FeatherContourMaker() { delete state_; }

float DY_FeatherContourMaker::GetMaxRadius(bool inner) const { return inner ? state_->inner_radius : state_->outer_radius; }

GRXPath* DY_FeatherContourMaker::MakeGRXPath(float fraction, float, const M_FloatRect* clip, DY_ContourResults* result) const {
    *result = kContourNothing;
    state_->canceler.Check();
    if (!state_->offset) return nullptr;
    const Placement& placement = state_->placement;
    const Point low = placement.FromWorkingSpace({clip->left, clip->top});
    const Point high = placement.FromWorkingSpace({clip->right, clip->bottom});
    const PlaneBox box = {low.x, low.y, high.x, high.y};
    const double sound_fraction = fraction > 0 ? std::min(static_cast<double>(fraction), 1.0) : 0;  // a NaN too counts as 0
    auto [contour, winds_backwards] = state_->offset->RingAt(sound_fraction);
    *result = ResultFor(contour, box);
    if (*result == kContourPath && winds_backwards) {
        state_->canceler.Check();
        contour = OutlineOfPositive(contour);
        *result = ResultFor(contour, box);
    }
    return *result == kContourPath ? PathOf(contour, placement) : nullptr;
}

namespace {

void Prepare(const DY_Shape& shape, double scale_x, float expansion, State& state) {
    state.canceler.Check();
    refhost::ShapeSegments segments = refhost::SegmentsOf(shape);
    std::vector<FeatherKnot> knots =
        refhost::KnotsOf(refhost::FeatherPointsOf(shape), segments.curves.size(), segments.is_closed);
    const auto [innermost, outermost] = std::ranges::minmax(knots, {}, &FeatherKnot::radius);
    state.inner_radius = expansion + static_cast<float>(std::min(innermost.radius, 0.0));
    state.outer_radius = expansion + static_cast<float>(std::max(outermost.radius, 0.0));
    const auto reach = static_cast<double>(std::max(-state.inner_radius, state.outer_radius));
    if (segments.curves.empty()) return;

    const Placement placement = PlacementFor(segments.curves, scale_x, reach);
    state.placement = placement;
    for (auto& [p0, p1, p2, p3] : segments.curves) {
        for (Point* p : {&p0, &p1, &p2, &p3}) *p = placement.FromShape(*p);
    }
    for (FeatherKnot& knot : knots) knot.radius *= placement.scale;
    const auto strips = FeatherStrips(segments, knots, static_cast<double>(expansion) * placement.scale);
    state.canceler.Check();
    state.offset.emplace(strips, placement.touch);
}

/// Reports and throws kStatusBadArgument for an outline or a reach that leaves the plane.
Placement PlacementFor(const std::vector<refhost::Cubic>& curves, double scale_x, double reach) {
    constexpr double kFar = std::numeric_limits<double>::infinity();
    PlaneBox bounds = {kFar, kFar, -kFar, -kFar};
    bool is_sound = scale_x != 0 && std::abs(reach) <= kLargestInput;
    for (const auto& [p0, p1, p2, p3] : curves) {
        for (const Point p : {p0, p1, p2, p3}) {
            const double x = p.x * scale_x;
            is_sound = is_sound && std::abs(x) <= kLargestInput && std::abs(p.y) <= kLargestInput;
            bounds = {std::min(bounds.left, x), std::min(bounds.top, p.y), std::max(bounds.right, x),
                      std::max(bounds.bottom, p.y)};
        }
    }
    if (!is_sound) {
        YQp_ReportErrString(0, 0, "a feathered outline or its feather is out of range");
        throw refhost::kStatusBadArgument;
    }
    // A whole pixel, so that outlines on whole pixels stay on grid points.
    const Point centre = {std::round(bounds.Centre().x), std::round(bounds.Centre().y)};
    double extent = std::max(bounds.right - bounds.left, bounds.bottom - bounds.top) + reach + 1;
    double scale = 1;
    for (; extent > refhost::kLargestGridPixel; extent *= 0.5) scale *= 0.5;
    const double largest = std::max({-bounds.left, -bounds.top, bounds.right, bounds.bottom});
    return Placement{scale_x, -centre, scale, refhost::TouchDistance(largest * scale)};
}

DY_ContourResults ResultFor(const Polygons& contour, const PlaneBox& clip) {
    if (clip.IsEmpty()) return kContourNothing;
    if (AnyEdgeMeets(contour, clip)) return kContourPath;
    return WindingAt(contour, clip.Centre()) > 0 ? kContourAll : kContourNothing;
}

GRXPath* PathOf(const Polygons& contour, const Placement& placement) {
    std::vector<M_Vector2T<float>> points;
    std::vector<PIVPointType> operators;
    const std::size_t entries = contour.points.size() + contour.loop_ends.size();
    points.reserve(entries);
    operators.reserve(entries);
    for (std::size_t i = 0; i < contour.loop_ends.size(); ++i) {
        const std::size_t begin = points.size();
        for (const Point p : contour.Loop(i)) points.push_back(placement.ToShape(p));
        points.push_back(points[begin]);
        operators.resize(points.size() - 1, kPIVLine);
        operators[begin] = kPIVMove;
        operators.push_back(kPIVClose);
    }
    return refhost::NewPathObject({points, operators}, kPIVIdentity);
}

// A tiny horizontal scale can take a point out of the float range.
M_Vector2T<float> Placement::ToShape(Point p) const {
    constexpr double kLargest = static_cast<double>(std::numeric_limits<float>::max());
    const double x = (p.x / scale - shift.x) / scale_x;
    return {static_cast<float>(std::clamp(x, -kLargest, kLargest)), static_cast<float>(p.y / scale - shift.y)};
}

}  // namespace
