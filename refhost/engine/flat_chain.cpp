#include "refhost/engine/flat_chain.h"

#include <cmath>

#include "refhost/engine/parallel_curve.h"

namespace refhost {
namespace {

std::int32_t RoundedDown(double value);

/// Adds the segments of one piece after the other.
class Flattener {
 public:
    Flattener(const OffsetChain& chain, double tolerance) : chain_(chain), tolerance_(tolerance) {}

    FlatChain Flatten();

 private:
    void AppendPiece(std::uint32_t index, GridPoint end);
    void AppendEvenly(const Cubic& curve);
    void AppendAdaptively(const ChainPiece& piece);
    void LineTo(GridPoint to, double parameter);

    const OffsetChain& chain_;
    double tolerance_;
    FlatChain flat_;
    GridPoint last_{};
    SegmentSource source_{};
    std::vector<ParallelSample> samples_;
};

}  // namespace

FlatChain Flatten(const OffsetChain& chain, double tolerance) { return Flattener(chain, tolerance).Flatten(); }

GridPoint ToGrid(Point p) { return {RoundedDown(p.x * kGridUnitsPerPixel + 0.5), RoundedDown(p.y * kGridUnitsPerPixel + 0.5)}; }

namespace {

// The library's own floor is a call where the processor has no instruction for it.
std::int32_t RoundedDown(double value) {
    const auto truncated = static_cast<std::int32_t>(value);
    return truncated - (truncated > value);
}

// A piece ends where the next one starts, so that loops close exactly even where two ends differ a little.
FlatChain Flattener::Flatten() {
    flat_.segments.reserve(6 * chain_.pieces.size());
    flat_.sources.reserve(6 * chain_.pieces.size());
    std::uint32_t index = 0;
    for (std::size_t loop = 0; loop < chain_.LoopCount(); ++loop) {
        const GridPoint first = ToGrid(chain_.pieces[index].Start());
        last_ = first;
        for (; index < chain_.loop_ends[loop]; ++index) {
            AppendPiece(index, index + 1 < chain_.loop_ends[loop] ? ToGrid(chain_.pieces[index + 1].Start()) : first);
        }
    }
    return std::move(flat_);
}

void Flattener::AppendPiece(std::uint32_t index, GridPoint end) {
    const ChainPiece& piece = chain_.pieces[index];
    const std::size_t begin = flat_.segments.size();
    source_ = {index, piece.scaffold, 0, 0};
    const bool is_chord = piece.straight || piece.lone;
    if (!is_chord && piece.distance == 0 && IsCalm(piece.curve)) {
        AppendEvenly(piece.curve);
    } else if (!is_chord) {
        AppendAdaptively(piece);
    }
    LineTo(end, 1);
    if (flat_.segments.size() > begin) flat_.sources.back().to = 1;
}

void Flattener::AppendEvenly(const Cubic& curve) {
    const int steps = StepCount(curve, tolerance_);
    for (int k = 1; k < steps; ++k) {
        const double t = static_cast<double>(k) / steps;
        LineTo(ToGrid(Evaluate(curve, t)), t);
    }
}

// Also for wild curves: a hook at the end of one, however small, decides which way the outline turns there.
void Flattener::AppendAdaptively(const ChainPiece& piece) {
    samples_.clear();
    SampleClampedParallel(piece.curve, piece.distance, tolerance_, samples_);
    for (std::size_t i = 1; i < samples_.size(); ++i) {
        source_.scaffold = samples_[i - 1].is_clamped || samples_[i].is_clamped;
        if (i + 1 < samples_.size()) LineTo(ToGrid(samples_[i].position), samples_[i].t);
    }
}

void Flattener::LineTo(GridPoint to, double parameter) {
    if (to == last_) return;
    source_.to = parameter;
    flat_.segments.push_back({last_, to});
    flat_.sources.push_back(source_);
    last_ = to;
    source_.from = parameter;
}

}  // namespace
}  // namespace refhost
