#include "tests/support/outlines.h"

#include <cmath>
#include <numbers>

#include "base/narrow.h"

namespace support {
namespace {

using refhost::Point;
constexpr double kTwoPi = 2 * std::numbers::pi;

double Uniform(std::mt19937& random, double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
}
Point OnCircle(double radius, double angle) { return {radius * std::cos(angle), radius * std::sin(angle)}; }

/// Points round a circle whose radius swings in several waves at once.
std::vector<Point> WavyRing(int count, double radius, double swing, int waves, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<double> phase, weight;
    for (int k = 1; k <= waves; ++k) {
        phase.push_back(Uniform(random, 0, kTwoPi));
        weight.push_back(Uniform(random, 0.4, 1.0) / std::sqrt(k));
    }
    std::vector<Point> points;
    for (int i = 0; i < count; ++i) {
        const double angle = kTwoPi * i / count;
        double wave = 0;
        for (int k = 1; k <= waves; ++k)
            wave += weight[static_cast<std::size_t>(k - 1)] * std::sin(k * angle + phase[static_cast<std::size_t>(k - 1)]);
        points.push_back(OnCircle(radius * (1 + swing * wave), angle));
    }
    return points;
}

}  // namespace

Outline& Outline::Add(PIVPointType type, double x, double y) {
    points.push_back({NarrowToFloat(x), NarrowToFloat(y)});
    operators.push_back(type);
    return *this;
}

Outline& Outline::Close() {
    std::size_t start = operators.size();
    while (operators[--start] != kPIVMove) {
    }
    return Add(kPIVClose, static_cast<double>(points[start].x), static_cast<double>(points[start].y));
}

Outline& Outline::Append(const Outline& other) {
    points.insert(points.end(), other.points.begin(), other.points.end());
    operators.insert(operators.end(), other.operators.begin(), other.operators.end());
    return *this;
}

Outline Outline::Reversed() const {
    Outline reversed;
    for (std::size_t end = points.size(); end > 0;) {
        std::size_t first = end - 1;
        while (operators[first] != kPIVMove) --first;
        if (operators[end - 1] == kPIVClose) --end;
        for (std::size_t i = end; i > first; --i) {
            reversed.points.push_back(points[i - 1]);
            reversed.operators.push_back(i == end ? kPIVMove : operators[i]);
        }
        reversed.Close();
        end = first;
    }
    return reversed;
}

Outline Outline::Shifted(double x, double y) const { return Turned(0, x, y); }

Outline Outline::Turned(double angle, double x, double y) const {
    Outline turned = *this;
    for (auto& point : turned.points) {
        const Point p = {static_cast<double>(point.x), static_cast<double>(point.y)};
        point = {NarrowToFloat(p.x * std::cos(angle) - p.y * std::sin(angle) + x),
                 NarrowToFloat(p.x * std::sin(angle) + p.y * std::cos(angle) + y)};
    }
    return turned;
}

std::size_t Outline::VertexCount() const {
    std::size_t lines = 0;
    std::size_t curve_points = 0;
    for (const PIVPointType type : operators) lines += type == kPIVLine, curve_points += type == kPIVCurve;
    return lines + curve_points / 3;
}

Outline Polygon(const std::vector<Point>& corners) {
    Outline path;
    path.Move(corners.front().x, corners.front().y);
    for (std::size_t i = 1; i < corners.size(); ++i) path.Line(corners[i].x, corners[i].y);
    return path.Close();
}

Outline Rectangle(double left, double top, double right, double bottom) {
    return Polygon({{left, top}, {right, top}, {right, bottom}, {left, bottom}});
}

Outline Smooth(const std::vector<Point>& p) {
    Outline path;
    const std::size_t n = p.size();
    path.Move(p[0].x, p[0].y);
    for (std::size_t i = 0; i < n; ++i) {
        const Point before = p[(i + n - 1) % n], a = p[i], b = p[(i + 1) % n], after = p[(i + 2) % n];
        path.Curve(a.x + (b.x - before.x) / 6, a.y + (b.y - before.y) / 6, b.x - (after.x - a.x) / 6, b.y - (after.y - a.y) / 6,
                   b.x, b.y);
    }
    return path.Close();
}

Outline Circle(double cx, double cy, double r) { return RoundedRectangle(cx - r, cy - r, cx + r, cy + r, r); }

Outline RoundedRectangle(double l, double t, double r, double b, double radius) {
    const double k = radius * (1 - 0.5522847498307936);
    Outline path;
    path.Move(r - radius, t).Curve(r - k, t, r, t + k, r, t + radius);
    if (b - radius > t + radius) path.Line(r, b - radius);
    path.Curve(r, b - k, r - k, b, r - radius, b);
    if (r - radius > l + radius) path.Line(l + radius, b);
    path.Curve(l + k, b, l, b - k, l, b - radius);
    if (b - radius > t + radius) path.Line(l, t + radius);
    path.Curve(l, t + k, l + k, t, l + radius, t);
    if (r - radius > l + radius) path.Line(r - radius, t);
    return path.Close();
}

Outline Letter() {
    Outline path;
    path.Move(10, 10)
        .Line(120, 10)
        .Curve(175, 10, 195, 40, 195, 70)
        .Curve(195, 95, 180, 112, 150, 120)
        .Curve(160, 126, 168, 140, 176, 158);
    path.Line(190, 190)
        .Curve(194, 200, 200, 204, 212, 206)
        .Line(212, 214)
        .Line(160, 214)
        .Line(128, 146)
        .Curve(122, 132, 116, 126, 100, 126);
    path.Line(78, 126).Line(78, 186).Curve(78, 200, 84, 204, 100, 206).Line(100, 214).Line(10, 214).Line(10, 206);
    path.Curve(26, 204, 32, 200, 32, 186).Line(32, 38).Curve(32, 24, 26, 20, 10, 18).Close();
    path.Move(78, 24).Line(78, 112).Line(104, 112).Curve(134, 112, 148, 96, 148, 68).Curve(148, 40, 134, 24, 106, 24).Close();
    return path;
}

Outline Blob(int vertices, double radius, std::uint32_t seed) {
    return Smooth(WavyRing(vertices, radius, 0.13, std::max(3, vertices / 10), seed));
}

Outline RoughBlob(int vertices, double radius, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<Point> ring = WavyRing(vertices, radius, 0.13, 7, seed);
    for (Point& p : ring) {
        const double scale = 1 - Uniform(random, 0, 1) / radius;
        p = {scale * p.x, scale * p.y};
    }
    return Smooth(ring);
}

Outline Traced(int vertices, std::uint32_t seed) {
    std::vector<Point> ring = WavyRing(vertices, 0.4 * vertices / 2, 0.1, std::max(3, vertices / 60), seed);
    std::mt19937 random(seed);
    for (Point& p : ring)
        p = {std::round(2 * (p.x + Uniform(random, -0.7, 0.7))) / 2, std::round(2 * (p.y + Uniform(random, -0.7, 0.7))) / 2};
    const Outline smooth = Smooth(ring);
    Outline path;
    path.Move(ring[0].x, ring[0].y);
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const auto at = [&](std::size_t k) { return smooth.points[1 + 3 * i + k]; };
        if (random() % 2 == 0) {
            path.Line(static_cast<double>(at(2).x), static_cast<double>(at(2).y));
        } else {
            for (std::size_t k = 0; k < 3; ++k) {
                path.points.push_back(at(k));
                path.operators.push_back(kPIVCurve);
            }
        }
    }
    return path.Close();
}

