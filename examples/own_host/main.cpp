// Renders masks of a disc on this host and compares them with the disc's area: plain, at half opacity, inverted and moved.

#include <cmath>
#include <cstdio>
#include <numbers>

#include "api/vrl.h"

namespace {

constexpr double kRadius = 13, kCentreX = 16, kCentreY = 15;
constexpr int kWidth = 60, kHeight = 30;

void AddDisc(DY_Shape& shape) {
    constexpr double kHandle = 0.5522847 * kRadius;  // of the cubic nearest to a quarter of a circle
    constexpr double x = kCentreX, y = kCentreY, r = kRadius, h = kHandle;
    constexpr double points[][2] = {{x, y - r}, {x + h, y - r}, {x + r, y - h}, {x + r, y}, {x + r, y + h}, {x + h, y + r},
                                    {x, y + r}, {x - h, y + r}, {x - r, y + h}, {x - r, y}, {x - r, y - h}, {x - h, y - r}};
    for (const auto& p : points) {
        const WEX_Item item = {static_cast<float>(p[0]), static_cast<float>(p[1])};
        WEX_Insert(&item, -1, shape.GetPoints());
    }
}

double Sum(const GW_UnoBuffer& buffer) {
    double sum = 0;
    for (int i = 0; i < kWidth * kHeight; ++i) sum += buffer.Row<GW_Pixel8>(0)[i];
    return sum / 255;
}

void Print(const GW_UnoBuffer& buffer) {
    for (int y = 0; y < kHeight; y += 2, std::putchar('\n')) {
        for (int x = 0; x < kWidth; ++x) std::putchar(" .:-=+*#%@"[buffer.Row<GW_Pixel8>(y)[x] * 9 / 255]);
    }
}

/// Renders the disc and tells whether the coverage adds up to `area` pixels.
bool Check(const char* name, const VRL_MaskParams& params, double shift, double area) {
    constexpr double kTolerance = 1.5;  // pixels, of some 530: the chords' and the levels' rounding
    DY_Shape disc(kShapeTypeBezier, nullptr);
    AddDisc(disc);
    const M_Matrix3 transform = {{{1, 0, 0}, {0, 1, 0}, {shift, 0, 1}}};
    GW_UnoBuffer buffer(kWidth, kHeight, 8);
    const int status = VRL_MaskWithShape(&disc, &params, &transform, &buffer, nullptr);
    const double sum = status == 0 ? Sum(buffer) : 0;
    std::printf("%s: status %d, coverage %.2f, expected %.2f\n", name, status, sum, area);
    if (status == 0) Print(buffer);
    return status == 0 && std::abs(sum - area) <= kTolerance;
}

}  // namespace

int main() {
    VRL_Birth();
    const double area = std::numbers::pi * kRadius * kRadius;
    bool right = Check("plain", {.quality = 1}, 0, area);
    right &= Check("half", {.opacity = 32768, .quality = 1}, 0, area * 128 / 255);
    right &= Check("inverted", {.invert = 1, .quality = 1}, 0, kWidth * kHeight - area);
    right &= Check("moved", {.quality = 1}, kWidth - kCentreX, area / 2);  // its right half is outside

    DY_Shape disc(kShapeTypeBezier, nullptr);
    GW_UnoBuffer buffer(kWidth, kHeight, 8);
    AddDisc(disc);
    const VRL_MaskParams grown = {.expansion = 65536, .quality = 1};
    const int refusal = VRL_MaskWithShape(&disc, &grown, nullptr, &buffer, nullptr);
    std::printf("grown: status %d, expected another than 0: this host has no offsets\n", refusal);
    VRL_Death();
    return right && refusal != 0 ? 0 : 1;
}
