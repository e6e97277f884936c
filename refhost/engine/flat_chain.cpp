#include "refhost/engine/flat_chain.h"

#include <cmath>

namespace refhost {
namespace {

void AppendPiece(const Cubic& curve, int steps, GridPoint end, std::uint32_t index, FlatChain& flat);
void AppendSegment(GridPoint to, double parameter, GridPoint& last, SegmentSource& source, FlatChain& flat);

}  // namespace

FlatChain Flatten(const Outline& chain, double tolerance) {
    FlatChain flat;
    flat.segments.reserve(6 * chain.pieces.size());
    flat.sources.reserve(6 * chain.pieces.size());
    std::uint32_t index = 0;
    for (std::size_t loop = 0; loop < chain.LoopCount(); ++loop) {
        for (; index < chain.loop_ends[loop]; ++index) {
            const CurvePiece& piece = chain.pieces[index];
            const std::size_t next = index + 1 < chain.loop_ends[loop] ? index + 1 : chain.LoopBegin(loop);
            // The next piece's start, so that the loop closes exactly even where the two differ in the last bit.
            const GridPoint end = ToGrid(chain.pieces[next].curve.p0);
            AppendPiece(piece.curve, piece.straight ? 1 : StepCount(piece.curve, tolerance), end, index, flat);
        }
    }
    return flat;
}

GridPoint ToGrid(Point p) {
    return {static_cast<std::int32_t>(std::lround(p.x * kGridUnitsPerPixel)), static_cast<std::int32_t>(std::lround(p.y * kGridUnitsPerPixel))};
}

namespace {

void AppendPiece(const Cubic& curve, int steps, GridPoint end, std::uint32_t index, FlatChain& flat) {
    const std::size_t begin = flat.segments.size();
    GridPoint last = ToGrid(curve.p0);
    SegmentSource source = {index, 0, 0};
    for (int k = 1; k < steps; ++k) {
        const double t = static_cast<double>(k) / steps;
        AppendSegment(ToGrid(Evaluate(curve, t)), t, last, source, flat);
    }
    AppendSegment(end, 1, last, source, flat);
    if (flat.segments.size() > begin) flat.sources.back().to = 1;
}

void AppendSegment(GridPoint to, double parameter, GridPoint& last, SegmentSource& source, FlatChain& flat) {
    if (to == last) return;
    source.to = parameter;
    flat.segments.push_back({last, to});
    flat.sources.push_back(source);
    last = to;
    source.from = parameter;
}

}  // namespace
}  // namespace refhost