Outline Star(int spikes, double outer, double inner) {
    std::vector<Point> points;
    for (int i = 0; i < 2 * spikes; ++i) points.push_back(OnCircle(i % 2 == 0 ? outer : inner, 0.1 + kTwoPi * i / (2 * spikes)));
    return Polygon(points);
}

Outline StarPolygon(int points, int step, double radius) {
    std::vector<Point> corners;
    for (int i = 0; i < points; ++i) corners.push_back(OnCircle(radius, kTwoPi * i * step / points));
    return Polygon(corners);
}

Outline CuspsAndLoops() {
    Outline path;
    path.Move(0, 0).Curve(100, 60, 0, 60, 100, 0);     // a cusp on its way down
    path.Line(130, 0).Curve(230, 90, 90, 90, 190, 0);  // a loop
    path.Line(220, 0).Curve(260, 0, 200, 0, 240, 0);   // straight, handles past each other
    path.Curve(240, 0, 280, 40, 280, 80);              // zero handle at the start
    path.Curve(280, 120, 240, 160, 240, 160);          // and at the end
    path.Curve(240, 160, 120, 160, 120, 160);          // at both: a line in disguise
    path.Curve(120, 90, 120.5, 90, 120.5, 160);        // a hairpin
    path.Curve(60, 160, 20, 100, 0, 160).Line(0, 0).Close();
    return path;
}

Outline Scribble(int vertices, double extent, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<Point> points;
    for (int i = 0; i < vertices; ++i) points.push_back({Uniform(random, 0, extent), Uniform(random, 0, extent)});
    return Smooth(points);
}

Outline RandomPath(std::mt19937& random) {
    const double extent = std::exp(Uniform(random, std::log(2.0), std::log(200.0)));
    const bool on_grid = random() % 3 == 0;  // whole coordinates make coincidences likely
    const auto coordinate = [&] {
        const double value = Uniform(random, 0, extent);
        return on_grid ? std::round(value / 8) * 8 : value;
    };
    Outline path;
    for (auto subpath = random() % 3 + 1; subpath > 0; --subpath) {
        path.Move(coordinate(), coordinate());
        for (auto i = random() % 8; i > 0; --i) {
            if (random() % 2 == 0) {
                path.Line(coordinate(), coordinate());
            } else {
                const double x = coordinate(), y = coordinate(), u = coordinate(), v = coordinate(), w = coordinate();
                path.Curve(x, y, u, v, w, coordinate());
            }
        }
        if (random() % 4 != 0) path.Close();
    }
    return path;
}

}  // namespace support
