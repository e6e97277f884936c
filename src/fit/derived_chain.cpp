#include "fit/derived_chain.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::int32_t kFewestCentres = 3;  // below this there is no line to move points to
constexpr std::int32_t kNoPiece = -1;
constexpr float kSameCoordinate = 1e-6F;  // pixels
constexpr float kShortestPiece = 1e-6F;   // squared pixels; below it a piece is one point

bool IsZero(float value) { return std::abs(value) <= kSameCoordinate; }
bool IsUnit(float value) { return IsZero(std::abs(value) - 1.0F); }

CFPoint Middle(CFPoint a, CFPoint b) { return (a + b) * 0.5F; }

/// The point of the line from `a` to `b` closest to `point`.
CFPoint Project(CFPoint point, CFPoint a, CFPoint b) {
    const CFPoint chord = b - a, offset = point - a;  // exact, for the multiples of 1/4 that pieces end on
    const float squared = chord.x * chord.x + chord.y * chord.y;
    if (squared < kShortestPiece) return a;
    const float along = offset.x * chord.x + offset.y * chord.y;
    return a + chord * std::clamp(along / squared, 0.0F, 1.0F);
}

}  // namespace

ts::auto_ptr<CFSegment> CFDerivedChainBuilder::Build(const CFMappedSegment& centres) {
    pieces_.clear();
    piece_ids_.assign(static_cast<std::size_t>(centres.Count()), kNoPiece);
    if (centres.Count() >= kFewestCentres) {
        ClassifySteps(centres);
        CutRuns(centres);
        JoinPieces();
    }
    const CFSegment& raw = centres.Source();
    auto derived = ts::make_auto<CFSegment>(raw.Count(), kSpacingDerived, kChainClosed);
    for (std::int32_t k = 0; k < raw.Count(); ++k) {
        derived->SetPoint(k, Position({raw.X()[k], raw.Y()[k]}, centres.Mapping().Centre(k)));
    }
    return derived;
}

/// The step that closes the chain is not looked at. A step across the one before it starts as neither, but becomes part of
/// what follows when the next step goes on from it; so does a slanting step.
void CFDerivedChainBuilder::ClassifySteps(const CFSegment& centres) {
    steps_.assign(static_cast<std::size_t>(centres.Count()), Step::kOther);
    for (std::int32_t i = 1; i < centres.Count(); ++i) {
        const float dx = centres.X()[i] - centres.X()[i - 1], dy = centres.Y()[i] - centres.Y()[i - 1];
        const bool level = IsUnit(dx) && IsZero(dy), upright = IsZero(dx) && IsUnit(dy);
        if (!level && !upright) continue;
        Step& before = steps_[static_cast<std::size_t>(i) - 1];
        if (before == (level ? Step::kUpright : Step::kLevel)) continue;
        before = steps_[static_cast<std::size_t>(i)] = level ? Step::kLevel : Step::kUpright;
    }
}

/// Cuts the chain at its first point and wherever the class of the step changes; in the middle when it never does.
void CFDerivedChainBuilder::CutRuns(const CFSegment& centres) {
    const std::int32_t count = centres.Count();
    std::int32_t first = 0;
    for (std::int32_t i = 1; i < count; ++i) {
        if (steps_[static_cast<std::size_t>(i)] == steps_[static_cast<std::size_t>(first)]) continue;
        CutPieces(centres, first, i);
        first = i;
    }
    if (first == 0) {
        CutPieces(centres, 0, count / 2);
        first = count / 2;
    }
    CutPieces(centres, first, count);
}

/// Cuts the run of centres `first` to `end` - 1 where a level run changes its y or an upright one its x.
void CFDerivedChainBuilder::CutPieces(const CFSegment& centres, std::int32_t first, std::int32_t end) {
    const Step step = steps_[static_cast<std::size_t>(first)];
    if (step == Step::kOther) return;
    const float* across = step == Step::kLevel ? centres.Y() : centres.X();
    for (std::int32_t i = first + 1; i < end; ++i) {
        if (std::abs(across[i] - across[i - 1]) < kSameCoordinate) continue;
        AddPiece(centres, first, i);
        first = i;
    }
    AddPiece(centres, first, end);
}

void CFDerivedChainBuilder::AddPiece(const CFSegment& centres, std::int32_t first, std::int32_t end) {
    const auto id = static_cast<std::int32_t>(pieces_.size());
    std::fill(piece_ids_.begin() + first, piece_ids_.begin() + end, id);
    pieces_.push_back({{centres.X()[first], centres.Y()[first]}, {centres.X()[end - 1], centres.Y()[end - 1]}});
}

void CFDerivedChainBuilder::JoinPieces() {
    if (pieces_.size() < 2) return;
    Piece* before = &pieces_.back();
    for (Piece& piece : pieces_) {
        before->end = piece.start = Middle(before->end, piece.start);
        before = &piece;
    }
}

CFPoint CFDerivedChainBuilder::Position(CFPoint raw, std::int32_t centre) const {
    const std::int32_t id = piece_ids_[static_cast<std::size_t>(centre)];
    if (id == kNoPiece) return raw;
    const Piece& piece = pieces_[static_cast<std::size_t>(id)];
    return Project(raw, piece.start, piece.end);
}
