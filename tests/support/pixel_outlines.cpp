#include "tests/support/pixel_outlines.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace support {

std::vector<LatticeLine> OutlinesOf(const Bits& bits) {
    // Directions clockwise on screen: right, down, left, up. An edge leaves its lattice point with a set pixel on its right
    // and a clear one on its left.
    constexpr int kStepX[] = {1, 0, -1, 0}, kStepY[] = {0, 1, 0, -1};
    constexpr int kRightX[] = {0, -1, -1, 0}, kRightY[] = {0, 0, -1, -1};
    const auto is_edge = [&](int x, int y, int d) {
        const int left = (d + 3) % 4;
        return bits.At(x + kRightX[d], y + kRightY[d]) && !bits.At(x + kRightX[left], y + kRightY[left]);
    };
    std::vector<LatticeLine> outlines;
    Bits seen(bits.width + 1, bits.height + 1);  // of the edges to the right: every outline has one
    for (int y0 = 0; y0 <= bits.height; ++y0) {
        for (int x0 = 0; x0 < bits.width; ++x0) {
            if (!is_edge(x0, y0, 0) || seen.At(x0, y0)) continue;
            LatticeLine line;
            int x = x0, y = y0, d = 0;
            do {
                if (d == 0) seen.Set(x, y);
                line.push_back({static_cast<float>(x), static_cast<float>(y)});
                x += kStepX[d];
                y += kStepY[d];
                for (const int turn : {1, 0, 3}) {  // to the right first, so that touching pixels stay apart
                    if (!is_edge(x, y, (d + turn) % 4)) continue;
                    d = (d + turn) % 4;
                    break;
                }
            } while (x != x0 || y != y0 || d != 0);
            outlines.push_back(line);
        }
    }
    return outlines;
}

LatticeLine Staircase(const std::function<CFPoint(double)>& curve, int samples, bool closed) {
    LatticeLine line;
    const auto add = [&](CFPoint p) {
        if (!line.empty() && line.back() == p) return;
        if (line.size() > 1 && line[line.size() - 2] == p) {
            line.pop_back();
        } else {
            line.push_back(p);
        }
    };
    for (int i = 0; i <= samples; ++i) {
        const CFPoint p = curve(i / static_cast<double>(samples));
        const CFPoint at = {std::round(p.x), std::round(p.y)};
        while (!line.empty() && std::abs(line.back().x - at.x) + std::abs(line.back().y - at.y) > 1.0F) {
            const CFPoint from = line.back();
            const bool level = std::abs(at.x - from.x) >= std::abs(at.y - from.y);
            add({from.x + (level ? std::copysign(1.0F, at.x - from.x) : 0.0F),
                 from.y + (level ? 0.0F : std::copysign(1.0F, at.y - from.y))});
        }
        add(at);
    }
    if (closed) {
        line.pop_back();
        while (line.size() > 4 && line[1] == line.back()) {
            line.erase(line.begin());
            line.pop_back();
        }
    }
    return line;
}

LatticeLine SmoothOutline(int points, std::uint32_t seed) {
    std::mt19937 random(seed);
    const double phase = static_cast<double>(random() % 1000), lobes = 3.0 + static_cast<double>(random() % 5),
                 radius = points / 8.2;
    return Staircase(
        [=](double t) {
            const double angle = 2 * std::numbers::pi * t;
            const double r = radius * (1 + 0.12 * std::sin(lobes * angle + phase) + 0.05 * std::cos(2 * angle));
            return CFPoint{static_cast<float>(r * std::cos(angle)), static_cast<float>(r * std::sin(angle))};
        },
        40 * points, true);
}

LatticeLine Square(int side) {
    Bits bits(side, side);
    for (int i = 0; i < side * side; ++i) bits.Set(i % side, i / side);
    return OutlinesOf(bits).front();
}

LatticeLine Disc(double radius) {
    const int side = 2 * static_cast<int>(std::ceil(radius));
    Bits bits(side, side);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            if (std::hypot(x + 0.5 - side / 2, y + 0.5 - side / 2) < radius) bits.Set(x, y);
        }
    }
    return OutlinesOf(bits).front();
}

LatticeLine NoisyOutline(int size, std::uint32_t seed) {
    std::mt19937 random(seed);
    Bits bits(size, size);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            if (random() % 100 < 62) bits.Set(x, y);
        }
    }
    const auto outlines = OutlinesOf(bits);
    return *std::max_element(outlines.begin(), outlines.end(), [](auto& a, auto& b) { return a.size() < b.size(); });
}

CFSegment ChainOf(const LatticeLine& points, std::int32_t spacing, std::int32_t type) {
    CFSegment chain(static_cast<std::int32_t>(points.size()), spacing, type);
    for (std::int32_t i = 0; i < chain.Count(); ++i) chain.SetPoint(i, points[static_cast<std::size_t>(i)]);
    return chain;
}

}  // namespace support
