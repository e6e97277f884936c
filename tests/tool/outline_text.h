#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "tool/failure.h"
#include "tool/outline.h"
#include "tool/shape_record.h"

namespace vrltool {

/// A number to three decimals, so that rounding in transforms does not show.
inline std::string NumberText(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.3f", value);
    std::string s = text;
    s.erase(s.find_last_not_of('0') + 1);
    if (s.back() == '.') s.pop_back();
    return s == "-0" ? "0" : s;
}

inline std::string PointText(const Point& p) { return NumberText(p.x) + ',' + NumberText(p.y); }

inline std::string SegmentText(const Vertex& from, const Vertex& to) {
    if (from.out == from.anchor && to.in == to.anchor) return " L" + PointText(to.anchor);
    return " C" + PointText(from.out) + ' ' + PointText(to.in) + ' ' + PointText(to.anchor);
}

/// Outlines as path data in absolute lines and cubics; Z closes with a straight segment.
inline std::string PathText(const std::vector<Outline>& outlines) {
    std::string text;
    for (const Outline& outline : outlines) {
        const std::vector<Vertex>& v = outline.vertices;
        text += (text.empty() ? "M" : " M") + PointText(v.front().anchor);
        for (std::size_t i = 1; i < v.size(); ++i) text += SegmentText(v[i - 1], v[i]);
        const std::string closing = SegmentText(v.back(), v.front());
        if (outline.closed) text += (closing[1] == 'C' ? closing : "") + " Z";
    }
    return text;
}

inline std::string PathText(const std::vector<ShapeRecord>& records) {
    std::vector<Outline> outlines;
    for (const ShapeRecord& record : records) outlines.push_back(OutlineOf(*record.shape));
    return PathText(outlines);
}

/// The text of the failure `work` ends with; empty when it does not fail.
template <class Work>
std::string FailureOf(Work work) {
    try {
        work();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "";
}

}  // namespace vrltool
