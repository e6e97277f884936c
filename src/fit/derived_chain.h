#pragma once

#include <cstdint>
#include <vector>

#include "base/owner.h"
#include "fit/mapped_segment.h"

/// Moves the points of outlines off the stair steps of the pixel grid: where the chain of pixel centres runs level or upright
/// the outline's points are projected onto lines joined from one such stretch to the next. One builder serves many outlines
/// and keeps its working storage.
class CFDerivedChainBuilder {
 public:
    /// A closed chain with one point for each point of the outline of `centres`.
    ts::auto_ptr<CFSegment> Build(const CFMappedSegment& centres);

 private:
    enum Step : std::uint8_t { kOther = 0, kLevel = 1, kUpright = 2 };  // one bit each
    struct Piece {
        CFPoint start, end;
    };

    void ClassifySteps(const CFSegment& centres);
    void CutPieces(const CFSegment& centres);
    void JoinPieces();
    CFPoint Position(CFPoint raw, std::int32_t centre) const;

    std::vector<Step> steps_;              // by centre, the step that leads to it
    std::vector<Piece> pieces_;            // in chain order, behind one that is none
    std::vector<std::int32_t> piece_ids_;  // by centre, the index into pieces_
};
