#include "tests/support/offset_distance.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

using refhost::CurveContour;
using refhost::PathView;
using refhost::Point;

namespace {

using Segment = SegmentField::Segment;

constexpr double kSourceTolerance = 0.0005;  // pixels
constexpr double kSide = 1e-4;               // pixels: how far beside an edge the winding is read
constexpr double kInfinity = std::numeric_limits<double>::infinity();

Point Minus(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
Point Along(Point a, double s, Point direction) { return {a.x + s * direction.x, a.y + s * direction.y}; }
double CrossOf(Point a, Point b) { return a.x * b.y - a.y * b.x; }
double DotOf(Point a, Point b) { return a.x * b.x + a.y * b.y; }

double DistanceTo(const Segment& s, Point p) {
    const Point span = Minus(s.to, s.from);
    const double square = DotOf(span, span);
    const double t = square > 0 ? std::clamp(DotOf(Minus(p, s.from), span) / square, 0.0, 1.0) : 0;
    const Point away = Minus(p, Along(s.from, t, span));
    return std::hypot(away.x, away.y);
}

void AppendChords(Point a, Point b, Point c, Point d, double tolerance, std::vector<Segment>& out) {
    const double bend =
        std::max(std::hypot(a.x - 2 * b.x + c.x, a.y - 2 * b.y + c.y), std::hypot(b.x - 2 * c.x + d.x, b.y - 2 * c.y + d.y));
    const int steps = std::max(1, static_cast<int>(std::ceil(std::sqrt(0.75 * bend / tolerance))));
    Point last = a;
    for (int i = 1; i <= steps; ++i) {
        const double t = static_cast<double>(i) / steps;
        const double w0 = (1 - t) * (1 - t) * (1 - t), w1 = 3 * (1 - t) * (1 - t) * t, w2 = 3 * (1 - t) * t * t, w3 = t * t * t;
        const Point next = {w0 * a.x + w1 * b.x + w2 * c.x + w3 * d.x, w0 * a.y + w1 * b.y + w2 * c.y + w3 * d.y};
        out.push_back({last, next});
        last = next;
    }
}

std::vector<Segment> WithoutPoints(std::vector<Segment> segments) {
    std::erase_if(segments, [](const Segment& s) { return s.from == s.to; });
    return segments;
}

/// Cuts every segment where another one touches it and keeps the parts with inside on exactly one side, inside on their left.
std::vector<Segment> BoundaryOf(const SegmentField& outline) {
    std::vector<Segment> boundary;
    for (const Segment& s : outline.Segments()) {
        const Point span = Minus(s.to, s.from);
        std::vector<double> cuts = {0, 1};
        outline.ForEachInRows(std::min(s.from.y, s.to.y), std::max(s.from.y, s.to.y), [&](std::size_t j) {
            const Segment& o = outline.Segments()[j];
            const Point other = Minus(o.to, o.from);
            const double parallel = CrossOf(span, other);
            for (const Point p : {o.from, o.to}) {
                const double t = DotOf(Minus(p, s.from), span) / DotOf(span, span);
                if (t > 0 && t < 1 && DistanceTo(s, p) < kSide) cuts.push_back(t);
            }
            if (parallel == 0) return;
            const double t = CrossOf(Minus(o.from, s.from), other) / parallel;
            const double u = CrossOf(Minus(o.from, s.from), span) / parallel;
            if (t > 0 && t < 1 && u >= 0 && u <= 1) cuts.push_back(t);
        });
        std::sort(cuts.begin(), cuts.end());
        const double length = std::hypot(span.x, span.y);
        for (std::size_t i = 0; i + 1 < cuts.size(); ++i) {
            if ((cuts[i + 1] - cuts[i]) * length < 1e-9) continue;
            const Point middle = Along(s.from, 0.5 * (cuts[i] + cuts[i + 1]), span);
            const bool left = outline.Winding(Along(middle, kSide / length, {-span.y, span.x})) != 0;
            const bool right = outline.Winding(Along(middle, kSide / length, {span.y, -span.x})) != 0;
            const Segment part = {Along(s.from, cuts[i], span), Along(s.from, cuts[i + 1], span)};
            if (left && !right) boundary.push_back(part);
            if (right && !left) boundary.push_back({part.to, part.from});
        }
    }
    return boundary;
}

}  // namespace

SegmentField::SegmentField(std::vector<Segment> segments) : segments_(std::move(segments)) {
    if (segments_.empty()) return;
    const auto [low, high] = BuildBox(1, 0, segments_.size());
    const double width = high.x - low.x, height = high.y - low.y;
    top_ = low.y;
    row_height_ = std::max({std::sqrt(width * height / static_cast<double>(segments_.size())), (width + height) / 2000, 1e-3});
    by_row_.resize(static_cast<std::size_t>(height / row_height_) + 1);
    for (std::uint32_t i = 0; i < segments_.size(); ++i) {
        const Segment& s = segments_[i];
        for (std::size_t r = Row(std::min(s.from.y, s.to.y)); r <= Row(std::max(s.from.y, s.to.y)); ++r) by_row_[r].push_back(i);
    }
}

double SegmentField::NearestDistance(Point p) const {
    double nearest = kInfinity;
    if (!segments_.empty()) Search(p, 1, 0, segments_.size(), nearest);
    return nearest;
}

// Node 1 covers all segments, nodes 2 n and 2 n + 1 the first and the second half of what node n covers.
SegmentField::Box SegmentField::BuildBox(std::size_t node, std::size_t begin, std::size_t end) {
    if (boxes_.size() <= node) boxes_.resize(2 * node + 1);
    Box box = {{kInfinity, kInfinity}, {-kInfinity, -kInfinity}};
    const auto add = [&](Point p) {
        box.low = {std::min(box.low.x, p.x), std::min(box.low.y, p.y)};
        box.high = {std::max(box.high.x, p.x), std::max(box.high.y, p.y)};
    };
    if (end - begin <= kLeaf) {
        for (std::size_t i = begin; i < end; ++i) add(segments_[i].from), add(segments_[i].to);
    } else {
        const std::size_t middle = (begin + end) / 2;
        for (const Box& half : {BuildBox(2 * node, begin, middle), BuildBox(2 * node + 1, middle, end)})
            add(half.low), add(half.high);
    }
    return boxes_[node] = box;
}

double SegmentField::DistanceToBox(Point p, std::size_t node) const {
    const Box& box = boxes_[node];
    return std::hypot(std::max({box.low.x - p.x, 0.0, p.x - box.high.x}), std::max({box.low.y - p.y, 0.0, p.y - box.high.y}));
}

void SegmentField::Search(Point p, std::size_t node, std::size_t begin, std::size_t end, double& nearest) const {
    if (end - begin <= kLeaf) {
        for (std::size_t i = begin; i < end; ++i) nearest = std::min(nearest, DistanceTo(segments_[i], p));
        return;
    }
    const std::size_t middle = (begin + end) / 2;
    const double first = DistanceToBox(p, 2 * node);
    const double second = DistanceToBox(p, 2 * node + 1);
    const auto search_first = [&] {
        if (first < nearest) Search(p, 2 * node, begin, middle, nearest);
    };
    if (first <= second) search_first();
    if (second < nearest) Search(p, 2 * node + 1, middle, end, nearest);
    if (first > second) search_first();
}

int SegmentField::Winding(Point p) const {
    if (segments_.empty() || p.y < top_ || p.y > top_ + row_height_ * static_cast<double>(by_row_.size())) return 0;
    int winding = 0;
    for (const std::uint32_t i : by_row_[Row(p.y)]) {
        const Segment& s = segments_[i];
        const double side = CrossOf(Minus(s.to, s.from), Minus(p, s.from));
        if (s.from.y <= p.y && s.to.y > p.y && side > 0) ++winding;
        if (s.to.y <= p.y && s.from.y > p.y && side < 0) --winding;
    }
    return winding;
}

void SegmentField::ForEachInRows(double low, double high, const std::function<void(std::size_t)>& visit) const {
    for (std::size_t r = Row(low); r <= Row(high); ++r) {
        for (const std::uint32_t i : by_row_[r]) visit(i);
    }
}

std::size_t SegmentField::Row(double y) const {
    return static_cast<std::size_t>(std::clamp((y - top_) / row_height_, 0.0, static_cast<double>(by_row_.size() - 1)));
}

FilledRegion::FilledRegion(const PathView& path) : outline_(Chords(path, kSourceTolerance)), boundary_(BoundaryOf(outline_)) {}

double FilledRegion::SignedDistance(Point p) const {
    const double distance = boundary_.NearestDistance(p);
    return outline_.Winding(p) != 0 ? -distance : distance;
}

// A step one way must lead away from the region by nearly as much, and one the other way towards it.
bool FilledRegion::IsSliver(Point p, double distance) const {
    constexpr double kStep = 0.02;
    constexpr int kDirections = 16;
    double furthest = -kInfinity, deepest = kInfinity;
    for (int i = 0; i < kDirections; ++i) {
        const double angle = 2 * std::numbers::pi * i / kDirections;
        const double moved = SignedDistance(Along(p, kStep, {std::cos(angle), std::sin(angle)})) - distance;
        furthest = std::max(furthest, moved);
        deepest = std::min(deepest, moved);
    }
    return furthest < 0.5 * kStep || deepest > -0.5 * kStep;
}

// Every point of the true offset is a boundary point pushed out along its normal, or lies on a circle round a corner. Of these
// candidates the ones that no other boundary point is nearer to are on the offset.
std::vector<Point> FilledRegion::OffsetPoints(double distance) const {
    constexpr int kDirections = 64;
    std::vector<Point> candidates;
    Point last_end{kInfinity, 0}, last_span{};
    for (const Segment& s : boundary_.Segments()) {
        const Point span = Minus(s.to, s.from);
        const double length = std::hypot(span.x, span.y);
        const Point normal = {distance / length * span.y, -distance / length * span.x};
        const int steps = std::max(1, static_cast<int>(length));
        for (int i = 0; i <= steps; ++i) candidates.push_back(Along(Along(s.from, 1.0 * i / steps, span), 1, normal));
        const bool is_corner = std::hypot(last_end.x - s.from.x, last_end.y - s.from.y) > 1e-6 ||
                               std::abs(std::atan2(CrossOf(last_span, span), DotOf(last_span, span))) > 0.02;
        for (int i = 0; is_corner && i < kDirections; ++i) {
            const double angle = 2 * std::numbers::pi * i / kDirections;
            candidates.push_back(Along(s.from, std::abs(distance), {std::cos(angle), std::sin(angle)}));
        }
        last_end = s.to;
        last_span = span;
    }
    std::erase_if(candidates, [&](Point p) { return std::abs(SignedDistance(p) - distance) > 0.001; });
    return candidates;
}

int CountOverlaps(const std::vector<CurveContour>& contours) {
    const SegmentField outline(Chords(contours, 0.005));
    int overlaps = 0;
    for (const Segment& s : outline.Segments()) {
        const Point span = Minus(s.to, s.from);
        const double length = std::hypot(span.x, span.y);
        for (const double side : {-0.06, 0.06}) {
            const Point p = Along(Along(s.from, 0.5, span), side / length, {-span.y, span.x});
            const int winding = outline.Winding(p);
            if ((winding < 0 || winding > 1) && outline.NearestDistance(p) >= 0.01) ++overlaps;
        }
    }
    return overlaps;
}

OffsetErrors MeasureOffset(const PathView& source, double distance, const std::vector<CurveContour>& result) {
    const FilledRegion region(source);
    const SegmentField outline(Chords(result, 0.0005));
    OffsetErrors errors;
    const auto probe = [&](Point p) {
        if (outline.NearestDistance(p) < 0.01) return;
        const int winding = outline.Winding(p);
        const double excess = region.SignedDistance(p) - distance;
        const bool is_misplaced = std::abs(excess) > 0.05 && (winding != 0) != (excess < 0);
        if (winding < 0 || winding > 1 || is_misplaced) ++errors.wrong_windings;
    };
    Point low{kInfinity, kInfinity}, high{-kInfinity, -kInfinity};
    for (const Segment& s : outline.Segments()) {
        low = {std::min(low.x, s.from.x), std::min(low.y, s.from.y)};
        high = {std::max(high.x, s.from.x), std::max(high.y, s.from.y)};
        const Point span = Minus(s.to, s.from);
        const double length = std::hypot(span.x, span.y);
        const int steps = std::max(1, static_cast<int>(length / 2));
        for (int i = 0; i < steps; ++i) {
            const Point p = Along(s.from, (i + 0.5) / steps, span);
            errors.stray = std::max(errors.stray, std::abs(region.SignedDistance(p) - distance));
            probe(Along(p, 0.06 / length, {-span.y, span.x}));
            probe(Along(p, 0.06 / length, {span.y, -span.x}));
        }
    }
    for (const Point p : region.OffsetPoints(distance)) {
        const double missing = outline.NearestDistance(p);
        if (missing > std::max(errors.missing, 0.05) && region.IsSliver(p, distance)) continue;
        errors.missing = std::max(errors.missing, missing);
    }
    std::mt19937 random(1);
    std::uniform_real_distribution<double> unit(-0.05, 1.05);
    for (int i = 0; i < 1000 && low.x < high.x; ++i)
        probe({low.x + unit(random) * (high.x - low.x), low.y + unit(random) * (high.y - low.y)});
    return errors;
}

std::vector<Segment> Chords(const PathView& path, double tolerance) {
    std::vector<Segment> out;
    Point start{}, current{};
    const auto at = [&](std::size_t i) {
        return Point{static_cast<double>(path.points[i].x), static_cast<double>(path.points[i].y)};
    };
    for (std::size_t i = 0; i < path.Size(); ++i) {
        switch (path.operators[i]) {
            case kPIVMove:
                out.push_back({current, start});
                start = current = at(i);
                break;
            case kPIVLine:
                out.push_back({current, at(i)});
                current = at(i);
                break;
            case kPIVCurve:
                AppendChords(current, at(i), at(i + 1), at(i + 2), tolerance, out);
                current = at(i += 2);
                break;
            case kPIVClose:
                out.push_back({current, start});
                current = start;
                break;
        }
    }
    out.push_back({current, start});
    return WithoutPoints(std::move(out));
}

std::vector<Segment> Chords(const std::vector<CurveContour>& contours, double tolerance) {
    std::vector<Segment> out;
    for (const CurveContour& contour : contours) {
        Point current = contour.start;
        for (const refhost::CurveSegment& s : contour.segments) {
            AppendChords(current, s.control1, s.control2, s.end, tolerance, out);
            current = s.end;
        }
    }
    return WithoutPoints(std::move(out));
}
