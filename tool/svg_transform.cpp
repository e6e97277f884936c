#include "tool/svg_transform.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "tool/failure.h"
#include "tool/number_scanner.h"

namespace vrltool {
namespace {

double Radians(double degrees) { return degrees * std::numbers::pi / 180; }

Affine Rotation(double degrees) {
    const double c = std::cos(Radians(degrees)), s = std::sin(Radians(degrees));
    return {c, s, -s, c, 0, 0};
}

/// The numbers between the brackets that come next.
std::vector<double> ReadArguments(NumberScanner& scan) {
    if (!scan.Accept('(')) scan.FailExpecting("\"(\"");
    std::vector<double> values;
    while (!scan.Accept(')')) {
        if (!values.empty()) scan.SkipComma();
        values.push_back(scan.Number());
    }
    return values;
}

Affine TransformNamed(std::string_view name, const std::vector<double>& v) {
    const std::size_t count = v.size();
    if (name == "matrix" && count == 6) return {v[0], v[1], v[2], v[3], v[4], v[5]};
    if (name == "translate" && (count == 1 || count == 2)) return Translation(v[0], count == 2 ? v[1] : 0);
    if (name == "scale" && (count == 1 || count == 2)) return {v[0], 0, 0, v.back(), 0, 0};
    if (name == "rotate" && count == 1) return Rotation(v[0]);
    if (name == "rotate" && count == 3) return Translation(v[1], v[2]) * Rotation(v[0]) * Translation(-v[1], -v[2]);
    if (name == "skewX" && count == 1) return {1, 0, std::tan(Radians(v[0])), 1, 0, 0};
    if (name == "skewY" && count == 1) return {1, std::tan(Radians(v[0])), 0, 1, 0, 0};
    throw Failure("no transform \"" + std::string(name) + "\" with " + std::to_string(count) + " values");
}

/// Share of the free space that lies before the box: Min, Mid or Max.
double AlignmentShare(std::string_view word) {
    if (word == "Min") return 0;
    if (word == "Mid") return 0.5;
    if (word == "Max") return 1;
    throw Failure("expected Min, Mid or Max, found \"" + std::string(word) + '"');
}

}  // namespace

Affine ParseTransform(std::string_view text) {
    NumberScanner scan(text);
    Affine total;
    while (!scan.AtEnd()) {
        const std::string_view name = scan.Word();
        if (name.empty()) scan.FailExpecting("a transform");
        total = total * TransformNamed(name, ReadArguments(scan));
        scan.SkipComma();
    }
    return total;
}

ViewBox ParseViewBox(std::string_view text) {
    NumberScanner scan(text);
    double values[4];
    for (double& value : values) {
        if (&value != values) scan.SkipComma();
        value = scan.Number();
    }
    if (!scan.AtEnd()) scan.FailExpecting("four numbers only");
    if (!(values[2] > 0 && values[3] > 0)) throw Failure("width and height must be above 0");
    return {values[0], values[1], values[2], values[3]};
}

Affine FitViewBox(const ViewBox& box, double width, double height, std::string_view preserve_aspect_ratio) {
    NumberScanner scan(preserve_aspect_ratio);
    std::string_view align = scan.Word();
    if (align == "defer") align = scan.Word();
    if (align.empty()) align = "xMidYMid";
    const bool slice = scan.Word() == "slice";

    double scale_x = width / box.width;
    double scale_y = height / box.height;
    double before_x = 0, before_y = 0;
    if (align != "none") {
        if (align.size() != 8 || align[0] != 'x' || align[4] != 'Y') {
            throw Failure("unknown alignment \"" + std::string(align) + '"');
        }
        const double scale = slice ? std::max(scale_x, scale_y) : std::min(scale_x, scale_y);
        scale_x = scale_y = scale;
        before_x = AlignmentShare(align.substr(1, 3)) * (width - box.width * scale);
        before_y = AlignmentShare(align.substr(5, 3)) * (height - box.height * scale);
    }
    return Translation(before_x, before_y) * Affine{scale_x, 0, 0, scale_y, 0, 0} * Translation(-box.x, -box.y);
}

}  // namespace vrltool
