#include "tool/svg_length.h"

#include <string>

#include "tool/failure.h"
#include "tool/number_scanner.h"

namespace vrltool {
namespace {

struct Unit {
    std::string_view name;
    double pixels;
};

constexpr double kInch = 96;  // CSS pixels
constexpr double kEm = 16;    // the usual default font size; outlines have no font of their own
constexpr Unit kUnits[] = {{"", 1},
                           {"px", 1},
                           {"in", kInch},
                           {"pt", kInch / 72},
                           {"pc", kInch / 6},
                           {"cm", kInch / 2.54},
                           {"mm", kInch / 25.4},
                           {"q", kInch / 101.6},
                           {"em", kEm},
                           {"rem", kEm},
                           {"ex", kEm / 2}};

}  // namespace

double ParseLength(std::string_view text, double whole) {
    NumberScanner scan(text);
    const double value = scan.Number();
    if (scan.Accept('%')) {
        if (!scan.AtEnd()) scan.FailExpecting("nothing after a percentage");
        return value / 100 * whole;
    }
    std::string unit(scan.Word());
    for (char& c : unit) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    for (const Unit& known : kUnits) {
        if (known.name == unit && scan.AtEnd()) return value * known.pixels;
    }
    throw Failure("\"" + std::string(text) + "\" is not a length");
}

bool IsRelativeLength(std::string_view text) { return text == "auto" || text.find('%') != std::string_view::npos; }

}  // namespace vrltool
