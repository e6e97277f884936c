#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "refhost/engine/offset.h"

/// Line segments by rows, for plain nearest-segment and winding queries. Slow and simple on purpose: it shares no
/// code with what it judges.
class SegmentField {
 public:
    struct Segment {
        refhost::Point from, to;
    };
    explicit SegmentField(std::vector<Segment> segments);

    const std::vector<Segment>& Segments() const { return segments_; }
    double NearestDistance(refhost::Point p) const;  // infinite without segments
    int Winding(refhost::Point p) const;             // segments taken as closed chains
    /// Every segment in a row that the heights from `low` to `high` touch, some of them more than once.
    void ForEachInRows(double low, double high, const std::function<void(std::size_t)>& visit) const;

 private:
    struct Box {
        refhost::Point low, high;
    };
    static constexpr std::size_t kLeaf = 4;

    Box BuildBox(std::size_t node, std::size_t begin, std::size_t end);
    double DistanceToBox(refhost::Point p, std::size_t node) const;
    void Search(refhost::Point p, std::size_t node, std::size_t begin, std::size_t end, double& nearest) const;
    std::size_t Row(double y) const;

    std::vector<Segment> segments_;
    std::vector<Box> boxes_;  // a binary hierarchy over runs of segments
    double top_ = 0, row_height_ = 1;
    std::vector<std::vector<std::uint32_t>> by_row_;
};

/// The region a path fills (nonzero), as a signed distance field: positive outside, exact to about 0.0005 px.
class FilledRegion {
 public:
    explicit FilledRegion(const refhost::PathView& path);

    double SignedDistance(refhost::Point p) const;
    /// Points at exactly `distance` from the region: the true offset, sampled wherever the outline can generate it.
    std::vector<refhost::Point> OffsetPoints(double distance) const;
    /// Whether the offset at its point `p` only lines a gap or a strip too narrow to matter.
    bool IsSliver(refhost::Point p, double distance) const;

 private:
    SegmentField outline_;   // as given, for the winding
    SegmentField boundary_;  // only what separates inside from outside
};

/// How far a round offset is from the truth. Pixels.
struct OffsetErrors {
    double stray = 0;        // the largest distance of an outline point from the true offset
    double missing = 0;      // the largest distance of a true offset point from the outline
    int wrong_windings = 0;  // probes that wind neither 0 nor 1, or are on the wrong side by more than 0.05 px
};

/// Probes beside the outline, clear of it by 0.01 px or more, around which it winds neither 0 nor 1 times: where it overlaps
/// itself.
int CountOverlaps(const std::vector<refhost::CurveContour>& contours);

OffsetErrors MeasureOffset(const refhost::PathView& source, double distance, const std::vector<refhost::CurveContour>& result);

/// Chords of a path, whose open subpaths are closed, or of contours, within `tolerance` pixels.
std::vector<SegmentField::Segment> Chords(const refhost::PathView& path, double tolerance);
std::vector<SegmentField::Segment> Chords(const std::vector<refhost::CurveContour>& contours, double tolerance);
