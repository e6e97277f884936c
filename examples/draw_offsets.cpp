// Draws ten difficult outlines with their offsets, one SVG file, to look at:
//
//     draw_offsets > offsets.svg        (and, for a bitmap, rsvg-convert offsets.svg -o offsets.png)
//
// Grey is the region, blue the outlines grown and red those shrunk by several distances, dots are the offsets' vertices.

#include <cstdio>
#include <vector>

#include "refhost/engine/offset.h"
#include "tests/support/outlines.h"

namespace {

using refhost::OffsetJoin;
using support::Outline;

constexpr double kCell = 460;  // pixels of the drawing per outline, either way

struct Picture {
    const char* title;
    Outline path;
    double left, top, extent;  // what the cell shows
    OffsetJoin join;
    std::vector<double> distances;
};

std::vector<Picture> Pictures() {
    using namespace support;
    const auto round = OffsetJoin::kRound;
    return {
        {"letter, round", Letter(), -40, -40, 300, round, {3, 10, 25, -3, -8}},
        {"letter, miter", Letter(), -40, -40, 300, OffsetJoin::kMiter, {3, 10, 25, -3, -8}},
        {"letter, bevel", Letter(), -40, -40, 300, OffsetJoin::kBevel, {3, 10, 25, -3, -8}},
        {"sharp star, miter", Star(9, 100, 30), -150, -150, 300, OffsetJoin::kMiter, {4, 20, -4, -9}},
        {"spikes", Star(40, 150, 120), -200, -200, 400, round, {5, 40, -5, -40}},
        {"cusps and loops", CuspsAndLoops(), -40, -40, 370, round, {2, 8, 25, -2, -8, -20}},
        {"scribble", Scribble(30, 200, 7), -50, -60, 310, round, {1, 5, 25, -1, -5}},
        {"bays and necks",
         Smooth({{-100, -60},
                 {-40, -90},
                 {0, -30},
                 {40, -90},
                 {110, -40},
                 {60, 0},
                 {10, 4},
                 {-20, 40},
                 {30, 90},
                 {110, 60},
                 {100, 110},
                 {0, 125},
                 {-90, 90},
                 {-60, 20}}),
         -170,
         -150,
         340,
         round,
         {4, 11, 22, 40, -4, -9, -22}},
        {"traced", Traced(200, 9), -80, -80, 160, round, {1, 4, 20, -1, -4, -20}},
        {"circle from outside to its centre", Circle(0, 0, 80), -130, -130, 260, round, {20, 40, -20, -40, -60, -79}},
    };
}

void DrawPath(const Outline& path) {
    std::printf("<path fill=\"#ccc\" stroke=\"none\" d=\"");
    for (std::size_t i = 0; i < path.points.size(); ++i) {
        const auto at = [&](std::size_t k) {
            std::printf("%.3f,%.3f ", static_cast<double>(path.points[k].x), static_cast<double>(path.points[k].y));
        };
        switch (path.operators[i]) {
            case kPIVMove:
                std::printf("M"), at(i);
                break;
            case kPIVLine:
                std::printf("L"), at(i);
                break;
            case kPIVCurve:
                std::printf("C"), at(i), at(i + 1), at(i + 2), i += 2;
                break;
            case kPIVClose:
                std::printf("Z ");
                break;
        }
    }
    std::printf("\"/>\n");
}

void DrawContours(const std::vector<refhost::CurveContour>& contours, const char* colour, double pixel) {
    std::printf("<path fill=\"none\" stroke=\"%s\" stroke-width=\"%.4f\" d=\"", colour, 0.8 * pixel);
    for (const refhost::CurveContour& contour : contours) {
        std::printf("M%.4f,%.4f ", contour.start.x, contour.start.y);
        for (const refhost::CurveSegment& s : contour.segments) {
            std::printf("C%.4f,%.4f %.4f,%.4f %.4f,%.4f ", s.control1.x, s.control1.y, s.control2.x, s.control2.y, s.end.x,
                        s.end.y);
        }
        std::printf("Z ");
    }
    std::printf("\"/>\n");
    for (const refhost::CurveContour& contour : contours) {
        for (const refhost::CurveSegment& s : contour.segments) {
            std::printf("<circle cx=\"%.3f\" cy=\"%.3f\" r=\"%.4f\" fill=\"%s\"/>\n", s.end.x, s.end.y, 1.4 * pixel, colour);
        }
    }
}

void Draw(const Picture& picture, double x, double y) {
    std::printf("<svg x=\"%g\" y=\"%g\" width=\"%g\" height=\"%g\" viewBox=\"%g %g %g %g\">\n", x, y, kCell, kCell, picture.left,
                picture.top, picture.extent, picture.extent);
    DrawPath(picture.path);
    const double pixel = picture.extent / kCell;
    for (const double distance : picture.distances) {
        DrawContours(refhost::OffsetOutline(picture.path.View(), distance, picture.join, 4), distance > 0 ? "#06c" : "#c20",
                     pixel);
    }
    std::printf("</svg>\n<text x=\"%g\" y=\"%g\" font-size=\"14\">%s</text>\n", x + 8, y + 18, picture.title);
}

}  // namespace

int main() {
    constexpr int kColumns = 5;
    const std::vector<Picture> pictures = Pictures();
    const int rows = (static_cast<int>(pictures.size()) + kColumns - 1) / kColumns;
    std::printf("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%g\" height=\"%g\" style=\"background:#fff\">\n",
                kCell * kColumns, kCell * rows);
    std::printf("<rect width=\"100%%\" height=\"100%%\" fill=\"#fff\"/>\n");
    int index = 0;
    for (const Picture& picture : pictures) {
        Draw(picture, kCell * (index % kColumns), kCell * (index / kColumns));
        ++index;
    }
    std::printf("</svg>\n");
}
