// Fits curves to a list of points and draws both, one SVG file:
//
//     fit_points <points.txt> <tolerance> <corner angle> > curves.svg
//
// The text file has a point on every line: x and y in pixels, y down. Points that go from one to the next in unit steps along
// the axes, and from the last to the first, are the outline of a set of pixels, which lies on their right: they are fitted as a
// closed outline, in two passes. Any other points are fitted as an open line whose ends are its only corners besides those that
// turn by more than the corner angle. The tolerance is in pixels, the angle in degrees.
//
// Grey are the points, red the curves with their handles, squares are corners and dots smooth anchors.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "fit/outline_preparation.h"
#include "fit/path_generator.h"
#include "fit/spline_result.h"

namespace {

constexpr std::int32_t kHalfWidth = 16;  // points looked at on either side

struct Options {
    std::string file;
    float tolerance, corner_angle;
};

Options ReadOptions(int count, char** arguments);
std::vector<CFPoint> ReadPoints(const std::string& file);
bool IsPixelOutline(const std::vector<CFPoint>& points);
RPPath FitOutline(const std::vector<CFPoint>& points, const Options& options);
RPPath FitLine(const std::vector<CFPoint>& points, const Options& options);
void Draw(const std::vector<CFPoint>& points, const RPPath& path);

CFSegment ChainOf(const std::vector<CFPoint>& points, std::int32_t spacing, std::int32_t type) {
    CFSegment chain(static_cast<std::int32_t>(points.size()), spacing, type);
    for (std::int32_t i = 0; i < chain.Count(); ++i) chain.SetPoint(i, points[static_cast<std::size_t>(i)]);
    return chain;
}

}  // namespace

int main(int count, char** arguments) {
    try {
        const Options options = ReadOptions(count, arguments);
        const std::vector<CFPoint> points = ReadPoints(options.file);
        const RPPath path = IsPixelOutline(points) ? FitOutline(points, options) : FitLine(points, options);
        Draw(points, path);
        std::fprintf(stderr, "%zu points, %zu curves\n", points.size(), path.anchors.size() - (path.closed ? 0 : 1));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "fit_points: %s\n", error.what());
    } catch (int code) {
        std::fprintf(stderr, "fit_points: the points cannot be fitted (code %d)\n", code);
    }
    return 1;
}

