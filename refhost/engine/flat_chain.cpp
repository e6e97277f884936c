#include "refhost/engine/flat_chain.h"

#include <cmath>

#include "refhost/engine/coincidence.h"
#include "refhost/engine/parallel_curve.h"

namespace refhost {
namespace {

constexpr int kChordRounds = 16;
constexpr double kChordSettled = 1e-4;  // pixels along the chord

FlatChain Cut(const FlatChain& flat, std::span<const Touch> touches);
std::int32_t RoundedDown(double value);

/// Adds the segments of one piece after the other.
class Flattener {
 public:
    Flattener(const OffsetChain& chain, double tolerance) : chain_(chain), tolerance_(tolerance) {}

    FlatChain Flatten(std::span<const Arc> arcs);

 private:
    void AppendArc(const Arc& arc, GridPoint end);
    void AppendEvenly(const Cubic& curve);
    void AppendAdaptively(const Cubic& curve, double distance);
    void LineTo(GridPoint to, double share);

    const OffsetChain& chain_;
    double tolerance_;
    FlatChain flat_;
    GridPoint last_{};
    Arc arc_{};
    SegmentSource source_{};
    std::vector<ParallelSample> samples_;
};

}  // namespace

FlatChain Flatten(const OffsetChain& chain, std::span<const Arc> arcs, double tolerance) {
    return Flattener(chain, tolerance).Flatten(arcs);
}

void AlignTouchingSides(const OffsetChain& chain, double tolerance, double nearness, FlatChain& flat) {
    std::vector<std::uint32_t> candidates;
    for (std::uint32_t i = 0; i < flat.segments.size(); ++i) {
        if (!flat.sources[i].lone) candidates.push_back(i);
    }
    if (candidates.empty()) return;
    const std::vector<Touch> touches =
        FindTouches(flat.segments, candidates, (tolerance + nearness) * kGridUnitsPerPixel, [&](std::uint32_t i, GridPoint p) {
            const double t = ParameterAt(chain, flat, i, p);
            return Distance(chain.pieces[flat.sources[i].piece].At(t), FromGrid(p)) <= nearness ? t : -1;
        });
    if (!touches.empty()) flat = Cut(flat, touches);
}

// The speed of a parallel changes quickly near a cusp, so the share of the chord is only the first guess; false position, halving
// the value of the end that stays, finds the parameter.
double ParameterAt(const OffsetChain& chain, const FlatChain& flat, std::uint32_t segment, GridPoint p) {
    const GridSegment& s = flat.segments[segment];
    const SegmentSource& source = flat.sources[segment];
    if (p == s.from) return source.from;
    if (p == s.to) return source.to;
    const ChainPiece& piece = chain.pieces[source.piece];
    const Point target = FromGrid(p);
    const Point span = FromGrid(s.to) - FromGrid(s.from);
    double low = source.from, high = source.to;
    double short_of = Dot(FromGrid(s.from) - target, span);  // negative at `low`
    double beyond = Dot(FromGrid(s.to) - target, span);      // positive at `high`
    const double settled = kChordSettled * Length(span);
    double t = low + (high - low) * std::clamp(short_of / (short_of - beyond), 0.0, 1.0);
    for (int round = 0; round < kChordRounds && !piece.straight; ++round) {
        const double ahead = Dot(piece.At(t) - target, span);
        if (std::abs(ahead) < settled) break;
        if (ahead < 0) {
            low = t;
            short_of = ahead;
            beyond *= 0.5;
        } else {
            high = t;
            beyond = ahead;
            short_of *= 0.5;
        }
        t = low + (high - low) * std::clamp(short_of / (short_of - beyond), 0.0, 1.0);
    }
    return t;
}

GridPoint ToGrid(Point p) { return {RoundedDown(p.x * kGridUnitsPerPixel + 0.5), RoundedDown(p.y * kGridUnitsPerPixel + 0.5)}; }

namespace {

FlatChain Cut(const FlatChain& flat, std::span<const Touch> touches) {
    FlatChain result;
    result.segments.reserve(flat.segments.size() + touches.size());
    result.sources.reserve(flat.segments.size() + touches.size());
    auto touch = touches.begin();
    for (std::uint32_t i = 0; i < flat.segments.size(); ++i) {
        GridSegment rest = flat.segments[i];
        SegmentSource source = flat.sources[i];
        for (; touch != touches.end() && touch->segment == i; ++touch) {
            if (touch->at == rest.from || touch->at == rest.to) continue;
            result.segments.push_back({rest.from, touch->at});
            result.sources.push_back({source.piece, source.scaffold, false, source.from, touch->parameter});
            rest.from = touch->at;
            source.from = touch->parameter;
        }
        result.segments.push_back(rest);
        result.sources.push_back(source);
    }
    return result;
}

// The library's own floor is a call where the processor has no instruction for it.
std::int32_t RoundedDown(double value) {
    const auto truncated = static_cast<std::int32_t>(value);
    return truncated - (truncated > value);
}

// A piece ends where the next one starts, so that loops close exactly even where two ends differ a little.
FlatChain Flattener::Flatten(std::span<const Arc> arcs) {
    flat_.segments.reserve(6 * arcs.size());
    flat_.sources.reserve(6 * arcs.size());
    const auto start_of = [&](const Arc& arc) { return ToGrid(chain_.pieces[arc.piece].At(arc.from)); };
    std::size_t i = 0;
    for (const std::size_t loop_end : chain_.loop_ends) {
        const GridPoint first = start_of(arcs[i]);
        last_ = first;
        for (; i < arcs.size() && arcs[i].piece < loop_end; ++i) {
            const bool ends_loop = i + 1 == arcs.size() || arcs[i + 1].piece >= loop_end;
            AppendArc(arcs[i], ends_loop ? first : start_of(arcs[i + 1]));
        }
    }
    return std::move(flat_);
}

void Flattener::AppendArc(const Arc& arc, GridPoint end) {
    const ChainPiece& piece = chain_.pieces[arc.piece];
    const std::size_t begin = flat_.segments.size();
    arc_ = arc;
    source_ = {arc.piece, piece.scaffold, arc.lone, arc.from, arc.from};
    if (!piece.straight && !arc.lone) {
        const Cubic curve = SubCurve(piece.curve, arc.from, arc.to);
        if (piece.distance == 0 && IsCalm(curve)) {
            AppendEvenly(curve);
        } else {
            AppendAdaptively(curve, piece.distance);
        }
    }
    LineTo(end, 1);
    if (flat_.segments.size() > begin) flat_.sources.back().to = arc.to;
}

void Flattener::AppendEvenly(const Cubic& curve) {
    const int steps = StepCount(curve, tolerance_);
    for (int k = 1; k < steps; ++k) {
        const double share = static_cast<double>(k) / steps;
        LineTo(ToGrid(Evaluate(curve, share)), share);
    }
}

// Also for wild curves: a hook at the end of one, however small, decides which way the outline turns there.
void Flattener::AppendAdaptively(const Cubic& curve, double distance) {
    samples_.clear();
    SampleClampedParallel(curve, distance, tolerance_, samples_);
    for (std::size_t i = 1; i < samples_.size(); ++i) {
        source_.scaffold = samples_[i - 1].is_clamped || samples_[i].is_clamped;
        if (i + 1 < samples_.size()) LineTo(ToGrid(samples_[i].position), samples_[i].t);
    }
}

// To a point at a share of the arc.
void Flattener::LineTo(GridPoint to, double share) {
    if (to == last_) return;
    const double parameter = arc_.from + share * (arc_.to - arc_.from);
    source_.to = parameter;
    flat_.segments.push_back({last_, to});
    flat_.sources.push_back(source_);
    last_ = to;
    source_.from = parameter;
}

}  // namespace
}  // namespace refhost
