#include "fit/derived_chain.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <span>

namespace {

constexpr std::int32_t kFewestCentres = 3;  // below this there is no line to move points to
constexpr std::int32_t kNoPiece = 0;        // the first entry of the pieces stands for none
constexpr float kSameCoordinate = 1e-6F;    // pixels
constexpr float kShortestPiece = 1e-6F;     // squared pixels; below it a piece is one point

CFPoint Middle(CFPoint a, CFPoint b) { return (a + b) * 0.5F; }

/// The point of the line from `a` to `b` closest to `point`.
CFPoint Project(CFPoint point, CFPoint a, CFPoint b) {
    const CFPoint chord = b - a, offset = point - a;  // exact, for the multiples of 1/4 that pieces end on
    const float squared = chord.x * chord.x + chord.y * chord.y;
    const float along = offset.x * chord.x + offset.y * chord.y;
    const float share = std::min(std::max(along / squared, 0.0F), 1.0F);
    return a + chord * (squared < kShortestPiece ? 0.0F : share);
}

}  // namespace

ts::auto_ptr<CFSegment> CFDerivedChainBuilder::Build(const CFMappedSegment& centres) {
    piece_ids_.assign(static_cast<std::size_t>(centres.Count()), kNoPiece);
    pieces_.resize(kNoPiece + 1);
    if (centres.Count() >= kFewestCentres) {
        ClassifySteps(centres);
        CutPieces(centres);
        JoinPieces();
    }
    const CFSegment& raw = centres.Source();
    return ts::make_auto<CFSegment>(raw.Count(), kSpacingDerived, kChainClosed, [&, k = 0]() mutable {
        const CFPoint position = Position({raw.X()[k], raw.Y()[k]}, centres.Mapping().Centre(k));
        ++k;
        return position;
    });
}

// Outlines turn where no processor foresees it, so the passes over their points are free of jumps.

/// The step that closes the chain is not looked at. A step across the one before it starts as neither, but becomes part of
/// what follows when the next step goes on from it; so does a slanting step.
void CFDerivedChainBuilder::ClassifySteps(const CFSegment& centres) {
    const auto count = static_cast<std::size_t>(centres.Count());
    steps_.resize(count);
    const float* const xs = centres.X();
    const float* const ys = centres.Y();
    Step* const steps = steps_.data();
    for (std::size_t i = 1; i < count; ++i) {
        const float across = std::abs(xs[i] - xs[i - 1]), down = std::abs(ys[i] - ys[i - 1]);
        const bool level = std::max(std::abs(across - 1.0F), down) <= kSameCoordinate;
        const bool upright = std::max(across, std::abs(down - 1.0F)) <= kSameCoordinate;
        steps[i - 1] = static_cast<Step>((level ? kLevel : kOther) | (upright ? kUpright : kOther));
    }
    Step before = kOther;
    for (std::size_t i = 1; i < count; ++i) {
        const Step step = steps[i - 1];
        const Step kept = (step | before) == (kLevel | kUpright) ? kOther : step;
        steps[i - 1] = kept == kOther ? before : kept;
        before = kept;
    }
    steps_.back() = before;
}

/// Cuts the chain at its first point and wherever the class of the step changes, in the middle when it never does; and further
/// where a level run changes its y or an upright one its x.
void CFDerivedChainBuilder::CutPieces(const CFSegment& centres) {
    const std::int32_t count = centres.Count();
    const bool is_one_run = std::adjacent_find(steps_.begin(), steps_.end(), std::not_equal_to()) == steps_.end();
    const std::int32_t middle = is_one_run ? count / 2 : 0;
    pieces_.resize(static_cast<std::size_t>(count) + 1);
    std::int32_t met = 0;
    Step before = kOther;
    CFPoint last;
    for (std::int32_t i = 0; i < count; ++i) {
        const Step step = steps_[static_cast<std::size_t>(i)];
        const CFPoint point{centres.X()[i], centres.Y()[i]};
        const float aside = std::abs(step == kLevel ? point.y - last.y : point.x - last.x);
        const int cuts = int{step != before} + int{aside >= kSameCoordinate} + int{i == middle} + int{i == 0};
        const bool is_in_piece = step != kOther;
        met += cuts > 0 && is_in_piece ? 1 : 0;
        const std::int32_t id = is_in_piece ? met : kNoPiece;
        Piece& piece = pieces_[static_cast<std::size_t>(id)];
        piece.start = cuts > 0 ? point : piece.start;
        piece.end = point;
        piece_ids_[static_cast<std::size_t>(i)] = id;
        before = step;
        last = point;
    }
    pieces_.resize(static_cast<std::size_t>(met) + 1);
}

void CFDerivedChainBuilder::JoinPieces() {
    if (pieces_.size() <= 2) return;
    Piece* before = &pieces_.back();
    for (Piece& piece : std::span(pieces_).subspan(1)) {
        before->end = piece.start = Middle(before->end, piece.start);
        before = &piece;
    }
}

CFPoint CFDerivedChainBuilder::Position(CFPoint raw, std::int32_t centre) const {
    const std::int32_t id = piece_ids_[static_cast<std::size_t>(centre)];
    const Piece& piece = pieces_[static_cast<std::size_t>(id)];
    const CFPoint projected = Project(raw, piece.start, piece.end);  // without a piece too, so as not to jump
    return {id == kNoPiece ? raw.x : projected.x, id == kNoPiece ? raw.y : projected.y};
}