namespace {

float ReadNumber(const char* text, const char* name) {
    std::istringstream stream(text);
    float value = 0;
    if (!(stream >> value) || !stream.eof() || !(value > 0)) {
        throw std::runtime_error(std::string(name) + ": a number above 0 is needed, not '" + text + "'");
    }
    return value;
}

Options ReadOptions(int count, char** arguments) {
    if (count != 4) throw std::runtime_error("usage: fit_points <points.txt> <tolerance> <corner angle>");
    return {arguments[1], ReadNumber(arguments[2], "tolerance"), ReadNumber(arguments[3], "corner angle")};
}

std::vector<CFPoint> ReadPoints(const std::string& file) {
    std::ifstream stream(file);
    if (!stream) throw std::runtime_error("cannot read " + file);
    std::vector<CFPoint> points;
    std::string line;
    for (int number = 1; std::getline(stream, line); ++number) {
        if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
        std::istringstream fields(line);
        CFPoint point;
        if (!(fields >> point.x >> point.y) || !(fields >> std::ws).eof()) {
            throw std::runtime_error(file + ", line " + std::to_string(number) + ": two numbers are needed, not '" + line + "'");
        }
        points.push_back(point);
    }
    if (points.size() < 2) throw std::runtime_error(file + ": at least two points are needed");
    return points;
}

bool IsPixelOutline(const std::vector<CFPoint>& points) {
    for (std::size_t i = 0; i < points.size(); ++i) {
        const CFPoint step = points[(i + 1) % points.size()] - points[i];
        if (std::abs(step.x) + std::abs(step.y) != 1.0F || (step.x != 0.0F && step.y != 0.0F)) return false;
    }
    return true;
}

RPPath FitOutline(const std::vector<CFPoint>& points, const Options& options) {
    const CFSegment raw = ChainOf(points, kSpacingUnitSteps, kChainClosed);
    CFPreparedChain prepared;
    const CFOutlineEdge edge{&raw, false, &prepared};
    CFOutlinePreparer().Prepare({&edge, 1});
    ts::auto_ptr<RPPath> path;
    KVPathGenerator generator(options.tolerance, options.corner_angle, kHalfWidth);
    generator.FitEdge({raw, *prepared.derived, *prepared.ranking}, path);
    return *path;
}

RPPath FitLine(const std::vector<CFPoint>& points, const Options& options) {
    const CFSegment chain = ChainOf(points, kSpacingGeneral, kChainOpen);
    const CFRanking ranking(chain.Count());  // no scores: spans are cut in the middle
    CFAnchorSet anchors(chain, ranking);
    CFLinTest(options.corner_angle, kHalfWidth).TestAll(CFWindow(chain, WholeBound(chain)), anchors);

    const CFQuadEstimator estimator(kHalfWidth);
    const CFEvalCheck check(options.tolerance);
    CF1CurveFitter fitter(options.tolerance, &estimator, &check);
    CFSplineResult curves;
    fitter.Fit(anchors, curves);
    CFMergeRemover(fitter).Remove(curves, true);
    return RPPath(curves);
}

double Wide(float value) { return static_cast<double>(value); }

void DrawPoints(const std::vector<CFPoint>& points, bool closed, double pixel) {
    std::printf("<path fill=\"%s\" stroke=\"#999\" stroke-width=\"%.3f\" d=\"M", closed ? "#ddd" : "none", 1.2 * pixel);
    for (const CFPoint p : points) std::printf("%g,%g ", Wide(p.x), Wide(p.y));
    std::printf("%s\"/>\n", closed ? "Z" : "");
}

void DrawCurves(const RPPath& path, double pixel) {
    const CFPoint start = path.anchors.front().position;
    std::printf("<path fill=\"none\" stroke=\"#d00\" stroke-width=\"%.3f\" d=\"M%g,%g ", 1.6 * pixel, Wide(start.x),
                Wide(start.y));
    const std::size_t count = path.anchors.size();
    for (std::size_t i = 0; i + (path.closed ? 0 : 1) < count; ++i) {
        const RPAnchor& from = path.anchors[i];
        const RPAnchor& to = path.anchors[(i + 1) % count];
        std::printf("C%g,%g %g,%g %g,%g ", Wide(from.out.x), Wide(from.out.y), Wide(to.in.x), Wide(to.in.y), Wide(to.position.x),
                    Wide(to.position.y));
    }
    std::printf("\"/>\n");
}

void DrawAnchors(const RPPath& path, double pixel) {
    for (const RPAnchor& anchor : path.anchors) {
        const double x = Wide(anchor.position.x), y = Wide(anchor.position.y), size = 3.5 * pixel;
        std::printf("<path fill=\"none\" stroke=\"#06c\" stroke-width=\"%.3f\" d=\"M%g,%g L%g,%g L%g,%g\"/>\n", 0.8 * pixel,
                    Wide(anchor.in.x), Wide(anchor.in.y), x, y, Wide(anchor.out.x), Wide(anchor.out.y));
        if (anchor.corner) {
            std::printf("<rect x=\"%g\" y=\"%g\" width=\"%g\" height=\"%g\" fill=\"#000\"/>\n", x - size, y - size, 2 * size,
                        2 * size);
        } else {
            std::printf("<circle cx=\"%g\" cy=\"%g\" r=\"%g\" fill=\"#06c\"/>\n", x, y, size);
        }
    }
}

void Draw(const std::vector<CFPoint>& points, const RPPath& path) {
    constexpr double kWidth = 900;  // of the drawing
    const auto [left, right] = std::minmax_element(points.begin(), points.end(), [](CFPoint a, CFPoint b) { return a.x < b.x; });
    const auto [top, bottom] = std::minmax_element(points.begin(), points.end(), [](CFPoint a, CFPoint b) { return a.y < b.y; });
    const double extent = std::max({Wide(right->x - left->x), Wide(bottom->y - top->y), 1.0}), margin = 0.05 * extent;
    const double side = extent + 2 * margin, pixel = side / kWidth;
    std::printf("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%g\" height=\"%g\" viewBox=\"%g %g %g %g\">\n", kWidth, kWidth,
                Wide(left->x) - margin, Wide(top->y) - margin, side, side);
    std::printf("<rect x=\"%g\" y=\"%g\" width=\"100%%\" height=\"100%%\" fill=\"#fff\"/>\n", Wide(left->x) - margin,
                Wide(top->y) - margin);
    DrawPoints(points, path.closed, pixel);
    DrawCurves(path, pixel);
    DrawAnchors(path, pixel);
    std::printf("</svg>\n");
}

}  // namespace
